/// libhaprt.so: the design runtime on the virtual board. Records and texts that it hands out live as long as
/// the design is loaded. Where a design cannot be loaded, standard error says why when MAROVINE_LOG_LEVEL is
/// 5 or less.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "board/machine/LogLevel.h"
#include "board/machine/Machine.h"
#include "marovine/BoardCodes.h"

using namespace virtualboard;

namespace {

void reportFailure(const char* source, const char* reason) {
    if (logLevel() <= kLogFailure) std::fprintf(stderr, "virtual board: %s: %s\n", source, reason);
}

fpga_design* load(std::string_view image, const char* source, int requiredType) {
    try {
        return Machine::instance().loadDesign(image, requiredType);
    } catch (const std::exception& error) {
        reportFailure(source, error.what());
        return nullptr;
    }
}

std::shared_ptr<const Design> find(fpga_design* design) {
    return Machine::instance().designs.find(design);
}

/// What `get` says of a register; `none` when there is no such register.
template <typename Result, typename Get>
Result ofRegister(fpga_design* design, int number, Result none, Get get) {
    const auto loaded = find(design);
    if (loaded == nullptr || number < 1 || static_cast<std::size_t>(number) > loaded->registers().size())
        return none;
    return get(loaded->registers()[static_cast<std::size_t>(number) - 1]);
}

}  // namespace

extern "C" {

fpga_design* HapLoadDesignFromBuffer(const void* image, std::size_t size, int) {
    if (image == nullptr) return nullptr;
    return load({static_cast<const char*>(image), size}, "design image in memory", 0);
}

fpga_design* HapLoadHapFileWithType(const char* fileName, int type, int) {
    if (fileName == nullptr) return nullptr;
    try {
        std::error_code none;
        std::string bytes;
        if (std::filesystem::is_regular_file(fileName, none))
            bytes.resize(std::filesystem::file_size(fileName));
        std::ifstream file(fileName, std::ios::binary);
        if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
            reportFailure(fileName, "the file cannot be read");
            return nullptr;
        }
        return load(bytes, fileName, type);
    } catch (const std::exception&) {  // larger than memory, or gone meanwhile
        return nullptr;
    }
}

void HapUnloadHapFile(fpga_design* design) {
    Machine::instance().designs.take(design);
}

HapEvent* HapGetEvent(fpga_design* design, int number) {
    const auto loaded = find(design);
    return loaded != nullptr ? loaded->event(number) : nullptr;
}

int HapGetNrOfRegister(fpga_design* design) {
    const auto loaded = find(design);
    return loaded != nullptr ? static_cast<int>(loaded->registers().size()) : 0;
}

const char* HapGetRegisterName(fpga_design* design, int number) {
    return ofRegister<const char*>(design, number, nullptr,
                                   [](const RegisterData& data) { return data.name.c_str(); });
}

int HapGetRegisterByName(fpga_design* design, const char* name) {
    const auto loaded = find(design);
    if (loaded == nullptr) return kUnknownDesign;
    if (name == nullptr) return kNullPointer;
    const auto& registers = loaded->registers();
    for (std::size_t i = 0; i < registers.size(); ++i) {
        if (registers[i].name == name) return static_cast<int>(i) + 1;
    }
    return kUnknownRegister;
}

int HapGetRegisterBitRange(fpga_design* design, int number) {
    return ofRegister(design, number, 0,
                      [](const RegisterData& data) { return static_cast<int>(data.bits); });
}

int HapGetRegisterDirection(fpga_design* design, int number) {
    return ofRegister(design, number, 0, [](const RegisterData& data) { return data.writable ? 1 : 0; });
}

}  // extern "C"
