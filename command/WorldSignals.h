#pragma once

/// What the signals of a world do over time, outside of the board and inside.

#include "client/Client.h"
#include "command/TimingDiagram.h"

namespace virtualboard::world {
struct World;
}

namespace marovine::host {

/// Belt speed, encoder, light barriers and inputs from `from` to `to` ms after the world was given to a
/// board, `from` before `to`. Throws `Failure` where that are more edges than any drawing shows.
TimingDiagram outsideSignals(const virtualboard::world::World& world, double from, double to);

/// Adds what a board makes of them: ExSync, flash, lines and frames of an acquisition that begins with the
/// world. Moves the clock of the applet's board, which shall have stood still since it was given the world.
void addBoardSignals(Applet& applet, TimingDiagram& diagram);

}  // namespace marovine::host
