/// Loads any text as a configuration through the exports. Whatever it says, the applet answers with a known
/// code and still serves its parameters.

#include <cstdint>
#include <cstdlib>

#include "base/ErrorCodes.h"
#include "fuzz/OpenOnce.h"
#include "tables/SdkParameterTable.h"
#include "tests/TemporaryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fg_Struct* record = marovine::fuzz::openApplet();
    static const TemporaryFile file(".mcf");
    file.write({reinterpret_cast<const char*>(data), size});

    const int code = Fg_loadConfig(record, file.name());
    if (code != 0 && code != marovine::error::configurationRejected) std::abort();
    std::uint32_t width = 1024;
    if (Fg_getParameterWithType(record, marovine::sdkId("FG_WIDTH"), &width, 0, FG_TYPE_UINT32) != 0)
        std::abort();
    return 0;
}
