#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "pictures/Png.h"
#include "studio/Answers.h"
#include "studio/Members.h"
#include "studio/Pictures.h"

namespace marovine::studio {

namespace fs = std::filesystem;
using host::Json;
using virtualboard::imaging::Image;

namespace {

std::shared_ptr<const Shot> newestShot(Studio& studio) {
    auto shot = studio.desk.camera().newest();
    if (!shot)
        throw NotFound("no picture has been taken yet; POST {\"action\": \"single\"} to /api/acquisition");
    return shot;
}

View viewIn(const Request& request) {
    constexpr std::uint32_t kAll = std::numeric_limits<std::uint32_t>::max();
    View view;
    view.region = Region{wholeIn(request, "x", 0), wholeIn(request, "y", 0), wholeIn(request, "width", kAll),
                         wholeIn(request, "height", kAll)};
    if (const auto* text = request.find("fit")) {
        const auto fit = parseFit(*text);
        if (!fit) throw BadRequest("fit is WIDTHxHEIGHT, each at most 65536, one of them more than 0");
        view.fit = *fit;
    }
    return view;
}

}  // namespace

// ---- pictures ----

Response acquisition(Studio& studio, const Request&) {
    return documentOf(studio.desk.acquisition());
}

Response postAcquisition(Studio& studio, const Request& request) {
    using Action = std::pair<std::string_view, Camera::State>;
    static constexpr std::array actions{Action{"run", Camera::State::Running},
                                        Action{"single", Camera::State::Single},
                                        Action{"stop", Camera::State::Stopped}};
    const Json document = documentIn(request.body);
    const std::string action = Members(document, "the request", {"action"}).text("action");
    const auto* found = std::ranges::find(actions, action, &Action::first);
    if (found == actions.end()) throw BadRequest("action is run, single or stop");
    studio.desk.acquire(found->second);
    return acquisition(studio, request);
}

Response picture(Studio& studio, const Request& request) {
    const View view = viewIn(request);
    const auto shot = newestShot(studio);
    const Region region = regionOf(view, shot->image);
    const Image image = shown(shot->image, region, view.fit);
    const auto* format = request.find("format");
    const std::string kind = format != nullptr ? *format : "png";
    if (image.pixels.empty()) throw BadRequest("the region lies outside the picture");
    Response response{.type = "application/octet-stream"};
    if (kind == "png") {
        response.type = "image/png";
        const auto bytes = virtualboard::imaging::encodePng(image);
        response.body.assign(bytes.begin(), bytes.end());
    } else if (kind == "bgr") {
        const auto bytes = image.bytes();
        response.body.assign(bytes.begin(), bytes.end());
    } else if (kind == "rgba") {
        appendRgba(response.body, image);
    } else {
        throw BadRequest("format is png, bgr or rgba");
    }
    const auto text = [](auto... numbers) {
        std::string joined;
        ((joined += (joined.empty() ? "" : ",") + std::to_string(numbers)), ...);
        return joined;
    };
    response.headers = {{"X-Picture-Number", text(shot->number)},
                        {"X-Picture-Width", text(image.width)},
                        {"X-Picture-Height", text(image.height)},
                        {"X-Picture-Whole", text(shot->image.width) + "x" + text(shot->image.height)},
                        {"X-Picture-Region", text(region.x, region.y, region.width, region.height)}};
    return response;
}

Response histogram(Studio& studio, const Request& request) {
    const View view = viewIn(request);
    const auto shot = newestShot(studio);
    const Region region = regionOf(view, shot->image);
    const Histogram counts = histogramOf(shot->image, region);
    const auto list = [](const auto& channel) {
        return Json(std::vector<std::uint64_t>(channel.begin(), channel.end()));
    };
    return {.body = host::printedOnOneLine({{"number", shot->number},
                                            {"pixels", std::uint64_t{region.width} * region.height},
                                            {"red", list(counts[2])},
                                            {"green", list(counts[1])},
                                            {"blue", list(counts[0])}})};
}

// ---- the world ----

Response world(Studio& studio, const Request&) {
    return documentOf(studio.desk.world().json());
}

Response patchWorld(Studio& studio, const Request& request) {
    const Json document = documentIn(request.body);
    return documentOf(studio.desk.changeWorld([&] { studio.desk.world().patch(document); }));
}

Response putWorld(Studio& studio, const Request& request) {
    const std::string name = nameOf(request, "world.json");
    return documentOf(studio.desk.changeWorld([&] { studio.desk.world().load(request.body, name); }));
}

Response putScene(Studio& studio, const Request& request) {
    const std::uint32_t fieldWidth = wholeIn(request, "fieldWidth", 0);
    const fs::path file = studio.desk.folder().keep("scene.png", request.body);
    const Image scene = virtualboard::imaging::readPng(file);
    studio.desk.folder().take(file);
    return documentOf(studio.desk.changeWorld([&] { studio.desk.world().setScene(scene, fieldWidth); }));
}

Response deleteScene(Studio& studio, const Request&) {
    return documentOf(studio.desk.changeWorld([&] { studio.desk.world().showTestChart(); }));
}

}  // namespace marovine::studio
