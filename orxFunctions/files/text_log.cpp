#include "orxFunctions/files/text_log.h"

#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/platform/file_access_internal.h"

namespace orx {

void save2Txt(std::string path, std::string text, int noTime) {
    const std::string time = noTime == 0 ? getCurrentTime(0) : std::string();
    if (!platform::appendText(path, time + text + '\n')) refuseToWrite("save2Txt", platform::toPath(path));
}

}  // namespace orx
