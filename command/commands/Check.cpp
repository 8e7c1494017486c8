#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

#include "client/ConfigCheck.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace fs = std::filesystem;

namespace {

void print(const Console& console, const fs::path& path, const std::vector<Finding>& findings) {
    if (findings.empty()) {
        console.out() << path.string() << ": every value will be taken and kept\n";
        return;
    }
    for (const auto& finding : collapsed(findings)) {
        const Style style = finding.weight == Finding::Weight::Note ? Style::Plain : Style::Bad;
        const std::string place =
            path.string() + ':' + (finding.line != 0 ? std::to_string(finding.line) + ':' : "");
        console.paragraph(place + ' ' + textOf(finding.weight) + ": " + finding.text, 0, style, 4);
        for (const auto& advice : finding.advice) console.paragraph(advice, 4);
    }
}

struct Options {
    fs::path file;
    bool json = false;
};

void run(const Options& options, Session& session) {
    const auto findings = checkConfiguration(session.applet(), options.file);
    if (std::any_of(findings.begin(), findings.end(),
                    [](const Finding& finding) { return finding.weight != Finding::Weight::Note; }))
        session.status = kFailed;
    if (!options.json) return print(session.console(), options.file, findings);
    Json document = Json::array();
    for (const auto& finding : findings)
        document.push_back({{"line", finding.line},
                            {"weight", textOf(finding.weight)},
                            {"text", finding.text},
                            {"advice", finding.advice}});
    session.console().out() << printed(document) << '\n';
}

}  // namespace

void defineCheck(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("FILE.mcf", &options->file, "The configuration",
                     {.required = true, .file = FileRole::Read});
    command.flag("--json", options->json, "As a JSON array");
    command.footer(
        "Names, line by line, what a load would fail on, skip in silence, misread, not keep or ignore.\n"
        "Status 0 when every value would be taken and kept, 1 otherwise. Missing keys stand in with the\n"
        "present values, so that the others are tried all the same.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
