#include "board/world/WorldReader.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <type_traits>

#include "base/Names.h"
#include "board/world/JsonTree.h"
#include "board/world/WorldFields.h"

namespace virtualboard::world {
namespace {

constexpr std::size_t kMostFaults = 100;
constexpr std::size_t kLongestText = 4096;

std::string textOf(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

const char* kindOf(JsonNode::Kind kind) {
    constexpr const char* names[] = {"null", "true or false", "a number", "a text", "an array", "an object"};
    return names[static_cast<std::size_t>(kind)];
}

/// Fills records from the tree, one overload for each type of field.
class Reader {
 public:
    explicit Reader(Findings& found) : found_(found) {}

    template <class Record>
    void object(const JsonNode& node, const std::string& path, Record& record) {
        found_.note(path, node.line);
        if (!is(node, JsonNode::Kind::Object, path)) return;
        std::vector<std::string> known;
        const auto readField = [&](const auto& field) {
            known.emplace_back(field.text.name);
            const auto at = std::ranges::find(node.names, field.text.name);
            const std::string below = path + (path.empty() ? "" : ".") + known.back();
            if (at != node.names.end()) {
                const JsonNode& member = node.elements[static_cast<std::size_t>(at - node.names.begin())];
                found_.note(below, member.line);
                value(member, below, field.text, record.*field.member);
            } else if (field.text.required) {
                found_.add(below, "missing");
            }
        };
        std::apply([&](const auto&... fields) { (readField(fields), ...); }, Fields<Record>::fields);
        for (std::size_t i = 0; i < node.names.size(); ++i) {
            if (std::ranges::find(known, node.names[i]) == known.end())
                unknown(node.names[i], node.elements[i].line, path, known);
        }
    }

 private:
    bool is(const JsonNode& node, JsonNode::Kind kind, const std::string& path) {
        if (node.kind == kind) return true;
        found_.add(path, std::string("is ") + kindOf(node.kind) + " where " + kindOf(kind) + " belongs");
        return false;
    }

    void unknown(const std::string& name, int line, const std::string& path,
                 const std::vector<std::string>& known) {
        const std::string below = path + (path.empty() ? "" : ".") + shortened(name);
        found_.note(below, line);
        const auto nearest = marovine::host::nearestNames(shortened(name), known, 1);
        std::string reason = "unknown";
        if (!nearest.empty()) {
            reason += "; did you mean " + nearest.front() + "?";
        } else {
            reason += "; known here:";
            for (const auto& other : known) reason += ' ' + other;
        }
        found_.add(below, reason);
    }

    bool inside(double number, const std::string& path, const FieldText& text) {
        const std::string unit = text.unit.empty() ? "" : ' ' + std::string(text.unit);
        if (number < text.minimum) {
            found_.add(path, textOf(number) + " is below " + textOf(text.minimum) + unit);
        } else if (number > text.maximum) {
            found_.add(path, textOf(number) + " is above " + textOf(text.maximum) + unit);
        }
        return number >= text.minimum && number <= text.maximum;
    }

    void value(const JsonNode& node, const std::string& path, const FieldText& text, double& out) {
        if (is(node, JsonNode::Kind::Number, path) && inside(node.number, path, text)) out = node.number;
    }

    template <class Whole>
    requires(std::is_unsigned_v<Whole> &&
             !std::is_same_v<Whole, bool>) void value(const JsonNode& node, const std::string& path,
                                                      const FieldText& text, Whole& out) {
        if (!text.choices.empty()) return choice(node, path, text, out);
        if (!is(node, JsonNode::Kind::Number, path) || !inside(node.number, path, text)) return;
        if (node.whole && *node.whole > static_cast<std::uint64_t>(text.maximum)) {
            // Only the whole number tells it from the maximum, where doubles are too coarse.
            found_.add(path, std::to_string(*node.whole) + " is above " + textOf(text.maximum));
        } else if (node.whole) {
            out = static_cast<Whole>(*node.whole);
        } else {
            found_.add(path, textOf(node.number) + " is no whole number");
        }
    }

    template <class Whole>
    void choice(const JsonNode& node, const std::string& path, const FieldText& text, Whole& out) {
        if (!is(node, JsonNode::Kind::Text, path)) return;
        const auto at = std::ranges::find(text.choices, node.text);
        if (at != text.choices.end()) {
            out = static_cast<Whole>(at - text.choices.begin());
            return;
        }
        std::string reason = '"' + shortened(node.text) + "\" is none of";
        for (const auto& one : text.choices) reason += ' ' + std::string(one);
        found_.add(path, reason);
    }

    void value(const JsonNode& node, const std::string& path, const FieldText& /*text*/, bool& out) {
        if (is(node, JsonNode::Kind::Truth, path)) out = node.number != 0;
    }

    void value(const JsonNode& node, const std::string& path, const FieldText& /*text*/, std::string& out) {
        if (!is(node, JsonNode::Kind::Text, path)) return;
        if (node.text.size() > kLongestText) {
            found_.add(path, "longer than " + std::to_string(kLongestText) + " bytes");
        } else {
            out = node.text;
        }
    }

    void value(const JsonNode& node, const std::string& path, const FieldText& text, FileName& out) {
        value(node, path, text, out.text);
        if (node.kind == JsonNode::Kind::Text && (out.empty() || out.text.find('\0') != std::string::npos))
            found_.add(path, "is no file's name");
    }

    /// "#RRGGBB"
    void value(const JsonNode& node, const std::string& path, const FieldText& /*text*/,
               imaging::Pixel& out) {
        if (!is(node, JsonNode::Kind::Text, path)) return;
        const bool digits = node.text.size() == 7 && node.text.front() == '#' &&
                            node.text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
        if (!digits) {
            found_.add(path, '"' + shortened(node.text) + "\" is no colour; write \"#RRGGBB\"");
            return;
        }
        const auto code = std::stoul(node.text.substr(1), nullptr, 16);
        out = {static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(code >> 8),
               static_cast<std::uint8_t>(code >> 16)};
    }

    void value(const JsonNode& node, const std::string& path, const FieldText& text, Limits& out) {
        if (node.kind == JsonNode::Kind::Number) {
            if (inside(node.number, path, text)) out = {node.number, node.number};
            return;
        }
        if (node.kind != JsonNode::Kind::Array || node.elements.size() != 2) {
            found_.add(path, "must be a number or an array of two: least and most");
            return;
        }
        Limits limits;
        value(node.elements[0], path + "[0]", text, limits.least);
        value(node.elements[1], path + "[1]", text, limits.most);
        if (limits.least > limits.most) {
            found_.add(path, textOf(limits.least) + " is more than " + textOf(limits.most) +
                                 ", the least more than the most");
        } else {
            out = limits;
        }
    }

    template <class T>
    void value(const JsonNode& node, const std::string& path, const FieldText& text, std::optional<T>& out) {
        value(node, path, text, out.emplace());
    }

    /// The elements of an array with their paths, unless there are too many.
    template <class Each>
    void elements(const JsonNode& node, const std::string& path, const FieldText& text, Each each) {
        if (!is(node, JsonNode::Kind::Array, path)) return;
        if (node.elements.size() > text.most) {
            found_.add(path, std::to_string(node.elements.size()) + " elements are more than " +
                                 std::to_string(text.most));
            return;
        }
        for (std::size_t i = 0; i < node.elements.size(); ++i)
            each(i, node.elements[i], path + '[' + std::to_string(i) + ']');
    }

    template <class T>
    void value(const JsonNode& node, const std::string& path, const FieldText& text, std::vector<T>& out) {
        elements(node, path, text, [&](std::size_t, const JsonNode& element, const std::string& below) {
            object(element, below, out.emplace_back());
        });
    }

    template <std::size_t count>
    void value(const JsonNode& node, const std::string& path, const FieldText& text,
               std::array<bool, count>& out) {
        elements(node, path, text, [&](std::size_t i, const JsonNode& element, const std::string& below) {
            value(element, below, text, out[i]);
        });
    }

    template <class Record>
    requires requires { Fields<Record>::fields; }
    void value(const JsonNode& node, const std::string& path, const FieldText& /*text*/, Record& out) {
        object(node, path, out);
    }

    Findings& found_;
};

}  // namespace

void Findings::add(const std::string& path, std::string reason) {
    if (faults.size() == kMostFaults) return;
    int line = 0;
    // A value that is left out stands where the object around it begins.
    for (std::string at = path;;
         at.resize(at.find_last_of(".[") == std::string::npos ? 0 : at.find_last_of(".["))) {
        if (const auto known = lines_.find(at); known != lines_.end()) line = known->second;
        if (line != 0 || at.empty()) break;
    }
    faults.push_back({line, path, std::move(reason)});
}

WorldText readWorldText(std::string_view json, Findings& found) {
    WorldText text;
    const auto tree = readJson(json, found.faults);
    if (tree) Reader(found).object(*tree, {}, text);
    return text;
}

}  // namespace virtualboard::world
