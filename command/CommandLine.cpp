#include "command/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
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

/// What a target holds before the command line is read, for the help; empty for nothing, such as a number
/// that the command line could not give.
std::string defaultText(const Target& target, const Rules& rules) {
    return std::visit(
        [&]<class T>(const T* place) -> std::string {
            if constexpr (std::is_same_v<T, std::string>) {
                return *place;
            } else if constexpr (std::is_same_v<T, std::filesystem::path>) {
                return place->string();
            } else if constexpr (std::is_arithmetic_v<T>) {
                const std::string text = textOf(static_cast<double>(*place));
                return numberFault(text, rules).empty() ? text : std::string();
            } else {
                return {};
            }
        },
        target);
}

CLI::Option& add(CLI::App& app, const char* names, const Target& target, const std::string& help,
                 const Rules& rules) {
    const std::string before = rules.required ? std::string() : defaultText(target, rules);
    const std::string described = before.empty() ? help : help + " (default: " + before + ")";
    CLI::Option& option =
        *std::visit([&](auto* place) { return app.add_option(names, *place, described); }, target);
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
    FoldingFormatter() {
        // The parser's word for a command below another; here both are commands.
        label("SUBCOMMAND", "COMMAND");
        label("SUBCOMMANDS", "COMMAND");
    }

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
    return CommandLine(*app_->add_subcommand(name, summary)->group("Commands"));
}

void CommandLine::requireCommand() {
    app_->require_subcommand(1);
}

Program::Program(const ProgramTexts& texts)
    : app_(std::make_unique<CLI::App>(texts.about, texts.name)), whereToBegin_(texts.whereToBegin) {
    app_->formatter(std::make_shared<FoldingFormatter>());  // which the commands take over
    app_->set_version_flag("--version", std::string(texts.name) + ' ' + texts.version,
                           "Print the version and exit");
    top().footer(texts.footer);
    app_->require_subcommand(1);
    app_->fallthrough();

    auto words = std::make_shared<std::vector<std::string>>();
    CommandLine help = top().command("help", "The help of a command");
    help.argument("COMMAND", words.get(), "The command; without one, the help of the program");
    help.action([this, words] { printHelp(*words); });
}

Program::~Program() = default;

CommandLine Program::top() {
    return CommandLine(*app_);
}

void Program::printHelp(const std::vector<std::string>& words) const {
    const CLI::App* command = app_.get();
    std::string path;
    for (const auto& word : words) {
        path += (path.empty() ? "" : " ") + command->get_name();
        const auto found =
            command->get_subcommands([&](const CLI::App* below) { return below->get_name() == word; });
        if (found.empty()) throw UsageError(unknownCommand(*command, word));
        command = found.front();
    }
    // The parser's own way would lead to the command that runs, which is `help`.
    path += (path.empty() ? "" : " ") + command->get_name();
    std::cout << app_->get_formatter()->make_help(command, path, CLI::AppFormatMode::Normal);
}

std::string Program::unknownCommand(const CLI::App& parent, const std::string& word) {
    std::vector<std::string> names;
    for (const auto* command : parent.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    const auto nearest = nearestNames(word, names, 1);
    return "no command is named " + word +
           (nearest.empty() ? "; marovine --help lists them" : "; did you mean " + nearest.front() + "?");
}

std::optional<int> Program::run(std::vector<std::string> arguments) {
    std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
    try {
        app_->parse(std::move(arguments));
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            app_->exit(error);  // prints the help
            return kSuccess;
        }
        if (app_->get_subcommands().empty()) {
            for (const auto& word : app_->remaining())
                if (!word.starts_with('-')) throw UsageError(unknownCommand(*app_, word));
            if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) throw UsageError(whereToBegin_);
        }
        std::string message = error.what();
        if (const auto parsers = message.find("subcommand"); parsers != message.npos)
            message.erase(parsers, std::string_view("sub").size());
        throw UsageError(message + "; see --help");
    }
}

}  // namespace marovine::host
