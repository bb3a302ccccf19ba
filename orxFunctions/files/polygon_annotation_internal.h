// The annotation of an image in the JSON of polygon labelling tools.
#ifndef ORXFUNCTIONS_FILES_POLYGON_ANNOTATION_INTERNAL_H
#define ORXFUNCTIONS_FILES_POLYGON_ANNOTATION_INTERNAL_H

#include <json/json.h>

#include <opencv2/core.hpp>
#include <string>

namespace orx {

class PolygonAnnotation {
  public:
    // False for what is no annotation of an image of that size: no JSON object, no "shapes", points that are
    // not pairs of finite numbers, another "imageWidth" or "imageHeight".
    bool parse(const std::string& json, cv::Size imageSize);

    // The annotation as JSON after its image was moved and saved under another name; "" where the motion
    // takes a point beyond all numbers.
    std::string moved(const cv::Matx23d& motion, cv::Size newSize, const std::string& newImageName) const;

  private:
    Json::Value root_;
};

}  // namespace orx

#endif
