// The running processes, on POSIX: the folders of /proc.
#include "ZULLib/zullib.h"

#include <string>

#include "ZULLib/files_posix_internal.h"

namespace zul {
namespace {

// The system cuts the name of a process here.
constexpr std::size_t kMaxProcessName = 15;

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// The state stands behind the name, which is in brackets and may hold brackets itself. A process that has
// ended stays in the list until its parent has asked for the result.
bool hasEnded(const std::string& process) {
    const std::string stat = posix::contentOfProc("/proc/" + process + "/stat");
    const std::size_t bracket = stat.rfind(')');
    if (bracket == std::string::npos || bracket + 2 >= stat.size()) return true;
    return stat[bracket + 2] == 'Z' || stat[bracket + 2] == 'X';
}

// The first argument, by custom the program; of use where the executable of somebody else is hidden.
std::string programArgument(const std::string& process) {
    const std::string arguments = posix::contentOfProc("/proc/" + process + "/cmdline");
    return arguments.substr(0, arguments.find('\0'));
}

bool isCalled(const std::string& process, const std::string& name) {
    std::string processName = posix::contentOfProc("/proc/" + process + "/comm");
    if (!processName.empty() && processName.back() == '\n') processName.pop_back();
    if (processName == name) return true;
    if (extractFileName(posix::executableOf(process)) == name) return true;
    const bool mayBeCut = name.size() > kMaxProcessName && name.substr(0, kMaxProcessName) == processName;
    return mayBeCut && extractFileName(programArgument(process)) == name;
}

}  // namespace

bool processIsExist(std::string name) {
    if (name.empty()) return false;
    const posix::Directory processes(posix::openDirectory("/proc"));
    if (!processes) return false;
    while (const dirent* entry = readdir(processes.get())) {
        const std::string process = entry->d_name;
        if (isNumber(process) && isCalled(process, name) && !hasEnded(process)) return true;
    }
    return false;
}

}  // namespace zul
