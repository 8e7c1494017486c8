/// The program `marovine-studio`: all that `marovine` does, with the studio and the way to one.

#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <iostream>
#include <string>
#include <vector>

#include "command/Interrupt.h"
#include "command/Run.h"
#include "command/TerminalText.h"
#include "studio/HttpServer.h"
#include "studio/Remote.h"
#include "studio/Service.h"

namespace {

using namespace marovine;
using namespace marovine::studio;

/// The signals that end the studio, held back from every thread that starts from now on.
class EndingSignals {
 public:
    EndingSignals() {
        sigemptyset(&signals_);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals_, signal);
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    }

    void wait() const {
        int signal = 0;
        sigwait(&signals_, &signal);
    }

 private:
    sigset_t signals_{};
};

void openBrowser(const std::string& address) {
    if (getenv("DISPLAY") == nullptr && getenv("WAYLAND_DISPLAY") == nullptr) return;
    std::string program = "xdg-open";
    std::string argument = address;
    std::array<char*, 3> line{program.data(), argument.data(), nullptr};
    pid_t child = 0;
    // The signals that this program holds back are the browser's own affair.
    posix_spawnattr_t attributes;
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    // Without a browser the printed address serves as well.
    static_cast<void>(posix_spawnp(&child, program.c_str(), nullptr, &attributes, line.data(), environ));
    posix_spawnattr_destroy(&attributes);
}

std::string addressOf(const host::StudioOptions& options, unsigned port, const std::string& token) {
    const std::string host = options.listen.empty()                                  ? "127.0.0.1"
                             : options.listen == "0.0.0.0" || options.listen == "::" ? "localhost"
                             : options.listen.find(':') != std::string::npos ? "[" + options.listen + "]"
                                                                             : options.listen;
    return "http://" + host + ":" + std::to_string(port) + "/" + (token.empty() ? "" : "?token=" + token);
}

void serve(host::Session& session, const host::StudioOptions& options) {
    const EndingSignals ending;
    Endpoint endpoint;
    endpoint.port = static_cast<unsigned>(options.port);
    if (!options.listen.empty()) endpoint.address = options.listen;
    HttpServer server(endpoint);
    const Access access(endpoint.address, server.port(), options.listen.empty() ? "" : newToken());
    host::Applet& applet = session.applet();
    Service service(applet, {.config = session.options.config, .world = session.options.world},
                    [&server](Peer peer, Message message) { server.send(peer, std::move(message)); });
    server.start(service, access);
    const std::string address = addressOf(options, server.port(), access.token());
    session.console().out() << "the studio is at " << address << std::endl;
    if (!options.withoutBrowser) openBrowser(address);
    ending.wait();
    service.sayGoodbye();
    host::Interrupt::pretend(SIGINT);  // of a command that still takes pictures
    server.stop();
}

}  // namespace

int main(int count, char** arguments) {
    // A file that may not grow any more is a failed write, a page that has gone a failed message.
    for (const int signal : {SIGXFSZ, SIGPIPE}) ::signal(signal, SIG_IGN);
    const host::TerminalText output(std::cout, STDOUT_FILENO);
    const host::TerminalText errors(std::cerr, STDERR_FILENO);
    host::Session session;
    session.serveStudio = [&](const host::StudioOptions& options) { serve(session, options); };
    return runRemotely(session, {arguments + 1, arguments + count});
}
