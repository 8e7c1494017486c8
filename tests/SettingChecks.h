#pragma once

/// Checks that apply to settings of every topic.

#include <string>
#include <string_view>

#include "tests/AppletFixture.h"
#include "tests/TemporaryFile.h"

namespace marovine::test {

/// The code of an injected fault: neither the applet nor the board has it.
inline constexpr int kRefusal = -777;

/// Lets each design write of a setting fail in turn. Each time the set must report the fault's code, write
/// nothing more, and leave the parameter reading as before; afterwards the setting works.
template <class T>
void expectFailedWritesUndone(OpenApplet& applet, std::string_view name, T value) {
    SCOPED_TRACE(name);
    const T before = applet.get<T>(name);
    ASSERT_NE(before, value);
    applet.takeWrites();
    ASSERT_EQ(0, applet.set(name, value));
    const auto writes = applet.takeWrites().size();
    ASSERT_LT(0U, writes);
    for (unsigned n = 1; n <= writes; ++n) {
        ASSERT_EQ(0, applet.set(name, before));
        applet.takeWrites();
        applet.board().refuseNthWrite(n, kRefusal);
        EXPECT_EQ(kRefusal, applet.set(name, value)) << "write " << n;
        EXPECT_EQ(kRefusal, applet.lastError());
        EXPECT_EQ(n, applet.takeWrites().size());
        EXPECT_EQ(before, applet.get<T>(name)) << "write " << n;
    }
    EXPECT_EQ(0, applet.set(name, value));
}

/// Leaves a value in the cache that its setter may refuse, as a configuration file can.
inline void loadValue(OpenApplet& applet, std::string_view name, std::string_view value) {
    const TemporaryFile file(".mcf");
    ASSERT_EQ(0, Fg_saveConfig(applet.record(), file.name()));
    std::string text = file.content();
    const std::string key = "\n" + std::string(name) + "=";
    const auto start = text.find(key);
    ASSERT_NE(std::string::npos, start) << name;
    const auto from = start + key.size();
    text.replace(from, text.find(';', from) - from, value);
    file.write(text);
    Fg_loadConfig(applet.record(), file.name());
    applet.takeWrites();
}

}  // namespace marovine::test
