/// Camera interface, tap geometry and image window: what each setting writes, in order, and what it refuses.

#include <array>
#include <optional>

#include "tests/LoadedValue.h"

namespace marovine::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr const char* kPlainOrder = "[0] 0, 1, 2, 3, 4, 5, 6, 7, 8, 8";
constexpr const char* kNoMirror = "[0] 0, 0, 0, 0, 0, 0, 0, 0, 0, 0";

/// The sorter's writes; the defaults are those of one tap from the left.
struct Sorter {
    int tapWidth = 1024;
    int lineWidth = tapWidth;
    int translate = 0;
    int tapCount = 1;
    int dummyTaps = 0;
    const char* order = kPlainOrder;
    const char* mirror = kNoMirror;

    Writes writes() const {
        const std::string sorter = "Buffer_0_TapGeometrySorter_";
        return {{sorter + "SensorWidth", std::to_string(lineWidth)},
                {sorter + "TranslateVantagePoint_Value", std::to_string(translate)},
                {sorter + "TapWidth", std::to_string(tapWidth)},
                {sorter + "TapCount", std::to_string(tapCount)},
                {sorter + "DummyTaps", std::to_string(dummyTaps)},
                {sorter + "ParallelResort_4X2E_Enable_Value", "0"},
                {sorter + "TapOrder", order},
                {sorter + "ReferenceTapMirror_Field", mirror}};
    }
};

Writes bayer(const char* mode = "0", const char* phase = "2") {
    return {{"DeBayerEnhancedRAW_Mode_Mode_Value", mode},
            {"DeBayerRAW_Bayer_BayerInit", phase},
            {"WhiteBalance_White_BayerInit", "2"}};
}

Writes triggerWindow(const char* length, const char* offset, const char* height) {
    return {{"Trigger_Trigger_YOffset", "0"},
            {"Trigger_Trigger_YLength", length},
            {"Trigger_Trigger_YOffset", offset},
            {"ImageHeight_ImageHeight", height}};
}

class CameraWindowTest : public AppletTest {
 protected:
    /// Integers and enumerations alike cross as 32 bits.
    int set(std::string_view name, std::uint32_t value) { return applet.set(name, value); }
    std::uint32_t read(std::string_view name) { return applet.get<std::uint32_t>(name); }
    std::uint32_t maximum(std::string_view name) { return applet.node(name).value.uint32.maximum; }

    void arrange(std::initializer_list<std::pair<const char*, std::uint32_t>> settings) {
        for (const auto& [name, value] : settings) ASSERT_EQ(0, set(name, value)) << name;
        applet.takeWrites();
    }
};

// ---- writes ----

TEST_F(CameraWindowTest, WidthDrivesSorterPhaseAndBuffer) {
    EXPECT_EQ(0, set("FG_WIDTH", 2048));
    EXPECT_THAT(applet.takeWrites(),
                ElementsAre(DesignWrite{"Buffer_0_TapGeometrySorter_SensorWidth", "2048"},
                            DesignWrite{"Buffer_0_TapGeometrySorter_TranslateVantagePoint_Value", "0"},
                            DesignWrite{"Buffer_0_TapGeometrySorter_TapWidth", "2048"},
                            DesignWrite{"Buffer_0_TapGeometrySorter_TapCount", "1"},
                            DesignWrite{"Buffer_0_TapGeometrySorter_DummyTaps", "0"},
                            DesignWrite{"Buffer_0_TapGeometrySorter_ParallelResort_4X2E_Enable_Value", "0"},
                            DesignWrite{"Buffer_0_TapGeometrySorter_TapOrder", kPlainOrder},
                            DesignWrite{"Buffer_0_TapGeometrySorter_ReferenceTapMirror_Field", kNoMirror},
                            DesignWrite{"DeBayerEnhancedRAW_Mode_Mode_Value", "0"},
                            DesignWrite{"DeBayerRAW_Bayer_BayerInit", "2"},
                            DesignWrite{"WhiteBalance_White_BayerInit", "2"},
                            DesignWrite{"Buffer_0_DRAM_A_0_XLength", "2048"}));
    EXPECT_EQ(2048U, read("FG_WIDTH"));
    EXPECT_EQ(16384U - 2048U, maximum("FG_XOFFSET"));
}

TEST_F(CameraWindowTest, EachSettingWritesItsList) {
    const Writes window = joined({Sorter{}.writes(), bayer()});
    struct Case {
        const char* name;
        std::uint32_t value;
        Writes writes;
    };
    // Each case starts from what the ones above have left.
    const Case cases[] = {
        {"FG_CAMERA_LINK_CAMTYPE", 310, {{"Camera_FullMode", "1"}}},
        {"FG_CAMERA_LINK_CAMTYPE", 311, {{"Camera_FullMode", "3"}}},
        {"FG_CAMERA_LINK_CAMTYPE", 308, {{"Camera_FullMode", "0"}}},
        {"FG_USEDVAL", 0, {{"Camera_DvalMode", "0"}}},
        {"FG_USEDVAL", 1, {{"Camera_DvalMode", "1"}}},
        {"FG_CAMERA_LINK_CORE_RESET", 1, {{"Camera_CameraLinkCoreReset", "1"}}},
        {"FG_TIMEOUT", 2, {{"FG_TIMEOUT", "2"}}},
        {"FG_TIMEOUT", 2147483646, {{"FG_TIMEOUT", "2147483646"}}},
        {"FG_FORMAT", 2, {}},
        {"FG_SENSORWIDTH", 4096, window},
        {"FG_VANTAGEPOINT", 0, window},
        {"FG_HEIGHT", 1000,
         joined({window, {{"Buffer_0_DRAM_A_0_YLength", "1000"}}, triggerWindow("1000", "0", "1000")})},
        // The y offset is not bounded by the height.
        {"FG_YOFFSET", 16777214, joined({window, triggerWindow("1000", "16777214", "1000")})},
        {"FG_YOFFSET", 20, joined({window, triggerWindow("1000", "20", "1000")})},
        {"FG_XOFFSET", 16,
         joined({Sorter{.tapWidth = 1040}.writes(), bayer(), {{"Buffer_0_DRAM_A_0_XOffset", "16"}}})},
        {"FG_TAPGEOMETRY", 0x01A00000, Sorter{.tapWidth = 1040}.writes()},
    };
    for (const auto& [name, value, writes] : cases) {
        EXPECT_EQ(0, set(name, value)) << name;
        EXPECT_THAT(applet.takeWrites(), ElementsAreArray(writes)) << name << " = " << value;
        EXPECT_EQ(value, read(name)) << name;
    }
}

TEST_F(CameraWindowTest, SorterFollowsGeometryAndVantagePoint) {
    struct Case {
        const char* geometry;
        bool topRight;
        std::uint32_t sensorWidth;
        Sorter sorter;
    };
    const Case cases[] = {
        // One tap from the left ends with the window, whatever the sensor's width.
        {"FG_GEOMETRY_1X8", false, 4000, {.tapWidth = 1016}},
        {"FG_GEOMETRY_1X10", false, 4000, {.tapWidth = 1016}},
        {"FG_GEOMETRY_1X8",
         true,
         4001,
         {.tapWidth = 4001, .lineWidth = 4008, .translate = 1, .mirror = "[0] 1, 0, 0, 0, 0, 0, 0, 0, 0, 0"}},
        {"FG_GEOMETRY_4X2",
         false,
         4000,
         {.tapWidth = 1000, .lineWidth = 5000, .tapCount = 5, .dummyTaps = 1}},
        {"FG_GEOMETRY_4X2",
         true,
         4000,
         {1000, 5000, 1, 5, 1, "[0] 3, 2, 1, 0, 4, 5, 6, 7, 8, 8", "[0] 1, 1, 1, 1, 0, 0, 0, 0, 0, 0"}},
        {"FG_GEOMETRY_4X2E",
         false,
         4003,
         {1000, 5000, 0, 5, 1, kPlainOrder, "[0] 0, 0, 1, 1, 0, 0, 0, 1, 1, 0"}},
        {"FG_GEOMETRY_4X2E",
         true,
         4004,
         {1001, 5040, 1, 5, 1, "[0] 3, 2, 1, 0, 4, 5, 6, 7, 8, 8", "[0] 1, 1, 0, 0, 0, 0, 0, 1, 1, 0"}},
        {"FG_GEOMETRY_5X2", false, 4001, {.tapWidth = 800, .lineWidth = 4000, .tapCount = 5}},
        {"FG_GEOMETRY_8X",
         true,
         4000,
         {500, 5040, 1, 10, 1, "[0] 7, 6, 5, 4, 3, 2, 1, 0, 8, 8", "[0] 1, 1, 1, 1, 1, 1, 1, 1, 0, 0"}},
        {"FG_GEOMETRY_10X", false, 16384, {1638, 16400, 0, 10, 0, "[0] 0, 1, 2, 3, 4, 5, 6, 7, 8, 9"}},
        {"FG_GEOMETRY_10X",
         true,
         16384,
         {1638, 16400, 1, 10, 0, "[0] 9, 8, 7, 6, 5, 4, 3, 2, 1, 0", "[0] 1, 1, 1, 1, 1, 1, 1, 1, 1, 1"}},
    };
    arrange({{"FG_WIDTH", 1000}, {"FG_XOFFSET", 16}});
    for (const auto& [geometry, topRight, sensorWidth, sorter] : cases) {
        SCOPED_TRACE(std::string(geometry) + (topRight ? " top-right" : " top-left"));
        arrange({{"FG_SENSORWIDTH", sensorWidth}, {"FG_VANTAGEPOINT", topRight}});
        EXPECT_EQ(0, set("FG_TAPGEOMETRY", static_cast<std::uint32_t>(constantOf(geometry))));
        EXPECT_THAT(applet.takeWrites(), ElementsAreArray(sorter.writes()));
    }
}

TEST_F(CameraWindowTest, SingleSamplingHalvesTheTriggerWindowOnly) {
    arrange({{"FG_YOFFSET", 10}, {"FG_SAMPLING_RATE", 1}});
    EXPECT_EQ(0, set("FG_HEIGHT", 1002));
    EXPECT_THAT(applet.takeWrites(), ElementsAreArray(joined({Sorter{}.writes(),
                                                              bayer(),
                                                              {{"Buffer_0_DRAM_A_0_YLength", "1002"}},
                                                              triggerWindow("501", "5", "501")})));
}

TEST_F(CameraWindowTest, ImageTriggerModeDecidesTheTriggerLength) {
    struct Case {
        const char* mode;
        std::optional<const char*> length;
    };
    loadValue(applet, "FG_IMGTRIGGER_ASYNC_HEIGHT", "300");
    arrange({{"FG_SAMPLING_RATE", 1}});
    for (const auto& [mode, length] :
         {Case{"0", "50"}, Case{"2", "50"}, Case{"5", "50"}, Case{"6", "16777214"}, Case{"9", "16777214"},
          Case{"8", "300"}, Case{"7", std::nullopt}}) {
        SCOPED_TRACE(mode);
        arrange({{"FG_HEIGHT", 1000}});
        loadValue(applet, "FG_IMGTRIGGERMODE", mode);
        const int result = set("FG_HEIGHT", 100);
        auto writes = applet.takeWrites();
        ASSERT_LE(12U, writes.size());
        writes.erase(writes.begin(), writes.begin() + 12);  // sorter, phase and buffer
        if (length.has_value()) {
            EXPECT_EQ(0, result);
            EXPECT_THAT(writes, ElementsAreArray(triggerWindow(*length, "0", "50")));
        } else {
            EXPECT_EQ(error::outOfRange, result);
            EXPECT_THAT(writes, IsEmpty());
            EXPECT_EQ(1000U, read("FG_HEIGHT"));
        }
    }
}

// ---- refusals ----

TEST_F(CameraWindowTest, RefusesWithoutATrace) {
    struct Case {
        const char* name;
        std::uint32_t value;
        int code;
    };
    arrange({{"FG_WIDTH", 1024}, {"FG_XOFFSET", 8}, {"FG_YOFFSET", 8}});
    const Case cases[] = {
        {"FG_CAMERA_LINK_CAMTYPE", 309, error::outOfRange},
        {"FG_USEDVAL", 2, error::outOfRange},
        {"FG_CAMERA_LINK_CORE_RESET", 2, error::outOfRange},
        {"FG_TIMEOUT", 1, error::outOfRange},
        {"FG_TIMEOUT", 2147483647, error::outOfRange},
        {"FG_FORMAT", 1, error::outOfRange},
        {"FG_TAPGEOMETRY", 0, error::outOfRange},
        {"FG_VANTAGEPOINT", 2, error::outOfRange},
        {"FG_SENSORWIDTH", 7, error::outOfRange},
        {"FG_SENSORWIDTH", 16385, error::outOfRange},
        {"FG_WIDTH", 0, error::outOfRange},
        {"FG_WIDTH", 4, error::outOfRange},
        {"FG_WIDTH", 1004, error::wrongStep},
        {"FG_WIDTH", 16384, error::outOfRange},  // at x offset 8
        {"FG_WIDTH", 0xFFFFFFF8, error::outOfRange},
        {"FG_XOFFSET", 12, error::wrongStep},
        {"FG_XOFFSET", 15368, error::outOfRange},
        {"FG_XOFFSET", 0xFFFFFFF8, error::outOfRange},
        {"FG_HEIGHT", 2, error::outOfRange},
        {"FG_HEIGHT", 1001, error::wrongStep},
        {"FG_HEIGHT", 16777216, error::outOfRange},
        {"FG_YOFFSET", 3, error::wrongStep},
        {"FG_YOFFSET", 16777216, error::outOfRange},
    };
    for (const auto& [name, value, code] : cases) {
        SCOPED_TRACE(std::string(name) + " = " + std::to_string(value));
        const auto before = read(name);
        EXPECT_EQ(code, set(name, value));
        EXPECT_EQ(code, applet.lastError());
        EXPECT_EQ(before, read(name));
        EXPECT_THAT(applet.takeWrites(), IsEmpty());
    }
}

TEST_F(CameraWindowTest, WindowStaysWithinTheSensorWhenMirrored) {
    // From the left the window may pass the sensor's edge; mirroring such a window is refused afterwards.
    arrange({{"FG_SENSORWIDTH", 1024}, {"FG_WIDTH", 2048}});
    EXPECT_EQ(error::outOfRange, set("FG_VANTAGEPOINT", 1));
    EXPECT_EQ(0U, read("FG_VANTAGEPOINT"));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());

    arrange({{"FG_SENSORWIDTH", 2048}, {"FG_VANTAGEPOINT", 1}});
    EXPECT_EQ(2048U, maximum("FG_WIDTH"));
    EXPECT_EQ(0U, maximum("FG_XOFFSET"));
    EXPECT_EQ(16384U, maximum("FG_SENSORWIDTH"));
    EXPECT_EQ(0, set("FG_WIDTH", 2048));
    EXPECT_EQ(error::outOfRange, set("FG_XOFFSET", 8));
    applet.takeWrites();

    // A narrower sensor is stored before the window check and put back by it.
    EXPECT_EQ(error::outOfRange, set("FG_SENSORWIDTH", 2047));
    EXPECT_EQ(2048U, read("FG_SENSORWIDTH"));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
    EXPECT_EQ(0, set("FG_SENSORWIDTH", 2064));
    EXPECT_EQ(16U, maximum("FG_XOFFSET"));
    EXPECT_EQ(0, set("FG_XOFFSET", 16));
    EXPECT_EQ(2048U, maximum("FG_WIDTH"));
}

TEST_F(CameraWindowTest, WindowSettingsNarrowEachOther) {
    EXPECT_EQ(16777210U, OpenApplet(1).node("FG_YOFFSET").value.uint32.maximum) << "before any setting";
    EXPECT_EQ(16777214U, maximum("FG_YOFFSET"));
    EXPECT_EQ(0, set("FG_XOFFSET", 15360));
    EXPECT_EQ(1024U, maximum("FG_WIDTH"));
    EXPECT_EQ(0, set("FG_WIDTH", 8));
    EXPECT_EQ(16376U, maximum("FG_XOFFSET"));
    EXPECT_EQ(1024U, maximum("FG_WIDTH")) << "only others are narrowed";
}

TEST_F(CameraWindowTest, RefusesToWorkForAnUnknownCameraFormat) {
    // Formats that this applet does not offer but the SDK knows do no harm.
    loadValue(applet, "FG_CAMERA_LINK_CAMTYPE", "500");
    EXPECT_EQ(0, set("FG_WIDTH", 512));

    loadValue(applet, "FG_CAMERA_LINK_CAMTYPE", "309");
    const auto xOffsetMaximum = maximum("FG_XOFFSET");
    struct Case {
        const char* name;
        std::uint32_t value;
        std::size_t writes;  // the check comes first, or after the design has been written
    };
    for (const auto& [name, value, writes] :
         {Case{"FG_SENSORWIDTH", 2048, 0}, Case{"FG_SENSORWIDTH", 0, 0}, Case{"FG_VANTAGEPOINT", 1, 11},
          Case{"FG_WIDTH", 1000, 12}, Case{"FG_XOFFSET", 8, 12}}) {
        SCOPED_TRACE(name);
        const auto before = read(name);
        EXPECT_EQ(error::internalFailure, set(name, value));
        EXPECT_EQ(before, read(name));
        EXPECT_EQ(writes, applet.takeWrites().size());
    }
    EXPECT_EQ(xOffsetMaximum, maximum("FG_XOFFSET"));
    EXPECT_EQ(0, set("FG_HEIGHT", 512));
}

}  // namespace
}  // namespace marovine::test
