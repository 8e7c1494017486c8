#pragma once

/// What a web server and its connections have in common. It includes the web library: for the server's own
/// sources only.

#include <chrono>
#include <cstddef>
#include <memory>
#include <thread>
#include <unordered_map>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include "studio/Access.h"
#include "studio/Http.h"
#include "studio/HttpServer.h"

namespace marovine::studio {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using Error = boost::system::error_code;

inline constexpr auto kIdle = std::chrono::seconds(60);
inline constexpr double kRequestsPerSecond = 200;  ///< of one connection
inline constexpr double kBurst = 400;

/// A WebSocket, as its server sees it.
class Socket {
 public:
    Socket() = default;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    virtual ~Socket() = default;
    virtual void send(Message message) = 0;
    /// Ends it after what waits to be sent.
    virtual void sayGoodbye() = 0;
};

class Connection;

/// Connections live in the operations that they wait for, and these in `io`: whatever is under way when the
/// server ends goes with it.
struct HttpServer::Parts : std::enable_shared_from_this<HttpServer::Parts> {
    std::thread thread;
    Application* application = nullptr;
    const Access* access = nullptr;
    std::size_t connections = 0;
    bool stopping = false;
    Peer lastPeer = 0;
    std::unordered_map<Peer, std::weak_ptr<Socket>> sockets;
    std::unordered_map<Connection*, std::weak_ptr<Connection>> open;
    // A connection that ends looks at all of the above.
    asio::io_context io{1};
    tcp::acceptor acceptor{io};
    std::unordered_map<Connection*, std::shared_ptr<Connection>>
        answering;  ///< they wait for the application

    void accept();
};

/// Answers the request for a WebSocket.
void acceptSocket(HttpServer::Parts& server, beast::tcp_stream stream,
                  const http::request<http::string_body>& request);

}  // namespace marovine::studio
