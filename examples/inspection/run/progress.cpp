#include "inspection/run/progress.h"

#include "inspection/report/utf8.h"

namespace inspection {
namespace {

constexpr std::size_t kFewImages = 3;
constexpr std::size_t kBarWidth = 30;
// Longer names could fill the line and make it scroll.
constexpr int kLongestName = 30;

}  // namespace

Progress::Progress(std::ostream& out, std::size_t total, bool onTerminal)
    : out_(out), total_(total), shown_(onTerminal && total > kFewImages) {}

Progress::~Progress() { wipe(); }

void Progress::show(std::size_t done, const std::string& name) {
    if (!shown_) return;
    const std::size_t filled = kBarWidth * done / total_;
    out_ << "\r\x1b[K[" << std::string(filled, '#') << std::string(kBarWidth - filled, '.') << "] " << done
         << "/" << total_ << (displayWidth(name) <= kLongestName ? " " + name : std::string()) << std::flush;
}

void Progress::wipe() {
    if (shown_) out_ << "\r\x1b[K" << std::flush;
}

}  // namespace inspection
