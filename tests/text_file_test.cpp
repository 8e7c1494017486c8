/// Lines and numbers of text files against the C library's.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "files/TextFile.h"
#include "tests/TemporaryFile.h"

namespace marovine {
namespace {

/// The pieces of a file as fgets gives them.
std::vector<std::string> piecesOf(std::FILE* file) {
    std::vector<std::string> pieces;
    std::array<char, LineSize> line;
    std::rewind(file);
    while (std::fgets(line.data(), line.size(), file) != nullptr) pieces.emplace_back(line.data());
    return pieces;
}

/// Lines of all lengths, some with a NUL, up to `size` bytes.
std::string randomText(std::mt19937& random, std::size_t size, bool withNul) {
    std::string text;
    while (text.size() < size) {
        const unsigned length = random() % 10 == 0 ? random() % 700 : random() % 20;
        for (unsigned i = 0; i < length; ++i) text += static_cast<char>('a' + random() % 3);
        if (withNul && random() % 50 == 0) text += '\0';
        text += '\n';
    }
    text.resize(size);
    return text;
}

TEST(LineReader, GivesThePiecesOfFgets) {
    std::mt19937 random(1);
    constexpr std::size_t block = 32768;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{255}, std::size_t{1000},
                                   block - 1, block, block + 1, 3 * block + 77}) {
        for (const bool withNul : {false, true}) {
            const TemporaryFile text(".txt", randomText(random, size, withNul));
            const File file(std::fopen(text.name(), "r"));
            const auto expected = piecesOf(file.get());
            LineReader reader(file.get());
            for (int round = 0; round < 2; ++round) {
                std::vector<std::string> pieces;
                reader.rewind();
                while (const auto line = reader.next()) pieces.emplace_back(*line);
                EXPECT_EQ(expected, pieces) << size << " bytes";
            }
            for (const char* wanted : {"abcab", "a", "\n", "cc\n", "d", "ab\nc", ""}) {
                std::vector<std::string> with, found;
                for (const auto& piece : expected)
                    if (piece.find(wanted) != piece.npos) with.push_back(piece);
                reader.rewind();
                while (const auto line = reader.nextWith(wanted)) found.emplace_back(*line);
                EXPECT_EQ(with, found) << "'" << wanted << "' in " << size << " bytes";
            }
        }
    }
}

TEST(LineReader, SearchesEachBlockOnce) {
    std::string many;
    while (many.size() < 1'000'000) many += "n\n";
    const TemporaryFile text(".txt", many);
    const File file(std::fopen(text.name(), "r"));
    LineReader reader(file.get());
    const std::clock_t begin = std::clock();
    EXPECT_EQ(std::nullopt, reader.nextWith("nrOfElements"));
    EXPECT_LT(std::clock() - begin,
              CLOCKS_PER_SEC);  // some milliseconds; a minute when each line searches on
}

TEST(LineReader, SeesWhatWasWrittenOnceItIsTold) {
    const TemporaryFile text(".txt", "old\n");
    const File file(std::fopen(text.name(), "r+"));
    LineReader reader(file.get());
    reader.rewind();
    EXPECT_EQ("old\n", reader.next());
    std::rewind(file.get());
    std::fputs("new\n", file.get());
    reader.forget();
    reader.rewind();
    EXPECT_EQ("new\n", reader.next());
    EXPECT_EQ(std::nullopt, LineReader().next());
}

TEST(TextFile, ReadsIntegersAsStrtol) {
    for (const char* text : {"",
                             " ",
                             "0",
                             "17 ;",
                             " \t\n\v\f\r-5x",
                             "+7",
                             "+-7",
                             "--7",
                             "- 7",
                             "-",
                             "x1",
                             "0x10",
                             "010",
                             "1e3",
                             "9223372036854775807",
                             "9223372036854775808",
                             "-9223372036854775808",
                             "-9223372036854775809",
                             "18446744073709551615",
                             "-18446744073709551615",
                             "99999999999999999999999",
                             "-99999999999999999999999"})
        EXPECT_EQ(std::strtol(text, nullptr, 10), longFromText(text)) << text;
}

}  // namespace
}  // namespace marovine
