// What a program is started with, as UTF-8 on every platform.
#ifndef EXAMPLES_SUPPORT_COMMAND_LINE_H
#define EXAMPLES_SUPPORT_COMMAND_LINE_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace host {

// The arguments of main(), on POSIX as they are. Windows gives main() only what the process's code page has;
// here they are taken from the system instead, and while the object lives a console shows UTF-8. Paths are
// made from them by std::filesystem::u8path.
class CommandLine {
  public:
    CommandLine(int count, char** texts);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    int count() const { return static_cast<int>(texts_.size()); }
    const char* const* texts() const { return texts_.data(); }

  private:
    std::vector<std::string> converted_;
    std::vector<const char*> texts_;
    std::shared_ptr<void> console_;  // Windows: gives the console its code page back
};

// Sets a variable of this process's environment; an empty path takes it away. One thread at a time.
void setVariable(const std::string& name, const std::filesystem::path& value);

}  // namespace host

#endif
