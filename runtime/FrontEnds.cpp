/// What every applet of the family answers alike: the frame of the configuration file, the XML description,
/// shading, which none offers, and the event lookups straight from the design's event list.

#include <array>
#include <clocale>
#include <cstring>
#include <string>

#include "base/ErrorCodes.h"
#include "files/ConfigHeader.h"
#include "files/Fg_ConfigFileParser.h"
#include "runtime/FgGxWrapper.h"

namespace error = marovine::error;
namespace header = marovine::config_header;

namespace {
/// Events have one bit of a 64-bit mask each.
constexpr int kEventLimit = 64;

/// Hosts on some platforms rely on this locale for the decimal point. Where it does not exist, as usual on
/// Linux, nothing changes; the file has decimal points either way.
void requestFileLocale() {
    std::setlocale(LC_ALL, "English");
}
}  // namespace

// ---- configuration file ----

int FgGxWrapper::Fg_saveConfig(Fg_Struct* /*inner*/, const char* fileName) {
    requestFileLocale();
    Fg_ConfigFileParser parser(nullptr, nullptr, false);
    if (!parser.setSaveFile(fileName)) return setError(error::fileNotAccessible);
    parser.flushAtEnd();
    parser.writeConfigFileHeader();
    parser.writeConfigFile(header::manufacturer, getManufacturer());
    parser.writeConfigFile(header::type, getCameraType());
    parser.writeConfigFile("Version", getCameraVersion());
    parser.writeConfigFileIntKey("LoadAppletId", getAppletID());
    parser.writeConfigFileIntKey(header::activePort, 0);
    saveConfig(parser);
    return setError(error::success);
}

int FgGxWrapper::Fg_loadConfig(Fg_Struct* /*inner*/, const char* fileName) {
    requestFileLocale();
    Fg_ConfigFileParser parser(nullptr, fileName, true);
    if (!parser.checkFileType(fileName) || !parser.checkFileExist(fileName)) {
        setError(error::configurationRejected);
        return error::fileNotFound;
    }
    std::array<char, marovine::LineSize> text{};
    int activePort = 0;
    const bool loaded = parser.parseKeyFromLine(header::manufacturer, text.data()) == 0 &&
                        parser.parseKeyFromLine(header::type, text.data()) == 0 &&
                        std::strcmp(text.data(), getCameraType()) == 0 &&
                        parser.parseIntKeyFromHeader(header::activePort, &activePort) == 0 &&
                        loadConfig(parser);
    return setError(loaded ? error::success : error::configurationRejected);
}

// ---- events ----

const char* FgGxWrapper::Fg_getEventName(unsigned long mask) {
    for (int number = 0; number < kEventLimit; ++number) {
        if ((1UL << number) != mask) continue;
        const HapEvent* event = HapGetEvent(designHandle(), number);
        return event != nullptr ? event->name : nullptr;
    }
    return nullptr;
}

std::uint64_t FgGxWrapper::Fg_getEventMask(const char* name) {
    if (name == nullptr) return 0;
    for (int number = 0; number < kEventLimit; ++number) {
        const HapEvent* event = HapGetEvent(designHandle(), number);
        if (event != nullptr && event->name != nullptr && std::strcmp(event->name, name) == 0)
            return std::uint64_t{1} << number;
    }
    return 0;
}

// ---- XML description ----

int FgGxWrapper::Fg_getParameterInfoXML(Fg_Struct* /*record*/, int port, char* buffer, std::size_t* size) {
    if (size == nullptr) return setError(error::invalidArgument);
    if (*size == 0 && buffer != nullptr) return setError(error::bufferTooSmall);
    if (parameterInfo().getRegisterInfo(port) == nullptr) return setError(error::noDefinition);
    const auto document = private_->description.of(parameterInfo(), getCameraType(), port);
    if (buffer != nullptr) {
        if (*size <= document->size()) return setError(error::bufferTooSmall);
        std::memcpy(buffer, document->c_str(), document->size() + 1);
    }
    *size = document->size() + 1;
    return setError(error::success);
}

// ---- shading ----

ShadingMaster* FgGxWrapper::Fg_AllocShading(int /*set*/, int /*port*/) {
    return nullptr;
}
int FgGxWrapper::Fg_FreeShading(ShadingMaster* /*shading*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_SetSubValueLine(ShadingMaster* /*shading*/, int /*x*/, int /*channel*/,
                                      float /*value*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_SetMultValueLine(ShadingMaster* /*shading*/, int /*x*/, int /*channel*/,
                                       float /*value*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_SetFixedPatternNoiseLine(ShadingMaster* /*shading*/, int /*on*/, int /*x*/,
                                               int /*channel*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_GetMaxLine(ShadingMaster* /*shading*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_GetAccess(ShadingMaster* /*shading*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_FreeAccess(ShadingMaster* /*shading*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_WriteActLine(ShadingMaster* /*shading*/, int /*line*/) {
    return error::notSupported;
}
