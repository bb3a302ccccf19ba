// Texts for people: valid UTF-8, aligned, safe inside HTML.
#ifndef EXAMPLES_INSPECTION_UTF8_H
#define EXAMPLES_INSPECTION_UTF8_H

#include <string>

namespace inspection {

// Invalid sequences (over-long and surrogate ones too) become U+FFFD, one for each byte; control characters
// become '?', so that a file name can't move a terminal's cursor.
std::string cleanUtf8(const std::string& text);

// & < > " ' as character references.
std::string escapeHtml(const std::string& text);

// The columns that a terminal takes for the text: two for wide East Asian characters, none for combining
// marks. An approximation by the large blocks.
int displayWidth(const std::string& utf8);

}  // namespace inspection

#endif
