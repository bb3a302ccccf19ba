#include "inspection/batch/recipe_run.h"

#include <cstdio>
#include <system_error>

#include "inspection/batch/earlier_run.h"
#include "inspection/batch/results_csv.h"
#include "inspection/batch/truth_report.h"
#include "inspection/report/utf8.h"
#include "inspection/run/image_source.h"
#include "inspection/run/output_folder.h"

namespace inspection {

namespace fs = std::filesystem;

std::string fixedRate(double rate) {
    char text[32];
    std::snprintf(text, sizeof text, rate < 10.0 ? "%.1f" : "%.0f", rate);
    return text;
}

RecipeRun::RecipeRun(const Options& options, std::ostream& out, std::ostream& log)
    : batch_(options.batch),
      out_(out),
      log_(log),
      folder_(fs::u8path(options.output)),
      recipe_(orx::readRecipe(batch_.recipe)),
      summary_(recipe_, batch_.gauge) {}

void RecipeRun::tell(const std::string& problem) {
    failed_ = true;
    log_ << "orx_inspection: " << problem << "\n";
}

bool RecipeRun::giveUp(const std::string& problem) {
    tell(problem);
    notes_.lines.push_back("The run ended early: " + problem);
    return false;
}

bool RecipeRun::readInputs() {
    for (const orx::TRecipeProblem& problem : recipe_.problems())
        log_ << "orx_inspection: " << cleanUtf8(batch_.recipe) << ": " << cleanUtf8(problem.sentence())
             << "\n";
    return recipe_.valid() && (batch_.truth.empty() || readTruth());
}

bool RecipeRun::readTruth() {
    TruthTable table;
    std::string problem;
    if (table.read(fs::u8path(batch_.truth), recipe_, problem)) {
        summary_.compareWith(TruthComparison(recipe_, std::move(table)));
        return true;
    }
    log_ << "orx_inspection: " << cleanUtf8(batch_.truth) << ": " << problem << "\n";
    return false;
}

bool RecipeRun::prepareFolder() {
    std::string problem;
    if (claimFolder(problem)) return true;
    tell("the output folder " + cleanUtf8(folder_.u8string()) + " can't be used: " + problem);
    return false;
}

bool RecipeRun::claimFolder(std::string& problem) {
    if (!OutputFolder(folder_).create(problem)) return false;
    if (!lock_.take(folder_)) {
        problem = "another run writes there";
        return false;
    }
    const EarlierRun earlier(folder_);
    if (batch_.again) earlier.forget(recipe_);
    if (!earlier.claim(fingerprintOf(recipe_, fs::u8path(batch_.recipe)), problem)) return false;
    std::error_code failure;
    if (batch_.annotate != Annotate::kNone) fs::create_directory(folder_ / kPicturesFolder, failure);
    if (failure) problem = failure.message();
    return !failure;
}

bool RecipeRun::begin(const std::vector<PictureFile>& files, std::vector<bool>& done, const Add& add) {
    if (!csv_.openBeside(folder_ / "results.csv") || !csv_.append(csvHeader(recipe_)))
        return giveUp(csv_.problem());
    if (!batch_.sqlite.empty() && !sqlite_.open(batch_.sqlite)) return giveUp(sqlite_.problem());
    done.assign(files.size(), false);
    const EarlierRun earlier(folder_);
    bool written = true;
    if (add) earlier.readOlder(recipe_, add);
    const auto takeOver = [&](const PictureRecord& record, std::int64_t place) {
        summary_.add(record, place);
        if (add) add(record);
        written = written && writeTables(record);
    };
    std::string problem;
    if (!earlier.resume(recipe_, files, done, takeOver, problem)) return giveUp(problem);
    if (!written) return false;
    if (!csv_.takePlace()) return giveUp(csv_.problem());
    if (!lines_.open(earlier.resultsFile(), false)) return giveUp(lines_.problem());
    written_ = summary_.pictures();
    if (summary_.pictures() > 0 && !batch_.quiet)
        out_ << "going on after " << summary_.pictures() << " pictures of an earlier run\n";
    return true;
}

bool RecipeRun::writeLine(const MeasuredPicture& measured, std::int64_t place) {
    if (!lines_.append(measured.line)) return giveUp(lines_.problem());
    ++written_;
    summary_.add(measured.record, place);
    return true;
}

bool RecipeRun::writeTables(const PictureRecord& record) {
    if (!csv_.append(csvRow(record))) return giveUp(csv_.problem());
    if (!batch_.sqlite.empty() && !sqlite_.add(record)) return giveUp(sqlite_.problem());
    return true;
}

bool RecipeRun::openTable() {
    return (csv_.open(folder_ / "results.csv", true) && csv_.append(csvHeader(recipe_))) ||
           giveUp(csv_.problem());
}

bool RecipeRun::makeRoom() {
    if (written_ < batch_.lines) return true;
    written_ = 0;
    lines_.close();
    csv_.close();
    const EarlierRun files(folder_);
    std::error_code failure;
    fs::rename(folder_ / "results.csv", folder_ / "results.old.csv", failure);
    if (!failure) fs::rename(files.resultsFile(), files.olderFile(), failure);
    if (failure) return giveUp("results.jsonl and results.csv can't be put aside: " + failure.message());
    return openTable() && (lines_.open(files.resultsFile(), true) || giveUp(lines_.problem()));
}

void RecipeRun::finish() {
    if (!sqlite_.close()) giveUp(sqlite_.problem());
    const TruthComparison* truth = summary_.truth();
    if (truth != nullptr && truth->pictures() == 0 && summary_.pictures() > 0)
        tell("none of the pictures is in the table of --truth: it names them by their path or the end of it");
    const fs::path report = folder_ / "report.html";
    const bool hasReport = writeOut(report, batchReportHtml(recipe_, summary_, notes_, folder_));
    writeOut(folder_ / "statistics.json", summaryJson(recipe_, summary_));
    if (batch_.quiet) return;
    out_ << "\n" << summary_.text() << "\n";
    if (!notes_.rate.empty()) out_ << notes_.rate << "\n";
    printStatistics();
    if (truth != nullptr) printTruth(out_, recipe_, *truth);
    if (hasReport) out_ << "report   " << displayName(report) << "\n";
}

void RecipeRun::printStatistics() const {
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

bool RecipeRun::writeOut(const fs::path& file, const std::string& text) {
    if (orx::writeWholeFile(file, text)) return true;
    tell(displayName(file) + " can't be written");
    return false;
}

}  // namespace inspection
