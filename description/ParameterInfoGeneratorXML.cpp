#include "description/ParameterInfoGeneratorXML.h"

#include <array>
#include <bit>
#include <charconv>
#include <type_traits>

#include "description/Fg_ParameterInfo.h"
#include "description/Filters.h"

namespace {

constexpr int kWord = 4;            ///< bytes of an integer register
constexpr int kDoubleWord = 8;      ///< bytes of a float register, and of the one long integer register
constexpr int kLongestText = 4096;  ///< bytes of a string register
constexpr int kDigits = 12;
constexpr std::string_view kLongInteger = "FG_TRANSFER_LEN";

/// Indexed by the low two bits of the access flags.
constexpr std::array kAccessModes{"", "RO", "WO", "RW"};

std::string_view nameOf(const RegisterInfo& info) {
    return info.name == nullptr ? "" : info.name;
}

template <typename Part>
void append(std::string& document, const Part& part) {
    if constexpr (std::is_arithmetic_v<Part>) {
        std::array<char, 32> digits;  // more than the longest number needs
        char* const first = digits.data();
        char* const last = first + digits.size();
        if constexpr (std::is_floating_point_v<Part>) {
            document.append(first, std::to_chars(first, last, part, std::chars_format::general, kDigits).ptr);
        } else {
            document.append(first, std::to_chars(first, last, part).ptr);
        }
    } else {
        document += part;
    }
}

}  // namespace

template <typename... Parts>
void ParameterInfoGeneratorXML::put(const Parts&... parts) {
    (append(document_, parts), ...);
}

template <typename Content>
void ParameterInfoGeneratorXML::line(std::string_view element, const Content& content) {
    put("<", element, ">", content, "</", element, ">\n");
}

std::string_view ParameterInfoGeneratorXML::accessText(std::int32_t flags) {
    return kAccessModes[static_cast<unsigned>(flags) & 3u];
}

std::string ParameterInfoGeneratorXML::maximumText(const RegisterInfo& info, std::uint64_t bits) {
    std::string text;
    if (info.kind == FG_KIND_DOUBLE)
        append(text, std::bit_cast<double>(bits));
    else if (info.kind == FG_KIND_INT32)
        append(text, static_cast<std::int64_t>(bits));
    else
        append(text, bits);
    return text;
}

void ParameterInfoGeneratorXML::maximum(const RegisterInfo& info, std::uint64_t bits) {
    const std::string text = maximumText(info, bits);
    places_.maximumBits = bits;
    places_.maximum = {document_.size() + std::string_view("<Max>").size(), text.size()};
    line("Max", text);
}

void ParameterInfoGeneratorXML::description(const RegisterInfo& info) {
    if (info.displayName != nullptr && *info.displayName != '\0') {
        line("Description", xmlStringFilter(info.displayName));
    }
}

void ParameterInfoGeneratorXML::registerPart(const RegisterInfo& info, int length) {
    if (info.address != 0) line("Address", info.address);
    line("Length", length);
    places_.accessFlags = marovine::loadField(info.accessFlags);
    const std::string_view access = accessText(places_.accessFlags);
    places_.access = {document_.size() + std::string_view("<AccessMode>").size(), access.size()};
    line("AccessMode", access);
    line("pPort", "DevicePort");
}

void ParameterInfoGeneratorXML::infoGenerate(const RegisterInfo& info, std::uint64_t min, std::uint64_t max,
                                             std::uint64_t inc) {
    const std::string name = xmlStringFilter(nameOf(info));
    const auto limit = [&](const char* element, std::uint64_t value) {
        if (info.kind == FG_KIND_INT32) {
            line(element, static_cast<std::int64_t>(value));
        } else {
            line(element, value);
        }
    };
    put("<IntReg Name=\"", name, "_Reg\">\n");
    registerPart(info, nameOf(info) == kLongInteger ? kDoubleWord : kWord);
    line("Sign", "Signed");
    line("Endianess", "LittleEndian");
    put("</IntReg>\n<Integer Name='", name, "'>\n");
    description(info);
    line("pValue", name + "_Reg");
    limit("Min", min);
    maximum(info, max);
    if (inc != 0) limit("Inc", inc);
    put("</Integer>");
}

void ParameterInfoGeneratorXML::infoGenerate(const RegisterInfo& info, double min, double max) {
    const std::string name = xmlStringFilter(nameOf(info));
    put("<FloatReg Name=\"", name, "_Reg\">\n");
    registerPart(info, kDoubleWord);
    line("Endianess", "LittleEndian");
    put("</FloatReg>\n<Float Name=\"", name, "\">\n");
    description(info);
    line("pValue", name + "_Reg");
    line("Min", min);
    maximum(info, std::bit_cast<std::uint64_t>(max));
    put("</Float>");
}

void ParameterInfoGeneratorXML::infoGenerate(const RegisterInfo& info) {
    put("<StringReg Name=\"", xmlStringFilter(nameOf(info)), "\">\n");
    description(info);
    registerPart(info, kLongestText);
    put("</StringReg>");
}

void ParameterInfoGeneratorXML::infoGenerate(const RegisterInfo& info,
                                             const std::map<int, std::string_view>& entries) {
    const std::string name = xmlStringFilter(nameOf(info));
    put("<Enumeration Name='", name, "'>\n");
    description(info);
    for (const auto& [value, entryName] : entries) {
        put("<EnumEntry Name=\"", xmlStringFilter(entryName), "\">\n");
        line("Value", value);
        put("</EnumEntry>\n");
    }
    line("pValue", name + "_Reg");
    put("</Enumeration>\n<IntReg Name=\"", name, "_Reg\">\n");
    registerPart(info, kWord);
    line("Sign", "Unsigned");
    line("Endianess", "LittleEndian");
    put("</IntReg>");
}
