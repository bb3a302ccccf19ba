#include "orxFunctions/camera/camera_image_internal.h"

#include <atomic>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/camera/turn_image_internal.h"
#include "orxFunctions/foundation/image_convert.h"

namespace orx {
namespace {

constexpr std::int32_t kLongestSide = 1'000'000;
constexpr std::int64_t kMostBytes = std::int64_t{1} << 31;

bool isPossible(const TORXImage& picture) {
    const auto isSide = [](std::int32_t length) { return length > 0 && length <= kLongestSide; };
    const bool hasColor = picture.channels == 3 || picture.channels == 4;
    return picture.data != nullptr && isSide(picture.width) && isSide(picture.height) &&
           std::int64_t{picture.width} * picture.height * (hasColor ? picture.channels : 1) <= kMostBytes;
}

Orientation orientationOf(const ImageTreatment& treatment) {
    switch (treatment.angle % 360) {
        case 90:  // transposed, then upside down; what was upside down before is left-right after transposing
            return {true, true, treatment.reverse};
        case 180:
            return {false, !treatment.reverse, true};
        case 270:  // transposed, then left-right
            return {true, false, !treatment.reverse};
        default:
            return {false, treatment.reverse, false};
    }
}

// How many headers share the pixels. OpenCV changes the count by atomic operations on a plain int, and other
// threads may be letting go of it: it is read as what it is treated as. (CV_XADD would do, but is no standard
// C++ everywhere.)
int referencesTo(const cv::UMatData& pixels) {
    static_assert(sizeof(std::atomic<int>) == sizeof pixels.refcount);
    return reinterpret_cast<const std::atomic<int>&>(pixels.refcount).load();
}

}  // namespace

bool isExclusive(const cv::Mat& image) {
    return image.u != nullptr && referencesTo(*image.u) == 1 && image.u->urefcount == 0 &&
           !image.isSubmatrix();
}

void treatImage(const TORXImage& picture, const ImageTreatment& treatment, cv::Mat& out) {
    if (!isExclusive(out)) out.release();
    TORXImage record = picture;
    const cv::Size size = treatment.scales()
                              ? cv::Size(picture.width / treatment.scale, picture.height / treatment.scale)
                              : cv::Size(picture.width, picture.height);
    if (!isPossible(picture) || size.empty()) {
        out.release();
        return;
    }
    cv::Mat source;
    ORXImage2Mat(&record, source);
    const Orientation orientation = orientationOf(treatment);
    if (!treatment.scales()) return turnImage(source, orientation, out);
    if (orientation.asItIs()) return cv::resize(source, out, size, 0, 0, cv::INTER_LINEAR);
    cv::Mat scaled;
    cv::resize(source, scaled, size, 0, 0, cv::INTER_LINEAR);
    turnImage(scaled, orientation, out);
}

}  // namespace orx
