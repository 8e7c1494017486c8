#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "client/About.h"
#include "command/Json.h"
#include "command/commands/Commands.h"
#include "pictures/SafeFile.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::filesystem::path icon;
    std::filesystem::path design;
    bool json = false;
};

void run(const Options& options, Session& session) {
    const auto library = session.library();
    const About about = aboutLibrary(*library);
    const auto icon = about.icon;
    const auto design = about.designImage;
    if (!options.icon.empty()) virtualboard::imaging::writeSafely(options.icon, icon);
    if (!options.design.empty()) virtualboard::imaging::writeSafely(options.design, design);

    const std::size_t parameters = session.applet().names().size();
    const std::size_t events = session.applet().events().size();
    Json document = Json::object();
    Table table;
    for (const auto& [name, text] : about.texts) {
        document[name] = text;
        table.add({name, text});
    }
    table.add({"icon", std::to_string(icon.size()) + " bytes"});
    table.add({"design image", std::to_string(design.size()) + " bytes"});
    table.add({"parameters", std::to_string(parameters)});
    table.add({"events", std::to_string(events)});
    table.add({"library", library->file().string()});
    document["icon bytes"] = icon.size();
    document["design image bytes"] = design.size();
    document["parameters"] = parameters;
    document["events"] = events;
    document["library"] = library->file().string();

    table.add({"design type", std::to_string(about.designType)});
    document["design type"] = about.designType;
    std::map<int, std::string> selectorsOf;  // by answer
    for (const auto& [selector, answer] : about.capabilities) {
        document["capabilities"][std::to_string(selector)] = answer;
        std::string& selectors = selectorsOf[answer];
        selectors += (selectors.empty() ? "" : ", ") + std::to_string(selector);
    }
    for (const auto& [answer, selectors] : selectorsOf)
        table.add({"answers " + std::to_string(answer), "to the runtime's questions " + selectors});
    if (options.json) {
        session.console().out() << printed(document) << '\n';
    } else {
        table.print(session.console());
    }
}

}  // namespace

void defineInfo(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.option("--icon", &options->icon, "Write the icon, a PNG picture, to this file",
                   {.type = "FILE.png", .file = FileRole::Written});
    command.option("--design", &options->design, "Write the embedded design image to this file",
                   {.type = "FILE.hap", .file = FileRole::Written});
    command.flag("--json", options->json, "As a JSON object");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
