#include "orxFunctions/matching/part_finder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/pyramid.h"
#include "orxFunctions/matching/refine/overlap.h"
#include "orxFunctions/matching/refine/refinement.h"
#include "orxFunctions/matching/search/candidates.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx {
namespace {

using matching::Box;
using matching::Candidate;
using matching::ModelData;

// Share of the model's contrast that an edge must have, and of the noise: what is below, noise makes
// anywhere.
constexpr double kContrastShare = 0.1;
constexpr double kNoiseShare = 3.0;
constexpr double kDrawnContrast = 20.0;  // in place of a model's that knows none
// Parts may be so far beyond what was asked for: the search looks at the limits, and the part may lie just
// behind.
constexpr double kAngleSlack = 1.0;  // degrees
constexpr double kScaleSlack = 0.01;
constexpr double kLargestAngle = 1e6;

bool isAcceptable(const TFindOptions& options) {
    return isBetween(options.startAngle, -kLargestAngle, kLargestAngle) &&
           isBetween(options.angleRange, 0, 360) && isBetween(options.minScale, 0.2, 5) &&
           isBetween(options.maxScale, options.minScale, 5) && options.polarity >= ppSame &&
           options.polarity <= ppEither && isBetween(options.minScore, 0.1, 1) &&
           isBetween(options.maxParts, 1, 10000) && isBetween(options.maxOverlap, 0, 1) &&
           isBetween(options.greediness, 0, 1) && isBetween(options.minContrast, 0, 255) &&
           isBetween(options.noise, 0, 255);
}

bool isWhole(const cv::Rect& region) { return region == cv::Rect(); }

bool liesIn(const cv::Rect& region, cv::Size size) {
    const auto end = [](int from, int length) { return std::int64_t{from} + length; };
    return region.x >= 0 && region.y >= 0 && region.width > 0 && region.height > 0 &&
           end(region.x, region.width) <= size.width && end(region.y, region.height) <= size.height;
}

TMatchStatus statusOf(const cv::Mat& img, const TPartModel& model, const TFindOptions& options) {
    if (!isPicture(img)) return msBadImage;
    if (!model.valid() || model.data()->outline.empty() || model.data()->levels.empty()) return msBadModel;
    if (!isAcceptable(options)) return msBadOptions;
    if (!isWhole(options.region) && !liesIn(options.region, img.size())) return msBadRegion;
    return msOk;
}

cv::Mat byteGrey(const cv::Mat& img) {
    const cv::Mat grey = greyOf(img);
    if (grey.depth() == CV_8U) return grey;
    cv::Mat bytes;
    grey.convertTo(bytes, CV_8U, 1 / levelUnit(img));
    return bytes;
}

// After which turn the part looks the same, degrees; 0 for every turn.
double periodOf(const ModelData& model) {
    return model.report.symmetry > 0 ? 360.0 / model.report.symmetry : 0.0;
}

// The options with all that they leave to the picture and to the model.
TFindOptions completed(TFindOptions options, const cv::Mat& grey, const ModelData& model) {
    if (options.noise == 0) options.noise = getImageNoise(grey);
    if (options.minContrast == 0) {
        const double ofModel = model.contrast > 0 ? kContrastShare * model.contrast : kDrawnContrast;
        options.minContrast = std::max(ofModel, kNoiseShare * options.noise);
    }
    if (isWhole(options.region)) options.region = cv::Rect(cv::Point(), grey.size());
    options.angleRange = std::min(options.angleRange, periodOf(model));
    if (!model.signsAreKnown) options.polarity = ppSame;
    return options;
}

// Where an angle lies among those that the part looks the same at: as near to the middle of the range as it
// can, at its beginning rather than at its end.
double foldedAngle(double angle, double period, const TFindOptions& options) {
    if (period == 0) return options.startAngle;
    const double from = options.startAngle + (options.angleRange - period) / 2;
    const double folded = angle - period * std::floor((angle - from) / period);
    return folded >= from + period ? from : folded;  // rounding
}

bool wasAskedFor(const TPartPose& pose, double period, const TFindOptions& options) {
    const cv::Rect& region = options.region;
    const bool inside = pose.x >= region.x - 0.5 && pose.x < region.x + region.width - 0.5 &&
                        pose.y >= region.y - 0.5 && pose.y < region.y + region.height - 0.5;
    const bool turned = period == 0 || (pose.angle >= options.startAngle - kAngleSlack &&
                                        pose.angle <= options.startAngle + options.angleRange + kAngleSlack);
    return inside && turned && pose.scale >= options.minScale * (1 - kScaleSlack) &&
           pose.scale <= options.maxScale * (1 + kScaleSlack);
}

// Parts that do not cover one another too much, best first.
class PartList {
  public:
    PartList(const Box& box, const TFindOptions& options) : box_(box), options_(options) {}

    bool isFree(const TPartPose& pose) const {
        const Box box = matching::boxAt(box_, pose);
        return std::all_of(boxes_.begin(), boxes_.end(), [&](const Box& other) {
            return matching::sharedArea(box, other) <= options_.maxOverlap;
        });
    }

    void add(TFoundPart part) {
        boxes_.push_back(matching::boxAt(box_, part.pose));
        parts_.push_back(std::move(part));
    }

    bool isFull() const { return parts_.size() >= static_cast<std::size_t>(options_.maxParts); }
    std::vector<TFoundPart> take() { return std::move(parts_); }

  private:
    Box box_;
    const TFindOptions& options_;
    std::vector<Box> boxes_;
    std::vector<TFoundPart> parts_;
};

std::vector<TFoundPart> refineAll(const cv::Mat& grey, const ModelData& model,
                                  const std::vector<Candidate>& candidates, const TFindOptions& options) {
    std::vector<TFoundPart> parts(candidates.size());
    platform::parallelFor(static_cast<int>(candidates.size()), [&](int i) {
        const auto k = static_cast<std::size_t>(i);
        parts[k] = matching::refineCandidate(grey, model, candidates[k], options);
    });
    return parts;
}

std::vector<TFoundPart> chosenParts(std::vector<TFoundPart> found, const ModelData& model,
                                    const TFindOptions& options) {
    const double period = periodOf(model);
    std::vector<TFoundPart> good;
    for (TFoundPart& part : found) {
        part.pose.angle = foldedAngle(part.pose.angle, period, options);
        if (part.score >= options.minScore && wasAskedFor(part.pose, period, options)) {
            good.push_back(std::move(part));
        }
    }
    std::stable_sort(good.begin(), good.end(),
                     [](const TFoundPart& a, const TFoundPart& b) { return a.score > b.score; });
    PartList list(matching::outlineBox(model), options);
    for (TFoundPart& part : good) {
        if (list.isFull()) break;
        if (list.isFree(part.pose)) list.add(std::move(part));
    }
    return list.take();
}

}  // namespace

TFindResult findParts(const cv::Mat& img, const TPartModel& model, const TFindOptions& options) {
    TFindResult result;
    result.status = statusOf(img, model, options);
    if (result.status != msOk) return result;
    const ModelData& data = *model.data();
    const cv::Mat grey = byteGrey(img);
    const TFindOptions all = completed(options, grey, data);
    const std::vector<cv::Mat> pyramid = matching::makePyramid(grey, static_cast<int>(data.levels.size()));
    const std::vector<Candidate> candidates = matching::searchCandidates(pyramid, data, all);
    result.parts = chosenParts(refineAll(grey, data, candidates, all), data, all);
    return result;
}

}  // namespace orx
