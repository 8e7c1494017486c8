/// The content of a configuration file: one line per stored parameter, written in list order and read back in
/// two passes. Both hold the instance lock from before the file is opened, so that no call of another thread
/// comes between; inside a call of the same thread, which holds it already, they run all the same.

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "files/Fg_ConfigFileParser.h"
#include "parameters/FgGxWrapperImpl.h"
#include "parameters/ParameterHandlers.h"

namespace error = marovine::error;
using marovine::FileUse;
using marovine::SdkParameter;
using marovine::ValueType;
using tavr::templates::platform::OuterCriticalSectionGuard;

namespace {

constexpr int kPort = 0;

// The file holds texts, doubles, one wide counter, and 32-bit numbers.
static_assert(std::none_of(marovine::sdkParameters.begin(), marovine::sdkParameters.end(),
                           [](const SdkParameter& row) {
                               return row.fileUse != FileUse::NotStored &&
                                      (row.type == ValueType::UInt64 || row.type == ValueType::UInt32Field ||
                                       row.type == ValueType::Forwarded);
                           }));

/// The parameters' section of a file.
struct Section {
    Fg_ConfigFileParser& parser;
    std::string name = Fg_ConfigFileParser::getPortString(kPort);
};

/// Reads a key's value in the type of a cache field or a setter; false when the key is missing.
bool readKey(Section& section, const char* key, double& value) {
    return section.parser.parseDoubleKey(section.name.c_str(), key, &value) == 0;
}
bool readKey(Section& section, const char* key, std::string& value) {
    std::array<char, marovine::LineSize> text;
    if (section.parser.parseKey(section.name.c_str(), key, text.data()) != 0) return false;
    value = text.data();
    return true;
}
template <class Integer>
requires std::is_integral_v<Integer>
bool readKey(Section& section, const char* key, Integer& value) {
    // The file holds every integer as a signed 32-bit number.
    int number = 0;
    if (section.parser.parseIntKey(section.name.c_str(), key, &number) != 0) return false;
    value = static_cast<Integer>(number);
    return true;
}

/// Puts a key's value straight into a cache field; false when the key is missing.
struct Preload {
    Section& section;
    const char* key;
    marovine::ParameterCache& cache;

    bool operator()(std::monostate) const { return true; }
    bool operator()(marovine::CacheField<marovine::LookupTable>) const { return true; }
    template <class T>
    bool operator()(marovine::CacheField<T> field) const {
        return readKey(section, key, field(cache));
    }
};

/// Gives a key's value to its setter, which keeps a refusal to itself; false when the key is missing.
struct Apply {
    Section& section;
    const char* key;
    FgGxWrapperImpl& applet;

    bool operator()(marovine::ReadOnly) const { return true; }
    bool operator()(const marovine::FieldSetters&) const { return true; }
    bool operator()(marovine::Setter<const char*> set) const {
        std::string value;
        if (!readKey(section, key, value)) return false;
        (applet.*set)(value.c_str(), false);
        return true;
    }
    template <class T>
    bool operator()(marovine::Setter<T> set) const {
        T value{};
        if (!readKey(section, key, value)) return false;
        (applet.*set)(value, false);
        return true;
    }
};

}  // namespace

void FgGxWrapperImpl::writeStoredValue(Fg_ConfigFileParser& parser, const SdkParameter& row, char* textRoom) {
    switch (row.type) {
        case ValueType::Double: {
            double value = 0.0;
            getParameterWithType(row.id, &value, 0, FG_TYPE_DOUBLE);
            parser.writeConfigFileDoubleKey(row.name, value);
            break;
        }
        case ValueType::Int64: {
            std::int64_t value = 0;
            getParameterWithType(row.id, &value, 0, FG_TYPE_INT64);
            parser.writeConfigFileInt64Key(row.name, value);
            break;
        }
        case ValueType::Text: {
            textRoom[0] = '\0';
            getParameterWithType(row.id, textRoom, 0, FG_TYPE_TEXT);
            parser.writeConfigFile(row.name, textRoom);
            break;
        }
        default: {
            std::int32_t value = 0;
            getParameterWithType(row.id, &value, 0, FG_TYPE_INT32);
            parser.writeConfigFileIntKey(row.name, value);
            break;
        }
    }
}

int FgGxWrapperImpl::Fg_saveConfig(Fg_Struct* inner, const char* fileName) {
    const OuterCriticalSectionGuard guard(&lock_);
    return FgGxWrapper::Fg_saveConfig(inner, fileName);
}

int FgGxWrapperImpl::Fg_loadConfig(Fg_Struct* inner, const char* fileName) {
    const OuterCriticalSectionGuard guard(&lock_);
    return FgGxWrapper::Fg_loadConfig(inner, fileName);
}

bool FgGxWrapperImpl::saveConfig(Fg_ConfigFileParser& parser) {
    lock_.saidToBeHeld();  // by Fg_saveConfig, which comes here through the base
    // The instance's own buffer may hold the text of the call that this save runs in.
    const auto textRoom = std::make_unique_for_overwrite<char[]>(marovine::kTextRoom + 1);
    parser.writeConfigFileByPort(kPort);
    for (const auto& row : marovine::sdkParameters) {
        if (row.fileUse == FileUse::NotStored) continue;
        try {
            writeStoredValue(parser, row, textRoom.get());
        } catch (int) {
            // What cannot be read now is left out; the rest of the file is still worth having.
        }
    }
    return true;
}

bool FgGxWrapperImpl::loadConfig(Fg_ConfigFileParser& parser) {
    const auto preloaded = [](FileUse use) { return use == FileUse::Preloaded || use == FileUse::Applied; };
    std::vector<std::string_view> keys;
    keys.reserve(marovine::sdkParameterCount);
    for (const auto& row : marovine::sdkParameters)
        if (preloaded(row.fileUse)) keys.emplace_back(row.name);
    Section section{parser};
    parser.expectKeys(section.name.c_str(), keys);

    const auto forEach = [&](auto&& chosen, auto&& load) {
        for (std::size_t i = 0; i < marovine::sdkParameterCount; ++i)
            if (chosen(marovine::sdkParameters[i].fileUse) && !load(marovine::parameterHandlers[i]))
                return false;
        return true;
    };
    try {
        // Every value stands in the cache before the first setter runs: a setter that consults another
        // parameter sees the loaded value, even of one that is applied later.
        return forEach(preloaded,
                       [&](const auto& row) {
                           return std::visit(Preload{section, row.name, cache_}, row.slot);
                       }) &&
               forEach([](FileUse use) { return use == FileUse::Applied; },
                       [&](const auto& row) {
                           return std::visit(Apply{section, row.name, *this}, row.set);
                       });
    } catch (int) {
        return false;
    }
}
