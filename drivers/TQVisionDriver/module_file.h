// What the operating system knows about the file of this module, and about the process.
#ifndef DRIVERS_TQVISIONDRIVER_MODULE_FILE_H
#define DRIVERS_TQVISIONDRIVER_MODULE_FILE_H

#include <filesystem>

namespace vision {

// The folder of the file that contains this function; empty when the system does not tell.
std::filesystem::path moduleFolder();

// The path that an environment variable names, in any characters; empty when it is not set.
std::filesystem::path pathFromEnvironment(const char* variable);

// Keeps the module in memory until the process ends, since threads of Aravis and of its own run in it. (On
// POSIX the linker has done so already: -z nodelete.)
void keepModuleLoaded();

// Has `function` called when the process ends, where other threads still run at that moment. On Windows they
// are gone by then, with whatever locks they held, and nothing must be touched: there it is never called.
void atProcessEnd(void (*function)());

}  // namespace vision

#endif
