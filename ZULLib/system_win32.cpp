// Files, modules, processes, time and trace output on Windows.
#include "ZULLib/platform_internal.h"
#include "ZULLib/win32_internal.h"
#include "ZULLib/zullib.h"

#include <tlhelp32.h>

#include <ctime>
#include <string>
#include <vector>

namespace zul {
namespace {

// The file name of a module, nullptr being the program; empty for an unknown handle.
std::wstring moduleFile(HMODULE module) {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
        if (length < name.size()) {
            name.resize(length);
            return name;
        }
        name.resize(2 * name.size());
    }
}

bool equalIgnoringCase(const std::wstring& a, const wchar_t* b) {
    return CompareStringOrdinal(a.c_str(), -1, b, -1, TRUE) == CSTR_EQUAL;
}

std::wstring wideFromAnsi(const std::string& ansi) { return win32::wideFrom(win32::kCodePage, ansi); }

std::string fourNumbers(const VS_FIXEDFILEINFO& info) {
    const auto upper = [](DWORD pair) { return std::to_string(pair >> 16); };
    const auto lower = [](DWORD pair) { return std::to_string(pair & 0xFFFFU); };
    return upper(info.dwFileVersionMS) + "." + lower(info.dwFileVersionMS) + "." +
           upper(info.dwFileVersionLS) + "." + lower(info.dwFileVersionLS);
}

}  // namespace

void platform::writeTrace(const std::string& ansiLine) { OutputDebugStringA((ansiLine + "\n").c_str()); }

std::tm platform::localTime(std::time_t moment) {
    std::tm time = {};
    if (localtime_s(&time, &moment) != 0) time = {};
    return time;
}

bool dirExists(std::string path) {
    return GetFileAttributesW(wideFromAnsi(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string getDllPath(TModuleHandle module) {
    return extractFilePath(win32::ansiFromWide(moduleFile(module)));
}

std::string getExeFileName() { return win32::ansiFromWide(moduleFile(nullptr)); }

std::string getFileVersion(std::string file) {
    const std::wstring name = wideFromAnsi(file);
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeW(name.c_str(), &unused);
    if (size == 0) return {};
    std::vector<unsigned char> resource(size);
    if (GetFileVersionInfoW(name.c_str(), 0, size, resource.data()) == 0) return {};
    void* value = nullptr;
    UINT length = 0;
    if (VerQueryValueW(resource.data(), L"\\", &value, &length) == 0) return {};
    if (value == nullptr || length < sizeof(VS_FIXEDFILEINFO)) return {};
    return fourNumbers(*static_cast<const VS_FIXEDFILEINFO*>(value));
}

bool processIsExist(std::string name) {
    const std::wstring wanted = wideFromAnsi(name);
    if (wanted.empty()) return false;
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (processes == INVALID_HANDLE_VALUE) return false;
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    bool found = false;
    for (BOOL more = Process32FirstW(processes, &entry); more != 0 && !found;
         more = Process32NextW(processes, &entry)) {
        found = equalIgnoringCase(wanted, entry.szExeFile);
    }
    CloseHandle(processes);
    return found;
}

}  // namespace zul
