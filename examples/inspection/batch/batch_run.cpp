#include "inspection/batch/batch_run.h"

#include <chrono>
#include <cstdio>
#include <opencv2/core.hpp>

#include "inspection/batch/measured_picture.h"
#include "inspection/batch/ordered_work.h"
#include "inspection/batch/recipe_run.h"
#include "inspection/report/utf8.h"
#include "inspection/run/heap.h"
#include "inspection/run/interrupt.h"
#include "inspection/run/progress.h"
#include "inspection/run/terminal.h"

namespace inspection {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kSignalBase = 128;  // what shells add to a signal's number
constexpr std::chrono::milliseconds kBetweenProgress{100};

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// "3:05" or "1:02:03".
std::string timeText(double seconds) {
    const auto whole = static_cast<long long>(seconds + 0.5);
    char text[48];
    if (whole >= 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    return text;
}

class Batch {
  public:
    Batch(const Options& options, std::ostream& out, std::ostream& log)
        : options_(options), batch_(options.batch), out_(out), log_(log), run_(options, out, log) {}

    int run() {
        if (!run_.readInputs()) return RecipeRun::kBadInput;
        watchForInterrupt();
        if (!run_.prepareFolder()) return 1;
        const PictureList list = listPictures(options_.inputs, batch_.recursive, run_.folder());
        for (const std::string& text : list.problems) run_.tell(text);
        noteLeftOver(list.files.size());
        if (run_.begin(list.files, done_)) measureAll(list.files);
        run_.finish();
        if (interruptSignal() != 0) return kSignalBase + interruptSignal();
        return run_.failed() || run_.summary().countOf(orx::vdNotMeasured) > 0 ? 1 : 0;
    }

  private:
    // Pictures that make no whole part of a gauge study: mostly one is missing, and all later ones went to
    // the wrong part.
    void noteLeftOver(std::size_t pictures) {
        if (batch_.gauge <= 0) return;
        const std::size_t times = static_cast<std::size_t>(batch_.gauge);
        const std::size_t left = pictures % times;
        if (left == 0) return;
        const std::string text = "--gauge " + std::to_string(times) + ": of the last part there are " +
                                 std::to_string(left) + " pictures alone, " + std::to_string(pictures) +
                                 " in all";
        log_ << "orx_inspection: warning: " << text << "\n";
        run_.notes().lines.push_back("Gauge study, " + text + ".");
    }

    void measureAll(const std::vector<PictureFile>& files) {
        std::vector<std::size_t> wanted;
        for (std::size_t i = 0; i < files.size(); ++i) {
            if (!done_[i]) wanted.push_back(i);
        }
        tellsAll_ = files.size() == 1;
        // Pictures are shared out here, so that the library needs no threads of its own.
        cv::setNumThreads(1);
        keepFreedMemory();
        Progress progress(log_, wanted.size(), isOnTerminal());
        start_ = Clock::now();
        const auto make = [&](std::size_t i) {
            return measurePicture(files[wanted[i]], run_.recipe(), batch_, run_.picturesFolder());
        };
        const auto take = [&](MeasuredPicture&& measured) {
            const bool goesOn = keep(measured, static_cast<std::int64_t>(wanted[measured_]), progress);
            ++measured_;
            showProgress(progress, wanted.size());
            return goesOn;
        };
        OrderedWork<MeasuredPicture>(wanted.size(), batch_.jobs, make, take, isInterrupted).run();
        progress.wipe();
        if (measured_ < wanted.size() && interruptSignal() != 0)
            run_.notes().lines.push_back("Interrupted: " + std::to_string(wanted.size() - measured_) +
                                         " pictures were not looked at.");
        if (measured_ > 0) {
            const double rate = static_cast<double>(measured_) / std::max(1e-9, secondsSince(start_));
            run_.notes().rate = fixedRate(rate) + " pictures a second";
        }
    }

    bool keep(const MeasuredPicture& measured, std::int64_t place, Progress& progress) {
        const orx::TRecipeResult& result = measured.record.result;
        if (!result.problem.empty() || !measured.problem.empty() || !batch_.quiet) progress.wipe();
        // Without its line, the next run makes the sheet that could not be written.
        if (!measured.problem.empty()) return run_.giveUp(measured.problem);
        if (!run_.writeLine(measured, place)) return false;
        if (!result.problem.empty())
            log_ << "orx_inspection: " << measured.record.name << ": " << cleanUtf8(result.problem) << "\n";
        if (!batch_.quiet) print(measured.record);
        return run_.writeTables(measured.record);
    }

    void print(const PictureRecord& record) const {
        out_ << record.name << ": " << orx::verdictText(record.result.verdict) << "\n";
        for (const orx::TRecipeValue& value : record.result.values) {
            const bool isGood = value.verdict == orx::vdPass || value.verdict == orx::vdNoLimits;
            if (tellsAll_ || !isGood)
                out_ << "  " << cleanUtf8(value.name) << ": " << valueText(value) << "\n";
        }
    }

    void showProgress(Progress& progress, std::size_t total) {
        const Clock::time_point now = Clock::now();
        if (now - shown_ < kBetweenProgress) return;
        shown_ = now;
        const double rate = static_cast<double>(measured_) / std::max(1e-9, secondsSince(start_));
        const double left = static_cast<double>(total - measured_) / std::max(1e-9, rate);
        progress.show(measured_, fixedRate(rate) + "/s, " + timeText(left) + " left");
    }

    const Options& options_;
    const BatchOptions& batch_;
    std::ostream& out_;
    std::ostream& log_;
    RecipeRun run_;
    std::vector<bool> done_;
    std::size_t measured_ = 0;
    Clock::time_point start_;
    Clock::time_point shown_;
    bool tellsAll_ = false;  // values that pass, too: of one picture that is no flood
};

}  // namespace

int runBatch(const Options& options, std::ostream& out, std::ostream& log) {
    return Batch(options, out, log).run();
}

}  // namespace inspection
