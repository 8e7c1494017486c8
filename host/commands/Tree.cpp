#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/Json.h"
#include "host/commands/Commands.h"

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

void print(const Console& console, const Group& group, const std::string& indent) {
    std::size_t left = group.parameters.size() + group.groups.size();
    std::size_t widest = 0;
    for (const auto* parameter : group.parameters)
        widest = std::max(widest, columnsOf(parameter->displayName));
    for (const auto* parameter : group.parameters) {
        const bool last = --left == 0;
        console.out() << indent << (last ? "└─ " : "├─ ") << padded(parameter->displayName, widest) << "  "
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
