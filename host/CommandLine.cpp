#include "host/CommandLine.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>

#include <CLI/CLI.hpp>

#include "host/Names.h"
#include "host/Session.h"

namespace marovine::host {

namespace {

void applyRules(CLI::Option& option, const Rules& rules) {
    if (rules.required) option.required();
    if (rules.exists) option.check(CLI::ExistingFile.description(""));
    if (rules.minimum && rules.maximum)
        option.check(CLI::Range(*rules.minimum, *rules.maximum).description(""));
    if (!rules.choices.empty())
        option.transform(CLI::IsMember(rules.choices, CLI::ignore_case).description(""));
    if (rules.type != nullptr) option.type_name(rules.type);
}

CLI::Option& add(CLI::App& app, const char* names, const Target& target, const char* help) {
    return *std::visit([&](auto* place) { return app.add_option(names, *place, help); }, target);
}

bool takesMany(const Target& target) {
    return std::holds_alternative<std::vector<std::string>*>(target) ||
           std::holds_alternative<std::vector<double>*>(target);
}

}  // namespace

void CommandLine::flag(const char* names, bool& target, const char* help) {
    app_->add_flag(names, target, help);
}

void CommandLine::option(const char* names, Target target, const char* help, const Rules& rules) {
    CLI::Option& added = add(*app_, names, target, help);
    applyRules(added, rules);
    if (takesMany(target)) added.allow_extra_args(false);
}

void CommandLine::argument(const char* shownAs, Target target, const char* help, const Rules& rules) {
    CLI::Option& added = add(*app_, shownAs, target, help);
    applyRules(added, rules);
    if (rules.type == nullptr) added.type_name("");
}

void CommandLine::excludes(const char* one, const char* other) {
    app_->get_option(one)->excludes(app_->get_option(other));
}

void CommandLine::footer(const char* text) {
    app_->footer(text);
}

void CommandLine::action(std::function<void()> run) {
    app_->callback(std::move(run));
}

CommandLine CommandLine::command(const char* name, const char* summary) {
    return CommandLine(*app_->add_subcommand(name, summary));
}

void CommandLine::requireCommand() {
    app_->require_subcommand(1);
}

Program::Program(const char* about, const char* name, const char* footer)
    : app_(std::make_unique<CLI::App>(about, name)) {
    app_->footer(footer);
    app_->require_subcommand(1);
    app_->fallthrough();
}

Program::~Program() = default;

CommandLine Program::top() {
    return CommandLine(*app_);
}

std::string Program::unknownCommand() const {
    std::vector<std::string> names;
    for (const auto* command : app_->get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    for (const auto& word : app_->remaining()) {
        if (word.starts_with('-')) continue;
        const auto nearest = nearestNames(word, names, 1);
        return "no command is named " + word +
               (nearest.empty() ? "; marovine --help lists them" : "; did you mean " + nearest.front() + "?");
    }
    return {};
}

std::optional<int> Program::run(std::vector<std::string> arguments) {
    std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
    try {
        app_->parse(std::move(arguments));
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        const bool noCommand = app_->get_subcommands().empty() && error.get_exit_code() != 0;
        const std::string unknown = noCommand ? unknownCommand() : std::string();
        if (unknown.empty()) return app_->exit(error) == 0 ? kSuccess : kUsage;
        std::cerr << "marovine: " << unknown << '\n';
        return kUsage;
    }
}

}  // namespace marovine::host
