#include "command/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>

#include "client/Names.h"
#include "command/Console.h"
#include "command/Session.h"

namespace marovine::host {

namespace {

/// A finite number inside the rules; the parser alone takes "nan" and "inf", which no comparison refuses.
/// What is no number at all is left to the parser.
std::string numberFault(const std::string& text, const Rules& rules) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument) return {};
    if (error != std::errc{} || !std::isfinite(number)) return text + " is no finite number";
    if (rules.minimum && number < *rules.minimum)
        return text + " is below the smallest accepted value " + textOf(*rules.minimum);
    if (rules.maximum && number > *rules.maximum)
        return text + " is above the largest accepted value " + textOf(*rules.maximum);
    return {};
}

void applyRules(CLI::Option& option, const Rules& rules) {
    if (rules.required) option.required();
    if (rules.exists) {
        // Not the command line is wrong but the file: a failure, not a usage error.
        option.check(
            [](const std::string& name) {
                if (!std::filesystem::exists(name) || std::filesystem::is_directory(name))
                    throw Failure("there is no file " + name);
                return std::string();
            },
            "");
    }
    if (!rules.choices.empty())
        option.transform(CLI::IsMember(rules.choices, CLI::ignore_case).description(""));
    if (rules.type != nullptr) option.type_name(rules.type);
}

bool isNumber(const Target& target) {
    return !std::holds_alternative<std::string*>(target) &&
           !std::holds_alternative<std::filesystem::path*>(target) &&
           !std::holds_alternative<std::vector<std::string>*>(target);
}

CLI::Option& add(CLI::App& app, const char* names, const Target& target, const char* help,
                 const Rules& rules) {
    CLI::Option& option =
        *std::visit([&](auto* place) { return app.add_option(names, *place, help); }, target);
    if (isNumber(target))
        option.check([rules](const std::string& text) { return numberFault(text, rules); }, "");
    applyRules(option, rules);
    return option;
}

bool takesMany(const Target& target) {
    return std::holds_alternative<std::vector<std::string>*>(target) ||
           std::holds_alternative<std::vector<double>*>(target);
}

/// Help in lines that fit; what belongs to an option stays in its column.
class FoldingFormatter : public CLI::Formatter {
 public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        std::istringstream lines(CLI::Formatter::make_help(app, std::move(name), mode));
        std::string folded;
        const std::size_t width = Console().drawingWidth();
        for (std::string line; std::getline(lines, line);) {
            const std::size_t hanging = line.starts_with(' ') ? get_column_width() : 0;
            for (const auto& part : wrapped(line, width, hanging)) folded += part + '\n';
        }
        return folded;
    }
};

}  // namespace

void CommandLine::flag(const char* names, bool& target, const char* help) {
    app_->add_flag(names, target, help);
}

void CommandLine::option(const char* names, Target target, const char* help, const Rules& rules) {
    CLI::Option& added = add(*app_, names, target, help, rules);
    if (takesMany(target)) added.allow_extra_args(false);
}

void CommandLine::argument(const char* shownAs, Target target, const char* help, const Rules& rules) {
    CLI::Option& added = add(*app_, shownAs, target, help, rules);
    if (rules.type == nullptr) added.type_name("");
}

void CommandLine::excludes(const char* one, const char* other) {
    app_->get_option(one)->excludes(app_->get_option(other));
}

void CommandLine::footer(std::string_view text) {
    // Lines are broken again for the terminal: only behind a full stop a new one begins.
    std::string joined;
    for (const char c : text) {
        const bool goesOn = c == '\n' && !joined.ends_with('.') && !joined.ends_with('\n');
        joined += goesOn ? ' ' : c;
    }
    app_->footer(joined);
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
    app_->formatter(std::make_shared<FoldingFormatter>());  // which the commands take over
    top().footer(footer);
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
        if (!unknown.empty()) throw UsageError(unknown);
        if (error.get_exit_code() != 0) throw UsageError(error.what() + std::string("; see --help"));
        app_->exit(error);  // prints the help
        return kSuccess;
    }
}

}  // namespace marovine::host
