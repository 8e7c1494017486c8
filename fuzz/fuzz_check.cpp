/// Checks any text as a configuration, as the command does before a load, and holds the verdict against what
/// a load really says.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <span>

#include "client/ConfigCheck.h"
#include "client/Failure.h"
#include "client/VirtualBoard.h"
#include "tests/TemporaryFile.h"

using namespace marovine::host;

namespace {

bool isFatal(const Finding& finding) {
    return finding.weight == Finding::Weight::Fatal;
}

/// Whether the file's text alone shows that no load will take it.
bool isRejected(const TemporaryFile& file) {
    try {
        return std::ranges::any_of(findingsIn(ConfigFile::read(file.name())), isFatal);
    } catch (const Failure&) {
        return true;
    }
}

/// Whether a load takes it; what it leaves behind in the applet decides over values alone.
bool loads(Applet& applet, const TemporaryFile& file) {
    try {
        applet.load(file.name());
    } catch (const Refused&) {
        return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Applet start(Library::load(), std::make_unique<VirtualBoard>(),
                              {.writeDefaults = true, .rememberSteps = true});
    static const std::unique_ptr<Applet> loaded = start.twin();
    static const TemporaryFile file(".mcf");
    file.write({reinterpret_cast<const char*>(data), size});

    const bool rejected = isRejected(file);
    if (loads(*loaded, file) == rejected) std::abort();

    // To explain every value takes many applets, up to a second: one text in so many gets it.
    constexpr unsigned kSeldom = 512;
    const std::span bytes(data, size);
    if (std::accumulate(bytes.begin(), bytes.end(), 0U) % kSeldom != 0) return 0;
    if (std::ranges::any_of(checkConfiguration(start, file.name()), isFatal) != rejected) std::abort();
    return 0;
}
