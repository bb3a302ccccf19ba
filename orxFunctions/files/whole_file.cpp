#include "orxFunctions/files/whole_file.h"

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/file_access_internal.h"

namespace orx {

bool writeWholeFile(const std::filesystem::path& file, const std::string& bytes) {
    const platform::ReplaceResult result = platform::replaceFile(file, bytes);
    if (result == platform::ReplaceResult::kReplaced) return true;
    return refuse(rcFileUnwritable, "writeWholeFile",
                  result == platform::ReplaceResult::kCut ? "there is no room for all of the file: %s"
                                                          : "no regular file can be written there: %s",
                  file.u8string().c_str());
}

}  // namespace orx
