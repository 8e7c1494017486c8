#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

constexpr std::string_view kSeparator = " > ";

/// A group with what stands in it, in display order.
struct Group {
    std::string name;
    std::vector<Group> groups;
    std::vector<const Parameter*> parameters;
};

Group& groupAt(Group& root, std::string_view path) {
    if (path.empty()) return root;
    const auto split = path.find(kSeparator);
    const std::string_view name = path.substr(0, split);
    const std::string_view rest =
        split == std::string_view::npos ? std::string_view() : path.substr(split + kSeparator.size());
    for (auto& group : root.groups)
        if (group.name == name) return groupAt(group, rest);
    root.groups.push_back({std::string(name), {}, {}});
    return groupAt(root.groups.back(), rest);
}

Json jsonOfGroup(const Group& group) {
    Json parameters = Json::array();
    for (const auto* parameter : group.parameters)
        parameters.push_back({{"name", parameter->name}, {"displayName", parameter->displayName}});
    Json groups = Json::array();
    for (const auto& below : group.groups) groups.push_back(jsonOfGroup(below));
    return {{"group", group.name}, {"parameters", std::move(parameters)}, {"groups", std::move(groups)}};
}

constexpr std::size_t kBranch = 3;  ///< columns of "├─ "
constexpr std::size_t kNarrowestTitle = 12;

/// Columns for the titles of a group's parameters, so that the names fit behind them.
std::size_t titleWidth(const Console& console, const Group& group, std::size_t indent) {
    std::size_t title = 0;
    std::size_t name = 0;
    for (const auto* parameter : group.parameters) {
        title = std::max(title, columnsOf(parameter->displayName));
        name = std::max(name, columnsOf(parameter->name));
    }
    const std::size_t others = indent + kBranch + name + 2;
    if (console.width() == 0 || others + title <= console.width()) return title;
    return std::max(kNarrowestTitle, console.width() - std::min(console.width(), others));
}

/// A title cut to a number of columns.
std::string shortened(const std::string& title, std::size_t columns) {
    if (columnsOf(title) <= columns) return padded(title, columns);
    return title.substr(0, columns - 1) + "…";
}

void print(const Console& console, const Group& group, const std::string& indent) {
    std::size_t left = group.parameters.size() + group.groups.size();
    const std::size_t widest = titleWidth(console, group, columnsOf(indent));
    for (const auto* parameter : group.parameters) {
        const bool last = --left == 0;
        console.out() << indent << (last ? "└─ " : "├─ ") << shortened(parameter->displayName, widest) << "  "
                      << console.styled(Style::Dim, parameter->name) << '\n';
    }
    for (const auto& below : group.groups) {
        const bool last = --left == 0;
        console.out() << indent << (last ? "└─ " : "├─ ") << console.styled(Style::Bold, below.name) << '\n';
        print(console, below, indent + (last ? "   " : "│  "));
    }
}

void run(bool json, Session& session) {
    const auto parameters = session.applet().tree();
    Group root;
    for (const auto& parameter : parameters) groupAt(root, parameter.group).parameters.push_back(&parameter);
    const Console& console = session.console();
    if (json) {
        Json document = Json::array();
        for (const auto& group : root.groups) document.push_back(jsonOfGroup(group));
        console.out() << printed(document) << '\n';
        return;
    }
    for (const auto& group : root.groups) {
        console.heading(group.name);
        print(console, group, "");
    }
}

}  // namespace

void defineTree(CommandLine command, Session& session) {
    auto json = std::make_shared<bool>(false);
    command.flag("--json", *json, "As nested JSON");
    command.action([json, &session] { run(*json, session); });
}

}  // namespace marovine::host::commands
