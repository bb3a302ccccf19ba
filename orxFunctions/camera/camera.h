// One camera of the loaded driver module.
#ifndef ORXFUNCTIONS_CAMERA_CAMERA_H
#define ORXFUNCTIONS_CAMERA_CAMERA_H

#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>

#include "orxFunctions/api.h"
#include "orxFunctions/camera/polled.h"

namespace orx {

struct DriverAnswer;
struct FrameOrigin;
enum class NewerPicture;

// A camera by the driver's index. Hosts usually reach it through TMultiCamera (camera/multi_camera.h), which
// loads the driver module; without a loaded module every operation fails as if the camera did.
//
// What reaches the camera waits for one lock that all cameras share, and may be called from any thread; only
// start and stop do not take it: a caller must not run them beside other calls for the same camera, and so
// makes sure that a fetch has ended, by ending the grab thread. When close returns, every fetch that was
// under way has ended. Fields may be read and set at any time.
//
// What is refused says why: rcNotReady where the camera is not open, rcDriver where no module is loaded or
// the driver refused, rcNoCamera where the connected brand is another one. A C++ exception that comes out of
// the driver is a refusal of it, with the exception's text.
//
// A camera that was lost is connected again by close and open, in this order: open alone finds it open still
// and does nothing. (lpReconnect in camera/camera_state.h lets its grab thread do that.)
class ORX_API TCamera {
  public:
    explicit TCamera(int index);
    ~TCamera();
    TCamera(const TCamera&) = delete;
    TCamera& operator=(const TCamera&) = delete;

    // Opens the camera and starts acquisition; true at once when it is open already. `type` is a camera type
    // of TMultiCamera::CheckCameraDriverValid; with `checkType` the brand must be that of the connected
    // cameras (CheckCameraType). On failure the user is told, and the camera is closed.
    bool open(int type, bool checkType);
    // The same as open.
    bool connectCamera(int type, bool checkType);
    // Starts acquisition again after stop. False when the camera is not open; on failure it is closed and the
    // user told.
    bool start();
    // Stops acquisition; the camera stays open. False when it is not open or the driver refuses.
    bool stop();
    // Stops and closes. Always true.
    bool close();
    bool haveOpen();

    // The size that the camera announced when it was started; 0 x 0 before.
    cv::Size getImgSize() const;

    // Fetches a picture, scales it to a half (`scale` 2) or a quarter (4) of its columns and rows by bilinear
    // interpolation, turns it upside down if reverseXFlag says so, and turns it as `rotation` does. `out`
    // never shares pixels with the driver; its former buffer is used again if nothing else refers to it.
    // False when the camera is not open or the driver has no picture; `out` is then untouched. A picture of
    // no or absurd size gives true and an empty `out`; one of other than 1, 3 or 4 channels is taken for
    // grey.
    bool GetImage(cv::Mat& out, int scale);

    // Turns an image by rotationAngle modulo 360: 90 is a quarter turn counter-clockwise, 180 a half turn,
    // 270 a quarter turn clockwise. Any other angle, negative ones too, leaves it as it is; this is intended.
    void rotation(cv::Mat& img);
    // Turns an image upside down when reverseXFlag is set.
    void reverseX(cv::Mat& img) const;

    // A parameter of the camera by its identifier in drivers/vision_driver.h (1 exposure in microseconds, 2
    // gain, 3 frame rate ...). Not-a-number or false when the camera is not open, the driver has no such
    // procedure or refuses.
    float GetParam(int id);
    bool SetParam(long value, int id);

    // Finds out which brand is connected, by the probe module LumoCfg: a camera type, -1 for none, -2 for
    // cameras of different brands, -3 when there is no probe module that can answer (rcDriver). It is looked
    // for in the folder of the program, or in Win32 in it unless the Hikvision runtime is installed, and then
    // by the standard search; that folder stays the process's extra search folder for modules. On Linux that
    // runtime is /opt/MVS/lib/64/libMvCameraControl.so, and the module libLumoCfg.so.
    int getCameraType();
    // Whether the connected brand is `type`, which the user is told if it is not (rcNoCamera). Type 12 is
    // always right.
    bool CheckCameraType(int type);

    TPolled<bool> isOpen = false;
    TPolled<std::int32_t> rotationAngle = 0;
    const std::int32_t index;  // the driver's, from 0
    TPolled<std::int32_t> width = 0;
    TPolled<std::int32_t> height = 0;
    TPolled<std::int32_t> channels = 1;
    TPolled<bool> reverseXFlag = false;
    TPolled<bool> ownBuffer = false;  // the last GetImage scaled the picture or turned it by a quarter
    TPolled<bool> isWorking = false;  // open and acquiring

  private:
    friend class TMultiCamera;
    struct Session;

    bool openAs(const char* function, int type, bool checkType);
    bool startAcquisition(const char* function);
    bool hasBrand(const char* function, int type);
    bool reopen(std::uint64_t hostChanges);
    std::uint64_t hostChanges() const;
    bool fetchOnce(cv::Mat& out, int scale, bool takesBlack, FrameOrigin& origin, DriverAnswer& answer);
    bool fetch(cv::Mat& out, int scale, FrameOrigin& origin, DriverAnswer& answer);
    bool fetch(cv::Mat& out, int scale, FrameOrigin& origin);
    NewerPicture newerPicture();
    void reportFailedStart() const;
    void forget();

    const std::unique_ptr<Session> session_;
};

}  // namespace orx

#endif
