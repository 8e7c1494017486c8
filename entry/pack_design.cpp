/// Packs the description of a design into its image: pack_design DESCRIPTION IMAGE

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "board/design/DescriptionParser.h"
#include "board/design/DesignImage.h"
#include "entry/DesignImage.h"

namespace {

std::string readText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(path.string() + ": cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Writes beside the target and renames, so that an interrupted build leaves no half image behind.
void writeWhole(const std::filesystem::path& path, const std::string& bytes) {
    const std::filesystem::path part = path.string() + ".part";
    std::ofstream file(part, std::ios::binary | std::ios::trunc);
    file << bytes;
    file.close();
    if (!file) throw std::runtime_error(part.string() + ": cannot be written");
    std::filesystem::rename(part, path);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: pack_design DESCRIPTION IMAGE\n", stderr);
        return 2;
    }
    try {
        const std::string description = readText(argv[1]);
        virtualboard::parseDescription(description, argv[1]);  // what cannot be read must not be shipped
        writeWhole(argv[2], virtualboard::packDesign(description, rawHapSize));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
