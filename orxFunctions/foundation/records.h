// Plain records that cross the interface. All are values: copied member by member, owning nothing but the
// containers they hold.
#ifndef ORXFUNCTIONS_FOUNDATION_RECORDS_H
#define ORXFUNCTIONS_FOUNDATION_RECORDS_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace orx {

// A raw image as a host hands it over. `data` holds 8-bit samples, channels interleaved, rows without padding
// (width * channels bytes each); whoever filled the record keeps the buffer alive.
struct TORXImage {
    std::int32_t width = 0;     // pixels in a row
    std::int32_t height = 0;    // rows
    std::int32_t channels = 0;  // samples of a pixel: 1, 3 or 4
    unsigned char* data = nullptr;
};

// A circle in image coordinates (pixels, centre of the top-left pixel at (0, 0)) with the quality of its fit.
// A producer that fails returns all fields 0 and `valid` false.
struct TCircle {
    double x = 0.0;               // centre column
    double y = 0.0;               // centre row
    double r = 0.0;               // radius
    std::int32_t pointCount = 0;  // supporting points; 0 where a producer does not count
    double inlierRatio = 0.0;
    double meanResidual = 0.0;
    bool valid = false;
};

// The straight line y = k * x + b in image coordinates. A vertical line has an infinite slope.
struct TLine {
    double k = 0.0;
    double b = 0.0;
    bool valid = false;
};

// An ellipse in image coordinates, and its conic A x^2 + B xy + C y^2 + D x + E y + F = 0 scaled so that F
// = 1.
struct TEllipse {
    float x = 0.0F;       // centre column
    float y = 0.0F;       // centre row
    float width = 0.0F;   // full axis along `angle`
    float height = 0.0F;  // full axis across `angle`
    float angle = 0.0F;   // degrees, from the x axis towards the y axis
    float A = 0.0F;
    float B = 0.0F;
    float C = 0.0F;
    float D = 0.0F;
    float E = 0.0F;
    float F = 0.0F;
    float inlierRatio = 0.0F;
    double meanError = 0.0;  // mean radial distance of the points, pixels
    std::int32_t valid = 0;  // 1 when accepted
};

// The base of every object that the registry (foundation/registry.h) can hold. The destructor is not virtual:
// the registry never deletes, and a caller casts the pointer back to the type that it registered.
class TClassBase {};

}  // namespace orx

// What a picture box draws over its image; coordinates are those of the source image.

struct TDrawRect {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t thickness = 0;
    cv::Scalar color;
};

struct TDrawCircle {
    std::int32_t x = 0;
    std::int32_t y = 0;
    double radius = 0.0;
    std::int32_t thickness = 0;
    cv::Scalar color;
};

struct TDrawTexts {
    std::vector<std::string> texts;  // a line each
    std::int32_t thickness = 0;
    std::int32_t fontScale = 0;
    std::int32_t fontFace = 0;  // an OpenCV Hershey font
    cv::Scalar color;
};

#endif
