/// The command `marovine`.

#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "command/Run.h"
#include "command/TerminalText.h"

namespace {

using namespace marovine::host;

/// Whether the line is for the program that has the studio, which knows all the other commands as well.
bool isForStudio(const std::vector<std::string>& arguments) {
    return std::ranges::any_of(arguments, [](std::string_view argument) {
        return argument == "studio" || argument == "--at" || argument.starts_with("--at=");
    });
}

/// Becomes the program that has the studio. It is another one so that whoever builds the command for the rest
/// need not wait for a web server to compile. Returns when it is not there; the line is then told so.
void becomeStudio(char** arguments) {
    // The name by which the kernel knows this program: /proc is not everywhere.
    std::error_code unknown;
    const auto self = std::filesystem::canonical(std::bit_cast<const char*>(getauxval(AT_EXECFN)), unknown);
    if (!unknown) execv((self.parent_path() / "marovine-studio").c_str(), arguments);
}

}  // namespace

int main(int count, char** arguments) {
    // A file that may not grow any more is a failed write, told like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    const std::vector<std::string> line(arguments + 1, arguments + count);
    if (isForStudio(line)) becomeStudio(arguments);
    const TerminalText output(std::cout, STDOUT_FILENO);
    const TerminalText errors(std::cerr, STDERR_FILENO);
    Session session;
    BeforeCommand before;
    if (isForStudio(line)) {
        before = [&](const auto&) {
            if (session.options.address.empty()) return true;
            throw Failure("--at needs the program marovine-studio beside this one");
        };
    }
    return run(session, line, before);
}
