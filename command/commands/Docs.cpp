#include <fstream>
#include <memory>
#include <string>

#include "base/AppletIdentity.h"
#include "command/Completion.h"
#include "command/ManualPages.h"
#include "command/Reference.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

void writePages(const std::filesystem::path& folder, const CommandText& program) {
    std::filesystem::create_directories(folder);
    for (const auto& page : manualPages(program, marovine::identity::version)) {
        std::ofstream out(folder / page.file, std::ios::binary);
        out << page.text << std::flush;
        if (!out) throw Failure((folder / page.file).string() + " cannot be written");
    }
}

}  // namespace

void defineDocs(CommandLine command, Session& session) {
    command.requireCommand();
    CommandLine parameters = command.command("parameters", "Every parameter, as docs/PARAMETERS.md has it");
    parameters.action([&session] { writeParameterReference(session.console().out(), session.applet()); });
    CommandLine codes = command.command("codes", "Codes, events, environment, as docs/CODES.md has them");
    codes.action([&session] { writeCodeReference(session.console().out(), session.applet()); });
    CommandLine pages = command.command("man", "Manual pages of all commands");
    auto folder = std::make_shared<std::filesystem::path>();
    pages.argument("FOLDER", folder.get(), "Where to write them; pages of the same name are replaced",
                   {.required = true});
    pages.action([folder, program = command.program()] { writePages(*folder, program()); });
}

void defineCompletion(CommandLine command, Session& session) {
    auto shell = std::make_shared<std::string>();
    command.argument("SHELL", shell.get(), "For which shell",
                     {.required = true, .choices = {"bash", "zsh", "fish"}});
    command.footer(
        "For bash, put it into a file of ~/.local/share/bash-completion/completions named marovine;\n"
        "for zsh, into a file _marovine of a folder in fpath;\n"
        "for fish, into ~/.config/fish/completions/marovine.fish. An installation brings them along.");
    command.action([shell, &session] { session.console().out() << completionScript(*shell); });
}

}  // namespace marovine::host::commands
