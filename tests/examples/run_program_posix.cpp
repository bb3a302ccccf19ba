#include "tests/examples/run_program.h"

#include <sys/wait.h>

#include <cstdlib>

namespace test {
namespace {

std::string quoted(const std::string& argument) {
    std::string text = "'";
    for (const char c : argument) text += c == '\'' ? "'\\''" : std::string(1, c);
    return text + "'";
}

}  // namespace

int runProgram(const std::string& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& folder, const std::string& output, const std::string& errors) {
    std::string command = "cd " + quoted(folder.string()) + " && " + quoted(program);
    for (const std::string& argument : arguments) command += " " + quoted(argument);
    command += " >" + quoted(output) + " 2>" + quoted(errors) + " </dev/null";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace test
