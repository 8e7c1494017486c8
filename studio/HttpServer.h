#pragma once

/// The web server: connections, their limits, and WebSockets, in one thread of its own.

#include <memory>
#include <string>

#include "studio/Access.h"
#include "studio/Http.h"

namespace marovine::studio {

/// Where to listen.
struct Endpoint {
    std::string address = "127.0.0.1";
    unsigned port = 0;  ///< 0: `kUsualPort`, or the next free one
};

inline constexpr unsigned kUsualPort = 8016;

class HttpServer {
 public:
    /// Takes the port. Throws `Failure` with what to do when it is taken or the address is none of this
    /// machine.
    explicit HttpServer(const Endpoint& endpoint);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    unsigned port() const;
    /// Begins to answer. Both must outlive `stop`.
    void start(Application& application, const Access& access);
    /// Closes every connection and ends the thread. Replies that come later lead nowhere.
    void stop();

    /// Sends a message to a WebSocket that may be gone; from any thread. One that has too much waiting is
    /// closed.
    void send(Peer peer, Message message);

 public:
    struct Parts;  ///< known to the connections only

 private:
    std::shared_ptr<Parts> parts_;
};

}  // namespace marovine::studio
