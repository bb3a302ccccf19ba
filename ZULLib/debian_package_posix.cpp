// The package that owns a file, from dpkg's database: info/PACKAGE.list names the files of a package, status
// its version. Diversions are not followed.
#include "ZULLib/file_version_internal.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "ZULLib/files_posix_internal.h"
#include "ZULLib/zullib.h"

namespace zul::posix {
namespace {

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

// Packages may still list /lib, /bin and /sbin, which are links into /usr today.
void addNames(const std::string& path, std::vector<std::string>& names) {
    if (path.empty() || path.find('\n') != std::string::npos) return;
    names.push_back(path);
    for (const char* const folder : {"/usr/lib", "/usr/bin/", "/usr/sbin/"}) {
        if (startsWith(path, folder)) names.push_back(path.substr(4));
    }
}

// The names under which a package may list the file: the file itself first, then the link that was given.
std::vector<std::string> listedNames(const std::string& file) {
    std::vector<std::string> names;
    addNames(realPath(file), names);
    const std::string folder = extractFilePath(file);
    addNames(realPath(folder.empty() ? "." : folder) + "/" + extractFileName(file), names);
    return names;
}

// "PACKAGE" or "PACKAGE:ARCHITECTURE" of each list, in the order of the names.
std::vector<std::string> packages(const std::string& lists) {
    std::vector<std::string> found;
    const Directory folder(openDirectory(lists.c_str()));
    while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (extractFileExt(name) == ".list") found.push_back(name.substr(0, name.size() - 5));
    }
    std::sort(found.begin(), found.end());
    return found;
}

// std::string::find would stop at the first byte of each line.
bool contains(const std::string& text, const std::string& wanted) {
    return memmem(text.data(), text.size(), wanted.data(), wanted.size()) != nullptr;
}

// The first package whose list has a line that is the name; a name that stands earlier goes before.
std::string ownerOf(const std::vector<std::string>& names, const std::string& lists) {
    std::vector<std::string> lines;
    lines.reserve(names.size());
    for (const std::string& name : names) lines.push_back("\n" + name + "\n");
    std::string owner;
    std::size_t best = lines.size();
    for (const std::string& package : packages(lists)) {
        const std::string list = "\n" + contentOf(lists + package + ".list");
        for (std::size_t i = 0; i < best; ++i) {
            if (!contains(list, lines[i])) continue;
            owner = package;
            best = i;
        }
        if (best == 0) break;
    }
    return owner;
}

// The value of a field ("Version") of a paragraph of the status file; "" without one.
std::string field(const std::string& paragraph, const std::string& name) {
    const std::string start = "\n" + name + ": ";
    const std::size_t at = paragraph.find(start);
    if (at == std::string::npos) return {};
    const std::size_t value = at + start.size();
    return paragraph.substr(value, paragraph.find('\n', value) - value);
}

std::string versionOfPackage(const std::string& package, const std::string& statusFile) {
    const std::size_t colon = package.find(':');
    const std::string architecture = colon == std::string::npos ? "" : package.substr(colon + 1);
    const std::string start = "\nPackage: " + package.substr(0, colon) + "\n";
    const std::string status = "\n" + contentOf(statusFile);
    for (std::size_t at = status.find(start); at != std::string::npos; at = status.find(start, at + 1)) {
        const std::string paragraph = status.substr(at, status.find("\n\n", at) - at) + "\n";
        if (architecture.empty() || field(paragraph, "Architecture") == architecture) {
            return field(paragraph, "Version");
        }
    }
    return {};
}

}  // namespace

std::string debianVersionOf(const std::string& file, const std::string& database) {
    const std::string owner = ownerOf(listedNames(file), database + "/info/");
    return owner.empty() ? std::string() : versionOfPackage(owner, database + "/status");
}

}  // namespace zul::posix
