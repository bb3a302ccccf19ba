#include "orxFunctions/files/file_listing_internal.h"

#include <algorithm>

#include "orxFunctions/platform/file_name_internal.h"
#include "orxFunctions/platform/file_tree_internal.h"

namespace orx {
namespace {

bool endsWith(const std::string& name, const std::string& extension) {
    return name.size() >= extension.size() &&
           lowerCase(name.substr(name.size() - extension.size())) == extension;
}

}  // namespace

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

std::error_code filesOf(const std::filesystem::path& folder, const std::vector<std::string>& extensions,
                        bool recursive, std::vector<std::string>& files) {
    const std::error_code error =
        platform::walkFolder(folder, {recursive, false}, [&](const platform::TreeFile& file) {
            const std::string name = platform::toName(file.path);
            const bool isWanted = std::any_of(extensions.begin(), extensions.end(),
                                              [&](const std::string& e) { return endsWith(name, e); });
            if (isWanted) files.push_back(name);
        });
    std::sort(files.begin(), files.end());
    return error;
}

}  // namespace orx
