// The pictures of a calibration: which files they are, and what they show of the target.
#ifndef ORX_EXAMPLES_CALIBRATION_PICTURES_H
#define ORX_EXAMPLES_CALIBRATION_PICTURES_H

#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace calibration {

struct Photograph {
    std::string file;  // in UTF-8
    orx::TTargetView view;
};

// The pictures of a folder in the order of their names, by the extensions that OpenCV reads; or a file
// itself. Empty for what is not there.
std::vector<std::string> listPictures(const std::string& path);

// Looks for the target in each file. What is no picture shows none.
std::vector<Photograph> readPhotographs(const std::vector<std::string>& files, const orx::TTarget& target);

// The views alone, in the same order.
std::vector<orx::TTargetView> viewsOf(const std::vector<Photograph>& photographs);

}  // namespace calibration

#endif
