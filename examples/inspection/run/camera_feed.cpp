#include "inspection/run/camera_feed.h"

#include <atomic>
#include <cstring>
#include <utility>

namespace inspection {
namespace {

std::atomic<CameraFeed*> current{nullptr};

void setCallbacks(orx::TFrameCallback callback, CameraFeed* feed) {
    for (int camera = 0; camera < orx::MAXCameraNum; ++camera) orx::setFrameCallback(camera, callback, feed);
}

bool areEqual(const cv::Mat& a, const cv::Mat& b) {
    if (a.size() != b.size() || a.type() != b.type()) return false;
    const std::size_t bytes = static_cast<std::size_t>(a.cols) * a.elemSize();
    for (int row = 0; row < a.rows; ++row) {
        if (std::memcmp(a.ptr(row), b.ptr(row), bytes) != 0) return false;
    }
    return true;
}

}  // namespace

double CameraCount::rate() const {
    const double seconds = std::chrono::duration<double>(last - first).count();
    return seconds > 0.0 ? (delivered - 1) / seconds : 0.0;
}

CameraFeed::CameraFeed(bool eachOnce) : eachOnce_(eachOnce) {
    current = this;
    if (eachOnce_) setCallbacks(announce, this);
}

CameraFeed::~CameraFeed() {
    if (eachOnce_) setCallbacks(nullptr, nullptr);
    current = nullptr;
}

void CameraFeed::announce(const orx::TFrame& frame, void* feed) {
    Seen& seen = static_cast<CameraFeed*>(feed)->seen_[static_cast<std::size_t>(frame.camera)];
    seen.isNumbered = frame.isNumbered;
    seen.isNew = true;
}

void CameraFeed::receive(cv::Mat& picture, int camera) {
    CameraFeed* const feed = current;
    if (feed == nullptr) return;
    const auto slot = static_cast<std::size_t>(camera);
    const auto now = std::chrono::steady_clock::now();
    if (feed->eachOnce_ && isRepeated(picture, feed->seen_[slot])) {
        const std::lock_guard<std::mutex> lock(feed->mutex_);
        ++feed->counts_[slot].repeated;
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(feed->mutex_);
        CameraCount& count = feed->counts_[slot];
        if (count.delivered++ == 0) count.first = now;
        count.last = now;
        if (!feed->newest_[slot].empty()) ++count.dropped;
        feed->newest_[slot] = picture;
    }
    feed->arrived_.notify_one();
}

bool CameraFeed::isRepeated(const cv::Mat& picture, Seen& seen) {
    if (seen.isNumbered) {
        seen.last.release();
        return !std::exchange(seen.isNew, false);
    }
    const bool isSame =
        seen.last.empty() ? cv::countNonZero(picture.reshape(1)) == 0 : areEqual(seen.last, picture);
    if (!isSame) seen.last = picture;
    return isSame;
}

bool CameraFeed::take(std::chrono::steady_clock::time_point end, cv::Mat& picture, int& camera) {
    std::unique_lock<std::mutex> lock(mutex_);
    return arrived_.wait_until(lock, end, [&] { return takeNow(picture, camera); });
}

bool CameraFeed::takeNow(cv::Mat& picture, int& camera) {
    for (std::size_t i = 0; i < newest_.size(); ++i) {
        const std::size_t slot = (next_ + i) % newest_.size();
        if (newest_[slot].empty()) continue;
        picture = std::exchange(newest_[slot], cv::Mat());
        camera = static_cast<int>(slot);
        next_ = slot + 1;
        return true;
    }
    return false;
}

CameraCount CameraFeed::count(int camera) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return counts_[static_cast<std::size_t>(camera)];
}

}  // namespace inspection
