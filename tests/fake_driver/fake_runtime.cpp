// A vendor's runtime: that it is there is all that is asked of it.
#include "drivers/vision_driver.h"

extern "C" VD_EXPORT int vendorVersion();
int vendorVersion() { return 1; }
