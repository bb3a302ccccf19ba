// The files of a folder that end with one of some extensions.
#ifndef ORXFUNCTIONS_FILES_FILE_LISTING_INTERNAL_H
#define ORXFUNCTIONS_FILES_FILE_LISTING_INTERNAL_H

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace orx {

std::string lowerCase(std::string text);

// In the order of their names, each with the folder's before its own. `extensions` are in lower case; "" is
// every file's. The error where not all could be read.
std::error_code filesOf(const std::filesystem::path& folder, const std::vector<std::string>& extensions,
                        bool recursive, std::vector<std::string>& files);

}  // namespace orx

#endif
