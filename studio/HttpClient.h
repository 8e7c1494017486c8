#pragma once

/// One request to a studio.

#include <string>
#include <string_view>

#include "studio/Http.h"

namespace marovine::studio {

/// Where a studio is: "http://127.0.0.1:8016/", "127.0.0.1:8016", "http://192.168.1.5:8016/?token=...".
struct Address {
    std::string host;
    std::string port;
    std::string token;
};

/// Throws `Failure` for what is no address of a studio.
Address parseAddress(std::string_view text);

/// Sends a document and waits for the answer. Throws `Failure` when no studio answers there.
Response post(const Address& address, const std::string& path, const std::string& document);

}  // namespace marovine::studio
