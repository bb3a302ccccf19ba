#include "inspection/run/camera_run.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "inspection/measure/measurement.h"
#include "inspection/measure/preparation.h"
#include "inspection/report/annotate.h"
#include "inspection/report/table.h"
#include "inspection/report/utf8.h"
#include "inspection/run/camera_rig.h"
#include "inspection/run/image_source.h"
#include "inspection/run/interrupt.h"
#include "inspection/run/output_folder.h"
#include "orxFunctions/orxfunctions.h"

namespace inspection {
namespace {

using Clock = std::chrono::steady_clock;

// The last measured picture of a camera.
struct LastPicture {
    cv::Mat grey;
    std::vector<Feature> features;
    int measured = 0;  // pictures
    std::string problem;
};

cv::Mat greyOf(const cv::Mat& picture) {
    cv::Mat grey = picture;
    if (picture.channels() == 3) cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
    if (picture.channels() == 4) cv::cvtColor(picture, grey, cv::COLOR_BGRA2GRAY);
    return grey;
}

class CameraSession {
  public:
    CameraSession(const Options& options, std::ostream& out, std::ostream& log)
        : options_(options),
          out_(out),
          log_(log),
          folder_(std::filesystem::u8path(options.output)),
          rig_(options.camera, log) {}

    int run() {
        std::string problem;
        if (!folder_.create(problem)) {
            log_ << "orx_inspection: the output folder " << cleanUtf8(options_.output)
                 << " can't be used: " << problem << "\n";
            return 1;
        }
        watchForInterrupt();
        const bool areOpen = rig_.open();
        if (areOpen) grab();
        rig_.close();
        return areOpen && report() ? 0 : 1;
    }

  private:
    int cameras() const { return rig_.cameras(); }

    void grab() {
        rig_.start();
        log_ << "grabbing from " << cameras() << (cameras() == 1 ? " camera for " : " cameras for ")
             << fixedText(options_.camera.seconds, 1) << " s; Ctrl-C ends it" << std::endl;
        const auto end =
            Clock::now() + std::chrono::milliseconds(std::lround(options_.camera.seconds * 1000));
        while (Clock::now() < end && !isInterrupted()) {
            cv::Mat picture;
            int camera = 0;
            const auto soon = std::min(end, Clock::now() + std::chrono::milliseconds(100));
            if (rig_.take(soon, picture, camera))
                measurePicture(picture, last_[static_cast<std::size_t>(camera)]);
        }
        rig_.stop();
    }

    void measurePicture(const cv::Mat& picture, LastPicture& last) {
        const cv::Mat grey = greyOf(picture);
        const auto prepared = prepare(grey, options_.settings, last.problem);
        if (!prepared) return;
        last.features = measure(grey, *prepared, options_.settings);
        last.grey = grey;
        ++last.measured;
    }

    // False when a camera delivered nothing that could be measured, or a picture can't be written.
    bool report() {
        std::vector<std::vector<std::string>> rows = {
            {"camera", "size", "rate", "delivered", "measured", "dropped", "failed", "lost", "objects"}};
        std::vector<std::string> pictures;
        bool isComplete = true;
        for (int i = 0; i < cameras(); ++i) {
            const auto slot = static_cast<std::size_t>(i);
            const CameraCount count = rig_.count(i);
            const LastPicture& last = last_[slot];
            rows.push_back({std::to_string(i + 1), rig_.size(i), fixedText(count.rate(), 1),
                            std::to_string(count.delivered), std::to_string(last.measured),
                            std::to_string(count.dropped),
                            std::to_string(orx::imgThreadManager.getFailedFetches(i)), rig_.lost(i),
                            std::to_string(last.features.size())});
            isComplete = writePicture(i, last, pictures) && isComplete;
        }
        printAligned(out_, rows);
        for (const std::string& picture : pictures) out_ << "picture  " << picture << "\n";
        return isComplete;
    }

    bool writePicture(int camera, const LastPicture& last, std::vector<std::string>& pictures) {
        const std::string name = "camera" + std::to_string(camera + 1);
        if (last.measured == 0) {
            log_ << "orx_inspection: " << name << ": "
                 << (last.problem.empty() ? "no picture came" : last.problem) << "\n";
            return false;
        }
        const std::filesystem::path file = folder_.pictureFor(name, "-measured");
        if (!writeWholePicture(file, annotate(last.grey, last.features, options_.settings.tolerance))) {
            log_ << "orx_inspection: the picture " << displayName(file) << " can't be written\n";
            return false;
        }
        pictures.push_back(displayName(file));
        return true;
    }

    const Options& options_;
    std::ostream& out_;
    std::ostream& log_;
    OutputFolder folder_;
    CameraRig rig_;
    std::array<LastPicture, orx::MAXCameraNum> last_;
};

}  // namespace

int runCameras(const Options& options, std::ostream& out, std::ostream& log) {
    return CameraSession(options, out, log).run();
}

}  // namespace inspection
