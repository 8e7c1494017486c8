/// Asks the studio anything: the first line is a method and a path with its query, the rest the body; a line
/// that begins with "PAGE" is a page's message. Every answer is one that the interface knows, and no file
/// appears.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "client/VirtualBoard.h"
#include "studio/Desk.h"
#include "studio/Members.h"
#include "studio/Routes.h"

using namespace marovine::studio;
using marovine::host::Applet;
using marovine::host::Library;
using marovine::host::VirtualBoard;

namespace {

/// An empty folder to work in: whatever appears there was written by a name that a request gave.
const std::filesystem::path& emptyFolder() {
    static const std::filesystem::path folder = [] {
        std::string name = (std::filesystem::temp_directory_path() / "fuzz-studio-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) std::abort();
        std::filesystem::current_path(name);
        return std::filesystem::path(name);
    }();
    return folder;
}

/// What takes long without finding anything: waiting for time or for pictures.
bool isSlow(std::string_view input) {
    constexpr std::array words{"pulse", "grab",   "run",   "single", "contact",
                               "after", "HEIGHT", "WIDTH", "LISTEN"};
    return std::ranges::any_of(words, [&](const char* word) { return input.find(word) != input.npos; });
}

Response answerTo(Desk& desk, const Request& request) {
    const Route* route = findRoute(request.method, request.path);
    if (route == nullptr || request.body.size() > route->largestBody)
        return errorResponse(404, methodsOf(request.path));
    try {
        Studio studio{.desk = desk, .config = {}};
        return route->answer(studio, request);
    } catch (const std::exception& error) {
        return failed(&desk, error);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Applet applet(Library::load(), std::make_unique<VirtualBoard>(),
                         {.writeDefaults = true, .rememberSteps = true});
    static Desk desk(
        applet, {}, [](const char*, marovine::host::Json) {}, [] {});
    const auto& folder = emptyFolder();

    const std::string_view input(reinterpret_cast<const char*>(data), size);
    if (isSlow(input)) return 0;
    const auto end = std::min(input.find('\n'), input.size());
    const std::string_view line = input.substr(0, end);
    const auto blank = std::min(line.find(' '), line.size());
    const auto target = parseTarget(line.substr(std::min(blank + 1, line.size())));
    if (!target) return 0;
    const Response response =
        answerTo(desk, {.method = std::string(line.substr(0, blank)),
                        .path = target->path,
                        .query = target->query,
                        .body = std::string(input.substr(std::min(end + 1, input.size())))});
    constexpr std::array known{200, 400, 404, 409, 422};
    if (std::ranges::find(known, response.status) == known.end()) std::abort();
    if (response.type == "application/json") marovine::host::parsedJson(response.body);
    if (!std::filesystem::is_empty(folder)) std::abort();
    desk.tidy();
    return 0;
}
