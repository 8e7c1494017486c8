#include "host/ChangeReport.h"

#include <algorithm>
#include <utility>

#include "host/Session.h"

namespace marovine::host {

namespace {

/// The clock stops before the first look at the parameters.
Applet& withStoppedClock(Applet& applet) {
    applet.board().setClockManual(true);
    return applet;
}

}  // namespace

void addTraceOption(CLI::App& command, TraceOption& option) {
    command
        .add_option("--trace", option.text,
                    "Print every design write in order; with FILE.json or FILE.csv, keep them there")
        ->type_name("[FILE]")
        ->check([](const std::string& text) {
            const bool good = text == "-" || text.ends_with(".json") || text.ends_with(".csv");
            return good ? std::string() : text + " ends neither in .json nor in .csv";
        });
}

ChangeReport::ChangeReport(Applet& applet, TraceOption trace)
    : applet_(withStoppedClock(applet)), option_(std::move(trace)), before_(applet) {
    if (option_.wanted()) trace_.emplace(applet_);
}

void ChangeReport::done(const std::string& parameter, const std::string& value) {
    settings_.push_back({parameter, value});
    note(parameter + " = " + value);
}

void ChangeReport::failed(const std::string& parameter, const std::string& value) {
    note(parameter + " = " + value + " (refused)");
}

void ChangeReport::note(const std::string& cause) {
    if (trace_) trace_->collect(cause);
}

void ChangeReport::finish() {
    after_.emplace(applet_);
    applet_.board().setClockManual(false);
    changes_ = changesBetween(before_, *after_);
    if (trace_ && !option_.file().empty()) trace_->save(option_.file());
}

bool ChangeReport::isRequested(const Change& change) const {
    return change.aspect == Change::Aspect::HeldValue &&
           std::any_of(settings_.begin(), settings_.end(),
                       [&](const auto& setting) { return setting.parameter == change.parameter; });
}

void ChangeReport::print(const Console& console) const {
    printSettings(console);
    printMoved(console);
    if (!trace_) return;
    if (!option_.file().empty()) {
        console.out() << trace_->writes().size() << " design writes kept in " << option_.file().string()
                      << '\n';
        return;
    }
    console.out() << '\n';
    console.heading("Design writes");
    trace_->print(console);
}

void ChangeReport::printSettings(const Console& console) const {
    for (const auto& setting : settings_) {
        const auto* was = before_.find(setting.parameter);
        const auto* is = after_->find(setting.parameter);
        if (is == nullptr || !is->value) {
            console.out() << setting.parameter << " = " << setting.requested << '\n';
            continue;
        }
        const Parameter& parameter = is->parameter;
        console.out() << console.styled(Style::Bold, parameter.name) << " = "
                      << parameter.textWithUnit(*is->value);
        if (was != nullptr && was->value)
            console.out() << console.styled(
                Style::Dim, *was->value == *is->value ? "  (as before)"
                                                      : "  (was " + parameter.textOf(*was->value) + ")");
        console.out() << '\n';
    }
}

void ChangeReport::printMoved(const Console& console) const {
    Table table;
    for (const auto& change : changes_) {
        if (isRequested(change)) continue;
        const std::string unit =
            change.unit.empty() || change.aspect == Change::Aspect::Access ? "" : " " + change.unit;
        table.add({change.parameter, nameOf(change.aspect), change.before + " -> " + change.after + unit});
    }
    if (table.empty()) return;
    console.out() << '\n';
    console.heading("Also moved");
    table.print(console);
}

Json ChangeReport::json() const {
    Json set = Json::array();
    for (const auto& setting : settings_) {
        const auto* was = before_.find(setting.parameter);
        const auto* is = after_->find(setting.parameter);
        Json entry{{"parameter", setting.parameter}, {"requested", setting.requested}};
        if (is != nullptr && is->value) entry["value"] = jsonOf(is->parameter, *is->value);
        if (was != nullptr && was->value) entry["before"] = jsonOf(was->parameter, *was->value);
        set.push_back(std::move(entry));
    }
    Json moved = Json::array();
    for (const auto& change : changes_)
        if (!isRequested(change))
            moved.push_back({{"parameter", change.parameter},
                             {"aspect", nameOf(change.aspect)},
                             {"before", change.before},
                             {"after", change.after}});
    Json document{{"set", std::move(set)}, {"moved", std::move(moved)}};
    if (trace_) document["writes"] = trace_->json();
    return document;
}

}  // namespace marovine::host
