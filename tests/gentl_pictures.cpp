/// Writes the bytes of pictures that a host takes through the applet's exports: gentl_pictures WIDTH HEIGHT
/// COUNT.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "client/Grabber.h"
#include "client/VirtualBoard.h"

using namespace marovine::host;

int main(int, char** arguments) {
    Applet applet(Library::load(), std::make_unique<VirtualBoard>());
    boardOf(applet).setClockMode(virtualboard::ClockMode::AsFastAsPossible);
    const auto number = [&](int i) { return static_cast<std::uint32_t>(std::atoi(arguments[i])); };
    applet.set("FG_WIDTH", number(1));
    applet.set("FG_HEIGHT", number(2));
    Grabber grabber(applet, number(3));
    for (std::uint32_t i = 0; i < number(3); ++i) {
        if (!grabber.comes(60)) return 1;
        const auto picture = grabber.next();
        if (std::fwrite(picture.bytes.data(), 1, picture.bytes.size(), stdout) != picture.bytes.size())
            return 1;
    }
}
