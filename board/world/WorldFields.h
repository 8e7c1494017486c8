#pragma once

/// The fields of a world file: name, unit, range and meaning of each. What a file may hold, what is checked
/// and the published schema all follow from these tables; defaults are those of the records.

#include <array>
#include <limits>
#include <span>
#include <string_view>
#include <tuple>

#include "board/world/WorldFile.h"

namespace virtualboard::world {

/// What is known of a field beside its type.
struct FieldText {
    std::string_view name;
    std::string_view about;
    std::string_view unit{};
    double minimum = 0;  ///< of a number, or of each of several
    double maximum = 0;
    bool required = false;
    /// Where a number is written as one of these texts: the text's position.
    std::span<const std::string_view> choices{};
    std::size_t most = 0;  ///< elements of an array
};

template <class Owner, class Member>
struct Field {
    Member Owner::*member;
    FieldText text;
};

template <class Owner, class Member>
constexpr Field<Owner, Member> field(Member Owner::*member, const FieldText& text) {
    return {member, text};
}

/// The fields of a record, as a tuple `fields`, and what it stands for.
template <class Record>
struct Fields;

inline constexpr double kMostTime = 1e9;    // ms: eleven days
inline constexpr double kMostLength = 1e6;  // mm: a kilometre
inline constexpr double kMostSpeed = 1e5;   // mm/s
inline constexpr double kLastInput = 11;
inline constexpr double kShortestPulse = 1e-4;  // ms
inline constexpr std::size_t kMostEdges = 1'000'000;
inline constexpr double kMostPulses = 1e7;    // of a train
inline constexpr std::size_t kMostRows = 64;  // of lists that people write

inline constexpr std::string_view kDefectKinds[] = {"spot", "scratch", "colourShift", "missingPrint"};
// In the order of Bayer.h.
inline constexpr std::string_view kPhases[] = {"GBRG", "BGGR", "RGGB", "GRBG"};

/// When something changes, in a list of changes.
inline constexpr FieldText kMoment{.name = "at",
                                   .about = "Time since the world was given to the board; ascending.",
                                   .unit = "ms",
                                   .maximum = kMostTime,
                                   .required = true};

template <>
struct Fields<SpeedText> {
    static constexpr std::string_view about = "A moment of a speed profile.";
    static constexpr auto fields =
        std::tuple(field(&SpeedText::at, kMoment),
                   field(&SpeedText::speed, {.name = "speed",
                                             .about = "Speed at that time; negative: backwards.",
                                             .unit = "mm/s",
                                             .minimum = -kMostSpeed,
                                             .maximum = kMostSpeed,
                                             .required = true}));
};

template <>
struct Fields<BeltText> {
    static constexpr std::string_view about = "The belt below the camera.";
    static constexpr auto fields = std::tuple(
        field(&BeltText::speed, {.name = "speed",
                                 .about = "Speed where there is no profile.",
                                 .unit = "mm/s",
                                 .minimum = -kMostSpeed,
                                 .maximum = kMostSpeed}),
        field(&BeltText::profile,
              {.name = "profile",
               .about = "Speed over time: it changes evenly between two points and stays after the last one.",
               .most = 10'000}),
        field(&BeltText::profilePeriod, {.name = "profilePeriod",
                                         .about = "Time after which the profile begins anew; 0: never.",
                                         .unit = "ms",
                                         .maximum = kMostTime}),
        field(&BeltText::objectPixel, {.name = "objectPixel",
                                       .about = "Belt that one sensor pixel sees, in both directions.",
                                       .unit = "mm",
                                       .minimum = 1e-4,
                                       .maximum = 100}),
        field(&BeltText::width,
              {.name = "width",
               .about = "Width from the sensor's first pixel on; as much as the sensor sees, "
                        "when left out. Beside the belt it is black.",
               .unit = "mm",
               .minimum = 1e-3,
               .maximum = kMostLength}),
        field(&BeltText::colour, {.name = "colour", .about = "Colour of the bare belt."}),
        field(
            &BeltText::picture,
            {.name = "picture",
             .about = "Picture of the bare belt instead, endlessly repeated: one pixel per sensor pixel."}));
};

template <>
struct Fields<EncoderText> {
    static constexpr std::string_view about = "The shaft encoder on the belt's drive.";
    static constexpr auto fields = std::tuple(
        field(&EncoderText::pitch, {.name = "pitch",
                                    .about = "Belt per pulse of one track.",
                                    .unit = "mm",
                                    .minimum = 1e-4,
                                    .maximum = 1000}),
        field(&EncoderText::inputA,
              {.name = "inputA",
               .about = "Input that track A is wired to; when left out it reaches whatever input the line "
                        "trigger listens to.",
               .maximum = kLastInput}),
        field(&EncoderText::inputB,
              {.name = "inputB", .about = "Input that track B is wired to.", .maximum = kLastInput}),
        field(&EncoderText::jitter, {.name = "jitter",
                                     .about = "Standard deviation of an edge's place, in pitches.",
                                     .maximum = 0.1}),
        field(
            &EncoderText::missing,
            {.name = "missing", .about = "Share of the pulses that the encoder leaves out.", .maximum = 1}));
};

template <>
struct Fields<EdgeText> {
    static constexpr std::string_view about = "A change of an input's level.";
    static constexpr auto fields = std::tuple(
        field(&EdgeText::at, kMoment),
        field(&EdgeText::high, {.name = "high", .about = "The level from then on.", .required = true}));
};

template <>
struct Fields<PulseText> {
    static constexpr std::string_view about = "A single pulse.";
    static constexpr auto fields =
        std::tuple(field(&PulseText::at, {.name = "at",
                                          .about = "Time of its first edge; pulses do not overlap.",
                                          .unit = "ms",
                                          .maximum = kMostTime,
                                          .required = true}),
                   field(&PulseText::width, {.name = "width",
                                             .about = "Time to its second edge.",
                                             .unit = "ms",
                                             .minimum = kShortestPulse,
                                             .maximum = kMostTime}));
};

template <>
struct Fields<TrainText> {
    static constexpr std::string_view about = "Pulses at a fixed period.";
    static constexpr auto fields = std::tuple(
        field(&TrainText::first, {.name = "first",
                                  .about = "Rising edge of the first pulse.",
                                  .unit = "ms",
                                  .maximum = kMostTime}),
        field(&TrainText::period, {.name = "period",
                                   .about = "Time from one rising edge to the next; more than the width.",
                                   .unit = "ms",
                                   .minimum = 2 * kShortestPulse,
                                   .maximum = kMostTime,
                                   .required = true}),
        field(&TrainText::width, {.name = "width",
                                  .about = "Time at high level.",
                                  .unit = "ms",
                                  .minimum = kShortestPulse,
                                  .maximum = kMostTime,
                                  .required = true}),
        field(&TrainText::count, {.name = "count", .about = "Pulses; 0: endless.", .maximum = kMostPulses}));
};

template <>
struct Fields<InputText> {
    static constexpr std::string_view about =
        "What an input sees over time: edges, pulses or a trace, and trains on top.";
    static constexpr auto fields = std::tuple(
        field(&InputText::input, {.name = "input",
                                  .about = "0 to 7 are the inputs, 8 to 11 the front inputs.",
                                  .maximum = kLastInput,
                                  .required = true}),
        field(&InputText::high, {.name = "high", .about = "The level at first."}),
        field(&InputText::edges, {.name = "edges", .about = "Changes of the level.", .most = kMostEdges}),
        field(&InputText::pulses,
              {.name = "pulses", .about = "Pulses away from the level at first.", .most = kMostEdges}),
        field(&InputText::trains, {.name = "trains", .about = "Pulses of high level.", .most = kMostRows}),
        field(&InputText::trace,
              {.name = "trace",
               .about = "A recorded signal: a CSV file whose rows are a time in ms and the level from then "
                        "on, 0 or 1; a first row that holds no number is a heading."}));
};

template <>
struct Fields<BarrierText> {
    static constexpr std::string_view about = "A light barrier across the belt, which parts break.";
    static constexpr auto fields = std::tuple(
        field(&BarrierText::input, {.name = "input",
                                    .about = "Input that it is wired to.",
                                    .maximum = kLastInput,
                                    .required = true}),
        field(&BarrierText::beforeCamera,
              {.name = "beforeCamera",
               .about = "Belt from the barrier to the camera's line; negative: behind the camera.",
               .unit = "mm",
               .minimum = -kMostLength,
               .maximum = kMostLength}),
        field(&BarrierText::highWhenBroken,
              {.name = "highWhenBroken", .about = "Whether a part in it makes the level high or low."}));
};

template <>
struct Fields<RegionText> {
    static constexpr std::string_view about = "A part of the picture, in shares of its size.";
    static constexpr auto fields = std::tuple(
        field(&RegionText::left, {.name = "left", .about = "Left edge.", .maximum = 1}),
        field(&RegionText::top, {.name = "top", .about = "Edge that the camera sees first.", .maximum = 1}),
        field(&RegionText::width, {.name = "width", .about = "Across the belt.", .maximum = 1}),
        field(&RegionText::height, {.name = "height", .about = "Along the belt.", .maximum = 1}));
};

template <>
struct Fields<ShiftText> {
    static constexpr std::string_view about = "What a colour shift adds to a colour, in grey values.";
    static constexpr auto fields = std::tuple(
        field(&ShiftText::red, {.name = "red", .about = "To red.", .minimum = -255, .maximum = 255}),
        field(&ShiftText::green, {.name = "green", .about = "To green.", .minimum = -255, .maximum = 255}),
        field(&ShiftText::blue, {.name = "blue", .about = "To blue.", .minimum = -255, .maximum = 255}));
};

template <>
struct Fields<DefectText> {
    static constexpr std::string_view about = "A fault that some of the parts have, at most once each.";
    static constexpr auto fields = std::tuple(
        field(&DefectText::kind,
              {.name = "kind",
               .about = "A round spot, a straight scratch, the region in other colours, or "
                        "the region's last rows without print.",
               .required = true,
               .choices = kDefectKinds}),
        field(&DefectText::probability, {.name = "probability",
                                         .about = "Share of the parts that have it.",
                                         .maximum = 1,
                                         .required = true}),
        field(&DefectText::size, {.name = "size",
                                  .about = "Diameter of a spot, length of a scratch: least and most.",
                                  .unit = "mm",
                                  .minimum = 1e-3,
                                  .maximum = kMostLength}),
        field(&DefectText::width, {.name = "width",
                                   .about = "Of a scratch: least and most.",
                                   .unit = "mm",
                                   .minimum = 1e-3,
                                   .maximum = kMostLength}),
        field(
            &DefectText::severity,
            {.name = "severity",
             .about = "Least and most. How much a spot or a scratch covers what is below, which share of the "
                      "shift a colour shift adds, which share of the region is without print.",
             .minimum = 0.01,
             .maximum = 1}),
        field(&DefectText::colour,
              {.name = "colour", .about = "Of a spot or scratch, or of the material without print."}),
        field(&DefectText::shift, {.name = "shift", .about = "Of a colour shift."}),
        field(&DefectText::region, {.name = "region", .about = "Where on the part it may lie."}));
};

template <>
struct Fields<PartsText> {
    static constexpr std::string_view about = "Equal parts, one behind the other.";
    static constexpr auto fields = std::tuple(
        field(&PartsText::name, {.name = "name", .about = "What the ground truth calls them."}),
        field(&PartsText::picture,
              {.name = "picture",
               .about = "A PNG file; its first row comes first, its transparent pixels show the belt.",
               .required = true}),
        field(&PartsText::length,
              {.name = "length",
               .about = "Size along the belt; when left out it follows from the width, and without that one "
                        "pixel of the picture is one of the sensor.",
               .unit = "mm",
               .minimum = 1e-3,
               .maximum = kMostLength}),
        field(&PartsText::width, {.name = "width",
                                  .about = "Size across the belt; when left out it follows from the length.",
                                  .unit = "mm",
                                  .minimum = 1e-3,
                                  .maximum = kMostLength}),
        field(&PartsText::at, {.name = "at",
                               .about = "Way of the belt after which the first part reaches the camera.",
                               .unit = "mm",
                               .minimum = -kMostLength,
                               .maximum = kMostLength}),
        field(&PartsText::across, {.name = "across",
                                   .about = "Belt between its edge at the sensor's first pixel and a part.",
                                   .unit = "mm",
                                   .maximum = kMostLength}),
        field(&PartsText::spacing,
              {.name = "spacing",
               .about = "From the front of one part to that of the next; at least the length and twice the "
                        "jitter.",
               .unit = "mm",
               .minimum = 1e-3,
               .maximum = kMostLength,
               .required = true}),
        field(&PartsText::jitterAlong,
              {.name = "jitterAlong",
               .about = "By this much at most a part lies before or behind its place.",
               .unit = "mm",
               .maximum = kMostLength}),
        field(&PartsText::jitterAcross,
              {.name = "jitterAcross",
               .about = "By this much at most a part lies left or right of its place.",
               .unit = "mm",
               .maximum = kMostLength}),
        field(&PartsText::count, {.name = "count", .about = "Parts; 0: endless.", .maximum = 1e12}),
        field(&PartsText::defects, {.name = "defects", .about = "What may be wrong with them.", .most = 16}));
};

template <>
struct Fields<imaging::ResponsePoint> {
    static constexpr std::string_view about = "A point of the camera's answer to light.";
    static constexpr auto fields = std::tuple(
        field(&imaging::ResponsePoint::light,
              {.name = "light",
               .about = "Share of the light that makes a pixel white; ascending.",
               .maximum = 1,
               .required = true}),
        field(&imaging::ResponsePoint::output, {.name = "output",
                                                .about = "Share of white that the camera gives for it.",
                                                .maximum = 1,
                                                .required = true}));
};

template <>
struct Fields<imaging::StuckPixel> {
    static constexpr std::string_view about = "A pixel that always gives the same value.";
    static constexpr auto fields = std::tuple(
        field(&imaging::StuckPixel::column,
              {.name = "column", .about = "Of the sensor, from 0.", .maximum = 16383, .required = true}),
        field(&imaging::StuckPixel::value, {.name = "value", .about = "Its grey value.", .maximum = 255}));
};

template <>
struct Fields<imaging::SensorFaults> {
    using Faults = imaging::SensorFaults;
    static constexpr std::string_view about =
        "What keeps the camera from showing the light as it is; nothing, when left out.";
    static constexpr auto fields = std::tuple(
        field(&Faults::response,
              {.name = "response",
               .about = "Output over light, straight between the points and level beyond them.",
               .most = kMostRows}),
        field(&Faults::darkLevel,
              {.name = "darkLevel", .about = "Grey values without any light.", .maximum = 255}),
        field(&Faults::readNoise,
              {.name = "readNoise", .about = "Standard deviation in grey values.", .maximum = 255}),
        field(
            &Faults::fullWell,
            {.name = "fullWell",
             .about = "Electrons that make a pixel white: the fewer, the more shot noise; 0: no shot noise.",
             .maximum = 1e9}),
        field(&Faults::fixedPattern, {.name = "fixedPattern",
                                      .about = "Standard deviation of the pixels' sensitivities, as a share.",
                                      .maximum = 1}),
        field(&Faults::vignetting, {.name = "vignetting",
                                    .about = "Share of the light that is lost at both ends of the sensor.",
                                    .maximum = 1}),
        field(&Faults::motionBlur,
              {.name = "motionBlur",
               .about = "Whether a pixel sees all of the belt that passes during its exposure."}),
        field(&Faults::stuck,
              {.name = "stuck", .about = "Pixels that always give the same value.", .most = 16384}));
};

template <>
struct Fields<imaging::TapReadout> {
    static constexpr std::string_view about =
        "How the camera's taps read its sensor; as the board expects it, when left out.";
    static constexpr auto fields = std::tuple(
        field(&imaging::TapReadout::taps,
              {.name = "taps", .about = "Equal parts of the line.", .minimum = 1, .maximum = 10}),
        field(&imaging::TapReadout::pixelsPerClock,
              {.name = "pixelsPerClock", .about = "Of each tap.", .minimum = 1, .maximum = 10}),
        field(
            &imaging::TapReadout::fromFarEnd,
            {.name = "fromFarEnd", .about = "For each tap whether it reads from its far end.", .most = 10}));
};

template <>
struct Fields<imaging::CameraTraits> {
    static constexpr std::string_view about = "The line-scan colour camera.";
    static constexpr auto fields = std::tuple(
        field(&imaging::CameraTraits::sensorWidth, {.name = "sensorWidth",
                                                    .about = "Pixels; beyond them a line is black.",
                                                    .minimum = 1,
                                                    .maximum = 16384}),
        field(&imaging::CameraTraits::phase,
              {.name = "phase", .about = "The first pixels of the sensor's two rows.", .choices = kPhases}),
        field(&imaging::CameraTraits::neutralExposure,
              {.name = "neutralExposure",
               .about = "Exposure that shows the scene's colours as they are, in light of level 1.",
               .unit = "\xC2\xB5s",
               .minimum = 0.01,
               .maximum = 1e6}),
        field(&imaging::CameraTraits::readout, {.name = "readout", .about = "Another readout."}),
        field(&imaging::CameraTraits::faults, {.name = "faults", .about = "What is wrong with it."}));
};

template <>
struct Fields<imaging::Light> {
    static constexpr std::string_view about = "The light on the belt.";
    static constexpr auto fields = std::tuple(
        field(&imaging::Light::level,
              {.name = "level", .about = "1 shows the scene's colours as they are.", .maximum = 100}),
        field(&imaging::Light::red, {.name = "red", .about = "Share of red in it.", .maximum = 1}),
        field(&imaging::Light::green, {.name = "green", .about = "Share of green in it.", .maximum = 1}),
        field(&imaging::Light::blue, {.name = "blue", .about = "Share of blue in it.", .maximum = 1}),
        field(&imaging::Light::flashShare,
              {.name = "flashShare", .about = "Share of it that only the flash gives.", .maximum = 1}));
};

template <>
struct Fields<WorldText> {
    static constexpr std::string_view about =
        "What stands around the virtual board. Lengths are mm, times ms of the board's clock.";
    static constexpr auto fields = std::tuple(
        field(&WorldText::schema, {.name = "$schema", .about = "Where the schema lies, for editors."}),
        field(&WorldText::format, {.name = "format",
                                   .about = "Version of this format.",
                                   .minimum = 1,
                                   .maximum = 1,
                                   .required = true}),
        field(&WorldText::about, {.name = "about", .about = "A note for people."}),
        field(&WorldText::seed,
              {.name = "seed", .about = "All that is random follows from it.", .maximum = 0x1p53}),
        field(&WorldText::belt, {.name = "belt", .about = "The belt."}),
        field(&WorldText::encoder, {.name = "encoder", .about = "The shaft encoder."}),
        field(&WorldText::inputs, {.name = "inputs", .about = "Signals at inputs.", .most = kMostRows}),
        field(&WorldText::barriers, {.name = "barriers", .about = "Light barriers.", .most = kMostRows}),
        field(&WorldText::parts,
              {.name = "parts", .about = "What lies on the belt; later ones on top.", .most = kMostRows}),
        field(&WorldText::camera, {.name = "camera", .about = "The camera."}),
        field(&WorldText::light, {.name = "light", .about = "The light."}));
};

}  // namespace virtualboard::world
