// Names and refusals; the queue and its thread are ImageSaver.
#include "orxFunctions/files/save_image.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <utility>

#include "orxFunctions/files/image_saver_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/message_colours_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/file_access_internal.h"
#include "orxFunctions/platform/pictures/picture_modules.h"

namespace FileOperator {
namespace {

namespace fs = std::filesystem;
namespace platform = orx::platform;
using orx::refuse;

std::string message(const std::string& utf8Text, const fs::path& path) {
    return zul::toAnsi(utf8Text + path.u8string());
}

void complain(const std::string& utf8Text, const fs::path& path) {
    orx::APPshowMessage(message(utf8Text, path), orx::kErrorColor);
}

std::string withPoint(const std::string& extension) {
    return extension.empty() || extension.front() == '.' ? extension : "." + extension;
}

fs::path fileName(const std::string& prefix, const std::string& extension) {
    char number[24];
    std::snprintf(number, sizeof number, "_%06llu",
                  static_cast<unsigned long long>(orx::imageSaver.nextNumber() % 1000000));
    return platform::toPath(prefix) += zul::getCurrentTime(4) + number + extension;
}

// Part of a file name on every platform, and not of a path.
bool isPlainName(const std::string& text) {
    return !platform::hasAnyOf(std::string("/\\:*?\"<>|\0", 10), text);
}

bool save(const cv::Mat& img, const fs::path& folder, const std::string& prefix, const std::string& extension,
          std::string* path) {
    if (!orx::takesImage(img, "saveImage")) return false;
    if (folder.empty()) return refuse(orx::rcFileName, "saveImage", "the folder's name is empty");
    if (!isPlainName(prefix)) {
        return refuse(orx::rcFileName, "saveImage", "a name can't begin with \"%s\"",
                      platform::shownName(platform::toPath(prefix)).c_str());
    }
    std::string reason;
    const platform::PictureCodecs* const codecs = platform::pictureModules.codecs(&reason);
    if (codecs == nullptr) {
        complain("图像编解码模块无法加载, 图像未保存: ", folder);
        return refuse(orx::rcFailed, "saveImage", "%s", reason.c_str());
    }
    if (!isPlainName(extension) || !codecs->haveImageWriter("image" + extension)) {
        complain("不支持的图像格式: ", extension);
        return refuse(orx::rcOption, "saveImage", "\"%s\" is the extension of no format that can be written",
                      platform::shownName(platform::toPath(extension)).c_str());
    }
    orx::ImageSaver::Job job;
    job.path = fs::absolute(folder) / fileName(prefix, extension);
    job.extension = extension;
    // Made here and not on the thread, where a conversion of text may load a library: see WorkerThread.
    job.failure = message("图像保存失败: ", job.path);
    job.image = img.clone();
    const fs::path target = job.path;
    switch (orx::imageSaver.add(std::move(job))) {
        case orx::ImageSaver::Answer::kTaken:
            if (path != nullptr) *path = platform::toName(target);
            return true;
        case orx::ImageSaver::Answer::kFull:
            complain("图像保存队列已满, 图像未保存: ", target);
            break;
        case orx::ImageSaver::Answer::kFullAgain:
            break;
        case orx::ImageSaver::Answer::kNoThread:
            complain("图像保存失败: ", target);
            return refuse(orx::rcFailed, "saveImage", "no thread can be started to write it");
    }
    return refuse(orx::rcTooMany, "saveImage", "64 images, or 1 GiB of them, wait for the disk already");
}

}  // namespace

bool saveImage(cv::Mat img, std::string folder, std::string prefix, std::string extension,
               std::string* path) {
    try {
        return save(img, platform::toPath(folder), prefix, withPoint(extension), path);
    } catch (const std::exception&) {
        return refuse(orx::rcMemory, "saveImage", "no memory for a copy of the image");
    }
}

bool flush(int milliseconds) {
    try {
        if (orx::imageSaver.flush(milliseconds)) return true;
        return refuse(orx::rcTimeout, "flush", "images still wait for the disk after %d ms", milliseconds);
    } catch (const std::exception&) {
        return refuse(orx::rcMemory, "flush", "no memory to wait with");
    }
}

}  // namespace FileOperator
