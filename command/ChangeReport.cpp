#include "command/ChangeReport.h"

#include <algorithm>
#include <utility>

#include "command/Session.h"

namespace marovine::host {

void addTraceOption(CommandLine command, TraceOption& option) {
    command.option("--trace", &option.text,
                   "Print every design write in order; with FILE.json or FILE.csv, keep them there",
                   {.type = "[FILE]"});
}

std::filesystem::path TraceOption::file() const {
    if (text == "-") return {};
    if (!text.empty() && !text.ends_with(".json") && !text.ends_with(".csv"))
        throw UsageError(text + " ends neither in .json nor in .csv, the accepted endings of a trace");
    return text;
}

ChangeReport::ChangeReport(Applet& applet, TraceOption trace)
    : applet_(applet), option_(std::move(trace)), before_(applet) {
    static_cast<void>(option_.file());  // a name without meaning is told before anything is set
    if (option_.wanted()) trace_.emplace(applet_);
}

void ChangeReport::done(const std::string& parameter, const std::string& value) {
    settings_.push_back({parameter, value});
    note(parameter + " = " + value);
}

void ChangeReport::failed(const std::string& parameter, const std::string& value) {
    failed_ = true;
    note(parameter + " = " + value + " (refused)");
}

void ChangeReport::note(const std::string& cause) {
    if (trace_) trace_->collect(cause);
}

void ChangeReport::finish() {
    after_.emplace(applet_);
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
        const auto count = trace_->writes().size();
        console.out() << count << (count == 1 ? " design write" : " design writes") << " kept in "
                      << option_.file().string() << '\n';
        return;
    }
    console.out() << '\n';
    console.heading("Design writes");
    trace_->print(console);
}

void ChangeReport::printSettings(const Console& console) const {
    for (const auto& setting : settings_) {
        const auto* is = after_->find(setting.parameter);
        const auto moved = std::find_if(changes_.begin(), changes_.end(), [&](const auto& change) {
            return change.parameter == setting.parameter && isRequested(change);
        });
        std::string value = setting.requested;
        // Only the last of several settings of a parameter is what it holds now.
        const bool last =
            std::none_of(&setting + 1, settings_.data() + settings_.size(),
                         [&](const auto& later) { return later.parameter == setting.parameter; });
        if (!last) {
            console.out() << setting.parameter << " = " << value << '\n';
            continue;
        }
        if (moved != changes_.end()) {
            value = moved->after + (moved->unit.empty() ? "" : " " + moved->unit);
        } else if (is != nullptr && is->value && !std::holds_alternative<Field>(*is->value)) {
            value = is->parameter.textWithUnit(*is->value);
        }
        console.out() << console.styled(Style::Bold, setting.parameter) << " = " << value << "  "
                      << console.styled(Style::Dim, moved != changes_.end() ? "(was " + moved->before + ")"
                                                                            : "(as before)")
                      << '\n';
    }
}

void ChangeReport::printMoved(const Console& console) const {
    Table table;
    for (const auto& change : changes_) {
        if (isRequested(change)) continue;
        const bool bare = change.unit.empty() || change.aspect == Change::Aspect::Access;
        table.add({change.parameter, nameOf(change.aspect),
                   change.before + " -> " + change.after + (bare ? "" : " " + change.unit)});
    }
    if (failed_ && table.empty()) return;
    if (settings_.empty()) {
        console.heading(table.empty() ? "Nothing moved" : "Moved");
    } else if (!table.empty()) {
        console.out() << '\n';
        console.heading("Also moved");
    }
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
