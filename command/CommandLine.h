#pragma once

/// Options and arguments of a command, without the parser behind them: its header takes seconds to compile,
/// so only CommandLine.cpp includes it.

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace CLI {
class App;
}

namespace marovine::host {

/// Where a value from the command line goes. The number types are checked by the parser.
using Target = std::variant<std::string*, std::filesystem::path*, double*, int*, unsigned*,
                            std::optional<int>*, std::vector<std::string>*, std::vector<double>*>;

/// What a value must be.
struct Rules {
    const char* type = nullptr;  ///< shown in the help: "FILE.png"
    bool required = false;
    bool exists = false;              ///< a file that exists
    std::optional<double> minimum{};  ///< of a number, with `maximum`
    std::optional<double> maximum{};
    std::vector<std::string> choices{};  ///< the only texts allowed, without regard to case
};

/// A command or the program itself, to which options are added. Targets must live as long as the parser.
class CommandLine {
 public:
    explicit CommandLine(CLI::App& app) : app_(&app) {}

    /// A switch: "--json" or "-v,--verbose".
    void flag(const char* names, bool& target, const char* help);
    /// An option with a value; a vector takes one value at each occurrence.
    void option(const char* names, Target target, const char* help, const Rules& rules = {});
    /// An argument without name of its own; a vector takes all that follow.
    void argument(const char* shownAs, Target target, const char* help, const Rules& rules = {});
    /// Two options that make no sense together.
    void excludes(const char* one, const char* other);
    /// Text below the help's list of options.
    void footer(std::string_view text);
    /// What runs once everything is parsed.
    void action(std::function<void()> run);
    /// A command below this one.
    CommandLine command(const char* name, const char* summary);
    /// One of the commands below must be given.
    void requireCommand();

 private:
    CLI::App* app_;
};

/// What the program says about itself.
struct ProgramTexts {
    const char* name;
    const char* version;
    const char* about;
    const char* footer;
    const char* whereToBegin;  ///< told when no command is given
};

/// The whole command line of the program, with --version and a command `help`.
class Program {
 public:
    explicit Program(const ProgramTexts& texts);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    /// To add global options and commands.
    CommandLine top();
    /// Parses and runs the chosen command, whose exceptions pass. Returns nothing when it ran, and the exit
    /// status 0 when --help or --version was answered. Throws `UsageError` for a line that makes no sense.
    std::optional<int> run(std::vector<std::string> arguments);

 private:
    void printHelp(const std::vector<std::string>& words) const;
    static std::string unknownCommand(const CLI::App& parent, const std::string& word);

    std::unique_ptr<CLI::App> app_;
    std::string whereToBegin_;
};

}  // namespace marovine::host
