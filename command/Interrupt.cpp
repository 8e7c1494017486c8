#include "command/Interrupt.h"

#include <array>
#include <csignal>

namespace marovine::host {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t received = 0;
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

int Interrupt::signal() const {
    return received;
}

}  // namespace marovine::host
