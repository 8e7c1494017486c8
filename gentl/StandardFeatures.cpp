/// The features that consumers know a camera by, made of the applet's parameters.

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "base/AppletIdentity.h"
#include "gentl/RemoteDevice.h"
#include "tables/SdkParameterTable.h"

namespace marovine::gentl {

namespace {

constexpr const char* kDevice = "DeviceControl";
constexpr const char* kPicture = "ImageFormatControl";
constexpr const char* kAcquisition = "AcquisitionControl";
constexpr const char* kAnalog = "AnalogControl";
constexpr const char* kTables = "LUTControl";
constexpr const char* kTransport = "TransportLayerControl";
constexpr const char* kBoard = "BoardControl";

/// A standard feature that is one parameter of the applet under another name.
struct SameAs {
    const char* name;
    const char* category;
    const char* parameter;
    const char* toolTip;
    Visibility visibility = Visibility::Beginner;
};
constexpr std::array kSame{
    SameAs{"DeviceTemperature", kDevice, "FG_SYSTEMMONITOR_FPGA_TEMPERATURE",
           "Temperature of the board's FPGA", Visibility::Expert},
    SameAs{"SensorWidth", kPicture, "FG_SENSORWIDTH", "Width of the sensor", Visibility::Expert},
    SameAs{"Width", kPicture, "FG_WIDTH", "Width of the picture"},
    SameAs{"Height", kPicture, "FG_HEIGHT", "Lines of a picture; a gate can make it shorter"},
    SameAs{"OffsetX", kPicture, "FG_XOFFSET", "First column of the picture"},
    SameAs{"OffsetY", kPicture, "FG_YOFFSET", "Lines left out before the picture"},
    SameAs{"AcquisitionLinePeriod", kAcquisition, "FG_LINEPERIODE", "Time from line to line",
           Visibility::Expert},
    SameAs{"ExposureTime", kAcquisition, "FG_LINEEXPOSURE", "Time for which a line is exposed"},
    SameAs{"TriggerDelayLine", kAcquisition, "FG_LINETRIGGERDELAY",
           "Time from the line trigger to the exposure", Visibility::Expert},
    SameAs{"Gain", kAnalog, "FG_PROCESSING_GAIN", "Factor of the lookup table's processing"},
    SameAs{"BlackLevel", kAnalog, "FG_PROCESSING_OFFSET", "Offset of the lookup table's processing"},
    SameAs{"Gamma", kAnalog, "FG_PROCESSING_GAMMA", "Gamma of the lookup table's processing"},
    SameAs{"LineStatusAll", "DigitalIOControl", "FG_DIGIO_INPUT", "Levels at the inputs, a bit each"},
};

/// Standard features that are made of parameters in other ways: what moves when one does.
struct MadeOf {
    const char* parameter;
    const char* name;
};
constexpr std::array kMadeOf{
    MadeOf{"FG_WIDTH", "PayloadSize"},
    MadeOf{"FG_HEIGHT", "PayloadSize"},
    MadeOf{"FG_LINEPERIODE", "AcquisitionLineRate"},
    MadeOf{"FG_IMGTRIGGERMODE", "TriggerMode"},
    MadeOf{"FG_LINETRIGGERMODE", "TriggerMode"},
    MadeOf{"FG_IMGTRIGGERINSRC", "TriggerSource"},
    MadeOf{"FG_LINETRIGGERINSRC", "TriggerSource"},
    MadeOf{"FG_IMGTRIGGERINPOLARITY", "TriggerActivation"},
    MadeOf{"FG_LINETRIGGERINPOLARITY", "TriggerActivation"},
    MadeOf{"FG_SCALINGFACTOR_RED", "BalanceRatio"},
    MadeOf{"FG_SCALINGFACTOR_GREEN", "BalanceRatio"},
    MadeOf{"FG_SCALINGFACTOR_BLUE", "BalanceRatio"},
    MadeOf{"FG_CAMERASIMULATOR_ENABLE", "TestPattern"},
    MadeOf{"FG_CAMERASIMULATOR_PATTERN", "TestPattern"},
    MadeOf{"FG_LUT_VALUE_RED", "LUTValue"},
    MadeOf{"FG_LUT_VALUE_GREEN", "LUTValue"},
    MadeOf{"FG_LUT_VALUE_BLUE", "LUTValue"},
};
std::vector<std::string> parametersOf(std::string_view name) {
    std::vector<std::string> parameters;
    for (const auto& row : kMadeOf)
        if (row.name == name) parameters.emplace_back(row.parameter);
    return parameters;
}
/// The same with selectors.
std::vector<std::string> parametersOf(std::string_view name, std::initializer_list<const char*> selectors) {
    auto movers = parametersOf(name);
    movers.insert(movers.end(), selectors.begin(), selectors.end());
    return movers;
}

/// The parameters of what a trigger starts: a picture, or a line.
struct TriggerParameters {
    const char* mode;
    std::int64_t off, on;
    const char* source;
    const char* polarity;
};
constexpr std::array kTriggers{
    TriggerParameters{"FG_IMGTRIGGERMODE", constant("FREE_RUN"), constant("ASYNC_TRIGGER"),
                      "FG_IMGTRIGGERINSRC", "FG_IMGTRIGGERINPOLARITY"},
    TriggerParameters{"FG_LINETRIGGERMODE", constant("GRABBER_CONTROLLED"), constant("ASYNC_TRIGGER"),
                      "FG_LINETRIGGERINSRC", "FG_LINETRIGGERINPOLARITY"},
};

constexpr std::array kBalances{"FG_SCALINGFACTOR_RED", "FG_SCALINGFACTOR_GREEN", "FG_SCALINGFACTOR_BLUE"};
constexpr std::array kLookupTables{"FG_LUT_VALUE_RED", "FG_LUT_VALUE_GREEN", "FG_LUT_VALUE_BLUE"};
const std::vector<EntryNode> kColours{
    {.name = "Red", .value = 0}, {.name = "Green", .value = 1}, {.name = "Blue", .value = 2}};

/// A selector or mode that the producer keeps itself; only its entries are written.
Access<std::int64_t> kept(std::atomic<std::int64_t>& place, std::int64_t last) {
    return {.read = [&place] { return place.load(); },
            .write =
                [&place, last](std::int64_t value) {
                    if (value < 0 || value > last)
                        throw Error(GC_ERR_INVALID_VALUE,
                                    std::to_string(value) + " is not one of 0 to " + std::to_string(last));
                    place = value;
                },
            .minimum = [] { return 0; },
            .maximum = [last] { return last; },
            .increment = [] { return 1; }};
}

/// Without range: entries say what an enumeration takes.
Access<std::int64_t> keptEntry(std::atomic<std::int64_t>& place, const std::vector<EntryNode>& entries) {
    auto access = kept(place, static_cast<std::int64_t>(entries.size()) - 1);
    return {.read = access.read, .write = access.write};
}

}  // namespace

void RemoteDevice::describeDevice(NodeMap& nodes) {
    const auto text = [&](const char* name, std::string value, const char* toolTip) {
        nodes.text({.name = name, .category = kDevice, .toolTip = toolTip},
                   {.read = [value = std::move(value)] { return value; }});
    };
    text("DeviceVendorName", identity::manufacturer, "Maker of the device");
    text("DeviceModelName", identity::name, "Name of the device");
    text("DeviceVersion", identity::version, "Version of the device");
    text("DeviceFirmwareVersion", identity::build, "Version of the applet's build");
    text("DeviceSerialNumber", serialNumber_, "Serial number of the device");
    nodes.onlyChoice({.name = "DeviceScanType", .category = kDevice, .toolTip = "How the sensor scans"},
                     {.name = "Linescan", .value = 1});
    constexpr std::array kNaming{std::pair{"DeviceSFNCVersionMajor", 2},
                                 std::pair{"DeviceSFNCVersionMinor", 4},
                                 std::pair{"DeviceSFNCVersionSubMinor", 0}};
    for (const auto& [name, version] : kNaming)
        nodes.integer({.name = name,
                       .category = kDevice,
                       .toolTip = "Version of the standard features naming",
                       .visibility = Visibility::Expert},
                      {.read = [version = version] { return version; }});
    for (const auto& [parameter, name] : kMadeOf) standardNames_[parameter].emplace_back(name);
    for (const auto& same : kSame) {
        standardNames_[same.parameter].emplace_back(same.name);
        nodes.alias({.name = same.name,
                     .category = same.category,
                     .toolTip = same.toolTip,
                     .visibility = same.visibility,
                     .movedBy = {},
                     .streamable = true},
                    same.parameter);
    }
}

void RemoteDevice::describePicture(NodeMap& nodes) {
    const auto largest = [&](const char* name, const char* parameter, const char* toolTip) {
        const auto* row = findSdkParameter(parameter);
        const std::int64_t most = std::get<Limits<std::uint32_t>>(row->range).maximum;
        nodes.integer({.name = name,
                       .category = kPicture,
                       .toolTip = toolTip,
                       .unit = "pixel",
                       .visibility = Visibility::Expert},
                      {.read = [most] { return most; }});
    };
    largest("WidthMax", "FG_WIDTH", "Largest width of a picture");
    largest("HeightMax", "FG_HEIGHT", "Largest height of a picture");
    nodes.enumeration({.name = "PixelFormat",
                       .category = kPicture,
                       .toolTip = "Format of the pixels: blue, green and red, a byte each",
                       .movedBy = {"FG_FORMAT", "TLParamsLocked"},
                       .locked = [this] { return locked(); },
                       .streamable = true},
                      {{.name = "BGR8", .value = PFNC_BGR8, .displayName = "BGR8"}},
                      {.read = [] { return PFNC_BGR8; },
                       .write =
                           [](std::int64_t value) {
                               if (value != PFNC_BGR8)
                                   throw Error(GC_ERR_INVALID_VALUE, "the pixel format is always BGR8");
                           }});
    // The generator replaces the camera: its pattern, or none.
    const std::vector<EntryNode> patterns{{.name = "Off", .value = 0},
                                          {.name = "GreyHorizontalRamp", .value = constant("FG_HORIZONTAL")},
                                          {.name = "GreyVerticalRamp", .value = constant("FG_VERTICAL")},
                                          {.name = "GreyDiagonalRamp", .value = constant("FG_DIAGONAL")}};
    nodes.enumeration(
        {.name = "TestPattern",
         .category = kPicture,
         .toolTip = "A pattern in place of the camera's pictures",
         .movedBy = parametersOf("TestPattern"),
         .streamable = true},
        patterns,
        {.read =
             [this] {
                 return integer("FG_CAMERASIMULATOR_ENABLE") == 0 ? 0 : integer("FG_CAMERASIMULATOR_PATTERN");
             },
         .write =
             [this](std::int64_t value) {
                 if (value != 0) setInteger("FG_CAMERASIMULATOR_PATTERN", value);
                 setInteger("FG_CAMERASIMULATOR_ENABLE", value != 0 ? 1 : 0);
             }});
    nodes.computed({.name = "PayloadSize",
                    .category = kTransport,
                    .toolTip = "Bytes of a picture",
                    .unit = "B",
                    .visibility = Visibility::Expert},
                   {"Width", "Height"}, "Width * Height * 3");
    nodes.integer({.name = "TLParamsLocked",
                   .category = kTransport,
                   .toolTip = "1 while the consumer streams: the size of a picture stays",
                   .visibility = Visibility::Invisible},
                  {.read = [this] { return tlParamsLocked_.load(); },
                   .write = [this](std::int64_t value) { setStreaming(value); },
                   .minimum = [] { return 0; },
                   .maximum = [] { return 1; },
                   .increment = [] { return 1; }});
}

void RemoteDevice::describeAcquisition(NodeMap& nodes) {
    const std::vector<EntryNode> modes{{.name = "Continuous", .value = kContinuous},
                                       {.name = "SingleFrame", .value = kSingleFrame},
                                       {.name = "MultiFrame", .value = kMultiFrame}};
    nodes.enumeration({.name = "AcquisitionMode",
                       .category = kAcquisition,
                       .toolTip = "How many pictures AcquisitionStart brings",
                       .movedBy = {"AcquisitionStart", "AcquisitionStop"},
                       .locked = [this] { return acquiring(); },
                       .streamable = true},
                      modes, keptEntry(acquisitionMode_, modes));
    nodes.integer({.name = "AcquisitionFrameCount",
                   .category = kAcquisition,
                   .toolTip = "Pictures that AcquisitionStart brings in the mode MultiFrame",
                   .movedBy = {"AcquisitionMode", "AcquisitionStart", "AcquisitionStop"},
                   .locked = [this] { return acquiring(); },
                   .available = [this] { return acquisitionMode_ == kMultiFrame; },
                   .streamable = true},
                  {.read = [this] { return frameCount_.load(); },
                   .write =
                       [this](std::int64_t count) {
                           if (count < 1 || count > kMostFrames)
                               throw Error(GC_ERR_INVALID_VALUE,
                                           "the frame count is 1 to " + std::to_string(kMostFrames));
                           frameCount_ = count;
                       },
                   .minimum = [] { return 1; },
                   .maximum = [] { return kMostFrames; },
                   .increment = [] { return 1; }});
    nodes.command(
        {.name = "AcquisitionStart",
         .category = kAcquisition,
         .toolTip = "Pictures flow as soon as the data stream is started, too"},
        [this] { start(); }, [this] { return !acquiring() || picturesLeft_ == GENTL_INFINITE; });
    nodes.command(
        {.name = "AcquisitionStop", .category = kAcquisition, .toolTip = "Ends what AcquisitionStart began"},
        [this] { stop(); });
    nodes.converted({.name = "AcquisitionLineRate",
                     .category = kAcquisition,
                     .toolTip = "Lines each second",
                     .unit = "Hz"},
                    "FG_LINEPERIODE", "1000000 / FROM", "1000000 / TO");
    nodes.enumeration({.name = "ExposureMode", .category = kAcquisition, .toolTip = "What ends the exposure"},
                      {{.name = "Timed", .value = 1}}, {.read = [] { return 1; }});
}

void RemoteDevice::describeTriggers(NodeMap& nodes) {
    const auto trigger = [this]() -> const TriggerParameters& {
        return kTriggers[static_cast<std::size_t>(triggerSelector_.load())];
    };
    const std::vector<EntryNode> starts{{.name = "FrameStart", .value = 0},
                                        {.name = "LineStart", .value = 1}};
    nodes.enumeration({.name = "TriggerSelector",
                       .category = kAcquisition,
                       .toolTip = "What the trigger starts",
                       .selects = {"TriggerMode", "TriggerSource", "TriggerActivation", "TriggerSoftware"}},
                      starts, keptEntry(triggerSelector_, starts));
    nodes.enumeration({.name = "TriggerMode",
                       .category = kAcquisition,
                       .toolTip = "Whether the selected trigger is waited for",
                       .movedBy = parametersOf("TriggerMode", {"TriggerSelector"}),
                       .streamable = true},
                      {{.name = "Off", .value = 0}, {.name = "On", .value = 1}},
                      {.read = [this, trigger] { return integer(trigger().mode) == trigger().off ? 0 : 1; },
                       .write =
                           [this, trigger](std::int64_t on) {
                               if (on != 0 && on != 1)
                                   throw Error(GC_ERR_INVALID_VALUE, "TriggerMode is 0 or 1");
                               const bool isOn = integer(trigger().mode) != trigger().off;
                               if (isOn != (on == 1))
                                   setInteger(trigger().mode, on == 1 ? trigger().on : trigger().off);
                           }});
    constexpr std::int64_t inputs = 8;
    constexpr std::int64_t frontInputs = 4;
    constexpr std::int64_t firstFront = 16;
    // Only a picture can be triggered by software.
    const auto startsPictures = [this] { return triggerSelector_ == 0; };
    std::vector<EntryNode> sources{
        {.name = "Software", .value = constant("TRGINSOFTWARE"), .available = startsPictures}};
    for (std::int64_t i = 0; i < inputs; ++i) sources.push_back({"Line" + std::to_string(i), i});
    for (std::int64_t i = 0; i < frontInputs; ++i)
        sources.push_back({"FrontLine" + std::to_string(i), firstFront + i});
    nodes.enumeration(
        {.name = "TriggerSource",
         .category = kAcquisition,
         .toolTip = "Where the selected trigger comes from",
         .movedBy = parametersOf("TriggerSource", {"TriggerSelector"}),
         .streamable = true},
        sources,
        {.read = [this, trigger] { return integer(trigger().source); },
         .write = [this, trigger](std::int64_t source) { setInteger(trigger().source, source); }});
    nodes.enumeration(
        {.name = "TriggerActivation",
         .category = kAcquisition,
         .toolTip = "The edge that counts",
         .movedBy = parametersOf("TriggerActivation", {"TriggerSelector"}),
         .streamable = true},
        {{.name = "RisingEdge", .value = constant("HIGH_ON_ZERO_HIGH")},
         {.name = "FallingEdge", .value = constant("HIGH_ON_ZERO_LOW")}},
        {.read = [this, trigger] { return integer(trigger().polarity); },
         .write = [this, trigger](std::int64_t edge) { setInteger(trigger().polarity, edge); }});
    nodes.command({.name = "TriggerSoftware",
                   .category = kAcquisition,
                   .toolTip = "A trigger of the image trigger's software source",
                   .movedBy = {"TriggerSelector"},
                   .available = startsPictures},
                  [this] { setInteger("FG_SENDSOFTWARETRIGGER", constant("FG_APPLY")); });
}

void RemoteDevice::describeColour(NodeMap& nodes) {
    nodes.enumeration({.name = "BalanceRatioSelector",
                       .category = kAnalog,
                       .toolTip = "The colour that BalanceRatio is about",
                       .selects = {"BalanceRatio"}},
                      kColours, keptEntry(balanceSelector_, kColours));
    const auto balance = [this] { return kBalances[static_cast<std::size_t>(balanceSelector_.load())]; };
    const auto balanceEnd = [this, balance](host::Value host::Range::*which) {
        return [this, balance, which] {
            return static_cast<double>(host::numberOf((*applet_.range(balance())).*which).value());
        };
    };
    nodes.real({.name = "BalanceRatio",
                .category = kAnalog,
                .toolTip = "Factor of the selected colour",
                .movedBy = parametersOf("BalanceRatio", {"BalanceRatioSelector"}),
                .streamable = true},
               {.read = [this, balance] { return real(balance()); },
                .write = [this, balance](double factor) { set(balance(), factor); },
                .minimum = balanceEnd(&host::Range::minimum),
                .maximum = balanceEnd(&host::Range::maximum)});

    nodes.enumeration({.name = "LUTSelector",
                       .category = kTables,
                       .toolTip = "The colour whose lookup table LUTValue is about",
                       .selects = {"LUTIndex", "LUTValue"}},
                      kColours, keptEntry(tableSelector_, kColours));
    const auto table = [this] { return kLookupTables[static_cast<std::size_t>(tableSelector_.load())]; };
    const std::int64_t last = applet_.parameter(kLookupTables[0]).elements - 1;
    nodes.integer({.name = "LUTIndex",
                   .category = kTables,
                   .toolTip = "The element of the table that LUTValue is about",
                   .selects = {"LUTValue"}},
                  kept(tableIndex_, last));
    const auto tableEnd = [this, table](host::Value host::Range::*which) {
        return [this, table, which] {
            return static_cast<std::int64_t>(host::numberOf((*applet_.range(table())).*which).value());
        };
    };
    nodes.integer({.name = "LUTValue",
                   .category = kTables,
                   .toolTip = "The selected element of the selected table",
                   .movedBy = parametersOf("LUTValue", {"LUTSelector", "LUTIndex", "FG_LUT_TYPE", "Gain",
                                                        "Gamma", "BlackLevel", "FG_PROCESSING_INVERT"}),
                   .locked = [this, table] { return isLocked(table()); },
                   .whyLocked = [this, table] { return whyLocked(table()); }},
                  {.read =
                       [this, table] {
                           const auto index = static_cast<std::uint32_t>(tableIndex_.load());
                           return std::int64_t{applet_.getElements(table(), index, 1).front()};
                       },
                   .write =
                       [this, table](std::int64_t value) {
                           const auto element =
                               host::valueLike(std::uint32_t{}, static_cast<long double>(value));
                           if (!element) throw Error(GC_ERR_INVALID_VALUE, "an element is not below 0");
                           setElements(table(), static_cast<std::uint32_t>(tableIndex_.load()),
                                       {std::get<std::uint32_t>(*element)});
                       },
                   .minimum = tableEnd(&host::Range::minimum),
                   .maximum = tableEnd(&host::Range::maximum),
                   .increment = [] { return 1; }});
}

// ---- what no real device has ----

void RemoteDevice::describeBoard(NodeMap& nodes) {
    constexpr std::int64_t lastInput = 11;
    nodes.enumeration(
        {.name = "BoardClock",
         .category = kBoard,
         .toolTip = "How the board's time passes: with the machine's, or from picture to picture "
                    "as fast as there are buffers",
         .custom = true},
        {{.name = "RealTime", .value = 0}, {.name = "AsFastAsPossible", .value = 1}},
        {.read = [this] { return clockMode_.load(); },
         .write =
             [this](std::int64_t mode) {
                 if (mode != 0 && mode != 1) throw Error(GC_ERR_INVALID_VALUE, "BoardClock is 0 or 1");
                 using virtualboard::ClockMode;
                 board().setClockMode(mode == 0 ? ClockMode::RealTime : ClockMode::AsFastAsPossible);
                 clockMode_ = mode;
             }});
    nodes.integer({.name = "BoardInputSelector",
                   .category = kBoard,
                   .toolTip = "An input of the board: 0 to 7, and 8 to 11 at the front",
                   .selects = {"BoardInputLevel"},
                   .custom = true},
                  kept(inputSelector_, lastInput));
    nodes.boolean({.name = "BoardInputLevel",
                   .category = kBoard,
                   .toolTip = "The level that drives the selected input",
                   .movedBy = {"BoardInputSelector"},
                   .custom = true},
                  {.read = [this] { return (integer("FG_DIGIO_INPUT") >> inputSelector_) & 1; },
                   .write =
                       [this](std::int64_t level) {
                           board().setInput(static_cast<unsigned>(inputSelector_.load()), level != 0);
                       }});
}

}  // namespace marovine::gentl
