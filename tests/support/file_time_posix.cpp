#include "tests/support/file_time.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace test {

bool setModificationTime(const std::string& file, std::time_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    return utimensat(AT_FDCWD, file.c_str(), times, 0) == 0;
}

}  // namespace test
