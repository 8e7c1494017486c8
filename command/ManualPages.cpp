#include "command/ManualPages.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "marovine/EnvironmentVariables.h"

namespace marovine::host {

namespace {

/// A text as roff takes it: no command at the start of a line, hyphens that can be copied.
std::string escaped(std::string_view text) {
    std::string result;
    bool lineStart = true;
    for (const char c : text) {
        if (lineStart && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
        lineStart = c == '\n';
    }
    return result;
}

std::string bold(std::string_view text) {
    return "\\fB" + escaped(text) + "\\fR";
}
std::string italic(std::string_view text) {
    return "\\fI" + escaped(text) + "\\fR";
}

std::string namesOf(const OptionText& option) {
    std::string text;
    for (const auto& name : option.names) {
        if (!text.empty()) text += ", ";
        text += option.isArgument ? italic(name) : bold(name);
    }
    if (!option.isArgument && !option.type.empty()) text += ' ' + italic(option.type);
    return text;
}

void addOptions(std::string& page, const std::vector<OptionText>& options, bool arguments) {
    for (const auto& option : options) {
        if (option.isArgument != arguments) continue;
        page += ".TP\n" + namesOf(option) + '\n' + escaped(option.help) + '\n';
    }
}

bool hasOptions(const CommandText& command, bool arguments) {
    return std::ranges::any_of(command.options,
                               [=](const auto& option) { return option.isArgument == arguments; });
}

std::string synopsis(const CommandText& command, const std::string& path) {
    std::string line = bold(path) + " [" + italic("OPTION") + "...]";
    for (const auto& option : command.options)
        if (option.isArgument)
            line += option.required ? ' ' + italic(option.names.front())
                                    : " [" + italic(option.names.front()) + ']';
    if (!command.commands.empty()) line += ' ' + italic("COMMAND");
    return line + '\n';
}

void addCommand(std::string& page, const CommandText& command) {
    if (hasOptions(command, true)) {
        page += ".SH ARGUMENTS\n";
        addOptions(page, command.options, true);
    }
    if (hasOptions(command, false)) {
        page += ".SH OPTIONS\n";
        addOptions(page, command.options, false);
    }
}

/// The commands below a command are short enough for one page.
void addBelow(std::string& page, const CommandText& command, const std::string& path) {
    for (const auto& below : command.commands) {
        page += ".SS " + synopsis(below, path + ' ' + below.name) + escaped(below.summary) + ".\n";
        addOptions(page, below.options, true);
        addOptions(page, below.options, false);
        if (!below.footer.empty()) page += ".PP\n" + escaped(below.footer) + '\n';
    }
}

std::string heading(const std::string& name, const std::string& version, const std::string& summary) {
    std::string capitals = name;
    std::ranges::transform(capitals, capitals.begin(), [](unsigned char c) { return std::toupper(c); });
    return ".TH " + escaped(capitals) + " 1 \"\" \"marovine " + escaped(version) + "\" \"User Commands\"\n" +
           ".SH NAME\n" + escaped(name) + " \\- " + escaped(summary) + '\n';
}

}  // namespace

std::vector<ManualPage> manualPages(const CommandText& program, const std::string& version) {
    std::vector<ManualPage> pages;
    std::string first = heading(program.name, version, program.summary);
    first += ".SH SYNOPSIS\n" + synopsis(program, program.name);
    if (!program.footer.empty()) first += ".SH DESCRIPTION\n" + escaped(program.footer) + '\n';
    first += ".SH COMMANDS\n";
    std::string others;
    for (const auto& command : program.commands) {
        const std::string name = program.name + '-' + command.name;
        const std::string path = program.name + ' ' + command.name;
        first += ".TP\n" + bold(command.name) + '\n' + escaped(command.summary) + '\n';
        others += (others.empty() ? "" : ",\n") + (".BR " + escaped(name) + " (1)");
        std::string page =
            heading(name, version, command.summary) + ".SH SYNOPSIS\n" + synopsis(command, path);
        if (!command.footer.empty()) page += ".SH DESCRIPTION\n" + escaped(command.footer) + '\n';
        addCommand(page, command);
        if (!command.commands.empty()) page += ".SH COMMANDS\n";
        addBelow(page, command, path);
        page += ".SH SEE ALSO\n.BR " + escaped(program.name) +
                " (1)\nhas the options that every command takes.\n";
        pages.push_back({name + ".1", std::move(page)});
    }
    addCommand(first, program);
    first += ".SH ENVIRONMENT\n";
    for (const auto& variable : environment::kVariables) {
        std::string effect = variable.effect;
        std::erase(effect, '`');
        first += ".TP\n" + bold(variable.name) + '\n' + escaped(effect) + '\n';
    }
    first += ".SH SEE ALSO\n";
    first += others + '\n';
    pages.insert(pages.begin(), {program.name + ".1", std::move(first)});
    return pages;
}

}  // namespace marovine::host
