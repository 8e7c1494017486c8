#pragma once

/// The paths of the interface: one table. docs/STUDIO-API.md says what each takes and gives.

#include <array>
#include <cstddef>
#include <exception>
#include <span>
#include <string>
#include <string_view>

#include "studio/Desk.h"
#include "studio/Http.h"

namespace marovine::studio {

/// What a route works with.
struct Studio {
    Desk& desk;
    std::string config;  ///< the file given at the start; empty without one
    double uptime = 0;   ///< s
    std::size_t pages = 0;
};

/// Where a route is carried out.
enum class Place {
    Board,     ///< by the thread that owns the board
    Pictures,  ///< beside it: only pictures that were taken are needed
};

struct Route {
    const char* method;
    const char* path;         ///< one that ends in '/' takes a name behind it
    std::size_t largestBody;  ///< bytes
    Place place;
    Response (*answer)(Studio& studio, const Request& request);
    std::array<std::string_view, 6> query{};  ///< what the query may hold besides the token

    bool takes(std::string_view asked) const;
    /// Throws `BadRequest` for a query with something else.
    void requireKnownQuery(const Request& request) const;
};

std::span<const Route> allRoutes();
/// The route of a request; null when there is none.
const Route* findRoute(std::string_view method, std::string_view path);
/// "GET, PUT"; empty when no method is taken there.
std::string methodsOf(std::string_view path);

/// The answer to a request that came to nothing. `desk` finds the reasons for a refused value; null in a
/// thread that must not touch it.
Response failed(Desk* desk, const std::exception& error);

}  // namespace marovine::studio
