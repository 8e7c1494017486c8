#include <memory>

#include "command/commands/Commands.h"

namespace marovine::host::commands {

void defineStudio(CommandLine command, Session& session) {
    auto options = std::make_shared<StudioOptions>();
    constexpr double kLastPort = 65535;
    command.option("--port", &options->port, "The port to listen on; without it, 8016 or the next free one",
                   {.type = "N", .minimum = 1, .maximum = kLastPort});
    command.option("--listen", &options->listen,
                   "Listen on this address of the machine, not only for the machine itself; the studio's "
                   "address then has a token",
                   {.type = "IP"});
    command.flag("--no-browser", options->withoutBrowser, "Do not open a browser");
    command.footer(
        "Serves a page with everything the system knows, and an interface for programs "
        "(docs/STUDIO-API.md), until Ctrl-C. With --config and --set it begins in a state of your own.\n"
        "For instance: marovine studio --config line3.mcf");
    command.action([options, &session] {
        session.refuseShared("studio");
        if (!session.serveStudio)
            throw Failure(
                "the studio is a program of its own, marovine-studio, which is not beside this one");
        session.serveStudio(*options);
    });
}

}  // namespace marovine::host::commands
