// The trace lines of all threads while it lives.
#ifndef ORX_TESTS_SUPPORT_TRACE_LOG_H
#define ORX_TESTS_SUPPORT_TRACE_LOG_H

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ZULLib/zullib.h"

namespace test {

class TraceLog {
  public:
    using Lines = std::vector<std::string>;

    TraceLog() { zul::setTraceSink(&TraceLog::receive, this); }
    ~TraceLog() { zul::setTraceSink(nullptr, nullptr); }
    TraceLog(const TraceLog&) = delete;
    TraceLog& operator=(const TraceLog&) = delete;

    Lines lines() const {  // UTF-8
        const std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }
    auto count(const std::string& line) const {
        const Lines all = lines();
        return std::count(all.begin(), all.end(), line);
    }
    auto countStartingWith(const std::string& start) const {
        const Lines all = lines();
        return std::count_if(all.begin(), all.end(),
                             [&](const std::string& line) { return line.rfind(start, 0) == 0; });
    }
    // The lines since the last time.
    Lines take() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return std::exchange(lines_, {});
    }
    void clear() {
        const std::lock_guard<std::mutex> lock(mutex_);
        lines_.clear();
    }

  private:
    static void receive(const char* line, void* self) {
        auto* const log = static_cast<TraceLog*>(self);
        const std::lock_guard<std::mutex> lock(log->mutex_);
        log->lines_.emplace_back(line);
    }

    mutable std::mutex mutex_;
    Lines lines_;
};

}  // namespace test

#endif
