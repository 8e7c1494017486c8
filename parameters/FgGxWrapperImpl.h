#pragma once

/// The acquisition applet of one board: its parameters, their rules, and its description.
///
/// An SDK parameter is set by the member `set_sdk_param_<NAME>_P0(value, onError)`: it checks the value,
/// keeps it in the parameter cache, writes what follows from it to the design, and narrows the ranges that
/// depend on it. A refused value or a failed write leaves the cache as it was; `onError` says whether its
/// code is thrown as an `int` (true), kept quiet (false) or stored. What a read computes is a member
/// `get_sdk_param_<NAME>_P0(destination)`; a null destination throws -2070. Which of them a parameter has
/// follows from its row (tables/topics/); those of rows that leave nothing to decide are defined with the
/// handlers. All of these rely on their caller to serialise calls on one instance.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/ErrorCodes.h"
#include "base/Locks.h"
#include "base/PropertiesFile.h"
#include "parameters/DesignAccess.h"
#include "parameters/DesignName.h"
#include "parameters/EventMaps.h"
#include "parameters/HandedOutTexts.h"
#include "parameters/ParameterCache.h"
#include "parameters/ParameterNames.h"
#include "parameters/ProcessedTables.h"
#include "parameters/Setting.h"
#include "runtime/FgGxWrapper.h"
#include "tables/DesignParameters.h"

namespace marovine {
enum class Route : std::uint8_t;
struct CachedNumber;
struct ParameterHandlers;
/// Longest text that a getter may write, without its terminator.
inline constexpr std::size_t kTextRoom = 655360;

/// Whether a block of a lookup table may have this value type, all of which are 32 bits wide.
constexpr bool isLookupTableType(std::int32_t type) {
    return type == FG_TYPE_INT32 || type == FG_TYPE_UINT32 || type == FG_TYPE_FIELD_INT;
}

/// The design file's name, as the runtime and `FG_HAP_FILE` know it.
inline constexpr const char* kHapFile = "Marovine.hap";
}  // namespace marovine

class FgGxWrapperImpl final : public FgGxWrapper {
 public:
    FgGxWrapperImpl();
    ~FgGxWrapperImpl() override;

    // ---- what the host calls (Dispatch.cpp, Enumeration.cpp, Identity.cpp, Configuration.cpp) ----

    tavr::tools::logging::Logger* getDefaultLogger() const override;
    bool loadConfig(Fg_ConfigFileParser& parser) override;
    bool saveConfig(Fg_ConfigFileParser& parser) override;
    int processChannelToDma(int process, int channel) override;
    int mapDmaToFormat(int dmaIndex) override;
    int setDmaAlignment(int dmaIndex, int alignment) override;
    int getDmaAlignment(int dmaIndex) override;
    void createUserParameters() override;
    int Fg_setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) override;
    int Fg_getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) override;
    int Fg_freeParameterString(int id, void* value, int dmaIndex, FgParamTypes type) override;
    int Fg_getParameterIdByName(const char* name) override;
    const char* Fg_getParameterName(int index) override;
    int Fg_getParameterId(int index) override;
    int Fg_getParameterCount() override;
    int Fg_saveConfig(Fg_Struct* inner, const char* fileName) override;
    int Fg_loadConfig(Fg_Struct* inner, const char* fileName) override;
    std::uint64_t Fg_getEventMask(const char* name) override;
    const char* Fg_getEventName(unsigned long mask) override;
    const char* getManufacturer() override;
    const char* getCameraType() override;
    const char* getCameraVersion() override;
    int getAppletID() override;

    // ---- start-up, in this order (InternalMaps.cpp, UserParameters.cpp, Initialisation.cpp) ----

    /// Builds the name, index and event maps and the pseudo-parameters of direct access.
    void initInternalMaps();
    /// Asks the inner handle for the id of every design parameter; unknown names are logged, nothing fails.
    void retrieveIds();
    /// Reads the design's debug points and sets the start values of the camera simulator. Never throws.
    void executeInitRoutines();
    /// Gives every parameter that has a default its default; a refused one is skipped. Never throws.
    void setDefaultValues();

    // ---- typed access without lock: throws the code ----

    void setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) NEEDS(lock_);
    void getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) NEEDS(lock_);
    /// The process of a DMA index; throws -2070 for an unknown one.
    int mapDmaToProcess(int dmaIndex) const;

    /// First node of a kind other than group, from `node` on through children and next nodes, with this id.
    static RegisterInfo* findRegisterInfoByParamId_P0(RegisterInfo* node, int id) {
        return marovine::findRegisterInfoByParamId(node, id);
    }

    // ---- setters and getters of the parameters (parameters/topics/), declared by their rows ----

#define DECLARE_ReadOnly(NAME, TYPE)
#define DECLARE_Setter(NAME, TYPE)                                                      \
    void set_sdk_param_##NAME##_P0(marovine::Argument<marovine::ValueType::TYPE> value, \
                                   marovine::OnError onError);
#define DECLARE_Unchanged DECLARE_Setter
#define DECLARE_Source DECLARE_Setter
#define DECLARE_Polarity DECLARE_Setter
#define DECLARE_Elements(NAME, TYPE)                                                               \
    void set_sdk_param_##NAME##_P0(const FieldParameterInt_s* element, marovine::OnError onError); \
    void set_sdk_param_##NAME##_P0(const FieldParameterAccess* block, marovine::OnError onError);
#define DECLARE_Getter(NAME, TYPE) \
    void get_sdk_param_##NAME##_P0(marovine::Result<marovine::ValueType::TYPE>* destination);
#define DECLARE_Cache(NAME, TYPE)
#define DECLARE_Applied(NAME, TYPE)
#define DECLARE_Design(NAME, TYPE)
#define DECLARE_Constant(NAME, TYPE)
#define DECLARE_Forwarded(NAME, TYPE)
#define DECLARE_InnerHandle(NAME, TYPE)
#define PARAMETER(NAME, ID, TYPE, SET, READ, ...) DECLARE_##SET(NAME, TYPE) DECLARE_##READ(NAME, TYPE)
#include "tables/SdkParameters.def"
#undef DECLARE_ReadOnly
#undef DECLARE_Setter
#undef DECLARE_Unchanged
#undef DECLARE_Source
#undef DECLARE_Polarity
#undef DECLARE_Elements
#undef DECLARE_Getter
#undef DECLARE_Cache
#undef DECLARE_Applied
#undef DECLARE_Design
#undef DECLARE_Constant
#undef DECLARE_Forwarded
#undef DECLARE_InnerHandle

    /// Reads a design parameter straight into a destination; -2070 for a null one, else the read's code.
    template <marovine::DesignParameter parameter, class T>
    void readDesign(T* destination) {
        requireDestination(destination);
        design_.read(parameter, destination);
    }

 private:
    // ---- shared by the topics ----

    /// The one way out to the design.
    const marovine::DesignAccess& design() const {
        return design_;
    }
    /// Throws -2070 when there is nowhere to put a result.
    static void requireDestination(const void* destination) {
        if (destination == nullptr) throw marovine::error::invalidArgument;
    }
    /// The whole setter of a parameter whose value the design takes unchanged.
    template <marovine::SdkIndex parameter, class T>
    void setUnchanged(T& cached, T value, marovine::OnError onError);
    /// Copies a text, cut to `kTextRoom` characters, into a buffer of that room; -2070 for a null one.
    static void copyText(const std::string& text, char* destination);
    /// Changes the access flags of a parameter's registry node.
    void setAccessFlags(int id, int flags);
    /// Changes the maximum of a parameter's registry node, which must be of the type's kind.
    void setMaximum(int id, std::uint32_t maximum);
    void setMaximum(int id, double maximum);
    /// The access flags of a parameter's registry node, 0 without node.
    int accessFlags(int id) const;

    // parameters/topics/TapGeometry.cpp
    /// Sets the sorter for a tap geometry and a window; throws -6000 for an unknown geometry or vantage point
    /// before anything is written. The third argument, the y offset and the height do not count.
    void setTapGeometry_P0(std::uint32_t geometry, std::uint32_t sensorWidth, std::uint32_t ignored,
                           std::uint32_t vantagePoint, std::uint32_t xOffset, std::uint32_t width,
                           std::uint32_t yOffset, std::uint32_t height);
    // parameters/topics/CameraWindow.cpp
    /// Columns that a window may reach: the sensor's when the line is mirrored, else what the design buffers.
    std::uint32_t horizontalLimit() const;
    /// What the cached x offset leaves for the width, and the cached width for the x offset.
    std::uint32_t widthLimit() const;
    std::uint32_t xOffsetLimit() const;
    /// Throw -6000 when the cached window does not fit.
    void checkHorizontal_P0() const;
    void checkVertical_P0() const;
    /// Throws -2031 when the cached camera format is none that the SDK knows.
    void requireKnownCameraFormat() const;
    void applyCachedTapGeometry();
    /// Tap geometry and Bayer phase of the cached window.
    void applyCachedGeometry();
    /// Trigger window and image height from a height, an offset and an image trigger mode; throws -6000 for
    /// an unknown mode before anything is written.
    void setTriggerHeightAndOffset_P0(std::uint32_t height, std::uint32_t yOffset, std::int32_t mode);
    /// The same from the cached height, y offset and image trigger mode.
    void applyCachedTriggerWindow();
    void update_dynamic_range_FG_SENSORWIDTH_P0();
    void update_dynamic_range_FG_WIDTH_P0();
    void update_dynamic_range_FG_HEIGHT_P0();
    void update_dynamic_range_FG_XOFFSET_P0();
    void update_dynamic_range_FG_YOFFSET_P0();
    // parameters/topics/ColourPath.cpp
    /// Gives the colour stages the phase of a Bayer pattern in the cached window and keeps the pattern as the
    /// effective one; throws -6000 for an unknown pattern.
    void updateBayerInit_P0(std::int32_t bayerInit, std::int32_t vantagePoint);
    // parameters/topics/SimulatorLimits.cpp
    bool inPixelFrequencyMode() const {
        return cache_.FG_CAMERASIMULATOR_SELECT_MODE == marovine::constant("FG_PIXEL_FREQUENCY");
    }
    /// Clock cycles of a line and pixels per second, read back from the design.
    std::uint32_t simulatorSequence() const;
    double simulatorPixelRate() const;
    /// Line rate and frame rate in Hz that a speed mode gives now; -2075 for a mode without formula.
    double getCamSimLinerate_P0(std::int32_t mode) const;
    double simulatorFrameRate(std::int32_t mode) const;
    /// Largest values that the cached speed mode allows now, in pixels, lines and Hz.
    std::uint32_t simulatorWidthLimit() const;
    std::uint32_t simulatorLineGapLimit() const;
    std::uint32_t simulatorHeightLimit() const;
    std::uint32_t simulatorFrameGapLimit() const;
    double simulatorLineRateLimit() const;
    double simulatorFrameRateLimit() const;
    void update_dynamic_range_FG_CAMERASIMULATOR_WIDTH_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_LINE_GAP_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_HEIGHT_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_FRAME_GAP_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_LINERATE_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_FRAMERATE_P0();
    // parameters/topics/CameraSimulator.cpp
    /// Make a size and its gap effective and write them; throw -6000 when they do not fit together.
    void setWidth_P0(std::uint32_t width, std::uint32_t gap);
    void setHeight_P0(std::uint32_t height, std::uint32_t gap);
    void writeSimulatorSequence(std::uint32_t sequence);
    /// Gives the cached speed mode its speed again.
    void reapplySimulatorSpeed();
    // parameters/topics/LookupTable.cpp
    /// Computes the tables from the processing parameters and writes them, while they are what fills them.
    void updateLutProcessing_P0();
    /// Reads the custom file, if one is named, and writes its tables: -2076 without the file, -5001 for one
    /// that is no table.
    void loadCustomTables();
    template <class Fill>
    void replaceTables(Fill&& fill);
    void setLutElement(marovine::LutChannel channel, const FieldParameterInt_s* element,
                       marovine::OnError onError);
    void setLutBlock(marovine::LutChannel channel, const FieldParameterAccess* block,
                     marovine::OnError onError);
    // parameters/topics/DebugInjection.cpp
    /// The selected debug point; -2031 when there is none of its number.
    const marovine::DebugEntry& debugEntry() const;
    bool debugEntryMonitors() const {
        return debugEntry().kind == marovine::DebugEntry::Kind::InjectMonitor;
    }
    /// Full name of a parameter of the selected debug point.
    marovine::DesignName debugName(const char* ending) const;
    /// Typed access by full name, looked up at each call; any failure is -2031.
    int requireId(const marovine::DesignName& name) const;
    void readByName(const marovine::DesignName& name, void* value, FgParamTypes type) const;
    void writeByName(const marovine::DesignName& name, const void* value, FgParamTypes type) const;
    std::uint32_t readDebug(const char* ending) const;
    void writeDebug(const char* ending, std::uint32_t value) const;
    /// A position or pixel value that only a monitor has; 0 at other debug points.
    void readMonitor(const char* ending, std::uint32_t* destination) const;
    void update_dynamic_range_FG_DEBUGOUTPIXEL_P0();
    // parameters/topics/StatusReadouts.cpp
    std::uint32_t bufferOverflow() const;
    /// Fill level of the buffer in percent: 100 while it overflows.
    std::uint32_t bufferFillLevel() const;
    std::uint32_t extendedCameraStatus() const;
    // parameters/topics/LineTrigger.cpp
    void update_dynamic_range_FG_LINEEXPOSURE_P0();
    void update_dynamic_range_FG_LINETRIGGERDELAY_P0();
    // parameters/topics/OutputMapping.cpp
    /// Multiplexer index and invert bit of an output; -2031 for a signal outside the mapping.
    static void getOutputMapping_P0(std::uint32_t* select, std::uint32_t* invert, std::int32_t signal,
                                    std::int32_t polarity);
    /// Multiplexer and inverter of a route, in this order.
    void writeRoute(marovine::Route route, std::int32_t source, std::int32_t polarity) const;
    /// Sets one of a route's two values, computing the design's from it and from the other in force.
    void setRouteSource(marovine::Route route, std::int32_t source, marovine::OnError onError);
    void setRoutePolarity(marovine::Route route, std::int32_t polarity, marovine::OnError onError);
    /// Source and polarity of a control line as one legacy selection.
    void setLegacyCc(marovine::Route line, std::int32_t& cached, std::int32_t value,
                     marovine::OnError onError);
    void getLegacyCc(marovine::Route line, std::int32_t* destination) const;

    // InternalMaps.cpp
    void recordScalarDesignParameters();
    void addRegisterNames();
    void addDesignNames();
    void buildEventMaps();
    // UserParameters.cpp
    void enterInRegistryMap(RegisterInfo* node);
    void addRegisterGroup();
    void addDesignGroup();
    // Initialisation.cpp
    /// A text of the design's list of debug points, cut to its room; -2031 when it cannot be read.
    std::string readDebugText(std::string_view name, std::size_t room) const;
    int readDebugEntryCount() const;
    void readDebugEntries();
    // parameters/Configuration.cpp
    void writeStoredValue(Fg_ConfigFileParser& parser, const marovine::SdkParameter& row, char* textRoom)
        NEEDS(lock_);
    // Dispatch.cpp
    int writeRegister(int number, const void* value) const NEEDS(lock_);
    int readRegister(int number, void* value) const NEEDS(lock_);
    /// The typed access; most failures are returned as their code, those from deep inside are thrown.
    int trySet(int id, const marovine::ParameterHandlers* handlers, const void* value, int dmaIndex,
               FgParamTypes type) NEEDS(lock_);
    int tryGet(int id, void* value, int dmaIndex, FgParamTypes type) NEEDS(lock_);
    /// The locked get of what is no number in the cache.
    int getOther(int id, void* value, int dmaIndex, FgParamTypes type);
    void giveCachedNumber(marovine::CachedNumber number, void* destination) const NEEDS(lock_);
    int unknownParameter(const char* verb, int id) const;
    template <class WriteText>
    void giveText(void* value, FgParamTypes type, WriteText&& writeText);
    void giveDescription(void* value, FgParamTypes type);
    void readLookupTable(const marovine::LookupTable& table, void* value, FgParamTypes type) const;

    mutable tavr::tools::logging::Logger* logger_ = nullptr;
    tavr::templates::platform::CriticalSection lock_;
    tavr::templates::platform::PropertiesFile properties_;
    std::string propertiesSection_;
    marovine::HandedOutTexts handedOutTexts_;
    std::unique_ptr<char[]> textBuffer_;
    std::array<int, marovine::designParameterCount> designIds_{};
    marovine::DesignAccess design_;
    marovine::ParameterCache cache_;
    marovine::SimulatorState simulator_;
    marovine::ProcessedTables processedTables_;
    std::int32_t effectiveBayerInit_ = 0;
    std::vector<marovine::DebugEntry> debugEntries_;
    marovine::ParameterNames names_;
    marovine::EventMaps events_;
};
