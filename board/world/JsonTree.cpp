#include "board/world/JsonTree.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

#include <nlohmann/json.hpp>

namespace virtualboard::world {
namespace {

constexpr std::size_t kMostRepeated = 20;  // of names given twice

/// Where the parser stands. It reads one character beyond a number, so blanks do not count.
struct Place {
    int line = 1;       ///< of the next character
    int tokenLine = 1;  ///< of the last character that was no blank
};

/// The characters of a text, which tell `Place` how far the parser has come.
class CountingIterator {
 public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, Place& place) : at_(at), place_(&place) {}

    reference operator*() const { return *at_; }
    CountingIterator& operator++() {
        if (*at_ == '\n') {
            ++place_->line;
        } else if (*at_ != ' ' && *at_ != '\t' && *at_ != '\r') {
            place_->tokenLine = place_->line;
        }
        ++at_;
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return at_ == other.at_; }

 private:
    const char* at_;
    Place* place_;
};

/// Without what the library writes before the reason: its own name, and where it happened.
std::string reasonOf(std::string_view what) {
    for (const std::string_view ends : {"column ", "] "}) {
        const auto begin = what.find(ends);
        if (begin == std::string_view::npos) continue;
        what.remove_prefix(begin + ends.size());
        if (const auto colon = what.find(": "); ends == "column " && colon != std::string_view::npos)
            what.remove_prefix(colon + 2);
        break;
    }
    return "this is no JSON: " + std::string(what.substr(0, 200));
}

/// Builds the tree from what the parser tells.
class TreeBuilder {
 public:
    TreeBuilder(const Place& place, WorldFaults& faults) : place_(place), faults_(faults) {}

    bool null() { return add({}); }
    bool boolean(bool value) { return add({.kind = JsonNode::Kind::Truth, .number = value ? 1.0 : 0.0}); }
    bool number_integer(std::int64_t value) {
        return add({.kind = JsonNode::Kind::Number, .number = static_cast<double>(value)});
    }
    bool number_unsigned(std::uint64_t value) {
        return add({.kind = JsonNode::Kind::Number, .number = static_cast<double>(value), .whole = value});
    }
    bool number_float(double value, const std::string& /*text*/) {
        JsonNode node{.kind = JsonNode::Kind::Number, .number = value};
        // 1e3 is a whole number as well.
        if (value >= 0 && value <= 0x1p53 && std::floor(value) == value)
            node.whole = static_cast<std::uint64_t>(value);
        return add(std::move(node));
    }
    bool string(std::string& value) { return add({.kind = JsonNode::Kind::Text, .text = std::move(value)}); }
    template <class Bytes>
    bool binary(const Bytes& /*value*/) {
        return false;  // JSON has none
    }
    bool start_object(std::size_t /*size*/) { return open({.kind = JsonNode::Kind::Object}); }
    bool start_array(std::size_t /*size*/) { return open({.kind = JsonNode::Kind::Array}); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }

    bool key(std::string& name) {
        nameLine_ = place_.tokenLine;
        JsonNode& object = open_.back();
        if (std::ranges::find(object.names, name) != object.names.end()) {
            // The parser's own readers would keep the last one and forget the others.
            const std::string above = path();
            faults_.push_back(
                {nameLine_, above + (above.empty() ? "" : ".") + shortened(name), "given twice"});
            if (faults_.size() >= kMostRepeated) return false;
        }
        if (object.names.size() >= kMostMembers) {
            faults_.push_back({nameLine_, path(), "an object of more members than any here has"});
            return false;
        }
        object.names.push_back(std::move(name));
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/, const std::exception& error) {
        faults_.push_back({place_.tokenLine, path(), reasonOf(error.what())});
        return false;
    }

    JsonNode root{};

 private:
    static constexpr std::size_t kMostMembers = 64;

    /// The line of a value, or of its name.
    int line() {
        const int named = std::exchange(nameLine_, 0);
        return named != 0 ? named : place_.tokenLine;
    }
    bool add(JsonNode node) {
        node.line = line();
        (open_.empty() ? root : open_.back().elements.emplace_back()) = std::move(node);
        return true;
    }
    bool open(JsonNode node) {
        node.line = line();
        if (open_.size() < kMostJsonDepth) {
            open_.push_back(std::move(node));
            return true;
        }
        faults_.push_back({node.line, path(), "nested deeper than any world is"});
        return false;
    }
    bool close() {
        JsonNode node = std::move(open_.back());
        open_.pop_back();
        (open_.empty() ? root : open_.back().elements.emplace_back()) = std::move(node);
        return true;
    }

    /// Of the value that comes next.
    std::string path() const {
        std::string result;
        for (const JsonNode& node : open_) {
            if (node.kind == JsonNode::Kind::Array) {
                result += '[' + std::to_string(node.elements.size()) + ']';
            } else if (node.names.size() > node.elements.size()) {
                result += (result.empty() ? "" : ".") + shortened(node.names.back());
            }
        }
        return result;
    }

    const Place& place_;
    WorldFaults& faults_;
    std::vector<JsonNode> open_;
    int nameLine_ = 0;
};

}  // namespace

std::optional<JsonNode> readJson(std::string_view text, WorldFaults& faults) {
    if (text.size() > kMostJsonBytes) {
        faults.push_back({0, {}, "larger than " + std::to_string(kMostJsonBytes >> 20) + " MB: no world is"});
        return std::nullopt;
    }
    Place place;
    TreeBuilder builder(place, faults);
    const std::size_t before = faults.size();
    const CountingIterator begin(text.data(), place), end(text.data() + text.size(), place);
    const bool read = nlohmann::json::sax_parse(begin, end, &builder);
    if (!read || faults.size() != before) return std::nullopt;
    return std::move(builder.root);
}

std::string shortened(std::string_view text) {
    constexpr std::size_t most = 40;
    if (text.size() <= most) return std::string(text);
    // Not through the middle of a character.
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return std::string(text.substr(0, end)) + "...";
}

}  // namespace virtualboard::world
