#include "orxFunctions/foundation/text.h"

namespace orx {

std::string getStartStr(std::string text, std::string sep) {
    const std::size_t at = text.find(sep);
    return at == std::string::npos ? std::string() : text.substr(0, at);
}

std::string getEndStr(std::string text, std::string sep) {
    const std::size_t at = text.find(sep);
    return at == std::string::npos ? std::string() : text.substr(at + sep.size());
}

std::string getMiddleStr(std::string text, std::string startSep, std::string endSep) {
    const std::size_t start = text.find(startSep);
    const std::size_t end = text.find(endSep);
    if (start == std::string::npos || end == std::string::npos) return {};
    const std::size_t from = start + startSep.size();
    // Intended: with the end mark first the count wraps to a huge one, which means the whole rest.
    return text.substr(from, end - from);
}

}  // namespace orx
