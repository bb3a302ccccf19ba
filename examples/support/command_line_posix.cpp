#include "support/command_line.h"

#include <cstdlib>

namespace host {

CommandLine::CommandLine(int count, char** texts) : texts_(texts, texts + count) {}

void setVariable(const std::string& name, const std::filesystem::path& value) {
    if (value.empty()) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

}  // namespace host
