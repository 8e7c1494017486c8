/// The read-outs: single design values, and what is combined from several.

#include <array>

#include "tests/AppletFixture.h"

namespace marovine::test {
namespace {

using virtualboard::Value;

constexpr int kRefusal = -777;
constexpr const char* kOverflow = "Device1_Process0_Overflow_OverflowOccurred";
constexpr const char* kFillLevel = "Device1_Process0_Buffer_0_DRAM_A_0_FillLevel";

using StatusTest = AppletTest;

TEST_F(StatusTest, GivesDesignValuesUnchanged) {
    struct Case {
        const char* name;
        const char* designName;  // after "Device1_Process0_"
        Value value;
    };
    const Case cases[] = {
        {"FG_SYSTEMMONITOR_FPGA_TEMPERATURE", "BoardStatus_FpgaTemperature", 61.25},
        {"FG_SYSTEMMONITOR_FPGA_VCC_INT", "BoardStatus_FpgaVccInt", 0.9},
        {"FG_SYSTEMMONITOR_FPGA_VCC_AUX", "BoardStatus_FpgaVccAux", 1.7},
        {"FG_SYSTEMMONITOR_FPGA_VCC_BRAM", "BoardStatus_FpgaVccBram", 0.8},
        {"FG_SYSTEMMONITOR_CURRENT_LINK_WIDTH", "BoardStatus_PcieCurrentLinkWidth", 8u},
        {"FG_SYSTEMMONITOR_CURRENT_LINK_SPEED", "BoardStatus_PcieCurrentLinkSpeed", 2.5},
        {"FG_SYSTEMMONITOR_PCIE_LINK_GEN2_CAPABLE", "BoardStatus_PcieLinkGen2Capable", 0u},
        {"FG_SYSTEMMONITOR_PCIE_LINK_PARTNER_GEN2_CAPABLE", "BoardStatus_PcieLinkPartnerGen2Capable", 0u},
        {"FG_SYSTEMMONITOR_PCIE_TRAINED_PAYLOAD_SIZE", "BoardStatus_PcieTrainedPayloadSize", 2u},
        {"FG_SYSTEMMONITOR_EXTENSION_CONNECTOR_PRESENT", "BoardStatus_ExtensionConnectorPresent", 0u},
        {"FG_SYSTEMMONITOR_POCL_STATE_PORT_A", "BoardStatus_PoCLStatePortA", 3u},
        {"FG_SYSTEMMONITOR_POCL_STATE_PORT_B", "BoardStatus_PoCLStatePortB", 8u},
        {"FG_SYSTEMMONITOR_FPGA_DNA", "BoardStatus_FpgaDNA", std::uint64_t{0x123456789ABCDEF}},
        {"FG_CAMERA_LINK_PIXEL_CLOCK_X", "Camera_PixelClockX", 40u},
        {"FG_CAMERA_LINK_PIXEL_CLOCK_Y", "Camera_PixelClockY", 50u},
        {"FG_CAMERA_LINK_PIXEL_CLOCK_Z", "Camera_PixelClockZ", 60u},
        {"FG_OVERFLOW", "Overflow_OverflowOccurred", 1u},
        {"FG_APPLET_ID", "AppletProperties_AppletUid", "some-id"},
        {"FG_APPLET_BUILD_TIME", "AppletProperties_BuildTime", "some day"},
    };
    for (const auto& [name, designName, value] : cases) {
        SCOPED_TRACE(name);
        const std::string full = std::string("Device1_Process0_") + designName;
        applet.board().force(full, value);
        std::visit(
            [&, what = name]<class T>(const T& expected) {
                if constexpr (std::is_same_v<T, std::string>) {
                    EXPECT_EQ(expected, applet.getText(what));
                } else if constexpr (std::is_arithmetic_v<T>) {
                    EXPECT_EQ(expected, applet.get<T>(what));
                }
            },
            value);
        applet.board().refuseReads(full, kRefusal);
        std::array<char, 64> anything{};
        EXPECT_EQ(kRefusal, Fg_getParameterWithType(applet.record(), OpenApplet::idOf(name), anything.data(),
                                                    0, FG_TYPE_TEXT));
        EXPECT_EQ(error::notAllowed, applet.set(name, 1));
    }
}

TEST_F(StatusTest, GivesConstants) {
    EXPECT_EQ(2u, applet.get<std::uint32_t>("FG_APPLET_VERSION"));
    EXPECT_EQ(1u, applet.get<std::uint32_t>("FG_APPLET_REVISION"));
}

TEST_F(StatusTest, InvertsAlternativeBoardDetection) {
    constexpr const char* design = "Device1_Process0_BoardStatus_AlternativeBoardDetection";
    const auto read = [&](std::uint32_t inDesign, std::int32_t& value) {
        applet.board().force(design, inDesign);
        return Fg_getParameterWithType(applet.record(), OpenApplet::idOf("FG_ALTERNATIVE_BOARD_DETECTION"),
                                       &value, 0, FG_TYPE_INT32);
    };
    std::int32_t value = 7;
    EXPECT_EQ(0, read(0, value));
    EXPECT_EQ(constantOf("FG_ON"), value);
    EXPECT_EQ(0, read(1, value));
    EXPECT_EQ(constantOf("FG_OFF"), value);
    EXPECT_EQ(error::internalFailure, read(2, value));
    EXPECT_EQ(constantOf("FG_OFF"), value);
}

TEST_F(StatusTest, CombinesFillLevelOverflowAndCamera) {
    struct Case {
        std::uint32_t overflow, fillLevel, camera;
        const char* source;
        std::uint32_t expectedFill, expectedStatus, expectedExtended;
    };
    constexpr const char* camera = "FG_CAMPORT";
    constexpr const char* simulator = "FG_CAMERASIMULATOR";
    const Case cases[] = {
        {0, 0, 0x00, camera, 0, 0, 0x00},
        {0, 24, 0x01, camera, 24, 1, 0x01},
        {0, 25, 0x1F, camera, 25, 1, 0x5F},
        {0, 49, 0x00, simulator, 49, 1, 0x41},
        {0, 50, 0x06, simulator, 50, 1, 0x87},
        {0, 74, 0x00, camera, 74, 0, 0x80},
        {0, 75, 0x00, camera, 75, 0, 0xC0},
        {1, 0, 0x00, camera, 100, 0, 0xE0},
        // The board's own bits 5 to 7 do not count.
        {0, 0, 0xFE, camera, 0, 0, 0x1E},
    };
    for (const auto& [overflow, fillLevel, status, source, expectedFill, expectedStatus, expectedExtended] :
         cases) {
        SCOPED_TRACE(fillLevel);
        applet.board().force(kOverflow, overflow);
        applet.board().force(kFillLevel, fillLevel);
        applet.board().force("FG_CAMSTATUS_EXTENDED", status);
        EXPECT_EQ(0, applet.set("FG_CAMERASIMULATOR_ENABLE", constantOf(source)));
        EXPECT_EQ(expectedFill, applet.get<std::uint32_t>("FG_FILLLEVEL"));
        EXPECT_EQ(expectedStatus, applet.get<std::uint32_t>("FG_CAMSTATUS"));
        EXPECT_EQ(expectedExtended, applet.get<std::uint32_t>("FG_CAMSTATUS_EXTENDED"));
    }
}

TEST_F(StatusTest, FailsWithTheCodeOfAnyRead) {
    const auto read = [&](const char* name) {
        std::uint32_t value = 0;
        return Fg_getParameterWithType(applet.record(), OpenApplet::idOf(name), &value, 0, FG_TYPE_UINT32);
    };
    // The camera status makes four reads: overflow, fill level, overflow again, the board's own status.
    for (const char* name : {"FG_CAMSTATUS", "FG_CAMSTATUS_EXTENDED"}) {
        for (unsigned n = 1; n <= 4; ++n) {
            applet.board().refuseNthRead(n, kRefusal);
            EXPECT_EQ(kRefusal, read(name)) << name << ", read " << n;
        }
        applet.board().refuseNthRead(5, kRefusal);
        EXPECT_EQ(0, read(name));
        applet.board().clearFaults();
    }
    applet.board().refuseReads(kFillLevel, kRefusal);
    EXPECT_EQ(kRefusal, read("FG_FILLLEVEL"));
    applet.board().force(kOverflow, 1u);
    EXPECT_EQ(0, read("FG_FILLLEVEL")) << "an overflow needs no fill level";
}

TEST_F(StatusTest, RefusesANullDestinationBeforeAnyRead) {
    applet.board().refuseNthRead(1, kRefusal);
    for (const char* name : {"FG_APPLET_ID", "FG_CAMSTATUS", "FG_FILLLEVEL", "FG_OVERFLOW"})
        EXPECT_EQ(error::invalidArgument, Fg_getParameterWithType(applet.record(), OpenApplet::idOf(name),
                                                                  nullptr, 0, FG_TYPE_UINT32));
}

}  // namespace
}  // namespace marovine::test
