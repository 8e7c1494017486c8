#include <charconv>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "command/Session.h"
#include "studio/Answers.h"
#include "studio/Members.h"

namespace marovine::studio {

namespace fs = std::filesystem;
using host::Json;

namespace {

using Words = std::vector<std::string>;

/// Carries out a command that may move parameters; its document tells what it moved.
Json changeBy(Studio& studio, const std::string& title, const std::string& page, const Words& words) {
    return studio.desk.change(title, page, [&] { return host::parsedJson(studio.desk.output(words)); });
}

}  // namespace

// ---- parameters ----

Response parameters(Studio& studio, const Request& request) {
    Words words{"list", "--json"};
    if (const auto* pattern = request.find("pattern")) words.insert(words.end(), {"--", *pattern});
    return documentOf(studio.desk.output(words));
}

Response parameter(Studio& studio, const Request& request) {
    const std::string name = request.path.substr(request.path.find_last_of('/') + 1);
    return documentOf(studio.desk.output({"describe", "--json", "--", name}));
}

Response values(Studio& studio, const Request& request) {
    Words words{"get", "--json", "--"};
    for (const auto& [name, value] : request.query)
        if (name == "name") words.push_back(value);
    if (words.size() == 3) throw BadRequest("no name is given; ask for /api/values?name=FG_WIDTH");
    return documentOf(studio.desk.output(words));
}

Response signals(Studio& studio, const Request& request) {
    constexpr double kShortest = 0.1;
    constexpr double kLongest = 1000;
    constexpr double kUsual = 20;
    double ms = kUsual;
    if (const auto* text = request.find("ms")) {
        const char* end = text->data() + text->size();
        const auto read = std::from_chars(text->data(), end, ms);
        if (read.ec != std::errc{} || read.ptr != end || !(ms >= kShortest && ms <= kLongest))
            throw BadRequest("ms is no number from 0.1 to 1000");
    }
    return {.body = host::printedOnOneLine(studio.desk.signals(ms))};
}

namespace {

/// A value as one would type it.
std::string typed(const Json& value) {
    if (const auto* text = value.as<std::string>()) return *text;
    if (const auto* whole = value.as<std::uint64_t>()) return std::to_string(*whole);
    if (const auto* whole = value.as<std::int64_t>()) return std::to_string(*whole);
    if (const auto number = value.number()) return host::textOf(*number);
    const auto* elements = value.as<Json::Array>();
    if (elements == nullptr) throw BadRequest("a value is a number, a text, or an array of numbers");
    std::string text;
    for (const auto& element : *elements) {
        if (!element.number()) throw BadRequest("an element of a field is a number");
        text += (text.empty() ? "" : ",") + typed(element);
    }
    return text;
}

std::string settingIn(const Json& document) {
    const Members members(document, "a setting", {"parameter", "value", "firstElement"});
    constexpr std::int64_t kLastElement = std::numeric_limits<std::uint32_t>::max();
    std::string name = members.text("parameter");
    // What would be taken for another part of the setting.
    if (name.empty() || name.find_first_of("=[") != name.npos)
        throw BadRequest(name + " is no name of a parameter");
    if (const auto first = members.maybeWhole("firstElement", 0, kLastElement))
        name += '[' + std::to_string(*first) + ']';
    return name + '=' + typed(members.at("value"));
}

/// A setting for a title.
std::string shortened(const std::string& text) {
    constexpr std::size_t kLongest = 60;
    const auto equals = text.find('=');
    const std::string spaced = text.substr(0, equals) + " = " + text.substr(equals + 1);
    return spaced.size() > kLongest ? spaced.substr(0, kLongest) + "..." : spaced;
}

}  // namespace

Response set(Studio& studio, const Request& request) {
    constexpr std::size_t kMostSettings = 1000;
    const Json document = documentIn(request.body);
    const Members members(document, "the request", {"settings", "page"});
    const auto& settings = members.array("settings");
    if (settings.empty() || settings.size() > kMostSettings)
        throw BadRequest("settings has not 1 to 1000 elements");
    Words words{"set", "--json", "--trace=-", "--"};
    for (const auto& setting : settings) words.push_back(settingIn(setting));
    const std::string title = shortened(words[4]) + (settings.size() > 1 ? " and more" : "");
    const Json result = changeBy(studio, title, members.maybeText("page").value_or(""), words);
    Response response = documentOf(result);
    if (result.find("refused") != nullptr) response.status = kConflict;
    return response;
}

Response undo(Studio& studio, const Request& request) {
    std::optional<std::uint64_t> change;
    if (request.find("change") != nullptr) change = wholeIn(request, "change", 0);
    return documentOf(studio.desk.undo(pageOf(request), change));
}

Response history(Studio& studio, const Request&) {
    return documentOf(studio.desk.history());
}

Response trace(Studio& studio, const Request& request) {
    const auto* format = request.find("format");
    if (format == nullptr || *format == "json") return documentOf(studio.desk.trace().json());
    if (*format != "csv") throw BadRequest("format is json or csv");
    return {.type = "text/csv; charset=utf-8", .body = studio.desk.trace().csv()};
}

Response xml(Studio& studio, const Request&) {
    return {.type = "application/xml", .body = studio.desk.output({"xml"})};
}

// ---- files ----

namespace {

/// A file for a person to keep.
Response download(const char* type, const std::string& name, std::string content) {
    return {.type = type,
            .body = std::move(content),
            .headers = {{"Content-Disposition", "attachment; filename=\"" + name + "\""}}};
}

/// What a command writes into a file of this name.
std::string writtenBy(Studio& studio, Words words, const std::string& name) {
    const fs::path file = studio.desk.folder().makeRoom() / name;
    words.push_back(file.string());
    studio.desk.output(words);
    return studio.desk.folder().take(file);
}

Response aboutConfiguration(Studio& studio, const Request& request, const char* command) {
    const fs::path file = studio.desk.keepConfiguration(nameOf(request, "configuration.mcf"), request.body);
    return documentOf(studio.desk.output({command, "--json", "--", file.string()}));
}

}  // namespace

Response lut(Studio& studio, const Request&) {
    return documentOf(studio.desk.output({"lut", "show", "--json"}));
}

Response lutFile(Studio& studio, const Request&) {
    return download("text/plain", "tables.lut", writtenBy(studio, {"lut", "save", "--"}, "tables.lut"));
}

Response putLut(Studio& studio, const Request& request) {
    const std::string name = nameOf(request, "tables.lut");
    const fs::path file = studio.desk.folder().keep(name, request.body);
    return documentOf(changeBy(studio, "loading " + name, pageOf(request),
                               {"lut", "load", "--json", "--trace=-", "--", file.string()}));
}

Response configuration(Studio& studio, const Request&) {
    return download("text/plain", "marovine.mcf", writtenBy(studio, {"save", "--"}, "marovine.mcf"));
}

Response putConfiguration(Studio& studio, const Request& request) {
    const std::string name = nameOf(request, "configuration.mcf");
    const fs::path file = studio.desk.keepConfiguration(name, request.body);
    return documentOf(changeBy(studio, "loading " + name, pageOf(request),
                               {"load", "--json", "--trace=-", "--", file.string()}));
}

Response checkConfiguration(Studio& studio, const Request& request) {
    return aboutConfiguration(studio, request, "check");
}

Response diffConfiguration(Studio& studio, const Request& request) {
    return aboutConfiguration(studio, request, "diff");
}

}  // namespace marovine::studio
