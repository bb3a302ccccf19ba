// Runs a program and waits for it.
#ifndef ORX_TESTS_EXAMPLES_RUN_PROGRAM_H
#define ORX_TESTS_EXAMPLES_RUN_PROGRAM_H

#include <filesystem>
#include <string>
#include <vector>

namespace test {

// With arguments in UTF-8, in `folder`, without input, its two outputs into files. Returns its exit code, or
// -1 when it did not end by itself.
int runProgram(const std::string& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& folder, const std::string& output, const std::string& errors);

}  // namespace test

#endif
