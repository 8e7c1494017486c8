#include <filesystem>
#include <memory>
#include <string>

#include "command/commands/Commands.h"
#include "pictures/SafeFile.h"

namespace marovine::host::commands {

namespace fs = std::filesystem;

void defineXml(CommandLine command, Session& session) {
    auto file = std::make_shared<fs::path>();
    command.option("-o,--output", file.get(), "Write to this file instead of standard output",
                   {.type = "FILE.xml", .file = FileRole::Written});
    command.action([file, &session] {
        const std::string document = session.applet().xml();
        if (file->empty()) {
            session.console().out() << document;
        } else {
            virtualboard::imaging::writeSafely(*file, document);
        }
    });
}

}  // namespace marovine::host::commands
