// Models of parts, finding and drawing them: matching/part_model.h, part_model_file.h, part_outline.h,
// part_finder.h, part_drawing.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/matching/part_drawing.h"
#include "orxFunctions/matching/part_finder.h"
#include "orxFunctions/matching/part_model.h"
#include "orxFunctions/matching/part_model_file.h"
#include "orxFunctions/matching/part_outline.h"
#include "part_poses.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using orx::TPartModel;

TPartModel taughtOf(TPartModel model) {
    if (!model.valid()) raiseRefusal();
    return model;
}

TPartModel teachPart(const Argument& image, const Argument& region, const Argument& polygon,
                     const Argument& mask, double sigma, double minContrast, const Argument& reference,
                     double direction, int levels) {
    const Image picture = imageOf(image, "image", ikAny);
    orx::TTeachOptions options;
    options.sigma = sigma;
    options.minContrast = minContrast;
    options.hasReference = !reference.is_none();
    if (options.hasReference) options.reference = placeOf(reference, "reference");
    options.direction = direction;
    options.levels = levels;
    if (!polygon.is_none()) {
        const std::vector<cv::Point2d> corners = precisePointsOf(polygon, "polygon");
        return taughtOf(unlocked([&] { return orx::teachPart(picture.mat, corners, options); }));
    }
    if (!mask.is_none()) {
        const Image where = imageOf(mask, "mask", ikBinary);
        return taughtOf(unlocked([&] { return orx::teachPart(picture.mat, where.mat, options); }));
    }
    const cv::Rect box = region.is_none() ? cv::Rect({}, picture.mat.size()) : rectOf(region, "region");
    return taughtOf(unlocked([&] { return orx::teachPart(picture.mat, box, options); }));
}

constexpr const char* kPiece = "an OutlineLine or an OutlineArc";

orx::TOutlinePiece pieceOf(const py::handle& piece, const std::string& name) {
    const std::size_t size = py::isinstance<py::tuple>(piece) ? py::len(piece) : 0;
    if (size != 2 && size != 4) refuseType(name, kPiece, piece);
    const auto fields = py::reinterpret_borrow<py::tuple>(piece);
    if (size == 2) {
        const cv::Point2d start = placeOf(fields[0], (name + ".start").c_str());
        return orx::outlineLine(start, placeOf(fields[1], (name + ".end").c_str()));
    }
    const cv::Point2d centre = placeOf(fields[0], (name + ".centre").c_str());
    try {
        return orx::outlineArc(centre, fields[1].cast<double>(), fields[2].cast<double>(),
                               fields[3].cast<double>());
    } catch (const py::cast_error&) {
        refuseType(name, kPiece, piece);
    }
}

std::vector<orx::TOutline> outlinesOf(const Argument& argument) {
    std::vector<orx::TOutline> drawing;
    const py::sequence outlines = sequenceOf(argument, "outlines", "a sequence of outlines");
    for (std::size_t i = 0; i < outlines.size(); ++i) {
        const std::string name = "outlines[" + std::to_string(i) + "]";
        const py::object outline = outlines[i];
        const py::sequence pieces = sequenceOf(outline, name, "a sequence of OutlineLine and OutlineArc");
        drawing.emplace_back();
        for (std::size_t k = 0; k < pieces.size(); ++k) {
            const py::object piece = pieces[k];
            drawing.back().push_back(pieceOf(piece, name + "[" + std::to_string(k) + "]"));
        }
    }
    return drawing;
}

TPartModel teachDrawing(const Argument& outlines, double pixelsPerUnit, bool yIsUp, int brightSide,
                        const Argument& reference, double direction, int levels, double sigma) {
    orx::TDrawingOptions options;
    options.pixelsPerUnit = pixelsPerUnit;
    options.yIsUp = yIsUp;
    options.brightSide = static_cast<orx::TBrightSide>(brightSide);
    options.hasReference = !reference.is_none();
    if (options.hasReference) options.reference = placeOf(reference, "reference");
    options.direction = direction;
    options.levels = levels;
    options.sigma = sigma;
    const std::vector<orx::TOutline> drawing = outlinesOf(outlines);
    return taughtOf(unlocked([&] { return orx::teachPart(drawing, options); }));
}

using Report = std::tuple<std::vector<int>, double, double, int, int, double, Pair, bool, bool, double, bool,
                          std::vector<std::string>>;

Report reportOf(const TPartModel& model) {
    const orx::TTeachReport& report = model.report();
    return {report.pointsPerLevel,
            report.leastContrast,
            report.radius,
            report.symmetry,
            report.nearSymmetry,
            report.nearShare,
            pairOf(report.symmetryCentre),
            report.anglesAreFree,
            report.aShiftIsFree,
            report.freeDirection,
            report.scaleIsFree,
            report.warnings};
}

py::bytes bytesOf(const TPartModel& model) {
    return unlocked([&] { return orx::partModelToBytes(model); });
}

TPartModel fromBytes(const py::bytes& bytes) {
    const std::string data = bytes;
    return taughtOf(unlocked([&] { return orx::partModelFromBytes(data); }));
}

void writeModel(const TPartModel& model, const py::bytes& path) {
    const std::string name = path;
    if (unlocked([&] { return orx::writePartModel(name, model); }) != orx::msOk) raiseRefusal();
}

TPartModel readModel(const py::bytes& path) {
    const std::string name = path;
    return taughtOf(unlocked([&] { return orx::readPartModel(name); }));
}

// Row i of each is part i: pose (4), score, reversed, covariance (4 x 4), deviations (4), rms, seen; and the
// free directions of each.
using FoundArrays = std::tuple<ArrayOf<double>, ArrayOf<double>, ArrayOf<bool>, ArrayOf<double>,
                               ArrayOf<double>, ArrayOf<double>, ArrayOf<bool>, std::vector<ArrayOf<double>>>;

template <typename T, typename Values>
void append(std::vector<T>& all, const Values& values) {
    all.insert(all.end(), std::begin(values), std::end(values));
}

FoundArrays arraysFrom(const std::vector<orx::TFoundPart>& parts, std::size_t points) {
    std::vector<double> poses, scores, covariances, deviations, rms;
    std::vector<unsigned char> reversed, seen;
    std::vector<ArrayOf<double>> free;
    const auto count = static_cast<py::ssize_t>(parts.size());
    for (const orx::TFoundPart& part : parts) {
        append(poses,
               std::initializer_list<double>{part.pose.x, part.pose.y, part.pose.angle, part.pose.scale});
        scores.push_back(part.score);
        reversed.push_back(part.reversed ? 1 : 0);
        append(covariances, part.covariance.val);
        append(deviations, std::initializer_list<double>{part.deviationX, part.deviationY,
                                                         part.deviationAngle, part.deviationScale});
        rms.push_back(part.rms);
        seen.insert(seen.end(), part.seen.begin(), part.seen.end());
        seen.resize(scores.size() * points);
        std::vector<double> directions;
        for (const cv::Vec4d& direction : part.free) append(directions, direction.val);
        free.push_back(arrayFrom(std::move(directions), {static_cast<py::ssize_t>(part.free.size()), 4}));
    }
    return {arrayFrom(std::move(poses), {count, 4}),
            arrayFrom(std::move(scores)),
            truthsFrom(std::move(reversed)),
            arrayFrom(std::move(covariances), {count, 4, 4}),
            arrayFrom(std::move(deviations), {count, 4}),
            arrayFrom(std::move(rms)),
            truthsFrom(std::move(seen), {count, static_cast<py::ssize_t>(points)}),
            std::move(free)};
}

FoundArrays findParts(const Argument& image, const TPartModel& model, double startAngle, double angleRange,
                      double minScale, double maxScale, int polarity, double minScore, int maxParts,
                      double maxOverlap, const Argument& region, double greediness, double minContrast,
                      double noise) {
    const Image picture = imageOf(image, "image", ikAny);
    orx::TFindOptions options;
    options.startAngle = startAngle;
    options.angleRange = angleRange;
    options.minScale = minScale;
    options.maxScale = maxScale;
    options.polarity = static_cast<orx::TPartPolarity>(polarity);
    options.minScore = minScore;
    options.maxParts = maxParts;
    options.maxOverlap = maxOverlap;
    options.region = rectOf(region, "region");
    options.greediness = greediness;
    options.minContrast = minContrast;
    options.noise = noise;
    const orx::TFindResult result = unlocked([&] { return orx::findParts(picture.mat, model, options); });
    if (!result.valid()) raiseRefusal();
    const std::size_t points = result.parts.empty() ? 0 : result.parts.front().seen.size();
    return arraysFrom(result.parts, points);
}

using Colour = std::tuple<double, double, double>;
using Colours = std::tuple<Colour, Colour, Colour, Colour, int>;  // seen, unseen, pose, score; thickness

orx::TPartColours coloursOf(const Colours& given) {
    const auto scalar = [](const Colour& colour) {
        return cv::Scalar(std::get<0>(colour), std::get<1>(colour), std::get<2>(colour));
    };
    orx::TPartColours colours;
    colours.seen = scalar(std::get<0>(given));
    colours.unseen = scalar(std::get<1>(given));
    colours.pose = scalar(std::get<2>(given));
    colours.score = scalar(std::get<3>(given));
    colours.thickness = std::get<4>(given);
    return colours;
}

void drawModel(const Argument& image, const TPartModel& model, const PoseNumbers& pose,
               const Colours& colours) {
    Image picture = imageToWrite(image, "image", ikAny);
    const orx::TPartColours inks = coloursOf(colours);
    unlocked([&] { orx::drawPartModel(picture.mat, model, poseOf(pose), inks); });
}

// pose, score, a byte for each point of the outline
using PartToDraw = std::tuple<PoseNumbers, double, py::bytes>;

void drawParts(const Argument& image, const TPartModel& model, const std::vector<PartToDraw>& parts,
               const Colours& colours) {
    Image picture = imageToWrite(image, "image", ikAny);
    const orx::TPartColours inks = coloursOf(colours);
    std::vector<orx::TFoundPart> found;
    for (const auto& [pose, score, bytes] : parts) {
        const std::string seen = bytes;
        found.emplace_back();
        found.back().pose = poseOf(pose);
        found.back().score = score;
        found.back().seen.assign(seen.begin(), seen.end());
    }
    unlocked([&] { orx::drawFoundParts(picture.mat, model, found, inks); });
}

}  // namespace

void bindParts(py::module_& core) {
    py::class_<TPartModel>(core, "PartModel")
        .def("report", &reportOf)
        .def("taught_pose", [](const TPartModel& model) { return numbersOf(model.taughtPose()); })
        .def("outline", [](const TPartModel& model) { return arrayFrom(model.outline()); })
        .def("normals", [](const TPartModel& model) { return arrayFrom(model.normals()); })
        .def("to_bytes", &bytesOf)
        .def("save", &writeModel, py::arg("path"))
        .def(py::pickle(&bytesOf, &fromBytes));
    core.def("teach_part", &teachPart, py::arg("image"), py::arg("region"), py::arg("polygon"),
             py::arg("mask"), py::arg("sigma"), py::arg("min_contrast"), py::arg("reference"),
             py::arg("direction"), py::arg("levels"));
    core.def("teach_drawing", &teachDrawing, py::arg("outlines"), py::arg("pixels_per_unit"),
             py::arg("y_is_up"), py::arg("bright_side"), py::arg("reference"), py::arg("direction"),
             py::arg("levels"), py::arg("sigma"));
    core.def("part_model_from_bytes", &fromBytes, py::arg("data"));
    core.def("read_part_model", &readModel, py::arg("path"));
    core.def("find_parts", &findParts, py::arg("image"), py::arg("model"), py::arg("start_angle"),
             py::arg("angle_range"), py::arg("min_scale"), py::arg("max_scale"), py::arg("polarity"),
             py::arg("min_score"), py::arg("max_parts"), py::arg("max_overlap"), py::arg("region"),
             py::arg("greediness"), py::arg("min_contrast"), py::arg("noise"));
    core.def("draw_part_model", &drawModel, py::arg("image"), py::arg("model"), py::arg("pose"),
             py::arg("colours"));
    core.def("draw_found_parts", &drawParts, py::arg("image"), py::arg("model"), py::arg("parts"),
             py::arg("colours"));
}

}  // namespace orxpy
