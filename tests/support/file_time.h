// The time at which a file says that it was changed last.
#ifndef ORX_TESTS_SUPPORT_FILE_TIME_H
#define ORX_TESTS_SUPPORT_FILE_TIME_H

#include <ctime>
#include <string>

namespace test {

// Also while the file is loaded as a module, unlike the function of std::filesystem.
bool setModificationTime(const std::string& file, std::time_t seconds);

}  // namespace test

#endif
