// Every process-wide object of the library. They are constructed from top to bottom when the library is
// loaded and destroyed from bottom to top when it is unloaded; nothing else in the library has a constructor
// that runs at load.
#include "orxFunctions/orxfunctions.h"

#include "orxFunctions/display/view_state_internal.h"
#include "orxFunctions/files/image_saver_internal.h"
#include "orxFunctions/foundation/image_exchange_internal.h"
#include "orxFunctions/foundation/registry_internal.h"
#include "orxFunctions/platform/native_window_list_internal.h"

namespace orx {

int G_appshowMsg_defaultColor = 0;

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
}

}  // namespace orx

std::atomic<std::int32_t> TPictureBox::mCount{0};
