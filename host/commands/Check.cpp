#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/ConfigFile.h"
#include "host/Json.h"
#include "host/Names.h"
#include "host/commands/Commands.h"
#include "params/SdkParameterTable.h"

namespace marovine::host::commands {

namespace fs = std::filesystem;

namespace {

/// Something in a file that a person would want to know before loading it.
struct Finding {
    enum class Weight { Note, Skipped, Fatal };

    std::size_t line = 0;  ///< 0 for what is missing
    Weight weight = Weight::Note;
    std::string text;
    std::vector<std::string> advice;
};

const char* textOf(Finding::Weight weight) {
    switch (weight) {
        case Finding::Weight::Fatal:
            return "load fails";
        case Finding::Weight::Skipped:
            return "skipped";
        default:
            return "note";
    }
}

bool isStored(std::string_view key) {
    const auto* row = findSdkParameter(key);
    return row != nullptr && row->fileUse != FileUse::NotStored;
}

/// Lines that a load never looks at: unknown keys, and keys that stand a second time.
void findIgnoredLines(const ConfigFile& file, std::vector<Finding>& findings) {
    std::vector<std::string> stored;
    for (const auto& row : sdkParameters)
        if (row.fileUse != FileUse::NotStored) stored.emplace_back(row.name);
    for (const auto& line : file.lines()) {
        if (!line.section.starts_with("Port ")) continue;
        if (!isStored(line.key)) {
            Finding finding{
                line.number, Finding::Weight::Note, "unknown key " + line.key + "; a load ignores it", {}};
            for (const auto& name : nearestNames(line.key, stored))
                finding.advice.push_back("did you mean " + name + "?");
            findings.push_back(std::move(finding));
        } else if (file.find(line.key) != &line) {
            findings.push_back({line.number,
                                Finding::Weight::Note,
                                line.key + " stands a second time; a load takes line " +
                                    std::to_string(file.find(line.key)->number),
                                {}});
        }
    }
}

/// Whether a value lies in the parameter's range or is one of its entries; texts are free.
bool allowed(const Parameter& parameter, const Value& value) {
    const auto number = numberOf(value);
    if (!number) return true;
    if (!parameter.entries.empty())
        return std::any_of(parameter.entries.begin(), parameter.entries.end(),
                           [&](const Entry& entry) { return entry.value == *number; });
    if (!parameter.range) return true;
    // The file rounds: an end of the range may come back a little outside it.
    if (sameInFile(value, parameter.range->minimum) || sameInFile(value, parameter.range->maximum))
        return true;
    return *number >= numberOf(parameter.range->minimum) && *number <= numberOf(parameter.range->maximum);
}

/// Values that a load only puts into the cache, where no setter would see that they are out of range.
void findUncheckedValues(const Applet& applet, const ConfigFile& file, std::vector<Finding>& findings) {
    for (const auto& row : sdkParameters) {
        const auto* line = row.fileUse == FileUse::Preloaded ? file.find(row.name) : nullptr;
        if (line == nullptr) continue;
        const Parameter parameter = applet.parameter(row.name);
        const Value value = configValue(parameter, *line);
        if (!allowed(parameter, value))
            findings.push_back({line->number,
                                Finding::Weight::Note,
                                std::string(row.name) + " = " + parameter.textOf(value) +
                                    " is out of range; a load keeps it all the same",
                                {"allowed: " + parameter.rangeText()}});
    }
}

std::vector<Finding> check(Applet& applet, const fs::path& path) {
    std::vector<Finding> findings;
    const auto fatal = reasonsAgainstLoading(path);
    for (const auto& reason : fatal) findings.push_back({0, Finding::Weight::Fatal, reason, {}});
    std::error_code failed;
    if (!fs::is_regular_file(path, failed)) return findings;

    const ConfigFile file = ConfigFile::read(path);
    findIgnoredLines(file, findings);
    findUncheckedValues(applet, file, findings);
    if (fatal.empty()) {
        applet.load(path);
        for (const auto& skipped : skippedValues(applet, file))
            findings.push_back({skipped.line->number, Finding::Weight::Skipped, skipped.why.sentence(),
                                skipped.why.advice()});
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return findings;
}

void print(const Console& console, const fs::path& path, const std::vector<Finding>& findings) {
    if (findings.empty()) {
        console.out() << path.string() << ": every value will be taken\n";
        return;
    }
    for (const auto& finding : findings) {
        const Style style = finding.weight == Finding::Weight::Note ? Style::Accent : Style::Bad;
        console.out() << path.string() << ':';
        if (finding.line != 0) console.out() << finding.line << ':';
        console.out() << ' ' << console.styled(style, textOf(finding.weight)) << ": " << finding.text << '\n';
        for (const auto& advice : finding.advice) console.out() << "    " << advice << '\n';
    }
}

struct Options {
    fs::path file;
    bool json = false;
};

void run(const Options& options, Session& session) {
    const auto findings = check(session.applet(), options.file);
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
    command.argument("FILE.mcf", &options->file, "The configuration", {.required = true});
    command.flag("--json", options->json, "As a JSON array");
    command.footer(
        "Names, line by line, what a load would fail on, skip in silence or ignore. Status 0 when every "
        "value\n"
        "would be taken, 1 when the load would fail or skip one.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
