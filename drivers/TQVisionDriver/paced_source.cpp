#include "drivers/TQVisionDriver/paced_source.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

constexpr long kHighestRate = 1000;

Clock::duration periodOf(double rate) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1.0 / rate));
}

unsigned long long nanosecondsOf(Clock::time_point moment) {
    return static_cast<unsigned long long>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(moment.time_since_epoch()).count());
}

float millisecondsSince(Clock::time_point moment) {
    return std::chrono::duration<float, std::milli>(Clock::now() - moment).count();
}

}  // namespace

PacedSource::PacedSource(std::unique_ptr<PictureMaker> maker, double rate)
    : maker_(std::move(maker)), rate_(rate) {}

PacedSource::~PacedSource() { PacedSource::stop(); }

bool PacedSource::open() { return maker_->available(); }

void PacedSource::close() {}

bool PacedSource::start(PictureFormat& format) {
    if (!maker_->prepare(format)) return false;
    // Until the first picture there is a black one.
    given_ = cv::Mat::zeros(format.height, format.width, CV_8UC(format.channels));
    {
        const zul::LockGuard lock(mutex_);
        stopping_ = ended_ = fresh_ = false;
        triggers_ = 0;
        made_ = lost_ = 0;
        bytes_ = 0.0;
        newestNumber_ = givenNumber_ = 0;
        started_ = newestMade_ = givenMade_ = waitingSince_ = Clock::now();
    }
    thread_ = std::thread(&PacedSource::run, this);
    return true;
}

void PacedSource::stop() {
    if (!thread_.joinable()) return;
    {
        const zul::LockGuard lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

bool PacedSource::waitForTurn(Clock::time_point& due) {
    const zul::LockGuard lock(mutex_);
    while (!stopping_) {
        if (isTriggered()) {
            if (triggers_ > 0) {
                --triggers_;
                due = Clock::now();
                return true;
            }
            changed_.wait(mutex_);
        } else if (const Clock::time_point now = Clock::now(); now >= due) {
            // A source that can't keep up does not try to catch up.
            due = std::max(due + periodOf(rate_), now);
            return true;
        } else {
            // Anything may have changed when this ends: the rate, the trigger.
            due = std::min(due, now + periodOf(rate_));
            changed_.wait_until(mutex_, due);
        }
    }
    return false;
}

Made PacedSource::makeNext(std::int64_t number) {
    try {
        return maker_->make(number, drawing_);
    } catch (const std::exception& failure) {
        trace("picture " + std::to_string(number) + ": " + failure.what());
        return Made::kNothing;
    }
}

bool PacedSource::keep(Made result) {
    const zul::LockGuard lock(mutex_);
    if (result == Made::kEnd) {
        ended_ = true;
    } else if (result == Made::kNothing) {
        ++lost_;
    } else {
        cv::swap(drawing_, newest_);
        newestMade_ = Clock::now();
        fresh_ = true;
        ++made_;
        newestNumber_ = made_ + lost_;
        bytes_ += static_cast<double>(newest_.total() * newest_.elemSize());
    }
    changed_.notify_all();
    return !ended_;
}

void PacedSource::run() {
    Clock::time_point due = Clock::now();
    std::int64_t number = 0;
    while (waitForTurn(due) && keep(makeNext(++number))) {
    }
}

bool PacedSource::fetch(VDImage& image) {
    const zul::LockGuard lock(mutex_);
    const Clock::time_point end = Clock::now() + kLongestFetch;
    while (!fresh_ && changed_.wait_until(mutex_, end) == std::cv_status::no_timeout) {
    }
    if (fresh_) {
        cv::swap(given_, newest_);
        givenMade_ = waitingSince_ = newestMade_;
        givenNumber_ = newestNumber_;
        fresh_ = false;
    } else if (!isTriggered() && !ended_ && Clock::now() - waitingSince_ > patience(1.0 / rate_)) {
        return false;
    }
    image = {given_.cols, given_.rows, given_.channels(), given_.data};
    return true;
}

VDFrameInfo PacedSource::frameInfo() {
    const zul::LockGuard lock(mutex_);
    VDFrameInfo info = {};
    info.number = static_cast<unsigned long long>(givenNumber_);
    info.newest = static_cast<unsigned long long>(newestNumber_);
    if (givenNumber_ > 0) info.device_time = nanosecondsOf(givenMade_);
    info.age = nanosecondsSince(givenMade_);
    // Nothing more is awaited where the first could not be made.
    const bool isPending = givenNumber_ == 0 && (fresh_ || (lost_ == 0 && !ended_ && !isTriggered()));
    if (isPending && Clock::now() - started_ < kLongestStart) info.flags |= VD_FRAME_FIRST_PENDING;
    return info;
}

bool PacedSource::setParameter(int id, long value) {
    if (id == VD_PARAM_FRAME_RATE) {
        if (value < 1 || value > kHighestRate) return false;
        const zul::LockGuard lock(mutex_);
        rate_ = static_cast<double>(value);
    } else if (id == VD_PARAM_TRIGGER_MODE) {
        // There are no input lines.
        if (value != VD_TRIGGER_OFF && value != VD_TRIGGER_SOFTWARE) return false;
        const zul::LockGuard lock(mutex_);
        triggerMode_ = value;
        triggers_ = 0;
        waitingSince_ = Clock::now();
    } else if (id == VD_PARAM_SOFTWARE_TRIGGER) {
        const zul::LockGuard lock(mutex_);
        // As at a camera: a trigger while the last one is still being served is lost.
        if (triggerMode_ != VD_TRIGGER_SOFTWARE || !thread_.joinable() || triggers_ > 0) return false;
        ++triggers_;
    } else {
        return maker_->setParameter(id, value, thread_.joinable());
    }
    changed_.notify_all();
    return true;
}

float PacedSource::parameter(int id) {
    if (id < VD_PARAM_FRAME_NUMBER && id != VD_PARAM_FRAME_RATE && id != VD_PARAM_TRIGGER_MODE &&
        id != VD_PARAM_SOFTWARE_TRIGGER) {
        return maker_->parameter(id);
    }
    const zul::LockGuard lock(mutex_);
    switch (id) {
        case VD_PARAM_FRAME_RATE:
            return static_cast<float>(rate_);
        case VD_PARAM_TRIGGER_MODE:
            return static_cast<float>(triggerMode_);
        case VD_PARAM_SOFTWARE_TRIGGER:
            return 0.0F;
        case VD_PARAM_FRAME_NUMBER:
            return static_cast<float>(made_);
        case VD_PARAM_FRAME_AGE:
            return millisecondsSince(givenMade_);
        case VD_PARAM_FRAMES_LOST:
            return static_cast<float>(lost_);
        case VD_PARAM_BYTES_RECEIVED:
            return static_cast<float>(bytes_);
        default:
            return kNoValue;
    }
}

}  // namespace vision
