#include "studio/Routes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

#include "base/AppletIdentity.h"
#include "command/Session.h"
#include "pictures/Png.h"
#include "studio/Base64.h"
#include "studio/Members.h"
#include "studio/Pictures.h"

namespace marovine::studio {

namespace fs = std::filesystem;
using host::Json;
using virtualboard::imaging::Image;

namespace {

constexpr std::size_t kNoBody = 0;
constexpr std::size_t kJsonBody = std::size_t{64} * 1024;
constexpr std::size_t kTextBody = std::size_t{1024} * 1024;
constexpr std::size_t kLargeBody = std::size_t{64} * 1024 * 1024;
constexpr int kConflict = 409;

using Words = std::vector<std::string>;

Response documentOf(std::string text) {
    return {.body = std::move(text)};
}

Response documentOf(const Json& document) {
    return {.body = host::printed(document)};
}

/// A route that answers what a command prints.
template <const char* command>
Response printedBy(Studio& studio, const Request&) {
    return documentOf(studio.desk.output({command, "--json"}));
}

// ---- names that are arguments of templates ----

constexpr char kInfo[] = "info";
constexpr char kTree[] = "tree";
constexpr char kStatus[] = "status";
constexpr char kDefaults[] = "defaults";
constexpr char kEvents[] = "events";
constexpr char kWiring[] = "wiring";

// ---- parameters ----

Response overview(Studio& studio, const Request&) {
    Desk& desk = studio.desk;
    const auto history = desk.history();
    return documentOf(Json{{"name", "Marovine"},
                           {"version", identity::version},
                           {"api", 1},
                           {"revision", desk.revision()},
                           {"changes", history.find("changes")->size()},
                           {"uptime", studio.uptime},
                           {"config", studio.config.empty() ? Json() : Json(studio.config)},
                           {"world", *desk.world().json().find("file")},
                           {"acquisition", desk.acquisition()},
                           {"pages", studio.pages}});
}

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
    const Json result = studio.desk.change(title, members.maybeText("page").value_or(""),
                                           [&] { return host::parsedJson(studio.desk.output(words)); });
    Response response = documentOf(result);
    if (result.find("refused") != nullptr) response.status = kConflict;
    return response;
}

std::string pageOf(const Request& request) {
    const auto* page = request.find("page");
    return page != nullptr ? *page : std::string();
}

Response undo(Studio& studio, const Request& request) {
    return documentOf(studio.desk.undo(pageOf(request)));
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

std::string nameOf(const Request& request, const char* otherwise) {
    const auto* name = request.find("name");
    return plainName(name != nullptr ? *name : "", otherwise);
}

Response lut(Studio& studio, const Request&) {
    return documentOf(studio.desk.output({"lut", "show", "--json"}));
}

Response lutFile(Studio& studio, const Request&) {
    return download("text/plain", "tables.lut", writtenBy(studio, {"lut", "save", "--"}, "tables.lut"));
}

Response putLut(Studio& studio, const Request& request) {
    const std::string name = nameOf(request, "tables.lut");
    const fs::path file = studio.desk.folder().keep(name, request.body);
    return documentOf(studio.desk.change("loading " + name, pageOf(request), [&] {
        return host::parsedJson(
            studio.desk.output({"lut", "load", "--json", "--trace=-", "--", file.string()}));
    }));
}

Response configuration(Studio& studio, const Request&) {
    return download("text/plain", "marovine.mcf", writtenBy(studio, {"save", "--"}, "marovine.mcf"));
}

Response putConfiguration(Studio& studio, const Request& request) {
    const std::string name = nameOf(request, "configuration.mcf");
    const fs::path file = studio.desk.keepConfiguration(name, request.body);
    return documentOf(studio.desk.change("loading " + name, pageOf(request), [&] {
        return host::parsedJson(studio.desk.output({"load", "--json", "--trace=-", "--", file.string()}));
    }));
}

template <const char* command>
Response aboutConfiguration(Studio& studio, const Request& request) {
    const fs::path file = studio.desk.keepConfiguration(nameOf(request, "configuration.mcf"), request.body);
    return documentOf(studio.desk.output({command, "--json", "--", file.string()}));
}

constexpr char kCheck[] = "check";
constexpr char kDiff[] = "diff";

// ---- pictures ----

Response acquisition(Studio& studio, const Request&) {
    return documentOf(studio.desk.acquisition());
}

Response postAcquisition(Studio& studio, const Request& request) {
    using Action = std::pair<std::string_view, Camera::State>;
    static constexpr std::array actions{Action{"run", Camera::State::Running},
                                        Action{"single", Camera::State::Single},
                                        Action{"stop", Camera::State::Stopped}};
    const Json document = documentIn(request.body);
    const std::string action = Members(document, "the request", {"action"}).text("action");
    const auto* found = std::ranges::find(actions, action, &Action::first);
    if (found == actions.end()) throw BadRequest("action is run, single or stop");
    studio.desk.acquire(found->second);
    return acquisition(studio, request);
}

std::uint32_t wholeIn(const Request& request, const char* name, std::uint32_t otherwise) {
    const auto* text = request.find(name);
    if (text == nullptr) return otherwise;
    std::uint32_t number = 0;
    const char* end = text->data() + text->size();
    const auto read = std::from_chars(text->data(), end, number);
    if (read.ec != std::errc{} || read.ptr != end)
        throw BadRequest(std::string(name) + " is no whole number");
    return number;
}

std::shared_ptr<const Shot> newestShot(Studio& studio) {
    auto shot = studio.desk.camera().newest();
    if (!shot)
        throw NotFound("no picture has been taken yet; POST {\"action\": \"single\"} to /api/acquisition");
    return shot;
}

View viewIn(const Request& request) {
    constexpr std::uint32_t kAll = std::numeric_limits<std::uint32_t>::max();
    View view;
    view.region = Region{wholeIn(request, "x", 0), wholeIn(request, "y", 0), wholeIn(request, "width", kAll),
                         wholeIn(request, "height", kAll)};
    if (const auto* text = request.find("fit")) {
        const auto fit = parseFit(*text);
        if (!fit) throw BadRequest("fit is WIDTHxHEIGHT, each at most 65536");
        view.fit = *fit;
    }
    return view;
}

Response picture(Studio& studio, const Request& request) {
    const View view = viewIn(request);
    const auto shot = newestShot(studio);
    const Region region = regionOf(view, shot->image);
    const Image image = shown(shot->image, region, view.fit);
    const auto* format = request.find("format");
    const std::string kind = format != nullptr ? *format : "png";
    if (image.pixels.empty()) throw BadRequest("the region lies outside the picture");
    Response response{.type = "application/octet-stream"};
    if (kind == "png") {
        response.type = "image/png";
        const auto bytes = virtualboard::imaging::encodePng(image);
        response.body.assign(bytes.begin(), bytes.end());
    } else if (kind == "bgr") {
        const auto bytes = image.bytes();
        response.body.assign(bytes.begin(), bytes.end());
    } else if (kind == "rgba") {
        appendRgba(response.body, image);
    } else {
        throw BadRequest("format is png, bgr or rgba");
    }
    const auto text = [](auto... numbers) {
        std::string joined;
        ((joined += (joined.empty() ? "" : ",") + std::to_string(numbers)), ...);
        return joined;
    };
    response.headers = {{"X-Picture-Number", text(shot->number)},
                        {"X-Picture-Width", text(image.width)},
                        {"X-Picture-Height", text(image.height)},
                        {"X-Picture-Whole", text(shot->image.width) + "x" + text(shot->image.height)},
                        {"X-Picture-Region", text(region.x, region.y, region.width, region.height)}};
    return response;
}

Response histogram(Studio& studio, const Request& request) {
    const View view = viewIn(request);
    const auto shot = newestShot(studio);
    const Region region = regionOf(view, shot->image);
    const Histogram counts = histogramOf(shot->image, region);
    const auto list = [](const auto& channel) {
        return Json(std::vector<std::uint64_t>(channel.begin(), channel.end()));
    };
    return {.body = host::printedOnOneLine({{"number", shot->number},
                                            {"pixels", std::uint64_t{region.width} * region.height},
                                            {"red", list(counts[2])},
                                            {"green", list(counts[1])},
                                            {"blue", list(counts[0])}})};
}

// ---- the world ----

Response world(Studio& studio, const Request&) {
    return documentOf(studio.desk.world().json());
}

Response patchWorld(Studio& studio, const Request& request) {
    const Json document = documentIn(request.body);
    return documentOf(studio.desk.changeWorld([&] { studio.desk.world().patch(document); }));
}

Response putWorld(Studio& studio, const Request& request) {
    const std::string name = nameOf(request, "world.json");
    return documentOf(studio.desk.changeWorld([&] { studio.desk.world().load(request.body, name); }));
}

Response putScene(Studio& studio, const Request& request) {
    const std::uint32_t fieldWidth = wholeIn(request, "fieldWidth", 0);
    const fs::path file = studio.desk.folder().keep("scene.png", request.body);
    const Image scene = virtualboard::imaging::readPng(file);
    studio.desk.folder().take(file);
    return documentOf(studio.desk.changeWorld([&] { studio.desk.world().setScene(scene, fieldWidth); }));
}

Response deleteScene(Studio& studio, const Request&) {
    return documentOf(studio.desk.changeWorld([&] { studio.desk.world().showTestChart(); }));
}

// ---- commands from elsewhere ----

Response command(Studio& studio, const Request& request) {
    constexpr std::int64_t kWidest = 10'000;
    constexpr std::size_t kMostArguments = 10'000;
    const Json document = documentIn(request.body);
    const Members members(document, "the request", {"arguments", "files", "width", "colour"});
    CommandRequest wanted;
    if (members.array("arguments").size() > kMostArguments) throw BadRequest("there are too many arguments");
    for (const auto& argument : members.array("arguments")) {
        const auto* text = argument.as<std::string>();
        if (text == nullptr) throw BadRequest("an argument is a text");
        wanted.arguments.push_back(*text);
    }
    wanted.width = static_cast<std::size_t>(members.maybeWhole("width", 0, kWidest).value_or(0));
    wanted.coloured = members.maybeBool("colour").value_or(false);
    if (members.find("files") != nullptr)
        for (const auto& file : members.array("files")) {
            const Members one(file, "a file", {"name", "base64"});
            auto content = fromBase64(one.text("base64"));
            if (!content) throw BadRequest("base64 of a file is no base64");
            wanted.files.push_back({one.text("name"), std::move(*content)});
        }
    const CommandOutcome outcome = studio.desk.command(wanted);
    Json files = Json::array();
    for (const auto& [name, content] : outcome.files)
        files.push_back({{"name", name}, {"base64", toBase64(content)}});
    return {.body = host::printedOnOneLine({{"status", outcome.status},
                                            {"output", outcome.output},
                                            {"errors", outcome.errors},
                                            {"files", std::move(files)}})};
}

constexpr std::array routes{
    Route{"GET", "/api", kNoBody, Place::Board, overview},
    Route{"GET", "/api/info", kNoBody, Place::Board, printedBy<kInfo>},
    Route{"GET", "/api/parameters", kNoBody, Place::Board, parameters},
    Route{"GET", "/api/parameters/", kNoBody, Place::Board, parameter},
    Route{"GET", "/api/tree", kNoBody, Place::Board, printedBy<kTree>},
    Route{"GET", "/api/values", kNoBody, Place::Board, values},
    Route{"GET", "/api/status", kNoBody, Place::Board, printedBy<kStatus>},
    Route{"GET", "/api/defaults", kNoBody, Place::Board, printedBy<kDefaults>},
    Route{"GET", "/api/events", kNoBody, Place::Board, printedBy<kEvents>},
    Route{"GET", "/api/wiring", kNoBody, Place::Board, printedBy<kWiring>},
    Route{"GET", "/api/signals", kNoBody, Place::Board, signals},
    Route{"GET", "/api/xml", kNoBody, Place::Board, xml},
    Route{"POST", "/api/set", kJsonBody, Place::Board, set},
    Route{"POST", "/api/undo", kNoBody, Place::Board, undo},
    Route{"GET", "/api/history", kNoBody, Place::Board, history},
    Route{"GET", "/api/trace", kNoBody, Place::Board, trace},
    Route{"GET", "/api/lut", kNoBody, Place::Board, lut},
    Route{"GET", "/api/lut/file", kNoBody, Place::Board, lutFile},
    Route{"PUT", "/api/lut/file", kTextBody, Place::Board, putLut},
    Route{"GET", "/api/configuration", kNoBody, Place::Board, configuration},
    Route{"PUT", "/api/configuration", kTextBody, Place::Board, putConfiguration},
    Route{"POST", "/api/configuration/check", kTextBody, Place::Board, aboutConfiguration<kCheck>},
    Route{"POST", "/api/configuration/diff", kTextBody, Place::Board, aboutConfiguration<kDiff>},
    Route{"GET", "/api/acquisition", kNoBody, Place::Board, acquisition},
    Route{"POST", "/api/acquisition", kJsonBody, Place::Board, postAcquisition},
    Route{"GET", "/api/picture", kNoBody, Place::Pictures, picture},
    Route{"GET", "/api/picture/histogram", kNoBody, Place::Pictures, histogram},
    Route{"GET", "/api/world", kNoBody, Place::Board, world},
    Route{"PATCH", "/api/world", kJsonBody, Place::Board, patchWorld},
    Route{"PUT", "/api/world", kTextBody, Place::Board, putWorld},
    Route{"PUT", "/api/world/scene", kLargeBody, Place::Board, putScene},
    Route{"DELETE", "/api/world/scene", kNoBody, Place::Board, deleteScene},
    Route{"POST", "/api/command", kLargeBody, Place::Board, command},
};

}  // namespace

bool Route::takes(std::string_view asked) const {
    const std::string_view own = path;
    if (!own.ends_with('/')) return asked == own;
    return asked.size() > own.size() && asked.starts_with(own) && asked.find('/', own.size()) == asked.npos;
}

std::span<const Route> allRoutes() {
    return routes;
}

const Route* findRoute(std::string_view method, std::string_view path) {
    const auto* found = std::ranges::find_if(
        routes, [&](const Route& route) { return route.takes(path) && method == route.method; });
    return found != routes.end() ? found : nullptr;
}

std::string methodsOf(std::string_view path) {
    std::string methods;
    for (const auto& route : routes)
        if (route.takes(path)) methods += (methods.empty() ? "" : ", ") + std::string(route.method);
    return methods;
}

Response failed(Desk* desk, const std::exception& error) {
    const auto is = [&]<class T>(const T*) { return dynamic_cast<const T*>(&error) != nullptr; };
    constexpr int kBadRequest = 400;
    constexpr int kNotFound = 404;
    constexpr int kUnreadable = 422;
    int status = kUnreadable;
    if (is(static_cast<BadRequest*>(nullptr)) || is(static_cast<host::UsageError*>(nullptr)))
        status = kBadRequest;
    if (is(static_cast<NotFound*>(nullptr)) || is(static_cast<host::UnknownName*>(nullptr)))
        status = kNotFound;
    if (is(static_cast<host::Refused*>(nullptr))) status = kConflict;
    return {.status = status, .body = desk != nullptr ? desk->failureText(error) : errorText(error.what())};
}

}  // namespace marovine::studio
