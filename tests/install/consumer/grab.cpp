#include <chrono>
#include <cstdio>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "orxFunctions/vision_driver.h"

void onPicture(cv::Mat& image, int camera) {  // on the grab thread of that camera
    std::printf("camera %d: %d x %d\n", camera + 1, image.cols, image.rows);
}

int main() {
    orx::TMultiCamera cameras;  // loads the driver module
    if (!cameras.InitCamera(VD_TYPE_ANY, nullptr, false, false)) return 1;
    cameras.setCameraNumber(1);
    if (!cameras.open(0, VD_TYPE_ANY)) return 1;

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
