// What an earlier run left in the output folder, and going on from there.
#ifndef EXAMPLES_INSPECTION_BATCH_EARLIER_RUN_H
#define EXAMPLES_INSPECTION_BATCH_EARLIER_RUN_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "inspection/batch/picture_record.h"

namespace inspection {

// Of the recipe's text and of the files that it names: the model and the calibration. 16 hexadecimal digits.
std::string fingerprintOf(const orx::TRecipe& recipe, const std::filesystem::path& recipeFile);

class EarlierRun {
  public:
    explicit EarlierRun(std::filesystem::path folder) : folder_(std::move(folder)) {}

    std::filesystem::path resultsFile() const { return folder_ / "results.jsonl"; }

    // Of a run on cameras: the results before those.
    std::filesystem::path olderFile() const { return folder_ / "results.old.jsonl"; }

    // Makes the folder that of this recipe. False, with the reason in `problem`, where it holds results of
    // another recipe or can't be written.
    bool claim(const std::string& fingerprint, std::string& problem) const;

    // Forgets the results and the pictures that they name, whatever the recipe.
    void forget(const orx::TRecipe& recipe) const;

    // Calls `add` with every record of the older file.
    void readOlder(const orx::TRecipe& recipe, const std::function<void(const PictureRecord&)>& add) const;

    // Calls `add` with every record that still counts and its place in `files` (-1 for pictures that are not
    // given any more), and marks those places as done. What counts no more (files that have changed since
    // or could not be read, lines that were cut off) is taken out of the file. False, with the reason in
    // `problem`, where that can't be written.
    using Add = std::function<void(const PictureRecord& record, std::int64_t place)>;
    bool resume(const orx::TRecipe& recipe, const std::vector<PictureFile>& files, std::vector<bool>& done,
                const Add& add, std::string& problem) const;

  private:
    std::filesystem::path folder_;
};

}  // namespace inspection

#endif
