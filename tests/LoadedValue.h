#pragma once

/// Values that no setter accepts.

#include <string>
#include <string_view>

#include "tests/AppletFixture.h"
#include "tests/TemporaryFile.h"

namespace marovine::test {

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
