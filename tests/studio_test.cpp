/// The studio's interface: what a page and programs ask, what they are told, and who may not ask.

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "studio/Access.h"
#include "studio/Base64.h"
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

/// A list of parameters without its read-outs, which move by themselves; other documents as they are.
Json settings(Json document) {
    if (document.is_array() && document[0].contains("readOut"))
        std::erase_if(document.get_ref<Json::array_t&>(),
                      [](const Json& entry) { return entry["readOut"] == true; });
    return document;
}

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
    // Only who knows of the last change takes it back by its number.
    EXPECT_EQ(ask("POST", "/api/undo?change=1").status, 409);
    EXPECT_EQ(get("/api/history")["changes"].size(), 4U);
    EXPECT_EQ(ask("POST", "/api/undo?change=4").status, 200);
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
             Case{"GET", "/api/picture?fit=0x0", "", 400, "more than 0"},
             Case{"GET", "/api/picture?foo=1", "", 400, "has no foo; there are: format, x"},
             Case{"GET", "/api?foo=1", "", 400, "nothing to name"},
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
}  // namespace marovine::studio
