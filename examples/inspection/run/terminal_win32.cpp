#include "inspection/run/terminal.h"

#include <io.h>
#include <stdio.h>
#include <windows.h>

namespace inspection {

bool isOnTerminal() {
    if (_isatty(_fileno(stdout)) == 0 || _isatty(_fileno(stderr)) == 0) return false;
    // A console shows control sequences as characters unless it is asked to follow them.
    const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

}  // namespace inspection
