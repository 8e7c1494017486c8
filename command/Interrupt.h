#pragma once

/// Being interrupted without leaving things half done.

namespace marovine::host {

/// Holds SIGINT, SIGTERM and SIGHUP back as long as it lives: they are only noted, and end with EINTR what
/// waits. Only one at a time.
class Interrupt {
 public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /// The signal that came, also while it is held back until a file is complete; 0 for none.
    int signal() const;
    /// Ends the work of the one that lives, in whatever thread, as a signal would.
    static void pretend(int signal);
};

}  // namespace marovine::host
