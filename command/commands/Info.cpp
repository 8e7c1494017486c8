#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

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

struct Question {
    int selector;
    const char* name;
};
/// Selectors that answer with a text.
constexpr std::array kTexts{Question{MAROVINE_INFO_NAME, "name"},
                            Question{MAROVINE_INFO_VERSION, "version"},
                            Question{MAROVINE_INFO_BUILD, "build"},
                            Question{MAROVINE_INFO_CATEGORY, "category"},
                            Question{MAROVINE_INFO_TAGS, "tags"},
                            Question{MAROVINE_INFO_DESIGN_UID, "design identifier"},
                            Question{MAROVINE_INFO_BITSTREAM_UID, "bitstream identifier"}};
/// Other selectors that answer with a number. What they ask for is known to the host's runtime alone.
constexpr std::array kNumbers{848,  1040, 1045, 1792, 1872, 1888, 2048, 2160, 2192, 2560,
                              2816, 3072, 3328, 4608, 4624, 4640, 4656, 4672, 4688, 4704};

std::string answerText(const Library& library, int selector) {
    void* text = nullptr;
    if (library.info(selector, 0, 0, nullptr, &text) != 0 || text == nullptr) return {};
    return static_cast<const char*>(text);
}

/// A block of bytes inside the library.
std::string_view answerBytes(const Library& library, int selector) {
    std::size_t size = 0;
    void* bytes = nullptr;
    if (library.info(selector, 0, 0, &size, &bytes) != 0 || bytes == nullptr) return {};
    return {static_cast<const char*>(bytes), size};
}

void run(const Options& options, Session& session) {
    const auto library = session.library();
    const auto icon = answerBytes(*library, MAROVINE_INFO_ICON);
    const auto design = answerBytes(*library, MAROVINE_INFO_DESIGN_IMAGE);
    if (!options.icon.empty()) virtualboard::imaging::writeSafely(options.icon, icon);
    if (!options.design.empty()) virtualboard::imaging::writeSafely(options.design, design);

    const std::size_t parameters = session.applet().names().size();
    const std::size_t events = session.applet().events().size();
    Json document = Json::object();
    Table table;
    for (const auto& question : kTexts) {
        const std::string text = answerText(*library, question.selector);
        document[question.name] = text;
        table.add({question.name, text});
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

    const auto number = [&](int selector) { return library->info(selector, 0, 0, nullptr, nullptr); };
    table.add({"design type", std::to_string(number(MAROVINE_INFO_DESIGN_TYPE))});
    document["design type"] = number(MAROVINE_INFO_DESIGN_TYPE);
    std::map<int, std::string> selectorsOf;  // by answer
    for (const int selector : kNumbers) {
        document["capabilities"][std::to_string(selector)] = number(selector);
        std::string& selectors = selectorsOf[number(selector)];
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
                   {.type = "FILE.png"});
    command.option("--design", &options->design, "Write the embedded design image to this file",
                   {.type = "FILE.hap"});
    command.flag("--json", options->json, "As a JSON object");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
