#include "drivers/TQVisionDriver/slots.h"

#include <utility>

#include "drivers/TQVisionDriver/source_choice.h"

namespace vision {

Slot::Slot(std::unique_ptr<Source> source) : source_(std::move(source)) {}

Slot::~Slot() { close(); }

bool Slot::open() {
    const zul::LockGuard lock(mutex_);
    if (state_ != State::kClosed) return true;
    if (!source_->open()) return false;
    state_ = State::kOpen;
    return true;
}

bool Slot::start(PictureFormat& format) {
    const zul::LockGuard lock(mutex_);
    if (state_ == State::kClosed) return false;
    if (state_ == State::kOpen) {
        if (!source_->start(format_)) return false;
        state_ = State::kRunning;
    }
    format = format_;
    return true;
}

bool Slot::stop() {
    const zul::LockGuard lock(mutex_);
    if (state_ == State::kClosed) return false;
    if (state_ == State::kRunning) source_->stop();
    state_ = State::kOpen;
    return true;
}

bool Slot::fetch(VDImage& image) {
    const zul::LockGuard lock(mutex_);
    return state_ == State::kRunning && source_->fetch(image);
}

bool Slot::frameInfo(VDFrameInfo& info) {
    const zul::LockGuard lock(mutex_);
    if (state_ != State::kRunning) return false;
    info = source_->frameInfo();
    return true;
}

bool Slot::close() {
    const zul::LockGuard lock(mutex_);
    if (state_ == State::kRunning) source_->stop();
    if (state_ != State::kClosed) source_->close();
    state_ = State::kClosed;
    return true;
}

bool Slot::setParameter(int id, long value) {
    const zul::LockGuard lock(mutex_);
    return state_ != State::kClosed && source_->setParameter(id, value);
}

float Slot::parameter(int id) {
    const zul::LockGuard lock(mutex_);
    return state_ != State::kClosed ? source_->parameter(id) : kNoValue;
}

bool SlotTable::initialise(int type) {
    clear();
    SourceChoice choice = chooseSources(type);
    Table found;
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (choice.sources[i]) found[i] = std::make_shared<Slot>(std::move(choice.sources[i]));
    }
    const zul::LockGuard lock(mutex_);
    slots_.swap(found);
    return choice.anyAvailable;
}

void SlotTable::clear() {
    Table leaving;
    {
        const zul::LockGuard lock(mutex_);
        leaving.swap(slots_);
    }
    for (const std::shared_ptr<Slot>& slot : leaving) {
        if (slot) slot->close();
    }
}

std::shared_ptr<Slot> SlotTable::at(int index) {
    if (index < 0 || index >= VD_MAX_CAMERAS) return nullptr;
    const zul::LockGuard lock(mutex_);
    return slots_[static_cast<std::size_t>(index)];
}

}  // namespace vision
