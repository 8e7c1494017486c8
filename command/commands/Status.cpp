#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/Snapshot.h"
#include "client/VirtualBoard.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

struct Options {
    double after = 0;
    bool json = false;
};

/// Meanings of the bits of FG_CAMSTATUS_EXTENDED, from bit 0; the last two make one number.
constexpr std::array kCameraBits{"pixel clock", "line valid",       "frame valid",
                                 "CC1",         "external trigger", "buffer overflow"};
constexpr unsigned kFillShift = 6;

std::string cameraBits(std::uint32_t status) {
    std::string text;
    for (std::size_t bit = 0; bit < kCameraBits.size(); ++bit)
        if (((status >> bit) & 1) != 0) text += (text.empty() ? "" : ", ") + std::string(kCameraBits[bit]);
    constexpr std::array fill{"below 25 %", "from 25 %", "from 50 %", "from 75 %"};
    return text + (text.empty() ? "" : ", ") + "buffer " + fill[(status >> kFillShift) & 3];
}

/// The inputs that are high.
std::string inputBits(std::uint32_t inputs) {
    constexpr unsigned inputCount = 12;
    constexpr unsigned firstFront = 8;
    std::string text;
    for (unsigned input = 0; input < inputCount; ++input)
        if (((inputs >> input) & 1) != 0)
            text += (text.empty() ? "" : ", ") + (input < firstFront
                                                      ? "GPI " + std::to_string(input)
                                                      : "front GPI " + std::to_string(input - firstFront));
    return text.empty() ? "all low" : "high: " + text;
}

/// A value with its unit, and what the bits of a bit set mean.
std::string valueText(const Parameter& parameter, const Value& value) {
    const auto* number = std::get_if<std::uint32_t>(&value);
    std::string text = parameter.textWithUnit(value);
    if (number != nullptr && parameter.name == "FG_CAMSTATUS_EXTENDED") text += "  " + cameraBits(*number);
    if (number != nullptr && parameter.name == "FG_DIGIO_INPUT") text += "  " + inputBits(*number);
    return text;
}

struct Reading {
    Parameter parameter;
    std::optional<Value> value;
    int code = 0;
};

Reading readingOf(Applet& applet, const std::string& name) {
    Reading reading{.parameter = applet.parameter(name), .value = {}};
    try {
        reading.value = applet.get(name);
    } catch (const Refused& refusal) {
        reading.code = refusal.code;
    }
    return reading;
}

void print(const Console& console, const std::vector<Reading>& readings) {
    std::vector<std::string> groups;
    for (const auto& reading : readings)
        if (std::find(groups.begin(), groups.end(), reading.parameter.group) == groups.end())
            groups.push_back(reading.parameter.group);
    for (const auto& group : groups) {
        if (group != groups.front()) console.out() << '\n';
        console.heading(group);
        Table table;
        for (const auto& [parameter, value, code] : readings)
            if (parameter.group == group)
                table.add({parameter.name, value ? valueText(parameter, *value)
                                                 : "(" + std::to_string(code) + ") " + meaningOf(code)});
        table.print(console, 2);
    }
}

void run(const Options& options, Session& session) {
    Applet& applet = session.applet();
    boardOf(applet).advanceClock(options.after);
    std::vector<Reading> readings;
    for (const auto& parameter : applet.tree())
        if (isReadOut(parameter.name)) readings.push_back(readingOf(applet, parameter.name));
    for (const auto& name : applet.names())
        if (!applet.parameter(name).described) readings.push_back(readingOf(applet, name));
    if (!options.json) return print(session.console(), readings);
    Json document = Json::object();
    for (const auto& [parameter, value, code] : readings) {
        Json entry{{"value", value ? jsonOf(parameter, *value) : Json()}, {"group", parameter.group}};
        if (!parameter.unit.empty()) entry["unit"] = parameter.unit;
        if (code != 0) entry["code"] = code;
        document[parameter.name] = std::move(entry);
    }
    session.console().out() << printed(document) << '\n';
}

}  // namespace

void defineStatus(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.option("--after", &options->after, "Let this much of the board's time pass first, at most 1e9",
                   {.type = "SECONDS", .minimum = 0.0, .maximum = 1e9});
    command.flag("--json", options->json, "As a JSON object");
    command.footer(
        "The board's clock, on which the signal analyzers count, stands still: with --after 1 they show\n"
        "what a second brings, at once.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
