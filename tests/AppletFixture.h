#pragma once

/// Opens the applet on a virtual board and speaks to it through its exports.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "base/ErrorCodes.h"
#include "marovine/Control.h"
#include "marovine/marovine.h"
#include "tables/EnumerationTables.h"
#include "tables/SdkParameterTable.h"

namespace marovine::test {

/// A design write as the tests state it: the name without "Device1_Process0_", and the value as text.
/// A field write reads "[first index] v, v, v"; doubles are written as the shortest text that reads back the
/// same.
struct DesignWrite {
    std::string name;
    std::string value;

    bool operator==(const DesignWrite&) const = default;
};

std::ostream& operator<<(std::ostream& out, const DesignWrite& write);

/// Design writes, oldest first.
using Writes = std::vector<DesignWrite>;

/// What a virtual board recorded, in the tests' form.
Writes inTestForm(const std::vector<virtualboard::Write>& writes);

/// A board with the applet open on it.
class OpenApplet {
 public:
    /// Opens with these flags; without `flags` bit 0 the defaults are written. Fails the test when it cannot.
    explicit OpenApplet(int flags = 0);
    OpenApplet(const OpenApplet&) = delete;
    OpenApplet& operator=(const OpenApplet&) = delete;
    ~OpenApplet();
    /// Ends the applet and opens it again on the same board. With `flags` bit 0 the board keeps its values,
    /// so that what was forced before is there when the applet opens.
    void reopen(int flags);

    Fg_Struct* record() { return &record_; }
    virtualboard::Control& board() { return control_; }
    GXdevice* device() { return device_; }

    /// Sets a parameter by name. `T` must be the parameter's own type: std::int32_t for enumerations.
    template <class T>
    int set(std::string_view name, T value) {
        return Fg_setParameterWithType(&record_, idOf(name), &value, 0, FG_TYPE_UINT32);
    }
    int setText(std::string_view name, const char* text) {
        return Fg_setParameterWithType(&record_, idOf(name), text, 0, FG_TYPE_TEXT);
    }
    /// Reads a parameter by name; fails the test when the read is refused.
    template <class T>
    T get(std::string_view name) {
        T value{};
        EXPECT_EQ(0, Fg_getParameterWithType(&record_, idOf(name), &value, 0, FG_TYPE_UINT32))
            << "reading " << name;
        return value;
    }
    std::string getText(std::string_view name);
    int lastError() { return Fg_getLastErrorNumber(&record_); }

    /// The design writes since the last call (or since opening), oldest first.
    Writes takeWrites() { return inTestForm(control_.takeWrites()); }
    /// The registry node of a parameter; fails the test when there is none.
    const RegisterInfo& node(std::string_view name);

    static int idOf(std::string_view name);

 private:
    void open(int flags);

    GXdevice* device_;
    virtualboard::Control control_;
    Fg_Struct record_{};
};

/// A test case with an applet that has its defaults; what opening wrote is already taken away.
class AppletTest : public testing::Test {
 protected:
    AppletTest() { applet.takeWrites(); }

    OpenApplet applet;
};

/// The value of an SDK constant by name.
inline std::int32_t constantOf(std::string_view name) {
    const auto* entry = findConstant(name);
    EXPECT_NE(nullptr, entry) << name;
    return entry != nullptr ? entry->value : 0;
}

/// Parameters that are listed without direct access.
inline constexpr int kListed = static_cast<int>(sdkParameterCount);

/// Sets an environment variable for the life of the object.
class Environment {
 public:
    Environment(const char* name, const char* value) : name_(name) { setenv(name, value, 1); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() { unsetenv(name_); }

 private:
    const char* name_;
};

inline int setById(OpenApplet& applet, int id, std::uint32_t value, int dma = 0) {
    return Fg_setParameterWithType(applet.record(), id, &value, dma, FG_TYPE_UINT32);
}

inline int getById(OpenApplet& applet, int id, void* value, int dma = 0, FgParamTypes type = FG_TYPE_UINT32) {
    return Fg_getParameterWithType(applet.record(), id, value, dma, type);
}

}  // namespace marovine::test
