/// The WebSockets of a web server.

#include <deque>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>

#include "studio/HttpParts.h"

namespace marovine::studio {

namespace {

namespace websocket = beast::websocket;

constexpr std::size_t kLargestMessage = std::size_t{64} * 1024;
constexpr std::size_t kMostWaiting = std::size_t{1024} * 1024;  ///< bytes of text for one WebSocket

/// It sends one message after the other; a page that does not take them is closed.
class PageSocket : public Socket, public std::enable_shared_from_this<PageSocket> {
 public:
    PageSocket(HttpServer::Parts& server, beast::tcp_stream stream)
        : server_(server), stream_(std::move(stream)) {
        ++server_.connections;
    }
    PageSocket(const PageSocket&) = delete;
    PageSocket& operator=(const PageSocket&) = delete;
    ~PageSocket() override { --server_.connections; }

    void accept(const http::request<http::string_body>& request) {
        auto timeouts = websocket::stream_base::timeout::suggested(beast::role_type::server);
        timeouts.idle_timeout = kIdle;
        timeouts.keep_alive_pings = true;
        stream_.set_option(timeouts);
        stream_.read_message_max(kLargestMessage);
        stream_.async_accept(request, [self = shared_from_this()](Error error) {
            if (error || self->server_.stopping) return;
            self->peer_ = ++self->server_.lastPeer;
            self->server_.sockets[self->peer_] = self;
            self->server_.application->opened(self->peer_);
            self->read();
        });
    }

    void send(Message message) override {
        if (closing_) return;
        if (!message.binary) waiting_ += message.content->size();
        queue_.push_back(std::move(message));
        if (waiting_ > kMostWaiting) return close(websocket::close_code::try_again_later);
        if (queue_.size() == 1) write();
    }

    void sayGoodbye() override { close(websocket::close_code::going_away); }

 private:
    void close(websocket::close_code code) {
        if (std::exchange(closing_, true)) return;
        forget();
        // What was said before is heard before.
        if (!queue_.empty() && code == websocket::close_code::going_away) {
            goesAfterQueue_ = true;
            return;
        }
        // A write under way would have to end before a proper farewell; a page that takes nothing gets none.
        if (!queue_.empty() && code == websocket::close_code::try_again_later)
            return beast::get_lowest_layer(stream_).close();
        stream_.async_close(code, [self = shared_from_this()](Error) {});
    }

    void read() {
        stream_.async_read(buffer_, [self = shared_from_this()](Error error, std::size_t) {
            if (error) return self->forget();
            if (!self->rate_.take()) return self->close(websocket::close_code::policy_error);
            if (self->stream_.got_text() && !self->closing_)
                self->server_.application->received(self->peer_,
                                                    beast::buffers_to_string(self->buffer_.data()));
            self->buffer_.consume(self->buffer_.size());
            self->read();
        });
    }

    void write() {
        stream_.binary(queue_.front().binary);
        const auto content = queue_.front().content;
        stream_.async_write(
            asio::buffer(*content), [self = shared_from_this(), content](Error error, std::size_t) {
                if (error) return self->forget();
                if (!self->queue_.front().binary) self->waiting_ -= content->size();
                self->queue_.pop_front();
                if (!self->queue_.empty() && (!self->closing_ || self->goesAfterQueue_)) return self->write();
                if (std::exchange(self->goesAfterQueue_, false))
                    self->stream_.async_close(websocket::close_code::going_away, [self](Error) {});
            });
    }

    void forget() {
        if (server_.sockets.erase(peer_) != 0) server_.application->closed(peer_);
    }

    HttpServer::Parts& server_;
    websocket::stream<beast::tcp_stream> stream_;
    beast::flat_buffer buffer_;
    std::deque<Message> queue_;
    std::size_t waiting_ = 0;
    RateLimit rate_{kRequestsPerSecond, kBurst};
    Peer peer_ = 0;
    bool closing_ = false;
    bool goesAfterQueue_ = false;
};

}  // namespace

void acceptSocket(HttpServer::Parts& server, beast::tcp_stream stream,
                  const http::request<http::string_body>& request) {
    std::make_shared<PageSocket>(server, std::move(stream))->accept(request);
}

}  // namespace marovine::studio
