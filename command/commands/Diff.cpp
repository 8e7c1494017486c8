#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "client/ConfigFile.h"
#include "client/SkippedValues.h"
#include "command/Json.h"
#include "command/commands/Commands.h"
#include "tables/SdkParameterTable.h"

namespace marovine::host::commands {

namespace fs = std::filesystem;

namespace {

struct Options {
    fs::path first;
    fs::path second;
    bool all = false;
    bool json = false;
};

/// One side of the comparison: a file, or the applet as it is now.
class Side {
 public:
    /// An empty path is the running state.
    Side(Session& session, const fs::path& file) : applet_(session.applet()) {
        if (!file.empty()) file_ = ConfigFile::read(file);
        name_ = file.empty() ? "now" : file.filename().string();
    }

    const std::string& name() const { return name_; }

    /// The value of a parameter; nothing when the file lacks it.
    std::optional<Value> value(const Parameter& parameter) const {
        if (!file_) return applet_.get(parameter.name);
        const auto* line = file_->find(parameter.name);
        return line != nullptr ? std::optional(configValue(parameter, *line)) : std::nullopt;
    }

    /// What the file says, when that is not what a load reads; else empty.
    std::string misread(const Parameter& parameter) const {
        const auto* line = file_ ? file_->find(parameter.name) : nullptr;
        return line == nullptr || readsAsWritten(parameter, *line) ? "" : misreadText(parameter, *line);
    }

    /// A value for the table.
    std::string text(const Parameter& parameter) const {
        const auto held = value(parameter);
        if (!held) return "(missing)";
        const std::string note = misread(parameter);
        return parameter.textOf(*held) + (note.empty() ? "" : " (" + note + ")");
    }

    /// Adds a value to an entry of the document.
    void addTo(Json& entry, const std::string& key, const Parameter& parameter) const {
        const auto held = value(parameter);
        entry[key] = held ? jsonOf(parameter, *held) : Json();
        if (const std::string note = misread(parameter); !note.empty()) entry[key + "Note"] = note;
    }

 private:
    Applet& applet_;
    std::optional<ConfigFile> file_;
    std::string name_;
};

bool same(const std::optional<Value>& a, const std::optional<Value>& b) {
    if (!a || !b) return a.has_value() == b.has_value();
    return sameInFile(*a, *b);
}

void run(const Options& options, Session& session) {
    const Side first(session, options.first);
    const Side second(session, options.second);
    Table table({"parameter", first.name(), second.name()});
    Json document = Json::array();
    for (const auto& row : sdkParameters) {
        // Read-outs differ from moment to moment and say nothing about the settings.
        const bool compared = isRead(row) || (options.all && row.fileUse == FileUse::StoredOnly);
        if (!compared) continue;
        const Parameter parameter = session.applet().parameter(row.name);
        if (same(first.value(parameter), second.value(parameter))) continue;
        session.status = kFailed;
        table.add({row.name, first.text(parameter), second.text(parameter)});
        Json entry{{"name", row.name}};
        first.addTo(entry, "first", parameter);
        second.addTo(entry, "second", parameter);
        document.push_back(std::move(entry));
    }
    // What the applet holds beyond the file's reach belongs to its meaning all the same.
    if (options.second.empty())
        for (const auto& name : tablesLostInSave(session.applet())) {
            const Parameter parameter = session.applet().parameter(name);
            session.status = kFailed;
            table.add({name, "(no place in a file)", second.text(parameter)});
            Json entry{{"name", name}, {"first", Json()}};
            second.addTo(entry, "second", parameter);
            document.push_back(std::move(entry));
        }
    if (options.json)
        session.console().out() << printed(document) << '\n';
    else if (!table.empty())
        table.print(session.console());
    else
        session.console().out() << first.name() << " and " << second.name() << " say the same\n";
}

}  // namespace

void defineDiff(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("A.mcf", &options->first, "A configuration", {.required = true, .exists = true});
    command.argument("B.mcf", &options->second, "Another one; without it, the applet as it is now",
                     {.exists = true});
    command.flag("--all", options->all, "Compare read-outs as well");
    command.flag("--json", options->json, "As a JSON array");
    command.footer(
        "Compares values, not lines: 200 and 200.0 are the same, and entries are named. Status 0 when both "
        "say\n"
        "the same, 1 when they differ. For instance: marovine diff line3.mcf --set FG_WIDTH=2048");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
