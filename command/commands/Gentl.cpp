#include <filesystem>
#include <memory>
#include <string>

#include "command/GentlCheck.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

constexpr const char* kPath = "GENICAM_GENTL64_PATH";

struct Options {
    std::string what;
    std::filesystem::path producer;
    bool json = false;
};

/// The producer lies beside the applet.
std::filesystem::path producerOf(const Options& options, Session& session) {
    if (!options.producer.empty()) return options.producer;
    const auto file = std::filesystem::absolute(session.library()->file()).parent_path() / "Marovine.cti";
    std::error_code failed;
    if (!std::filesystem::exists(file, failed))
        throw Failure("there is no producer beside the applet: " + file.string() + " does not exist");
    return file.lexically_normal();
}

void tell(const Options& options, Session& session) {
    const auto producer = producerOf(options, session);
    const std::string folder = producer.parent_path().string();
    if (options.json) {
        session.console().out() << printed({{"producer", producer.string()}, {kPath, folder}}) << '\n';
        return;
    }
    session.console().out() << producer.string() << "\n\n";
    session.console().paragraph(
        "Programs that speak GenICam find it through a variable of their environment:");
    session.console().out() << "\n    export " << kPath << "=" << folder << "\n\n";
    session.console().paragraph(
        "MAROVINE_WORLD lists world files, separated by colons: a board for each; without it there is one.");
}

void check(const Options& options, Session& session) {
    const auto findings = checkProducer(producerOf(options, session));
    Json document = Json::array();
    Table table;
    for (const auto& finding : findings) {
        if (!finding.good) session.status = kFailed;
        document.push_back({{"what", finding.what}, {"result", finding.result}, {"good", finding.good}});
        table.add({finding.good ? "good" : "WRONG", finding.what, finding.result},
                  finding.good ? Style::Plain : Style::Bad);
    }
    if (options.json) {
        session.console().out() << printed(document) << '\n';
    } else {
        table.print(session.console());
    }
}

}  // namespace

void defineGentl(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("check", &options->what, "Open everything through the producer and say what is wrong",
                     {.choices = {"check"}});
    command.option("--producer", &options->producer, "Another producer than the one beside the applet",
                   {.type = "FILE.cti", .exists = true});
    command.flag("--json", options->json, "As JSON");
    command.footer("Without check: where the GenTL producer lies, and what programs need to find it.");
    command.action([options, &session] {
        if (options->what.empty()) return tell(*options, session);
        check(*options, session);
    });
}

}  // namespace marovine::host::commands
