/// Calls from several threads at once; worth most in the build with the thread sanitizer.

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "tests/AppletFixture.h"
#include "tests/TemporaryFile.h"
#include "tests/Threads.h"

namespace marovine::test {
namespace {

// First in this file: the answer must be safe on first use, before any instance exists.
TEST(Concurrency, ConstantsAreAnsweredOnFirstUseFromEightThreads) {
    std::atomic<int> wrong = 0;
    onThreads(8, [&](int) {
        for (const auto& table : enumerationTables)
            for (const auto& entry : table.entries) {
                std::string name = entry.constantName;
                if (Info(4352, 0, 0, name.data(), nullptr) != entry.value) ++wrong;
            }
        void* icon = nullptr;
        std::size_t size = 0;
        if (Info(1041, 0, 0, &size, &icon) != 0 || size != 2551) ++wrong;
    });
    EXPECT_EQ(0, wrong);
}

TEST_F(AppletTest, SetsAndGetsOfOneParameterAreNeverMixed) {
    std::atomic<int> wrong = 0;
    onThreads(4, [&](int t) {
        for (int i = 0; i < 300; ++i) {
            const std::uint32_t width = 8 * static_cast<std::uint32_t>(1 + (t * 300 + i) % 1024);
            if (applet.set("FG_WIDTH", width) != 0) ++wrong;
            if (applet.get<std::uint32_t>("FG_WIDTH") % 8 != 0) ++wrong;
        }
    });
    EXPECT_EQ(0, wrong);
    // The last set won in the cache and in the design alike.
    EXPECT_EQ(applet.get<std::uint32_t>("FG_WIDTH"),
              std::get<std::uint32_t>(applet.board().value("Device1_Process0_Buffer_0_DRAM_A_0_XLength")));
}

// Each is begun while a setting is under way, and must not come to its end before it.
TEST_F(AppletTest, OneCallAtATime) {
    const TemporaryFile file(".mcf");
    ASSERT_EQ(0, Fg_saveConfig(applet.record(), file.name()));
    const std::function<int()> calls[] = {
        [&] { return applet.set("FG_TIMEOUT", 2); },
        [&] { return applet.get<int>("FG_TIMEOUT") - 2; },
        [&] { return Fg_saveConfig(applet.record(), file.name()); },
        [&] { return Fg_loadConfig(applet.record(), file.name()); },
    };
    for (const auto& call : calls) {
        std::atomic<bool> ended = false;
        std::thread other;
        applet.board().watchWrites([&](const virtualboard::Write&) {
            if (!other.joinable()) other = std::thread([&] { EXPECT_EQ(0, call()), ended = true; });
            if (!ended) std::this_thread::sleep_for(std::chrono::milliseconds(40));
            EXPECT_FALSE(ended) << "call " << &call - calls;
            applet.board().watchWrites({});
        });
        EXPECT_EQ(0, applet.set("FG_USEDVAL", 1));
        other.join();
    }
}

TEST_F(AppletTest, TextsAreGivenBackWhileOthersAreHandedOut) {
    onThreads(4, [&](int) {
        for (int i = 0; i < 300; ++i) EXPECT_EQ("Marovine.hap", applet.getText("FG_HAP_FILE"));
    });
}

TEST_F(AppletTest, EnumerationAndEventsNeedNoLock) {
    std::atomic<int> wrong = 0;
    onThreads(4, [&](int) {
        for (int index = 0; index < Fg_getNrOfParameter(applet.record()); ++index)
            if (Fg_getParameterName(applet.record(), index) == nullptr) ++wrong;
        if (Fg_getEventMask(applet.record(), "FG_OVERFLOW_CAM0") == 0) ++wrong;
        Fg_getLastErrorNumber(applet.record());
    });
    EXPECT_EQ(0, wrong);
}

TEST_F(AppletTest, TheDescriptionIsReadWhileRangesAndAccessChange) {
    auto& node = const_cast<RegisterInfo&>(applet.node("FG_WIDTH"));
    auto& exposure = const_cast<RegisterInfo&>(applet.node("FG_LINEEXPOSURE"));
    std::vector<char> text(1 << 20);
    onThreads(2, [&](int t) {
        for (std::uint32_t i = 0; i < 50; ++i) {
            if (t == 0) {
                EXPECT_EQ(0, applet.set("FG_XOFFSET", 8 * (i % 4)));
                EXPECT_EQ(0, applet.set("FG_LINEPERIODE", 200.0 + i));
                EXPECT_EQ(0, applet.set("FG_LUT_TYPE",
                                        constantOf(i % 2 ? "LUT_TYPE_CUSTOM" : "LUT_TYPE_PROCESSING")));
                continue;
            }
            EXPECT_EQ(0u, std::atomic_ref(node.value.uint32.maximum).load() % 8);
            EXPECT_LE(100.0, std::atomic_ref(exposure.value.real.maximum).load());
            std::size_t size = text.size();
            EXPECT_EQ(0, Fg_getParameterInfoXML(applet.record(), 0, text.data(), &size));
        }
    });
}

TEST(Concurrency, BoardsAreIndependentOfEachOther) {
    onThreads(3, [](int t) {
        OpenApplet applet;
        const std::uint32_t period = 2 + static_cast<std::uint32_t>(t);
        EXPECT_EQ(0, applet.set("FG_IMG_SELECT_PERIOD", period));
        EXPECT_EQ(period, applet.get<std::uint32_t>("FG_IMG_SELECT_PERIOD"));
        for (const int selector : {4144, 4160}) {
            void* handle = nullptr;
            EXPECT_EQ(0, Info(selector, 0, 0, &handle, nullptr));
            EXPECT_NE(nullptr, handle) << "board and design of the last one opened";
        }
    });
}

}  // namespace
}  // namespace marovine::test
