#pragma once

/// A world as its file says it. Lengths are mm, times ms, unless the name says otherwise.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "marovine/Image.h"
#include "marovine/World.h"

namespace virtualboard::world {

/// A file's name, relative to the folder of the world file.
struct FileName {
    std::string text{};
    bool empty() const { return text.empty(); }
};

/// Two limits; in the file an array of both, or one number for both.
struct Limits {
    double least = 0, most = 0;
    bool operator==(const Limits&) const = default;
};

struct SpeedText {
    double at = 0;
    double speed = 0;
};

struct BeltText {
    double speed = imaging::Belt{}.speed;
    std::vector<SpeedText> profile{};
    double profilePeriod = 0;
    double objectPixel = imaging::Belt{}.objectPixel;
    std::optional<double> width{};
    imaging::Pixel colour{48, 48, 48};
    FileName picture{};
};

struct EncoderText {
    double pitch = imaging::Belt{}.encoderPitch;
    std::optional<std::uint32_t> inputA{}, inputB{};
    double jitter = 0;
    double missing = 0;
};

struct EdgeText {
    double at = 0;
    bool high = false;
};
struct PulseText {
    double at = 0;
    double width = 1;
};
struct TrainText {
    double first = 0;
    double period = 0;
    double width = 0;
    std::uint64_t count = 0;
};

struct InputText {
    std::uint32_t input = 0;
    bool high = false;
    std::vector<EdgeText> edges{};
    std::vector<PulseText> pulses{};
    std::vector<TrainText> trains{};
    FileName trace{};
};

struct BarrierText {
    std::uint32_t input = 0;
    double beforeCamera = 0;
    bool highWhenBroken = true;
};

/// A part of a picture, in shares of its size.
struct RegionText {
    double left = 0, top = 0, width = 1, height = 1;
};

struct ShiftText {
    double red = 0, green = 0, blue = 0;
};

enum DefectKind : std::uint32_t { kSpot, kScratch, kColourShift, kMissingPrint };

struct DefectText {
    std::uint32_t kind = kSpot;
    double probability = 0;
    Limits size{1, 3};
    Limits width{0.2, 0.5};
    Limits severity{1, 1};
    imaging::Pixel colour{16, 16, 16};
    ShiftText shift{};
    RegionText region{};
};

struct PartsText {
    std::string name{};
    FileName picture{};
    std::optional<double> length{}, width{};
    double at = 0;
    double across = 0;
    double spacing = 0;
    double jitterAlong = 0, jitterAcross = 0;
    std::uint64_t count = 0;
    std::vector<DefectText> defects{};
};

struct WorldText {
    std::string schema{};
    std::uint64_t format = 0;
    std::string about{};
    std::uint64_t seed = 0;
    BeltText belt{};
    EncoderText encoder{};
    std::vector<InputText> inputs{};
    std::vector<BarrierText> barriers{};
    std::vector<PartsText> parts{};
    imaging::CameraTraits camera{};
    imaging::Light light{};
};

}  // namespace virtualboard::world
