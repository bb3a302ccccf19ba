// Processor time is that of the calling thread: what OpenCV's other threads did would be left out. Rows of
// several threads set their own number, and are judged by the clock.
#include <opencv2/core/utility.hpp>

namespace {

struct OneThread {
    OneThread() { cv::setNumThreads(1); }
} oneThread;

}  // namespace
