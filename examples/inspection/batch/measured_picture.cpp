#include "inspection/batch/measured_picture.h"

#include <algorithm>
#include <exception>

#include "inspection/run/image_source.h"
#include "inspection/run/output_folder.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestStem = 60;
constexpr std::size_t kDigits = 8;

// The name of the picture and, since others may have the same one elsewhere, a part of its id.
std::string annotatedName(const PictureFile& file, bool jpeg) {
    std::string stem = displayName(file.path.stem());
    std::replace_if(
        stem.begin(), stem.end(),
        [](char c) { return std::string("<>:\"/\\|?*").find(c) != std::string::npos; }, '_');
    if (stem.size() > kLongestStem) {
        std::size_t end = kLongestStem;
        while (end > 0 && (static_cast<unsigned char>(stem[end]) & 0xC0U) == 0x80U) --end;
        stem.resize(end);
    }
    return stem + "-" + hexOf(file.id).substr(0, kDigits) + (jpeg ? ".jpg" : ".png");
}

bool isWanted(Annotate annotate, orx::TVerdict verdict) {
    if (annotate == Annotate::kFailed) return verdict != orx::vdPass && verdict != orx::vdNoLimits;
    return annotate == Annotate::kAll;
}

// Of grey pictures with a palette, in a third of the bytes.
std::vector<unsigned char> sheetOf(const cv::Mat& picture, const orx::TRecipe& recipe,
                                   const orx::TRecipeResult& result, bool jpeg) {
    std::vector<unsigned char> bytes;
    if (jpeg || picture.channels() != 1) {
        orx::encodePicture(jpeg ? ".jpg" : ".png", orx::drawRecipeSheet(picture, recipe, result), bytes);
    } else {
        std::vector<cv::Vec3b> palette;
        const cv::Mat indices = orx::drawIndexedRecipeSheet(picture, recipe, result, palette);
        orx::encodeIndexedPng(indices, palette, bytes);
    }
    return bytes;
}

void annotatePicture(const cv::Mat& picture, const PictureFile& file, const orx::TRecipe& recipe,
                     const BatchOptions& options, const fs::path& folder, MeasuredPicture& measured) {
    const orx::TRecipeResult& result = measured.record.result;
    if (picture.empty() || !isWanted(options.annotate, result.verdict)) return;
    const std::vector<unsigned char> sheet = sheetOf(picture, recipe, result, options.jpeg);
    const std::string name = annotatedName(file, options.jpeg);
    if (!sheet.empty() && writeWholePicture(folder / fs::u8path(name), sheet))
        measured.record.annotated = name;
    else
        measured.problem = displayName(folder / fs::u8path(name)) + " can't be written";
}

// `read` gives the picture, or why there is none.
template <class Read>
MeasuredPicture measured(const Read& read, const PictureFile& file, const orx::TRecipe& recipe,
                         const BatchOptions& options, const fs::path& folder) {
    MeasuredPicture measured;
    measured.record.name = file.name;
    measured.record.id = file.id;
    measured.record.bytes = file.bytes;
    measured.record.modified = file.modified;
    try {
        std::string problem;
        const cv::Mat picture = read(problem);
        measured.record.result = recipe.run(picture);
        if (picture.empty()) measured.record.result.problem = problem;
        annotatePicture(picture, file, recipe, options, folder, measured);
    } catch (const std::exception& error) {  // no memory, or a picture too large to be drawn
        measured.record.result = recipe.run(cv::Mat());
        measured.record.result.problem = std::string("it could not be measured: ") + error.what();
        measured.record.annotated.clear();
    }
    measured.line = lineOf(measured.record);
    return measured;
}

}  // namespace

MeasuredPicture measurePicture(const PictureFile& file, const orx::TRecipe& recipe,
                               const BatchOptions& options, const fs::path& folder) {
    MeasuredPicture result = measured([&](std::string& problem) { return readDeepGrey(file.path, problem); },
                                      file, recipe, options, folder);
    result.record.result.features.clear();
    return result;
}

MeasuredPicture measurePicture(const cv::Mat& picture, const PictureFile& file, const orx::TRecipe& recipe,
                               const BatchOptions& options, const fs::path& folder) {
    return measured(
        [&](std::string& problem) {
            problem = "no picture";
            return picture;
        },
        file, recipe, options, folder);
}

}  // namespace inspection
