// Picture files and the plain window of highgui, from modules that are loaded when they are first asked for.
//
// OpenCV's imgcodecs and highgui bring what they rest on: on Debian GDAL, Qt and some 130 libraries more, of
// which a program that measures needs none. On POSIX each lies behind a module of its own, in this library's
// folder or the folder orxFunctions in it; what a module can do is told by a table of functions, since names
// of C++ can't be asked for at run time. On Windows both rest on the system alone, and are linked as they
// are.
#ifndef ORXFUNCTIONS_PLATFORM_PICTURES_PICTURE_MODULES_H
#define ORXFUNCTIONS_PLATFORM_PICTURES_PICTURE_MODULES_H

#include <atomic>
#include <filesystem>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/api.h"
#include "orxFunctions/platform/module_internal.h"

namespace orx::platform {

// As the functions of OpenCV of these names; they throw what those throw.
struct PictureCodecs {
    bool (*haveImageWriter)(const std::string& fileName);
    bool (*imencode)(const std::string& extension, const cv::Mat& image, std::vector<unsigned char>& encoded,
                     const std::vector<int>& parameters);
    cv::Mat (*imdecode)(const cv::Mat& encoded, int flags);
};
struct PictureWindows {
    void (*imshow)(const std::string& title, const cv::Mat& image);
};

// By OpenCV; defined where that is linked.
extern const PictureCodecs opencvCodecs;
extern const PictureWindows opencvWindows;

// What a module answers: null for a library of another version. `ended` is true once the end of the process
// has run the module's destructors, and those of what it rests on, in which case it is past unloading.
template <class Functions>
struct PictureModule {
    const Functions* functions;
    const std::atomic<bool>* ended;
};
template <class Functions>
using PictureModuleEntry = const PictureModule<Functions>* (*)(unsigned version);

constexpr unsigned kPictureModuleVersion =
    (ORX_VERSION_MAJOR * 1000U + ORX_VERSION_MINOR) * 1000U + ORX_VERSION_PATCH;

// The modules of this process, which go with the library. Thread-safe.
class PictureModules {
  public:
    PictureModules();
    ~PictureModules();
    PictureModules(const PictureModules&) = delete;
    PictureModules& operator=(const PictureModules&) = delete;

    // The tables. Null when the module is missing or of another version; `reason`, where given, then says so
    // in English, and the next call tries again. What loads a module belongs on no WorkerThread.
    const PictureCodecs* codecs(std::string* reason = nullptr);
    const PictureWindows* windows(std::string* reason = nullptr);

  private:
    template <class Functions>
    struct Slot {
        const char* name;  // of the module without prefix and ending, and of its one procedure
        ModuleHandle handle = nullptr;
        std::atomic<const PictureModule<Functions>*> module{nullptr};
    };
    template <class Functions>
    const Functions* functionsOf(Slot<Functions>& slot, std::string* reason);
    template <class Functions>
    const PictureModule<Functions>* load(Slot<Functions>& slot, std::string* reason) ZUL_REQUIRES(mutex_);
    template <class Functions>
    void unload(Slot<Functions>& slot) ZUL_REQUIRES(mutex_);

    zul::Mutex mutex_;
    std::filesystem::path library_;  // its file
    Slot<PictureCodecs> codecs_{"orxPictureCodecs"};
    Slot<PictureWindows> windows_{"orxPictureWindows"};
};
extern PictureModules pictureModules;  // defined in orxfunctions.cpp

}  // namespace orx::platform

#endif
