/// The tap geometry sorter: how the pixels that a camera sends over several taps come back into one line.

#include <algorithm>
#include <array>
#include <cstdint>

#include "parameters/FgGxWrapperImpl.h"

namespace error = marovine::error;
using marovine::constant;
using marovine::designParameter;

namespace {

/// The sorter has ten tap slots; fields are always written whole.
constexpr std::size_t kTapSlots = 10;
using TapField = std::array<std::uint32_t, kTapSlots>;

/// The sorter works on words of eight pixels.
constexpr std::uint32_t kSorterWord = 8;

/// How the sorter is set for a tap geometry.
struct GeometryRow {
    std::int32_t geometry;
    std::uint32_t physicalTaps;  ///< taps that carry pixels
    std::uint32_t tapCount;      ///< taps that the sorter walks through, dummies included
    std::uint32_t dummyTaps;
    TapField mirrored{};  ///< 1 for taps that send their pixels from right to left
};

constexpr auto geometryRows = std::to_array<GeometryRow>({
    {constant("FG_GEOMETRY_1X8"), 1, 1, 0},
    {constant("FG_GEOMETRY_1X10"), 1, 1, 0},
    {constant("FG_GEOMETRY_4X2"), 4, 5, 1},
    {constant("FG_GEOMETRY_4X2E"), 4, 5, 1, {0, 0, 1, 1, 0, 0, 0, 1, 1, 0}},
    {constant("FG_GEOMETRY_5X2"), 5, 5, 0},
    {constant("FG_GEOMETRY_8X"), 8, 10, 1},
    {constant("FG_GEOMETRY_10X"), 10, 10, 0},
});

const GeometryRow& geometryRow(std::uint32_t geometry) {
    for (const auto& row : geometryRows)
        if (static_cast<std::uint32_t>(row.geometry) == geometry) return row;
    throw error::outOfRange;
}

constexpr std::uint32_t roundedUpToWord(std::uint32_t pixels) {
    return (pixels + kSorterWord - 1) / kSorterWord * kSorterWord;
}

FieldParameterAccess wholeField(TapField& field) {
    return {FG_TYPE_UINT32, 0, static_cast<std::uint32_t>(field.size()), field.data()};
}

}  // namespace

void FgGxWrapperImpl::setTapGeometry_P0(std::uint32_t geometry, std::uint32_t sensorWidth,
                                        std::uint32_t /*ignored*/, std::uint32_t vantagePoint,
                                        std::uint32_t xOffset, std::uint32_t width, std::uint32_t /*yOffset*/,
                                        std::uint32_t /*height*/) {
    const GeometryRow& row = geometryRow(geometry);
    const bool topLeft = vantagePoint == constant("FG_VANTAGEPOINT_TOP_LEFT");
    if (!topLeft && vantagePoint != constant("FG_VANTAGEPOINT_TOP_RIGHT")) throw error::outOfRange;

    // One tap that starts at the left edge may stop after the window; every other arrangement needs the
    // whole line before it can be sorted.
    const std::uint32_t sourceWidth = row.physicalTaps == 1 && topLeft ? xOffset + width : sensorWidth;
    const std::uint32_t tapWidth = sourceWidth / row.physicalTaps;

    TapField order{0, 1, 2, 3, 4, 5, 6, 7, 8, 8};
    TapField mirror = row.mirrored;
    for (std::uint32_t tap = 0; tap < row.physicalTaps; ++tap) {
        order[tap] = topLeft ? tap : row.physicalTaps - 1 - tap;
        if (!topLeft) mirror[tap] = 1 - mirror[tap];
    }

    const auto& sorter = design();
    sorter.write(designParameter("Buffer_0_TapGeometrySorter_SensorWidth"),
                 roundedUpToWord(tapWidth) * row.tapCount);
    sorter.write(designParameter("Buffer_0_TapGeometrySorter_TranslateVantagePoint_Value"),
                 topLeft ? 0U : 1U);
    sorter.write(designParameter("Buffer_0_TapGeometrySorter_TapWidth"), tapWidth);
    sorter.write(designParameter("Buffer_0_TapGeometrySorter_TapCount"), row.tapCount);
    sorter.write(designParameter("Buffer_0_TapGeometrySorter_DummyTaps"), row.dummyTaps);
    sorter.write(designParameter("Buffer_0_TapGeometrySorter_ParallelResort_4X2E_Enable_Value"), 0U);
    sorter.write(designParameter("Buffer_0_TapGeometrySorter_TapOrder"), wholeField(order));
    sorter.write(designParameter("Buffer_0_TapGeometrySorter_ReferenceTapMirror_Field"), wholeField(mirror));
}
