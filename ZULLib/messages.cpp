// The queue of messages for the user.
#include "ZULLib/zullib.h"

#include <algorithm>
#include <deque>
#include <string>
#include <utility>

#include "ZULLib/sync_internal.h"

namespace zul {
namespace {

struct Message {
    std::string text;
    int color;
};

// Bounded, so that a host that never polls does not leak.
class MessageQueue {
  public:
    void push(Message message) {
        const LockGuard lock(mutex_);
        if (waitingLike(message) >= kMostAlike) {
            ++repeated_;
            return;
        }
        if (messages_.size() == kMaxCount) {
            messages_.pop_front();
            ++dropped_;
        }
        messages_.push_back(std::move(message));
    }

    bool take(std::string& text, int& color) {
        const LockGuard lock(mutex_);
        if (messages_.empty()) return false;
        text = std::move(messages_.front().text);
        color = messages_.front().color;
        messages_.pop_front();
        return true;
    }

    std::uint64_t dropped() const {
        const LockGuard lock(mutex_);
        return dropped_;
    }

    std::uint64_t repeated() const {
        const LockGuard lock(mutex_);
        return repeated_;
    }

  private:
    static constexpr std::size_t kMaxCount = 1000;
    static constexpr std::ptrdiff_t kMostAlike = 16;

    std::ptrdiff_t waitingLike(const Message& message) const ZUL_REQUIRES(mutex_) {
        return std::count_if(messages_.begin(), messages_.end(), [&message](const Message& other) {
            return other.color == message.color && other.text == message.text;
        });
    }

    mutable Mutex mutex_;
    std::deque<Message> messages_ ZUL_GUARDED_BY(mutex_);
    std::uint64_t dropped_ ZUL_GUARDED_BY(mutex_) = 0;
    std::uint64_t repeated_ ZUL_GUARDED_BY(mutex_) = 0;
};

// Never destroyed: threads may report until the process ends.
MessageQueue& messages() {
    static auto* const queue = new MessageQueue;
    return *queue;
}

}  // namespace

int G_appshowMsg_defaultColor = 0;

bool APPshowMessage(std::string text, int color) {
    messages().push({std::move(text), color});
    return true;
}

bool APPgetMessage(std::string& text, int& color) { return messages().take(text, color); }

std::uint64_t droppedMessageCount() { return messages().dropped(); }

std::uint64_t repeatedMessageCount() { return messages().repeated(); }

}  // namespace zul
