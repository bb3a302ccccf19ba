// What the library says to its host and takes from it: parameters, messages, traces, images, and small
// helpers.
//
// Except for the five image operations every function here forwards to its namesake in ZULLib
// (ZULLib/zullib.h, where the formats and limits are documented), so that a host needs the orx names only.
// Every function is thread-safe.
#ifndef ORXFUNCTIONS_FOUNDATION_HOST_BRIDGE_H
#define ORXFUNCTIONS_FOUNDATION_HOST_BRIDGE_H

#include <opencv2/core.hpp>
#include <string>

#include "ZULLib/zullib.h"
#include "orxFunctions/api.h"

namespace orx {

// A colour that hosts may use. The library's own messages do not read it: they pass
// zul::G_appshowMsg_defaultColor.
ORX_API extern int G_appshowMsg_defaultColor;

// Parameters: created or overwritten by name; one that was never set reads as false, 0, 0.0 or "".
ORX_API void APPaddOrSetParamBool(std::string name, bool value);
ORX_API void APPaddOrSetParamInt(std::string name, int value);
ORX_API void APPaddOrSetParamDouble(std::string name, double value);
ORX_API void APPaddOrSetParamString(std::string name, std::string value);
ORX_API bool APPgetParamBool(std::string name);
ORX_API int APPgetParamInt(std::string name);
ORX_API double APPgetParamDouble(std::string name);
ORX_API std::string APPgetParamString(std::string name);

// Messages to the user, first in first out. Texts are code page 936; zul::toUtf8 converts.
ORX_API bool APPshowMessage(std::string text, int color);
ORX_API bool APPgetMessage(std::string& text, int& color);

// Trace lines: "text", "label text", "label 7", "label 3.14", "label true".
ORX_API void outPutDebugString(std::string text);
ORX_API void outPutDebugString(std::string label, std::string text);
ORX_API void outPutDebugString(std::string label, int value);
ORX_API void outPutDebugString(std::string label, double value, int decimals);
ORX_API void outPutDebugString(std::string label, bool value);
// Without this overload a literal as second argument would choose bool.
ORX_API void outPutDebugString(std::string label, const char* text);

ORX_API std::string intToStr(int value);
ORX_API int strToInt(std::string text);
ORX_API double strToDouble(std::string text);
ORX_API std::string doubleToStr(double value, int decimals);
ORX_API std::string extractFilePath(std::string path);
ORX_API std::string extractFileName(std::string path);
ORX_API std::string extractFileExt(std::string path);
ORX_API std::string getCurrentTime(int format);
// "" for an unknown handle (rcOption).
ORX_API std::string getDllPath(zul::TModuleHandle module);
ORX_API std::string getExeFileName();
// "" for a file without a version (rcNoResult), and one that can't be read (rcFileName, rcFileMissing,
// rcFileUnreadable).
ORX_API std::string getFileVersion(std::string file);
// Also false for "" (rcFileName).
ORX_API bool processIsExist(std::string name);

// Images from a producer to the host: a first-in first-out queue of deep copies. A seventh image drops the
// oldest.

// Appends a copy of the image.
ORX_API void APPshowImage(cv::Mat img);
// Takes the oldest image. False when the queue is empty; `out` is then untouched.
ORX_API bool APPgetImage(cv::Mat& out);
// Copies the newest image and leaves the queue as it is. False when it is empty; `out` is then untouched.
ORX_API bool APPgetImageRecent(cv::Mat& out);

// The latest image: a slot that every store overwrites and no read empties.

ORX_API void APPshowOneImage(cv::Mat& img);
ORX_API void APPshowOneImage(const cv::Mat& img);
// False while the slot holds no image (never stored, or an empty one); `out` is then untouched.
ORX_API bool APPgetOneImage(cv::Mat& out);

}  // namespace orx

#endif
