#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

#include "files/Fg_ConfigFileParser.h"
#include "fuzz/PlainLookup.h"
#include "tests/TemporaryFile.h"

// Looks keys up in a file of any content and compares each answer with a plain scan of the file.

namespace {

void expect(bool holds) {
    if (!holds) std::abort();
}

void lookUp(Fg_ConfigFileParser& parser, const char* fileName, const std::string& section,
            const std::string& key) {
    const auto text = std::make_unique<char[]>(256);  // of its own, so that a byte too many is seen
    std::fill_n(text.get(), 256, '#');

    const plain::Answer byKey = plain::keyInSection(fileName, section.c_str(), key.c_str());
    expect(plain::Answer{parser.parseKey(section.c_str(), key.c_str(), text.get()), text.get()} == byKey);
    const plain::Answer byLine = plain::firstLineWith(fileName, key.c_str());
    expect(plain::Answer{parser.parseKeyFromLine(key.c_str(), text.get()), text.get()} == byLine);

    int i = 0;
    unsigned long u = 0;
    long l = 0;
    double d = 0.0;
    const int expected = byKey.text.find("Error") == std::string::npos ? 0 : -1;
    expect(parser.parseIntKey(section.c_str(), key.c_str(), &i) == expected);
    expect(parser.parseUInt64Key(section.c_str(), key.c_str(), &u) == expected);
    expect(parser.parseInt64Key(section.c_str(), key.c_str(), &l) == expected);
    expect(parser.parseDoubleKey(section.c_str(), key.c_str(), &d) == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const TemporaryFile file(".mcf");
    FuzzedDataProvider input(data, size);
    std::string keys[3];
    for (std::string& key : keys) key = input.ConsumeRandomLengthString(300);
    const std::string section = input.ConsumeRandomLengthString(300);
    file.write(input.ConsumeRemainingBytesAsString());

    Fg_ConfigFileParser parser(nullptr, file.name(), true);
    parser.expectKeys(section.c_str(), {keys[0], keys[1]});
    for (const std::string& key : keys) {
        lookUp(parser, file.name(), section, key);
        lookUp(parser, file.name(), "[Port A]", key);
    }
    lookUp(parser, file.name(), "[Port A]", "FG_WIDTH");
    return 0;
}
