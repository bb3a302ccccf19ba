// A progress bar for people who wait.
#ifndef EXAMPLES_INSPECTION_PROGRESS_H
#define EXAMPLES_INSPECTION_PROGRESS_H

#include <cstddef>
#include <ostream>
#include <string>

namespace inspection {

// One line that is drawn over and over, for more than three pictures on a terminal; nothing otherwise.
// The line is wiped before anything else is printed and at the end.
class Progress {
  public:
    Progress(std::ostream& out, std::size_t total, bool onTerminal);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::size_t done, const std::string& name);
    void wipe();

  private:
    std::ostream& out_;
    std::size_t total_;
    bool shown_;
};

}  // namespace inspection

#endif
