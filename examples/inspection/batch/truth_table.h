// What is true of the pictures of a batch: a CSV file from whoever knows it.
#ifndef EXAMPLES_INSPECTION_BATCH_TRUTH_TABLE_H
#define EXAMPLES_INSPECTION_BATCH_TRUTH_TABLE_H

#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace inspection {

// The rows of a CSV file (RFC 4180; a byte order mark and ends of lines of any system are taken, empty lines
// passed over), each as long as the first. False, with the reason in `problem`, for anything else.
struct CsvRow {
    int line = 0;  // of the file, from 1
    std::vector<std::string> cells;
};
bool parseCsv(const std::string& text, std::vector<CsvRow>& rows, std::string& problem);

class TruthTable {
  public:
    static constexpr std::size_t kMostBytes = std::size_t{64} << 20U;

    // A column "picture", and one for each value that something is known of, called as the recipe or as
    // results.csv calls it: "bore" or "bore (mm)". Cells are numbers in the value's unit, or empty where
    // nothing is known. Other columns are passed over. False, with the reason in `problem`, for what is no
    // such file.
    bool read(const std::filesystem::path& file, const orx::TRecipe& recipe, std::string& problem);
    bool parse(const std::string& text, const orx::TRecipe& recipe, std::string& problem);

    // The true values in the order of the recipe's targets, not-a-number where nothing is known; none for a
    // picture that is not in the table. It is looked for by its path, then by what is left of that without
    // its first folders: the table may name the file alone.
    const std::vector<double>* of(const std::string& picture) const;

    const std::vector<std::string>& ignored() const { return ignored_; }  // columns that are no value's
    std::size_t pictures() const { return truths_.size(); }

  private:
    bool readHeader(const CsvRow& header, const orx::TRecipe& recipe, std::string& problem);
    bool readRow(const CsvRow& row, std::size_t targets, std::string& problem);

    std::size_t pictureColumn_ = 0;
    std::vector<int> targetOf_;  // of each column, -1: none
    std::vector<std::string> ignored_;
    std::unordered_map<std::string, std::vector<double>> truths_;
};

}  // namespace inspection

#endif
