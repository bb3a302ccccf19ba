// Work on several threads whose results come in order.
#ifndef EXAMPLES_INSPECTION_BATCH_ORDERED_WORK_H
#define EXAMPLES_INSPECTION_BATCH_ORDERED_WORK_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace inspection {

// Calls make(0) to make(count - 1) on `jobs` threads and take(i, result) on the caller's, in order; with one
// job all on the caller's. No more than eight results a job wait to be taken, so that memory stays flat. Ends
// early where take returns false or stop() is true: what was begun then is still taken, unless take said no.
// make must not throw.
template <class Result>
class OrderedWork {
  public:
    using Make = std::function<Result(std::size_t)>;
    using Take = std::function<bool(Result&&)>;
    using Stop = std::function<bool()>;

    OrderedWork(std::size_t count, int jobs, Make make, Take take, Stop stop)
        : count_(count),
          jobs_(static_cast<std::size_t>(jobs)),
          make_(std::move(make)),
          take_(std::move(take)),
          stop_(std::move(stop)),
          slots_(jobs_ * kWaitingPerJob) {}

    void run() {
        if (jobs_ <= 1) {
            for (std::size_t i = 0; i < count_ && !stop_() && take_(make_(i)); ++i) {
            }
            return;
        }
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < jobs_; ++i) threads.emplace_back([this] { work(); });
        takeAll();
        end();
        for (std::thread& thread : threads) thread.join();
    }

  private:
    static constexpr std::size_t kWaitingPerJob = 8;
    static constexpr std::chrono::milliseconds kBetweenLooks{50};  // for a wish to stop

    void work() {
        for (;;) {
            std::size_t i = 0;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                room_.wait(lock,
                           [this] { return ending_ || begun_ >= count_ || begun_ < taken_ + slots_.size(); });
                if (ending_ || begun_ >= count_) return;
                i = begun_++;
            }
            Result result = make_(i);
            const std::lock_guard<std::mutex> lock(mutex_);
            slots_[i % slots_.size()] = std::move(result);
            made_.notify_one();
        }
    }

    void takeAll() {
        for (;;) {
            std::optional<Result> result;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                std::optional<Result>& slot = slots_[taken_ % slots_.size()];
                while (!slot) {
                    if (stop_()) ending_ = true;
                    if (taken_ >= count_ || (ending_ && taken_ >= begun_)) return;
                    made_.wait_for(lock, kBetweenLooks);
                }
                result.swap(slot);
                ++taken_;
                if (stop_()) ending_ = true;
            }
            room_.notify_all();
            if (!take_(std::move(*result))) return;
        }
    }

    void end() {
        const std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
        room_.notify_all();
    }

    const std::size_t count_;
    const std::size_t jobs_;
    const Make make_;
    const Take take_;
    const Stop stop_;
    std::mutex mutex_;
    std::condition_variable room_;
    std::condition_variable made_;
    std::vector<std::optional<Result>> slots_;
    std::size_t begun_ = 0;
    std::size_t taken_ = 0;
    bool ending_ = false;
};

}  // namespace inspection

#endif
