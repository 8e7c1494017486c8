#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "client/ConfigCheck.h"
#include "client/ConfigFile.h"
#include "client/SafeFile.h"
#include "command/commands/Commands.h"
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

void run(const fs::path& target, Session& session) {
    if (target.filename().string().find(".mcf") == std::string::npos)
        throw UsageError("the name of a configuration file ends in .mcf; " + target.string() + " does not");
    Applet& applet = session.applet();
    std::error_code unknown;  // the safe file says what is wrong
    const bool existed = fs::exists(target, unknown);
    SafeFile file(target);
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
    const Console& console = session.console();
    console.out() << "saved to " << target.string() << ", read back and compared\n";
    // A file can hold a state that no load brings back.
    const Applet fresh(session.library(), {.writeDefaults = true, .rememberSteps = true});
    for (const auto& finding : checkConfiguration(fresh, target))
        if (finding.weight != Finding::Weight::Note) console.paragraph(finding.text, 2, Style::Bad, 2);
}

}  // namespace

void defineSave(CommandLine command, Session& session) {
    auto target = std::make_shared<fs::path>();
    command.argument("FILE.mcf", target.get(), "Where to save", {.required = true});
    command.footer(
        "Writes beside the file, reads it back, compares, and only then replaces what was there.\n"
        "Says which values a load would not bring back.\n"
        "For instance: marovine save fast.mcf --set FG_LINEPERIODE=20 --set FG_LINEEXPOSURE=10");
    command.action([target, &session] { run(*target, session); });
}

}  // namespace marovine::host::commands
