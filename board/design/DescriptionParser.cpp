#include "board/design/DescriptionParser.h"

#include <charconv>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace design {

namespace {

using virtualboard::DesignBuilder;
using virtualboard::Number;
using virtualboard::ParameterData;
using virtualboard::ParameterKind;

[[noreturn]] void refuse(const std::string& what) {
    throw std::invalid_argument(what);
}

/// Splits a line into words; a text in double quotes is one word that keeps its opening quote.
std::vector<std::string> splitLine(std::string_view line) {
    std::vector<std::string> words;
    std::size_t at = 0;
    while (true) {
        at = line.find_first_not_of(" \t\r", at);
        if (at == std::string_view::npos || line[at] == '#') return words;
        std::size_t end = 0;
        if (line[at] == '"') {
            end = line.find('"', at + 1);
            if (end == std::string_view::npos) refuse("a text lacks its closing quote");
            words.emplace_back(line.substr(at, end - at));
            ++end;
        } else {
            end = std::min(line.find_first_of(" \t\r#", at), line.size());
            words.emplace_back(line.substr(at, end - at));
        }
        at = end;
    }
}

/// Unit texts travel as ISO-8859-1, the description is UTF-8.
std::string toLatin1(std::string_view utf8) {
    std::string latin1;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte < 0x80) {
            latin1 += utf8[i];
        } else if ((byte == 0xC2 || byte == 0xC3) && i + 1 < utf8.size()) {
            latin1 +=
                static_cast<char>(((byte & 3U) << 6U) | (static_cast<unsigned char>(utf8[++i]) & 0x3FU));
        } else {
            refuse("a text holds a character outside of ISO-8859-1");
        }
    }
    return latin1;
}

template <typename T>
T parseWhole(std::string_view word) {
    T value{};
    const bool hex = word.starts_with("0x");
    const std::string_view digits = hex ? word.substr(2) : word;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, hex ? 16 : 10);
    if (error != std::errc{} || end != digits.data() + digits.size()) {
        refuse("'" + std::string(word) + "' is not a number that fits here");
    }
    return value;
}

Number parseNumber(std::string_view word, ParameterKind kind) {
    switch (kind) {
        case ParameterKind::Double: {
            double value = 0;
            const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
            if (error != std::errc{} || end != word.data() + word.size()) {
                refuse("'" + std::string(word) + "' is not a number");
            }
            return virtualboard::fromDouble(value);
        }
        case ParameterKind::Int32:
            return static_cast<Number>(std::int64_t{parseWhole<std::int32_t>(word)});
        case ParameterKind::Int64:
            return static_cast<Number>(parseWhole<std::int64_t>(word));
        case ParameterKind::UInt64:
            return parseWhole<std::uint64_t>(word);
        default:
            return parseWhole<std::uint32_t>(word);
    }
}

/// The words of one line, taken one after the other.
class Words {
 public:
    explicit Words(std::vector<std::string> words) : words_(std::move(words)) {}

    bool empty() const { return at_ == words_.size(); }

    const std::string& next(const char* what) {
        if (empty()) refuse(std::string("the line ends where ") + what + " should stand");
        return words_[at_++];
    }

    std::string nextText(const char* what) {
        const std::string& word = next(what);
        if (!word.starts_with('"'))
            refuse(std::string(what) + " should stand in double quotes, not as " + word);
        return word.substr(1);
    }

    void expect(std::string_view word) {
        const std::string quoted = "'" + std::string(word) + "'";
        if (const std::string& found = next(quoted.c_str()); found != word) {
            refuse(quoted + " should stand where '" + found + "' does");
        }
    }

    bool take(std::string_view word) {
        if (empty() || words_[at_] != word) return false;
        ++at_;
        return true;
    }

    void expectEnd() {
        if (!empty()) refuse("'" + words_[at_] + "' is not understood here");
    }

 private:
    std::vector<std::string> words_;
    std::size_t at_ = 0;
};

const std::map<std::string, ParameterKind, std::less<>> kKinds = {
    {"u32", ParameterKind::UInt32}, {"i32", ParameterKind::Int32},  {"u64", ParameterKind::UInt64},
    {"i64", ParameterKind::Int64},  {"f64", ParameterKind::Double}, {"field", ParameterKind::UInt32Field},
    {"text", ParameterKind::Text},
};

class Parser {
 public:
    void line(std::string_view text) {
        Words words(splitLine(text));
        if (words.empty()) return;
        const std::string keyword = words.next("a keyword");
        if (const auto kind = kKinds.find(keyword); kind != kKinds.end()) {
            parameter(words, kind->second, 0);
        } else if (keyword == "runtime") {
            const auto id = parseWhole<std::int32_t>(words.next("an id"));
            const std::string& type = words.next("a type");
            const auto runtimeKind = kKinds.find(type);
            if (runtimeKind == kKinds.end()) refuse("'" + type + "' is not a type");
            if (id < 1) refuse("an id is at least 1");
            parameter(words, runtimeKind->second, id);
        } else if (keyword == "group") {
            open_.push_back(builder_.addGroup(group(), words.next("the group's name")));
            words.expect("{");
        } else if (keyword == "}") {
            if (open_.empty()) refuse("'}' closes a group that was not opened");
            open_.pop_back();
        } else if (keyword == "event") {
            const std::string leaf = words.next("the event's name");
            words.expect("kind");
            const auto kindNumber = parseWhole<std::int32_t>(words.next("the event's kind"));
            builder_.addEvent({.group = group(), .kind = kindNumber, .leaf = leaf, .name = {}});
        } else if (keyword == "register") {
            registerLine(words);
        } else if (keyword == "design") {
            name_ = words.nextText("the design's name");
        } else if (keyword == "type") {
            type_ = parseWhole<std::uint32_t>(words.next("the design's type"));
        } else {
            refuse("'" + keyword + "' is not a keyword");
        }
        words.expectEnd();
    }

    virtualboard::DesignData finish() {
        if (!open_.empty()) refuse("a group is not closed");
        if (name_.empty()) refuse("there is no line 'design \"NAME\"'");
        builder_.setIdentity(name_, type_);
        return builder_.take();
    }

 private:
    std::int32_t group() const { return open_.empty() ? -1 : open_.back(); }

    void parameter(Words& words, ParameterKind kind, std::int32_t id) {
        ParameterData data;
        data.kind = kind;
        data.id = id;
        data.group = id == 0 ? group() : -1;
        data.leaf = words.next("the parameter's name");
        if (kind == ParameterKind::Text) {
            words.expect("max");
            data.elements = parseWhole<std::uint32_t>(words.next("the longest length"));
            words.expect("=");
            data.startText = words.nextText("the start text");
        } else {
            numbers(words, data);
        }
        if (words.take("unit")) data.unit = toLatin1(words.nextText("the unit"));
        data.readOnly = words.take("readonly");
        builder_.addParameter(std::move(data));
    }

    static void numbers(Words& words, ParameterData& data) {
        const bool field = data.kind == ParameterKind::UInt32Field;
        if (field) {
            data.elements = parseWhole<std::uint32_t>(words.next("the number of elements"));
            if (data.elements > virtualboard::kMaxElements) refuse("a field has at most 65536 elements");
            words.expect("of");
        }
        const std::string range = words.next("a range MIN..MAX");
        const std::size_t dots = range.find("..");
        if (dots == std::string::npos) refuse("'" + range + "' is not a range MIN..MAX");
        data.minimum = parseNumber(std::string_view(range).substr(0, dots), data.kind);
        data.maximum = parseNumber(std::string_view(range).substr(dots + 2), data.kind);
        words.expect("=");
        const std::string start = words.next("the start value");
        if (field) {
            const bool ramp = start == "ramp";
            data.startField.assign(data.elements, ramp ? 0 : parseWhole<std::uint32_t>(start));
            for (std::uint32_t i = 0; ramp && i < data.elements; ++i) data.startField[i] = i;
        } else {
            data.start = parseNumber(start, data.kind);
        }
        data.increment = parseNumber(words.take("step") ? words.next("the step") : "1", data.kind);
    }

    void registerLine(Words& words) {
        virtualboard::RegisterData data;
        data.bits = parseWhole<std::uint32_t>(words.next("the width in bits"));
        data.name = words.next("the register's name");
        words.expect("=");
        data.start = parseWhole<std::uint64_t>(words.next("the start value"));
        data.writable = !words.take("readonly");
        builder_.addRegister(std::move(data));
    }

    DesignBuilder builder_;
    std::vector<std::int32_t> open_;  ///< the groups around the current line, outermost first
    std::string name_;
    std::uint32_t type_ = 0;
};

}  // namespace

virtualboard::DesignData parseDescription(std::string_view text, const std::string& fileName) {
    Parser parser;
    std::size_t lineNumber = 0;
    try {
        while (!text.empty()) {
            ++lineNumber;
            const std::size_t end = std::min(text.find('\n'), text.size());
            parser.line(text.substr(0, end));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return parser.finish();
    } catch (const std::invalid_argument& error) {
        throw DescriptionError(fileName + ":" + std::to_string(lineNumber) + ": " + error.what());
    }
}

}  // namespace design
