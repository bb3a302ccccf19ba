// Text settings: sections of "key = value" lines.
//
//   [section]
//   key = value
//   ; a comment, as is a line that starts with '#'
//
// Names are ASCII and their case does not matter; values are UTF-8, taken as they stand without the blanks at
// either end. There are no comments after a value, no quotes and no continuation lines. Reentrant.
#ifndef DRIVERS_TQVISIONDRIVER_INI_FILE_H
#define DRIVERS_TQVISIONDRIVER_INI_FILE_H

#include <string>
#include <string_view>
#include <vector>

namespace vision {

struct IniEntry {
    std::string key;  // lower case
    std::string value;
    int line = 0;  // 1 is the first
};

struct IniSection {
    std::string name;  // lower case
    int line = 0;
    std::vector<IniEntry>
        entries;  // in the order of the file; a later one overrides an earlier one of its key
};

struct IniFile {
    std::vector<IniSection> sections;   // in the order of the file
    std::vector<std::string> problems;  // one sentence for each line that was left out
};

// Text larger than this is refused whole, as is text with a NUL byte: it is no settings file.
constexpr std::size_t kLargestIniText = 1U << 20U;

// Never fails: what can't be understood is left out and named in `problems`, at most 20 of them.
IniFile parseIni(std::string_view text);

}  // namespace vision

#endif
