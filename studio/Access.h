#pragma once

/// Who may ask the studio. It listens where browsers can reach it, and a browser carries out what any page on
/// the web tells it to: requests must name the studio as their host and come from its own page.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace marovine::studio {

/// What a request says about its sender; empty texts for what it does not say.
struct Sender {
    std::string_view host{};
    std::string_view origin{};
    std::string_view fetchSite{};      ///< Sec-Fetch-Site
    std::string_view authorization{};  ///< "Bearer ..."
    std::string_view cookies{};
    std::string_view queryToken{};
};

class Access {
 public:
    /// `address` is the one listened on; with a token others than this machine may ask. `token` may be empty.
    Access(std::string address, unsigned port, std::string token)
        : address_(std::move(address)), port_(port), token_(std::move(token)) {}

    /// Why a request is turned away.
    struct Refusal {
        int status;
        std::string message;
    };
    std::optional<Refusal> check(const Sender& sender) const;

    const std::string& token() const { return token_; }
    /// The cookie that carries the token: its name has the port, as cookies do not know ports.
    std::string cookie() const;

 private:
    bool isOwnHost(std::string_view host) const;
    std::string cookieName() const { return "marovine_studio_" + std::to_string(port_); }

    std::string address_;
    unsigned port_;
    std::string token_;
};

/// A token that nobody guesses: 128 bits in hexadecimal.
std::string newToken();

/// Allows so many things a second, and a burst. Not thread-safe.
class RateLimit {
 public:
    RateLimit(double perSecond, double burst) : perSecond_(perSecond), burst_(burst), left_(burst) {}

    /// Whether one more may happen now.
    bool take();

 private:
    using Clock = std::chrono::steady_clock;

    double perSecond_;
    double burst_;
    double left_;
    Clock::time_point last_ = Clock::now();
};

}  // namespace marovine::studio
