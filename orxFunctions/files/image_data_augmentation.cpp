#include "orxFunctions/files/image_data_augmentation.h"

#include <exception>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <optional>
#include <set>
#include <utility>

#include "orxFunctions/files/augmentation_variants_internal.h"
#include "orxFunctions/files/file_listing_internal.h"
#include "orxFunctions/files/file_operator.h"
#include "orxFunctions/files/polygon_annotation_internal.h"
#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/message_colours_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/file_access_internal.h"
#include "orxFunctions/platform/pictures/picture_modules.h"

namespace orx {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostFileBytes = std::size_t{1} << 30U;
const std::vector<std::string>& imageExtensions() {
    static const std::vector<std::string> kAll = {".bmp", ".jpg", ".jpeg", ".jp2",  ".png",
                                                  ".pgm", ".ppm", ".tif",  ".tiff", ".webp"};
    return kAll;
}

bool readFile(const fs::path& path, std::string& bytes) {
    const platform::File file = platform::openToRead(path);
    if (!file) return false;
    std::vector<char> block(std::size_t{1} << 16U);
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
        bytes.append(block.data(), count);
        if (bytes.size() > kMostFileBytes) return false;
    }
    return std::ferror(file.get()) == 0;
}

bool writeFile(const fs::path& path, const void* bytes, std::size_t size) {
    platform::File file = platform::openToWrite(path);
    if (!file) return false;
    const bool written = std::fwrite(bytes, 1, size, file.get()) == size;
    return platform::closeWritten(std::move(file), path, written);
}

// Empty for what is no image.
cv::Mat readImage(const fs::path& path, const platform::PictureCodecs& codecs) {
    std::string bytes;
    if (!readFile(path, bytes) || bytes.empty()) return {};
    try {
        const cv::Mat encoded(1, static_cast<int>(bytes.size()), CV_8UC1, bytes.data());
        return codecs.imdecode(encoded, cv::IMREAD_UNCHANGED);
    } catch (const std::exception&) {
        return {};
    }
}

// A run over one folder.
class Run {
  public:
    Run(const TAugmentationConfig& config, fs::path outputFolder)
        : config_(config), outputFolder_(std::move(outputFolder)) {}

    TAugmentationReport& report() { return report_; }

    // Before the first image. False, with the refusal, when nothing can read or write one.
    bool takesPictures() {
        std::string reason;
        codecs_ = platform::pictureModules.codecs(&reason);
        return codecs_ != nullptr || refuse(rcFailed, "augment", "%s", reason.c_str());
    }

    void augment(const fs::path& path) {
        const cv::Mat image = readImage(path, *codecs_);
        if (image.empty()) return skip("无法读取图像: ", path);
        std::optional<PolygonAnnotation> annotation;
        if (!readAnnotation(path, image.size(), annotation)) return skip("标注文件无效, 跳过图像: ", path);
        const fs::path stem = outputStem(path);
        ++report_.images;
        try {
            forEachVariant(image, platform::toName(path.filename()), config_,
                           [&](const AugmentedImage& variant) {
                               write(fs::path(stem) += '_' + variant.name, variant, annotation);
                           });
        } catch (const std::exception&) {  // OpenCV's for a picture beyond its limits, or no memory
            complain("图像增强失败: ", path);
        }
    }

    void complain(const std::string& utf8Text, const fs::path& path) {
        report_.problems.push_back(zul::toAnsi(utf8Text + path.u8string()));
        APPshowMessage(report_.problems.back(), kErrorColor);
    }

  private:
    void skip(const std::string& utf8Text, const fs::path& path) {
        ++report_.skipped;
        complain(utf8Text, path);
    }

    // False for an annotation that is there and broken.
    static bool readAnnotation(const fs::path& imagePath, cv::Size size,
                               std::optional<PolygonAnnotation>& annotation) {
        const fs::path path = fs::path(imagePath).replace_extension(".json");
        if (!platform::leadsToFile(path)) return true;
        std::string json;
        annotation.emplace();
        return readFile(path, json) && annotation->parse(json, size);
    }

    fs::path outputStem(const fs::path& imagePath) {
        fs::path stem = imagePath.stem();
        if (!stems_.insert(stem).second) (stem += '_') += imagePath.extension().native().substr(1);
        return stem;
    }

    void write(const fs::path& stem, const AugmentedImage& variant,
               const std::optional<PolygonAnnotation>& annotation) {
        const bool isInteger = variant.image.depth() == CV_8U || variant.image.depth() == CV_16U;
        const std::string extension = isInteger ? ".png" : ".tiff";
        const fs::path path = (outputFolder_ / stem) += extension;
        std::string json;
        if (annotation) {
            json = annotation->moved(variant.motion, variant.image.size(), path.filename().u8string());
            if (json.empty()) return complain("标注点超出数值范围, 跳过文件: ", path);
        }
        std::vector<unsigned char> encoded;
        if (!codecs_->imencode(extension, variant.image, encoded, {}) ||
            !writeFile(path, encoded.data(), encoded.size())) {
            return complain("无法写入文件: ", path);
        }
        ++report_.written;
        if (!annotation) return;
        const fs::path jsonPath = (outputFolder_ / stem) += ".json";
        if (!writeFile(jsonPath, json.data(), json.size())) complain("无法写入文件: ", jsonPath);
    }

    const TAugmentationConfig& config_;
    const platform::PictureCodecs* codecs_ = nullptr;
    fs::path outputFolder_;
    std::set<fs::path> stems_;
    TAugmentationReport report_;
};

// The images to read; false, with the refusal, where there can be none to read or nothing may be written.
bool takesFolders(const fs::path& input, const fs::path& output, std::vector<std::string>& images) {
    std::error_code error = filesOf(input, imageExtensions(), false, images);
    if (error) return refuseToList("augment", input, error);
    if (!FileOperator::createFolder(platform::toName(output))) return refuseToWrite("augment", output);
    if (!fs::equivalent(input, output, error)) return true;
    return refuse(rcOption, "augment", "the images and their variants would be in one folder: %s",
                  platform::shownName(input).c_str());
}

}  // namespace

void ImageDataAugmentation::setConfig(const TAugmentationConfig& config) { config_ = config; }
void ImageDataAugmentation::setProgress(TProgress progress) { progress_ = std::move(progress); }

TAugmentationReport ImageDataAugmentation::augment(const std::string& inputFolder,
                                                   const std::string& outputFolder) const {
    const fs::path input = platform::toPath(inputFolder);
    const fs::path output = platform::toPath(outputFolder);
    Run run(config_, output);
    std::vector<std::string> images;
    if (!takesFolders(input, output, images)) {
        run.complain("数据增强的文件夹无效: ", FileOperator::folderExists(inputFolder) ? output : input);
        return run.report();
    }
    if (!run.takesPictures()) {
        run.complain("图像编解码模块无法加载: ", input);
        return run.report();
    }
    const int total = static_cast<int>(images.size());
    for (int i = 0; i < total; ++i) {
        const std::string& image = images[static_cast<std::size_t>(i)];
        if (progress_ && !progress_(i, total, image)) return run.report();
        run.augment(platform::toPath(image));
    }
    run.report().completed = !progress_ || progress_(total, total, "");
    return run.report();
}

}  // namespace orx
