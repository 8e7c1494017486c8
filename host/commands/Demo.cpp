#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/Curve.h"
#include "host/Trace.h"
#include "host/commands/Commands.h"
#include "host/commands/DemoPictures.h"

namespace marovine::host::commands {

namespace {

constexpr std::size_t kIndent = 2;
const std::string kMargin(kIndent, ' ');

/// What a section of the demonstration works with.
struct Stage {
    Applet& applet;
    const Console& console;

    std::ostream& line() const { return console.out() << kMargin; }
    /// A parameter's value with its unit.
    std::string shown(std::string_view name) const {
        return applet.parameter(name).textWithUnit(applet.get(name));
    }
    /// Sets a parameter from text, as `marovine set` does.
    void set(std::string_view name, std::string_view value) const {
        applet.set(name, applet.parameter(name).parse(value));
    }
};

void introduce(const Stage& stage) {
    const auto answer = [&](int selector) {
        void* text = nullptr;
        stage.applet.library().info(selector, 0, 0, nullptr, &text);
        return std::string(text != nullptr ? static_cast<const char*>(text) : "");
    };
    constexpr int name = 4176;
    constexpr int version = 4192;
    constexpr int category = 4112;
    constexpr int design = 1043;
    Table table;
    table.add({"applet", answer(name) + " " + answer(version) + ", " + answer(category)});
    table.add({"design", answer(design)});
    table.add({"board", "FPGA " + stage.shown("FG_SYSTEMMONITOR_FPGA_DNA") + " at " +
                            stage.shown("FG_SYSTEMMONITOR_FPGA_TEMPERATURE") + ", PCIe " +
                            stage.shown("FG_SYSTEMMONITOR_CURRENT_LINK_WIDTH")});
    table.add({"offers", std::to_string(stage.applet.names().size()) + " parameters, " +
                             std::to_string(stage.applet.events().size()) + " events"});
    table.add({"opening", std::to_string(stage.applet.board().takeWrites().size()) +
                              " design writes brought the defaults to the board"});
    table.print(stage.console, kIndent);
}

/// One request from the host down to the design.
void followARequest(const Stage& stage) {
    constexpr const char* name = "FG_WIDTH";
    const std::string range = stage.applet.parameter(name).rangeText();
    const std::string before = stage.shown(name);
    const Snapshot was(stage.applet);
    Trace trace(stage.applet);
    stage.set(name, "2048");
    trace.collect("");

    stage.line() << "The host asks for 2048 in place of " << before << "; allowed is " << range << ".\n";
    stage.line() << "The applet tells the design, in this order:\n";
    trace.print(stage.console);
    stage.line() << "and narrows what its neighbours may be:\n";
    Table table;
    for (const auto& change : changesBetween(was, Snapshot(stage.applet)))
        if (change.parameter != name)
            table.add({change.parameter, nameOf(change.aspect), change.before + " -> " + change.after});
    table.print(stage.console, 2 * kIndent);
}

/// Two values that the applet refuses, and what the command makes of the refusals.
void getRefused(const Stage& stage) {
    for (const std::string_view value : {"1004", "4104"}) {
        if (value == "4104") {
            stage.set("FG_XOFFSET", "12288");
            stage.line() << "With FG_XOFFSET = 12288:\n";
        }
        try {
            stage.set("FG_WIDTH", value);
        } catch (const Refused& refusal) {
            const auto why = explain(
                stage.applet, {"FG_WIDTH", stage.applet.parameter("FG_WIDTH").parse(value)}, refusal.code);
            stage.console.paragraph(why.sentence(), kIndent, Style::Bad);
            for (const auto& advice : why.advice()) stage.line() << kMargin << advice << '\n';
        }
    }
    stage.set("FG_XOFFSET", "0");
}

/// A gamma value becomes a table of 256 entries in the design.
void bendTheCurve(const Stage& stage) {
    stage.set("FG_PROCESSING_GAMMA", "2.2");
    const auto table = std::get<Field>(stage.applet.get("FG_LUT_VALUE_GREEN"));
    constexpr std::size_t columns = 32;
    constexpr std::size_t rows = 6;
    stage.line() << "FG_PROCESSING_GAMMA = 2.2 computes three tables; entry 128 is now " << table[128]
                 << ".\n";
    for (const auto& text : curveLines(table, 255, columns, rows))
        stage.line() << kMargin << stage.console.styled(Style::Accent, text) << '\n';
}

/// A rate becomes a count of clock cycles, and the rate that is really reached.
void countClocks(const Stage& stage) {
    Trace trace(stage.applet);
    stage.set("FG_CAMERASIMULATOR_LINERATE", "10240");
    trace.collect("");
    std::string clocks;
    for (const auto& traced : trace.writes())
        if (traced.write.name.ends_with("SequenceLength_ImageWidth")) clocks = textOf(traced.write.value);
    stage.line() << "FG_CAMERASIMULATOR_LINERATE = 10240 writes " << clocks
                 << " clocks of 8 ns for each line;\n";
    stage.line() << "what is really reached, and read back: " << stage.shown("FG_CAMERASIMULATOR_LINERATE")
                 << ".\n";
}

/// Lines on a signal at an input, flashes on an output.
void wireATrigger(const Stage& stage) {
    struct Step {
        const char* name;
        const char* value;
    };
    constexpr std::array steps{Step{"FG_LINETRIGGERMODE", "ASYNC_TRIGGER"},
                               Step{"FG_LINETRIGGERINSRC", "TRGINSRC_GPI_1"}, Step{"FG_LINEEXPOSURE", "50"},
                               Step{"FG_TRIGGEROUT_GPO_0_SOURCE", "FG_SIGNAL_CAM0_FLASH"}};
    constexpr std::string_view process = "Device1_ProcessN_";
    Trace trace(stage.applet);
    std::size_t shown = 0;
    for (const auto& step : steps) {
        stage.set(step.name, step.value);
        trace.collect("");
        stage.line() << step.name << " = " << step.value << '\n';
        for (; shown < trace.writes().size(); ++shown) {
            const auto& write = trace.writes()[shown].write;
            stage.line() << "  -> "
                         << stage.console.styled(Style::Accent, write.name.substr(process.size()) + " = " +
                                                                    textOf(write.value))
                         << '\n';
        }
    }
}

/// Where the window lies on the widest line.
void showTheWindow(const Stage& stage) {
    const auto number = [&](const char* name) { return *numberOf(stage.applet.get(name)); };
    constexpr long double widest = 16384;
    constexpr std::size_t columns = 64;
    const auto columnOf = [&](long double pixel) {
        return static_cast<std::size_t>(std::lround(pixel / widest * columns));
    };
    const std::size_t from = columnOf(number("FG_XOFFSET"));
    const std::size_t to = columnOf(number("FG_XOFFSET") + number("FG_WIDTH"));
    std::string bar;
    for (std::size_t i = 0; i < columns; ++i) bar += i >= from && i < to ? "█" : "░";
    stage.line() << "0 " << stage.console.styled(Style::Accent, bar) << " 16384 pixel\n";
    Table table;
    for (const char* name :
         {"FG_WIDTH", "FG_HEIGHT", "FG_XOFFSET", "FG_YOFFSET", "FG_TAPGEOMETRY", "FG_VANTAGEPOINT"}) {
        const Parameter parameter = stage.applet.parameter(name);
        table.add({name, stage.shown(name), parameter.range ? parameter.rangeText() : ""});
    }
    table.print(stage.console, kIndent);
}

struct Section {
    const char* title;
    void (*show)(const Stage& stage);
};

constexpr std::array sections{
    Section{"The applet and its board", introduce},
    Section{"The road of one request: FG_WIDTH = 2048", followARequest},
    Section{"Refused, with the reason", getRefused},
    Section{"A curve for the eye", bendTheCurve},
    Section{"A rate in clock cycles", countClocks},
    Section{"A line for every pulse at input 1, a flash on output 0", wireATrigger},
    Section{"The window at the end", showTheWindow},
};

void run(Session& session) {
    const Console& console = session.console();
    Applet applet(session.library(), {.writeDefaults = true, .recordWrites = true, .rememberSteps = true});
    const Stage stage{applet, console};
    // Counters that run on their own would look like changes.
    applet.board().setClockManual(true);
    for (const auto& section : sections) {
        if (&section != sections.data()) console.out() << '\n';
        console.heading(section.title);
        section.show(stage);
    }
    console.out() << '\n';
    demonstratePictures(session);
}

}  // namespace

void defineDemo(CommandLine command, Session& session) {
    command.footer("Opens an applet of its own: --config and --set do not touch it.");
    command.action([&session] { run(session); });
}

}  // namespace marovine::host::commands
