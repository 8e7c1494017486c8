#pragma once

/// A virtual board with the embedded design open on it through the host runtime, without the applet.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "entry/DesignImage.h"
#include "marovine/Control.h"
#include "marovine/OutsideRuntimes.h"

extern "C" Fg_Struct* Fg_InitHandleSlaveAware(const char* designName, GXdevice* device, fpga_design* design,
                                              int flags);

namespace virtualboard::test {

/// Opens in its constructor and closes what is still open in its destructor.
class BoardTest : public testing::Test {
 protected:
    BoardTest() : device(insertBoard()), control(device) { open(0); }

    ~BoardTest() override {
        control.clearOpeningFaults();
        close();
        removeBoard(device);
    }

    void open(int flags) {
        design = HapLoadDesignFromBuffer(rawHapData, rawHapSize, 1);
        ASSERT_NE(nullptr, design);
        handle = Fg_InitHandleSlaveAware("Marovine.hap", device, design, flags);
        ASSERT_NE(nullptr, handle);
    }

    void close() {
        if (handle != nullptr) Fg_FreeGrabber(handle);
        if (design != nullptr) HapUnloadHapFile(design);
        handle = nullptr;
        design = nullptr;
    }

    int id(std::string_view name) { return Fg_getParameterIdByName(handle, std::string(name).c_str()); }

    template <class T>
    int set(std::string_view name, T value, FgParamTypes type) {
        return Fg_setParameterWithType(handle, id(name), &value, 0, type);
    }
    int set(std::string_view name, std::uint32_t value) { return set(name, value, FG_TYPE_UINT32); }

    /// Reads a value; fails the test when the read is refused.
    template <class T>
    T get(std::string_view name, FgParamTypes type) {
        T value{};
        EXPECT_EQ(0, Fg_getParameterWithType(handle, id(name), &value, 0, type)) << name;
        return value;
    }

    GXdevice* device;
    Control control;
    fpga_design* design = nullptr;
    Fg_Struct* handle = nullptr;
};

}  // namespace virtualboard::test
