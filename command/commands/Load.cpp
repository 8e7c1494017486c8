#include <filesystem>
#include <memory>

#include "client/ConfigCheck.h"
#include "client/SkippedValues.h"
#include "command/ChangeReport.h"
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
    ChangeReport report(applet, options.trace);
    loadConfiguration(applet, options.file);
    report.note("loading " + options.file.string());
    report.finish();
    const ConfigFile file = ConfigFile::read(options.file);
    const auto skipped = skippedValues(*before, file);
    if (!skipped.empty()) session.status = kFailed;

    const Console& console = session.console();
    if (options.json) {
        Json document = report.json();
        document["skipped"] = Json::array();
        for (const auto& value : skipped)
            document["skipped"].push_back(
                {{"line", value.line->number}, {"sentence", value.sentence()}, {"advice", value.advice()}});
        console.out() << printed(document) << '\n';
        return;
    }
    report.print(console);
    if (skipped.empty()) return;
    console.out() << '\n';
    console.heading("Skipped: setters refuse these, so the design does not have them");
    for (const auto& value : skipped) {
        console.paragraph("line " + std::to_string(value.line->number) + ": " + value.sentence(), 0,
                          Style::Bad, 4);
        for (const auto& advice : value.advice()) console.paragraph(advice, 4);
    }
}

}  // namespace

void defineLoad(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("FILE.mcf", &options->file, "The configuration", {.required = true});
    addTraceOption(command, options->trace);
    command.flag("--json", options->json, "Report as JSON");
    command.footer(
        "Shows what the file changes. The applet skips refused values in silence; this command names them\n"
        "and ends with status 1. To work in the loaded state, give --config FILE.mcf to another command.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
