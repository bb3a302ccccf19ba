// Makes the picture that a window shows of an image: fitted, on its background, zoomed.
#ifndef ORXFUNCTIONS_DISPLAY_FIT_PICTURE_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_FIT_PICTURE_INTERNAL_H

#include <array>
#include <opencv2/core.hpp>

#include "orxFunctions/display/fit_geometry_internal.h"

namespace orx::display {

// True for what can be shown: a two-dimensional image of 1, 3 or 4 channels.
bool isShowable(const cv::Mat& image);

// Converts to 8-bit BGR in `out`, which is written in place where its size and type fit. Deeper pixels are
// scaled as OpenCV's windows do: 16-bit ones by 1/256, floating-point ones by 255.
void toBgr(const cv::Mat& image, cv::Mat& out);

// The buffers are kept, so that pictures of one size after another cost no memory. One thread at a time.
class PictureFitter {
  public:
    // The image in a window of the background's size. The result is one of this object's buffers: it is
    // overwritten by the next call.
    cv::Mat fit(const cv::Mat& image, const FitGeometry& fit, const cv::Mat& background);
    // The image stretched over the whole window, with the image's own pixels.
    cv::Mat stretch(const cv::Mat& image, cv::Size window);
    // The visible part of the zoomed window, fitted as `fit` says.
    cv::Mat zoom(const cv::Mat& image, const FitGeometry& fit, const Zoom& zoom, const cv::Mat& background);
    // A copy as 8-bit BGR.
    cv::Mat copy(const cv::Mat& image);

  private:
    // Resizes to the size of `out`, a part of a picture, as 8-bit BGR.
    void resizeInto(const cv::Mat& image, cv::Mat out);
    void magnifyInto(const cv::Mat& image, const double inverse[6], int interpolation, cv::Mat out);
    const cv::Mat& halvedFor(const cv::Mat& image, cv::Size size);

    cv::Mat picture_;
    cv::Mat stretched_;
    cv::Mat resized_;                 // before its pixels are converted
    std::array<cv::Mat, 31> halves_;  // each half as large as the one before
};

}  // namespace orx::display

#endif
