#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "host/ConfigFile.h"
#include "host/Json.h"
#include "host/commands/Commands.h"
#include "params/SdkParameterTable.h"

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
    std::optional<Value> value(const Parameter& parameter, const char* name) const {
        if (!file_) return applet_.get(name);
        const auto* line = file_->find(name);
        return line != nullptr ? std::optional(configValue(parameter, *line)) : std::nullopt;
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
        const bool compared = row.fileUse == FileUse::Preloaded || row.fileUse == FileUse::Applied ||
                              (options.all && row.fileUse == FileUse::StoredOnly);
        if (!compared) continue;
        const Parameter parameter = session.applet().parameter(row.name);
        const auto a = first.value(parameter, row.name);
        const auto b = second.value(parameter, row.name);
        if (same(a, b)) continue;
        session.status = kFailed;
        const auto text = [&](const auto& value) {
            return value ? parameter.textOf(*value) : std::string("(missing)");
        };
        table.add({row.name, text(a), text(b)});
        const auto json = [&](const auto& value) { return value ? jsonOf(parameter, *value) : Json(); };
        document.push_back({{"name", row.name}, {"first", json(a)}, {"second", json(b)}});
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
