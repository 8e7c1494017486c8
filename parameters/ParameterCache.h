#pragma once

/// The parameter cache: the value of every SDK parameter that its setter last accepted, by topic.
///
/// The member initialisers are what a new instance holds before anything is written: they stay when an
/// instance attaches to a board that is already configured.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tables/EnumerationTables.h"
#include "tables/RouteTable.h"

namespace marovine {

/// Entries of one lookup table: 8 bits in, 8 bits out.
inline constexpr std::size_t kLutEntries = 256;
using LookupTable = std::array<std::uint32_t, kLutEntries>;
/// The channels that have a table each, in the order in which the tables are written.
enum class LutChannel : std::uint8_t { Red, Green, Blue };

struct CameraSettings {
    std::int32_t format = constant("FG_CL_FULL_8_TAP_8_BIT");
    std::int32_t useDval = constant("FG_YES");
    std::uint32_t coreReset = 0;
    std::uint32_t timeout = 1000000;  ///< seconds
};

/// Sizes and offsets in pixels.
struct WindowSettings {
    std::int32_t tapGeometry = constant("FG_GEOMETRY_1X8");
    std::uint32_t sensorWidth = 1024;
    std::int32_t vantagePoint = constant("FG_VANTAGEPOINT_TOP_LEFT");
    std::uint32_t width = 1024;
    std::uint32_t height = 1024;
    std::uint32_t xOffset = 0;
    std::uint32_t yOffset = 0;
    std::int32_t format = constant("FG_COL24");
};

/// What was asked of the test-pattern generator; what it really does is `SimulatorState`.
struct SimulatorSettings {
    std::int32_t source = constant("FG_CAMPORT");
    std::uint32_t requestedWidth = 1024;
    std::uint32_t requestedLineGap = 0;
    std::uint32_t height = 1024;
    std::uint32_t requestedFrameGap = 0;
    std::int32_t pattern = constant("FG_DIAGONAL");
    std::uint32_t patternOffset = 0;
    std::int32_t roll = constant("FG_ON");
    std::int32_t speedMode = constant("FG_LINERATE");
    double pixelFrequency = 40.0;  ///< MHz
    double lineRate = 10240.0;     ///< Hz
    double frameRate = 10.0;       ///< Hz
    std::int32_t triggerMode = constant("SIMULATION_FREE_RUN");
};

struct ImageSelectorSettings {
    std::uint32_t period = 1;  ///< images
    std::uint32_t phase = 0;   ///< which image of the period is grabbed
};

struct ColourSettings {
    double redGain = 1.0;
    double blueGain = 1.0;
    double greenGain = 1.0;
    std::int32_t bayerInit = constant("RedFollowedByGreen");
    std::int32_t samplingRate = constant("FG_DOUBLE");
};

struct LookupTableSettings {
    std::int32_t type = constant("LUT_TYPE_PROCESSING");
    LookupTable red{};
    LookupTable green{};
    LookupTable blue{};
    std::string customFile;
    std::string saveFile;
    double offset = 0.0;
    double gain = 1.0;
    double gamma = 1.0;
    std::int32_t invert = constant("FG_OFF");
};

struct DebugSettings {
    std::uint32_t source = 0;  ///< index of the selected debug point
    std::int32_t inputEnable = constant("FG_OFF");
    std::string file;
    std::int32_t insert = constant("FG_APPLY");
    std::uint64_t writePixel = 0;
    std::int32_t writeFlag = constant("FG_ENDOFLINE");
    std::int32_t outputEnable = constant("FG_OFF");
    std::string saveConfigFile;
};

/// Times in microseconds.
struct LineTriggerSettings {
    std::int32_t mode = constant("GRABBER_CONTROLLED");
    std::int32_t exsyncOn = constant("FG_ON");
    std::int32_t sourceA = constant("TRGINSRC_GPI_1");
    std::int32_t inputPolarity = constant("HIGH_ON_ZERO_HIGH");
    double debouncing = 0.112;
    std::uint32_t downscale = 1;
    std::uint32_t downscalePhase = 1;
    std::int32_t encoderOn = constant("FG_OFF");
    std::int32_t encoderMode = constant("FILTER_X1");
    std::int32_t sourceB = constant("TRGINSRC_GPI_2");
    std::int32_t encoderLeading = constant("SOURCE_A");
    std::int32_t compensationEnable = constant("FG_ON");
    std::uint32_t compensationCount = 0;
    double period = 200.0;
    double exposure = 19.0;
    std::int32_t exsyncPolarity = constant("FG_HIGH");
    double delay = 0.0;
};

/// Delays and heights in lines, the debouncing time in microseconds.
struct ImageTriggerSettings {
    std::int32_t mode = constant("FREE_RUN");
    std::int32_t on = constant("FG_ON");
    std::int32_t flashOn = constant("FG_ON");
    std::uint32_t asyncHeight = 1024;
    std::int32_t source = constant("TRGINSRC_GPI_0");
    std::int32_t inputPolarity = constant("HIGH_ON_ZERO_HIGH");
    std::uint32_t gateDelay = 0;
    double debouncing = 0.112;
    std::int32_t flashPolarity = constant("FG_HIGH");
    std::uint32_t flashDelay = 0;
    std::int32_t softwarePulse = constant("FG_APPLY");
    std::int32_t softwareState = constant("FG_LOW");
};

/// A source or a polarity: what was asked for, and what the design was last given successfully.
struct RoutedValue {
    std::int32_t requested;
    std::int32_t applied;

    constexpr RoutedValue(std::int32_t value) : requested(value), applied(value) {}
};

struct RouteSettings {
    RoutedValue source;
    RoutedValue polarity = constant("FG_HIGH");
};

struct OutputSettings {
    // One column per route, in the order of `Route`.
    std::array<RouteSettings, kRouteCount> routes{{
        {constant("FG_SIGNAL_CAM0_EXSYNC")},
        {constant("VCC")},
        {constant("VCC")},
        {constant("VCC")},
        {constant("FG_SIGNAL_CAM0_FLASH")},
        {constant("FG_SIGNAL_CAM0_EXSYNC2")},
        {constant("FG_SIGNAL_CAM0_EXSYNC")},
        {constant("VCC")},
        {constant("VCC")},
        {constant("VCC")},
        {constant("VCC")},
        {constant("VCC")},
        {constant("FG_SIGNAL_CAM0_FLASH")},
        {constant("FG_SIGNAL_CAM0_EXSYNC2")},
        {constant("FG_SIGNAL_CAM0_EXSYNC")},
        {constant("FG_SIGNAL_CAM0_LINE_START")},
        {constant("FG_SIGNAL_CAM0_EXSYNC")},
        {constant("FG_SIGNAL_CAM0_FLASH")},
    }};
    std::int32_t digitalOutput = 3;  ///< legacy bit mask of GPO 3 and GPO 7, -1 for none
    std::array<std::int32_t, 4> legacyCc{constant("CC_EXSYNC"), constant("CC_VCC"), constant("CC_VCC"),
                                         constant("CC_VCC")};
    std::int32_t analyzerClear = constant("FG_APPLY");

    RouteSettings& operator[](Route route) { return routes[static_cast<std::size_t>(route)]; }
    const RouteSettings& operator[](Route route) const { return routes[static_cast<std::size_t>(route)]; }
};

/// The cache of one instance.
struct ParameterCache {
    CameraSettings camera;
    WindowSettings window;
    SimulatorSettings simulator;
    ImageSelectorSettings imageSelector;
    ColourSettings colour;
    LookupTableSettings lookupTable;
    DebugSettings debug;
    LineTriggerSettings lineTrigger;
    ImageTriggerSettings imageTrigger;
    OutputSettings outputs;
};

/// What the test-pattern generator really does, derived from `SimulatorSettings`. Unset (zero) until the
/// initialisation routines have run.
struct SimulatorState {
    std::uint32_t effectiveWidth = 0;     ///< pixels, a multiple of 8
    std::uint32_t effectiveLineGap = 0;   ///< pixels, a multiple of 8
    std::uint32_t effectiveHeight = 0;    ///< lines
    std::uint32_t effectiveFrameGap = 0;  ///< lines
    double maximumPixelRate = 0.0;        ///< pixels per second
    double computedFrameRate = 0.0;       ///< Hz, derived after a speed change
};

/// One debug point of the design.
struct DebugEntry {
    enum class Kind : std::int32_t { Inject = 0, InjectMonitor = 1 };

    std::string name;  ///< at most 127 characters, as the path
    Kind kind = Kind::Inject;
    std::string path;
};

}  // namespace marovine
