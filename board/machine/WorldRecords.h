#pragma once

/// What stands around the board, as World.h and as the C interface have it.

#include <vector>

#include "marovine/VirtualBoard.h"
#include "marovine/World.h"

namespace virtualboard {

/// From a record; throws what `Guarded.h` makes codes of.
imaging::Belt fromRecord(const VirtualBoardBelt& record);
imaging::CameraTraits fromRecord(const VirtualBoardCamera& record);
imaging::Light fromRecord(const VirtualBoardLight& record);
imaging::Encoder fromRecord(const VirtualBoardEncoder& record);
imaging::InputSignal fromRecord(const VirtualBoardSignal& record);

/// A record with the arrays that it points to.
struct BeltRecord {
    explicit BeltRecord(const imaging::Belt& belt);
    std::vector<VirtualBoardSpeedPoint> profile;
    VirtualBoardBelt record;
};

struct LightRecord {
    explicit LightRecord(const imaging::Light& light);
    VirtualBoardLight record;
};

struct EncoderRecord {
    explicit EncoderRecord(const imaging::Encoder& encoder);
    VirtualBoardEncoder record;
};

struct SignalRecord {
    explicit SignalRecord(const imaging::InputSignal& signal);
    std::vector<VirtualBoardEdge> edges;
    std::vector<VirtualBoardTrain> trains;
    VirtualBoardSignal record;
};

struct CameraRecord {
    explicit CameraRecord(const imaging::CameraTraits& camera);
    std::vector<VirtualBoardResponsePoint> response;
    std::vector<VirtualBoardStuckPixel> stuck;
    VirtualBoardCamera record;
};

}  // namespace virtualboard
