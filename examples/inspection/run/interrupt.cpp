#include "inspection/run/interrupt.h"

#include <csignal>

namespace inspection {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void remember(int signal) {
    interrupted = signal;
    std::signal(signal, SIG_DFL);
}

}  // namespace

void watchForInterrupt() {
    std::signal(SIGINT, remember);
    std::signal(SIGTERM, remember);
}

bool isInterrupted() { return interrupted != 0; }

int interruptSignal() { return interrupted; }

}  // namespace inspection
