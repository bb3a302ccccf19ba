// Pictures of parts at known poses, for finding them: hidden in part, among clutter, in uneven light.
//
// A scene depends on its settings alone, as in synthetic_scene.h; coordinates are as there. Areas are exact
// and blurred before pixels gather them, so edges lie where the truth says; in pictures of more than 6
// megapixels to within 0.03 pixels. Reentrant.
#ifndef EXAMPLES_SUPPORT_PART_SCENE_H
#define EXAMPLES_SUPPORT_PART_SCENE_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "support/part_shapes.h"

namespace scenes {

struct PartSceneSettings {
    PartKind kind = PartKind::plate;
    cv::Size size{640, 480};
    std::uint64_t seed = 1;
    // Parts lie with their circles (kPartRadius times the scale) apart and inside the picture; as many as
    // there is room for.
    int count = 1;
    double minScale = 1;
    double maxScale = 1;
    // Half of a turn to either side of 0.
    double angleRange = 360;

    double ground = 80;     // grey level
    double contrast = 100;  // the part's level less that of the ground; below 0 for dark parts
    double lightFall = 0;   // as in Exposure
    double blurSigma = 0.8;
    double noiseSigma = 2;

    // Bright and dark polygons, disks and bars for each 640 x 480 pixels of the ground. Parts lie on them,
    // with no more than a tenth of their outline.
    double clutter = 0;
    // As many parts of the other kinds of kFiveParts as there is room for, up to this number.
    int otherParts = 0;
    // Deviation of a rough ground in grey levels, whose grains are about four pixels wide.
    double texture = 0;
    // Share of each part's outline that lies under one or two covers.
    double hidden = 0;
    double coverReach = 8;  // how far covers reach beyond a part's circle at least, pixels
    // Each part touches one of those before it.
    bool touching = false;
    // Share of the first part's outline that lies outside the picture.
    double cut = 0;
    // Curved lines over everything, a pixel or two wide, for each 640 x 480 pixels.
    double threads = 0;
    // Each part's plane is tilted by so much about a line through its origin, degrees, as seen from 1000
    // pixels away. The pose is that of the part's origin, and of the part before it was tilted.
    double tilt = 0;
};

struct PlacedPart {
    PartKind kind = PartKind::plate;
    ScenePose pose;
    double hidden = 0;  // share of the outline under covers or outside the picture; threads do not count
};

struct PartScene {
    cv::Mat image;                   // CV_8UC1
    std::vector<PlacedPart> parts;   // of the kind asked for
    std::vector<PlacedPart> others;  // of other kinds
};

PartScene renderParts(const PartSceneSettings& settings);

// A part alone, in a picture just large enough for it to teach from, without noise unless it is given. It
// lies a little askew: along the rows, a picture without noise would have whole edges shifted by up to 0.03
// pixels, since all of their pixels round to grey levels alike.
struct PartPicture {
    cv::Mat image;
    ScenePose pose;
};
PartPicture renderPartAlone(PartKind kind, double noiseSigma = 0, double contrast = 100,
                            double blurSigma = 0.8);

}  // namespace scenes

#endif
