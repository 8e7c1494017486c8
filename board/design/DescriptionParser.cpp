#include "board/design/DescriptionParser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <utility>
#include <vector>

namespace virtualboard {

namespace {

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
            return fromDouble(value);
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

/// The words of one line, taken one after the other. A text in double quotes is one word that keeps its
/// opening quote.
class Words {
 public:
    explicit Words(std::string_view line) : rest_(line) { advance(); }

    bool empty() const { return word_.empty(); }

    std::string_view next(std::string_view what) {
        if (empty()) refuse("the line ends where " + std::string(what) + " should stand");
        const std::string_view word = word_;
        advance();
        return word;
    }

    std::string_view nextText(const char* what) {
        const std::string_view word = next(what);
        if (!word.starts_with('"'))
            refuse(std::string(what) + " should stand in double quotes, not as " + std::string(word));
        return word.substr(1);
    }

    void expect(std::string_view word) {
        if (take(word)) return;
        const std::string quoted = "'" + std::string(word) + "'";
        refuse(quoted + " should stand where '" + std::string(next(quoted)) + "' does");
    }

    bool take(std::string_view word) {
        if (word_ != word) return false;
        advance();
        return true;
    }

    void expectEnd() {
        if (!empty()) refuse("'" + std::string(word_) + "' is not understood here");
    }

 private:
    void advance() {
        constexpr std::string_view kBlanks = " \t\r";
        rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
        if (!rest_.starts_with('"')) {
            word_ = rest_.substr(0, rest_.find_first_of(" \t\r#"));  // empty before a comment
            rest_.remove_prefix(word_.size());
            return;
        }
        const std::size_t end = rest_.find('"', 1);
        if (end == std::string_view::npos) refuse("a text lacks its closing quote");
        word_ = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
    }

    std::string_view rest_;
    std::string_view word_;
};

struct KindName {
    std::string_view name;
    ParameterKind kind;
};

constexpr std::array kKinds{
    KindName{"u32", ParameterKind::UInt32}, KindName{"i32", ParameterKind::Int32},
    KindName{"u64", ParameterKind::UInt64}, KindName{"i64", ParameterKind::Int64},
    KindName{"f64", ParameterKind::Double}, KindName{"field", ParameterKind::UInt32Field},
    KindName{"text", ParameterKind::Text},
};

/// Null when the word names no kind.
const KindName* kindNamed(std::string_view word) {
    const auto* found = std::find_if(kKinds.begin(), kKinds.end(),
                                     [word](const KindName& kind) { return kind.name == word; });
    return found != kKinds.end() ? found : nullptr;
}

class Parser {
 public:
    void line(std::string_view text) {
        Words words(text);
        if (words.empty()) return;
        const std::string_view keyword = words.next("a keyword");
        if (const KindName* kind = kindNamed(keyword); kind != nullptr) {
            parameter(words, kind->kind, 0);
        } else if (keyword == "runtime") {
            const auto id = parseWhole<std::int32_t>(words.next("an id"));
            const std::string_view type = words.next("a type");
            const KindName* runtimeKind = kindNamed(type);
            if (runtimeKind == nullptr) refuse("'" + std::string(type) + "' is not a type");
            if (id < 1) refuse("an id is at least 1");
            parameter(words, runtimeKind->kind, id);
        } else if (keyword == "group") {
            open_.push_back(builder_.addGroup(group(), words.next("the group's name")));
            words.expect("{");
        } else if (keyword == "}") {
            if (open_.empty()) refuse("'}' closes a group that was not opened");
            open_.pop_back();
        } else if (keyword == "event") {
            const std::string_view leaf = words.next("the event's name");
            words.expect("kind");
            builder_.addEvent(group(), leaf, parseWhole<std::int32_t>(words.next("the event's kind")));
        } else if (keyword == "register") {
            registerLine(words);
        } else if (keyword == "design") {
            builder_.setName(words.nextText("the design's name"));
        } else if (keyword == "type") {
            builder_.setType(parseWhole<std::uint32_t>(words.next("the design's type")));
        } else {
            refuse("'" + std::string(keyword) + "' is not a keyword");
        }
        words.expectEnd();
    }

    DesignData finish() {
        if (!open_.empty()) refuse("a group is not closed");
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

    void numbers(Words& words, ParameterData& data) {
        const bool field = data.kind == ParameterKind::UInt32Field;
        if (field) {
            data.elements = parseWhole<std::uint32_t>(words.next("the number of elements"));
            elements_ += data.elements;  // a short line must not fill the memory
            if (elements_ > kMaxElements) refuse("the fields have at most 65536 elements in all");
            words.expect("of");
        }
        const std::string_view range = words.next("a range MIN..MAX");
        const std::size_t dots = range.find("..");
        if (dots == std::string_view::npos) refuse("'" + std::string(range) + "' is not a range MIN..MAX");
        data.minimum = parseNumber(range.substr(0, dots), data.kind);
        data.maximum = parseNumber(range.substr(dots + 2), data.kind);
        words.expect("=");
        const std::string_view start = words.next("the start value");
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
        RegisterData data;
        data.bits = parseWhole<std::uint32_t>(words.next("the width in bits"));
        data.name = words.next("the register's name");
        words.expect("=");
        data.start = parseWhole<std::uint64_t>(words.next("the start value"));
        data.writable = !words.take("readonly");
        builder_.addRegister(std::move(data));
    }

    DesignBuilder builder_;
    std::vector<std::int32_t> open_;  ///< the groups around the current line, outermost first
    std::size_t elements_ = 0;        ///< of all fields so far
};

}  // namespace

DesignData parseDescription(std::string_view text, const std::string& fileName) {
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
        throw std::invalid_argument(fileName + ":" + std::to_string(lineNumber) + ": " + error.what());
    }
}

}  // namespace virtualboard
