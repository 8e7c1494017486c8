#include "client/SkippedValues.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>

#include "base/AppletIdentity.h"
#include "client/Rehearsal.h"
#include "files/ConfigHeader.h"
#include "files/Fg_ConfigFileParser.h"
#include "pictures/SafeFile.h"

namespace marovine::host {

namespace fs = std::filesystem;

namespace {

/// More trials than this keep a person waiting.
constexpr std::size_t kMostPairs = 200;

using Keys = std::set<std::string, std::less<>>;

/// A configuration in the folder for temporary files, for as long as the object lives; a signal that would
/// end the process waits as long.
class TemporaryConfig {
 public:
    TemporaryConfig() {
        std::error_code error;
        const fs::path folder = fs::temp_directory_path(error);
        if (error) throw Failure("there is no folder for temporary files: " + error.message());
        std::string name = folder / "marovine-XXXXXX.mcf";
        const int descriptor = mkstemps(name.data(), 4);
        if (descriptor < 0) throw Failure("no file can be made in " + folder.string());
        close(descriptor);
        path_ = name;
    }
    TemporaryConfig(const TemporaryConfig&) = delete;
    TemporaryConfig& operator=(const TemporaryConfig&) = delete;
    ~TemporaryConfig() {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }

    const fs::path& path() const { return path_; }

 private:
    virtualboard::imaging::SignalHold hold_;  ///< first, to end after the removal
    fs::path path_;
};

/// An instance that has loaded a copy of the file.
struct Trial {
    std::unique_ptr<TemporaryConfig> copy;  ///< stays: twins of the instance load it again
    std::unique_ptr<Applet> applet;
};

/// A value that a load gives to a setter.
struct Candidate {
    const ConfigLine* line;
    Setting setting;
};

/// Loads copies of a file, each with some values replaced by those that the applet had before.
class Trials {
 public:
    Trials(const Applet& before, const ConfigFile& file)
        : before_(before), file_(file), saved_(savedState(before)) {}

    Trial load(const Keys& replaced) const {
        Trial trial{.copy = std::make_unique<TemporaryConfig>(), .applet = before_.twin()};
        write(trial.copy->path(), replaced);
        try {
            trial.applet->load(trial.copy->path());
        } catch (const Refused& refusal) {
            throw Failure("the applet refused a copy of the file (" + std::to_string(refusal.code) +
                          "): " + meaningOf(refusal.code));
        }
        return trial;
    }

 private:
    static ConfigFile savedState(const Applet& before) {
        const TemporaryConfig file;
        before.twin()->save(file.path());
        return ConfigFile::read(file.path());
    }

    void write(const fs::path& path, const Keys& replaced) const {
        Fg_ConfigFileParser writer(nullptr, nullptr, false);
        int failed = writer.setSaveFile(path.c_str()) ? 0 : -1;
        failed |= writer.writeConfigFileHeader();
        failed |= writer.writeConfigFile(config_header::manufacturer, identity::manufacturer);
        failed |= writer.writeConfigFile(config_header::type, identity::name);
        failed |= writer.writeConfigFileIntKey(config_header::activePort, 0);
        failed |= writer.writeConfigFilePortA();
        for (const auto& row : sdkParameters) {
            if (!isRead(row)) continue;
            const auto* line = replaced.contains(row.name) ? nullptr : file_.find(row.name);
            if (line == nullptr || countsAsMissing(row, *line)) line = saved_.find(row.name);
            if (line == nullptr) continue;
            failed |= row.type == ValueType::Text
                          ? writer.writeConfigFile(row.name, line->value.c_str())
                          : writer.writeConfigFileValue(row.name, line->value.c_str());
        }
        if (failed != 0) throw Failure("no copy of the file can be written to " + path.string());
    }

    const Applet& before_;
    const ConfigFile& file_;
    ConfigFile saved_;
};

/// All values of the file that a setter refuses when the whole file is loaded.
std::vector<Candidate> refusedTogether(const Trials& trials, const ConfigFile& file) {
    const Trial trial = trials.load({});
    Rehearsal rehearsal(*trial.applet);
    std::vector<Candidate> result;
    for (const auto& row : sdkParameters) {
        const auto* line = row.fileUse == FileUse::Applied ? file.find(row.name) : nullptr;
        if (line == nullptr || countsAsMissing(row, *line)) continue;
        Candidate candidate{line, {row.name, configValue(trial.applet->parameter(row.name), *line)}};
        if (!rehearsal.accepts(candidate.setting)) result.push_back(std::move(candidate));
    }
    return result;
}

Keys keysOf(const std::vector<Candidate>& candidates) {
    Keys keys;
    for (const auto& candidate : candidates) keys.insert(candidate.setting.parameter);
    return keys;
}

SkippedValue explained(const Applet& state, const Candidate& candidate, int code) {
    const Parameter parameter = state.parameter(candidate.setting.parameter);
    SkippedValue result{.line = candidate.line,
                        .why = explain(state, candidate.setting, code),
                        .followUps = {},
                        .misread = {}};
    if (!readsAsWritten(parameter, *candidate.line)) result.misread = misreadText(parameter, *candidate.line);
    return result;
}

/// The code that a value is refused with when the `others` are replaced.
int codeWithout(const Trials& trials, Keys others, const Candidate& kept, const std::string& alsoKept = {}) {
    others.erase(kept.setting.parameter);
    others.erase(alsoKept);
    return trials.load(others).applet->trySet(kept.setting.parameter, kept.setting.value);
}

/// Explains what is refused even when every other refused value is replaced; the rest comes back.
std::vector<Candidate> explainRoots(const Trials& trials, const std::vector<Candidate>& refused,
                                    std::vector<SkippedValue>& roots) {
    std::vector<Candidate> rest;
    for (const auto& candidate : refused) {
        Keys others = keysOf(refused);
        others.erase(candidate.setting.parameter);
        const Trial trial = trials.load(others);
        if (const int code = Rehearsal(*trial.applet).codeOf(candidate.setting))
            roots.push_back(explained(*trial.applet, candidate, code));
        else
            rest.push_back(candidate);
    }
    return rest;
}

}  // namespace

std::vector<std::string> tablesLostInSave(const Applet& state) {
    const auto entered = state.tablesSet();
    if (entered.empty()) return {};
    const auto twin = state.twin();
    std::vector<std::pair<std::string, Value>> tables;
    tables.reserve(entered.size());
    for (const auto& name : entered) tables.emplace_back(name, twin->get(name));
    const TemporaryConfig file;
    try {
        twin->save(file.path());
        // What the load leaves alone must not pass for what it brought back.
        for (const auto& [name, held] : tables) {
            Field other = std::get<Field>(held);
            for (auto& element : other) element = element == 0 ? 1 : 0;
            twin->setElements(name, 0, other);
        }
        twin->load(file.path());
    } catch (const Refused&) {
        return {};
    }
    std::erase_if(tables, [&](const auto& table) { return twin->get(table.first) == table.second; });
    std::vector<std::string> names;
    names.reserve(tables.size());
    for (auto& table : tables) names.push_back(std::move(table.first));
    return names;
}

std::string lostTablesText(const std::vector<std::string>& tables) {
    std::string names;
    for (const auto& name : tables) names += (names.empty() ? "" : ", ") + name;
    return names + (tables.size() == 1 ? " has" : " have") +
           " elements for which a configuration has no place, and a load makes the tables anew; "
           "`marovine lut save FILE.lut` keeps them";
}

std::string SkippedValue::sentence() const {
    return why.sentence() + (misread.empty() ? "" : "; " + misread);
}

std::vector<std::string> SkippedValue::advice() const {
    std::vector<std::string> lines = why.advice();
    std::string names;
    for (const auto* follower : followUps)
        names += (names.empty() ? "" : ", ") + follower->key + " in line " + std::to_string(follower->number);
    if (!names.empty()) lines.push_back("refused only because of this: " + names);
    return lines;
}

std::vector<SkippedValue> skippedValues(const Applet& before, const ConfigFile& file) {
    const Trials trials(before, file);
    const auto refused = refusedTogether(trials, file);
    std::vector<SkippedValue> skipped;
    const auto rest = explainRoots(trials, refused, skipped);
    const std::size_t roots = skipped.size();

    std::size_t pairs = 0;
    for (const auto& candidate : rest) {
        bool found = false;
        std::size_t root = 0;
        for (; root < roots && pairs < kMostPairs && !found; root += found ? 0 : 1) {
            ++pairs;
            found = codeWithout(trials, keysOf(refused), candidate, skipped[root].line->key) != 0;
        }
        if (found) {
            skipped[root].followUps.push_back(candidate.line);
            continue;
        }
        // Several values rule it out together, or there are too many to try.
        const Trial trial = trials.load({});
        SkippedValue value = explained(*trial.applet, candidate, codeWithout(trials, {}, candidate));
        value.why.rule = "only together with other values that are refused";
        value.why.nearest.clear();
        value.why.causes.clear();
        value.why.accepted.clear();
        skipped.push_back(std::move(value));
    }
    std::stable_sort(skipped.begin(), skipped.end(),
                     [](const auto& a, const auto& b) { return a.line->number < b.line->number; });
    return skipped;
}

}  // namespace marovine::host
