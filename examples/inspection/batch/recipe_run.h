// What every run by a recipe shares, of files or of cameras: its recipe, its output files and its report.
#ifndef EXAMPLES_INSPECTION_BATCH_RECIPE_RUN_H
#define EXAMPLES_INSPECTION_BATCH_RECIPE_RUN_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "inspection/batch/batch_report.h"
#include "inspection/batch/line_file.h"
#include "inspection/batch/measured_picture.h"
#include "inspection/batch/run_summary.h"
#include "inspection/batch/sqlite_file.h"
#include "inspection/run/folder_lock.h"
#include "inspection/run/options.h"

namespace inspection {

// One thread at a time. What goes wrong is told on `log` at once and makes failed() true.
class RecipeRun {
  public:
    static constexpr int kBadInput = 2;  // exit code: a recipe or a table that is not valid

    // Reads the recipe that the options name.
    RecipeRun(const Options& options, std::ostream& out, std::ostream& log);

    // False, and told, where the recipe or the table of true values is not valid.
    bool readInputs();
    // Makes the output folder this recipe's. False, and told, where that can't be.
    bool prepareFolder();
    // Opens the files that results go to and takes over those of an earlier run, telling each of them to
    // `add`, after those that it put aside; `done` says which of the files need not be measured again.
    using Add = std::function<void(const PictureRecord&)>;
    bool begin(const std::vector<PictureFile>& files, std::vector<bool>& done, const Add& add = {});

    // False where a file can't be written: the run is to end. The line first, the tables once it was told.
    bool writeLine(const MeasuredPicture& measured, std::int64_t place);
    bool writeTables(const PictureRecord& record);
    // Of a run without end, after each picture: puts files aside that are full, in place of older ones. False
    // where that can't be.
    bool makeRoom();

    // Writes the report and prints the end of the run.
    void finish();

    void tell(const std::string& problem);
    // A problem of an output, which ends the run: false.
    bool giveUp(const std::string& problem);

    bool failed() const { return failed_; }
    const orx::TRecipe& recipe() const { return recipe_; }
    const RunSummary& summary() const { return summary_; }
    ReportNotes& notes() { return notes_; }
    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path picturesFolder() const { return folder_ / kPicturesFolder; }

  private:
    bool readTruth();
    bool claimFolder(std::string& problem);
    bool openTable();
    void printStatistics() const;
    // False, and told, where that fails.
    bool writeOut(const std::filesystem::path& file, const std::string& text);

    const BatchOptions& batch_;
    std::ostream& out_;
    std::ostream& log_;
    const std::filesystem::path folder_;
    FolderLock lock_;
    const orx::TRecipe recipe_;
    RunSummary summary_;
    ReportNotes notes_;
    std::int64_t written_ = 0;  // lines in lines_
    LineFile lines_;
    LineFile csv_;
    SqliteFile sqlite_;
    bool failed_ = false;
};

// "9.3" or "41".
std::string fixedRate(double rate);

}  // namespace inspection

#endif
