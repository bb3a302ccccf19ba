#include "orxFunctions/matching/part_model_file.h"

#include <array>
#include <cstdio>
#include <memory>
#include <utility>

#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/matching/model/model_bytes.h"
#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/teach_report.h"
#include "orxFunctions/platform/file_access_internal.h"

namespace orx {
namespace {

// False for what can't be read, or is longer than any model.
bool readBytes(const std::string& path, std::string& bytes) {
    const platform::File file = platform::openToRead(platform::toPath(path));
    if (!file) return false;
    std::array<char, 1U << 16U> block{};
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
        bytes.append(block.data(), count);
        if (bytes.size() > matching::kMostModelBytes) return false;
    }
    return std::ferror(file.get()) == 0;
}

TPartModel modelOf(const std::string& bytes, const char* function) {
    auto model = std::make_shared<matching::ModelData>();
    if (matching::modelOfBytes(bytes, *model)) return TPartModel(std::move(model));
    refuse(rcFileFormat, function, "the %zu bytes are no part model, or not all of one", bytes.size());
    return matching::refusedModel(msUnreadable);
}

}  // namespace

TMatchStatus writePartModel(const std::string& path, const TPartModel& model) {
    if (!matching::takesModel(model, "writePartModel")) return msBadModel;
    const std::filesystem::path file = platform::toPath(path);
    const auto result = platform::replaceFile(file, matching::bytesOfModel(*model.data()));
    if (result == platform::ReplaceResult::kReplaced) return msOk;
    refuseToWrite("writePartModel", file);
    return msUnwritable;
}

TPartModel readPartModel(const std::string& path) {
    std::string bytes;
    if (readBytes(path, bytes)) return modelOf(bytes, "readPartModel");
    refuseToRead("readPartModel", platform::toPath(path));
    return matching::refusedModel(msUnreadable);
}

std::string partModelToBytes(const TPartModel& model) {
    return matching::takesModel(model, "partModelToBytes") ? matching::bytesOfModel(*model.data())
                                                           : std::string();
}

TPartModel partModelFromBytes(const std::string& bytes) { return modelOf(bytes, "partModelFromBytes"); }

}  // namespace orx
