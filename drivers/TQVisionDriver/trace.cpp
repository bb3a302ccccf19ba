#include "drivers/TQVisionDriver/trace.h"

#include "ZULLib/zullib.h"

namespace vision {

void trace(const std::string& utf8) { zul::outPutDebugString(zul::toAnsi("TQVisionDriver: " + utf8)); }

}  // namespace vision
