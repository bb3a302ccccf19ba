// A source that makes its pictures itself, at a set rate or when triggered, on a thread of its own, as a
// camera does: fetching never waits for a picture to be drawn or decoded.
#ifndef DRIVERS_TQVISIONDRIVER_PACED_SOURCE_H
#define DRIVERS_TQVISIONDRIVER_PACED_SOURCE_H

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <thread>

#include "ZULLib/sync_internal.h"
#include "drivers/TQVisionDriver/source.h"

namespace vision {

enum class Made {
    kPicture,
    kNothing,  // this one could not be made; it counts as lost
    kEnd       // nor will any after it
};

class PictureMaker {
  public:
    PictureMaker() = default;
    virtual ~PictureMaker() = default;
    PictureMaker(const PictureMaker&) = delete;
    PictureMaker& operator=(const PictureMaker&) = delete;

    // Whether there is anything to make pictures from.
    virtual bool available() = 0;
    // Before the first picture; gives the format of the first one. False when there will be none.
    virtual bool prepare(PictureFormat& format) = 0;
    // Makes picture `number` (1, 2, ...): 8 bits, 1, 3 or 4 channels, continuous. Called on the source's
    // thread.
    virtual Made make(std::int64_t number, cv::Mat& picture) = 0;
    // Parameters of the picture itself, called on any thread; `running` while pictures are being made.
    virtual bool setParameter(int id, long value, bool running) = 0;
    virtual float parameter(int id) = 0;
};

class PacedSource : public Source {
  public:
    PacedSource(std::unique_ptr<PictureMaker> maker, double rate);
    ~PacedSource() override;

    bool open() override;
    void close() override;
    bool start(PictureFormat& format) override;
    void stop() override;
    bool fetch(VDImage& image) override;
    VDFrameInfo frameInfo() override;
    bool setParameter(int id, long value) override;
    float parameter(int id) override;

  private:
    void run();
    // Waits for the moment of the next picture; false when the source is to stop. `due` is that moment while
    // the source runs freely, and is kept in step with the rate.
    bool waitForTurn(Clock::time_point& due);
    Made makeNext(std::int64_t number);
    // False when there is nothing more to come.
    bool keep(Made result);
    bool isTriggered() const ZUL_REQUIRES(mutex_) { return triggerMode_ != VD_TRIGGER_OFF; }

    const std::unique_ptr<PictureMaker> maker_;
    std::thread thread_;
    cv::Mat drawing_;  // the thread's own
    cv::Mat given_;    // what the last fetch handed out; the fetching thread's own

    zul::Mutex mutex_;
    std::condition_variable_any changed_;
    double rate_ ZUL_GUARDED_BY(mutex_);
    long triggerMode_ ZUL_GUARDED_BY(mutex_) = VD_TRIGGER_OFF;
    long triggers_ ZUL_GUARDED_BY(mutex_) = 0;  // not served yet
    bool stopping_ ZUL_GUARDED_BY(mutex_) = false;
    bool ended_ ZUL_GUARDED_BY(mutex_) = false;
    bool fresh_ ZUL_GUARDED_BY(mutex_) = false;  // newest_ was not fetched yet
    cv::Mat newest_ ZUL_GUARDED_BY(mutex_);
    // The source's own clock is the computer's. Numbers count what could not be made, too; that of a black
    // picture is 0.
    Clock::time_point started_ ZUL_GUARDED_BY(mutex_);
    Clock::time_point newestMade_ ZUL_GUARDED_BY(mutex_);
    Clock::time_point givenMade_ ZUL_GUARDED_BY(mutex_);
    std::int64_t newestNumber_ ZUL_GUARDED_BY(mutex_) = 0;
    std::int64_t givenNumber_ ZUL_GUARDED_BY(mutex_) = 0;
    Clock::time_point waitingSince_ ZUL_GUARDED_BY(mutex_);  // for a picture newer than the given one
    std::int64_t made_ ZUL_GUARDED_BY(mutex_) = 0;
    std::int64_t lost_ ZUL_GUARDED_BY(mutex_) = 0;
    double bytes_ ZUL_GUARDED_BY(mutex_) = 0.0;
};

}  // namespace vision

#endif
