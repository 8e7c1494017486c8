/// Checks any text as a configuration, as the command does before a load, and holds the verdict against what
/// a load really says.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "client/ConfigCheck.h"
#include "client/Failure.h"
#include "client/VirtualBoard.h"
#include "tests/TemporaryFile.h"

using namespace marovine::host;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Applet applet(Library::load(), std::make_unique<VirtualBoard>(),
                               {.writeDefaults = true, .rememberSteps = true});
    static const TemporaryFile file(".mcf");
    file.write({reinterpret_cast<const char*>(data), size});

    const auto findings = checkConfiguration(applet, file.name());
    const bool rejected = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.weight == Finding::Weight::Fatal;
    });
    bool loads = true;
    try {
        applet.twin()->load(file.name());
    } catch (const Refused&) {
        loads = false;
    }
    if (loads == rejected) std::abort();
    return 0;
}
