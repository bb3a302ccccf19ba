#include "tests/examples/run_program.h"

#include <windows.h>

namespace test {
namespace {

// The arguments of these tests hold neither quotes nor a backslash at their end.
std::wstring inQuotes(const std::string& utf8) {
    return L"\"" + std::filesystem::u8path(utf8).wstring() + L"\"";
}

HANDLE openInherited(const std::string& name) {
    SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(std::filesystem::path(name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

int runProgram(const std::string& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& folder, const std::string& output, const std::string& errors) {
    std::wstring command = inQuotes(program);
    for (const std::string& argument : arguments) command += L" " + inQuotes(argument);
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = openInherited(output);
    start.hStdError = openInherited(errors);
    PROCESS_INFORMATION process = {};
    DWORD exitCode = static_cast<DWORD>(-1);
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(), &start,
                       &process) != FALSE) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &exitCode);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
    return static_cast<int>(exitCode);
}

}  // namespace test
