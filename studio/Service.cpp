#include "studio/Service.h"

#include <array>
#include <limits>
#include <utility>

#include "studio/Members.h"
#include "studio/PageFiles.h"

namespace marovine::studio {

using host::Json;

namespace {

constexpr std::size_t kMostJobs = 64;
constexpr auto kTelling = std::chrono::milliseconds(500);

/// The name of a page in messages.
std::string pageName(Peer peer) {
    return "k" + std::to_string(peer);
}

Json errorMessage(std::string_view text) {
    return {{"type", "error"},
            {"error", Json{{"message", text}, {"code", Json()}, {"advice", Json::array()}, {"status", 1}}}};
}

Region regionIn(const Json::Array& corners) {
    constexpr std::size_t kNumbers = 4;
    std::array<std::uint32_t, kNumbers> numbers{};
    if (corners.size() != kNumbers) throw BadRequest("region has not four numbers: x, y, width, height");
    for (std::size_t i = 0; i < kNumbers; ++i) {
        const auto number = corners[i].number();
        if (!number || !(*number >= 0 && *number <= std::numeric_limits<std::uint32_t>::max()))
            throw BadRequest("region has something else than numbers from 0 on");
        numbers[i] = static_cast<std::uint32_t>(*number);
    }
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

}  // namespace

Service::Service(host::Applet& applet, GivenFiles given, Send send)
    : send_(std::move(send)),
      given_(std::move(given)),
      gallery_(
          std::make_unique<Gallery>([this] { return desk_ ? desk_->camera().newest() : nullptr; },
                                    [this](Peer peer, Message message) { send_(peer, std::move(message)); })),
      desk_(std::make_unique<Desk>(
          applet, given_.world, [this](const char* type, const Json& message) { tellAll(type, message); },
          [this] { gallery_->wake(); })),
      pictures_(kMostJobs),
      board_(kMostJobs),
      watcher_([this] { watch(kTelling); }) {}

Service::~Service() {
    {
        const std::lock_guard lock(watchMutex_);
        ending_ = true;
        watchEnds_.notify_one();
    }
    watcher_.join();
    pictures_.stop();
    board_.stop();
    gallery_->stop();
    desk_.reset();
}

// ---- requests ----

std::size_t Service::largestBody(const std::string& method, const std::string& path) const {
    const Route* route = findRoute(method, path);
    return route != nullptr ? route->largestBody : 0;
}

Response Service::answerElsewhere(const Request& request) {
    constexpr int kNotFound = 404;
    constexpr int kOtherMethod = 405;
    const bool isApi = request.path == "/api" || request.path.starts_with("/api/");
    if (const std::string methods = methodsOf(request.path); !methods.empty()) {
        Response response = errorResponse(kOtherMethod, request.path + " takes " + methods);
        response.headers.emplace_back("Allow", methods);
        return response;
    }
    if (isApi)
        return errorResponse(kNotFound,
                             "there is no path " + request.path + "; docs/STUDIO-API.md lists them");
    if (const auto* file = findPageFile(request.path)) {
        if (request.method != "GET") {
            Response response = errorResponse(kOtherMethod, request.path + " takes GET");
            response.headers.emplace_back("Allow", "GET");
            return response;
        }
        return {.type = contentTypeOf(file->path), .body = std::string(file->content)};
    }
    return errorResponse(kNotFound, "the page has no file " + request.path);
}

void Service::answer(Request request, Reply reply) {
    const Route* route = findRoute(request.method, request.path);
    if (route == nullptr) return reply(answerElsewhere(request));
    Worker& worker = route->place == Place::Board ? board_ : pictures_;
    const bool taken =
        worker.post([this, route, request = std::move(request), reply] { reply(carryOut(*route, request)); });
    constexpr int kUnavailable = 503;
    if (!taken)
        reply(errorResponse(kUnavailable, "too many requests wait for the board; try again in a moment"));
}

Response Service::carryOut(const Route& route, const Request& request) {
    Desk* const desk = route.place == Place::Board ? desk_.get() : nullptr;
    try {
        route.requireKnownQuery(request);
        Studio studio{.desk = *desk_, .config = given_.config.filename().string()};
        studio.uptime = std::chrono::duration<double>(Clock::now() - start_).count();
        {
            const std::lock_guard lock(mutex_);
            studio.pages = peers_.size();
        }
        Response response = route.answer(studio, request);
        if (desk != nullptr && request.method != "GET") desk->tidy();
        return response;
    } catch (const std::exception& error) {
        try {
            return failed(desk, error);
        } catch (const std::exception& further) {
            constexpr int kBroken = 500;
            return errorResponse(kBroken, further.what());
        }
    }
}

// ---- pages ----

void Service::tell(Peer peer, const Json& message) {
    send_(peer, {std::make_shared<const std::string>(host::printedOnOneLine(message)), false});
}

void Service::tellAll(const char* type, const Json& message) {
    Json whole{{"type", type}};
    if (const auto* members = message.as<Json::Object>())
        for (const auto& [name, member] : *members) whole[name] = member;
    const Message shared{std::make_shared<const std::string>(host::printedOnOneLine(whole)), false};
    const std::lock_guard lock(mutex_);
    for (const Peer peer : peers_) send_(peer, shared);
}

void Service::opened(Peer peer) {
    const bool taken = board_.post([this, peer] {
        // Greeted and entered in the board's thread, so that no change falls between the two.
        tell(peer, {{"type", "hello"},
                    {"page", pageName(peer)},
                    {"instance", instance_},
                    {"revision", desk_->revision()},
                    {"acquisition", desk_->acquisition()}});
        const std::lock_guard lock(mutex_);
        if (gone_.erase(peer) == 0) peers_.insert(peer);
    });
    if (!taken) tell(peer, errorMessage("the board is too busy; connect again"));
}

void Service::closed(Peer peer) {
    gallery_->leave(peer);
    const std::lock_guard lock(mutex_);
    if (peers_.erase(peer) == 0) gone_.insert(peer);
}

void Service::received(Peer peer, std::string message) {
    try {
        handle(peer, documentIn(message));
    } catch (const host::Failure& failure) {
        tell(peer, errorMessage(failure.what()));
    }
}

void Service::handle(Peer peer, const Json& message) {
    const Json* type = message.find("type");
    const auto* name = type != nullptr ? type->as<std::string>() : nullptr;
    if (name == nullptr) throw BadRequest("a message has a member type, a text");
    if (*name == "ping") {
        const Members members(message, "ping", {"type"});
        tell(peer, {{"type", "pong"}});
    } else if (*name == "shown") {
        const Members members(message, "shown", {"type", "number"});
        gallery_->ready(peer);
    } else if (*name == "view") {
        const Members members(message, "view", {"type", "on", "fit", "region"});
        View view;
        if (const Json* region = members.find("region"); region && region->as<std::nullptr_t>() == nullptr)
            view.region = regionIn(members.array("region"));
        if (const auto text = members.maybeText("fit")) {
            const auto fit = parseFit(*text);
            if (!fit) throw BadRequest("fit is WIDTHxHEIGHT, each at most 65536, one of them more than 0");
            view.fit = *fit;
        }
        if (members.maybeBool("on").value_or(true)) {
            gallery_->show(peer, view);
        } else {
            gallery_->leave(peer);
        }
    } else {
        throw BadRequest("there is no message " + *name + "; there are: view, shown, ping");
    }
}

void Service::watch(std::chrono::milliseconds step) {
    std::unique_lock lock(watchMutex_);
    while (!watchEnds_.wait_for(lock, step, [this] { return ending_; }))
        static_cast<void>(board_.post([this] { desk_->tick(); }));
}

}  // namespace marovine::studio
