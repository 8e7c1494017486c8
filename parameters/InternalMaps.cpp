/// What an instance looks up once when it is opened: the names of the pseudo-parameters, the events, and the
/// ids of the design parameters.

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "base/LogLine.h"
#include "base/TrueWord.h"
#include "marovine/EnvironmentVariables.h"
#include "parameters/DesignTree.h"
#include "parameters/FgGxWrapperImpl.h"
#include "tables/EventTable.h"

using marovine::kDesignIdBase;
using marovine::kRegisterIdBase;
using tavr::templates::platform::PropertiesFile;

namespace {

/// One more than the bits of a mask: a design that has this many events is not searched further.
constexpr int kEventSearchLimit = 65;

}  // namespace

void FgGxWrapperImpl::initInternalMaps() {
    if (marovine::isSwitchedOnByEnvironment(marovine::environment::kDirectDesign))
        recordScalarDesignParameters();
    if (directRegisterAccess) addRegisterNames();
    addDesignNames();
    buildEventMaps();
}

void FgGxWrapperImpl::recordScalarDesignParameters() {
    marovine::forEachScalarLeaf(getUnwrappedParameterInfo(), [&](const RegisterInfo& leaf, const auto&) {
        if (leaf.name != nullptr)
            properties_.setProperty(PropertiesFile::key(propertiesSection_, leaf.name), "On");
    });
}

void FgGxWrapperImpl::addRegisterNames() {
    const int count = HapGetNrOfRegister(designHandle());
    for (int number = 1; number <= count; ++number) {
        const char* name = HapGetRegisterName(designHandle(), number);
        if (name == nullptr) continue;
        names_.addRegister(std::string("DRA_") + name,
                           HapGetRegisterByName(designHandle(), name) + kRegisterIdBase);
    }
}

void FgGxWrapperImpl::addDesignNames() {
    for (const auto& name : properties_.getSectionPropertyNames(propertiesSection_)) {
        if (!marovine::isTrueWord(properties_.getProperty(PropertiesFile::key(propertiesSection_, name))))
            continue;
        const int innerId = getParameterIdByName(name.c_str());
        if (innerId != 0) names_.addDesignParameter("DGXA_" + name, innerId + kDesignIdBase);
    }
}

void FgGxWrapperImpl::buildEventMaps() {
    // The first event of a name counts.
    std::vector<std::pair<std::string_view, std::uint64_t>> masks;
    masks.reserve(kEventSearchLimit);
    for (int number = 0; number < kEventSearchLimit; ++number) {
        const HapEvent* event = HapGetEvent(designHandle(), number);
        if (event == nullptr) break;
        if (event->name == nullptr) continue;
        const std::uint64_t mask = number < 64 ? std::uint64_t{1} << number : 0;
        masks.emplace_back(event->name, mask);
        if (event->kind == 1) events_.enter(event->name, mask);
    }
    for (const auto& [sdkName, designName] : marovine::sdkEvents) {
        const std::string_view name = designName;
        const auto found =
            std::find_if(masks.begin(), masks.end(), [&](const auto& event) { return event.first == name; });
        if (found != masks.end())
            events_.enter(sdkName, found->second);
        else
            marovine::logLine(*getDefaultLogger(), marovine::kLogLookup,
                              "cannot retrieve event id for internal event: '", designName, "'");
    }
}

void FgGxWrapperImpl::retrieveIds() {
    for (std::size_t slot = 0; slot < marovine::designParameterCount; ++slot) {
        const char* name = marovine::designParameterNames[slot];
        designIds_[slot] = getParameterIdByName(name);
        if (designIds_[slot] < 1)
            marovine::logLine(*getDefaultLogger(), marovine::kLogLookup,
                              "cannot retrieve GX id for GX parameter: '", name, "'");
    }
}
