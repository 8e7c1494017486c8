#pragma once

/// Opens the applet through the host client, as the command does.

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>

#include "client/VirtualBoard.h"

namespace marovine::test {

/// A test case with an applet opened through the client. It remembers its steps, so it can have a twin.
class HostTest : public testing::Test {
 protected:
    /// The library beside the test program.
    static const std::shared_ptr<const host::Library>& library() {
        static const auto loaded = host::Library::load();
        return loaded;
    }

    /// Sets a parameter from text, as a user writes it.
    void set(std::string_view name, std::string_view value) {
        applet.set(name, applet.parameter(name).parse(value));
    }

    host::Applet applet{
        library(), std::make_unique<host::VirtualBoard>(), {.writeDefaults = true, .rememberSteps = true}};
};

}  // namespace marovine::test
