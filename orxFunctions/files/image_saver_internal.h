// Writes images to files on a thread of its own, in the order in which they came.
//
// The thread lives only while there are images to write: a library that is loaded but unused has no thread,
// and unloading never has to wake one. The queue is bounded. A full queue refuses the image instead of making
// the caller wait: an inspection line must not stop because a disk is slow.
#ifndef ORXFUNCTIONS_FILES_IMAGE_SAVER_INTERNAL_H
#define ORXFUNCTIONS_FILES_IMAGE_SAVER_INTERNAL_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <opencv2/core.hpp>
#include <string>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/platform/worker_thread_internal.h"

namespace orx {

class ImageSaver {
  public:
    static constexpr std::size_t kMostImages = 64;
    static constexpr std::size_t kMostBytes = std::size_t{1} << 30U;  // unless a single image has more

    struct Job {
        cv::Mat image;  // nobody else's
        std::filesystem::path path;
        std::string extension;
        std::string failure;  // the message if it can't be written, in code page 936
    };

    // kFullAgain: full, and a refusal was answered with kFull since the last image that was taken.
    enum class Answer { kTaken, kFull, kFullAgain, kNoThread };

    ImageSaver() = default;
    ~ImageSaver();  // writes what is left
    ImageSaver(const ImageSaver&) = delete;
    ImageSaver& operator=(const ImageSaver&) = delete;

    Answer add(Job job);

    // Waits until every image that was added before the call is written or reported; a negative time waits as
    // long as it takes. False when the time ran out.
    bool flush(int milliseconds);

    // A number for the next file name: 0, 1, 2 ...
    std::uint64_t nextNumber();

  private:
    // Those who wait have a lock of their own, so that the one of the queue is held for moments alone. The
    // end of the process ends other threads wherever they are, on Windows: a lock that was held then stays
    // so, and the images behind it are lost; the destructor of a condition that such a thread waited for, or
    // that was never used while such a thread began to use its own, might never return.
    struct Finished {
        zul::Mutex mutex;
        std::condition_variable_any oneMore;
        std::uint64_t images ZUL_GUARDED_BY(mutex) = 0;
    };

    static void waitAtTheEnd();
    static void writeOnThread(void* self);
    bool take(Job& job);
    void finish(std::size_t bytes);
    std::shared_ptr<Finished> finishedUntil(std::uint64_t& last);

    zul::Mutex mutex_;
    // Made when somebody waits for the first time, and kept alive by whoever waits.
    std::shared_ptr<Finished> waitedFor_ ZUL_GUARDED_BY(mutex_);
    std::deque<Job> jobs_ ZUL_GUARDED_BY(mutex_);
    std::size_t bytes_ ZUL_GUARDED_BY(mutex_) = 0;  // of queued pixels
    std::uint64_t added_ ZUL_GUARDED_BY(mutex_) = 0;
    std::uint64_t finished_ ZUL_GUARDED_BY(mutex_) = 0;
    std::uint64_t numbers_ ZUL_GUARDED_BY(mutex_) = 0;
    bool working_ ZUL_GUARDED_BY(mutex_) = false;
    bool refused_ ZUL_GUARDED_BY(mutex_) = false;
    std::atomic<bool> isEnding_{false};
    platform::WorkerThread worker_;
};

// Defined in orxfunctions.cpp.
extern ImageSaver imageSaver;

}  // namespace orx

#endif
