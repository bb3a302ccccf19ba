// A lot of plates as they leave a press: four holes, a slot and straight edges, each a little off its drawing
// and a few beyond their tolerances, on a tilted plane before a camera whose lens bends the picture.
//
// Everything is known in millimetres. A lot depends on its settings alone, as in synthetic_scene.h.
// Reentrant.
#ifndef EXAMPLES_SUPPORT_PLATE_SCENE_H
#define EXAMPLES_SUPPORT_PLATE_SCENE_H

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "support/plane_scene.h"

namespace scenes {

struct PlateHole {
    cv::Point2d center;
    double diameter = 0;
};

// Millimetres in the axes of the drawing: x along the plate, y towards its slot, the origin midway between
// the outer ends of the slot and of hole 4, by which the plate is found. As it stands here, it is the
// drawing.
struct Plate {
    double left = -39;
    double right = 33;
    double top = -28;
    double bottom = 16;
    std::array<PlateHole, 4> holes{{{{-31, -20}, 6}, {{25, -20}, 6}, {{-31, 8}, 6}, {{14, 0}, 14}}};
    std::array<cv::Point2d, 2> slotEnds{{{-18, 0}, {-4, 0}}};  // the centres of its round ends
    double slotWidth = 6;
};

// A dimension of the drawing, as the recipe examples/plates/plate.json calls it.
struct PlateValue {
    const char* name;
    double tolerance;  // to either side of the drawing's value, millimetres
    double value;      // of this plate
};
std::vector<PlateValue> plateValues(const Plate& plate);

struct PlatePose {
    cv::Point2d origin;  // of the drawing's axes, millimetres on the plane
    double angle = 0;    // degrees, from x to y
};

struct PlatePart {
    Plate plate;
    PlatePose pose;
    std::string fault;  // in English: what is beyond its tolerance; empty for a good part
};

struct PlateLotSettings {
    int count = 200;
    double badShare = 0.05;  // of the parts; rounded to whole ones
    std::uint64_t seed = 1;
};

// Good parts keep all their tolerances, of which they use a quarter (one standard deviation); bad ones are
// beyond one of them by a twentieth to twice its width. Anywhere in the camera's field, at any angle.
std::vector<PlatePart> plateLot(const PlateLotSettings& settings);

// Dark on a bright ground.
PlaneShape plateShape(const Plate& plate, const PlatePose& pose);

// A VGA camera above the plane, 0.2 mm a pixel. The plane's axes are those of the target that lies on it.
PlaneCamera plateCamera();
// The plate about the middle of that camera's picture, lying across: slot and hole 4 lie within kPlateRegion.
PlatePose plateToTeach();
const cv::Rect kPlateRegion(215, 210, 250, 110);

// The target of dots, and the cameras that it is shown to: first that of the plates' plane, then the target
// is tilted this way and that.
constexpr int kPlateTargetColumns = 11;
constexpr int kPlateTargetRows = 8;
constexpr double kPlateTargetPitch = 10;  // millimetres
std::vector<PlaneCamera> plateTargetCameras();

}  // namespace scenes

#endif
