// Options of teaching: a recipe proposed from a picture of a good part.
#ifndef EXAMPLES_INSPECTION_TEACH_TEACH_OPTIONS_H
#define EXAMPLES_INSPECTION_TEACH_TEACH_OPTIONS_H

#include <opencv2/core.hpp>
#include <optional>
#include <string>

namespace inspection {

struct TeachOptions {
    std::string picture;             // its file; empty: nothing is taught
    std::string name;                // of the recipe; empty: the picture's
    std::optional<cv::Rect> region;  // of the part; none: what stands out
    std::string calibration;         // file of a plane calibration; empty: pixels
    std::string model;               // file of a part model; empty: it is taught, too
    bool fixed = false;              // no model: the part always lies where it does in the picture
    int features = 40;
    double minLength = 20.0;  // pixels
    double share = 0.01;      // of the value, for its tolerance

    bool wanted() const { return !picture.empty(); }
};

}  // namespace inspection

#endif
