// Every process-wide object of the library. They are constructed from top to bottom when the library is
// loaded and destroyed from bottom to top when it is unloaded. Nothing else in the library has a constructor
// that runs at load, apart from constants of OpenCV's types, which only their own file uses.
#include "orxFunctions/orxfunctions.h"

#include "orxFunctions/camera/camera_driver_internal.h"
#include "orxFunctions/camera/camera_messages_internal.h"
#include "orxFunctions/camera/camera_states_internal.h"
#include "orxFunctions/camera/frame_queue_internal.h"
#include "orxFunctions/camera/image_thread_internal.h"
#include "orxFunctions/display/view_state_internal.h"
#include "orxFunctions/files/image_saver_internal.h"
#include "orxFunctions/foundation/image_exchange_internal.h"
#include "orxFunctions/foundation/registry_internal.h"
#include "orxFunctions/platform/module_internal.h"
#include "orxFunctions/platform/pictures/picture_modules.h"
#include "orxFunctions/platform/window/native_window_list.h"

namespace orx {

int G_appshowMsg_defaultColor = 0;

std::array<zul::Mutex, MAXCameraNum> slotMutexes;
zul::Mutex cameraCallMutex;
zul::Mutex grabLifecycleMutex;
platform::PictureModules platform::pictureModules;
platform::ExtraModuleFolder platform::extraModuleFolder;
CameraDriver cameraDriver;
CameraMessages cameraMessages;
CameraStates cameraStates;
std::array<FrameQueue, MAXCameraNum> frameQueues;
TImageThreadManager imgThreadManager;

ImageSaver imageSaver;

TAppSys appSys;

LatestImageSlot latestImage;
ImageQueue imageQueue;

zul::Mutex registryObjectsMutex;
zul::Mutex registryVoidFuncsMutex;
zul::Mutex registryIntFuncsMutex;
zul::Mutex registryStringFuncsMutex;

namespace platform {
NativeWindowList nativeWindows;
}
namespace display {
ViewState viewState;
OwnViewStates ownViewStates;
}  // namespace display

GrabbingEnd grabbingEnd;

}  // namespace orx

std::atomic<std::int32_t> TPictureBox::mCount{0};
