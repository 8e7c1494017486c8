#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "client/VirtualBoard.h"
#include "command/Json.h"
#include "command/commands/Commands.h"
#include "tables/EnumerationTables.h"
#include "tables/RouteTable.h"
#include "tables/SignalTable.h"

namespace marovine::host::commands {

namespace {

struct Options {
    bool dot = false;
    bool json = false;
};

/// A route as the design has it: what its multiplexer and its inverter really hold.
struct Wire {
    std::string output;    ///< "GPO 0"
    std::string source;    ///< the parameter's value
    std::string polarity;  ///< the parameter's value
    std::uint32_t select = 0;
    bool inverted = false;
    std::string signal;   ///< what the design's values mean
    bool agrees = false;  ///< whether parameters and design say the same
};

/// "FG_TRIGGEROUT_FRONT_GPO_0_SOURCE" is "Front GPO 0": what the host shows, without "Source".
std::string outputName(const Parameter& source) {
    constexpr std::string_view ending = " Source";
    std::string name = source.displayName;
    if (name.ends_with(ending)) name.erase(name.size() - ending.size());
    return name;
}

/// The signal behind a multiplexer's input. Ground and supply share one; the inverter tells them apart.
const EnumerationEntry* signalAt(std::uint32_t select, bool inverted) {
    for (const auto& signal : signalTable) {
        if (signal.multiplexerIndex != select) continue;
        const bool isSupply = signal.value == constant("VCC");
        if (select == 0 && isSupply != inverted) continue;
        const auto* entry =
            std::ranges::find(SignalMappingAnalyzer_1Cam, signal.value, &EnumerationEntry::value);
        if (entry != SignalMappingAnalyzer_1Cam.end()) return entry;
    }
    return nullptr;
}

std::uint32_t designNumber(Applet& applet, DesignParameter parameter) {
    const Value value = boardOf(applet).value(designParameterNames[static_cast<std::size_t>(parameter)]);
    return std::get<std::uint32_t>(value);
}

Wire wireOf(Applet& applet, const RouteRow& row) {
    const Parameter source = applet.parameter(row.source);
    const Parameter polarity = applet.parameter(row.polarity);
    Wire wire{.output = outputName(source),
              .source = source.textOf(applet.get(row.source)),
              .polarity = polarity.textOf(applet.get(row.polarity)),
              .select = designNumber(applet, row.select),
              .inverted = designNumber(applet, row.invert) != 0,
              .signal = "input " + std::to_string(designNumber(applet, row.select)),
              .agrees = false};
    if (const auto* entry = signalAt(wire.select, wire.inverted)) {
        wire.signal = entry->displayName;
        // A constant level has no polarity.
        const bool polarityFits = wire.select == 0 || wire.inverted == (wire.polarity == "FG_LOW");
        wire.agrees = wire.source == entry->constantName && polarityFits;
    }
    return wire;
}

void printDot(std::ostream& out, const std::vector<Wire>& wires) {
    out << "digraph wiring {\n    rankdir=LR;\n    node [shape=box, fontname=\"sans-serif\"];\n";
    for (const auto& wire : wires) {
        const bool inverts = wire.inverted && wire.select != 0;
        out << "    \"" << wire.signal << "\" -> \"" << wire.output << "\"";
        out << (inverts ? " [arrowhead=odot, label=\"inverted\"];\n" : ";\n");
    }
    out << "}\n";
}

void printTable(const Console& console, const std::vector<Wire>& wires) {
    Table table({"output", "", "signal", "design"});
    for (const auto& wire : wires) {
        const bool inverts = wire.inverted && wire.select != 0;
        std::string design = "select " + std::to_string(wire.select) + (wire.inverted ? ", invert" : "");
        if (!wire.agrees) design += "; the parameters say " + wire.source + ", " + wire.polarity;
        table.add({wire.output, inverts ? "<-o-" : "<---", wire.signal, std::move(design)},
                  wire.agrees ? Style::Plain : Style::Bad);
    }
    table.print(console);
    console.paragraph("<-o- is inverted. Signals are read from the design, not from the parameters.");
}

void run(const Options& options, Session& session) {
    Applet& applet = session.applet();
    std::vector<Wire> wires;
    wires.reserve(std::size(routeTable));
    for (const auto& row : routeTable) wires.push_back(wireOf(applet, row));
    if (options.dot) return printDot(session.console().out(), wires);
    if (!options.json) return printTable(session.console(), wires);
    Json document = Json::array();
    for (const auto& wire : wires)
        document.push_back({{"output", wire.output},
                            {"signal", wire.signal},
                            {"inverted", wire.inverted && wire.select != 0},
                            {"source", wire.source},
                            {"polarity", wire.polarity},
                            {"designSelect", wire.select},
                            {"designInvert", wire.inverted},
                            {"agrees", wire.agrees}});
    session.console().out() << printed(document) << '\n';
}

}  // namespace

void defineWiring(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.flag("--dot", options->dot, "As a graph for Graphviz: marovine wiring --dot | dot -Tsvg");
    command.flag("--json", options->json, "As a JSON array");
    command.excludes("--json", "--dot");
    command.footer("For instance: marovine wiring --set FG_TRIGGEROUT_GPO_4_SOURCE=FG_SIGNAL_GPI_2");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
