#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "client/ConfigCheck.h"
#include "client/ConfigFile.h"
#include "client/SkippedValues.h"
#include "client/VirtualBoard.h"
#include "command/Json.h"
#include "command/commands/Commands.h"
#include "pictures/SafeFile.h"
#include "tables/SdkParameterTable.h"

namespace marovine::host::commands {

namespace fs = std::filesystem;

namespace {

/// Compares what a file says with what the applet holds. The applet itself reports a save as done even when
/// the disk was full. Throws `Failure`, which names the first difference.
void compare(Applet& applet, const fs::path& file) {
    const ConfigFile saved = ConfigFile::read(file);
    for (const auto& row : sdkParameters) {
        if (row.fileUse == FileUse::NotStored) continue;
        const Parameter parameter = applet.parameter(row.name);
        const auto* line = saved.find(row.name);
        if (line == nullptr) throw Failure(std::string(row.name) + " is missing in what was written");
        // Read-outs move on between the save and the comparison.
        if (row.fileUse == FileUse::StoredOnly) continue;
        const Value now = applet.get(row.name);
        const Value then = configValue(parameter, *line);
        if (!sameInFile(then, now))
            throw Failure(std::string(row.name) + " is " + inQuotes(parameter.textOf(now)) +
                          " but would read back as " + inQuotes(parameter.textOf(then)) +
                          (line->cut ? ", cut where a load stops reading the line" : ""));
    }
}

struct Options {
    fs::path target;
    bool json = false;
};

/// What a load of a saved file would make of it.
struct Outlook {
    std::vector<std::string> lost;       ///< what it would not bring back, a sentence each
    std::optional<std::string> untried;  ///< why that could not be found out
};

/// A file can hold a state that no load brings back, and has no place for everything.
Outlook outlookOf(const fs::path& file, const Applet& applet, Session& session) {
    Outlook outlook;
    try {
        const Applet fresh(session.library(), std::make_unique<VirtualBoard>(),
                           {.writeDefaults = true, .rememberSteps = true});
        for (const auto& finding : checkConfiguration(fresh, file)) {
            if (finding.weight == Finding::Weight::Untried) outlook.untried = finding.text;
            if (finding.weight != Finding::Weight::Note) outlook.lost.push_back(finding.text);
        }
        if (const auto tables = tablesLostInSave(applet); !tables.empty())
            outlook.lost.push_back(lostTablesText(tables));
    } catch (const Failure& failure) {
        outlook.untried = failure.what();
    }
    if (outlook.untried) outlook.lost.clear();
    return outlook;
}

void run(const Options& options, Session& session) {
    const fs::path& target = options.target;
    if (target.filename().string().find(".mcf") == std::string::npos)
        throw UsageError("the name of a configuration file ends in .mcf; " + target.string() + " does not");
    Applet& applet = session.applet();
    std::error_code unknown;  // the safe file says what is wrong
    const bool existed = fs::exists(target, unknown);
    virtualboard::imaging::SafeFile file(target);
    try {
        applet.save(file.temporary());
        compare(applet, file.temporary());
    } catch (const Failure& failure) {
        const auto* refusal = dynamic_cast<const Refused*>(&failure);
        throw Failure("nothing saved to " + target.string() + ": " +
                      // The refusal itself names the temporary file.
                      (refusal != nullptr ? meaningOf(refusal->code) : failure.what()) +
                      (existed ? "; the file that was there is as before" : ""));
    }
    file.commit();
    const auto [lost, untried] = outlookOf(target, applet, session);
    if (untried) session.status = kFailed;
    const Console& console = session.console();
    if (options.json) {
        console.out() << printed({{"file", target.string()},
                                  {"notBroughtBack", lost},
                                  {"untried", untried ? Json(*untried) : Json()}})
                      << '\n';
        return;
    }
    console.out() << "saved to " << target.string()
                  << (untried ? ", but what a load makes of it could not be tried:"
                              : ", read back and compared")
                  << '\n';
    if (untried) console.paragraph(*untried, 2, Style::Bad, 2);
    for (const auto& sentence : lost) console.paragraph(sentence, 2, Style::Bad, 2);
}

}  // namespace

void defineSave(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("FILE.mcf", &options->target, "Where to save",
                     {.required = true, .file = FileRole::Written});
    command.flag("--json", options->json, "As a JSON object");
    command.footer(
        "Writes beside the file, reads it back, compares, and only then replaces what was there.\n"
        "Says which values a load would not bring back.\n"
        "For instance: marovine save fast.mcf --set FG_LINEPERIODE=20 --set FG_LINEEXPOSURE=10");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
