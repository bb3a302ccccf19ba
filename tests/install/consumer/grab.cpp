#include <chrono>
#include <cstdio>
#include <thread>

#include "orxFunctions/orxfunctions.h"

void onPicture(cv::Mat& image, int camera) {  // on the grab thread of that camera
    std::printf("camera %d: %d x %d\n", camera + 1, image.cols, image.rows);
}

int main() {
    orx::TMultiCamera cameras;                                     // loads the driver module
    if (!cameras.InitCamera(12, nullptr, false, false)) return 1;  // 12: any brand
    cameras.setCameraNumber(1);
    if (!cameras.open(0, 12)) return 1;

    orx::TCameraConfig config;
    config.frameRate = 20;
    orx::imgThreadManager.startThread(&cameras, &config, 0);
    orx::imgThreadManager.setDrawImgCallbackFunc(true, onPicture, 0);
    orx::APPaddOrSetParamBool("cameraReady", true);
    std::this_thread::sleep_for(std::chrono::seconds(1));

    orx::imgThreadManager.closeAllThread();
    cameras.DestoryCamera();
    cameras.freeDll();
}
