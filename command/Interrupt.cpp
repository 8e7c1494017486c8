#include "command/Interrupt.h"

#include <array>
#include <atomic>
#include <csignal>

namespace marovine::host {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
/// Also set by other threads, so more than what a handler may write to.
std::atomic<int> received = 0;
static_assert(std::atomic<int>::is_always_lock_free);
std::array<struct sigaction, kSignals.size()> before;

void note(int signal) {
    received = signal;
}

}  // namespace

Interrupt::Interrupt() {
    received = 0;
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = 0;  // opening a pipe that nobody else opens ends with EINTR
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &action, &before[i]);
        // Who started this program may want it to outlive the terminal.
        if (before[i].sa_handler == SIG_IGN) sigaction(kSignals[i], &before[i], nullptr);
    }
}

Interrupt::~Interrupt() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before[i], nullptr);
}

void Interrupt::pretend(int signal) {
    received = signal;
}

int Interrupt::signal() const {
    if (received != 0) return received;
    sigset_t pending;
    sigpending(&pending);
    for (const int held : kSignals)
        if (sigismember(&pending, held) == 1) return held;
    return 0;
}

}  // namespace marovine::host
