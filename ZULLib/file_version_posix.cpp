// The version of a file on POSIX.
#include "ZULLib/file_version_internal.h"

#include <algorithm>
#include <string>

#include "ZULLib/files_posix_internal.h"
#include "ZULLib/zullib.h"

namespace zul {
namespace {

// "1.2.3" of "libx.so.1.2.3".
std::string versionInName(const std::string& name) {
    static const std::string kMark = ".so.";
    const std::size_t mark = name.find(kMark);
    if (mark == std::string::npos) return {};
    std::string version = name.substr(mark + kMark.size());
    version.resize(std::min(version.find_first_not_of("0123456789."), version.size()));
    while (!version.empty() && version.back() == '.') version.pop_back();
    return !version.empty() && version.front() != '.' ? version : std::string();
}

bool continues(const std::string& longer, const std::string& shorter) {
    return longer.compare(0, shorter.size() + 1, shorter + ".") == 0;
}

}  // namespace

std::string getFileVersion(std::string file) {
    const std::string real = posix::realPath(file);
    if (real.empty() || !posix::InputFile(real).isOpen()) return {};
    std::string packaged = posix::debianVersionOf(file);
    if (!packaged.empty()) return packaged;

    const posix::ElfName elf = posix::elfSharedObjectName(real);
    if (!elf.isElf) return {};
    const std::string ofObject = versionInName(elf.name);
    const std::string ofFile = versionInName(extractFileName(real));
    return ofObject.empty() || continues(ofFile, ofObject) ? ofFile : ofObject;
}

}  // namespace zul
