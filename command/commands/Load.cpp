#include <filesystem>
#include <memory>

#include "client/ConfigCheck.h"
#include "command/ChangeReport.h"
#include "command/LoadReport.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace fs = std::filesystem;

namespace {

struct Options {
    fs::path file;
    TraceOption trace;
    bool json = false;
};

void run(const Options& options, Session& session) {
    Applet& applet = session.applet();
    const auto before = applet.twin();
    // A load starts the analyzers again; what they count then is no change of the file's.
    ChangeReport report(applet, options.trace, ChangeScope::Settings);
    loadConfiguration(applet, options.file);
    report.note("loading " + options.file.string());
    report.finish();
    const LoadReport left(*before, options.file);
    if (left.hasSkipped()) session.status = kFailed;

    const Console& console = session.console();
    if (options.json) {
        Json document = report.json();
        left.addTo(document);
        console.out() << printed(document) << '\n';
        return;
    }
    report.print(console);
    if (left.empty()) return;
    console.out() << '\n';
    left.print(console);
}

}  // namespace

void defineLoad(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("FILE.mcf", &options->file, "The configuration",
                     {.required = true, .file = FileRole::Read});
    addTraceOption(command, options->trace);
    command.flag("--json", options->json, "Report as JSON");
    command.footer(
        "Shows what the file changes. The applet skips refused values in silence; this command names them\n"
        "and ends with status 1. To work in the loaded state, give --config FILE.mcf to another command.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
