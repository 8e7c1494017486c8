#include "board/world/World.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "board/imaging/Scene.h"
#include "board/world/JsonTree.h"
#include "board/world/Trace.h"
#include "board/world/WorldFields.h"
#include "board/world/WorldReader.h"
#include "pictures/Png.h"

namespace virtualboard::world {
namespace {

namespace fs = std::filesystem;
using imaging::CutOut;
using imaging::Image;
using imaging::Pixel;

constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 26;  // of all pictures

// Streams of random numbers below the world's seed.
constexpr std::uint64_t kPartStreams = 0, kCameraStream = 1, kEncoderStream = 2;

std::string element(const char* list, std::size_t index) {
    return list + ('[' + std::to_string(index) + ']');
}

/// A cut-out in another size. Where nothing is left of the thing its colour does not count.
CutOut resized(const CutOut& from, std::uint32_t width, std::uint32_t height) {
    const auto scaled = [](std::uint8_t value, std::uint8_t share) {
        return static_cast<std::uint8_t>((value * share + 127) / 255);
    };
    const auto restored = [](std::uint8_t value, std::uint8_t share) {
        return static_cast<std::uint8_t>(share == 0 ? 0 : std::min((value * 255 + share / 2) / share, 255));
    };
    Image colours = from.picture, cover(from.picture.width, from.picture.height);
    for (std::size_t i = 0; i < colours.pixels.size(); ++i) {
        const std::uint8_t share = from.cover[i];
        const Pixel pixel = colours.pixels[i];
        colours.pixels[i] = {scaled(pixel.blue, share), scaled(pixel.green, share), scaled(pixel.red, share)};
        cover.pixels[i] = {share, share, share};
    }
    CutOut result{resize(colours, width, height)};
    const Image share = resize(cover, width, height);
    for (std::size_t i = 0; i < result.picture.pixels.size(); ++i) {
        Pixel& pixel = result.picture.pixels[i];
        const std::uint8_t left = share.pixels[i].green;
        pixel = {restored(pixel.blue, left), restored(pixel.green, left), restored(pixel.red, left)};
        result.cover.push_back(left);
    }
    return result;
}

/// Makes a world from its text and finds what only shows when its values are held against each other.
class Builder {
 public:
    Builder(const WorldText& text, fs::path folder, Findings& found)
        : text_(text), folder_(std::move(folder)), found_(found) {}

    std::shared_ptr<const World> build() {
        world_->camera = text_.camera;
        world_->camera.faults.seed = seed_.at(kCameraStream);
        world_->light = text_.light;
        ascending(text_.camera.faults.response, "camera.faults.response", &imaging::ResponsePoint::light);
        for (std::size_t i = 0; i < text_.camera.faults.stuck.size(); ++i) {
            if (text_.camera.faults.stuck[i].column >= text_.camera.sensorWidth)
                found_.add(element("camera.faults.stuck", i) + ".column", "beyond the sensor's width");
        }
        buildBelt();
        buildEncoder();
        for (std::size_t i = 0; i < text_.inputs.size(); ++i) buildInput(i);
        std::vector<PartStream> streams;
        for (std::size_t i = 0; i < text_.parts.size(); ++i) buildParts(i, streams);
        world_->parts = std::make_shared<const PartsOnBelt>(bareBelt(), beltColumns(), std::move(streams));
        for (std::size_t i = 0; i < text_.barriers.size(); ++i) {
            const BarrierText& barrier = text_.barriers[i];
            take(barrier.input, element("barriers", i));
            world_->barriers[barrier.input] = std::make_shared<const LightBarrier>(
                world_->parts, text_.belt.objectPixel, barrier.beforeCamera, barrier.highWhenBroken);
        }
        return world_;
    }

 private:
    /// Values of a list's elements must grow.
    template <class T>
    void ascending(const std::vector<T>& list, const std::string& path, double T::*member) {
        for (std::size_t i = 1; i < list.size(); ++i) {
            if (list[i].*member > list[i - 1].*member) continue;
            found_.add(path + '[' + std::to_string(i) + ']', "not above the one before");
            return;
        }
    }

    void take(unsigned input, const std::string& by) {
        const auto [taken, first] = takenBy_.emplace(input, by);
        if (!first) found_.add(by, "input " + std::to_string(input) + " is taken by " + taken->second);
    }

    /// Millimetres as whole pixels.
    double pixels(double length) const { return length / text_.belt.objectPixel; }
    double beltWidth() const {
        return text_.belt.width.value_or(text_.camera.sensorWidth * text_.belt.objectPixel);
    }
    std::uint32_t beltColumns() const {
        return static_cast<std::uint32_t>(std::min(std::round(pixels(beltWidth())), 65536.0));
    }

    void buildBelt() {
        const BeltText& belt = text_.belt;
        world_->belt.speed = belt.speed;
        world_->belt.objectPixel = belt.objectPixel;
        world_->belt.profilePeriod = belt.profilePeriod / 1000;
        ascending(belt.profile, "belt.profile", &SpeedText::at);
        for (const auto& point : belt.profile) world_->belt.profile.push_back({point.at / 1000, point.speed});
        if (belt.profilePeriod > 0 && belt.profile.empty()) {
            found_.add("belt.profilePeriod", "there is no profile to begin anew");
        } else if (belt.profilePeriod > 0 && belt.profilePeriod < 0.001) {
            found_.add("belt.profilePeriod", "shorter than 0.001 ms");
        } else if (belt.profilePeriod > 0 && belt.profile.back().at > belt.profilePeriod) {
            found_.add("belt.profilePeriod", "the profile is longer than this");
        }
    }

    void buildEncoder() {
        const EncoderText& encoder = text_.encoder;
        world_->belt.encoderPitch = encoder.pitch;
        world_->encoder = {.inputA = encoder.inputA,
                           .inputB = encoder.inputB,
                           .jitter = encoder.jitter,
                           .missing = encoder.missing,
                           .seed = seed_.at(kEncoderStream)};
        if (encoder.inputA) take(*encoder.inputA, "encoder.inputA");
        if (encoder.inputB) take(*encoder.inputB, "encoder.inputB");
        if (encoder.inputB && !encoder.inputA)
            found_.add("encoder.inputB", "track B is wired to an input and track A is not");
    }

    void buildInput(std::size_t index) {
        const InputText& input = text_.inputs[index];
        const std::string path = element("inputs", index);
        take(input.input, path + ".input");
        const int ways =
            (input.edges.empty() ? 0 : 1) + (input.pulses.empty() ? 0 : 1) + (input.trace.empty() ? 0 : 1);
        if (ways > 1) {
            found_.add(path, "edges, pulses and a trace cannot stand together: give one of them");
            return;
        }
        imaging::InputSignal signal;
        signal.high = input.high;
        if (!input.trace.empty()) signal = trace(input, path + ".trace");
        ascending(input.edges, path + ".edges", &EdgeText::at);
        for (const EdgeText& edge : input.edges) signal.edges.push_back({nanoseconds(edge.at), edge.high});
        double free = 0;
        for (std::size_t i = 0; i < input.pulses.size(); ++i) {
            const PulseText& pulse = input.pulses[i];
            if (pulse.at < free) {
                found_.add(path + ".pulses[" + std::to_string(i) + "]",
                           "begins before the one before has ended");
                break;
            }
            free = pulse.at + pulse.width;
            signal.edges.push_back({nanoseconds(pulse.at), !input.high});
            signal.edges.push_back({nanoseconds(free), input.high});
        }
        for (std::size_t i = 0; i < input.trains.size(); ++i) {
            const TrainText& train = input.trains[i];
            if (nanoseconds(train.period) <= nanoseconds(train.width))
                found_.add(path + ".trains[" + std::to_string(i) + "].period",
                           "not more than the pulses' width");
            signal.trains.push_back(
                {nanoseconds(train.first), nanoseconds(train.period), nanoseconds(train.width), train.count});
        }
        tidy(signal.edges);
        world_->inputs[input.input] = std::move(signal);
    }

    /// Times that are one in ns are one edge, the last of them, and an edge that changes nothing is none.
    static void tidy(std::vector<imaging::InputSignal::Edge>& edges) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < edges.size(); ++i) {
            if (i + 1 < edges.size() && edges[i + 1].at == edges[i].at) continue;
            if (kept > 0 && edges[kept - 1].high == edges[i].high) continue;
            edges[kept++] = edges[i];
        }
        edges.resize(kept);
    }

    imaging::InputSignal trace(const InputText& input, const std::string& path) {
        try {
            return readTrace(folder_ / input.trace.text, input.high, kMostEdges);
        } catch (const std::runtime_error& error) {
            found_.add(path, error.what());
            return {};
        }
    }

    /// A picture of the file; nothing when there is none or too much of it.
    std::optional<CutOut> picture(const FileName& name, const std::string& path) {
        if (name.empty()) return std::nullopt;  // told already
        const fs::path file = folder_ / name.text;
        if (!fs::is_regular_file(file)) {
            found_.add(path, "there is no file '" + file.string() + "'");
            return std::nullopt;
        }
        try {
            return imaging::readCutOut(file);
        } catch (const std::runtime_error& error) {
            found_.add(path, error.what());
            return std::nullopt;
        }
    }

    /// Whether memory may be taken for so many more pixels.
    bool affords(double width, double height, const std::string& path) {
        if (width * height <= static_cast<double>(kMostPixels - taken_)) {
            taken_ += static_cast<std::uint64_t>(width * height);
            return true;
        }
        found_.add(path, "the world's pictures have more than " + std::to_string(kMostPixels) +
                             " pixels at " + std::to_string(text_.belt.objectPixel) + " mm per pixel");
        return false;
    }

    Image bareBelt() {
        const FileName& name = text_.belt.picture;
        if (!name.empty()) {
            if (auto bare = picture(name, "belt.picture");
                bare && affords(bare->picture.width, bare->picture.height, "belt.picture")) {
                return std::move(bare->picture);
            }
        }
        return {1, 1, text_.belt.colour};
    }

    void buildParts(std::size_t index, std::vector<PartStream>& streams) {
        PartsText parts = text_.parts[index];
        const std::string path = element("parts", index);
        if (parts.name.empty()) parts.name = fs::path(parts.picture.text).stem().string();
        const auto drawn = picture(parts.picture, path + ".picture");
        if (!drawn) return;
        const double proportion = double{1} * drawn->picture.height / drawn->picture.width;
        double wide = drawn->picture.width, high = drawn->picture.height;
        if (parts.width || parts.length) {
            wide = pixels(parts.width.value_or(parts.length.value_or(0) / proportion));
            high = pixels(parts.length.value_or(parts.width.value_or(0) * proportion));
        }
        wide = std::max(std::round(wide), 1.0);
        high = std::max(std::round(high), 1.0);
        checkPlace(parts, path, wide, high);
        checkDefects(parts, path);
        if (!found_.faults.empty() || !affords(wide, high, path + ".picture")) return;
        CutOut seen = resized(*drawn, static_cast<std::uint32_t>(wide), static_cast<std::uint32_t>(high));
        if (std::ranges::all_of(seen.cover, [](std::uint8_t cover) { return cover == 255; }))
            seen.cover.clear();
        streams.emplace_back(std::move(parts), std::move(seen.picture), std::move(seen.cover),
                             text_.belt.objectPixel, seed_.stream(kPartStreams).stream(index));
    }

    void checkPlace(const PartsText& parts, const std::string& path, double wide, double high) {
        const double width = wide * text_.belt.objectPixel, length = high * text_.belt.objectPixel;
        const auto mm = [](double value) {
            std::string text = std::to_string(value);
            return text.substr(0, text.find('.') + 3) + " mm";
        };
        const double right = parts.across + parts.jitterAcross + width;
        if (width > beltWidth()) {
            found_.add(path, mm(width) + " wide, more than the belt's " + mm(beltWidth()));
        } else if (right > beltWidth()) {
            found_.add(path + ".across", "parts reach to " + mm(right) + " on a belt of " + mm(beltWidth()));
        } else if (parts.jitterAcross > parts.across) {
            found_.add(path + ".jitterAcross", "parts would fall off the belt at its first edge");
        }
        const double needed = length + 2 * parts.jitterAlong;
        // The size of a part is a whole number of pixels.
        if (parts.spacing < needed - text_.belt.objectPixel) {
            found_.add(path + ".spacing", mm(parts.spacing) + " is too near for parts of " + mm(length) +
                                              (parts.jitterAlong > 0 ? " and their jitter" : "") + ": give " +
                                              mm(needed) + " or more");
        }
    }

    void checkDefects(const PartsText& parts, const std::string& path) {
        for (std::size_t i = 0; i < parts.defects.size(); ++i) {
            const std::string below = path + ".defects[" + std::to_string(i) + "]";
            const RegionText& region = parts.defects[i].region;
            if (region.left + region.width > 1 || region.top + region.height > 1)
                found_.add(below + ".region", "reaches beyond the part");
            if (region.width == 0 || region.height == 0) found_.add(below + ".region", "is empty");
            const ShiftText& shift = parts.defects[i].shift;
            const bool shifts = shift.red != 0 || shift.green != 0 || shift.blue != 0;
            if (shifts == (parts.defects[i].kind == kColourShift)) continue;
            found_.add(below + ".shift",
                       shifts ? "only a colour shift has one" : "a colour shift must change a colour");
        }
    }

    const WorldText& text_;
    const fs::path folder_;
    Findings& found_;
    const imaging::Randomness seed_{text_.seed};
    std::shared_ptr<World> world_ = std::make_shared<World>();
    std::map<unsigned, std::string> takenBy_;
    std::uint64_t taken_ = 0;
};

}  // namespace

std::shared_ptr<const World> readWorld(std::string_view json, const fs::path& folder) {
    Findings found;
    const WorldText text = readWorldText(json, found);
    std::shared_ptr<const World> world;
    // Values that are refused by themselves are not held against others.
    if (found.faults.empty()) world = Builder(text, folder, found).build();
    if (found.faults.empty()) return world;
    std::ranges::stable_sort(found.faults, {}, &WorldFault::line);
    throw WorldError(std::move(found.faults));
}

std::shared_ptr<const World> loadWorld(const fs::path& file) {
    std::error_code error;
    const auto refuse = [&](const std::string& reason) {
        throw WorldError(WorldFaults{{0, {}, "'" + file.string() + "' " + reason}});
    };
    const fs::file_status status = fs::status(file, error);
    if (status.type() == fs::file_type::not_found) refuse("is not there");
    if (!fs::is_regular_file(status)) refuse("is no file that can be read");
    if (const auto size = fs::file_size(file, error); !error && size > kMostJsonBytes)
        refuse("is larger than " + std::to_string(kMostJsonBytes >> 20) + " MB: no world is");
    std::ifstream stream(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (stream.bad() || !stream.is_open()) refuse("cannot be read");
    return readWorld(text, file.parent_path());
}

}  // namespace virtualboard::world
