#include "inspection/parts/part_search.h"

#include <chrono>
#include <cmath>

namespace inspection {

FoundParts findPartsIn(const cv::Mat& grey, const orx::TPartModel& model, const orx::TFindOptions& options) {
    FoundParts found;
    found.model = model;
    const auto start = std::chrono::steady_clock::now();
    found.result = orx::findParts(grey, model, options);
    found.milliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return found;
}

std::vector<PartError> compareWithTruth(const orx::TFindResult& found,
                                        const std::vector<scenes::PlacedPart>& truth) {
    constexpr double kNear = 5.0;
    std::vector<PartError> errors;
    for (const scenes::PlacedPart& part : truth) {
        PartError error;
        error.truth = part.pose;
        const double turn = 360.0 / scenes::partShape(part.kind).symmetry;
        for (std::size_t i = 0; i < found.parts.size() && error.part < 0; ++i) {
            const orx::TPartPose& pose = found.parts[i].pose;
            if (std::hypot(pose.x - part.pose.x, pose.y - part.pose.y) > kNear) continue;
            error.part = static_cast<int>(i);
            error.x = pose.x - part.pose.x;
            error.y = pose.y - part.pose.y;
            error.angle = std::remainder(pose.angle - part.pose.angle, turn);
        }
        errors.push_back(error);
    }
    return errors;
}

PartTray renderPartTray(std::uint64_t seed) {
    PartTray tray;
    scenes::PartSceneSettings settings;
    settings.kind = scenes::kFiveParts.at(static_cast<std::size_t>(seed % scenes::kFiveParts.size()));
    settings.seed = seed;
    settings.size = {1200, 900};
    settings.count = 20;
    settings.clutter = 15;
    settings.lightFall = 0.35;
    tray.scene = scenes::renderParts(settings);

    const scenes::PartPicture alone = scenes::renderPartAlone(settings.kind);
    orx::TTeachOptions teach;
    teach.hasReference = true;
    teach.reference = {alone.pose.x, alone.pose.y};
    teach.direction = alone.pose.angle;
    tray.model =
        orx::teachPart(alone.image, cv::Rect(4, 4, alone.image.cols - 8, alone.image.rows - 8), teach);
    tray.find.maxParts = static_cast<int>(tray.scene.parts.size());
    return tray;
}

}  // namespace inspection
