#pragma once

/// Options and arguments of a command, without the parser behind them: its header takes seconds to compile,
/// so only CommandLine.cpp includes it.

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "command/CommandTree.h"

namespace CLI {
class App;
}

namespace marovine::host {

/// Where a value from the command line goes. The number types are checked by the parser.
using Target = std::variant<std::string*, std::filesystem::path*, double*, int*, unsigned*,
                            std::optional<int>*, std::vector<std::string>*, std::vector<double>*>;

/// What a command does with the file that a value names.
enum class FileRole {
    None,     ///< it names none; of a path: nobody but this process may touch it
    Read,     ///< reads it
    Written,  ///< writes it, or files whose names begin like it in the same folder
};

/// What a value must be.
struct Rules {
    const char* type = nullptr;  ///< shown in the help: "FILE.png"
    bool required = false;
    bool exists = false;              ///< a file that exists
    bool notEmpty = false;            ///< where an empty text would pass for none
    std::optional<double> minimum{};  ///< of a number, with `maximum`
    std::optional<double> maximum{};
    std::vector<std::string> choices{};  ///< the only texts allowed, without regard to case
    FileRole file = FileRole::None;
};

/// A file that the command line names, for whoever carries the command out elsewhere.
class NamedFile {
 public:
    NamedFile(FileRole role, Target target) : role_(role), target_(target) {}

    FileRole role() const { return role_; }
    std::string name() const;
    /// Lets the command work on another file.
    void rename(const std::filesystem::path& file) const;

 private:
    FileRole role_;
    Target target_;  ///< a text or a path
};

/// Called with the files that the line names when all is parsed. The command runs where it answers true.
using BeforeCommand = std::function<bool(const std::vector<NamedFile>& files)>;

/// What all commands of a program share.
struct ProgramParts;

/// A command or the program itself, to which options are added. Targets must live as long as the parser.
class CommandLine {
 public:
    CommandLine(CLI::App& app, ProgramParts& parts) : app_(&app), parts_(&parts) {}

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
    /// Gives the whole program's texts, once all commands are there.
    std::function<CommandText()> program() const;

 private:
    friend class Program;
    CLI::App* app_;
    ProgramParts* parts_;
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
    /// Help goes to `out`.
    Program(const ProgramTexts& texts, std::ostream& out);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    /// To add global options and commands.
    CommandLine top();
    /// Everything that the help says.
    CommandText text() const;
    /// To be called before a command runs. Files that the line names need not exist here then.
    void intercept(BeforeCommand before);
    /// Parses and runs the chosen command, whose exceptions pass. Returns nothing when it ran, and the exit
    /// status 0 when --help or --version was answered. Throws `UsageError` for a line that makes no sense.
    std::optional<int> run(std::vector<std::string> arguments);

 private:
    void printHelp(const std::vector<std::string>& words) const;
    static std::string unknownCommand(const CLI::App& parent, const std::string& word);

    std::unique_ptr<ProgramParts> parts_;
    std::unique_ptr<CLI::App> app_;
    std::ostream& out_;
    std::string whereToBegin_;
};

}  // namespace marovine::host
