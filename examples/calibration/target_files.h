// Targets written to files, to be printed.
#ifndef ORX_EXAMPLES_CALIBRATION_TARGET_FILES_H
#define ORX_EXAMPLES_CALIBRATION_TARGET_FILES_H

#include <string>

#include "orxFunctions/orxfunctions.h"

namespace calibration {

// Names are in UTF-8; an empty one asks for no file.
struct TargetFiles {
    std::string png;      // a chessboard in pixels
    int pngWidth = 2970;  // A4 across, 10 pixels a millimetre
    int pngHeight = 2100;
    int pngSquare = 250;
    int pngMargin = 150;
    std::string pdf;  // the target to scale
    std::string svg;
    std::string page = "A4";  // A3, or WIDTHxHEIGHT in millimetres
};

// False for no such page.
bool pageOf(const std::string& text, orx::TTargetPage& page);

// Why the targets can't be as they are asked for, in English: no such page, or no room on it. Empty where
// they can.
std::string problemOfTargets(const TargetFiles& files, const orx::TTarget& target);

// Writes what is asked for and tells of each; what went wrong, empty where nothing did.
std::string writeTargets(const TargetFiles& files, const orx::TTarget& target);

// The inner corners of the chessboard that orx::createCalibrateImage draws; below 0 where no square fits.
cv::Size targetCorners(cv::Size imageSize, int squareSize, int margin);

}  // namespace calibration

#endif
