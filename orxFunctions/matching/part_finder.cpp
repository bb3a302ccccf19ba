#include "orxFunctions/matching/part_finder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/matching/model/byte_grey.h"
#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/pyramid.h"
#include "orxFunctions/matching/model/teach_report.h"
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
    return takesOptions("findParts", {{"startAngle", options.startAngle, -kLargestAngle, kLargestAngle},
                                      {"angleRange", options.angleRange, 0, 360},
                                      {"minScale", options.minScale, 0.2, 5},
                                      {"maxScale", options.maxScale, options.minScale, 5},
                                      {"polarity", static_cast<double>(options.polarity), ppSame, ppEither},
                                      {"minScore", options.minScore, 0.1, 1},
                                      {"maxParts", static_cast<double>(options.maxParts), 1, 10000},
                                      {"maxOverlap", options.maxOverlap, 0, 1},
                                      {"greediness", options.greediness, 0, 1},
                                      {"minContrast", options.minContrast, 0, 255},
                                      {"noise", options.noise, 0, 255}});
}

bool isWhole(const cv::Rect& region) { return region == cv::Rect(); }

bool liesIn(const cv::Rect& region, cv::Size size) {
    const auto end = [](int from, int length) { return std::int64_t{from} + length; };
    if (region.x >= 0 && region.y >= 0 && region.width > 0 && region.height > 0 &&
        end(region.x, region.width) <= size.width && end(region.y, region.height) <= size.height) {
        return true;
    }
    return refuse(rcOutside, "findParts",
                  "the region at %d, %d of %d x %d is not inside the picture of %d x %d", region.x, region.y,
                  region.width, region.height, size.width, size.height);
}

bool isUsable(const TPartModel& model) {
    if (!matching::takesModel(model, "findParts")) return false;
    if (!model.data()->outline.empty() && !model.data()->levels.empty()) return true;
    return refuse(rcNotReady, "findParts", "the model holds no outline");
}

TMatchStatus statusOf(const cv::Mat& img, const TPartModel& model, const TFindOptions& options) {
    if (!takesPicture(img, "findParts")) return msBadImage;
    if (!isUsable(model)) return msBadModel;
    if (!isAcceptable(options)) return msBadOptions;
    if (!isWhole(options.region) && !liesIn(options.region, img.size())) return msBadRegion;
    return msOk;
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

    // Whether a part there would cover one of at least this score too much, or be covered by it.
    bool isTaken(const TPartPose& pose, double score) const {
        const Box box = matching::boxAt(box_, pose);
        for (std::size_t i = 0; i < parts_.size(); ++i) {
            if (parts_[i].score < score) break;
            if (matching::sharedArea(box, boxes_[i]) > options_.maxOverlap) return true;
        }
        return false;
    }

    void add(TFoundPart part) {
        boxes_.push_back(matching::boxAt(box_, part.pose));
        parts_.push_back(std::move(part));
    }

    bool isFull() const { return parts_.size() >= static_cast<std::size_t>(options_.maxParts); }
    // Full, and all have at least this score.
    bool isFullOf(double score) const { return isFull() && parts_.back().score >= score; }
    std::vector<TFoundPart> take() { return std::move(parts_); }

  private:
    Box box_;
    const TFindOptions& options_;
    std::vector<Box> boxes_;
    std::vector<TFoundPart> parts_;
};

// Refines candidates, best first, as long as they can change the list.
class Selection {
  public:
    Selection(const cv::Mat& grey, const ModelData& model, const TFindOptions& options)
        : grey_(grey), model_(model), options_(options), box_(matching::outlineBox(model)) {}

    std::vector<TFoundPart> choose(const std::vector<Candidate>& candidates) {
        // So many at a time on any number of threads: the same ones are left out. Mostly the best will do.
        std::size_t most = static_cast<std::size_t>(options_.maxParts);
        std::size_t next = 0;
        while (next < candidates.size()) {
            const PartList list = best();
            std::vector<Candidate> batch;
            for (; next < candidates.size() && batch.size() < most; ++next) {
                if (canMatter(candidates[next], list)) batch.push_back(candidates[next]);
            }
            refine(batch);
            most = std::max<std::size_t>(most, 4);
        }
        return best().take();
    }

  private:
    // What the best refined scores are to the search's: parts tell more of their outline from near.
    static double hoped(const Candidate& candidate) { return std::min(1.15 * candidate.score + 0.08, 0.98); }

    bool canMatter(const Candidate& candidate, const PartList& list) const {
        const double hope = hoped(candidate);
        return !list.isFullOf(hope) && !list.isTaken(candidate.pose, hope);
    }

    void refine(const std::vector<Candidate>& batch) {
        const double period = periodOf(model_);
        std::vector<TFoundPart> parts(batch.size());
        platform::parallelFor(static_cast<int>(batch.size()), [&](int i) {
            const auto k = static_cast<std::size_t>(i);
            parts[k] = matching::refineCandidate(grey_, model_, batch[k], options_);
        });
        for (TFoundPart& part : parts) {
            part.pose.angle = foldedAngle(part.pose.angle, period, options_);
            if (part.score < options_.minScore || !wasAskedFor(part.pose, period, options_)) continue;
            good_.push_back(std::move(part));
        }
        std::stable_sort(good_.begin(), good_.end(),
                         [](const TFoundPart& a, const TFoundPart& b) { return a.score > b.score; });
    }

    PartList best() const {
        PartList list(box_, options_);
        for (const TFoundPart& part : good_) {
            if (list.isFull()) break;
            if (!list.isTaken(part.pose, 0)) list.add(part);
        }
        return list;
    }

    const cv::Mat& grey_;
    const ModelData& model_;
    const TFindOptions& options_;
    Box box_;
    std::vector<TFoundPart> good_;  // best first
};

}  // namespace

TFindResult findParts(const cv::Mat& img, const TPartModel& model, const TFindOptions& options) {
    TFindResult result;
    result.status = statusOf(img, model, options);
    if (result.status != msOk) return result;
    const ModelData& data = *model.data();
    const cv::Mat grey = matching::byteGrey(img);
    const TFindOptions all = completed(options, grey, data);
    const std::vector<cv::Mat> pyramid = matching::makePyramid(grey, static_cast<int>(data.levels.size()));
    const std::vector<Candidate> candidates = matching::searchCandidates(pyramid, data, all);
    result.parts = Selection(grey, data, all).choose(candidates);
    return result;
}

}  // namespace orx
