// Modules (shared libraries) that are loaded at run time, and what is asked about their files.
//
// A module is named by its file name on Windows. On POSIX NAME.dll is libNAME.so, unless the module has a
// name of its own there. All functions are thread-safe.
#ifndef ORXFUNCTIONS_PLATFORM_MODULE_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_MODULE_INTERNAL_H

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>

#include "ZULLib/sync_internal.h"
#include "ZULLib/zullib.h"

namespace orx::platform {

using ModuleHandle = zul::TModuleHandle;
using Procedure = void (*)();

struct ModuleName {
    const char* windows;
    const char* posix = nullptr;  // null: lib<name>.so for <name>.dll
};

// Loads a module by the standard search. Windows: that of LoadLibrary. POSIX: the extra folder, then that of
// dlopen, which knows the folder of this library and the folder orxFunctions in it (its run path). Null when
// there is none or it can't be loaded; `reason`, where given, then says why, as the system words it.
ModuleHandle loadModule(const ModuleName& name, std::string* reason = nullptr);

// Loads a module of that folder. On POSIX the standard search follows when it is not there.
ModuleHandle loadModuleFrom(const std::filesystem::path& folder, const ModuleName& name);

// Where loadModuleFrom looks first.
std::filesystem::path moduleFileIn(const std::filesystem::path& folder, const ModuleName& name);

// A folder that every later search of the process begins in (after the program's own on Windows); it replaces
// the one that was set before. False when the system refuses it.
bool setExtraModuleFolder(const std::filesystem::path& folder);

// Null when the module does not export that name.
Procedure findProcedure(ModuleHandle module, const char* name);

void freeModule(ModuleHandle module);

// The full name of the file that a module was loaded from; empty when it can't be found out.
std::filesystem::path fileOfModule(ModuleHandle module);

// The folder of the program of this process.
std::filesystem::path programFolder();

// When a file was last written, in seconds since 1970-01-01 UTC. False when it can't be asked.
bool modificationTime(const std::filesystem::path& file, std::int64_t& seconds);

// The fields of a moment in local time; all zero for one that has none.
std::tm localTime(std::time_t moment);

// The extra folder on POSIX; Windows keeps its own. Defined in orxfunctions.cpp.
class ExtraModuleFolder {
  public:
    void set(const std::filesystem::path& folder) {
        const zul::LockGuard lock(mutex_);
        folder_ = folder;
    }
    std::filesystem::path get() {
        const zul::LockGuard lock(mutex_);
        return folder_;
    }

  private:
    zul::Mutex mutex_;
    std::filesystem::path folder_ ZUL_GUARDED_BY(mutex_);
};
extern ExtraModuleFolder extraModuleFolder;

}  // namespace orx::platform

#endif
