// All cameras of a host.
#ifndef ORXFUNCTIONS_CAMERA_MULTI_CAMERA_H
#define ORXFUNCTIONS_CAMERA_MULTI_CAMERA_H

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <string>

#include "ZULLib/zullib.h"
#include "orxFunctions/api.h"
#include "orxFunctions/camera/camera.h"
#include "orxFunctions/camera/polled.h"

namespace orx {

class TImageThread;

// The most cameras and grab threads.
constexpr int MAXCameraNum = 9;

// Up to nine cameras, reached by logical numbers from 0 that can be put into any order.
//
// The cameras belong to a driver module, TQVisionDriver.dll (libTQVisionDriver.so on POSIX), which the
// constructor loads; drivers/vision_driver.h describes it. The usual order: construct,
// CheckCameraDriverValid, InitCamera, setCameraNumber, perhaps SetSortedCameraIdx, open each camera, start
// the grab threads (camera/image_thread_manager.h); at the end stop the threads, close the cameras,
// DestoryCamera, freeDll.
//
// Operations on one camera take its logical number `i` and answer false (0 x 0, not-a-number), with a message
// to the user, when the module is not loaded (rcDriver) or there is no such camera (rcNoCamera); else they
// refuse as TCamera's (rcNotReady, rcDriver, rcNoCamera). They may be called from any thread, with the
// exception of start and stop that TCamera names; the other operations one thread at a time.
class ORX_API TMultiCamera {
  public:
    // Loads the driver module. When that fails the user is told, and every later operation fails (rcDriver).
    TMultiCamera();
    // Deletes the TCamera objects. It neither closes cameras nor unloads the module.
    ~TMultiCamera();
    TMultiCamera(const TMultiCamera&) = delete;
    TMultiCamera& operator=(const TMultiCamera&) = delete;

    // Whether the vendor's runtime of a camera type is installed: 7 Dahua, 10 Basler, 11 Hikvision, 13 Daheng
    // (not older than 2019-04-07), 14 MicroVision, 15 The Imaging Source; 12, any camera, always is, and
    // other types never are. For the types with a runtime `msg` (may be null) receives the brand's message
    // for a missing runtime, which is of use when the answer is false. The files looked for by the standard
    // search: MVSDKmd.dll, PylonBase_MD_VC120_v5_0.dll, MvCameraControl.dll, DxImageProc.dll, MultiVDMV.dll
    // and TIS_UDSHL11.dll; on Linux libMVSDK.so, libpylonbase.so, libMvCameraControl.so, libgxiapi.so (whose
    // date counts), libMultiVDMV.so and libtcam.so. False for a runtime that is missing or too old (rcDriver)
    // and for another type (rcOption).
    bool CheckCameraDriverValid(int type, std::string* msg);

    // Finds the cameras of a type. `handles`, up to nine window handles, and `a` are the driver's. With
    // `initFlag` opening a camera also checks that the connected brand is the type that it is opened with.
    // False where the driver finds none (rcDriver).
    bool InitCamera(int type, long long* handles, bool a, bool initFlag);

    // How many cameras are in use, at most 9; more are refused (rcTooMany). Zero and negative counts leave
    // none.
    void setCameraNumber(int n);
    // `idx` holds nine camera slots, for the logical numbers 0 to 8. They are not checked before they are
    // used. Always true.
    bool SetSortedCameraIdx(int* idx);

    // As TCamera's operations of these names.
    bool open(int i, int type);
    bool connectCamera(int i, int type);
    bool start(int i);
    bool stop(int i);
    bool close(int i);
    bool haveOpen(int i);
    cv::Size getImgSize(int i);
    float GetParam(int i, int id);
    bool SetParam(int i, long value, int id);
    int getCameraType();

    // As TCamera::GetImage; `scale` counts only when `scaled` is set.
    bool GetImage(cv::Mat& out, int i, bool scaled, int scale);

    // Whether pictures can be turned by that angle (TCamera::rotation): its remainder modulo 360 is 0, 90,
    // 180 or 270.
    bool checkRotation(int angle) const;

    // Closes all cameras and lets the driver release what InitCamera took. False when the driver can't
    // (rcDriver).
    bool DestoryCamera();

    // Unloads the driver module, once. Other TMultiCamera objects keep theirs.
    void freeDll();

    TPolled<bool> inited = false;  // the last InitCamera succeeded
    TPolled<std::int32_t> cameraNumber = 0;
    TPolled<bool> initFlag = false;
    // By slot, which is also the driver's index; null until setCameraNumber creates them.
    std::array<TCamera*, MAXCameraNum> cameras{};
    std::array<TPolled<std::int32_t>, MAXCameraNum> sortedIdx;  // slots by logical number
    int dllLoaded = 0;                                          // 1 once the driver module has been loaded
    zul::TModuleHandle hDriver = nullptr;

  private:
    friend class TImageThread;

    bool loadDll();
    bool fetch(cv::Mat& out, int i, int scale, FrameOrigin& origin);
    NewerPicture newerPicture(int i) const;
    bool reopen(int i, std::uint64_t hostChanges);
    std::uint64_t hostChanges(int i) const;
    void state(int i, bool& isOpen, bool& isWorking) const;
    bool reported(int i, bool answer) const;
    bool checkCameraIdx(int i, const char* function) const;
    TCamera* quietCameraOf(int i) const;
    TCamera* cameraOf(int i, const char* function) const;

    bool mustFree_ = false;
};

}  // namespace orx

#endif
