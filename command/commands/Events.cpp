#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Names.h"
#include "client/Grabber.h"
#include "client/VirtualBoard.h"
#include "command/Interrupt.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::vector<std::string> names;
    bool wait = false;
    int count = 0;       // 0: as many as come
    double seconds = 0;  // 0: without end
    bool json = false;
};

std::string hexadecimal(std::uint64_t mask) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "0x%016llx", static_cast<unsigned long long>(mask));
    return text.data();
}

/// The events of these names and patterns; all without any. Throws `Failure` for a name that fits none.
std::vector<Event> chosen(const Options& options, Applet& applet) {
    std::vector<Event> all = applet.events();
    if (options.names.empty()) return all;
    std::uint64_t mask = 0;
    for (const std::string& name : options.names) {
        std::vector<std::string> known;
        bool any = false;
        for (const Event& event : all) {
            known.push_back(event.name);
            const bool fits =
                isPattern(name) ? matchesPattern(event.name, name) : editDistance(event.name, name) == 0;
            if (fits) mask |= event.mask;
            any = any || fits;
        }
        if (any) continue;
        std::string meant;
        for (const std::string& near : nearestNames(name, known))
            meant.append(meant.empty() ? "; perhaps " : ", ").append(near);
        throw Failure(std::string("the design has no event ").append(name).append(meant));
    }
    std::vector<Event> result;
    for (const Event& event : all)
        if ((event.mask & mask) != 0) result.push_back(event);
    return result;
}

void list(const Options& options, Session& session) {
    Table table({"bit", "mask", "event"});
    table.alignRight(0);
    Json document = Json::array();
    for (const auto& event : chosen(options, session.applet())) {
        const int bit = std::countr_zero(event.mask);
        if (options.json) {
            document.push_back({{"name", event.name}, {"bit", bit}, {"mask", event.mask}});
        } else {
            table.add({std::to_string(bit), hexadecimal(event.mask), event.name});
        }
    }
    if (options.json) {
        session.console().out() << printed(document) << '\n';
    } else {
        table.print(session.console());
    }
}

/// One line for one event.
std::string lineOf(const virtualboard::Event& event, const std::string& name, bool json) {
    if (json) {
        return printedOnOneLine({{"time", event.time},
                                 {"name", name},
                                 {"count", event.count},
                                 {"payload", event.payload},
                                 {"lost", event.lost}});
    }
    std::array<char, 32> time{};
    std::snprintf(time.data(), time.size(), "%15.9f s  ", static_cast<double>(event.time) * 1e-9);
    std::string line = event.lost > 0 ? "(" + std::to_string(event.lost) + " lost)\n" : "";
    return line + time.data() + padded(name, 32) + "  " + std::to_string(event.payload);
}

/// Prints events as they come while pictures are taken. What the board counts begins with this.
void wait(const Options& options, Session& session) {
    using Clock = std::chrono::steady_clock;
    constexpr std::uint32_t kRoom = 1 << 16;
    // So that an interrupt is noticed and no picture is missed; to ask for pictures wakes the board each
    // time.
    constexpr std::chrono::duration<double> kStep(0.02);
    Applet& applet = session.applet();
    auto& board = boardOf(applet);
    std::array<std::string, 64> names;
    std::uint64_t mask = 0;
    for (const Event& event : chosen(options, applet)) {
        names[static_cast<std::size_t>(std::countr_zero(event.mask))] = event.name;
        mask |= event.mask;
    }
    const Interrupt interrupt;
    // The clock stands until somebody listens, so that lines and frames are told of from the first one on.
    Grabber grabber(applet, -1, Grabber::generousBuffers(applet));
    auto events = board.waitEvents(mask, kRoom);
    board.setClockMode(virtualboard::ClockMode::RealTime);
    const auto end = Clock::now() + std::chrono::duration<double>(options.seconds);
    auto& out = session.console().out();
    Clock::time_point asked{};
    std::optional<std::int64_t> last;  // board time at the end: what has happened by then is still told
    for (int told = 0; options.count == 0 || told < options.count;) {
        if (interrupt.signal() != 0) {
            session.status = 128 + interrupt.signal();
            return;
        }
        const double left = std::chrono::duration<double>(end - Clock::now()).count();
        if (options.seconds > 0 && left <= 0 && !last) last = board.time();
        if (Clock::now() - asked >= kStep) {
            while (grabber.comes(0)) grabber.next();
            asked = Clock::now();
        }
        auto event = events.next(0);
        if (!event && !last) {
            out.flush();
            event = events.next(options.seconds > 0 ? std::min(left, kStep.count()) : kStep.count());
        }
        if (last && (!event || event->time > *last)) {
            if (options.count == 0) return;
            throw Failure("only " + std::to_string(told) + " of " + std::to_string(options.count) +
                          " events came in time");
        }
        if (!event) continue;
        out << lineOf(*event, names[event->number], options.json) << '\n';
        ++told;
    }
}

void run(const Options& options, Session& session) {
    if (!options.wait && (options.count > 0 || options.seconds > 0))
        throw UsageError("-n and --seconds say how long --wait waits");
    if (options.wait) session.refuseShared("events --wait");
    options.wait ? wait(options, session) : list(options, session);
}

}  // namespace

void defineEvents(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("NAME", &options->names, "Only these events; the whole name, or a pattern with * and ?");
    command.flag("--wait", options->wait, "Take pictures in real time and print events as they come");
    command.option("-n,--count", &options->count, "With --wait: end after so many events",
                   {.type = "N", .minimum = 1, .maximum = 1e9});
    command.option("--seconds", &options->seconds, "With --wait: end after this time",
                   {.type = "SECONDS", .minimum = 0.001, .maximum = 1e9});
    command.flag("--json", options->json, "As a JSON array; with --wait an object on a line for each event");
    command.footer(
        "With --wait a line has the board's time, the event's name and its payload: the level after an edge "
        "at\n"
        "an input, the number of the line or frame, from 0, or the pictures lost so far. Ctrl-C ends it.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
