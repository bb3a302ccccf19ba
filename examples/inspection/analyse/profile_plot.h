// A curve with marked places on it.
#ifndef EXAMPLES_INSPECTION_PROFILE_PLOT_H
#define EXAMPLES_INSPECTION_PROFILE_PLOT_H

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

namespace inspection {

struct ProfilePlot {
    std::string label;  // for readers who can't see it; plain words
    std::vector<cv::Point2d> points;
    bool asDots = false;          // a dot for each point instead of a curve through them
    std::vector<double> marks;    // places on the x axis
    std::optional<double> level;  // a marked place on the y axis
};

// The plot as an SVG element with both axes labelled at their ends; "" for fewer than 2 points.
std::string profileSvg(const ProfilePlot& plot);

}  // namespace inspection

#endif
