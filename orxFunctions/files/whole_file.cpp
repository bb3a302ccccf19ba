#include "orxFunctions/files/whole_file.h"

#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/platform/file_access_internal.h"

namespace orx {

bool writeWholeFile(const std::filesystem::path& file, const std::string& bytes) {
    const platform::ReplaceResult result = platform::replaceFile(file, bytes);
    if (result == platform::ReplaceResult::kReplaced) return true;
    return refuseToWrite("writeWholeFile", file);
}

}  // namespace orx
