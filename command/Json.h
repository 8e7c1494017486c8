#pragma once

/// Values and parameters as JSON. The library that writes it takes seconds to compile, so only Json.cpp
/// includes it.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "client/Parameter.h"
#include "client/Value.h"

namespace marovine::host {

/// A JSON document or a part of one. Objects keep the order in which their members were added.
class Json {
 public:
    using Array = std::vector<Json>;
    using Object = std::vector<std::pair<std::string, Json>>;
    using Content =
        std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string, Array, Object>;

    /// null
    Json() = default;
    /// A number or a truth value.
    template <class T>
    requires std::is_arithmetic_v<T> Json(T value) {
        using Stored = std::conditional_t<
            std::same_as<T, bool>, bool,
            std::conditional_t<std::floating_point<T>, double,
                               std::conditional_t<std::signed_integral<T>, std::int64_t, std::uint64_t>>>;
        content_ = static_cast<Stored>(value);
    }
    /// A text.
    template <class T>
    requires std::convertible_to<T, std::string_view> Json(const T& text)
        : content_(std::string(std::string_view(text))) {}
    /// An array.
    template <class T>
    Json(const std::vector<T>& elements) : content_(Array(elements.begin(), elements.end())) {}
    /// An object when every element is a pair that begins with a text, else an array.
    Json(std::initializer_list<Json> elements);

    static Json array() { return Json(Array()); }
    static Json object();

    /// Adds an element; null becomes an array. For arrays only.
    void push_back(Json element);
    /// The member of a name, added when there is none; null becomes an object. For objects only.
    Json& operator[](std::string_view name);
    /// Elements of an array or members of an object; 0 for anything else.
    std::size_t size() const;

    /// The member of a name; null when there is none, or for what is no object.
    const Json* find(std::string_view name) const;
    /// What it holds, as one of the kinds of `Content`; null for another.
    template <class T>
    const T* as() const {
        return std::get_if<T>(&content_);
    }
    /// A number of whatever type; nothing for what is none.
    std::optional<double> number() const;

    const Content& content() const { return content_; }

 private:
    Content content_{nullptr};
};

/// A value: a number, a text or an array of numbers. Not-a-number and the infinities, which JSON lacks, are
/// texts.
Json jsonOf(const Value& value);
/// A parameter's value: the constant's name for an enumeration.
Json jsonOf(const Parameter& parameter, const Value& value);
/// A parameter with range, access, unit and entries.
Json jsonOf(const Parameter& parameter);
/// The same with its default, whether it differs from it, and its value; null for one that cannot be read
/// now.
Json jsonOf(const Parameter& parameter, const std::optional<Value>& value);

/// The text of a document, indented; bytes that are no UTF-8 are replaced.
std::string printed(const Json& document);
/// The same on one line.
std::string printedOnOneLine(const Json& document);

/// Reads a document. Throws `Failure`, which says where it makes no sense; also for more than 16 levels.
Json parsedJson(std::string_view text);

}  // namespace marovine::host
