#include "orxFunctions/files/polygon_annotation_internal.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>

#include "orxFunctions/foundation/text_stream_internal.h"

namespace orx {
namespace {

bool isPoint(const Json::Value& point) {
    return point.isArray() && point.size() == 2 && point[0].isNumeric() && point[1].isNumeric() &&
           std::isfinite(point[0].asDouble()) && std::isfinite(point[1].asDouble());
}

bool isShape(const Json::Value& shape) {
    if (!shape.isObject()) return false;
    const Json::Value& points = shape["points"];
    const Json::Value& type = shape["shape_type"];
    return points.isArray() && std::all_of(points.begin(), points.end(), isPoint) &&
           (type.isNull() || type.isString());
}

// Tools may leave the size out.
bool isSize(const Json::Value& length, int expected) {
    return length.isNull() || (length.isNumeric() && length.asDouble() == expected);
}

bool isAnnotation(const Json::Value& root, cv::Size imageSize) {
    if (!root.isObject()) return false;
    const Json::Value& shapes = root["shapes"];
    return shapes.isArray() && std::all_of(shapes.begin(), shapes.end(), isShape) &&
           isSize(root["imageWidth"], imageSize.width) && isSize(root["imageHeight"], imageSize.height);
}

Json::Value pair(double x, double y) {
    Json::Value point(Json::arrayValue);
    point.append(x);
    point.append(y);
    return point;
}

// A rectangle is stored as two opposite corners, which only say the rest while its sides are upright.
void becomePolygon(Json::Value& shape) {
    const Json::Value a = shape["points"][0];
    const Json::Value b = shape["points"][1];
    Json::Value corners(Json::arrayValue);
    corners.append(a);
    corners.append(pair(b[0].asDouble(), a[1].asDouble()));
    corners.append(b);
    corners.append(pair(a[0].asDouble(), b[1].asDouble()));
    shape["points"] = corners;
    shape["shape_type"] = "polygon";
}

// False where a point would not be finite any more.
bool move(Json::Value& shape, const cv::Matx23d& motion) {
    const bool isTurned = motion(0, 1) != 0 || motion(1, 0) != 0;
    const bool isRectangle = shape.get("shape_type", "") == "rectangle" && shape["points"].size() == 2;
    if (isTurned && isRectangle) becomePolygon(shape);
    for (Json::Value& point : shape["points"]) {
        const cv::Vec2d to = motion * cv::Vec3d(point[0].asDouble(), point[1].asDouble(), 1);
        if (!std::isfinite(to[0]) || !std::isfinite(to[1])) return false;
        point = pair(to[0], to[1]);
    }
    return true;
}

}  // namespace

bool PolygonAnnotation::parse(const std::string& json, cv::Size imageSize) {
    try {
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        Json::Value root;
        if (!reader->parse(json.data(), json.data() + json.size(), &root, nullptr)) return false;
        if (!isAnnotation(root, imageSize)) return false;
        root_ = root;
        return true;
    } catch (const std::exception&) {  // nested too deeply
        return false;
    }
}

std::string PolygonAnnotation::moved(const cv::Matx23d& motion, cv::Size newSize,
                                     const std::string& newImageName) const {
    Json::Value root = root_;
    for (Json::Value& shape : root["shapes"]) {
        if (!move(shape, motion)) return {};
    }
    root["imagePath"] = newImageName;
    root["imageData"] = Json::Value();
    root["imageWidth"] = newSize.width;
    root["imageHeight"] = newSize.height;
    Json::StreamWriterBuilder writer;
    writer["emitUTF8"] = true;
    writer["indentation"] = "  ";
    TextStream text;
    std::unique_ptr<Json::StreamWriter>(writer.newStreamWriter())->write(root, &text);
    return text.str() + '\n';
}

}  // namespace orx
