#include "command/ChangeReport.h"

#include <algorithm>
#include <utility>

namespace marovine::host {

namespace {

void add(Table& table, const Change& change) {
    const bool bare = change.unit.empty() || change.aspect == Change::Aspect::Access;
    table.add({change.parameter, nameOf(change.aspect),
               change.before + " -> " + change.after + (bare ? "" : " " + change.unit)});
}

}  // namespace

Json jsonOf(const Change& change) {
    return {{"parameter", change.parameter},
            {"aspect", nameOf(change.aspect)},
            {"before", change.before},
            {"after", change.after}};
}

void addTraceOption(CommandLine command, TraceOption& option) {
    command.option("--trace", &option.text,
                   "Print every design write in order; with FILE.json or FILE.csv, keep them there",
                   {.type = "[FILE]", .file = FileRole::Written});
}

std::filesystem::path TraceOption::file() const {
    if (text == "-") return {};
    if (!text.empty() && !text.ends_with(".json") && !text.ends_with(".csv"))
        throw UsageError(text + " ends neither in .json nor in .csv, the accepted endings of a trace");
    return text;
}

ChangeReport::ChangeReport(Applet& applet, TraceOption trace, ChangeScope scope)
    : applet_(applet), option_(std::move(trace)), before_(applet), scope_(scope) {
    static_cast<void>(option_.file());  // a name without meaning is told before anything is set
    if (option_.wanted()) trace_.emplace(applet_);
}

void ChangeReport::done(const std::string& parameter, const std::string& value) {
    settings_.push_back({parameter, value});
    beforeFailure_.emplace(applet_);
    note(parameter + " = " + value);
}

void ChangeReport::failed(const std::string& parameter, const std::string& value) {
    if (!beforeFailure_) beforeFailure_ = before_;
    failed_ = true;
    note(parameter + " = " + value + " (refused)");
}

void ChangeReport::note(const std::string& cause) {
    if (trace_) trace_->collect(cause);
}

void ChangeReport::finish() {
    after_.emplace(applet_);
    changes_ = changesBetween(before_, failed_ ? *beforeFailure_ : *after_);
    if (failed_) leftByRefusal_ = changesBetween(*beforeFailure_, *after_);
    if (scope_ == ChangeScope::Settings)
        for (auto* changes : {&changes_, &leftByRefusal_})
            std::erase_if(*changes, [](const Change& change) { return isReadOut(change.parameter); });
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
    Table moved;
    for (const auto& change : changes_)
        if (!isRequested(change)) add(moved, change);
    if (settings_.empty() && !failed_) {
        console.heading(moved.empty() ? "Nothing moved" : "Moved");
    } else if (!moved.empty()) {
        console.out() << '\n';
        console.heading("Also moved");
    }
    moved.print(console);

    if (leftByRefusal_.empty()) return;
    Table left;
    for (const auto& change : leftByRefusal_) add(left, change);
    if (!settings_.empty()) console.out() << '\n';
    console.heading("Moved by the refused setting, and left so");
    left.print(console);
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
        if (!isRequested(change)) moved.push_back(jsonOf(change));
    Json document{{"set", std::move(set)}, {"moved", std::move(moved)}};
    if (failed_) {
        document["leftByRefusal"] = Json::array();
        for (const auto& change : leftByRefusal_) document["leftByRefusal"].push_back(jsonOf(change));
    }
    if (trace_) document["writes"] = trace_->json();
    return document;
}

}  // namespace marovine::host
