#include "studio/World.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>

#include "client/VirtualBoard.h"
#include "marovine/WorldError.h"
#include "studio/Members.h"

namespace marovine::studio {

using host::Json;

namespace {

constexpr std::size_t kInputs = 12;
constexpr std::size_t kMostFaults = 1000;
constexpr double kFastest = 1e6;          // mm/s
constexpr double kLongestPulse = 1000;    // ms
constexpr double kSmallestPixel = 1e-6;   // mm
constexpr double kLargestPixel = 1e3;     // mm
constexpr double kLongestExposure = 1e6;  // µs
constexpr double kShortestExposure = 0.01;
constexpr std::int64_t kWidestSensor = 16384;  // pixels
constexpr double kBrightest = 100;             // times the light that shows colours as they are

/// The members of a light, which have the same names in a world file and here.
using virtualboard::imaging::Light;
constexpr std::array<std::pair<const char*, double Light::*>, 5> kLightMembers{
    {{"level", &Light::level},
     {"red", &Light::red},
     {"green", &Light::green},
     {"blue", &Light::blue},
     {"flashShare", &Light::flashShare}}};

struct Pulse {
    std::uint32_t input = 0;
    double ms = 0;
};

}  // namespace

struct World::Wish {
    std::optional<virtualboard::imaging::Belt> belt;
    std::optional<virtualboard::imaging::CameraTraits> camera;
    std::optional<Light> light;
    std::vector<std::pair<std::uint32_t, bool>> inputs;
    std::optional<Pulse> pulse;
    std::optional<std::vector<Fault>> faults;
    std::optional<Force> force;
};

World::World(host::Applet& applet, const std::filesystem::path& file)
    : applet_(applet), board_(host::boardOf(applet)) {
    if (file.empty()) return;
    std::ifstream in(file, std::ios::binary);
    adopt(host::parsedJson(std::string{std::istreambuf_iterator<char>(in), {}}));
    file_ = file.filename().string();
    scene_ = "world";
}

void World::adopt(const Json& world) {
    constexpr double kMsPerSecond = 1000;
    belt_ = {};
    camera_ = {};
    light_ = {};
    const auto read = [&](const Json* object, const char* name, auto& target) {
        const Json* member = object != nullptr ? object->find(name) : nullptr;
        if (const auto number = member != nullptr ? member->number() : std::nullopt)
            target = static_cast<std::remove_reference_t<decltype(target)>>(*number);
    };
    const Json* belt = world.find("belt");
    read(belt, "speed", belt_.speed);
    read(belt, "objectPixel", belt_.objectPixel);
    read(belt, "profilePeriod", belt_.profilePeriod);
    belt_.profilePeriod /= kMsPerSecond;
    const Json* profile = belt != nullptr ? belt->find("profile") : nullptr;
    if (profile != nullptr && profile->as<Json::Array>() != nullptr)
        for (const auto& point : *profile->as<Json::Array>()) {
            auto& taken = belt_.profile.emplace_back();
            read(&point, "at", taken.at);
            read(&point, "speed", taken.speed);
            taken.at /= kMsPerSecond;
        }
    read(world.find("encoder"), "pitch", belt_.encoderPitch);
    const Json* camera = world.find("camera");
    read(camera, "sensorWidth", camera_.sensorWidth);
    read(camera, "neutralExposure", camera_.neutralExposure);
    cameraIsFiles_ =
        camera != nullptr && (camera->find("faults") || camera->find("readout") || camera->find("phase"));
    const Json* light = world.find("light");
    for (const auto& [name, member] : kLightMembers) read(light, name, light_.*member);
}

namespace {

/// Refuses a document that names a file in another folder, wherever it does.
void requirePlainNames(const Json& document) {
    if (const auto* text = document.as<std::string>())
        if (text->find('/') != text->npos || *text == "..")
            throw BadRequest("a world that is sent names no files, so not " + *text +
                             "; give one that does to marovine studio --world");
    if (const auto* elements = document.as<Json::Array>())
        for (const auto& element : *elements) requirePlainNames(element);
    if (const auto* members = document.as<Json::Object>())
        for (const auto& [name, member] : *members)
            if (name != "$schema") requirePlainNames(member);
}

}  // namespace

void World::load(std::string_view text, const std::string& name) {
    const Json document = documentIn(text);
    requirePlainNames(document);
    // What was read is what is given on: a text that two readers take differently names no file either.
    try {
        board_.setWorld(host::printed(document), "/nonexistent");
    } catch (const virtualboard::WorldError& error) {
        throw host::Failure(name + " is no world:\n" + error.what());
    }
    adopt(document);
    file_ = name;
    scene_ = "world";
    sceneWidth_ = sceneHeight_ = fieldWidth_ = 0;
}

Json World::json() const {
    // What the board itself says, whoever set it.
    const auto levels = static_cast<std::uint32_t>(*host::numberOf(applet_.get("FG_DIGIO_INPUT")));
    Json inputs = Json::array();
    for (std::size_t i = 0; i < kInputs; ++i) inputs.push_back(((levels >> i) & 1) != 0);
    Json faults = Json::array();
    for (const auto& fault : faults_)
        faults.push_back({{"kind", fault.kind}, {"name", fault.name}, {"code", fault.code}});
    Json light = Json::object();
    for (const auto& [name, member] : kLightMembers) light[name] = light_.*member;
    const bool hasSize = sceneWidth_ != 0;
    return {
        {"belt", Json{{"speed", belt_.speed},
                      {"objectPixel", belt_.objectPixel},
                      {"encoderPitch", belt_.encoderPitch}}},
        {"inputs", std::move(inputs)},
        {"camera", Json{{"sensorWidth", camera_.sensorWidth}, {"neutralExposure", camera_.neutralExposure}}},
        {"scene", Json{{"source", scene_},
                       {"width", hasSize ? Json(sceneWidth_) : Json()},
                       {"height", hasSize ? Json(sceneHeight_) : Json()},
                       {"fieldWidth", fieldWidth_}}},
        {"light", std::move(light)},
        {"faults", std::move(faults)},
        {"file", file_.empty() ? Json() : Json(file_)}};
}

void World::readBelt(const Json& document, Wish& wish) const {
    if (const Json* belt = document.find("belt")) {
        const Members members(*belt, "belt", {"speed", "objectPixel", "encoderPitch"});
        wish.belt = belt_;
        if (const auto speed = members.maybeNumber("speed", -kFastest, kFastest)) {
            wish.belt->speed = *speed;
            wish.belt->profile.clear();
        }
        if (const auto size = members.maybeNumber("objectPixel", kSmallestPixel, kLargestPixel))
            wish.belt->objectPixel = *size;
        if (const auto pitch = members.maybeNumber("encoderPitch", kSmallestPixel, kLargestPixel))
            wish.belt->encoderPitch = *pitch;
    }
}

void World::readCamera(const Json& document, Wish& wish) const {
    const Json* camera = document.find("camera");
    if (camera == nullptr) return;
    if (cameraIsFiles_)
        throw BadRequest("the world file " + file_ + " says what the camera is like; change it there");
    const Members members(*camera, "camera", {"sensorWidth", "neutralExposure"});
    wish.camera = camera_;
    if (const auto width = members.maybeWhole("sensorWidth", 1, kWidestSensor))
        wish.camera->sensorWidth = static_cast<std::uint32_t>(*width);
    if (const auto exposure = members.maybeNumber("neutralExposure", kShortestExposure, kLongestExposure))
        wish.camera->neutralExposure = *exposure;
}

void World::readLight(const Json& document, Wish& wish) const {
    const Json* light = document.find("light");
    if (light == nullptr) return;
    const Members members(*light, "light", {"level", "red", "green", "blue", "flashShare"});
    wish.light = light_;
    for (const auto& [name, member] : kLightMembers)
        if (const auto number = members.maybeNumber(name, 0, member == &Light::level ? kBrightest : 1))
            (*wish.light).*member = *number;
}

void World::readInputs(const Json& document, Wish& wish) const {
    const auto levelOf = [](const Json& level) {
        const auto* truth = level.as<bool>();
        if (truth == nullptr) throw BadRequest("an input is true (high) or false (low)");
        return *truth;
    };
    const Json* inputs = document.find("inputs");
    if (inputs != nullptr && inputs->as<Json::Array>() != nullptr) {
        const auto& levels = *inputs->as<Json::Array>();
        if (levels.size() != kInputs) throw BadRequest("inputs has not 12 elements");
        for (const auto& level : levels)
            wish.inputs.emplace_back(static_cast<std::uint32_t>(wish.inputs.size()), levelOf(level));
    } else if (inputs != nullptr) {
        const auto* members = inputs->as<Json::Object>();
        if (members == nullptr) throw BadRequest("inputs is neither an array nor an object");
        for (const auto& [name, level] : *members) {
            std::uint32_t input = 0;
            const char* end = name.data() + name.size();
            const auto read = std::from_chars(name.data(), end, input);
            if (read.ec != std::errc{} || read.ptr != end || input >= kInputs)
                throw BadRequest("there is no input " + name + "; they are 0 to 11");
            wish.inputs.emplace_back(input, levelOf(level));
        }
    }
    if (const Json* pulse = document.find("pulse")) {
        const Members members(*pulse, "pulse", {"input", "ms"});
        members.at("input");
        wish.pulse = {static_cast<std::uint32_t>(*members.maybeWhole("input", 0, kInputs - 1)),
                      members.maybeNumber("ms", 0, kLongestPulse).value_or(1)};
    }
}

void World::requireDesignParameter(const std::string& name) const {
    try {
        static_cast<void>(board_.value(name));
    } catch (const std::out_of_range&) {
        throw BadRequest("the design has no parameter " + name);
    }
}

World::Fault World::readFault(const Json& document) const {
    constexpr std::array kNamed{"refuseWrites", "refuseReads"};
    constexpr std::array kCounted{"refuseNthWrite", "refuseNthRead"};
    constexpr std::int64_t kMostAhead = 1'000'000;
    const Members members(document, "a fault", {"kind", "name", "n", "code"});
    Fault fault{.kind = members.text("kind"), .name = {}, .n = 0, .code = 0};
    members.at("code");
    fault.code = static_cast<int>(*members.maybeWhole("code", std::numeric_limits<int>::min(), -1));
    if (std::ranges::find(kNamed, fault.kind) != kNamed.end()) {
        fault.name = members.text("name");
        requireDesignParameter(fault.name);
    } else if (std::ranges::find(kCounted, fault.kind) != kCounted.end()) {
        members.at("n");
        fault.n = static_cast<unsigned>(*members.maybeWhole("n", 1, kMostAhead));
    } else {
        throw BadRequest("there is no fault " + fault.kind +
                         "; there are: refuseWrites, refuseReads, refuseNthWrite, refuseNthRead");
    }
    return fault;
}

World::Force World::readForce(const Json& document) const {
    const Members members(document, "force", {"name", "value"});
    const std::string name = members.text("name");
    requireDesignParameter(name);
    const auto number = members.at("value").number();
    if (!number) throw BadRequest("value of force is not a number");
    const auto value = host::valueLike(board_.value(name), *number);
    if (!value) throw BadRequest("value of force does not fit " + name);
    return {name, *value};
}

World::Wish World::readWish(const Json& document) const {
    const Members members(document, "the world",
                          {"belt", "camera", "light", "inputs", "pulse", "faults", "force"});
    Wish wish;
    readBelt(document, wish);
    readCamera(document, wish);
    readLight(document, wish);
    readInputs(document, wish);
    if (members.find("faults") != nullptr) {
        wish.faults.emplace();
        if (members.array("faults").size() > kMostFaults) throw BadRequest("more than 1000 faults");
        for (const auto& fault : members.array("faults")) wish.faults->push_back(readFault(fault));
    }
    if (const Json* force = members.find("force")) wish.force = readForce(*force);
    return wish;
}

void World::apply(const Fault& fault) {
    if (fault.kind == "refuseWrites") board_.refuseWrites(fault.name, fault.code);
    if (fault.kind == "refuseReads") board_.refuseReads(fault.name, fault.code);
    if (fault.kind == "refuseNthWrite") board_.refuseNthWrite(fault.n, fault.code);
    if (fault.kind == "refuseNthRead") board_.refuseNthRead(fault.n, fault.code);
    if (fault.n == 0) faults_.push_back(fault);
}

void World::patch(const Json& document) {
    const Wish wish = readWish(document);
    if (wish.belt) board_.setBelt(belt_ = *wish.belt);
    if (wish.camera) board_.setCamera(camera_ = *wish.camera);
    if (wish.light) board_.setLight(light_ = *wish.light);
    for (const auto& [input, high] : wish.inputs) board_.setInput(input, high);
    if (wish.pulse) {
        constexpr double kNanosecondsPerMs = 1e6;
        const auto end = std::max<std::int64_t>(1, std::llround(wish.pulse->ms * kNanosecondsPerMs));
        board_.playInput(wish.pulse->input, {.edges = {{0, true}, {end, false}}});
    }
    if (wish.force) board_.force(wish.force->name, wish.force->value);
    if (wish.faults) {
        board_.clearFaults();
        faults_.clear();
        for (const auto& fault : *wish.faults) apply(fault);
    }
}

void World::setScene(const virtualboard::imaging::Image& scene, std::uint32_t fieldWidth) {
    board_.setScene(scene, fieldWidth);
    scene_ = "picture";
    sceneWidth_ = scene.width;
    sceneHeight_ = scene.height;
    fieldWidth_ = fieldWidth;
}

void World::showTestChart() {
    board_.showTestChart();
    scene_ = "test chart";
    sceneWidth_ = sceneHeight_ = fieldWidth_ = 0;
}

void World::changedElsewhere() {
    scene_ = "picture";
    sceneWidth_ = sceneHeight_ = fieldWidth_ = 0;
}

}  // namespace marovine::studio
