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

    /// The signal that came; 0 for none.
    int signal() const;
};

}  // namespace marovine::host
