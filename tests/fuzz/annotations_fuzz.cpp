// Annotations of labelling tools beside a picture: whatever they hold, the variants written with them are
// JSON of the picture's size, and the same again for the same seed.
#include <json/json.h>

#include <cmath>
#include <memory>
#include <opencv2/imgcodecs.hpp>

#include "orxFunctions/files/image_data_augmentation.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;
namespace fs = std::filesystem;

orx::TAugmentationConfig config(fuzz::Input& input) {
    orx::TAugmentationConfig chosen;
    chosen.seed = input.byte();
    const unsigned flags = input.byte();
    chosen.flipHorizontal = (flags & 1U) != 0;
    chosen.flipVertical = (flags & 2U) != 0;
    chosen.rotations = (flags & 4U) != 0 ? 1 : 0;
    chosen.scalings = (flags & 8U) != 0 ? 1 : 0;
    chosen.shifts = (flags & 16U) != 0 ? 1 : 0;
    chosen.brightnessChanges = chosen.contrastChanges = chosen.blurs = chosen.noises =
        (flags & 32U) != 0 ? 1 : 0;
    if ((flags & 64U) == 0) return chosen;
    chosen.maxAngle = input.option(0, 180);
    chosen.minScale = input.option(0.5, 1);
    chosen.maxScale = input.option(0.5, 3);
    chosen.maxShift = input.option(0, 1);
    chosen.maxBrightness = input.option(0, 1);
    chosen.maxContrast = input.option(0, 1);
    chosen.maxBlur = input.option(0, 5);
    chosen.maxNoise = input.option(0, 1);
    // Variants of a hundred times the size are sound, but slow.
    if (!(chosen.minScale < 4)) chosen.minScale = 0.5;
    if (!(chosen.maxScale < 4)) chosen.maxScale = 3;
    return chosen;
}

Json::Value parsed(const std::string& text) {
    Json::CharReaderBuilder builder;
    builder["strictRoot"] = true;
    Json::Value value;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    require(reader->parse(text.data(), text.data() + text.size(), &value, &errors), "annotations are JSON");
    return value;
}

void checkNumbers(const Json::Value& value) {
    if (value.isDouble()) require(std::isfinite(value.asDouble()), "numbers are numbers");
    for (const Json::Value& inner : value) checkNumbers(inner);
}

void checkVariants(const fs::path& folder, const fs::path& again) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const std::string bytes = test::bytesOf(entry.path().string());
        require(bytes == test::bytesOf((again / entry.path().filename()).string()),
                "the same seed, the same files");
        if (entry.path().extension() != ".json") continue;
        const Json::Value annotation = parsed(bytes);
        const cv::Mat image = cv::imread(fs::path(entry.path()).replace_extension(".png").string());
        require(
            annotation["imageWidth"].asInt() == image.cols && annotation["imageHeight"].asInt() == image.rows,
            "annotations tell the size of their picture");
        checkNumbers(annotation);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    cv::setNumThreads(1);
    fuzz::Input input(bytes, size);
    const orx::TAugmentationConfig chosen = config(input);
    const fs::path folder = fuzz::emptyFolder();
    const fs::path pictures = folder / "in";
    fs::create_directory(pictures);
    cv::imwrite((pictures / "a.png").string(), cv::Mat(6, 8, CV_8UC1, cv::Scalar(90)));
    test::writeBytes((pictures / "a.json").string(), input.rest());
    orx::ImageDataAugmentation augmentation;
    augmentation.setConfig(chosen);
    const orx::TAugmentationReport report =
        augmentation.augment(pictures.string(), (folder / "out").string());
    require(report.completed && report.images + report.skipped == 1, "the picture is taken or skipped");
    require(report.skipped <= static_cast<int>(report.problems.size()), "a problem tells why it is skipped");
    require(report.skipped == 0 || report.written == 0, "nothing is written of a skipped picture");
    const orx::TAugmentationReport again =
        augmentation.augment(pictures.string(), (folder / "again").string());
    require(again.written == report.written, "as much again");
    checkVariants(folder / "out", folder / "again");
    fuzz::forgetMessages();
    return 0;
}
