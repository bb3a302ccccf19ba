// Numbers and values written as text, the same in every locale.
#ifndef ORXFUNCTIONS_FOUNDATION_TEXT_STREAM_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_TEXT_STREAM_INTERNAL_H

#include <locale>
#include <sstream>

namespace orx {

// Throws std::bad_alloc where it finds no memory. A standard stream would swallow that and leave out the rest
// of the text, without a word to those who take it for whole.
class TextStream : public std::ostringstream {
  public:
    TextStream() {
        imbue(std::locale::classic());
        exceptions(std::ios::badbit);
    }
};

}  // namespace orx

#endif
