/// The frame of the applet: opening, enumeration, the description tree and the class behind the exports.

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>

#include "marovine/BoardCodes.h"
#include "marovine/OutsideRuntimes.h"
#include "runtime/FgGxWrapper.h"
#include "tables/Catalogue.h"
#include "tables/EventTable.h"
#include "tests/AppletFixture.h"

namespace marovine::test {
namespace {

using testing::ElementsAre;

// ---- opening and ending ----

TEST(Opening, WorksWithoutAnErrorLocationAndEndsOnce) {
    GXdevice* board = virtualboard::insertBoard();
    Fg_Struct record{Std_entry(board, nullptr, 0)};
    ASSERT_NE(nullptr, record.instance);
    EXPECT_EQ(0, Fg_FreeGrabber(&record));
    EXPECT_EQ(nullptr, record.instance);
    EXPECT_EQ(error::invalidHandle, Fg_FreeGrabber(&record));
    EXPECT_EQ(error::invalidHandle, Fg_FreeGrabber(nullptr));
    virtualboard::removeBoard(board);
}

TEST(Opening, LeavesNothingBehindWhenItEnds) {
    fpga_design* design = nullptr;
    {
        const OpenApplet applet(1);
        EXPECT_EQ(0, Info(4160, 0, 0, &design, nullptr));
        EXPECT_LT(0, HapGetNrOfRegister(design));
    }
    EXPECT_EQ(0, HapGetNrOfRegister(design)) << "the design is unloaded";
    EXPECT_EQ(nullptr, dlopen("libfglib5.so", RTLD_NOW | RTLD_NOLOAD)) << "so is the runtime";
}

TEST(Opening, ReportsWhyItFailed) {
    struct Case {
        void (*arrange)(virtualboard::Control&);
        int code;
    };
    const auto cases = std::to_array<Case>({
        {[](virtualboard::Control& board) { board.refuseDesign(true); }, error::designNotLoaded},
        {[](virtualboard::Control& board) { board.refuseHandle(true, -77); }, -77},
        // A runtime that opens nothing and reports no error must not look like success.
        {[](virtualboard::Control& board) { board.refuseHandle(true, 0); }, error::designNotLoaded},
    });
    for (const auto& [arrange, code] : cases) {
        GXdevice* board = virtualboard::insertBoard();
        virtualboard::Control control(board);
        arrange(control);
        int result = 1;
        EXPECT_EQ(nullptr, Std_entry(board, &result, 0));
        EXPECT_EQ(code, result);
        control.clearOpeningFaults();
        virtualboard::removeBoard(board);
    }
}

TEST(Opening, TakesTheExternalDesignWhenForced) {
    // The build leaves the same image beside the library; the design runtime resolves the plain name.
    const Environment force("__TAVR_FORCE_EXTERNAL_HAP", "");
    OpenApplet applet;
    EXPECT_EQ(1024u, applet.get<std::uint32_t>("FG_WIDTH"));
}

TEST(Opening, SurvivesADesignWithoutSomeParametersAndEvents) {
    GXdevice* board = virtualboard::insertBoard();
    virtualboard::Control control(board);
    control.hide("Device1_Process0_Camera_DvalMode");
    control.hide("Device1_Process0_Overflow_Overflow");
    int result = 1;
    Fg_Struct record{Std_entry(board, &result, 0)};
    ASSERT_EQ(0, result);
    const std::int32_t no = constantOf("FG_NO");
    EXPECT_GT(0, Fg_setParameterWithType(&record, OpenApplet::idOf("FG_USEDVAL"), &no, 0, FG_TYPE_INT32));
    EXPECT_EQ(0u, Fg_getEventMask(&record, "FG_OVERFLOW_CAM0"));
    EXPECT_EQ(error::invalidArgument, Fg_getLastErrorNumber(&record));
    EXPECT_NE(0u, Fg_getEventMask(&record, "FG_TRIGGER_INPUT0_RISING"));
    Fg_FreeGrabber(&record);
    control.clearOpeningFaults();
    virtualboard::removeBoard(board);
}

// ---- dead handles ----

TEST(Exports, AnswerForADeadHandleWithoutTouchingAnything) {
    Fg_Struct dead{};
    for (Fg_Struct* record : {static_cast<Fg_Struct*>(nullptr), &dead}) {
        std::uint32_t value = 7;
        EXPECT_EQ(error::invalidHandle, Fg_setParameterWithType(record, 100, &value, 0, FG_TYPE_UINT32));
        EXPECT_EQ(error::invalidHandle, Fg_getParameterWithType(record, 100, &value, 0, FG_TYPE_UINT32));
        EXPECT_EQ(error::invalidHandle,
                  Fg_freeParameterStringWithType(record, 100, &value, 0, FG_TYPE_TEXT_POINTER));
        EXPECT_EQ(error::invalidHandle, Fg_getNrOfParameter(record));
        EXPECT_EQ(nullptr, Fg_getParameterName(record, 0));
        EXPECT_EQ(error::invalidHandle, Fg_getParameterId(record, 0));
        EXPECT_EQ(error::invalidHandle, Fg_getParameterIdByName(record, "FG_WIDTH"));
        EXPECT_EQ(nullptr, Fg_getParameterInfo(record, 0));
        EXPECT_EQ(error::invalidHandle, Fg_getParameterInfoXML(record, 0, nullptr, nullptr));
        EXPECT_EQ(error::invalidHandle, Fg_saveConfig(record, "x.mcf"));
        EXPECT_EQ(error::invalidHandle, Fg_loadConfig(record, "x.mcf"));
        EXPECT_EQ(error::invalidHandle, Fg_getLastErrorNumber(record));
        EXPECT_EQ(0u, Fg_getEventMask(record, "FG_OVERFLOW_CAM0"));
        EXPECT_EQ(nullptr, Fg_getEventName(record, 1));
        EXPECT_EQ(error::invalidHandle, Fg_getAppletId(record, nullptr));
        EXPECT_EQ(error::invalidHandle, Fg_getStatusEx(record, 0, 0, 0, nullptr));
        EXPECT_EQ(error::invalidHandle, Fg_AcquireEx(record, 0, 1, 0, nullptr));
        EXPECT_EQ(error::invalidHandle, Fg_stopAcquireEx(record, 0, nullptr, 0));
        EXPECT_EQ(error::invalidHandle, Fg_getLastPicNumberEx(record, 0, nullptr));
        EXPECT_EQ(error::invalidHandle, Fg_getLastPicNumberBlockingEx(record, 1, 0, 1, nullptr));
        EXPECT_EQ(nullptr, Fg_AllocShading(record, 0, 0));
        EXPECT_EQ(error::invalidHandle, Shad_GetMaxLine(record, nullptr));
        EXPECT_EQ(7u, value);
    }
}

TEST_F(AppletTest, OffersNoShading) {
    EXPECT_EQ(nullptr, Fg_AllocShading(applet.record(), 0, 0));
    EXPECT_EQ(error::outOfMemory, applet.lastError());
    EXPECT_EQ(error::notSupported, Fg_FreeShading(applet.record(), nullptr));
    EXPECT_EQ(error::notSupported, Shad_SetSubValueLine(applet.record(), nullptr, 0, 0, 0));
    EXPECT_EQ(error::notSupported, Shad_SetMultValueLine(applet.record(), nullptr, 0, 0, 0));
    EXPECT_EQ(error::notSupported, Shad_SetFixedPatternNoiseLine(applet.record(), nullptr, 0, 0, 0));
    EXPECT_EQ(error::notSupported, Shad_GetMaxLine(applet.record(), nullptr));
    EXPECT_EQ(error::notSupported, Shad_GetAccess(applet.record(), nullptr));
    EXPECT_EQ(error::notSupported, Shad_FreeAccess(applet.record(), nullptr));
    EXPECT_EQ(error::notSupported, Shad_WriteActLine(applet.record(), nullptr, 0));
    EXPECT_EQ(error::notSupported, applet.lastError());
}

// ---- enumeration ----

TEST_F(AppletTest, ListsItsParametersInOrder) {
    ASSERT_EQ(kListed, Fg_getNrOfParameter(applet.record()));
    for (int index = 0; index < kListed; ++index) {
        const char* name = Fg_getParameterName(applet.record(), index);
        ASSERT_NE(nullptr, name);
        EXPECT_EQ(Fg_getParameterIdByName(applet.record(), name), Fg_getParameterId(applet.record(), index));
    }
    EXPECT_STREQ("FG_TIMEOUT", Fg_getParameterName(applet.record(), 0));
    EXPECT_EQ(600, Fg_getParameterId(applet.record(), 0));
    EXPECT_STREQ("FG_CUSTOM_SIGNAL_EVENT_1_POLARITY", Fg_getParameterName(applet.record(), kListed - 1));
    EXPECT_EQ(200443, Fg_getParameterId(applet.record(), kListed - 1));
    for (const int code : {error::invalidArgument, 0}) {  // of the last search
        EXPECT_EQ(error::invalidArgument, setById(applet, 12345, 1));
        Fg_getParameterIdByName(applet.record(), code == 0 ? "FG_LINEPERIODE" : "FG_NOTHING");
        EXPECT_EQ(code, applet.lastError());
    }
    EXPECT_EQ(96, Fg_getParameterIdByName(applet.record(), "FG_LINEPERIODE"));
}

TEST_F(AppletTest, FindsNothingUnderUnknownNamesAndIndices) {
    for (const char* name :
         {"fg_lineperiode", "FG_PARAM_DESCR", "Device1_Process0_Camera_DvalMode", "", "FG_WIDTH "}) {
        EXPECT_EQ(error::invalidArgument, Fg_getParameterIdByName(applet.record(), name)) << name;
        EXPECT_EQ(error::invalidArgument, applet.lastError());
    }
    EXPECT_EQ(error::invalidArgument, Fg_getParameterIdByName(applet.record(), nullptr));
    for (const int index : {-1, kListed, 1 << 30}) {
        EXPECT_STREQ("FG_TIMEOUT", Fg_getParameterName(applet.record(), 0));
        EXPECT_EQ(0, applet.lastError());
        EXPECT_EQ(nullptr, Fg_getParameterName(applet.record(), index));
        EXPECT_EQ(error::invalidArgument, applet.lastError());
        EXPECT_EQ(error::invalidArgument, Fg_getParameterId(applet.record(), index));
    }
}

// ---- events ----

TEST_F(AppletTest, EveryEventHasOneBitAndLeadsBackToItsName) {
    std::vector<std::string> names{"Device1_Process1_BoardMonitor_TemperatureAlarm",
                                   "Device1_Process1_BoardMonitor_CameraLinkLost"};
    for (const auto& event : sdkEvents) names.emplace_back(event.sdkName);
    EXPECT_EQ(33U, names.size());
    std::set<std::uint64_t> masks;
    for (const auto& name : names) {
        const std::uint64_t mask = Fg_getEventMask(applet.record(), name.c_str());
        EXPECT_EQ(0, applet.lastError());
        EXPECT_TRUE(std::has_single_bit(mask)) << name;
        EXPECT_TRUE(masks.insert(mask).second) << name;
        EXPECT_STREQ(name.c_str(), Fg_getEventName(applet.record(), mask));
        EXPECT_EQ(0, applet.lastError());
    }
    // The design's names of these events are the SDK's business only where it has none of its own.
    for (const auto& event : sdkEvents) EXPECT_EQ(0U, Fg_getEventMask(applet.record(), event.designName));
}

TEST_F(AppletTest, UnknownEventsAreAnsweredWithNothing) {
    for (const char* name : {static_cast<const char*>(nullptr), "", "fg_custom_signal_event_1",
                             "FG_CUSTOM_SIGNAL_EVENT_1 ", "FG_CUSTOM_SIGNAL_EVENT_"}) {
        applet.get<int>("FG_EXSYNCON");  // clears the last error
        EXPECT_EQ(0U, Fg_getEventMask(applet.record(), name));
        EXPECT_EQ(error::invalidArgument, applet.lastError());
    }
    const std::uint64_t two = Fg_getEventMask(applet.record(), "FG_CUSTOM_SIGNAL_EVENT_0") |
                              Fg_getEventMask(applet.record(), "FG_CUSTOM_SIGNAL_EVENT_1");
    for (const std::uint64_t mask : {std::uint64_t{0}, two, std::uint64_t{1} << 63}) {
        applet.get<int>("FG_EXSYNCON");
        EXPECT_EQ(nullptr, Fg_getEventName(applet.record(), mask));
        EXPECT_EQ(error::invalidArgument, applet.lastError());
    }
}

// ---- the description tree ----

TEST_F(AppletTest, ShowsTheCatalogueInHostOrder) {
    // A host meets the groups newest first, and each group's children in the order they were added.
    std::vector<std::string> groups;
    std::map<std::string, const RegisterInfo*> leaves;
    const std::function<void(const RegisterInfo*, std::string)> walk = [&](const RegisterInfo* node,
                                                                           std::string path) {
        if (node->kind != FG_KIND_GROUP) {
            leaves[path + " > " + node->name] = node;
            return;
        }
        path += (path.empty() ? "" : " > ") + std::string(node->displayName);
        for (int i = 0; i < node->value.group.childCount; ++i) {
            EXPECT_EQ(static_cast<std::uint32_t>(i), node->value.group.children[i]->index);
            walk(node->value.group.children[i], path);
        }
    };
    for (const auto* node = Fg_getParameterInfo(applet.record(), 0); node != nullptr; node = node->next) {
        groups.emplace_back(node->displayName);
        walk(node, "");
    }
    EXPECT_THAT(groups, ElementsAre("Legacy Parameter", "Miscellaneous", "Camera Simulator", "Output Format",
                                    "Processing", "Lookup Table", "Color Interpolation", "White Balance",
                                    "Image Selector", "Overflow", "Signal Analyzer", "Image Trigger / Flash",
                                    "Line Trigger / ExSync", "CC Signal Mapping", "Digital I/O", "ROI",
                                    "Tap Geometry", "Camera Link"));
    ASSERT_EQ(catalogue.size(), leaves.size());
    for (const auto index : catalogue) {
        const auto& row = rowOf(index);
        const auto found = leaves.find(std::string(row.group) + " > " + row.name);
        ASSERT_NE(leaves.end(), found) << row.name;
        EXPECT_STREQ(row.displayName, found->second->displayName);
        EXPECT_EQ(OpenApplet::idOf(row.name), found->second->address);
        EXPECT_EQ(row.flags.publish, found->second->publish);
    }
    EXPECT_EQ(nullptr, Fg_getParameterInfo(applet.record(), 1));
    EXPECT_EQ(nullptr, Fg_getParameterInfo(applet.record(), -1));
}

TEST(Registry, HoldsTheRegisteredValuesBeforeAnySetterRan) {
    OpenApplet applet(1);
    const auto& width = applet.node("FG_WIDTH");
    EXPECT_EQ(1u, width.kind);
    EXPECT_EQ(8u, width.value.uint32.minimum);
    EXPECT_EQ(16384u, width.value.uint32.maximum);
    EXPECT_EQ(8u, width.value.uint32.increment);
    EXPECT_EQ(3, width.accessFlags);
    EXPECT_EQ(2, width.secondFlags);
    EXPECT_STREQ("pixel", width.unit);
    EXPECT_STREQ("\xB5s", applet.node("FG_LINEPERIODE").unit);
    EXPECT_EQ(nullptr, applet.node("FG_FORMAT").unit);
    const auto& source = applet.node("FG_TRIGGEROUT_GPO_0_SOURCE").value.enumeration;
    ASSERT_EQ(19, source.count);
    EXPECT_EQ(4, source.values[0]);
    EXPECT_EQ(1111, source.values[18]);
    EXPECT_STREQ("FG_SIGNAL_FRONT_GPI_3", source.constantNames[18]);
    EXPECT_DOUBLE_EQ(999.9999999999999, applet.node("FG_CAMERASIMULATOR_PIXEL_FREQUENCY").value.real.maximum);
    EXPECT_EQ(-4294967296LL, applet.node("FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE").value.int64.minimum);
}

// ---- the class behind the exports ----

/// Byte offset of a virtual operation in the operation table, as this platform's ABI encodes it.
template <class Operation>
std::ptrdiff_t slotOf(Operation operation) {
    std::ptrdiff_t encoded = 0;
    static_assert(sizeof operation == 2 * sizeof encoded);
    std::memcpy(&encoded, &operation, sizeof encoded);
    return (encoded - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(Operations, StandInTheOrderOfTheFamily) {
    EXPECT_EQ(0, slotOf(&FgGxWrapper::getDefaultLogger));
    EXPECT_EQ(1, slotOf(&FgGxWrapper::loadConfig));
    EXPECT_EQ(2, slotOf(&FgGxWrapper::saveConfig));
    EXPECT_EQ(6, slotOf(&FgGxWrapper::getDmaAlignment));
    EXPECT_EQ(9, slotOf(&FgGxWrapper::createUserParameters)) << "two destructors before it";
    EXPECT_EQ(10, slotOf(&FgGxWrapper::Fg_setParameterWithType));
    EXPECT_EQ(16, slotOf(&FgGxWrapper::Fg_getParameterCount));
    EXPECT_EQ(19, slotOf(&FgGxWrapper::Fg_getParameterInfoXML));
    EXPECT_EQ(28, slotOf(&FgGxWrapper::Shad_WriteActLine));
    EXPECT_EQ(29, slotOf(&FgGxWrapper::Fg_getEventMask));
    EXPECT_EQ(34, slotOf(&FgGxWrapper::getAppletID));
}

TEST_F(AppletTest, AnswersForItsIdentityAndOffersNoDmaOperations) {
    auto& instance = *static_cast<FgGxWrapper*>(applet.record()->instance);
    EXPECT_STREQ("Tavrion GmbH", instance.getManufacturer());
    EXPECT_STREQ("Marovine", instance.getCameraType());
    EXPECT_STREQ("0.5", instance.getCameraVersion());
    EXPECT_EQ(0, instance.getAppletID());
    const auto refusal = [](const char* name) {
        return testing::ThrowsMessage<std::runtime_error>(std::string(name) + "() is not implemented.");
    };
    EXPECT_THAT([&] { instance.processChannelToDma(0, 0); }, refusal("processChannelToDma"));
    EXPECT_THAT([&] { instance.mapDmaToFormat(0); }, refusal("mapDmaToFormat"));
    EXPECT_THAT([&] { instance.setDmaAlignment(0, 0); }, refusal("setDmaAlignment"));
    EXPECT_THAT([&] { instance.getDmaAlignment(0); }, refusal("getDmaAlignment"));
}

TEST(Constants, HaveOneValueInAllEnumerations) {
    std::map<std::string_view, int> values;
    for (const auto& table : enumerationTables)
        for (const auto& entry : table.entries)
            EXPECT_EQ(entry.value, values.try_emplace(entry.constantName, entry.value).first->second)
                << entry.constantName;
    EXPECT_EQ(138u, values.size());
}

}  // namespace
}  // namespace marovine::test
