// Where the version of a file may be found on POSIX.
#ifndef ZULLIB_FILE_VERSION_INTERNAL_H
#define ZULLIB_FILE_VERSION_INTERNAL_H

#include <string>

namespace zul::posix {

// The version of the installed Debian package that owns the file (or the link by which it is named), read
// from dpkg's own lists in the folder `database`; "" when none does.
std::string debianVersionOf(const std::string& file, const std::string& database = "/var/lib/dpkg");

// The shared-object name in an ELF file. `name` is empty when it has none or the file is damaged.
struct ElfName {
    bool isElf = false;
    std::string name;
};
ElfName elfSharedObjectName(const std::string& file);

}  // namespace zul::posix

#endif
