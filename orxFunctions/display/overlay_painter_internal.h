// Draws an overlay into the picture that a window shows.
#ifndef ORXFUNCTIONS_DISPLAY_OVERLAY_PAINTER_INTERNAL_H
#define ORXFUNCTIONS_DISPLAY_OVERLAY_PAINTER_INTERNAL_H

#include <opencv2/core.hpp>
#include <set>
#include <string>
#include <vector>

#include "orxFunctions/display/fit_geometry_internal.h"
#include "orxFunctions/display/picture_overlay.h"

namespace orx::display {

using Groups = std::set<std::string>;

// The buffer is kept, so that pictures of one size after another cost no pixel memory. One thread at a time.
class OverlayPainter {
  public:
    // The picture is 8-bit BGR. Shapes of the hidden groups are left out.
    void paint(cv::Mat& picture, const TOverlay& overlay, const Groups& hidden, const ViewMapping& mapping);

  private:
    void paint(cv::Mat& picture, const TShape& shape, const ViewMapping& mapping);

    cv::Mat mask_;  // how much of each pixel a shape covers, where it lets something through
};

}  // namespace orx::display

#endif
