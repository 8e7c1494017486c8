#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "command/ChangeReport.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::vector<std::string> settings;
    TraceOption trace;
    bool json = false;
};

/// What a refusal was explained with.
struct Reasons {
    Explanation why;
    std::vector<Remedy> remedies;
};

/// The reasons that can be found; nothing when the refused value cannot be told.
std::optional<Reasons> reasonsFor(Session& session, const Refused& refusal) {
    const auto why = explained(session, refusal);
    if (!why) return std::nullopt;
    Applet& applet = session.applet();
    const Value value = applet.parameter(refusal.parameter).parse(refusal.value);
    return Reasons{*why, remediesFor(applet, {refusal.parameter, value}, *why)};
}

Json jsonOf(const std::vector<Remedy>& remedies) {
    Json list = Json::array();
    for (const auto& remedy : remedies) {
        Json settings = Json::array();
        for (const auto& [parameter, value] : remedy.settings)
            settings.push_back({{"parameter", parameter}, {"value", value}});
        list.push_back({{"text", remedy.text()}, {"settings", std::move(settings)}});
    }
    return list;
}

Json jsonOf(const Reasons& reasons) {
    const Explanation& explanation = reasons.why;
    Json causes = Json::array();
    for (const auto& cause : explanation.causes)
        causes.push_back({{"parameter", cause.parameter},
                          {"value", cause.value},
                          {"together", cause.together},
                          {"advice", remedyText(cause)}});
    return {{"parameter", explanation.parameter},
            {"value", explanation.value},
            {"code", explanation.code},
            {"meaning", meaningOf(explanation.code)},
            {"rule", explanation.rule},
            {"nearest", explanation.nearest},
            {"causes", std::move(causes)},
            {"accepted", explanation.accepted},
            {"sentence", explanation.sentence()},
            {"advice", explanation.advice()},
            {"remedies", jsonOf(reasons.remedies)}};
}

/// A refusal of which no more is known.
Json jsonOf(const Refused& refusal) {
    return {{"parameter", refusal.parameter}, {"value", refusal.value},
            {"code", refusal.code},           {"meaning", meaningOf(refusal.code)},
            {"sentence", refusal.what()},     {"nearest", Json::array()},
            {"causes", Json::array()},        {"remedies", Json::array()}};
}

void run(const Options& options, Session& session) {
    Applet& applet = session.applet();
    // Everything is read before anything is set: a typing error at the end changes nothing.
    std::vector<SettingText> settings;
    for (const auto& text : options.settings) {
        settings.push_back(parseSetting(text));
        settings.back().name = applet.nameOf(settings.back().name);
        applet.parameter(settings.back().name).parse(settings.back().value);
    }

    ChangeReport report(applet, options.trace, session.changeScope());
    std::optional<Refused> refusal;
    for (const auto& setting : settings) {
        try {
            session.apply(setting);
            report.done(setting.name, setting.value);
        } catch (const Refused& refused) {
            report.failed(setting.name, setting.value);
            refusal = refused;
            break;
        }
    }
    report.finish();
    if (!options.json) {
        report.print(session.console());
        if (refusal) throw *refusal;
        return;
    }
    Json document = report.json();
    if (refusal) {
        const auto reasons = reasonsFor(session, *refusal);
        document["refused"] = reasons ? jsonOf(*reasons) : jsonOf(*refusal);
        session.status = kFailed;
    }
    session.console().out() << printed(document) << '\n';
}

}  // namespace

void defineSet(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("NAME=VALUE", &options->settings, "Settings, applied in this order", {.required = true});
    addTraceOption(command, options->trace);
    command.flag("--json", options->json, "Report as JSON");
    command.footer(
        "VALUE is a number (0x.. for hexadecimal), the name of an enumeration's constant, or a text.\n"
        "Elements of a table: NAME[INDEX]=VALUE,VALUE,...\n"
        "The first refused value ends the command; what was set before stays set.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
