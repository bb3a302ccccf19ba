#include "orxFunctions/files/image_saver_internal.h"

#include <chrono>
#include <exception>
#include <system_error>
#include <utility>
#include <vector>

#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/message_colours_internal.h"
#include "orxFunctions/platform/file_access_internal.h"
#include "orxFunctions/platform/pictures/picture_modules.h"

namespace orx {
namespace {

std::size_t bytesOf(const cv::Mat& image) { return image.total() * image.elemSize(); }

bool tryToWrite(const ImageSaver::Job& job) {
    try {
        // Loaded already, by who handed the image over.
        const platform::PictureCodecs* const codecs = platform::pictureModules.codecs();
        std::vector<unsigned char> encoded;
        if (codecs == nullptr || !codecs->imencode(job.extension, job.image, encoded, {})) return false;
        std::error_code error;
        std::filesystem::create_directories(job.path.parent_path(), error);
        return platform::createFile(job.path, encoded.data(), encoded.size()) ==
               platform::CreateResult::kCreated;
    } catch (const std::exception&) {  // OpenCV's for pixels that the format can't hold, or no memory
        return false;
    }
}

void write(ImageSaver::Job& job) {
    if (tryToWrite(job)) return;
    try {
        APPshowMessage(std::move(job.failure), kErrorColor);
    } catch (const std::exception&) {  // no memory to tell it, and none to go on with but for the next image
    }
}

}  // namespace

ImageSaver::~ImageSaver() {
    worker_.join();
    // On POSIX nothing is left now. On Windows the end of the process ends the thread at any point: if it did
    // not hold the lock, the images behind it are written here. Nobody is told: who waited is gone, too, and
    // a condition must not be used any more then.
    if (!mutex_.try_lock()) return;
    mutex_.unlock();
    for (Job job; take(job);) write(job);
}

ImageSaver::Answer ImageSaver::add(Job job) {
    const zul::LockGuard lock(mutex_);
    const std::size_t bytes = bytesOf(job.image);
    if (jobs_.size() >= kMostImages || (!jobs_.empty() && bytes_ + bytes > kMostBytes)) {
        return std::exchange(refused_, true) ? Answer::kFullAgain : Answer::kFull;
    }
    waitAtTheEnd();
    if (isEnding_ || (!working_ && !worker_.start(writeOnThread, this))) return Answer::kNoThread;
    working_ = true;
    jobs_.push_back(std::move(job));  // first: without memory for it there is nothing to count
    refused_ = false;
    bytes_ += bytes;
    ++added_;
    return Answer::kTaken;
}

// At the end of a process what was made last goes first. OpenCV makes its codecs when they are first asked
// for, which is later than this object was made: to wait for the images before the codecs go, the object
// that waits is made later still, and so here and not among the other process-wide ones.
//
// What a thread is the first to use of the C++ run time is made here, too: on Windows the end of the process
// might end it in the middle of that, and whoever needs the same on the way out would wait forever.
void ImageSaver::waitAtTheEnd() {
    struct Wait {
        Wait() {
            if (const platform::PictureCodecs* const codecs = platform::pictureModules.codecs())
                codecs->haveImageWriter(".png");
            static_cast<void>(std::uncaught_exceptions());  // asked by those who wait for a condition
        }
        ~Wait() {
            imageSaver.isEnding_ = true;
            imageSaver.worker_.join();
        }
        Wait(const Wait&) = delete;
        Wait& operator=(const Wait&) = delete;
    };
    static const Wait wait;
}

bool ImageSaver::flush(int milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    std::uint64_t last = 0;
    const std::shared_ptr<Finished> finished = finishedUntil(last);
    const zul::LockGuard lock(finished->mutex);
    while (finished->images < last) {
        if (milliseconds < 0) {
            finished->oneMore.wait(finished->mutex);
        } else if (finished->oneMore.wait_until(finished->mutex, end) == std::cv_status::timeout) {
            return finished->images >= last;
        }
    }
    return true;
}

// Where to wait for the images that were added until now, whose number is `last`.
std::shared_ptr<ImageSaver::Finished> ImageSaver::finishedUntil(std::uint64_t& last) {
    const zul::LockGuard lock(mutex_);
    last = added_;
    if (waitedFor_ == nullptr) {
        waitedFor_ = std::make_shared<Finished>();
        const zul::LockGuard first(waitedFor_->mutex);
        waitedFor_->images = finished_;
    }
    return waitedFor_;
}

std::uint64_t ImageSaver::nextNumber() {
    const zul::LockGuard lock(mutex_);
    return numbers_++;
}

void ImageSaver::writeOnThread(void* self) {
    auto& saver = *static_cast<ImageSaver*>(self);
    for (Job job; saver.take(job);) {
        write(job);
        saver.finish(bytesOf(job.image));
    }
}

// The next image. False when there is none, and the thread ends: the next one to come starts another.
bool ImageSaver::take(Job& job) {
    const zul::LockGuard lock(mutex_);
    working_ = !jobs_.empty();
    if (!working_) return false;
    job = std::move(jobs_.front());
    jobs_.pop_front();
    return true;
}

void ImageSaver::finish(std::size_t bytes) {
    std::shared_ptr<Finished> waitedFor;
    std::uint64_t images = 0;
    {
        const zul::LockGuard lock(mutex_);
        bytes_ -= bytes;
        images = ++finished_;
        waitedFor = waitedFor_;
    }
    if (waitedFor == nullptr) return;
    const zul::LockGuard lock(waitedFor->mutex);
    waitedFor->images = images;
    waitedFor->oneMore.notify_all();
}

}  // namespace orx
