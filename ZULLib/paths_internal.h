// Where a path is cut.
#ifndef ZULLIB_PATHS_INTERNAL_H
#define ZULLIB_PATHS_INTERNAL_H

#include <cstddef>
#include <string_view>

#include "ZULLib/code_page_internal.h"

namespace zul::paths {

// The position after the last '/'.
inline std::size_t posixNameStart(std::string_view path) { return path.find_last_of('/') + 1; }

// The position after the last '/' or '\' that is a character of its own: in code page 936 the byte of '\' may
// also be the second one of a double-byte character, so the text is walked from its beginning.
inline std::size_t windowsNameStart(std::string_view path) {
    std::size_t start = 0;
    for (std::size_t at = 0; at < path.size(); at += code_page::ansiLength(path, at)) {
        if (path[at] == '/' || path[at] == '\\') start = at + 1;
    }
    return start;
}

}  // namespace zul::paths

#endif
