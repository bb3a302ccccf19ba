// A run whose files may not grow beyond a limit, which stands in for the end of the disk.
#ifndef ORX_TESTS_EXAMPLES_LIMITED_RUN_POSIX_H
#define ORX_TESTS_EXAMPLES_LIMITED_RUN_POSIX_H

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/examples/run_program.h"

namespace test {

// Where the first write beyond the limit fails, or kills the program.
enum class AtLimit { kFails, kIsKilled };
constexpr int kKilled = 128 + SIGXFSZ;  // as the shell tells it

// Returns what runProgram does. A block has 512 bytes.
inline int runLimited(int blocks, AtLimit what, const std::vector<std::string>& arguments,
                      const std::filesystem::path& folder) {
    const std::string trap = what == AtLimit::kFails ? "trap '' XFSZ; " : "";
    std::vector<std::string> all = {
        "-c", trap + "ulimit -c 0; ulimit -f " + std::to_string(blocks) + R"(; exec "$@")", "sh",
        ORX_INSPECTION_PROGRAM};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return runProgram("/bin/sh", all, folder, (folder / "stdout").string(), (folder / "stderr").string());
}

inline std::vector<std::string> unfinishedIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".new") names.push_back(entry.path().filename().string());
    return names;
}

}  // namespace test

#endif
