#include "studio/Access.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <random>

#include "base/IgnoreCase.h"

namespace marovine::studio {

namespace {

/// The host of "host:port" and "[::1]:port", without brackets.
std::string_view hostName(std::string_view host) {
    if (host.starts_with('[')) return host.substr(1, std::min(host.find(']'), host.size()) - 1);
    return host.substr(0, std::min(host.find(':'), host.size()));
}

/// An address in digits: nobody else can make it lead here by changing a name service's answers.
bool isNumeric(std::string_view host) {
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    const std::string text(host);
    return inet_pton(AF_INET, text.c_str(), bytes.data()) == 1 ||
           inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1;
}

bool isOwnName(std::string_view host) {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 && equalIgnoringCase(host, name.data());
}

/// Compares in a time that says nothing about where two texts differ.
bool sameSecret(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    unsigned difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        difference |=
            static_cast<unsigned>(static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]));
    return difference == 0;
}

std::string_view cookieNamed(std::string_view name, std::string_view cookies) {
    while (!cookies.empty()) {
        const auto end = std::min(cookies.find(';'), cookies.size());
        std::string_view pair = cookies.substr(0, end);
        pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
        if (pair.size() > name.size() && pair.starts_with(name) && pair[name.size()] == '=')
            return pair.substr(name.size() + 1);
        cookies.remove_prefix(std::min(end + 1, cookies.size()));
    }
    return {};
}

}  // namespace

bool Access::isOwnHost(std::string_view host) const {
    const std::string_view name = hostName(host);
    if (equalIgnoringCase(name, "localhost") || name == "127.0.0.1" || name == "::1") return true;
    return !token_.empty() && (isNumeric(name) || isOwnName(name));
}

std::optional<Access::Refusal> Access::check(const Sender& sender) const {
    constexpr int kUnauthorized = 401;
    constexpr int kForbidden = 403;
    if (!isOwnHost(sender.host))
        return Refusal{kForbidden, "the studio is not named " + std::string(hostName(sender.host)) +
                                       "; use the address that it prints at its start"};
    if (!sender.origin.empty() && sender.origin != "http://" + std::string(sender.host))
        return Refusal{kForbidden, "a page from elsewhere may not use the studio"};
    if (!sender.fetchSite.empty() && sender.fetchSite != "same-origin" && sender.fetchSite != "none")
        return Refusal{kForbidden, "a page from elsewhere may not use the studio"};
    if (token_.empty()) return std::nullopt;
    constexpr std::string_view kBearer = "Bearer ";
    std::string_view bearer = sender.authorization;
    bearer.remove_prefix(bearer.starts_with(kBearer) ? kBearer.size() : bearer.size());
    for (const std::string_view shown :
         {sender.queryToken, bearer, cookieNamed(cookieName(), sender.cookies)})
        if (sameSecret(shown, token_)) return std::nullopt;
    return Refusal{kUnauthorized,
                   "the studio wants its token; use the whole address that it prints at its start"};
}

std::string Access::cookie() const {
    return cookieName() + "=" + token_ + "; HttpOnly; SameSite=Strict; Path=/";
}

std::string newToken() {
    std::random_device random;
    std::string token;
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr int kDigits = 32;
    for (int i = 0; i < kDigits; ++i) token += digits[random() % digits.size()];
    return token;
}

bool RateLimit::take() {
    const auto now = Clock::now();
    left_ = std::min(burst_, left_ + perSecond_ * std::chrono::duration<double>(now - last_).count());
    last_ = now;
    if (left_ < 1) return false;
    left_ -= 1;
    return true;
}

}  // namespace marovine::studio
