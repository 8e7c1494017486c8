#pragma once

/// A virtual board as the device of a client, and the way from an applet to its board's control.

#include "client/Client.h"
#include "client/Device.h"
#include "marovine/Control.h"

namespace marovine::host {

/// A board that is in the machine until the last copy of the object ends. Its clock stands still at first: in
/// real time the read-outs would depend on how long the opening takes.
class VirtualBoard final : public Device {
 public:
    VirtualBoard();
    VirtualBoard(const VirtualBoard& other) : board_(other.board_), control_(other.control_) {}

    GXdevice* handle() const override { return board_.get(); }
    std::unique_ptr<Device> another() const override { return std::make_unique<VirtualBoard>(); }
    virtualboard::Control& control() { return control_; }

 private:
    std::shared_ptr<GXdevice> board_;
    virtualboard::Control control_;
};

/// The control of the virtual board that an applet is open on. Throws `Failure` on another device.
virtualboard::Control& boardOf(const Applet& applet);

}  // namespace marovine::host
