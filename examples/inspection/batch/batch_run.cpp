#include "inspection/batch/batch_run.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <opencv2/core.hpp>
#include <system_error>

#include "inspection/batch/batch_report.h"
#include "inspection/batch/earlier_run.h"
#include "inspection/batch/line_file.h"
#include "inspection/batch/measured_picture.h"
#include "inspection/batch/ordered_work.h"
#include "inspection/batch/results_csv.h"
#include "inspection/batch/sqlite_file.h"
#include "inspection/batch/truth_report.h"
#include "inspection/report/utf8.h"
#include "inspection/run/image_source.h"
#include "inspection/run/interrupt.h"
#include "inspection/run/output_folder.h"
#include "inspection/run/progress.h"
#include "inspection/run/terminal.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kBadInput = 2;
constexpr int kSignalBase = 128;  // what shells add to a signal's number
constexpr std::chrono::milliseconds kBetweenProgress{100};

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string fixedRate(double rate) {
    char text[32];
    std::snprintf(text, sizeof text, rate < 10.0 ? "%.1f" : "%.0f", rate);
    return text;
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
        : options_(options),
          batch_(options.batch),
          out_(out),
          log_(log),
          folder_(fs::u8path(options.output)),
          recipe_(orx::readRecipe(batch_.recipe)),
          summary_(recipe_, batch_.gauge) {}

    int run() {
        if (!recipe_.valid()) return refuseRecipe();
        if (!batch_.truth.empty() && !readTruth()) return kBadInput;
        watchForInterrupt();
        std::string problem;
        if (!prepareFolder(problem)) {
            log_ << "orx_inspection: the output folder " << cleanUtf8(options_.output)
                 << " can't be used: " << problem << "\n";
            return 1;
        }
        const PictureList list = listPictures(options_.inputs, batch_.recursive, folder_);
        for (const std::string& text : list.problems) tell(text);
        if (beginResults(list)) measureAll(list.files);
        finish();
        if (interruptSignal() != 0) return kSignalBase + interruptSignal();
        return failed_ || summary_.countOf(orx::vdNotMeasured) > 0 ? 1 : 0;
    }

  private:
    void tell(const std::string& problem) {
        failed_ = true;
        log_ << "orx_inspection: " << problem << "\n";
    }

    // A problem of an output, which ends the run.
    bool giveUp(const std::string& problem) {
        tell(problem);
        notes_.lines.push_back("The run ended early: " + problem);
        return false;
    }

    int refuseRecipe() {
        for (const orx::TRecipeProblem& problem : recipe_.problems())
            log_ << "orx_inspection: " << cleanUtf8(batch_.recipe) << ": " << cleanUtf8(problem.sentence())
                 << "\n";
        return kBadInput;
    }

    bool readTruth() {
        TruthTable table;
        std::string problem;
        if (table.read(fs::u8path(batch_.truth), recipe_, problem)) {
            summary_.compareWith(TruthComparison(recipe_, std::move(table)));
            return true;
        }
        log_ << "orx_inspection: " << cleanUtf8(batch_.truth) << ": " << problem << "\n";
        return false;
    }

    bool prepareFolder(std::string& problem) const {
        if (!OutputFolder(folder_).create(problem)) return false;
        const EarlierRun earlier(folder_);
        if (batch_.again) earlier.forget(recipe_);
        if (!earlier.claim(fingerprintOf(recipe_, fs::u8path(batch_.recipe)), problem)) return false;
        std::error_code failure;
        if (batch_.annotate != Annotate::kNone) fs::create_directory(folder_ / kPicturesFolder, failure);
        if (failure) problem = failure.message();
        return !failure;
    }

    // The files that results go to, with those of an earlier run. False where one can't be written.
    bool beginResults(const PictureList& list) {
        if (!csv_.open(folder_ / "results.csv", true) || !csv_.append(csvHeader(recipe_)))
            return giveUp(csv_.problem());
        if (!batch_.sqlite.empty() && !sqlite_.open(batch_.sqlite)) return giveUp(sqlite_.problem());
        done_.assign(list.files.size(), false);
        const EarlierRun earlier(folder_);
        bool written = true;
        const auto add = [&](const PictureRecord& record, std::int64_t place) {
            summary_.add(record, place);
            written = written && writeTables(record);
        };
        std::string problem;
        if (!earlier.resume(recipe_, list.files, done_, add, problem)) return giveUp(problem);
        if (!written) return false;
        if (!lines_.open(earlier.resultsFile(), false)) return giveUp(lines_.problem());
        if (summary_.pictures() > 0 && !batch_.quiet)
            out_ << "going on after " << summary_.pictures() << " pictures of an earlier run\n";
        return true;
    }

    bool writeTables(const PictureRecord& record) {
        if (!csv_.append(csvRow(record))) return giveUp(csv_.problem());
        if (!batch_.sqlite.empty() && !sqlite_.add(record)) return giveUp(sqlite_.problem());
        return true;
    }

    void measureAll(const std::vector<PictureFile>& files) {
        std::vector<std::size_t> wanted;
        for (std::size_t i = 0; i < files.size(); ++i) {
            if (!done_[i]) wanted.push_back(i);
        }
        tellsAll_ = files.size() == 1;
        // Pictures are shared out here, so that the library needs no threads of its own.
        cv::setNumThreads(1);
        Progress progress(log_, wanted.size(), isOnTerminal());
        start_ = Clock::now();
        const auto make = [&](std::size_t i) {
            return measurePicture(files[wanted[i]], recipe_, batch_, folder_ / kPicturesFolder);
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
            notes_.lines.push_back("Interrupted: " + std::to_string(wanted.size() - measured_) +
                                   " pictures were not looked at.");
        if (measured_ > 0) {
            const double rate = static_cast<double>(measured_) / std::max(1e-9, secondsSince(start_));
            notes_.rate = fixedRate(rate) + " pictures a second";
        }
    }

    bool keep(const MeasuredPicture& measured, std::int64_t place, Progress& progress) {
        const orx::TRecipeResult& result = measured.record.result;
        if (!lines_.append(measured.line)) {
            progress.wipe();
            return giveUp(lines_.problem());
        }
        summary_.add(measured.record, place);
        const bool isProblem = !result.problem.empty() || !measured.problem.empty();
        if (isProblem || !batch_.quiet) progress.wipe();
        if (!result.problem.empty())
            log_ << "orx_inspection: " << measured.record.name << ": " << cleanUtf8(result.problem) << "\n";
        if (!measured.problem.empty()) tell(measured.problem);
        if (!batch_.quiet) print(measured.record);
        return writeTables(measured.record);
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

    void finish() {
        if (!sqlite_.close()) giveUp(sqlite_.problem());
        const fs::path report = folder_ / "report.html";
        writeOut(report, batchReportHtml(recipe_, summary_, notes_, folder_));
        writeOut(folder_ / "statistics.json", summaryJson(recipe_, summary_));
        if (batch_.quiet) return;
        out_ << "\n" << summary_.text() << "\n";
        if (!notes_.rate.empty()) out_ << notes_.rate << "\n";
        printStatistics();
        if (summary_.truth() != nullptr) printTruth(out_, recipe_, *summary_.truth());
        out_ << "report   " << displayName(report) << "\n";
    }

    void printStatistics() const {
        for (std::size_t i = 0; i < summary_.statistics().size(); ++i) {
            const orx::TRunStatistics& value = summary_.statistics()[i];
            if (value.count() < 2) continue;
            out_ << cleanUtf8(recipe_.targets()[i].name) << ": mean " << shortNumber(value.mean())
                 << ", deviation " << shortNumber(value.deviation()) << " " << recipe_.targets()[i].unit;
            const std::string cpk = shortNumber(value.cpk());
            if (!cpk.empty()) out_ << ", Cpk " << cpk;
            if (summary_.gauge() > 0) {
                const orx::TGaugeResult gauge = summary_.studies()[i].result();
                out_ << ", repeatability " << shortNumber(gauge.repeatability) << " ("
                     << shortNumber(gauge.toleranceShare) << " % of the tolerance)";
            }
            out_ << "\n";
        }
    }

    void writeOut(const fs::path& file, const std::string& text) {
        // On a full disk, the report of an earlier run is better than half a new one.
        fs::path newFile = file;
        newFile += ".new";
        std::error_code failure;
        const bool written = writeFile(newFile, text);
        if (written) fs::rename(newFile, file, failure);
        if (written && !failure) return;
        fs::remove(newFile, failure);
        tell(displayName(file) + " can't be written");
    }

    const Options& options_;
    const BatchOptions& batch_;
    std::ostream& out_;
    std::ostream& log_;
    const fs::path folder_;
    const orx::TRecipe recipe_;
    RunSummary summary_;
    ReportNotes notes_;
    LineFile lines_;
    LineFile csv_;
    SqliteFile sqlite_;
    std::vector<bool> done_;
    std::size_t measured_ = 0;
    Clock::time_point start_;
    Clock::time_point shown_;
    bool failed_ = false;
    bool tellsAll_ = false;  // values that pass, too: of one picture that is no flood
};

}  // namespace

int runBatch(const Options& options, std::ostream& out, std::ostream& log) {
    return Batch(options, out, log).run();
}

}  // namespace inspection
