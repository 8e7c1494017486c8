#include "studio/Routes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

#include "base/AppletIdentity.h"
#include "command/Session.h"
#include "studio/Answers.h"
#include "studio/Base64.h"
#include "studio/Members.h"

namespace marovine::studio {

using host::Json;

// ---- for all answers ----

Response documentOf(std::string text) {
    return {.body = std::move(text)};
}

Response documentOf(const Json& document) {
    return {.body = host::printed(document)};
}

std::string pageOf(const Request& request) {
    const auto* page = request.find("page");
    return page != nullptr ? *page : std::string();
}

std::string nameOf(const Request& request, const char* otherwise) {
    const auto* name = request.find("name");
    return plainName(name != nullptr ? *name : "", otherwise);
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

namespace {

constexpr std::size_t kNoBody = 0;
constexpr std::size_t kJsonBody = std::size_t{64} * 1024;
constexpr std::size_t kTextBody = std::size_t{1024} * 1024;
constexpr std::size_t kLargeBody = std::size_t{64} * 1024 * 1024;

// ---- the studio, and what its commands say ----

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

/// A route that answers what a command prints.
template <const char* command>
Response printedBy(Studio& studio, const Request&) {
    return documentOf(studio.desk.output({command, "--json"}));
}

constexpr char kInfo[] = "info";
constexpr char kTree[] = "tree";
constexpr char kStatus[] = "status";
constexpr char kDefaults[] = "defaults";
constexpr char kEvents[] = "events";
constexpr char kWiring[] = "wiring";

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

// ---- the table ----

constexpr std::array routes{
    Route{"GET", "/api", kNoBody, Place::Board, overview},
    Route{"GET", "/api/info", kNoBody, Place::Board, printedBy<kInfo>},
    Route{"GET", "/api/parameters", kNoBody, Place::Board, parameters, {"pattern"}},
    Route{"GET", "/api/parameters/", kNoBody, Place::Board, parameter},
    Route{"GET", "/api/tree", kNoBody, Place::Board, printedBy<kTree>},
    Route{"GET", "/api/values", kNoBody, Place::Board, values, {"name"}},
    Route{"GET", "/api/status", kNoBody, Place::Board, printedBy<kStatus>},
    Route{"GET", "/api/defaults", kNoBody, Place::Board, printedBy<kDefaults>},
    Route{"GET", "/api/events", kNoBody, Place::Board, printedBy<kEvents>},
    Route{"GET", "/api/wiring", kNoBody, Place::Board, printedBy<kWiring>},
    Route{"GET", "/api/signals", kNoBody, Place::Board, signals, {"ms"}},
    Route{"GET", "/api/xml", kNoBody, Place::Board, xml},
    Route{"POST", "/api/set", kJsonBody, Place::Board, set},
    Route{"POST", "/api/undo", kNoBody, Place::Board, undo, {"change", "page"}},
    Route{"GET", "/api/history", kNoBody, Place::Board, history},
    Route{"GET", "/api/trace", kNoBody, Place::Board, trace, {"format"}},
    Route{"GET", "/api/lut", kNoBody, Place::Board, lut},
    Route{"GET", "/api/lut/file", kNoBody, Place::Board, lutFile},
    Route{"PUT", "/api/lut/file", kTextBody, Place::Board, putLut, {"name", "page"}},
    Route{"GET", "/api/configuration", kNoBody, Place::Board, configuration},
    Route{"PUT", "/api/configuration", kTextBody, Place::Board, putConfiguration, {"name", "page"}},
    Route{"POST", "/api/configuration/check", kTextBody, Place::Board, checkConfiguration, {"name"}},
    Route{"POST", "/api/configuration/diff", kTextBody, Place::Board, diffConfiguration, {"name"}},
    Route{"GET", "/api/acquisition", kNoBody, Place::Board, acquisition},
    Route{"POST", "/api/acquisition", kJsonBody, Place::Board, postAcquisition},
    Route{"GET",
          "/api/picture",
          kNoBody,
          Place::Pictures,
          picture,
          {"format", "x", "y", "width", "height", "fit"}},
    Route{
        "GET", "/api/picture/histogram", kNoBody, Place::Pictures, histogram, {"x", "y", "width", "height"}},
    Route{"GET", "/api/world", kNoBody, Place::Board, world},
    Route{"PATCH", "/api/world", kJsonBody, Place::Board, patchWorld},
    Route{"PUT", "/api/world", kTextBody, Place::Board, putWorld, {"name"}},
    Route{"PUT", "/api/world/scene", kLargeBody, Place::Board, putScene, {"fieldWidth"}},
    Route{"DELETE", "/api/world/scene", kNoBody, Place::Board, deleteScene},
    Route{"POST", "/api/command", kLargeBody, Place::Board, command},
};

}  // namespace

bool Route::takes(std::string_view asked) const {
    const std::string_view own = path;
    if (!own.ends_with('/')) return asked == own;
    return asked.size() > own.size() && asked.starts_with(own) && asked.find('/', own.size()) == asked.npos;
}

void Route::requireKnownQuery(const Request& request) const {
    for (const auto& [name, value] : request.query) {
        if (name == "token" || std::ranges::find(query, std::string_view(name)) != query.end()) continue;
        std::string known;
        for (const auto& one : query)
            if (!one.empty()) known += (known.empty() ? "" : ", ") + std::string(one);
        throw BadRequest("the query of " + request.path + " has no " + name + "; there " +
                         (known.empty() ? "is nothing to name" : "are: " + known));
    }
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
    if (is(static_cast<host::Refused*>(nullptr)) || is(static_cast<Conflict*>(nullptr))) status = kConflict;
    return {.status = status, .body = desk != nullptr ? desk->failureText(error) : errorText(error.what())};
}

}  // namespace marovine::studio
