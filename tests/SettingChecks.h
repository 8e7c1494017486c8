#pragma once

/// What must hold for every setting: the design writes that follow from it, and what a refusal leaves.

#include <limits>
#include <string>
#include <type_traits>
#include <variant>

#include "tests/AppletFixture.h"

namespace marovine::test {

/// A value in the parameter's own type.
using SettingValue = std::variant<std::int32_t, std::uint32_t, double>;

/// A setting with all the design writes that it makes, in order.
struct Setting {
    std::string name;
    SettingValue value;
    Writes writes;
};

inline constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
/// A code that nothing but an injected fault answers.
inline constexpr int kInjected = -4711;

inline int apply(OpenApplet& applet, std::string_view name, const SettingValue& value) {
    return std::visit([&](auto v) { return applet.set(name, v); }, value);
}

/// Reads a parameter in the type of `like`.
inline SettingValue readLike(OpenApplet& applet, std::string_view name, const SettingValue& like) {
    return std::visit([&](auto v) -> SettingValue { return applet.get<decltype(v)>(name); }, like);
}

/// The first `count` of some writes: what a fault at the last of them leaves in the journal.
inline Writes firstOf(const Writes& writes, std::size_t count) {
    return {writes.begin(), writes.begin() + static_cast<std::ptrdiff_t>(count)};
}

/// Makes each of the setting's writes fail in turn, which must end it there and leave the parameter as it
/// was; then sets it for good.
inline void expectSetting(OpenApplet& applet, const Setting& setting) {
    SCOPED_TRACE(setting.name + " = " +
                 std::visit([](auto value) { return std::to_string(value); }, setting.value));
    const SettingValue before = readLike(applet, setting.name, setting.value);
    for (std::size_t n = 1; n <= setting.writes.size(); ++n) {
        applet.board().refuseNthWrite(static_cast<unsigned>(n), kInjected);
        EXPECT_EQ(kInjected, apply(applet, setting.name, setting.value));
        EXPECT_EQ(firstOf(setting.writes, n), applet.takeWrites());
        EXPECT_EQ(before, readLike(applet, setting.name, setting.value)) << "write " << n << " refused";
    }
    EXPECT_EQ(0, apply(applet, setting.name, setting.value));
    EXPECT_EQ(setting.writes, applet.takeWrites());
    EXPECT_EQ(setting.value, readLike(applet, setting.name, setting.value));
}

/// The value must be refused as out of range before anything changes.
inline void expectRefused(OpenApplet& applet, std::string_view name, const SettingValue& value) {
    SCOPED_TRACE(std::string(name) + " = " + std::visit([](auto v) { return std::to_string(v); }, value));
    const SettingValue before = readLike(applet, name, value);
    EXPECT_EQ(error::outOfRange, apply(applet, name, value));
    EXPECT_EQ(error::outOfRange, applet.lastError());
    EXPECT_TRUE(applet.takeWrites().empty());
    EXPECT_EQ(before, readLike(applet, name, value));
}

/// The parameter must be read from this design parameter each time, and a refused read must be passed on.
template <class T>
void expectReadOut(OpenApplet& applet, const std::string& name, const std::string& design, T value) {
    SCOPED_TRACE(name);
    if constexpr (std::is_same_v<T, std::int32_t>)
        applet.board().force(design, static_cast<std::uint32_t>(value));
    else
        applet.board().force(design, value);
    EXPECT_EQ(value, applet.get<T>(name));
    applet.board().refuseReads(design, kInjected);
    T unused{};
    EXPECT_EQ(kInjected,
              Fg_getParameterWithType(applet.record(), OpenApplet::idOf(name), &unused, 0, FG_TYPE_UINT32));
    applet.board().refuseReads(design, 0);
}

}  // namespace marovine::test
