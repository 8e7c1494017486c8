/// What the studio shows: pictures, the world below them, and signals.

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "pictures/Png.h"
#include "studio/Pictures.h"
#include "tests/RunCommand.h"
#include "tests/StudioFixture.h"
#include "tests/TemporaryFile.h"

namespace marovine::studio {
namespace {

using marovine::test::run;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using virtualboard::imaging::Image;

std::string pngOf(const Image& picture) {
    const auto bytes = virtualboard::imaging::encodePng(picture);
    return {bytes.begin(), bytes.end()};
}

TEST_F(StudioTest, ShowsPicturesAsSmallAsTheyAreWanted) {
    EXPECT_EQ(ask("GET", "/api/picture").status, 404);
    service.opened(1);
    ask("POST", "/api/acquisition", R"({"action": "single"})");
    service.received(1, R"({"type": "view", "fit": "100x100", "region": [0, 0, 200, 400]})");
    const std::string frame = frames(1, 1).at(0);
    ASSERT_EQ(frame.size(), 64U + 50 * 100 * 4);
    EXPECT_EQ(frame.substr(0, 4), "MVF1");
    EXPECT_EQ(static_cast<unsigned char>(frame[16]), 50);
    const auto acquisition = [&] { return get("/api/acquisition"); };
    EXPECT_EQ(acquisition()["pictures"], 1);
    EXPECT_EQ(acquisition()["state"], "stopped");

    const auto header = [](const Response& response, const std::string& name) {
        const auto found =
            std::ranges::find(response.headers, name, &std::pair<std::string, std::string>::first);
        return found != response.headers.end() ? found->second : std::string();
    };
    const Response row = ask("GET", "/api/picture?format=bgr&y=700&height=1");
    EXPECT_EQ(row.body.size(), 1024U * 3);
    EXPECT_EQ(header(row, "X-Picture-Region"), "0,700,1024,1");
    const Response small = ask("GET", "/api/picture?fit=100x0&format=rgba");
    EXPECT_EQ(header(small, "X-Picture-Height"), "100");
    EXPECT_THAT(ask("GET", "/api/picture").body, HasSubstr("IHDR"));
    const Json histogram = get("/api/picture/histogram?x=1000&width=9999&height=10");
    EXPECT_EQ(histogram["pixels"], 240);
    const auto red = histogram["red"].get<std::vector<int>>();
    EXPECT_EQ(std::accumulate(red.begin(), red.end(), 0), 240);
    EXPECT_EQ(ask("GET", "/api/picture?x=5000").status, 400);
}

TEST(StudioPictures, AreAveragedOverTheAreaThatAPixelStandsFor) {
    Image picture(5, 4);
    for (std::uint32_t y = 0; y < 4; ++y)
        for (std::uint32_t x = 0; x < 5; ++x)
            picture.at(x, y) = {static_cast<std::uint8_t>(x * 10 + y), 0, 255};
    const Image half = shown(picture, {1, 0, 4, 4}, {2, 0});
    ASSERT_EQ(half.width, 2U);
    ASSERT_EQ(half.height, 2U);
    EXPECT_EQ(half.at(0, 0).blue, (10 + 20 + 11 + 21 + 2) / 4);
    EXPECT_EQ(half.at(1, 1).blue, (32 + 42 + 33 + 43 + 2) / 4);
    EXPECT_EQ(half.at(1, 1).red, 255);
    const Image same = shown(picture, {0, 0, 5, 4}, {100, 100});
    EXPECT_EQ(same.pixels, picture.pixels);
    EXPECT_EQ(shown(picture, {0, 0, 5, 4}, {3, 0}).width, 3U);
    EXPECT_TRUE(shown(picture, {5, 0, 0, 4}, {}).pixels.empty());
}

TEST_F(StudioTest, SendsASlowPageTheNewestPictureOnly) {
    service.opened(1);
    service.opened(2);
    set("FG_HEIGHT", 64);
    ask("POST", "/api/acquisition", R"({"action": "run"})");
    for (const Peer peer : {1, 2}) service.received(peer, R"({"type": "view", "fit": "64x64"})");
    const auto numberOf = [](const std::string& frame) {
        std::uint64_t number = 0;
        std::memcpy(&number, frame.data() + 8, sizeof number);
        return number;
    };
    ASSERT_EQ(frames(1, 1).size(), 1U);
    for (std::size_t i = 1; i <= 5; ++i) {
        ASSERT_GE(frames(2, i).size(), i);
        service.received(2, R"({"type": "shown", "number": 0})");
    }
    // The other page said nothing meanwhile: it has one picture, and gets the newest next.
    EXPECT_EQ(frames(1, 1).size(), 1U);
    service.received(1, R"({"type": "shown"})");
    const auto two = frames(1, 2);
    ASSERT_EQ(two.size(), 2U);
    EXPECT_GT(numberOf(two[1]), numberOf(two[0]) + 2);

    // Pictures of another size come without a further word.
    set("FG_WIDTH", 2048);
    service.received(1, R"({"type": "view"})");
    const auto isWide = [](const Message& message) {
        return message.binary && message.content->size() == 64 + 2048 * 64 * 4;
    };
    bool wide = false;
    for (int i = 0; i < 100 && !wide; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        service.received(1, R"({"type": "shown"})");
        const std::lock_guard lock(mutex);
        wide = std::ranges::any_of(sent[1], isWide);
    }
    EXPECT_TRUE(wide);
    EXPECT_GT(get("/api/acquisition")["rate"], 10);
    ask("POST", "/api/acquisition", R"({"action": "stop"})");
    EXPECT_EQ(get("/api/acquisition")["state"], "stopped");
}

TEST_F(StudioTest, ChangesTheWorldAsAWholeOrNotAtAll) {
    const auto patch = [&](const char* text) { return ask("PATCH", "/api/world", text); };
    const Json before = get("/api/world");
    for (const char* text :
         {R"({"belt": {"speed": 100}, "inputs": {"12": true}})", R"({"inputs": [true]})",
          R"({"faults": [{"kind": "refuseWrites", "name": "none", "code": -1}]})",
          R"({"belt": {"speed": "fast"}})", R"({"light": 1, "belts": {}})",
          R"({"force": {"name": "none", "value": 1}})", R"({"pulse": {"ms": 1}})", "[]", "{"})
        EXPECT_EQ(patch(text).status, 400) << text;
    EXPECT_EQ(get("/api/world"), before);

    service.opened(1);
    const Json moved =
        Json::parse(patch(R"({"belt": {"speed": 250}, "inputs": {"3": true, "8": true}})").body);
    EXPECT_EQ(moved["belt"]["speed"], 250);
    EXPECT_EQ(moved["belt"]["objectPixel"], before["belt"]["objectPixel"]);
    EXPECT_EQ(moved["inputs"][3], true);
    EXPECT_EQ(moved["inputs"][4], false);
    EXPECT_EQ(messages(1, "world").at(0)["world"], moved);

    const std::string fault =
        R"({"faults": [{"kind": "refuseWrites", "name": "Device1_Process0_Buffer_0_DRAM_A_0_XLength", "code": -4711}]})";
    EXPECT_EQ(get("/api/world")["faults"].size(), 0U);
    EXPECT_EQ(Json::parse(patch(fault.c_str()).body)["faults"][0]["code"], -4711);
    const Response refused = set("FG_WIDTH", 2048);
    EXPECT_EQ(refused.status, 409);
    EXPECT_EQ(Json::parse(refused.body)["refused"]["code"], -4711);
    patch(R"({"faults": []})");
    EXPECT_EQ(set("FG_WIDTH", 2048).status, 200);

    EXPECT_EQ(ask("PUT", "/api/world/scene", "no picture").status, 422);
    const Json laid =
        Json::parse(ask("PUT", "/api/world/scene?fieldWidth=512", pngOf(Image(32, 16, {1, 2, 3}))).body);
    EXPECT_EQ(laid["scene"],
              (Json{{"source", "picture"}, {"width", 32}, {"height", 16}, {"fieldWidth", 512}}));
    EXPECT_EQ(Json::parse(ask("DELETE", "/api/world/scene").body)["scene"]["source"], "test chart");

    EXPECT_EQ(Json::parse(patch(R"({"light": {"level": 0.5}})").body)["light"]["level"], 0.5);
    const Json line = Json::parse(ask("PUT", "/api/world?name=line.json",
                                      R"({"format": 1, "belt": {"speed": 80}, "light": {"red": 0.5}})")
                                      .body);
    EXPECT_EQ(line["file"], "line.json");
    EXPECT_EQ(line["belt"]["speed"], 80);
    EXPECT_EQ(line["light"],
              (Json{{"level", 1}, {"red", 0.5}, {"green", 1}, {"blue", 1}, {"flashShare", 0}}));
    EXPECT_EQ(ask("PUT", "/api/world", R"({"format": 1, "belt": {"sped": 80}})").status, 422);
    EXPECT_EQ(ask("PUT", "/api/world", R"({"format": 1, "belt": {"picture": "/usr/share/x.png"}})").status,
              400);
    EXPECT_EQ(get("/api/world"), line);
}

TEST_F(StudioTest, ShowsWhatSignalsDid) {
    auto& board = marovine::host::boardOf(applet);
    board.setClockMode(virtualboard::ClockMode::Manual);
    service.opened(1);
    get("/api/signals");
    // An event that comes with every line takes no room from the others.
    const auto many =
        board.eventNumber("Device1_Process1_Trigger_Events_Events_LVAL_FVAL_CustomSignalEvent0");
    for (int i = 0; i < 100; ++i) board.raiseEvent(many, 0);
    const std::string pins = "Device1_Process1_Trigger_Inputs_InputEvents_InputEvents_";
    for (const char* edge : {"Pin5", "NotPin5"})
        board.raiseEvent(board.eventNumber(pins + edge), edge[0] == 'P');
    // Lines and frames that came before have events, too.
    std::vector<Json> events;
    waitFor([&] {
        events.clear();
        for (const auto& message : sent[1])
            if (!message.binary && message.content->find("FG_TRIGGER_INPUT5") != std::string::npos)
                events.push_back(Json::parse(*message.content));
        return events.size() >= 2;
    });
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0]["name"], "FG_TRIGGER_INPUT5_RISING");
    EXPECT_EQ(events[0]["payload"], 1);
    const auto row = [&](const Json& signals, const std::string& name) {
        for (const auto& signal : signals["signals"])
            if (signal["constant"] == name) return signal;
        return Json();
    };
    const Json pressed = row(get("/api/signals?ms=1000"), "FG_SIGNAL_GPI_5");
    ASSERT_EQ(pressed["edges"].size(), 2U);
    EXPECT_EQ(pressed["high"], false);
    EXPECT_EQ(pressed["edges"][0]["high"], true);
    EXPECT_EQ(pressed["edges"][1]["high"], false);
    EXPECT_LE(pressed["edges"][0]["atMs"], pressed["edges"][1]["atMs"]);
    // An output that is wired to the input, inverted.
    set("FG_TRIGGEROUT_GPO_2_SOURCE", "FG_SIGNAL_GPI_5");
    set("FG_TRIGGEROUT_GPO_2_POLARITY", "FG_LOW");
    Json wired;
    const Json all = get("/api/signals?ms=1000");
    for (const auto& signal : all["signals"])
        if (signal["name"] == "GPO 2") wired = signal;
    ASSERT_EQ(wired["edges"].size(), 2U);
    EXPECT_EQ(wired["edges"][0]["high"], false);
    EXPECT_EQ(wired["high"], true);
    EXPECT_EQ(row(get("/api/signals"), "FG_SIGNAL_CAM0_FLASH")["known"], false);
    EXPECT_EQ(ask("GET", "/api/signals?ms=5000").status, 400);
}

}  // namespace
}  // namespace marovine::studio
