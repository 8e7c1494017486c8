/// Image trigger, flash and software trigger.

#include <array>

#include "tests/SettingChecks.h"

namespace marovine::test {
namespace {

constexpr int kFreeRun = 0;
constexpr int kAsync = 2;
constexpr int kGated = 5;
constexpr int kGatedMultiFrame = 6;
constexpr int kAsyncMultiFrame = 8;
constexpr int kFvalMultiFrame = 9;
constexpr int kSingleSampling = 1;

/// The trigger window's writes, as lengths and offset in lines.
Writes windowWrites(const std::string& length, const std::string& offset, const std::string& height) {
    return {{"Trigger_Trigger_YOffset", "0"},
            {"Trigger_Trigger_YLength", length},
            {"Trigger_Trigger_YOffset", offset},
            {"ImageHeight_ImageHeight", height}};
}

Writes modeWrites(const std::string& fval, const std::string& design, const std::string& maxGated) {
    return {{"Camera_FvalMode", "0"},
            {"Trigger_CameraFVALMode_SelectSource", fval},
            {"Trigger_Trigger_ImgTriggerMode", design},
            {"Trigger_Trigger_MaxGatedHeight", maxGated}};
}

class ImageTrigger : public AppletTest {
 protected:
    int access(std::string_view name) { return applet.node(name).accessFlags; }
    /// Sets what must succeed, and takes its writes away.
    template <class T>
    void given(std::string_view name, T value) {
        ASSERT_EQ(0, applet.set(name, value)) << name;
        applet.takeWrites();
    }
};

TEST_F(ImageTrigger, WritesWhatFollowsFromEachSettingAndRestoresItWhenAWriteFails) {
    const std::vector<Setting> settings{
        {"FG_IMGTRIGGERON", 0, {{"Trigger_Trigger_ImgTriggerEnable", "0"}}},
        {"FG_IMGTRIGGERON", 1, {{"Trigger_Trigger_ImgTriggerEnable", "1"}}},
        {"FG_FLASHON", 0, {{"Trigger_Trigger_FlashEnable", "0"}}},
        {"FG_FLASHON", 1, {{"Trigger_Trigger_FlashEnable", "1"}}},
        {"FG_IMGTRIGGERINPOLARITY", 1, {{"Trigger_Trigger_ImgTrgInPolarity", "1"}}},
        {"FG_IMGTRIGGERINPOLARITY", 0, {{"Trigger_Trigger_ImgTrgInPolarity", "0"}}},
        {"FG_IMGTRIGGERGATEDELAY", 65535U, {{"Trigger_Trigger_ImgTrgDelay", "65535"}}},
        {"FG_IMGTRIGGERGATEDELAY", 0U, {{"Trigger_Trigger_ImgTrgDelay", "0"}}},
        {"FG_STROBEPULSEDELAY", 65535U, {{"Trigger_Trigger_FlashDelay", "65535"}}},
        {"FG_STROBEPULSEDELAY", 0U, {{"Trigger_Trigger_FlashDelay", "0"}}},
        {"FG_FLASH_POLARITY", 0, {{"Trigger_Trigger_FlashPolarity", "1"}}},
        {"FG_FLASH_POLARITY", 1, {{"Trigger_Trigger_FlashPolarity", "0"}}},
        {"FG_SETSOFTWARETRIGGER", 1, {{"Trigger_Trigger_SoftwareTrgInput", "1"}}},
        {"FG_SETSOFTWARETRIGGER", 0, {{"Trigger_Trigger_SoftwareTrgInput", "0"}}},
        // Every call sends a pulse, whatever was set before.
        {"FG_SENDSOFTWARETRIGGER", 1, {{"Trigger_Trigger_SoftwareTrgPulse", "1"}}},
        {"FG_SENDSOFTWARETRIGGER", 1, {{"Trigger_Trigger_SoftwareTrgPulse", "1"}}},
        // The prescaler follows the line trigger's debouncing time only.
        {"FG_IMGTRIGGERDEBOUNCING", 0.008, {{"Trigger_Trigger_ImgTrgDebouncingTime", "0.008"}}},
        {"FG_IMGTRIGGERDEBOUNCING", 30.0, {{"Trigger_Trigger_ImgTrgDebouncingTime", "30"}}},
        // Taken note of, for the one mode that uses it.
        {"FG_IMGTRIGGER_ASYNC_HEIGHT", 4U, {}},
        {"FG_IMGTRIGGER_ASYNC_HEIGHT", 16777216U, {}},
    };
    for (const auto& setting : settings) expectSetting(applet, setting);
}

TEST_F(ImageTrigger, RefusesWhatIsNotAllowedBeforeAnythingChanges) {
    for (const auto* name : {"FG_IMGTRIGGERON", "FG_FLASHON", "FG_IMGTRIGGERINPOLARITY", "FG_FLASH_POLARITY",
                             "FG_SETSOFTWARETRIGGER"})
        for (const int value : {-1, 2}) expectRefused(applet, name, value);
    for (const int value : {0, 2}) expectRefused(applet, "FG_SENDSOFTWARETRIGGER", value);
    for (const int value : {-1, 1, 3, 4, 7, 10}) expectRefused(applet, "FG_IMGTRIGGERMODE", value);
    for (const int value : {-2, 8, 15, 20}) expectRefused(applet, "FG_IMGTRIGGERINSRC", value);
    for (const auto* name : {"FG_IMGTRIGGERGATEDELAY", "FG_STROBEPULSEDELAY"})
        expectRefused(applet, name, 65536U);
    for (const std::uint32_t value : {3U, 16777217U})
        expectRefused(applet, "FG_IMGTRIGGER_ASYNC_HEIGHT", value);
    for (const double value : {0.0079, 30.008, kNotANumber})
        expectRefused(applet, "FG_IMGTRIGGERDEBOUNCING", value);
}

TEST_F(ImageTrigger, SelectsTheInputOfEachSource) {
    for (int k = 0; k < 12; ++k)
        expectSetting(applet, {"FG_IMGTRIGGERINSRC",
                               k < 8 ? k : 16 + (k - 8),
                               {{"Trigger_Trigger_ImgTrgInSource", "2"},
                                {"Trigger_InputSignal_ImgTrgInSource_Input_Select", std::to_string(k)}}});
    expectSetting(applet, {"FG_IMGTRIGGERINSRC",
                           -1,
                           {{"Trigger_Trigger_ImgTrgInSource", "4"},
                            {"Trigger_InputSignal_ImgTrgInSource_Input_Select", "0"}}});
}

// The mode changes the flags before its first write: they stay when a write fails, the mode does not.
TEST_F(ImageTrigger, ModeDecidesAccessDesignModeAndLength) {
    struct Case {
        int mode;
        int inputFlags;
        int heightFlags;
        const char* fval;
        const char* design;
        const char* maxGated;
        const char* length;
    };
    const auto cases = std::to_array<Case>({{kAsync, 7, 1, "0", "1", "0", "1000"},
                                            {kFvalMultiFrame, 1, 1, "1", "0", "0", "16777214"},
                                            {kAsyncMultiFrame, 7, 7, "0", "1", "0", "77"},
                                            {kGated, 7, 1, "0", "2", "0", "1000"},
                                            {kFreeRun, 1, 1, "0", "0", "0", "1000"},
                                            {kGatedMultiFrame, 7, 1, "0", "2", "1", "16777214"}});
    given("FG_HEIGHT", 1000U);
    given("FG_YOFFSET", 10U);
    given("FG_IMGTRIGGER_ASYNC_HEIGHT", 77U);
    for (const auto& row : cases) {
        SCOPED_TRACE(row.mode);
        const auto expectFlags = [&] {
            for (const auto* name : {"FG_IMGTRIGGERINSRC", "FG_IMGTRIGGERINPOLARITY",
                                     "FG_IMGTRIGGERGATEDELAY", "FG_IMGTRIGGERDEBOUNCING"})
                EXPECT_EQ(row.inputFlags, access(name)) << name;
            EXPECT_EQ(row.heightFlags, access("FG_IMGTRIGGER_ASYNC_HEIGHT"));
        };
        applet.board().refuseNthWrite(1, kInjected);
        EXPECT_EQ(kInjected, applet.set("FG_IMGTRIGGERMODE", row.mode));
        expectFlags();
        applet.takeWrites();

        expectSetting(applet, {"FG_IMGTRIGGERMODE", row.mode,
                               joined({modeWrites(row.fval, row.design, row.maxGated),
                                       windowWrites(row.length, "10", "1000")})});
        expectFlags();
    }
}

TEST_F(ImageTrigger, SingleSamplingHalvesTheWindowButNotTheMultiBufferHeight) {
    given("FG_HEIGHT", 1000U);
    given("FG_YOFFSET", 10U);
    given("FG_SAMPLING_RATE", kSingleSampling);
    given("FG_IMGTRIGGER_ASYNC_HEIGHT", 78U);
    expectSetting(applet, {"FG_IMGTRIGGERMODE", kAsync,
                           joined({modeWrites("0", "1", "0"), windowWrites("500", "5", "500")})});
    expectSetting(applet, {"FG_IMGTRIGGERMODE", kAsyncMultiFrame,
                           joined({modeWrites("0", "1", "0"), windowWrites("78", "5", "500")})});

    // Set in its mode, the height takes the offset as it is.
    expectSetting(applet, {"FG_IMGTRIGGER_ASYNC_HEIGHT",
                           16777216U,
                           {{"Trigger_Trigger_YOffset", "0"},
                            {"Trigger_Trigger_YLength", "16777216"},
                            {"Trigger_Trigger_YOffset", "10"}}});
}

TEST_F(ImageTrigger, AFailureInsideTheWindowLeavesTheOffsetAway) {
    given("FG_YOFFSET", 10U);
    applet.board().refuseNthWrite(6, kInjected);
    EXPECT_EQ(kInjected, applet.set("FG_IMGTRIGGERMODE", kGated));
    EXPECT_EQ(kFreeRun, applet.get<int>("FG_IMGTRIGGERMODE"));
    EXPECT_EQ(virtualboard::Value(0U), applet.board().value("Device1_Process0_Trigger_Trigger_YOffset"));
    EXPECT_EQ(virtualboard::Value(2U),
              applet.board().value("Device1_Process0_Trigger_Trigger_ImgTriggerMode"));
}

TEST_F(ImageTrigger, BusyFlagIsReadFromTheDesignAndCannotBeSet) {
    for (const int value : {1, 0})
        expectReadOut(applet, "FG_IMGTRIGGER_IS_BUSY", "Device1_Process0_Trigger_Trigger_ImgTrgIsBusy",
                      value);
    EXPECT_EQ(error::notAllowed, applet.set("FG_IMGTRIGGER_IS_BUSY", 1));
}

}  // namespace
}  // namespace marovine::test
