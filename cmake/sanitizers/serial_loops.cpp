// OpenCV's own loops on one thread, in programs that spend their time in them (its search for chessboards,
// its calibration): ThreadSanitizer sees neither into these loops nor into oneTBB below them, and takes a
// hand-over there for a race now and then. What this project's loops do on several threads is tested where
// they are.
#include <opencv2/core/utility.hpp>

namespace {

[[maybe_unused]] const bool kSerial = (cv::setNumThreads(1), true);

}  // namespace
