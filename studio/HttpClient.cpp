#include "studio/HttpClient.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include "client/Failure.h"
#include "studio/HttpServer.h"

namespace marovine::studio {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using host::Failure;

Address parseAddress(std::string_view text) {
    constexpr std::string_view kScheme = "http://";
    const Failure none(std::string(text) +
                       " is no address of a studio; it looks like http://127.0.0.1:8016/");
    std::string_view rest = text;
    if (rest.starts_with(kScheme)) rest.remove_prefix(kScheme.size());
    const auto end = std::min(rest.find('/'), rest.size());
    const std::string_view place = rest.substr(0, end);
    Address address;
    if (end < rest.size()) {
        const auto target = parseTarget(rest.substr(end));
        if (!target || target->path != "/") throw none;
        for (const auto& [name, value] : target->query)
            if (name == "token") address.token = value;
    }
    const auto bracket = place.find(']');
    const auto colon = place.find(':', bracket == place.npos ? 0 : bracket);
    address.host = place.substr(0, colon);
    if (address.host.starts_with('[') && address.host.ends_with(']'))
        address.host = address.host.substr(1, address.host.size() - 2);
    address.port = colon == place.npos ? std::to_string(kUsualPort) : std::string(place.substr(colon + 1));
    const bool digits =
        !address.port.empty() && address.port.find_first_not_of("0123456789") == std::string::npos;
    if (address.host.empty() || !digits) throw none;
    return address;
}

Response post(const Address& address, const std::string& path, const std::string& document) {
    constexpr std::uint64_t kLargest = std::uint64_t{1} << 31;
    const std::string place = address.host + ":" + address.port;
    try {
        asio::io_context io;
        beast::tcp_stream stream(io);
        stream.connect(tcp::resolver(io).resolve(address.host, address.port));
        constexpr unsigned kVersion = 11;
        http::request<http::string_body> request(http::verb::post, path, kVersion, document);
        const bool isV6 = address.host.find(':') != std::string::npos;
        request.set(http::field::host, isV6 ? "[" + address.host + "]:" + address.port : place);
        request.set(http::field::content_type, "application/json");
        if (!address.token.empty()) request.set(http::field::authorization, "Bearer " + address.token);
        request.keep_alive(false);
        request.prepare_payload();
        http::write(stream, request);
        beast::flat_buffer buffer;
        http::response_parser<http::string_body> parser;
        parser.body_limit(kLargest);
        http::read(stream, buffer, parser);
        auto answer = parser.release();
        const auto type = answer[http::field::content_type];
        return {.status = static_cast<int>(answer.result_int()),
                .type = {type.data(), type.size()},
                .body = std::move(answer.body())};
    } catch (const boost::system::system_error& error) {
        throw Failure("no studio answers at " + place + ": " + error.code().message() +
                      "; start one with `marovine studio`, which prints its address");
    }
}

}  // namespace marovine::studio
