#include "board/machine/DesignRuntime.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "board/design/DesignImage.h"
#include "board/machine/LogLevel.h"
#include "board/machine/Machine.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

namespace {

void reportFailure(const std::string& source, const char* reason) {
    if (logLevel() <= kLogFailure) std::fprintf(stderr, "virtual board: %s: %s\n", source.c_str(), reason);
}

fpga_design* load(std::string_view image, const std::string& source, int requiredType) {
    try {
        Machine& machine = Machine::instance();
        const OpeningFaults faults = machine.openingFaults();
        if (faults.refuseDesign) return nullptr;
        DesignData data = readDesignImage(image);
        if (requiredType != 0 && static_cast<int>(data.type) != requiredType) {
            throw std::invalid_argument("the design is of type " + std::to_string(data.type) + ", not " +
                                        std::to_string(requiredType));
        }
        return machine.addDesign(std::make_shared<const Design>(std::move(data), faults.hidden));
    } catch (const std::exception& error) {
        reportFailure(source, error.what());
        return nullptr;
    }
}

const RegisterData* registerOf(const Design* design, int number) {
    if (design == nullptr || number < 1 || static_cast<std::size_t>(number) > design->registers().size())
        return nullptr;
    return &design->registers()[static_cast<std::size_t>(number) - 1];
}

}  // namespace

fpga_design* loadDesign(const void* image, std::size_t size) {
    if (image == nullptr) return nullptr;
    return load({static_cast<const char*>(image), size}, "design image in memory", 0);
}

fpga_design* loadDesignFile(const char* fileName, int type) {
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

void unloadDesign(fpga_design* design) {
    Machine::instance().removeDesign(design);
}

HapEvent* designEvent(fpga_design* design, int number) {
    const auto loaded = Machine::instance().design(design);
    return loaded != nullptr ? loaded->event(number) : nullptr;
}

int registerCount(fpga_design* design) {
    const auto loaded = Machine::instance().design(design);
    return loaded != nullptr ? static_cast<int>(loaded->registers().size()) : 0;
}

const char* registerName(fpga_design* design, int number) {
    const auto loaded = Machine::instance().design(design);
    const RegisterData* description = registerOf(loaded.get(), number);
    return description != nullptr ? description->name.c_str() : nullptr;
}

int registerByName(fpga_design* design, const char* name) {
    const auto loaded = Machine::instance().design(design);
    if (loaded == nullptr) return kUnknownDesign;
    if (name == nullptr) return kNullPointer;
    const auto& registers = loaded->registers();
    for (std::size_t i = 0; i < registers.size(); ++i) {
        if (registers[i].name == name) return static_cast<int>(i) + 1;
    }
    return kUnknownRegister;
}

int registerBits(fpga_design* design, int number) {
    const auto loaded = Machine::instance().design(design);
    const RegisterData* description = registerOf(loaded.get(), number);
    return description != nullptr ? static_cast<int>(description->bits) : 0;
}

int registerWritable(fpga_design* design, int number) {
    const auto loaded = Machine::instance().design(design);
    const RegisterData* description = registerOf(loaded.get(), number);
    return description != nullptr && description->writable ? 1 : 0;
}

int readRegister(GXdevice* device, int number, std::uint64_t* value) {
    const auto board = Machine::instance().board(device);
    if (board == nullptr) return kUnknownBoard;
    return value != nullptr ? board->readRegister(number, *value) : kNullPointer;
}

int writeRegister(GXdevice* device, int number, std::uint64_t value) {
    const auto board = Machine::instance().board(device);
    return board != nullptr ? board->writeRegister(number, value) : kUnknownBoard;
}

}  // namespace virtualboard
