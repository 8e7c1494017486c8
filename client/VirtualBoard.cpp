#include "client/VirtualBoard.h"

namespace marovine::host {

VirtualBoard::VirtualBoard()
    : board_(virtualboard::insertStandingBoard(), virtualboard::removeBoard), control_(board_.get()) {}

virtualboard::Control& boardOf(const Applet& applet) {
    auto* board = dynamic_cast<VirtualBoard*>(&applet.device());
    if (board == nullptr) throw Failure("this needs the control of a virtual board, which this device lacks");
    return board->control();
}

}  // namespace marovine::host
