#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "client/VirtualBoard.h"
#include "command/Curve.h"
#include "command/Trace.h"
#include "command/commands/Commands.h"
#include "command/commands/DemoPictures.h"

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
    Table table;
    table.add({"applet", answer(MAROVINE_INFO_NAME) + " " + answer(MAROVINE_INFO_VERSION) + ", " +
                             answer(MAROVINE_INFO_CATEGORY) + ": " +
                             std::to_string(stage.applet.names().size()) + " parameters, " +
                             std::to_string(stage.applet.events().size()) + " events"});
    table.add({"board", "FPGA " + stage.shown("FG_SYSTEMMONITOR_FPGA_DNA") + " at " +
                            stage.shown("FG_SYSTEMMONITOR_FPGA_TEMPERATURE") + ", PCIe " +
                            stage.shown("FG_SYSTEMMONITOR_CURRENT_LINK_WIDTH")});
    table.add({"opening", std::to_string(boardOf(stage.applet).takeWrites().size()) +
                              " design writes brought the defaults to the board"});
    table.print(stage.console, kIndent);
}

/// "-> Trigger_ExsyncExposure = 50", without the process, which is the same for all.
void printWrite(const Stage& stage, const virtualboard::Write& write) {
    constexpr std::string_view process = "Device1_ProcessN_";
    stage.line() << "  -> "
                 << stage.console.styled(Style::Accent,
                                         write.name.substr(process.size()) + " = " + textOf(write.value))
                 << '\n';
}

/// One request from the host down to the design.
void followARequest(const Stage& stage) {
    constexpr const char* name = "FG_WIDTH";
    const std::string before = stage.shown(name);
    const Snapshot was(stage.applet);
    Trace trace(stage.applet);
    stage.set(name, "2048");
    trace.collect("");

    stage.line() << name << " = 2048 in place of " << before << " moves these in the design\n";
    std::size_t again = 0;
    for (const auto& traced : trace.writes()) {
        if (traced.before && *traced.before != traced.write.value) {
            printWrite(stage, traced.write);
        } else {
            ++again;
        }
    }
    stage.line() << "writes " << again << " more again as they were, and narrows\n";
    for (const auto& change : changesBetween(was, Snapshot(stage.applet)))
        if (change.parameter != name)
            stage.line() << "  -> " << change.parameter << ' ' << nameOf(change.aspect) << ' '
                         << change.before << " -> " << change.after << '\n';
}

/// A value that the applet refuses, and what the command makes of the refusal.
void getRefused(const Stage& stage) {
    constexpr const char* value = "4104";
    stage.set("FG_XOFFSET", "12288");
    try {
        stage.set("FG_WIDTH", value);
    } catch (const Refused& refusal) {
        const auto why = explain(stage.applet, {"FG_WIDTH", stage.applet.parameter("FG_WIDTH").parse(value)},
                                 refusal.code);
        stage.console.paragraph(why.sentence(), kIndent, Style::Bad, kIndent);
        for (const auto& advice : why.advice()) stage.line() << kMargin << advice << '\n';
    }
    stage.set("FG_XOFFSET", "0");
}

/// A gamma value becomes a table of 256 entries in the design.
void bendTheCurve(const Stage& stage) {
    stage.set("FG_PROCESSING_GAMMA", "2.2");
    const auto table = std::get<Field>(stage.applet.get("FG_LUT_VALUE_GREEN"));
    constexpr std::size_t columns = 32;
    constexpr std::size_t rows = 4;
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
    stage.line() << "FG_CAMERASIMULATOR_LINERATE = 10240 writes " << clocks << " clocks of 8 ns a line,\n";
    stage.line() << "which read back as what is really reached: "
                 << stage.shown("FG_CAMERASIMULATOR_LINERATE") << '\n';
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
    Trace trace(stage.applet);
    std::size_t shown = 0;
    for (const auto& step : steps) {
        stage.set(step.name, step.value);
        trace.collect("");
        stage.line() << step.name << " = " << step.value << '\n';
        for (; shown < trace.writes().size(); ++shown) printWrite(stage, trace.writes()[shown].write);
    }
}

struct Section {
    const char* title;
    void (*show)(const Stage& stage);
};

constexpr std::array sections{
    Section{"The applet and its board", introduce},
    Section{"The road of one request", followARequest},
    Section{"Refused, with the reason, after FG_XOFFSET = 12288", getRefused},
    Section{"A curve for the eye", bendTheCurve},
    Section{"A rate in clock cycles", countClocks},
    Section{"A line for every pulse at input 1, a flash on output 0", wireATrigger},
};

void run(const DemoOutput& output, Session& session) {
    session.refuseShared("demo");
    if (!output.folder.empty() && !std::filesystem::is_directory(output.folder))
        throw Failure("there is no folder " + output.folder.string() + " for the pictures");
    const Console& console = session.console();
    auto board = std::make_unique<VirtualBoard>();
    board->control().recordWrites(true);
    Applet applet(session.library(), std::move(board), {.writeDefaults = true, .rememberSteps = true});
    const Stage stage{applet, console};
    for (const auto& section : sections) {
        if (&section != sections.data()) console.out() << '\n';
        console.heading(section.title);
        section.show(stage);
    }
    console.out() << '\n';
    demonstratePictures(session, output);
}

}  // namespace

void defineDemo(CommandLine command, Session& session) {
    auto output = std::make_shared<DemoOutput>();
    command.option("-o,--output", &output->folder,
                   "Write the two pictures to this folder, not the current one", {.type = "FOLDER"});
    command.flag("--force", output->replace, "Replace files of their names whatever they hold");
    command.footer(
        "Opens an applet of its own: --config and --set do not touch it.\n"
        "The pictures are belt.png and contact-sheet.png. Files that hold something else stay.");
    command.action([output, &session] { run(*output, session); });
}

}  // namespace marovine::host::commands
