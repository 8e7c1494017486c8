/// The studio's interface: what a page and programs ask, what they are told, and who may not ask.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "client/VirtualBoard.h"
#include "pictures/Png.h"
#include "studio/Access.h"
#include "studio/Base64.h"
#include "studio/Pictures.h"
#include "studio/Service.h"
#include "tests/RunCommand.h"
#include "tests/TemporaryFile.h"

namespace {

using namespace marovine::studio;
using marovine::host::Applet;
using marovine::host::Library;
using marovine::host::VirtualBoard;
using marovine::test::run;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using virtualboard::imaging::Image;
using Json = nlohmann::json;

std::string pngOf(const Image& picture) {
    const auto bytes = virtualboard::imaging::encodePng(picture);
    return {bytes.begin(), bytes.end()};
}

/// A list of parameters without its read-outs, which move by themselves; other documents as they are.
Json settings(Json document) {
    if (document.is_array() && document[0].contains("readOut"))
        std::erase_if(document.get_ref<Json::array_t&>(),
                      [](const Json& entry) { return entry["readOut"] == true; });
    return document;
}

/// A studio without its web server: requests and messages go straight to what answers them.
class StudioTest : public testing::Test {
 protected:
    Response ask(const std::string& method, const std::string& target, const std::string& body = "") {
        const auto parsed = parseTarget(target);
        auto answer = std::make_shared<std::promise<Response>>();
        service.answer({method, parsed->path, parsed->query, body},
                       [answer](Response response) { answer->set_value(std::move(response)); });
        return answer->get_future().get();
    }
    Json get(const std::string& target) { return Json::parse(ask("GET", target).body); }
    Response set(const std::string& name, const Json& value, const std::string& page = "") {
        const Json setting{{"parameter", name}, {"value", value}};
        return ask("POST", "/api/set", Json{{"settings", {setting}}, {"page", page}}.dump());
    }
    Json value(const std::string& name) { return get("/api/values?name=" + name)[name]; }

    /// The messages that a page got: those of a type as soon as there are `count`, or after a while all.
    std::vector<Json> messages(Peer peer, const std::string& type, std::size_t count = 1) {
        std::vector<Json> found;
        waitFor([&] {
            found.clear();
            for (const auto& message : sent[peer])
                if (!message.binary)
                    if (Json json = Json::parse(*message.content); json["type"] == type)
                        found.push_back(json);
            return found.size() >= count;
        });
        return found;
    }
    /// The pictures that a page got, likewise.
    std::vector<std::string> frames(Peer peer, std::size_t count) {
        std::vector<std::string> found;
        waitFor([&] {
            found.clear();
            for (const auto& message : sent[peer])
                if (message.binary) found.push_back(*message.content);
            return found.size() >= count;
        });
        return found;
    }
    void waitFor(const std::function<bool()>& condition) {
        std::unique_lock lock(mutex);
        came.wait_for(lock, std::chrono::seconds(10), condition);
    }

    Applet applet{
        Library::load(), std::make_unique<VirtualBoard>(), {.writeDefaults = true, .rememberSteps = true}};
    std::mutex mutex;
    std::condition_variable came;
    std::map<Peer, std::vector<Message>> sent;
    Service service{applet, {}, [this](Peer peer, Message message) {
                        const std::lock_guard lock(mutex);
                        sent[peer].push_back(std::move(message));
                        came.notify_all();
                    }};
};

TEST_F(StudioTest, SpeaksAsTheCommandDoes) {
    for (const auto& [path, command] :
         {std::pair{"/api/tree", "tree"},
          {"/api/parameters", "list"},
          {"/api/parameters/FG_LINEEXPOSURE", "describe FG_LINEEXPOSURE"},
          {"/api/values?name=FG_LINE*&name=fg_width", "get 'FG_LINE*' FG_WIDTH"},
          {"/api/wiring", "wiring"},
          {"/api/defaults", "defaults"},
          {"/api/events", "events"},
          {"/api/lut", "lut show"}}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(settings(get(path)), settings(Json::parse(run(std::string(command) + " --json").output)));
    }
    EXPECT_THAT(get("/api/status"), Contains(testing::_));
    EXPECT_THAT(ask("GET", "/api/xml").body, HasSubstr("FG_WIDTH"));
}

TEST_F(StudioTest, RefusesWithButtonsThatWork) {
    ASSERT_EQ(set("FG_XOFFSET", 12288).status, 200);
    const Response refused = set("FG_WIDTH", 4104);
    EXPECT_EQ(refused.status, 409);
    const Json why = Json::parse(refused.body)["refused"];
    EXPECT_EQ(why["rule"], "above 4096");
    EXPECT_EQ(why["causes"][0]["parameter"], "FG_XOFFSET");
    ASSERT_GE(why["remedies"].size(), 2U);
    for (const auto& remedy : why["remedies"]) {
        SCOPED_TRACE(remedy["text"]);
        EXPECT_EQ(ask("POST", "/api/set", Json{{"settings", remedy["settings"]}}.dump()).status, 200);
    }
    EXPECT_EQ(value("FG_WIDTH"), 4104);
}

TEST_F(StudioTest, TellsEveryPageWhatMovedAndTakesItBack) {
    service.opened(1);
    service.opened(2);
    const Json before = settings(get("/api/parameters"));
    ASSERT_EQ(messages(1, "hello").size(), 1U);
    ASSERT_EQ(messages(2, "hello").at(0)["page"], "k2");

    set("FG_XOFFSET", "0x80", "k1");
    set("FG_PROCESSING_GAMMA", 2.2, "k2");
    std::vector<int> curve(256);
    for (int i = 0; i < 256; ++i) curve[static_cast<std::size_t>(i)] = 255 - i;
    set("FG_LUT_TYPE", "LUT_TYPE_CUSTOM");
    EXPECT_EQ(set("FG_LUT_VALUE_RED", curve).status, 200);
    EXPECT_EQ(get("/api/lut")["red"], curve);
    EXPECT_EQ(set("FG_WIDTH", 1001).status, 409);

    for (const Peer peer : {1, 2}) {
        const auto changes = messages(peer, "change", 4);
        ASSERT_GE(changes.size(), 4U);
        EXPECT_EQ(changes[0]["by"], "k1");
        EXPECT_EQ(changes[0]["change"]["set"][0]["value"], 128);
        EXPECT_EQ(changes[1]["by"], "k2");
        EXPECT_TRUE(changes[2]["by"].is_null());
        EXPECT_GT(changes[1]["revision"], changes[0]["revision"]);
        EXPECT_THAT(changes[0]["change"]["writes"], Not(IsEmpty()));
    }
    EXPECT_EQ(get("/api/history")["changes"].size(), 4U);
    while (ask("POST", "/api/undo").status == 200)
        EXPECT_THAT(get("/api/history")["changes"].size(), testing::Lt(4U));
    EXPECT_EQ(settings(get("/api/parameters")), before);
}

TEST_F(StudioTest, CarriesConfigurationsUpAndDown) {
    const std::string kept = ask("GET", "/api/configuration").body;
    EXPECT_THAT(Json::parse(ask("POST", "/api/configuration/check", kept).body), IsEmpty());
    set("FG_WIDTH", 2048);
    const Json differences = Json::parse(ask("POST", "/api/configuration/diff", kept).body);
    ASSERT_EQ(differences.size(), 1U);
    EXPECT_EQ(differences[0]["first"], 1024);
    EXPECT_EQ(differences[0]["second"], 2048);
    const Json loaded = Json::parse(ask("PUT", "/api/configuration?name=line3.mcf", kept).body);
    EXPECT_EQ(loaded["moved"][0]["parameter"], "FG_WIDTH");
    EXPECT_EQ(get("/api/history")["changes"].back()["title"], "loading line3.mcf");
    EXPECT_EQ(value("FG_WIDTH"), 1024);

    EXPECT_EQ(ask("PUT", "/api/configuration", "no configuration").status, 422);
    const std::string table = ask("GET", "/api/lut/file").body;
    EXPECT_EQ(Json::parse(ask("PUT", "/api/lut/file", table).body)["tables"], get("/api/lut"));
    EXPECT_EQ(value("FG_LUT_CUSTOM_FILE"), "tables.lut");  // without its place
    EXPECT_EQ(ask("PUT", "/api/lut/file", "no table").status, 422);
}

TEST_F(StudioTest, TouchesNoFileOfItsDisk) {
    const TemporaryFile target(".lut");
    const TemporaryFile secret(".lut", "[red]\n0, 17\n[green]\n0, 17\n[blue]\n0, 17\n");
    EXPECT_EQ(set("FG_LUT_SAVE_FILE", target.name()).status, 422);
    EXPECT_EQ(set("FG_LUT_CUSTOM_FILE", secret.name()).status, 422);
    EXPECT_FALSE(std::filesystem::exists(target.name()));

    // A configuration names a table of the disk: it is looked for beside the configuration, where it is not.
    std::string text = ask("GET", "/api/configuration").body;
    const auto line = text.find("FG_LUT_CUSTOM_FILE=");
    ASSERT_NE(line, text.npos);
    text.replace(line, text.find('\n', line) - line,
                 "FG_LUT_CUSTOM_FILE='" + std::string(secret.name()) + "';");
    const Json loaded = Json::parse(ask("PUT", "/api/configuration", text).body);
    ASSERT_EQ(loaded["missingFiles"].size(), 1U);
    EXPECT_THAT(loaded["missingFiles"][0]["sentence"].get<std::string>(), Not(HasSubstr("/tmp")));
    EXPECT_EQ(get("/api/lut")["red"][0], 0);

    for (const auto& arguments : {std::vector<std::string>{"get", "FG_WIDTH", "--config", "/etc/hostname"},
                                  {"check", "/etc/hostname"},
                                  {"world", "check", "/etc/hostname"},
                                  {"get", "FG_WIDTH", "--applet", "/lib/x86_64-linux-gnu/libc.so.6"},
                                  {"docs", "man", "/tmp/marovine-pages"},
                                  {"studio"},
                                  {"demo"}}) {
        SCOPED_TRACE(arguments.front());
        const Json outcome =
            Json::parse(ask("POST", "/api/command", Json{{"arguments", arguments}}.dump()).body);
        EXPECT_NE(outcome["status"], 0);
        EXPECT_THAT(outcome["output"].get<std::string>(), Not(HasSubstr("FG_WIDTH")));
    }
    EXPECT_FALSE(std::filesystem::exists("/tmp/marovine-pages"));
    EXPECT_GE(ask("GET", "/api/parameters?pattern=--config%3D/etc/hostname").status, 400);
}

TEST_F(StudioTest, CarriesOutCommandsWithTheirFiles) {
    const Json grabbed = Json::parse(
        ask("POST", "/api/command", Json{{"arguments", {"grab", "-n", "2", "-o", "out/belt.png"}}}.dump())
            .body);
    ASSERT_EQ(grabbed["status"], 0) << grabbed["errors"];
    ASSERT_EQ(grabbed["files"].size(), 2U);
    EXPECT_THAT((std::vector<std::string>{grabbed["files"][0]["name"], grabbed["files"][1]["name"]}),
                testing::UnorderedElementsAre("out/belt-1.png", "out/belt-2.png"));
    EXPECT_THAT(*fromBase64(grabbed["files"][0]["base64"].get<std::string>()), HasSubstr("PNG"));

    service.opened(1);
    const Json set = Json::parse(
        ask("POST", "/api/command", Json{{"arguments", {"set", "FG_WIDTH=2048", "--trace", "t.csv"}}}.dump())
            .body);
    EXPECT_THAT(set["output"].get<std::string>(), HasSubstr("(was 1024)"));
    EXPECT_THAT(*fromBase64(set["files"][0]["base64"].get<std::string>()), HasSubstr("FG_WIDTH = 2048"));
    EXPECT_EQ(messages(1, "change").at(0)["change"]["moved"][0]["after"], "2048");
    for (const std::string bytes : {"", "a", "ab", "abc", "\xFF\xFE\x80\x01"})
        EXPECT_EQ(fromBase64(toBase64(bytes)), bytes);
    for (const char* text : {"a", "ab=c", "====", "ab!?"}) EXPECT_FALSE(fromBase64(text)) << text;
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

TEST_F(StudioTest, SaysWhatMakesNoSense) {
    struct Case {
        const char* method;
        const char* target;
        const char* body;
        int status;
        const char* says;
    };
    const std::string many(300, '[');
    for (const auto& [method, target, body, status, says] : {
             Case{"GET", "/api/nothing", "", 404, "there is no path"},
             Case{"GET", "/../../etc/passwd", "", 404, "no file"},
             Case{"DELETE", "/api/set", "", 405, "takes POST"},
             Case{"GET", "/api/parameters/FG_WITDH", "", 404, "nearest: FG_WIDTH"},
             Case{"GET", "/api/values", "", 400, "no name is given"},
             Case{"GET", "/api/picture?width=many", "", 400, "whole number"},
             Case{"GET", "/api/trace?format=xls", "", 400, "json or csv"},
             Case{"POST", "/api/undo", "", 404, "no change"},
             Case{"POST", "/api/set", "", 400, "no JSON"},
             Case{"POST", "/api/set", many.c_str(), 400, "16 levels"},
             Case{"POST", "/api/set", "{}", 400, "lacks the member settings"},
             Case{"POST", "/api/set", R"({"setings": []})", 400, "there are: settings"},
             Case{"POST", "/api/set", R"({"settings": []})", 400, "1 to 1000"},
             Case{"POST", "/api/set", R"({"settings": [{"parameter": "FG_WITDH", "value": 1}]})", 404,
                  "FG_WIDTH"},
             Case{"POST", "/api/set", R"({"settings": [{"parameter": "FG_WIDTH", "value": "wide"}]})", 422,
                  "number"},
             Case{"POST", "/api/set", R"({"settings": [{"parameter": "FG_WIDTH=8", "value": 1}]})", 400,
                  "no name"},
             Case{"POST", "/api/set", R"({"settings": [{"parameter": "--json", "value": 1}]})", 404,
                  "no parameter"},
             Case{"POST", "/api/set", R"({"settings": [{"parameter": "FG_WIDTH", "value": null}]})", 400,
                  "a value is"},
             Case{"POST", "/api/set",
                  R"({"settings": [{"parameter": "FG_WIDTH", "value": 8, "firstElement": 0}]})", 400,
                  "no elements"},
             Case{"POST", "/api/acquisition", R"({"action": "fly"})", 400, "run, single or stop"},
             Case{"POST", "/api/command", R"({"arguments": [1]})", 400, "a text"},
         }) {
        SCOPED_TRACE(std::string(method) + " " + target + " " + body);
        const Response response = ask(method, target, body);
        EXPECT_EQ(response.status, status);
        EXPECT_THAT(Json::parse(response.body)["error"]["message"].get<std::string>(), HasSubstr(says));
    }
    service.opened(1);
    for (const char* message : {"", "{}", R"({"type": "fly"})", R"({"type": "view", "fit": "wide"})",
                                R"({"type": "view", "region": [1, 2, 3]})", R"({"type": "ping", "more": 1})"})
        service.received(1, message);
    EXPECT_EQ(messages(1, "error", 6).size(), 6U);
    EXPECT_EQ(value("FG_WIDTH"), 1024);
}

TEST(StudioAccess, LetsOnlyItsOwnPageAsk) {
    const Access own("127.0.0.1", 8016, "");
    const Access open("0.0.0.0", 8016, "c0ffee");
    struct Case {
        const Access& access;
        Sender sender;
        int status;  ///< 0: may ask
    };
    for (const auto& [access, sender, status] :
         {Case{own, {.host = "127.0.0.1:8016"}, 0}, Case{own, {.host = "LocalHost"}, 0},
          Case{own, {.host = "[::1]:8016", .origin = "http://[::1]:8016", .fetchSite = "same-origin"}, 0},
          Case{own, {}, 403}, Case{own, {.host = "evil.example:8016"}, 403},
          Case{own, {.host = "192.168.1.5:8016"}, 403}, Case{own, {.host = "localhost.evil.example"}, 403},
          Case{own, {.host = "localhost:8016", .origin = "http://evil.example"}, 403},
          Case{own, {.host = "localhost:8016", .origin = "null"}, 403},
          Case{own, {.host = "localhost:8016", .origin = "http://localhost:9999"}, 403},
          Case{own, {.host = "localhost:8016", .fetchSite = "cross-site"}, 403},
          Case{open, {.host = "192.168.1.5:8016"}, 401},
          Case{open, {.host = "192.168.1.5:8016", .queryToken = "c0ffee"}, 0},
          Case{open, {.host = "192.168.1.5:8016", .authorization = "Bearer c0ffee"}, 0},
          Case{open, {.host = "192.168.1.5:8016", .authorization = "Bearer c0ffef"}, 401},
          Case{open, {.host = "192.168.1.5", .cookies = "a=b; marovine_studio_8016=c0ffee"}, 0},
          Case{open, {.host = "192.168.1.5", .cookies = "marovine_studio_8017=c0ffee"}, 401},
          Case{open, {.host = "evil.example", .queryToken = "c0ffee"}, 403}}) {
        SCOPED_TRACE(std::string(sender.host) + " " + std::string(sender.origin));
        const auto refusal = access.check(sender);
        EXPECT_EQ(refusal ? refusal->status : 0, status);
    }
    EXPECT_NE(newToken(), newToken());
    RateLimit limit(1, 3);
    EXPECT_TRUE(limit.take() && limit.take() && limit.take());
    EXPECT_FALSE(limit.take());
}

}  // namespace
