#include "command/Trace.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <utility>

#include "client/VirtualBoard.h"
#include "pictures/SafeFile.h"

namespace marovine::host {

namespace {

/// The elements that a write of a part of a field replaces.
Value partOf(const Value& whole, const virtualboard::Write& write) {
    const auto* field = std::get_if<Field>(&whole);
    const auto* written = std::get_if<Field>(&write.value);
    if (field == nullptr || written == nullptr) return whole;
    const std::size_t end = std::min(field->size(), write.firstIndex + written->size());
    if (write.firstIndex > end) return Field();
    return Field(field->begin() + write.firstIndex, field->begin() + static_cast<std::ptrdiff_t>(end));
}

/// What a parameter holds after a write.
void carryOut(const virtualboard::Write& write, Value& held) {
    auto* field = std::get_if<Field>(&held);
    const auto* written = std::get_if<Field>(&write.value);
    if (field == nullptr || written == nullptr) {
        held = write.value;
    } else if (write.firstIndex + written->size() <= field->size()) {
        std::copy(written->begin(), written->end(), field->begin() + write.firstIndex);
    }
}

std::string indexText(const virtualboard::Write& write) {
    return std::holds_alternative<Field>(write.value) ? "[" + std::to_string(write.firstIndex) + "] " : "";
}

/// "Device1_Process0_Camera_FullMode" as process "0" and "Camera_FullMode"; other names whole.
std::pair<std::string, std::string> splitName(const std::string& name) {
    constexpr std::string_view prefix = "Device1_Process";
    const auto split = name.find('_', prefix.size());
    if (!name.starts_with(prefix) || split == std::string::npos) return {"", name};
    return {name.substr(prefix.size(), split - prefix.size()), name.substr(split + 1)};
}

/// A text as a field of a CSV line.
std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

Json jsonOfWrite(const TracedWrite& traced, std::size_t order) {
    const auto& write = traced.write;
    Json entry{{"order", order},
               {"cause", traced.cause},
               {"name", write.name},
               {"id", write.id},
               {"value", jsonOf(write.value)}};
    if (std::holds_alternative<Field>(write.value)) entry["firstIndex"] = write.firstIndex;
    entry["before"] = traced.before ? jsonOf(*traced.before) : Json();
    entry["result"] = write.result;
    return entry;
}

}  // namespace

Trace::Trace(Applet& applet) : applet_(applet) {
    boardOf(applet_).recordWrites(true);
    boardOf(applet_).takeWrites();
    for (const auto& name : boardOf(applet_).parameterNames()) values_[name] = boardOf(applet_).value(name);
}

void Trace::collect(const std::string& cause) {
    for (auto& write : boardOf(applet_).takeWrites()) add(std::move(write), cause);
}

void Trace::add(virtualboard::Write write, const std::string& cause) {
    TracedWrite traced{.cause = cause, .write = std::move(write), .before = {}};
    const auto held = values_.find(traced.write.name);
    if (held != values_.end()) {
        traced.before = partOf(held->second, traced.write);
        if (traced.write.result == 0) carryOut(traced.write, held->second);
    }
    writes_.push_back(std::move(traced));
}

void Trace::keepNewest(std::size_t count) {
    if (writes_.size() <= count) return;
    const std::size_t surplus = writes_.size() - count;
    writes_.erase(writes_.begin(), writes_.begin() + static_cast<std::ptrdiff_t>(surplus));
    forgotten_ += surplus;
}

void Trace::print(const Console& console, std::size_t indent) const {
    if (writes_.empty()) {
        console.paragraph("no design write", indent);
        return;
    }
    Table table({"#", "P", "design parameter (Device1_ProcessP_...)", "value (was)"});
    table.alignRight(0);
    std::size_t order = 0;
    for (const auto& traced : writes_) {
        const auto& write = traced.write;
        auto [process, name] = splitName(write.name);
        std::string value = indexText(write) + textOf(write.value);
        const bool moved = traced.before && *traced.before != write.value;
        if (moved && write.result == 0) value += " (" + textOf(*traced.before) + ")";
        if (write.result != 0) value += " refused (" + std::to_string(write.result) + ")";
        const Style style = write.result != 0 ? Style::Bad : moved ? Style::Plain : Style::Dim;
        table.add({std::to_string(++order), std::move(process), std::move(name), std::move(value)}, style);
    }
    table.print(console, indent);
}

Json Trace::json(std::size_t first) const {
    Json list = Json::array();
    for (std::size_t i = std::max(first, forgotten_); i < count(); ++i)
        list.push_back(jsonOfWrite(writes_[i - forgotten_], i + 1));
    return list;
}

std::string Trace::csv() const {
    std::ostringstream out;
    out << "order,cause,name,id,firstIndex,value,before,result\n";
    std::size_t order = forgotten_;
    for (const auto& traced : writes_) {
        const auto& write = traced.write;
        out << ++order << ',' << csvField(traced.cause) << ',' << csvField(write.name) << ',' << write.id
            << ',' << write.firstIndex << ',' << csvField(textOf(write.value, true)) << ','
            << (traced.before ? csvField(textOf(*traced.before, true)) : "") << ',' << write.result << '\n';
    }
    return out.str();
}

void Trace::save(const std::filesystem::path& file) const {
    virtualboard::imaging::writeSafely(file, file.extension() == ".csv" ? csv() : printed(json()) + '\n');
}

}  // namespace marovine::host
