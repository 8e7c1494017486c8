#include "board/world/World.h"

#include <filesystem>
#include <memory>
#include <string>

#include "board/world/WorldSchema.h"
#include "command/Json.h"
#include "command/WorldSignals.h"
#include "command/commands/Commands.h"
#include "pictures/SafeFile.h"

namespace marovine::host::commands {

namespace {

namespace fs = std::filesystem;
namespace world = virtualboard::world;
using virtualboard::WorldFaults;

struct CheckOptions {
    fs::path file;
    bool json = false;
};

WorldFaults faultsOf(const fs::path& file) {
    try {
        world::loadWorld(file);
        return {};
    } catch (const virtualboard::WorldError& error) {
        return error.faults();
    }
}

Json jsonOf(const fs::path& file, const WorldFaults& faults) {
    Json list = Json::array();
    for (const auto& fault : faults) {
        list.push_back({{"line", fault.line > 0 ? Json(fault.line) : Json()},
                        {"path", fault.path},
                        {"reason", fault.reason}});
    }
    return {{"file", file.string()}, {"faults", std::move(list)}};
}

void check(const CheckOptions& options, Session& session) {
    session.refuseShared("world check");  // a world names files of the disk
    const WorldFaults faults = faultsOf(options.file);
    const Console& console = session.console();
    if (!faults.empty()) session.status = kFailed;
    if (options.json) {
        console.out() << printed(jsonOf(options.file, faults)) << '\n';
        return;
    }
    if (faults.empty()) {
        console.out() << options.file.string() << ": nothing is wrong\n";
        return;
    }
    Table table({"line", "value", "what is wrong"});
    table.alignRight(0);
    for (const auto& fault : faults)
        table.add({fault.line > 0 ? std::to_string(fault.line) : "", fault.path, fault.reason});
    table.print(console);
}

struct ShowOptions {
    fs::path file, svg;
    double from = 0, to = 100;  // ms
    bool outside = false;
};

void show(const ShowOptions& options, Session& session) {
    if (options.from >= options.to) throw UsageError("--from must lie before --to");
    session.refuseShared("world show");
    // An applet is opened only where it is drawn: opening it takes longer than all the rest.
    session.options.world = options.file;
    std::shared_ptr<const world::World> read;
    try {
        read = world::loadWorld(options.file);
    } catch (const virtualboard::WorldError& error) {
        throw Failure(options.file.string() + " is no world:\n" + error.what());
    }
    TimingDiagram diagram = outsideSignals(*read, options.from, options.to);
    if (!options.outside) addBoardSignals(session.applet(), diagram);
    if (options.svg.empty()) {
        diagram.print(session.console());
    } else {
        virtualboard::imaging::writeSafely(options.svg, diagram.svg());
    }
}

}  // namespace

void defineWorld(CommandLine command, Session& session) {
    command.requireCommand();

    auto checkOptions = std::make_shared<CheckOptions>();
    CommandLine checking = command.command("check", "Say everything that is wrong with a world file");
    checking.argument("FILE.json", &checkOptions->file, "The world", {.required = true});
    checking.flag("--json", checkOptions->json, "Report as JSON");
    checking.action([checkOptions, &session] { check(*checkOptions, session); });

    auto showOptions = std::make_shared<ShowOptions>();
    CommandLine showing =
        command.command("show", "Draw the signals of a world, and what the board makes of them");
    showing.argument("FILE.json", &showOptions->file, "The world",
                     {.required = true, .file = FileRole::Read});
    showing.option("--from", &showOptions->from, "Time at the left edge, since the world began",
                   {.type = "MS", .minimum = 0, .maximum = 1e9});
    showing.option("--to", &showOptions->to, "Time at the right edge; 100 at first",
                   {.type = "MS", .minimum = 0.001, .maximum = 1e9});
    showing.option("--svg", &showOptions->svg, "Draw into this file instead",
                   {.type = "FILE.svg", .file = FileRole::Written});
    showing.flag("--outside", showOptions->outside, "Leave out what happens on the board");
    showing.footer(
        "The settings of --config and --set decide what the board does. Where a signal changes too often to "
        "be\n"
        "drawn it is shaded; choose a shorter time then.");
    showing.action([showOptions, &session] { show(*showOptions, session); });

    CommandLine schema = command.command("schema", "Print the JSON schema of world files");
    schema.footer("docs/WORLD.md explains worlds. Take pictures in one with --world, before any command.");
    schema.action([&session] { session.console().out() << world::worldSchema(); });
}

}  // namespace marovine::host::commands
