#include "orxFunctions/matching/part_model.h"

#include <utility>

#include "orxFunctions/matching/model/model_data.h"

namespace orx {

const char* matchStatusText(TMatchStatus status) {
    switch (status) {
        case msOk:
            return "ok";
        case msBadImage:
            return "no picture, or of a kind that is not supported";
        case msBadRegion:
            return "the region does not lie in the picture";
        case msBadOptions:
            return "an option is outside of its range";
        case msTooFewEdges:
            return "too few edges to find a part by";
        case msBadOutline:
            return "pieces of the outline that can't be drawn";
        case msBadModel:
            return "the model was not taught";
        case msTooLarge:
            return "too large";
        case msUnreadable:
            return "the file can't be read, or is no model";
        case msUnwritable:
            return "the file can't be written";
    }
    return "unknown status";
}

TPartModel::TPartModel() : data_(std::make_shared<const matching::ModelData>()) {}
TPartModel::TPartModel(std::shared_ptr<const matching::ModelData> data)
    : data_(data ? std::move(data) : std::make_shared<const matching::ModelData>()) {}
// Moving copies: no model is ever without data.
TPartModel::TPartModel(const TPartModel&) = default;
TPartModel::TPartModel(TPartModel&& other) noexcept : data_(other.data_) {}
TPartModel& TPartModel::operator=(const TPartModel&) = default;
TPartModel& TPartModel::operator=(TPartModel&& other) noexcept {
    data_ = other.data_;
    return *this;
}
TPartModel::~TPartModel() = default;

bool TPartModel::valid() const { return data_->report.status == msOk; }
const TTeachReport& TPartModel::report() const { return data_->report; }
TPartPose TPartModel::taughtPose() const { return data_->taught; }

std::vector<cv::Point2d> TPartModel::outline() const {
    std::vector<cv::Point2d> points;
    points.reserve(data_->outline.size());
    for (const matching::OutlinePoint& point : data_->outline) points.push_back(point.position);
    return points;
}

std::vector<cv::Point2d> TPartModel::normals() const {
    std::vector<cv::Point2d> normals;
    normals.reserve(data_->outline.size());
    for (const matching::OutlinePoint& point : data_->outline) normals.push_back(point.normal);
    return normals;
}

}  // namespace orx
