// A module that uses the library, so that loading and unloading the one loads and unloads the other.
#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/orxfunctions.h"

#if defined(_WIN32)
#define PLUGIN_API __declspec(dllexport)
#else
#define PLUGIN_API __attribute__((visibility("default")))
#endif

// Gives images to the background thread and does not wait for them. Returns how many were taken.
extern "C" PLUGIN_API int useLibrary(const char* folder, int images) {
    const char* extensions[] = {".png", ".bmp", ".jpg", ".ppm"};
    int taken = 0;
    for (int i = 0; i < images; ++i) {
        const cv::Mat image(200, 300, CV_8UC3, cv::Scalar(i, 2, 3));
        if (FileOperator::saveImage(image, folder, "", extensions[i % 4])) ++taken;
    }
    // One that fails, so that the thread reports it while the library is being unloaded.
    if (images > 0) FileOperator::saveImage(cv::Mat(2, 2, CV_8UC(7)), folder);
    return taken;
}
