#pragma once

/// The members of a request, read with nothing left over.

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "client/Failure.h"
#include "command/Json.h"

namespace marovine::studio {

/// A request that makes no sense.
class BadRequest : public host::Failure {
    using Failure::Failure;
};

/// What was asked for is not there.
class NotFound : public host::Failure {
    using Failure::Failure;
};

/// What was asked for does not fit the state that the studio is in.
class Conflict : public host::Failure {
    using Failure::Failure;
};

/// An object whose members are all known. Every function throws `BadRequest` for a member of another type.
class Members {
 public:
    /// `what` is named in messages: "the request". `object` must outlive this.
    Members(const host::Json& object, std::string what, std::initializer_list<std::string_view> known);

    /// A member; null when it is not there.
    const host::Json* find(std::string_view name) const { return object_.find(name); }
    /// One that must be there.
    const host::Json& at(std::string_view name) const;
    std::string text(std::string_view name) const;
    /// The same, where it may be missing.
    std::optional<std::string> maybeText(std::string_view name) const;
    std::optional<double> maybeNumber(std::string_view name, double least, double most) const;
    /// A whole number.
    std::optional<std::int64_t> maybeWhole(std::string_view name, std::int64_t least,
                                           std::int64_t most) const;
    std::optional<bool> maybeBool(std::string_view name) const;
    const host::Json::Array& array(std::string_view name) const;

 private:
    [[noreturn]] void refuse(std::string_view name, const std::string& kind) const;

    const host::Json& object_;
    std::string what_;
};

/// The document of a body. Throws `BadRequest`.
host::Json documentIn(std::string_view body);

}  // namespace marovine::studio
