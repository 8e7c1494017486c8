#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "command/ChangeReport.h"
#include "command/Curve.h"
#include "command/commands/Commands.h"
#include "files/Fg_LutFileParser.h"
#include "pictures/Png.h"
#include "pictures/SafeFile.h"
#include "tables/EnumerationTables.h"

namespace marovine::host::commands {

namespace fs = std::filesystem;

namespace {

constexpr std::array kTables{"FG_LUT_VALUE_RED", "FG_LUT_VALUE_GREEN", "FG_LUT_VALUE_BLUE"};
constexpr std::array kChannelNames{"red", "green", "blue"};
constexpr std::uint32_t kMaximum = 255;  ///< of an entry; the tables have 8 output bits

struct ShowOptions {
    fs::path picture;
    bool values = false;
    bool json = false;
};

struct LoadOptions {
    fs::path file;
    TraceOption trace;
    bool json = false;
};

struct SaveOptions {
    fs::path target;
    bool json = false;
};

Channels tablesOf(Applet& applet) {
    Channels channels;
    for (std::size_t i = 0; i < kTables.size(); ++i) channels[i] = std::get<Field>(applet.get(kTables[i]));
    return channels;
}

/// One curve with its axes.
void printCurve(const Console& console, const std::string& title, const Field& table) {
    constexpr std::size_t columns = 64;
    constexpr std::size_t rows = 16;
    constexpr std::size_t margin = 5;
    console.heading(title);
    const auto lines =
        curveLines(table, kMaximum, std::min(columns, console.drawingWidth() - margin - 1), rows);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string label = i == 0 ? "255 ┤" : i + 1 == lines.size() ? "  0 ┤" : "    │";
        console.out() << label << console.styled(Style::Accent, lines[i]) << '\n';
    }
}

void printCurves(const Console& console, const Channels& channels) {
    if (channels[0] == channels[1] && channels[1] == channels[2])
        return printCurve(console, "red, green and blue", channels[0]);
    for (std::size_t i = 0; i < channels.size(); ++i) printCurve(console, kChannelNames[i], channels[i]);
}

void printValues(const Console& console, const Channels& channels) {
    Table table({"index", "red", "green", "blue"});
    for (std::size_t column = 0; column < 4; ++column) table.alignRight(column);
    for (std::size_t i = 0; i < channels[0].size(); ++i)
        table.add({std::to_string(i), std::to_string(channels[0][i]), std::to_string(channels[1][i]),
                   std::to_string(channels[2][i])});
    table.print(console);
}

Json jsonOf(const Channels& channels) {
    Json document = Json::object();
    for (std::size_t i = 0; i < channels.size(); ++i) document[kChannelNames[i]] = channels[i];
    return document;
}

void show(const ShowOptions& options, Session& session) {
    const Channels channels = tablesOf(session.applet());
    if (!options.picture.empty())
        virtualboard::imaging::writePng(options.picture, curvePicture(channels, kMaximum));
    if (options.json) {
        session.console().out() << printed(jsonOf(channels)) << '\n';
    } else if (options.values) {
        printValues(session.console(), channels);
    } else if (options.picture.empty()) {
        printCurves(session.console(), channels);
    }
}

/// Refuses what holds no tables: the applet takes entries that it does not find for zeros.
void requireTables(const fs::path& file) {
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (status.type() == fs::file_type::not_found) throw Failure("there is no file " + file.string());
    if (!fs::status_known(status)) throw Failure(file.string() + " cannot be read: " + error.message());
    if (!fs::is_regular_file(status)) throw Failure(file.string() + " is no file of lookup tables");
    Fg_LutFileParser parser;
    marovine::OwnedTable<LookupTable_s> tables[3];
    const bool read = parser.getLutFromFile(file.c_str(), tables[0], tables[1], tables[2]) == 0;
    for (std::size_t i = 0; i < kTables.size(); ++i) {
        constexpr std::int32_t missing = -1;
        std::vector<std::int32_t> values(kMaximum + 1, missing);
        const std::string section = "[" + std::string(kChannelNames[i]) + "]";
        if (read && parser.setOpenFile(file.c_str(), true))
            parser.parseIntInt(values.data(), kMaximum + 1, ",", section.c_str());
        const bool found = std::ranges::any_of(values, [](auto value) { return value != missing; });
        if (!read || tables[i].nrOfElements == 0 || !found)
            throw Failure(file.string() + " holds no lookup table: no entries in the section " + section +
                          "; `marovine lut save` writes such files");
    }
}

void load(const LoadOptions& options, Session& session) {
    requireTables(options.file);
    Applet& applet = session.applet();
    ChangeReport report(applet, options.trace, session.changeScope());
    for (const auto& [name, value] :
         {std::pair<const char*, std::string>("FG_LUT_CUSTOM_FILE", options.file.string()),
          std::pair<const char*, std::string>("FG_LUT_TYPE", "LUT_TYPE_CUSTOM")}) {
        session.apply({.name = name, .firstElement = {}, .value = value});
        report.done(name, value);
    }
    report.finish();
    if (options.json) {
        Json document = report.json();
        document["tables"] = jsonOf(tablesOf(applet));
        session.console().out() << printed(document) << '\n';
        return;
    }
    report.print(session.console());
    session.console().out() << '\n';
    printCurves(session.console(), tablesOf(applet));
}

/// Whether another instance reads the applet's tables from a file.
bool readsBack(const Applet& applet, const Channels& channels, const fs::path& file) {
    const auto reader = applet.twin();
    reader->set("FG_LUT_CUSTOM_FILE", file.string());
    reader->set("FG_LUT_TYPE", constant("LUT_TYPE_CUSTOM"));
    return tablesOf(*reader) == channels;
}

void save(const SaveOptions& options, Session& session) {
    const fs::path& target = options.target;
    Applet& applet = session.applet();
    virtualboard::imaging::SafeFile file(target);
    try {
        applet.set("FG_LUT_SAVE_FILE", file.temporary().string());
    } catch (const Refused& refusal) {
        throw Failure("nothing saved to " + target.string() + ": " + meaningOf(refusal.code));
    }
    bool same = false;
    try {
        same = readsBack(applet, tablesOf(applet), file.temporary());
    } catch (const Refused& refusal) {
        // The refusal itself names the temporary file.
        throw Failure("nothing saved to " + target.string() +
                      ": reading back what was written is refused: " + meaningOf(refusal.code));
    }
    if (!same)
        throw Failure("nothing saved to " + target.string() +
                      ": what was written does not read back the same");
    file.commit();
    if (options.json)
        session.console().out() << printed({{"file", target.string()}}) << '\n';
    else
        session.console().out() << "saved to " << target.string() << ", read back and compared\n";
}

}  // namespace

void defineLut(CommandLine command, Session& session) {
    command.requireCommand();

    auto showOptions = std::make_shared<ShowOptions>();
    CommandLine showing = command.command("show", "Draw the curves");
    showing.option("-o,--output", &showOptions->picture, "Draw the three curves into this picture instead",
                   {.type = "FILE.png", .file = FileRole::Written});
    showing.flag("--values", showOptions->values, "All entries as a table");
    showing.flag("--json", showOptions->json, "All entries as JSON");
    showing.footer("For instance: marovine lut show --set FG_PROCESSING_GAMMA=2.2");
    showing.action([showOptions, &session] { show(*showOptions, session); });

    auto loadOptions = std::make_shared<LoadOptions>();
    CommandLine loading = command.command("load", "Load tables from a file and switch to them");
    loading.argument("FILE.lut", &loadOptions->file, "The tables",
                     {.required = true, .file = FileRole::Read});
    addTraceOption(loading, loadOptions->trace);
    loading.flag("--json", loadOptions->json, "Report as JSON, with all entries");
    loading.action([loadOptions, &session] { load(*loadOptions, session); });

    auto saveOptions = std::make_shared<SaveOptions>();
    CommandLine saving = command.command("save", "Save the tables to a file");
    saving.argument("FILE.lut", &saveOptions->target, "Where to save",
                    {.required = true, .file = FileRole::Written});
    saving.flag("--json", saveOptions->json, "As a JSON object");
    saving.footer("Writes beside the file, reads it back, compares, and only then replaces what was there.");
    saving.action([saveOptions, &session] { save(*saveOptions, session); });
}

}  // namespace marovine::host::commands
