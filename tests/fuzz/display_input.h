// What the families of the display share: drawings and mouse events of any values, and two boxes told the
// same.
#ifndef ORXFUNCTIONS_TESTS_FUZZ_DISPLAY_INPUT_H
#define ORXFUNCTIONS_TESTS_FUZZ_DISPLAY_INPUT_H

#include <cstring>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/display/picture_box.h"
#include "tests/fuzz/fuzz_input.h"

namespace fuzz {

inline bool haveEqualBits(const cv::Mat& a, const cv::Mat& b) {
    if (a.size != b.size || a.type() != b.type()) return false;
    if (a.dims != 2) return true;
    for (int y = 0; y < a.rows; ++y) {
        if (std::memcmp(a.ptr(y), b.ptr(y), static_cast<std::size_t>(a.cols) * a.elemSize()) != 0)
            return false;
    }
    return true;
}

inline cv::Point2d place(Input& input) {
    const double x = input.number();
    return {x, input.number()};
}

inline std::vector<cv::Point2d> places(Input& input) {
    std::vector<cv::Point2d> list(static_cast<std::size_t>(input.between(0, 6)));
    for (cv::Point2d& p : list) p = place(input);
    return list;
}

inline cv::Scalar colour(Input& input) {
    const double blue = input.number();
    const double green = input.number();
    return {blue, green, input.number()};
}

inline std::string group(Input& input) { return std::string(1, static_cast<char>('a' + input.byte() % 3U)); }

inline void addShape(Input& input, TOverlay& overlay) {
    TShapeStyle style;
    style.color = colour(input);
    style.thickness = input.integer();
    style.opacity = input.option(0, 1);
    overlay.setGroup(group(input)).setStyle(style);
    const unsigned kind = input.byte() % 9U;
    const cv::Point2d from = place(input);
    const bool closed = input.flag();
    if (kind == 0) overlay.line(from, place(input));
    if (kind == 1) overlay.polyline(places(input), closed);
    if (kind == 2) overlay.rectangle({from, cv::Size2d(place(input))});
    if (kind == 3) overlay.circle(from, input.number());
    if (kind == 4) overlay.arrow(from, place(input));
    if (kind == 5) overlay.cross(from, input.number());
    if (kind == 6) {
        const std::string letters = input.text(12);
        overlay.text(from, letters, input.number());
    }
    if (kind == 7) overlay.area(places(input));
    if (kind == 8) overlay.disc(from, input.number());
}

inline TOverlay drawings(Input& input) {
    TOverlay overlay;
    for (int i = input.between(0, 4); i > 0; --i) addShape(input, overlay);
    return overlay;
}

// Told the same, they show the same.
struct Twins {
    TPictureBox first{TPictureOf::kBox};
    TPictureBox second{TPictureOf::kBox};

    template <typename Call>
    void both(const Call& call) {
        call(first);
        call(second);
    }
};

}  // namespace fuzz

#endif
