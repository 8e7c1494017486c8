/// What the applet library answers about itself, before and after a board is opened.

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "base/AppletIdentity.h"
#include "base/ErrorCodes.h"
#include "entry/Boundary.h"
#include "entry/DesignImage.h"
#include "marovine/marovine.h"
#include "runtime/FgGxWrapper.h"
#include "tables/EnumerationTables.h"

namespace error = marovine::error;

namespace {

template <class T>
void give(void* place, T value) {
    if (place != nullptr) *static_cast<T*>(place) = value;
}

int giveText(void** q, const char* text) {
    // The host's pointer is not const; the texts are constants all the same.
    if (q != nullptr) *q = const_cast<char*>(text);
    return error::success;
}

int giveData(void* p, void** q, const unsigned char* data, std::size_t size) {
    give(p, size);
    if (q != nullptr) *q = const_cast<unsigned char*>(data);
    return error::success;
}

/// Selectors that only give a number.
struct FixedAnswer {
    int selector;
    int answer;
};
constexpr auto fixedAnswers = std::to_array<FixedAnswer>({
    {848, 0},
    {1040, 0},
    {2160, 0},
    {2192, 0},
    {2560, 0},
    {2816, 0},
    {3072, 0},
    {1045, 1},
    {1792, 1},
    {1872, 1},
    {1888, 1},
    {3328, 1},
    {4608, 1},
    {2048, 131073},
    {MAROVINE_INFO_DESIGN_TYPE, kDesignType},
});

int answerConstant(const char* name) {
    if (name == nullptr) return error::invalidArgument;
    const auto* entry = marovine::findConstant(std::string_view(name));
    return entry != nullptr ? entry->value : error::invalidArgument;
}

int onlyFor(bool known, int answer) {
    return known ? answer : error::invalidArgument;
}

int answer(int selector, unsigned int a, unsigned int b, void* p, void** q) {
    namespace identity = marovine::identity;
    const auto fixed = std::find_if(fixedAnswers.begin(), fixedAnswers.end(),
                                    [=](const FixedAnswer& entry) { return entry.selector == selector; });
    if (fixed != fixedAnswers.end()) return fixed->answer;

    switch (selector) {
        case MAROVINE_INFO_ICON:
            return giveData(p, q, appletIconData, appletIconSize);
        case MAROVINE_INFO_DESIGN_IMAGE:
            return giveData(p, q, rawHapData, rawHapSize);
        case MAROVINE_INFO_DESIGN_UID:
            return giveText(q, identity::designUid);
        case MAROVINE_INFO_BITSTREAM_UID:
            return giveText(q, identity::bitstreamUid);
        case 2304:
            give(p, std::uint32_t{0});
            return error::success;
        case MAROVINE_INFO_PATH:
            return giveText(q, ".");
        case MAROVINE_INFO_CATEGORY:
            return giveText(q, identity::category);
        case MAROVINE_INFO_TAGS:
            return giveText(q, identity::tags);
        case MAROVINE_INFO_DEVICE:
            give(p, FgGxWrapper::accessDeviceHandle(nullptr));
            return error::success;
        case MAROVINE_INFO_DESIGN:
            give(p, FgGxWrapper::accessDesignHandle(nullptr));
            return error::success;
        case MAROVINE_INFO_NAME:
            return giveText(q, identity::name);
        case MAROVINE_INFO_VERSION:
            return giveText(q, identity::version);
        case MAROVINE_INFO_BUILD:
            return giveText(q, identity::build);
        case MAROVINE_INFO_CONSTANT:
            return answerConstant(static_cast<const char*>(p));
        case 4624:
        case 4640:
        case 4688:
            return onlyFor(a == 0, 1);
        case 4704:
            return onlyFor(a == 0, 8);
        case 4656:
        case 4672:
            return onlyFor(a == 0 && b == 0, 0);
        default:
            return error::notSupported;
    }
}

}  // namespace

int Info(int selector, unsigned int a, unsigned int b, void* p, void** q) {
    return marovine::atBoundary([&] { return answer(selector, a, b, p, q); },
                                [] { return error::internalFailure; });
}
