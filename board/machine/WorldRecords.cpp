#include "board/machine/WorldRecords.h"

#include "board/machine/Guarded.h"

namespace virtualboard {

namespace {

template <typename Record>
constexpr std::uint32_t sizeOf = sizeof(Record);

/// A later version may give these fields a meaning that nobody here knows.
void checkReserved(std::uint32_t field) {
    if (field != 0) throw Refusal(kWrongRecord);
}

std::uint32_t countOf(const auto& things) {
    return static_cast<std::uint32_t>(things.size());
}

}  // namespace

imaging::Belt fromRecord(const VirtualBoardBelt& record) {
    imaging::Belt belt{.speed = record.speed,
                       .objectPixel = record.objectPixel,
                       .encoderPitch = record.encoderPitch,
                       .profilePeriod = record.profilePeriod};
    for (const auto& [at, speed] : run(record.profile, record.points)) belt.profile.push_back({at, speed});
    return belt;
}

BeltRecord::BeltRecord(const imaging::Belt& belt) {
    for (const auto& [at, speed] : belt.profile) profile.push_back({at, speed});
    record = {.size = sizeOf<VirtualBoardBelt>,
              .points = countOf(profile),
              .speed = belt.speed,
              .objectPixel = belt.objectPixel,
              .encoderPitch = belt.encoderPitch,
              .profilePeriod = belt.profilePeriod,
              .profile = profile.data()};
}

imaging::Light fromRecord(const VirtualBoardLight& record) {
    checkReserved(record.reserved);
    return {.level = record.level,
            .red = record.red,
            .green = record.green,
            .blue = record.blue,
            .flashShare = record.flashShare};
}

LightRecord::LightRecord(const imaging::Light& light)
    : record{.size = sizeOf<VirtualBoardLight>,
             .reserved = 0,
             .level = light.level,
             .red = light.red,
             .green = light.green,
             .blue = light.blue,
             .flashShare = light.flashShare} {}

imaging::Encoder fromRecord(const VirtualBoardEncoder& record) {
    const auto input = [](std::int32_t wire) {
        if (wire < -1)
            throw std::invalid_argument("an encoder is wired to an input from 0 on, or -1 to none");
        return wire >= 0 ? std::optional(static_cast<std::uint32_t>(wire)) : std::nullopt;
    };
    checkReserved(record.reserved);
    return {.inputA = input(record.inputA),
            .inputB = input(record.inputB),
            .jitter = record.jitter,
            .missing = record.missing,
            .seed = record.seed};
}

EncoderRecord::EncoderRecord(const imaging::Encoder& encoder)
    : record{.size = sizeOf<VirtualBoardEncoder>,
             .inputA = encoder.inputA ? static_cast<std::int32_t>(*encoder.inputA) : -1,
             .inputB = encoder.inputB ? static_cast<std::int32_t>(*encoder.inputB) : -1,
             .reserved = 0,
             .jitter = encoder.jitter,
             .missing = encoder.missing,
             .seed = encoder.seed} {}

imaging::InputSignal fromRecord(const VirtualBoardSignal& record) {
    imaging::InputSignal signal{.high = record.high != 0};
    for (const auto& edge : run(record.edges, record.edgeCount)) {
        checkReserved(edge.reserved);
        signal.edges.push_back({edge.at, edge.high != 0});
    }
    for (const auto& train : run(record.trains, record.trainCount))
        signal.trains.push_back({train.first, train.period, train.width, train.count});
    return signal;
}

SignalRecord::SignalRecord(const imaging::InputSignal& signal) {
    for (const auto& edge : signal.edges) edges.push_back({edge.at, edge.high ? 1u : 0u, 0});
    for (const auto& train : signal.trains)
        trains.push_back({train.first, train.period, train.width, train.count});
    record = {.size = sizeOf<VirtualBoardSignal>,
              .high = signal.high ? 1u : 0u,
              .edgeCount = edges.size(),
              .trainCount = trains.size(),
              .edges = edges.data(),
              .trains = trains.data()};
}

imaging::CameraTraits fromRecord(const VirtualBoardCamera& record) {
    imaging::CameraTraits camera{
        .sensorWidth = record.sensorWidth, .phase = record.phase, .neutralExposure = record.neutralExposure};
    if (record.hasReadout != 0) {
        auto& readout = camera.readout.emplace();
        readout.taps = record.taps;
        readout.pixelsPerClock = record.pixelsPerClock;
        for (std::size_t tap = 0; tap < readout.fromFarEnd.size(); ++tap)
            readout.fromFarEnd[tap] = (record.fromFarEnd >> tap & 1) != 0;
    }
    camera.faults = {.darkLevel = record.darkLevel,
                     .readNoise = record.readNoise,
                     .fullWell = record.fullWell,
                     .fixedPattern = record.fixedPattern,
                     .vignetting = record.vignetting,
                     .motionBlur = record.motionBlur != 0,
                     .seed = record.seed};
    for (const auto& [light, output] : run(record.response, record.responsePoints))
        camera.faults.response.push_back({light, output});
    for (const auto& [column, value] : run(record.stuck, record.stuckPixels)) {
        if (value > 255) throw std::invalid_argument("a stuck pixel's value is more than 255");
        camera.faults.stuck.push_back({column, static_cast<std::uint8_t>(value)});
    }
    return camera;
}

CameraRecord::CameraRecord(const imaging::CameraTraits& camera) {
    const auto& faults = camera.faults;
    for (const auto& [light, output] : faults.response) response.push_back({light, output});
    for (const auto& [column, value] : faults.stuck) stuck.push_back({column, value});
    const imaging::TapReadout readout = camera.readout.value_or(imaging::TapReadout{});
    record = {.size = sizeOf<VirtualBoardCamera>,
              .sensorWidth = camera.sensorWidth,
              .phase = camera.phase,
              .hasReadout = camera.readout.has_value(),
              .taps = readout.taps,
              .pixelsPerClock = readout.pixelsPerClock,
              .fromFarEnd = 0,
              .motionBlur = faults.motionBlur,
              .neutralExposure = camera.neutralExposure,
              .darkLevel = faults.darkLevel,
              .readNoise = faults.readNoise,
              .fullWell = faults.fullWell,
              .fixedPattern = faults.fixedPattern,
              .vignetting = faults.vignetting,
              .seed = faults.seed,
              .responsePoints = countOf(response),
              .stuckPixels = countOf(stuck),
              .response = response.data(),
              .stuck = stuck.data()};
    for (std::size_t tap = 0; tap < readout.fromFarEnd.size(); ++tap)
        record.fromFarEnd |= std::uint32_t{readout.fromFarEnd[tap]} << tap;
}

}  // namespace virtualboard
