// Parts that are taught from a picture, or found in it.
#ifndef EXAMPLES_INSPECTION_PARTS_PART_SEARCH_H
#define EXAMPLES_INSPECTION_PARTS_PART_SEARCH_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "inspection/parts/part_settings.h"
#include "support/part_scene.h"

namespace inspection {

struct TaughtPart {
    cv::Rect region;
    orx::TPartModel model;  // tells by its report where there is none, and why
    std::string file;       // where the model was written, UTF-8; "" when it was not
};

// A true part beside what was found of it, found minus true.
struct PartError {
    scenes::ScenePose truth;
    int part = -1;  // index of the part found there; -1 when there is none
    double x = 0.0;
    double y = 0.0;
    double angle = 0.0;
};

struct FoundParts {
    orx::TPartModel model;
    orx::TFindResult result;
    double milliseconds = 0.0;
    std::vector<PartError> truth;  // of a rendered scene; empty where there is none
};

FoundParts findPartsIn(const cv::Mat& grey, const orx::TPartModel& model, const orx::TFindOptions& options);

// For each true part the best one found within 5 pixels of it.
std::vector<PartError> compareWithTruth(const orx::TFindResult& found,
                                        const std::vector<scenes::PlacedPart>& truth);

// Twenty parts of one kind among other things in uneven light; the kind changes with the seed.
struct PartTray {
    scenes::PartScene scene;
    orx::TPartModel
        model;  // taught from a picture of the part alone; its reference point is the part's origin
    orx::TFindOptions find;
};

PartTray renderPartTray(std::uint64_t seed);

}  // namespace inspection

#endif
