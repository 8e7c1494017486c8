#include "client/ConfigCheck.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string_view>

#include "base/AppletIdentity.h"
#include "base/Names.h"
#include "client/SkippedValues.h"
#include "files/ConfigHeader.h"
#include "files/Fg_ConfigFileParser.h"

namespace marovine::host {

namespace fs = std::filesystem;

namespace {

using Weight = Finding::Weight;
using Findings = std::vector<Finding>;

/// What some editors write in front of a text in UTF-8.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// More findings of one kind than this are told as one.
constexpr std::size_t kMostOfAKind = 8;
constexpr std::size_t kNamed = 3;

Finding finding(Weight weight, std::size_t line, std::string text) {
    return {.line = line, .weight = weight, .text = std::move(text), .advice = {}, .subject = {}};
}

std::string lineText(const ConfigLine& line) {
    return "line " + std::to_string(line.number);
}

bool isStored(std::string_view key) {
    const auto* row = findSdkParameter(key);
    return row != nullptr && row->fileUse != FileUse::NotStored;
}

bool anyLineHolds(const ConfigFile& file, std::string_view text) {
    return std::any_of(file.lines().begin(), file.lines().end(),
                       [&](const auto& line) { return line.text.find(text) != std::string::npos; });
}

/// What stands against the header.
void findInHeader(const ConfigFile& file, Findings& findings) {
    const auto lacks = [](const std::string& key) {
        return finding(Weight::Fatal, 0, "the header lacks the key " + key);
    };
    if (file.findInHeader(config_header::manufacturer) == nullptr)
        findings.push_back(lacks(config_header::manufacturer));
    const auto* type = file.findInHeader(config_header::type);
    if (type == nullptr) {
        findings.push_back(lacks(config_header::type));
    } else if (const auto name = ConfigFile::headerValue(*type, config_header::type);
               name != identity::name) {
        std::string text = "the file belongs to the applet " + inQuotes(name) + ", this is " + identity::name;
        if (type->key != config_header::type)
            text =
                "a load takes the applet's name from the first line that holds \"Typ\" anywhere, and reads " +
                inQuotes(name);
        findings.push_back(finding(Weight::Fatal, type->number, text));
    }
    if (file.activePort() != nullptr) return;
    const auto& lines = file.lines();
    const auto early = std::find_if(lines.begin(), lines.end(),
                                    [](const auto& line) { return line.key == config_header::activePort; });
    if (anyLineHolds(file, Fg_ConfigFileParser::CameraSectionText)) {
        findings.push_back(early == lines.end()
                               ? lacks(config_header::activePort)
                               : finding(Weight::Fatal, early->number,
                                         "AktivePort must stand behind [Kamerasektion] and hold a number"));
    } else if (anyLineHolds(file, "[Kamerasektion]\r\n")) {
        findings.push_back(finding(Weight::Fatal, 0,
                                   "the lines end in carriage return and line feed, as some editors write "
                                   "them; a load needs the line feed alone"));
        findings.back().advice.push_back("sed -i 's/\\r$//' FILE.mcf changes that");
    } else {
        findings.push_back(finding(Weight::Fatal, 0, "there is no line [Kamerasektion]"));
    }
}

/// Keys without which a load fails.
void findMissingKeys(const ConfigFile& file, Findings& findings) {
    if (file.heading() == nullptr)
        return findings.push_back(finding(
            Weight::Fatal, 0, "there is no line [Port A], behind which a load looks for the parameters"));
    for (const auto& row : sdkParameters) {
        if (!isRead(row)) continue;
        const auto* line = file.find(row.name);
        if (line == nullptr) {
            findings.push_back(finding(Weight::Fatal, 0, std::string("the key ") + row.name + " is missing"));
            findings.back().subject = row.name;
            findings.back().plural = "keys are missing";
        } else if (countsAsMissing(row, *line)) {
            findings.push_back(finding(Weight::Fatal, line->number,
                                       std::string(row.name) + " says " + inQuotes(line->value) +
                                           ", which a load takes for a missing key"));
        }
    }
}

/// A stored key in a line that a load does not take it from.
Finding untaken(const ConfigFile& file, const ConfigLine& line, bool inParameters) {
    const auto* taken = file.find(line.key);
    const std::string instead = taken != nullptr ? "a load takes " + lineText(*taken) : "a load ignores it";
    Finding result = finding(
        Weight::Note, line.number,
        line.key + (inParameters ? " stands a second time; " : " stands before [Port A]; ") + instead);
    result.subject = line.key;
    result.plural = inParameters ? "keys stand a second time; a load takes the first line of each"
                                 : "keys stand before [Port A]; a load ignores those lines";
    return result;
}

Finding unknown(const ConfigLine& line) {
    static const auto stored = [] {
        std::vector<std::string> names;
        for (const auto& row : sdkParameters)
            if (row.fileUse != FileUse::NotStored) names.emplace_back(row.name);
        return names;
    }();
    Finding result =
        finding(Weight::Note, line.number, "unknown key " + inQuotes(line.key) + "; a load ignores it");
    if (const auto key = trimmed(line.key); key != line.key && isStored(key)) {
        result.text = "there are blanks around the key " + std::string(key) +
                      "; a load looks for it at the start of a line and with \"=\" right behind it";
        return result;
    }
    for (const auto& name : nearestNames(line.key, stored))
        result.advice.push_back("did you mean " + name + "?");
    result.subject = inQuotes(line.key);
    result.plural = "keys are unknown; a load ignores them";
    return result;
}

/// Lines that a load does not look at, or not as a whole.
void findIgnoredLines(const ConfigFile& file, Findings& findings) {
    if (!file.lines().empty() && file.lines().front().text.starts_with(kByteOrderMark))
        findings.push_back(finding(
            Weight::Note, 1, "a byte order mark, which editors do not show, hides what this line says"));
    bool inParameters = false;
    for (const auto& line : file.lines()) {
        const bool isHeading = &line == file.heading();
        inParameters = inParameters || isHeading;
        const bool taken = file.find(line.key) == &line;
        if (!line.begins || isHeading) continue;
        const auto* row = findSdkParameter(line.key);
        const bool isText = taken && row != nullptr && row->type == ValueType::Text;
        if (line.cut && !isText)
            findings.push_back(finding(Weight::Note, line.number,
                                       "longer than 255 characters; a load reads the line in pieces"));
        if (line.key.empty()) {
            if (line.text.starts_with('[') || line.text.starts_with(kByteOrderMark) ||
                line.text.find_first_not_of(" \t\r\n") == std::string::npos)
                continue;
            findings.push_back(
                finding(Weight::Note, line.number, inQuotes(line.text) + " holds no key; a load ignores it"));
            findings.back().subject = inQuotes(line.text);
            findings.back().plural = "lines hold no key; a load ignores them";
        } else if (isStored(line.key)) {
            if (!taken) findings.push_back(untaken(file, line, inParameters));
        } else if (inParameters) {
            findings.push_back(unknown(line));
        }
    }
}

/// Whether a value lies in the parameter's range or is one of its entries; texts are free.
bool allowed(const Parameter& parameter, const Value& value) {
    if (!numberOf(value) || (parameter.entries.empty() && !parameter.range) || parameter.holds(value))
        return true;
    // The file rounds: an end of the range may come back a little outside it.
    return parameter.entries.empty() &&
           (sameInFile(value, parameter.range->minimum) || sameInFile(value, parameter.range->maximum));
}

/// Values that reach the applet otherwise than the file says, or that no setter checks.
void findOddValues(const Applet& applet, const ConfigFile& file, const std::vector<SkippedValue>& skipped,
                   Findings& findings) {
    for (const auto& row : sdkParameters) {
        const auto* line = isRead(row) ? file.find(row.name) : nullptr;
        if (line == nullptr || countsAsMissing(row, *line) ||
            std::any_of(skipped.begin(), skipped.end(),
                        [&](const SkippedValue& value) { return value.line == line; }))
            continue;
        const Parameter parameter = applet.parameter(row.name);
        if (!readsAsWritten(parameter, *line))
            findings.push_back(finding(Weight::Misread, line->number,
                                       std::string(row.name) + ": " + misreadText(parameter, *line)));
        const Value value = configValue(parameter, *line);
        if (row.fileUse != FileUse::Preloaded || allowed(parameter, value)) continue;
        // A load only puts these into the cache, where no setter sees them.
        findings.push_back(finding(Weight::Note, line->number,
                                   std::string(row.name) + " = " + parameter.textOf(value) +
                                       " is out of range; a load keeps it all the same"));
        findings.back().advice.push_back("allowed: " + parameter.rangeText());
    }
}

bool tellsOf(const SkippedValue& value, const ConfigLine* line) {
    return value.line == line ||
           std::find(value.followUps.begin(), value.followUps.end(), line) != value.followUps.end();
}

/// What reads otherwise than the file says once `loaded` has loaded it, but for what setters refuse.
Findings notKept(Applet& loaded, const ConfigFile& file, const std::vector<SkippedValue>& skipped) {
    Findings findings;
    for (const auto& row : sdkParameters) {
        const auto* line = isRead(row) ? file.find(row.name) : nullptr;
        if (line == nullptr || countsAsMissing(row, *line) ||
            std::any_of(skipped.begin(), skipped.end(),
                        [&](const SkippedValue& value) { return tellsOf(value, line); }))
            continue;
        const Parameter parameter = loaded.parameter(row.name);
        const Value said = configValue(parameter, *line);
        const Value reads = loaded.get(row.name);
        if (sameInFile(said, reads)) continue;
        findings.push_back(finding(
            Weight::NotKept, line->number,
            std::string(row.name) + " = " + parameter.textOf(said) + " reads " + parameter.textOf(reads) +
                " after a load: " +
                (row.fileUse == FileUse::Preloaded ? "a load only remembers the value, it does not set it"
                                                   : "a later key sets the same thing")));
    }
    return findings;
}

bool isFatal(const Finding& item) {
    return item.weight == Weight::Fatal;
}

/// What the name and the text show; `file` stays empty when it cannot be read.
Findings findingsAbout(const fs::path& path, std::optional<ConfigFile>& file) {
    Findings findings;
    if (path.string().find(".mcf") == std::string::npos)
        findings.push_back(
            finding(Weight::Fatal, 0,
                    "the name of a configuration file ends in .mcf; " + path.string() + " does not"));
    try {
        file = ConfigFile::read(path);
        const Findings inside = findingsIn(*file);
        findings.insert(findings.end(), inside.begin(), inside.end());
    } catch (const Failure& failure) {
        findings.push_back(finding(Weight::Fatal, 0, failure.what()));
    }
    return findings;
}

}  // namespace

const char* textOf(Finding::Weight weight) {
    switch (weight) {
        case Weight::Fatal:
            return "load fails";
        case Weight::Skipped:
            return "skipped";
        case Weight::NotKept:
            return "not kept";
        case Weight::Untried:
            return "not tried";
        case Weight::Misread:
            return "misread";
        default:
            return "note";
    }
}

Findings findingsIn(const ConfigFile& file) {
    Findings findings;
    findInHeader(file, findings);
    findMissingKeys(file, findings);
    findIgnoredLines(file, findings);
    return findings;
}

Findings checkConfiguration(const Applet& applet, const fs::path& path) {
    std::optional<ConfigFile> file;
    Findings findings = findingsAbout(path, file);
    if (!file) return findings;
    const auto loaded = applet.twin();
    bool loads = std::none_of(findings.begin(), findings.end(), isFatal);
    try {
        if (loads) loaded->load(path);
    } catch (const Refused& refusal) {
        loads = false;
        findings.push_back(finding(Weight::Fatal, 0,
                                   "the applet refused the file (" + std::to_string(refusal.code) +
                                       "): " + meaningOf(refusal.code)));
    }
    std::vector<SkippedValue> skipped;
    try {
        skipped = skippedValues(applet, *file);
    } catch (const Failure& failure) {
        findings.push_back(
            finding(Weight::Untried, 0, std::string("the values were not tried: ") + failure.what()));
    }
    findOddValues(applet, *file, skipped, findings);
    if (loads) std::ranges::copy(notKept(*loaded, *file, skipped), std::back_inserter(findings));
    if (const auto tables = tablesLostInSave(applet); !tables.empty())
        findings.push_back(finding(Weight::Note, 0, lostTablesText(tables)));
    for (const auto* line : linesWithMissingFiles(*file))
        findings.push_back(finding(Weight::Note, line->number, missingFileText(*line)));
    for (const auto& value : skipped) {
        findings.push_back(finding(Weight::Skipped, value.line->number, value.sentence()));
        findings.back().advice = value.advice();
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return findings;
}

Findings collapsed(const Findings& findings) {
    std::map<std::string_view, std::vector<const Finding*>> kinds;
    for (const auto& item : findings)
        if (item.plural != nullptr) kinds[item.plural].push_back(&item);
    Findings result;
    for (const auto& item : findings) {
        if (item.plural == nullptr || kinds[item.plural].size() <= kMostOfAKind) {
            result.push_back(item);
            continue;
        }
        const auto& kind = kinds[item.plural];
        if (&item != kind.front()) continue;
        Finding all = finding(item.weight, item.line, std::to_string(kind.size()) + " " + item.plural + ": ");
        for (std::size_t i = 0; i < kNamed; ++i) all.text += kind[i]->subject + ", ";
        all.text += "...";
        result.push_back(std::move(all));
    }
    return result;
}

void loadConfiguration(Applet& applet, const fs::path& path) {
    // A pipe would never end, and of a file that is too large nothing could be said.
    std::error_code failed;
    if (fs::exists(path, failed)) ConfigFile::read(path);
    try {
        applet.load(path);
    } catch (const Refused& refusal) {
        std::string message = refusal.what();
        std::optional<ConfigFile> file;
        for (const auto& item : collapsed(findingsAbout(path, file))) {
            if (!isFatal(item)) continue;
            message +=
                "\n  " + (item.line != 0 ? "line " + std::to_string(item.line) + ": " : "") + item.text;
        }
        throw Failure(message);
    }
}

}  // namespace marovine::host
