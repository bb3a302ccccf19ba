#include "orxFunctions/matching/part_model_file.h"

#include <array>
#include <cstdio>
#include <memory>
#include <utility>

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

}  // namespace

TMatchStatus writePartModel(const std::string& path, const TPartModel& model) {
    if (!model.valid()) return msBadModel;
    const auto result = platform::replaceFile(platform::toPath(path), partModelToBytes(model));
    return result == platform::ReplaceResult::kReplaced ? msOk : msUnwritable;
}

TPartModel readPartModel(const std::string& path) {
    std::string bytes;
    return readBytes(path, bytes) ? partModelFromBytes(bytes) : matching::refusedModel(msUnreadable);
}

std::string partModelToBytes(const TPartModel& model) {
    return model.valid() ? matching::bytesOfModel(*model.data()) : std::string();
}

TPartModel partModelFromBytes(const std::string& bytes) {
    auto model = std::make_shared<matching::ModelData>();
    if (!matching::modelOfBytes(bytes, *model)) return matching::refusedModel(msUnreadable);
    return TPartModel(std::move(model));
}

}  // namespace orx
