#pragma once

/// Requests and answers as the studio sees them, without the web library behind them: its headers take long
/// to compile, so only the sources of server and client include it.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace marovine::studio {

/// A request whose sender may ask.
struct Request {
    std::string method;  ///< "GET"; a HEAD arrives as a GET
    std::string path;    ///< decoded, without the query
    std::vector<std::pair<std::string, std::string>> query{};
    std::string body{};

    /// The first value of a name in the query; null when there is none.
    const std::string* find(std::string_view name) const;
};

struct Response {
    int status = 200;
    std::string type = "application/json";
    std::string body{};
    std::vector<std::pair<std::string, std::string>> headers{};
};

/// Splits a request's target, "/api/values?name=FG_WIDTH", and decodes it; nothing for one that makes no
/// sense.
struct Target {
    std::string path;
    std::vector<std::pair<std::string, std::string>> query;
};
std::optional<Target> parseTarget(std::string_view target);

/// Gives the answer to a request, from whatever thread; to be called once.
using Reply = std::function<void(Response)>;

/// A WebSocket that is open, by a number of its own.
using Peer = std::uint64_t;

/// A message for WebSockets; shared, as many may get the same.
struct Message {
    std::shared_ptr<const std::string> content;
    bool binary = false;
};

/// What stands behind the server. All functions are called in the server's thread and must not wait.
class Application {
 public:
    Application() = default;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    virtual ~Application() = default;

    /// The largest body that a path takes, in bytes; 0 for none.
    virtual std::size_t largestBody(const std::string& method, const std::string& path) const = 0;
    virtual void answer(Request request, Reply reply) = 0;
    /// A WebSocket was opened at `kSocketPath`, said something, or is gone.
    virtual void opened(Peer peer) = 0;
    virtual void received(Peer peer, std::string message) = 0;
    virtual void closed(Peer peer) = 0;
};

inline constexpr const char* kSocketPath = "/api/live";

/// The document of an error that no command told.
std::string errorText(std::string_view message);
Response errorResponse(int status, std::string_view message);

}  // namespace marovine::studio
