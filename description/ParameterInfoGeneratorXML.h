#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "marovine/marovine.h"

/// Writes the XML of one parameter: its feature, and the register behind it, whose address is the parameter's
/// number and which lies on the one port of the document. Every line but the last ends with a line feed.
/// Numbers are decimal, doubles with at most 12 significant digits, whatever the locale.
class ParameterInfoGeneratorXML {
 public:
    /// A text in the document.
    struct Place {
        std::size_t at = 0;
        std::size_t length = kNone;  ///< in characters

        static constexpr auto kNone = static_cast<std::size_t>(-1);
        bool isGiven() const { return length != kNone; }
    };
    /// Where the text stands that can change while the registry is in use, in this order, and what it says.
    struct Places {
        Place access, maximum;
        std::int32_t accessFlags = 0;
        std::uint64_t maximumBits = 0;
    };

    /// Appends to `document`, which must outlive the generator.
    explicit ParameterInfoGeneratorXML(std::string& document) : document_(document) {}

    /// Of the feature written last.
    const Places& places() const { return places_; }
    /// The text of access flags.
    static std::string_view accessText(std::int32_t flags);
    /// The text of a maximum of a parameter's kind, given by its bits.
    static std::string maximumText(const RegisterInfo& info, std::uint64_t bits);

    /// An integer feature. The limits are printed as signed numbers for a signed parameter, else as unsigned
    /// ones; an increment of 0 is left out.
    void infoGenerate(const RegisterInfo& info, std::uint64_t min, std::uint64_t max, std::uint64_t inc);
    /// A float feature.
    void infoGenerate(const RegisterInfo& info, double min, double max);
    /// A string feature.
    void infoGenerate(const RegisterInfo& info);
    /// An enumeration feature; `entries` holds the names by value.
    void infoGenerate(const RegisterInfo& info, const std::map<int, std::string_view>& entries);

 private:
    /// Appends texts and numbers as they come.
    template <typename... Parts>
    void put(const Parts&... parts);
    template <typename Content>
    void line(std::string_view element, const Content& content);
    void maximum(const RegisterInfo& info, std::uint64_t bits);
    void description(const RegisterInfo& info);
    /// The lines that all registers share; `length` is in bytes.
    void registerPart(const RegisterInfo& info, int length);

    std::string& document_;
    Places places_;
};
