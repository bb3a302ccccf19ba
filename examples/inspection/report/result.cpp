#include "inspection/report/result.h"

namespace inspection {

std::string ImageResult::problemText() const {
    std::string text;
    for (const std::string& problem : problems) text += (text.empty() ? "" : "; ") + problem;
    return text;
}

void Tally::add(const ImageResult& result) {
    ++(result.measured() ? measured_ : failed_);
    if (result.measured() && !result.complete()) ++withProblems_;
}

std::string Tally::text() const {
    const std::string some =
        withProblems_ > 0 ? " (" + std::to_string(withProblems_) + " with problems)" : "";
    return std::to_string(measured_) + " measured" + some + ", " + std::to_string(failed_) + " failed";
}

}  // namespace inspection
