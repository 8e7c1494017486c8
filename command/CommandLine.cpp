#include "command/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

#include <CLI/CLI.hpp>

#include "base/Names.h"
#include "command/Console.h"
#include "command/Session.h"

namespace marovine::host {

/// The texts that options allow, for those that allow only some.
using Choices = std::map<const CLI::Option*, std::vector<std::string>>;

struct ProgramParts {
    struct FileOption {
        const CLI::Option* option;
        NamedFile file;
    };
    BeforeCommand before;
    std::vector<FileOption> files;
    Choices choices;

    /// Whether the command that was parsed is to run here.
    bool enters() const {
        if (!before) return true;
        std::vector<NamedFile> named;
        for (const auto& [option, file] : files)
            if (!option->empty() && !file.name().empty()) named.push_back(file);
        return before(named);
    }
};

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

void applyRules(CLI::Option& option, const Rules& rules, const ProgramParts& parts) {
    if (rules.required) option.required();
    if (rules.exists) {
        // Not the command line is wrong but the file: a failure, not a usage error.
        option.check(
            [&parts](const std::string& name) {
                if (parts.before) return std::string();
                if (!std::filesystem::exists(name) || std::filesystem::is_directory(name))
                    throw Failure("there is no file " + name);
                return std::string();
            },
            "");
    }
    if (rules.notEmpty)
        option.check([](const std::string& text) { return std::string(text.empty() ? "it is empty" : ""); },
                     "");
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

CLI::Option& add(CLI::App& app, ProgramParts& parts, const char* names, const Target& target,
                 const std::string& help, const Rules& rules) {
    const std::string before = rules.required ? std::string() : defaultText(target, rules);
    const std::string described = before.empty() ? help : help + " (default: " + before + ")";
    CLI::Option& option =
        *std::visit([&](auto* place) { return app.add_option(names, *place, described); }, target);
    if (isNumber(target))
        option.check([rules](const std::string& text) { return numberFault(text, rules); }, "");
    applyRules(option, rules, parts);
    if (rules.file != FileRole::None || std::holds_alternative<std::filesystem::path*>(target))
        parts.files.push_back({&option, {rules.file, target}});
    return option;
}

bool takesMany(const Target& target) {
    return std::holds_alternative<std::vector<std::string>*>(target) ||
           std::holds_alternative<std::vector<double>*>(target);
}

OptionText textOf(const CLI::Option& option, const Choices& choices) {
    OptionText text{.names = {},
                    .type = option.get_type_size() == 0 ? "" : option.get_type_name(),
                    .help = option.get_description(),
                    .choices = {},
                    .isArgument = option.get_positional(),
                    .required = option.get_required()};
    if (text.isArgument) text.names.push_back(option.get_name(true));
    for (const auto& name : option.get_snames()) text.names.push_back("-" + name);
    for (const auto& name : option.get_lnames()) text.names.push_back("--" + name);
    if (const auto found = choices.find(&option); found != choices.end()) text.choices = found->second;
    return text;
}

CommandText textOf(const CLI::App& app, const Choices& choices) {
    CommandText text{.name = app.get_name(),
                     .summary = app.get_description(),
                     .footer = app.get_footer(),
                     .options = {},
                     .commands = {}};
    for (const auto* option : app.get_options()) text.options.push_back(textOf(*option, choices));
    std::stable_partition(text.options.begin(), text.options.end(),
                          [](const OptionText& option) { return option.isArgument; });
    for (const auto* command : app.get_subcommands([](const CLI::App*) { return true; }))
        text.commands.push_back(textOf(*command, choices));
    return text;
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

std::string NamedFile::name() const {
    const auto* path = std::get_if<std::filesystem::path*>(&target_);
    const std::string text = path != nullptr ? (*path)->string() : **std::get_if<std::string*>(&target_);
    return text == "-" ? std::string() : text;  // what stands for no file at all
}

void NamedFile::rename(const std::filesystem::path& file) const {
    if (auto* const* path = std::get_if<std::filesystem::path*>(&target_)) {
        **path = file;
    } else {
        **std::get_if<std::string*>(&target_) = file.string();
    }
}

void CommandLine::flag(const char* names, bool& target, const char* help) {
    app_->add_flag(names, target, help);
}

void CommandLine::option(const char* names, Target target, const char* help, const Rules& rules) {
    CLI::Option& added = add(*app_, *parts_, names, target, help, rules);
    if (!rules.choices.empty()) parts_->choices.emplace(&added, rules.choices);
    if (takesMany(target)) added.allow_extra_args(false);
}

void CommandLine::argument(const char* shownAs, Target target, const char* help, const Rules& rules) {
    CLI::Option& added = add(*app_, *parts_, shownAs, target, help, rules);
    if (!rules.choices.empty()) parts_->choices.emplace(&added, rules.choices);
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
    app_->callback([run = std::move(run), parts = parts_] {
        if (parts->enters()) run();
    });
}

CommandLine CommandLine::command(const char* name, const char* summary) {
    return {*app_->add_subcommand(name, summary)->group("Commands"), *parts_};
}

void CommandLine::requireCommand() {
    app_->require_subcommand(1);
}

Program::Program(const ProgramTexts& texts, std::ostream& out)
    : parts_(std::make_unique<ProgramParts>()),
      app_(std::make_unique<CLI::App>(texts.about, texts.name)),
      out_(out),
      whereToBegin_(texts.whereToBegin) {
    app_->formatter(std::make_shared<FoldingFormatter>());  // which the commands take over
    app_->set_version_flag("--version", std::string(texts.name) + ' ' + texts.version,
                           "Print the version and exit");
    top().footer(texts.footer);
    app_->require_subcommand(1);
    app_->fallthrough();

    auto words = std::make_shared<std::vector<std::string>>();
    CommandLine help = top().command("help", "The help of a command");
    help.argument("COMMAND", words.get(), "The command; without one, the help of the program");
    // It needs no board, so nobody carries it out elsewhere.
    help.app_->callback([this, words] { printHelp(*words); });
}

Program::~Program() = default;

std::function<CommandText()> CommandLine::program() const {
    const CLI::App* top = app_;
    while (top->get_parent() != nullptr) top = top->get_parent();
    return [top, parts = parts_] { return textOf(*top, parts->choices); };
}

CommandLine Program::top() {
    return {*app_, *parts_};
}

CommandText Program::text() const {
    return textOf(*app_, parts_->choices);
}

void Program::intercept(BeforeCommand before) {
    parts_->before = std::move(before);
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
    out_ << app_->get_formatter()->make_help(command, path, CLI::AppFormatMode::Normal);
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
            app_->exit(error, out_, out_);  // prints the help
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
