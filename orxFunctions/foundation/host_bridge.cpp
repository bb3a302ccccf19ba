#include "orxFunctions/foundation/host_bridge.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/image_exchange_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/file_name_internal.h"

namespace orx {

void APPaddOrSetParamBool(std::string name, bool value) { zul::APPaddOrSetParamBool(std::move(name), value); }
void APPaddOrSetParamInt(std::string name, int value) { zul::APPaddOrSetParamInt(std::move(name), value); }
void APPaddOrSetParamDouble(std::string name, double value) {
    zul::APPaddOrSetParamDouble(std::move(name), value);
}
void APPaddOrSetParamString(std::string name, std::string value) {
    zul::APPaddOrSetParamString(std::move(name), std::move(value));
}
bool APPgetParamBool(std::string name) { return zul::APPgetParamBool(std::move(name)); }
int APPgetParamInt(std::string name) { return zul::APPgetParamInt(std::move(name)); }
double APPgetParamDouble(std::string name) { return zul::APPgetParamDouble(std::move(name)); }
std::string APPgetParamString(std::string name) { return zul::APPgetParamString(std::move(name)); }

bool APPshowMessage(std::string text, int color) { return zul::APPshowMessage(std::move(text), color); }
bool APPgetMessage(std::string& text, int& color) { return zul::APPgetMessage(text, color); }

void outPutDebugString(std::string text) { zul::outPutDebugString(std::move(text)); }
void outPutDebugString(std::string label, std::string text) {
    zul::outPutDebugString(std::move(label), std::move(text));
}
void outPutDebugString(std::string label, int value) { zul::outPutDebugString(std::move(label), value); }
void outPutDebugString(std::string label, double value, int decimals) {
    zul::outPutDebugString(std::move(label), value, decimals);
}
void outPutDebugString(std::string label, bool value) { zul::outPutDebugString(std::move(label), value); }
void outPutDebugString(std::string label, const char* text) {
    zul::outPutDebugString(std::move(label), text);
}

std::string intToStr(int value) { return zul::intToStr(value); }
int strToInt(std::string text) { return zul::strToInt(std::move(text)); }
double strToDouble(std::string text) { return zul::strToDouble(std::move(text)); }
std::string doubleToStr(double value, int decimals) { return zul::doubleToStr(value, decimals); }
std::string extractFilePath(std::string path) { return zul::extractFilePath(std::move(path)); }
std::string extractFileName(std::string path) { return zul::extractFileName(std::move(path)); }
std::string extractFileExt(std::string path) { return zul::extractFileExt(std::move(path)); }
std::string getCurrentTime(int format) { return zul::getCurrentTime(format); }
std::string getDllPath(zul::TModuleHandle module) {
    std::string folder = zul::getDllPath(module);
    if (folder.empty()) refuse(rcOption, "getDllPath", "no loaded module has this handle");
    return folder;
}
std::string getExeFileName() { return zul::getExeFileName(); }
std::string getFileVersion(std::string file) {
    std::string version = zul::getFileVersion(file);
    if (!version.empty()) return version;
    const std::filesystem::path path = platform::toPath(file);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) {
        refuse(rcNoResult, "getFileVersion", "the file has no version, or can't be read: %s",
               platform::shownName(path).c_str());
    } else {
        refuseToRead("getFileVersion", path);
    }
    return version;
}
bool processIsExist(std::string name) {
    if (name.empty()) return refuse(rcFileName, "processIsExist", "the name is empty");
    return zul::processIsExist(std::move(name));
}

void APPshowImage(cv::Mat img) { imageQueue.push(img); }
bool APPgetImage(cv::Mat& out) { return imageQueue.takeOldest(out); }
bool APPgetImageRecent(cv::Mat& out) { return imageQueue.copyNewest(out); }

void APPshowOneImage(cv::Mat& img) { latestImage.store(img); }
void APPshowOneImage(const cv::Mat& img) { latestImage.store(img); }
bool APPgetOneImage(cv::Mat& out) { return latestImage.copy(out); }

}  // namespace orx
