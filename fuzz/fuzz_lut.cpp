#include <cstdint>
#include <cstdlib>
#include <iterator>

#include "files/Fg_LutFileParser.h"
#include "tests/TemporaryFile.h"

// Reads a file of any content as every kind of table; what was read must come back the same when it is saved
// and read again.

namespace {

using Table = marovine::OwnedTable<LookupTable_s>;
using Knee = marovine::OwnedTable<KneeLookupTable_s>;

void expect(bool holds) {
    if (!holds) std::abort();
}

bool sameTable(const LookupTable_s& a, const LookupTable_s& b) {
    return a.id == b.id && a.format == b.format && a.number == b.number && a.nrOfElements == b.nrOfElements &&
           std::equal(a.values, a.values + a.nrOfElements, b.values);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFile file(".lut");
    static const TemporaryFile copy(".lut");
    file.write({reinterpret_cast<const char*>(data), size});
    Fg_LutFileParser parser;

    Table gray;
    expect(parser.getLutFromFile(file.name(), gray, "[gray]") == (gray.values != nullptr ? 0 : -1));
    expect(gray.nrOfElements <= Fg_LutFileParser::MaxElements);

    Knee knee;
    knee.nrOfElements = 64;
    expect(parser.getLutFromFile(file.name(), knee, "[red]") == 0);

    Table channels[3];
    if (parser.getLutFromFile(file.name(), channels[0], channels[1], channels[2]) == 0) {
        Table again[3];
        expect(parser.saveLutToFile(copy.name(), channels[0], channels[1], channels[2]) == 0);
        expect(parser.getLutFromFile(copy.name(), again[0], again[1], again[2]) == 0);
        for (int i = 0; i < 3; ++i) expect(sameTable(channels[i], again[i]));
    }
    return 0;
}
