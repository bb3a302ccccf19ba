// What the drawing operations ask of an image, of a style and of a coordinate, so that OpenCV can draw.
#ifndef ORXFUNCTIONS_FITTING_DRAWING_INTERNAL_H
#define ORXFUNCTIONS_FITTING_DRAWING_INTERNAL_H

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

namespace orx {

constexpr int kMostDrawnChannels = 4;

// Nothing is drawn on other images; OpenCV writes outside those of more than two dimensions, and throws for
// those of more channels.
inline bool isDrawable(const cv::Mat& image) {
    return !image.empty() && image.dims == 2 && image.channels() <= kMostDrawnChannels;
}

// The same for a public function, which keeps the refusal.
bool takesDrawing(const cv::Mat& image, const char* function) noexcept;

// Thickness, line type and shift as the drawing functions take them.
struct DrawingStyle {
    int thickness;
    int lineType;
    int shift;
};

// Whether OpenCV draws lines so, not thinner than `thinnest`; it throws otherwise. Keeps the refusal.
bool takesLines(const DrawingStyle& style, int thinnest, const char* function) noexcept;

// Whether OpenCV draws circles so, and soon.
bool takesCircles(const DrawingStyle& style, int radius, const char* function) noexcept;

// cv::line, but thick lines that lead far above or below the image end well outside of it: OpenCV goes
// through all their rows, and rounds at each.
void drawLineIn(cv::Mat& image, cv::Point from, cv::Point to, const cv::Scalar& color,
                const DrawingStyle& style);

// Rows beyond this distance from the image are far, pixels.
constexpr int kFarRows = 1 << 15;

// A coordinate limited to what lies far outside every image; 0 for not-a-number. The difference of two such
// coordinates fits into 32 bits, in which OpenCV takes it for a thick line.
inline double limitedCoordinate(double v) {
    constexpr double kFarthest = 1 << 29;
    return std::isnan(v) ? 0.0 : std::clamp(v, -kFarthest, kFarthest);
}

}  // namespace orx

#endif
