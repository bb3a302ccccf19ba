#include "inspection/live/live_run.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "inspection/batch/recipe_run.h"
#include "inspection/live/live_counts.h"
#include "inspection/live/live_view.h"
#include "inspection/report/table.h"
#include "inspection/report/utf8.h"
#include "inspection/run/camera_rig.h"
#include "inspection/run/interrupt.h"
#include "inspection/run/terminal.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPatience{100};  // between looks for a wish to stop
constexpr std::chrono::milliseconds kBetweenStatus{500};

constexpr const char* kCameraName = "camera";

std::string cameraName(int camera) { return kCameraName + std::to_string(camera + 1); }

// "camera1-20260131T083000.123Z-42": the time is that of the picture's measuring, the number the camera's.
PictureFile grabbedFile(int camera, std::int64_t number) {
    const auto now =
        std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const std::int64_t time = now.time_since_epoch().count();
    const std::time_t second = std::chrono::system_clock::to_time_t(now);
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "-%Y%m%dT%H%M%S", std::gmtime(&second));
    std::snprintf(text + length, sizeof text - length, ".%03dZ-", static_cast<int>(time % 1000));
    PictureFile file;
    file.name = cameraName(camera) + text + std::to_string(number);
    file.path = fs::u8path(file.name + ".png");
    file.id = hashOf(file.name);
    file.modified = time;
    return file;
}

class Live {
  public:
    Live(const Options& options, std::ostream& out, std::ostream& log)
        : options_(options),
          batch_(options.batch),
          out_(out),
          log_(log),
          run_(options, out, log),
          rig_(options.camera, log, true),
          kept_(options.batch.keep),
          view_(options.camera.cameras, "orx_inspection") {}

    int run() {
        if (!run_.readInputs()) return RecipeRun::kBadInput;
        watchForInterrupt();
        if (!run_.prepareFolder()) return 1;
        std::vector<bool> done;
        std::set<std::string> recorded;
        const auto takeOver = [&](const PictureRecord& record) {
            recorded.insert(record.annotated);
            makeRoom(record.annotated);
        };
        if (run_.begin({}, done, takeOver)) {
            removeAllBut(recorded);
            grab();
        }
        wipeStatus();
        run_.finish();
        return run_.failed() ? 1 : 0;
    }

  private:
    void grab() {
        const bool areOpen = rig_.open();
        if (areOpen) {
            openWindow();
            rig_.start();
            log_ << "measuring from " << rig_.cameras() << (rig_.cameras() == 1 ? " camera" : " cameras");
            if (options_.camera.seconds > 0.0)
                log_ << " for " << fixedText(options_.camera.seconds, 1) << " s";
            log_ << "; Ctrl-C ends it" << std::endl;
            measureAll();
            rig_.stop();
        }
        rig_.close();
        if (areOpen)
            report();
        else
            run_.tell("not all cameras can be opened");
    }

    void openWindow() {
        if (!options_.window) return;
        hasWindow_ = view_.open();
        if (!hasWindow_) log_ << "orx_inspection: no display can be opened, so that --window shows nothing\n";
    }

    void measureAll() {
        const Clock::time_point start = Clock::now();
        const bool isLimited = options_.camera.seconds > 0.0;
        const auto end = start + std::chrono::milliseconds(std::lround(options_.camera.seconds * 1000));
        bool goesOn = true;
        while (goesOn && !isInterrupted() && !(isLimited && Clock::now() >= end)) {
            cv::Mat picture;
            int camera = 0;
            auto soon = Clock::now() + kPatience;
            if (isLimited) soon = std::min(soon, end);
            if (rig_.take(soon, picture, camera)) goesOn = keep(camera, picture);
            if (hasWindow_) goesOn = view_.goesOn() && goesOn;
            showStatus();
        }
        const std::chrono::duration<double> time = Clock::now() - start;
        std::int64_t measured = 0;
        for (const LiveCount& count : counts_) measured += count.measured();
        if (measured > 0)
            run_.notes().rate = fixedRate(static_cast<double>(measured) / std::max(1e-3, time.count())) +
                                " pictures a second";
    }

    // False where the run is to end: an output can't be written.
    bool keep(int camera, const cv::Mat& picture) {
        const auto slot = static_cast<std::size_t>(camera);
        const PictureFile file = grabbedFile(camera, counts_[slot].measured() + 1);
        MeasuredPicture measured =
            measurePicture(picture, file, run_.recipe(), batch_, run_.picturesFolder());
        const orx::TRecipeResult& result = measured.record.result;
        counts_[slot].add(result.verdict);
        tellProblem(camera, result.problem);
        if (hasWindow_ && view_.isDue(camera))
            view_.show(camera, orx::drawRecipeSheet(picture, run_.recipe(), result), lineOf(camera),
                       result.verdict);
        makeRoom(measured.record.annotated);
        measured.record.result.features.clear();
        if (!measured.problem.empty()) {
            wipeStatus();
            return run_.giveUp(measured.problem);
        }
        return run_.writeLine(measured, -1) && run_.writeTables(measured.record) && run_.makeRoom();
    }

    // Once, until another one or none comes: a part that is not there is not there in many pictures.
    void tellProblem(int camera, const std::string& problem) {
        std::string& last = problems_[static_cast<std::size_t>(camera)];
        if (problem == last) return;
        last = problem;
        if (problem.empty() || batch_.quiet) return;
        wipeStatus();
        log_ << "orx_inspection: " << cameraName(camera) << ": " << cleanUtf8(problem) << "\n";
    }

    void makeRoom(const std::string& annotated) {
        if (annotated.empty()) return;
        const std::string old = kept_.add(annotated);
        std::error_code ignored;
        if (!old.empty()) fs::remove(run_.picturesFolder() / fs::u8path(old), ignored);
    }

    // Pictures of cameras whose lines are gone: put aside twice, or never written by a run that was killed.
    void removeAllBut(const std::set<std::string>& recorded) {
        std::error_code ignored;
        std::vector<fs::path> left;
        for (fs::directory_iterator at(run_.picturesFolder(), ignored), end; at != end;
             at.increment(ignored)) {
            const std::string name = at->path().filename().u8string();
            if (name.rfind(kCameraName, 0) == 0 && recorded.count(name) == 0) left.push_back(at->path());
        }
        for (const fs::path& picture : left) fs::remove(picture, ignored);
    }

    std::string lineOf(int camera) const {
        const CameraCount grabbed = rig_.count(camera);
        return cameraName(camera) + " " + fixedRate(grabbed.rate()) +
               "/s: " + counts_[static_cast<std::size_t>(camera)].text() + ", " +
               std::to_string(grabbed.dropped) + " dropped";
    }

    void showStatus() {
        const Clock::time_point now = Clock::now();
        if (batch_.quiet || !isOnTerminal() || now - shown_ < kBetweenStatus) return;
        shown_ = now;
        std::string line;
        for (int i = 0; i < rig_.cameras(); ++i) line += (i > 0 ? " | " : "") + lineOf(i);
        log_ << "\r\x1b[K" << line << std::flush;
        hasStatus_ = true;
    }

    void wipeStatus() {
        if (hasStatus_) log_ << "\r\x1b[K" << std::flush;
        hasStatus_ = false;
    }

    void report() {
        wipeStatus();
        std::vector<std::vector<std::string>> rows = {{"camera", "size", "rate", "delivered", "measured",
                                                       "pass", "fail", "undecided", "not measured", "dropped",
                                                       "failed", "lost"}};
        for (int i = 0; i < rig_.cameras(); ++i) {
            const CameraCount grabbed = rig_.count(i);
            const LiveCount& count = counts_[static_cast<std::size_t>(i)];
            std::vector<std::string> row = {std::to_string(i + 1), rig_.size(i), fixedText(grabbed.rate(), 1),
                                            std::to_string(grabbed.delivered),
                                            std::to_string(count.measured())};
            for (const orx::TVerdict verdict :
                 {orx::vdPass, orx::vdFail, orx::vdUndecided, orx::vdNotMeasured})
                row.push_back(std::to_string(count.of(verdict)));
            row.push_back(std::to_string(grabbed.dropped));
            row.push_back(std::to_string(orx::imgThreadManager.getFailedFetches(i)));
            row.push_back(rig_.lost(i));
            rows.push_back(row);
            if (count.measured() == 0) run_.tell(cameraName(i) + ": no picture came");
            run_.notes().lines.push_back(lineOf(i) + ".");
        }
        if (!batch_.quiet) printAligned(out_, rows);
    }

    const Options& options_;
    const BatchOptions& batch_;
    std::ostream& out_;
    std::ostream& log_;
    RecipeRun run_;
    CameraRig rig_;
    std::array<LiveCount, orx::MAXCameraNum> counts_;
    std::array<std::string, orx::MAXCameraNum> problems_;
    NewestPictures kept_;
    LiveView view_;
    bool hasWindow_ = false;
    bool hasStatus_ = false;
    Clock::time_point shown_;
};

}  // namespace

int runLive(const Options& options, std::ostream& out, std::ostream& log) {
    return Live(options, out, log).run();
}

}  // namespace inspection
