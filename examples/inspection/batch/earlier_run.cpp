#include "inspection/batch/earlier_run.h"

#include <json/json.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <system_error>
#include <unordered_map>

#include "inspection/batch/line_file.h"
#include "inspection/run/image_source.h"
#include "inspection/run/output_folder.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMark = "orx_inspection batch 1, recipe ";

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Moves the new file to the place of the old one.
bool replace(const fs::path& file, const fs::path& by, std::string& problem) {
    std::error_code failure;
    fs::rename(by, file, failure);
    if (failure) problem = displayName(file) + " can't be written: " + failure.message();
    return !failure;
}

// Which of the files a record is of.
class Places {
  public:
    Places(const std::vector<PictureFile>& files, std::vector<bool>& done) : files_(files), done_(done) {
        for (std::size_t i = 0; i < files.size(); ++i) places_.emplace(files[i].id, i);
    }

    // False for a file that has changed since. -1 for one that is not given.
    bool find(const PictureRecord& record, std::int64_t& place) {
        place = -1;
        const auto [first, last] = places_.equal_range(record.id);
        for (auto entry = first; entry != last; ++entry) {
            const PictureFile& file = files_[entry->second];
            if (file.bytes != record.bytes || file.modified != record.modified) return false;
            if (done_[entry->second]) continue;
            done_[entry->second] = true;
            place = static_cast<std::int64_t>(entry->second);
            return true;
        }
        return first == last;
    }

  private:
    const std::vector<PictureFile>& files_;
    std::vector<bool>& done_;
    std::unordered_multimap<std::uint64_t, std::size_t> places_;
};

void readRecords(const fs::path& file, const orx::TRecipe& recipe,
                 const std::function<void(const PictureRecord&)>& add) {
    std::ifstream stream(file, std::ios::binary);
    for (std::string line; std::getline(stream, line);) {
        PictureRecord record;
        if (readLine(line, recipe, record)) add(record);
    }
}

}  // namespace

std::string fingerprintOf(const orx::TRecipe& recipe, const fs::path& recipeFile) {
    std::uint64_t hash = hashOf(recipe.text());
    Json::Value root;
    std::istringstream text(recipe.text());
    std::string problem;
    if (!Json::parseFromStream(Json::CharReaderBuilder(), text, &root, &problem)) return hexOf(hash);
    for (const Json::Value& name : {root["calibration"], root["part"]["model"]}) {
        if (!name.isString()) continue;
        hash = hashOf(contentOf(recipeFile.parent_path() / fs::u8path(name.asString())), hash);
    }
    return hexOf(hash);
}

bool EarlierRun::claim(const std::string& fingerprint, std::string& problem) const {
    const fs::path markFile = folder_ / "recipe.id";
    const std::string mark = kMark + fingerprint + "\n";
    std::error_code ignored;
    if (fs::exists(resultsFile(), ignored)) {
        if (contentOf(markFile) == mark) return true;
        problem =
            "it holds results of another recipe, or of another state of this one: choose another folder "
            "by --output, or start anew by --again";
        return false;
    }
    if (!orx::writeWholeFile(markFile, mark)) problem = displayName(markFile) + " can't be written";
    return problem.empty();
}

void EarlierRun::forget(const orx::TRecipe& recipe) const {
    std::error_code ignored;
    for (const fs::path& file : {resultsFile(), olderFile()}) {
        readRecords(file, recipe, [&](const PictureRecord& record) {
            if (!record.annotated.empty())
                fs::remove(folder_ / kPicturesFolder / fs::u8path(record.annotated), ignored);
        });
        fs::remove(file, ignored);
    }
    fs::remove(folder_ / "results.old.csv", ignored);
}

void EarlierRun::readOlder(const orx::TRecipe& recipe,
                           const std::function<void(const PictureRecord&)>& add) const {
    readRecords(olderFile(), recipe, add);
}

bool EarlierRun::resume(const orx::TRecipe& recipe, const std::vector<PictureFile>& files,
                        std::vector<bool>& done, const Add& add, std::string& problem) const {
    Places places(files, done);
    std::vector<bool> kept;
    bool allKept = true;
    std::ifstream stream(resultsFile(), std::ios::binary);
    for (std::string line; std::getline(stream, line);) {
        PictureRecord record;
        std::int64_t place = -1;
        const bool whole = !stream.eof();  // else the line's end is missing
        // What gave no picture may do so now: a permission, a share or memory was missing.
        kept.push_back(whole && readLine(line, recipe, record) && !record.result.size.empty() &&
                       places.find(record, place));
        allKept = allKept && kept.back();
        if (kept.back()) add(record, place);
    }
    if (allKept) return true;
    stream.clear();
    stream.seekg(0);
    fs::path newFile = resultsFile();
    newFile += ".new";
    {
        LineFile lines;
        bool written = lines.open(newFile, true);
        std::string line;
        for (std::size_t i = 0; written && i < kept.size() && std::getline(stream, line); ++i)
            if (kept[i]) written = lines.append(line);
        if (!written) {
            problem = lines.problem();
            return false;
        }
    }
    stream.close();
    return replace(resultsFile(), newFile, problem);
}

}  // namespace inspection
