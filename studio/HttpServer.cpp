#include "studio/HttpServer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <limits>
#include <thread>
#include <utility>

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include "client/Failure.h"
#include "studio/HttpParts.h"

namespace marovine::studio {

namespace {

constexpr std::size_t kMostConnections = 128;
constexpr unsigned kLongestHeader = 16 * 1024;
constexpr auto kPatience = std::chrono::milliseconds(300);  ///< for farewells at the end
constexpr auto kFarewell = std::chrono::seconds(2);
constexpr std::size_t kMostDrained = std::size_t{16} * 1024 * 1024;

/// What a page may load, and who may show it: nobody but the studio.
constexpr const char* kPolicy =
    "default-src 'self'; img-src 'self' blob: data:; style-src 'self' 'unsafe-inline'; connect-src 'self'; "
    "frame-ancestors 'none'; base-uri 'none'; form-action 'self'";

std::string_view view(beast::string_view text) {
    return {text.data(), text.size()};
}

}  // namespace

/// A connection that asks one thing after the other.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
    Connection(HttpServer::Parts& server, tcp::socket socket) : server_(server), stream_(std::move(socket)) {
        ++server_.connections;
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        --server_.connections;
        server_.open.erase(this);
    }

    void start() {
        server_.open[this] = weak_from_this();
        read();
    }

    void close() {
        Error ignored;
        stream_.socket().shutdown(tcp::socket::shutdown_both, ignored);
        stream_.close();
    }

 private:
    using Parser = http::request_parser<http::string_body>;

    void read() {
        parser_.emplace();
        parser_->header_limit(kLongestHeader);
        parser_->body_limit(
            std::numeric_limits<std::uint64_t>::max());  // the path's own when the header is known
        stream_.expires_after(kIdle);
        http::async_read_header(stream_, buffer_, *parser_,
                                [self = shared_from_this()](Error error, std::size_t) {
                                    if (error) return self->failed(error);
                                    self->takeHeader();
                                });
    }

    void failed(Error error) {
        constexpr int kBadRequest = 400;
        constexpr int kTooLargeHeader = 431;
        constexpr int kTooLarge = 413;
        if (error == http::error::body_limit)
            return refuse({kTooLarge, "the body is larger than this path takes"});
        if (error == http::error::header_limit) return refuse({kTooLargeHeader, "the header is too long"});
        const bool gone = error == http::error::end_of_stream || error == http::error::partial_message;
        if (!gone && error.category() == http::make_error_code(http::error::bad_method).category())
            return refuse({kBadRequest, "this is no HTTP request: " + error.message()});
        close();
    }

    /// Answers what is not to be read to its end, and closes.
    void refuse(const Access::Refusal& refusal) {
        closing_ = true;
        send(errorResponse(refusal.status, refusal.message));
    }

    std::string_view field(http::field name) const { return view(parser_->get()[name]); }

    void takeHeader() {
        const auto& request = parser_->get();
        const auto target = parseTarget(view(request.target()));
        constexpr int kBadRequest = 400;
        if (!target) return refuse({kBadRequest, "the address makes no sense"});
        request_ = {.method = std::string(view(request.method_string())),
                    .path = target->path,
                    .query = target->query};
        isHead_ = request_.method == "HEAD";
        if (isHead_) request_.method = "GET";
        if (const auto refusal = refusalOf()) return refuse(*refusal);
        if (beast::websocket::is_upgrade(request)) return upgrade();
        readBody();
    }

    /// Why the sender may not ask, or not for this.
    std::optional<Access::Refusal> refusalOf() {
        constexpr int kTooLarge = 413;
        constexpr int kTooMany = 429;
        constexpr int kUnavailable = 503;
        const std::string* token = request_.find("token");
        if (auto refusal = server_.access->check(
                {.host = field(http::field::host),
                 .origin = field(http::field::origin),
                 .fetchSite = view(parser_->get()["Sec-Fetch-Site"]),
                 .authorization = field(http::field::authorization),
                 .cookies = field(http::field::cookie),
                 .queryToken = token != nullptr ? std::string_view(*token) : std::string_view()}))
            return refusal;
        if (server_.connections > kMostConnections)
            return Access::Refusal{kUnavailable, "too many connections are open; close some"};
        if (!rate_.take()) return Access::Refusal{kTooMany, "too many requests; wait a moment"};
        const std::size_t largest = server_.application->largestBody(request_.method, request_.path);
        const auto length = parser_->content_length();
        if (length && *length > largest)
            return Access::Refusal{kTooLarge, "a body of " + std::to_string(*length) +
                                                  " bytes is larger than the " + std::to_string(largest) +
                                                  " that this path takes"};
        parser_->body_limit(largest);
        return std::nullopt;
    }

    void upgrade() {
        constexpr int kNotFound = 404;
        if (request_.path != kSocketPath)
            return refuse({kNotFound, std::string("the WebSocket is at ") + kSocketPath});
        stream_.expires_never();
        acceptSocket(server_, std::move(stream_), parser_->release());
    }

    void readBody() {
        // A sender of much asks first whether it may.
        if (beast::iequals(parser_->get()[http::field::expect], "100-continue")) {
            const auto go = std::make_shared<http::response<http::empty_body>>(http::status::continue_, 11);
            http::async_write(stream_, *go, [self = shared_from_this(), go](Error error, std::size_t) {
                if (error) return self->close();
                self->readRest();
            });
            return;
        }
        readRest();
    }

    void readRest() {
        http::async_read(stream_, buffer_, *parser_, [self = shared_from_this()](Error error, std::size_t) {
            if (error) return self->failed(error);
            self->takeRequest();
        });
    }

    void takeRequest() {
        auto message = parser_->release();
        closing_ = !message.keep_alive();
        request_.body = std::move(message.body());
        const auto& access = *server_.access;
        if (!access.token().empty() && request_.find("token") != nullptr &&
            !request_.path.starts_with("/api")) {
            // The page comes again without the token, which so stays out of the browser's history.
            constexpr int kSeeOther = 303;
            return send({.status = kSeeOther,
                         .headers = {{"Set-Cookie", access.cookie()}, {"Location", request_.path}}});
        }
        stream_.expires_never();
        server_.answering.emplace(this, shared_from_this());
        // The answer comes from another thread, perhaps when connection and server are gone.
        server_.application->answer(std::move(request_), [server = server_.weak_from_this(),
                                                          weak = weak_from_this()](Response response) {
            const auto parts = server.lock();
            if (parts == nullptr) return;
            asio::post(parts->io, [weak, response = std::move(response)]() mutable {
                if (const auto self = weak.lock()) self->answered(std::move(response));
            });
        });
    }

    void answered(Response response) {
        if (!server_.stopping) send(std::move(response));
        server_.answering.erase(this);
    }

    void send(Response response) {
        const auto answer = std::make_shared<http::response<http::string_body>>();
        constexpr unsigned kVersion = 11;
        answer->version(kVersion);
        answer->result(static_cast<unsigned>(response.status));
        answer->keep_alive(!closing_);
        answer->set(http::field::content_type, response.type);
        answer->set(http::field::cache_control, "no-store");
        answer->set("X-Content-Type-Options", "nosniff");
        answer->set("Cross-Origin-Resource-Policy", "same-origin");
        answer->set("Referrer-Policy", "no-referrer");
        answer->set("Content-Security-Policy", kPolicy);
        constexpr int kTooMany = 429;
        if (response.status == kTooMany) answer->set(http::field::retry_after, "1");
        for (const auto& [name, value] : response.headers) answer->set(name, value);
        answer->content_length(response.body.size());
        if (!isHead_) answer->body() = std::move(response.body);
        stream_.expires_after(kIdle);
        http::async_write(stream_, *answer, [self = shared_from_this(), answer](Error error, std::size_t) {
            if (error) return self->close();
            if (!self->closing_) return self->read();
            Error ignored;
            self->stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
            self->stream_.expires_after(kFarewell);
            self->drain(0);
        });
    }

    /// Takes what still comes from a sender that is to read the answer: a connection closed with unread bytes
    /// takes the answer away from it.
    void drain(std::size_t taken) {
        if (taken > kMostDrained) return close();
        stream_.async_read_some(asio::buffer(waste_),
                                [self = shared_from_this(), taken](Error error, std::size_t size) {
                                    if (error) return self->close();
                                    self->drain(taken + size);
                                });
    }

    HttpServer::Parts& server_;
    beast::tcp_stream stream_;
    beast::flat_buffer buffer_;
    std::optional<Parser> parser_;
    Request request_;
    RateLimit rate_{kRequestsPerSecond, kBurst};
    std::array<char, 4096> waste_{};
    bool isHead_ = false;
    bool closing_ = false;
};

void HttpServer::Parts::accept() {
    acceptor.async_accept([this](Error error, tcp::socket socket) {
        if (stopping) return;
        if (!error) {
            Error ignored;
            socket.set_option(tcp::no_delay(true), ignored);
            std::make_shared<Connection>(*this, std::move(socket))->start();
        }
        accept();
    });
}

HttpServer::HttpServer(const Endpoint& endpoint) : parts_(std::make_shared<Parts>()) {
    constexpr unsigned kTried = 20;
    Error error;
    const auto address = asio::ip::make_address(endpoint.address, error);
    if (error)
        throw host::Failure(endpoint.address +
                            " is no address in digits; --listen takes one such as 192.168.1.5, or " +
                            "0.0.0.0 for all of this machine");
    tcp::acceptor& acceptor = parts_->acceptor;
    acceptor.open(address.is_v6() ? tcp::v6() : tcp::v4(), error);
    if (!error) acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    const unsigned first = endpoint.port != 0 ? endpoint.port : kUsualPort;
    const unsigned last = endpoint.port != 0 ? first : first + kTried;
    for (unsigned port = first; port <= last; ++port) {
        acceptor.bind({address, static_cast<unsigned short>(port)}, error);
        if (!error) acceptor.listen(asio::socket_base::max_listen_connections, error);
        if (error != asio::error::address_in_use) break;
    }
    if (error == asio::error::address_in_use)
        throw host::Failure(
            "port " + std::to_string(last) +
            " is in use, perhaps by another studio; name another with --port, or leave it out");
    if (error == boost::system::errc::address_not_available)
        throw host::Failure(endpoint.address + " is no address of this machine");
    if (error)
        throw host::Failure("listening on " + endpoint.address + " port " + std::to_string(first) +
                            " failed: " + error.message());
}

HttpServer::~HttpServer() {
    stop();
}

unsigned HttpServer::port() const {
    return parts_->acceptor.local_endpoint().port();
}

void HttpServer::start(Application& application, const Access& access) {
    parts_->application = &application;
    parts_->access = &access;
    parts_->accept();
    parts_->thread = std::thread([parts = parts_.get()] { parts->io.run(); });
}

void HttpServer::stop() {
    if (!parts_->thread.joinable()) return;
    asio::post(parts_->io, [parts = parts_.get()] {
        parts->stopping = true;
        parts->acceptor.close();
        const auto sockets = parts->sockets;
        for (const auto& [peer, weak] : sockets)
            if (const auto socket = weak.lock()) socket->sayGoodbye();
        const auto open = parts->open;
        for (const auto& [key, weak] : open)
            if (const auto connection = weak.lock()) connection->close();
        // Farewells need the other side; who does not answer is left.
        const auto timer = std::make_shared<asio::steady_timer>(parts->io, kPatience);
        timer->async_wait([parts, timer](Error) { parts->io.stop(); });
    });
    parts_->thread.join();
}

void HttpServer::send(Peer peer, Message message) {
    asio::post(parts_->io, [parts = parts_.get(), peer, message = std::move(message)]() mutable {
        const auto found = parts->sockets.find(peer);
        if (found == parts->sockets.end()) return;
        if (const auto socket = found->second.lock()) socket->send(std::move(message));
    });
}

}  // namespace marovine::studio
