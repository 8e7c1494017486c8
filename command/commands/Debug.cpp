#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/IgnoreCase.h"
#include "command/ChangeReport.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::string point;
    std::string inject;
    std::string monitor;
    std::string file;
    bool insert = false;
    std::vector<std::string> pixels;
    bool endLine = false;
    bool endFrame = false;
    TraceOption trace;
    bool json = false;
};

/// A debug point with its state.
struct Point {
    unsigned number = 0;
    std::string name;
    bool canMonitor = false;
    std::vector<std::pair<std::string, std::string>> readings;  ///< parameter and value, as text
};

constexpr std::array kReadings{"FG_DEBUGINENABLE", "FG_DEBUGREADY",   "FG_DEBUGFILE",    "FG_DEBUGOUTENABLE",
                               "FG_DEBUGOUTXPOS",  "FG_DEBUGOUTYPOS", "FG_DEBUGOUTPIXEL"};

/// The selected point. Whether it monitors is known only when the point has been set.
Point selectedPoint(Applet& applet) {
    Point point{.number = std::get<std::uint32_t>(applet.get("FG_DEBUGSOURCE")),
                .name = std::get<std::string>(applet.get("FG_DEBUGSOURCENAME")),
                .canMonitor = applet.parameter("FG_DEBUGOUTENABLE").writable,
                .readings = {}};
    for (const char* name : kReadings)
        point.readings.emplace_back(name, applet.parameter(name).textOf(applet.get(name)));
    return point;
}

/// All points, looked at on another instance.
std::vector<Point> allPoints(const Applet& applet) {
    std::vector<Point> points;
    const auto twin = applet.twin();
    try {
        for (std::uint32_t number = 0;; ++number) {
            twin->set("FG_DEBUGSOURCE", number);
            points.push_back(selectedPoint(*twin));
        }
    } catch (const Refused&) {
        // The first number that is refused is the number of points.
    }
    return points;
}

/// The point with this number or name.
const Point& pointNamed(const std::vector<Point>& points, const std::string& wanted) {
    std::string known;
    for (const auto& point : points) {
        const std::string number = std::to_string(point.number);
        if (wanted == number || equalIgnoringCase(wanted, point.name)) return point;
        known += (known.empty() ? "" : ", ") + number + " " + point.name;
    }
    throw Failure("the design has no debug point " + wanted +
                  "; there are: " + (known.empty() ? "none" : known));
}

/// Refuses what the applet would take without doing it.
void check(const Options& options, const Point& point, const std::string& heldFile) {
    if (options.monitor == "on" && !point.canMonitor)
        throw Failure("point " + std::to_string(point.number) + ", " + point.name +
                      ", cannot monitor; `marovine debug` lists which can");
    const std::string& file = options.file.empty() ? heldFile : options.file;
    if (options.insert && file.empty()) throw UsageError("--insert needs a picture; name it with --file");
    if ((options.insert || !options.file.empty()) && !std::filesystem::is_regular_file(file))
        throw Failure("there is no file " + file);
}

/// What the options ask for, as settings in the order in which they make sense.
std::vector<std::pair<std::string, std::string>> settingsOf(const Options& options, const Point& point) {
    const auto onOff = [](const std::string& text) { return text == "on" ? "FG_ON" : "FG_OFF"; };
    std::vector<std::pair<std::string, std::string>> settings;
    if (!options.point.empty()) settings.emplace_back("FG_DEBUGSOURCE", std::to_string(point.number));
    if (!options.file.empty()) settings.emplace_back("FG_DEBUGFILE", options.file);
    if (!options.inject.empty()) settings.emplace_back("FG_DEBUGINENABLE", onOff(options.inject));
    if (!options.monitor.empty()) settings.emplace_back("FG_DEBUGOUTENABLE", onOff(options.monitor));
    if (options.insert) settings.emplace_back("FG_DEBUGINSERT", "FG_APPLY");
    for (const auto& pixel : options.pixels) settings.emplace_back("FG_DEBUGWRITEPIXEL", pixel);
    if (options.endLine) settings.emplace_back("FG_DEBUGWRITEFLAG", "FG_ENDOFLINE");
    if (options.endFrame) settings.emplace_back("FG_DEBUGWRITEFLAG", "FG_ENDOFFRAME");
    return settings;
}

Json jsonOf(const Point& point) {
    Json document{{"point", point.number}, {"name", point.name}, {"canMonitor", point.canMonitor}};
    for (const auto& [name, value] : point.readings) document[name] = value;
    return document;
}

void print(const Console& console, const Point& point) {
    console.heading("Point " + std::to_string(point.number) + ": " + point.name +
                    (point.canMonitor ? " (inject and monitor)" : " (inject)"));
    Table table;
    for (const auto& [name, value] : point.readings) table.add({name, value});
    table.print(console, 2);
}

void printAll(const std::vector<Point>& points, bool json, const Console& console) {
    Json document = Json::array();
    for (const auto& point : points) {
        if (json) {
            document.push_back(jsonOf(point));
        } else {
            print(console, point);
        }
    }
    if (json) console.out() << printed(document) << '\n';
}

/// Makes a setting and looks whether it holds: at some points the applet takes values without effect.
void applyAndCompare(Session& session, const std::string& name, const std::string& value) {
    Applet& applet = session.applet();
    const Parameter parameter = session.apply({.name = name, .firstElement = {}, .value = value});
    if (std::ranges::find(kReadings, name) == kReadings.end()) return;  // steps rather than states
    const Value held = applet.get(name);
    if (held != parameter.parse(value))
        throw Failure(name + " = " + value + " was taken without effect; it is " + parameter.textOf(held));
}

void run(const Options& options, Session& session) {
    Applet& applet = session.applet();
    const Console& console = session.console();
    const auto points = allPoints(applet);
    const std::string wanted = options.point.empty()
                                   ? std::to_string(std::get<std::uint32_t>(applet.get("FG_DEBUGSOURCE")))
                                   : options.point;
    const Point& chosen = pointNamed(points, wanted);
    check(options, chosen, std::get<std::string>(applet.get("FG_DEBUGFILE")));
    const auto settings = settingsOf(options, chosen);
    if (settings.empty()) return printAll(points, options.json, console);

    ChangeReport report(applet, options.trace, session.changeScope());
    for (const auto& [name, value] : settings) {
        applyAndCompare(session, name, value);
        report.done(name, value);
    }
    report.finish();
    Point point = selectedPoint(applet);
    point.canMonitor = chosen.canMonitor;
    if (options.json) {
        Json document = report.json();
        document["point"] = jsonOf(point);
        console.out() << printed(document) << '\n';
        return;
    }
    report.print(console);
    console.out() << '\n';
    print(console, point);
}

}  // namespace

void defineDebug(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    const Rules onOff{.type = "on|off", .choices = {"on", "off"}};
    command.option("--point", &options->point, "Select a debug point", {.type = "NUMBER|NAME"});
    command.option("--file", &options->file, "File of injection data",
                   {.type = "FILE", .file = FileRole::Read});
    command.option("--inject", &options->inject, "Switch injection", onOff);
    command.option("--monitor", &options->monitor, "Switch the monitor", onOff);
    command.flag("--insert", options->insert, "Insert the file's picture");
    command.option("--pixel", &options->pixels, "Write a pixel; may be repeated", {.type = "VALUE"});
    command.flag("--end-line", options->endLine, "Then end the line");
    command.flag("--end-frame", options->endFrame, "Then end the frame");
    addTraceOption(command, options->trace);
    command.flag("--json", options->json, "As JSON");
    command.footer(
        "Without options it lists the debug points. Steps run in the order of this list.\n"
        "For instance: marovine debug --point 0 --inject on --pixel 0x10 --pixel 0x20 --end-line");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
