#include "command/Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <utility>

namespace marovine::host {

namespace {

constexpr std::size_t kColumnGap = 2;
/// Below this a broken column cannot be read any more; the text then goes to lines of its own.
constexpr std::size_t kNarrowestColumn = 16;
constexpr std::size_t kContinuationIndent = 6;

/// Columns of the terminal behind a descriptor, else COLUMNS, else 0.
std::size_t widthOf(int descriptor) {
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    std::size_t width = 0;
    if (const char* columns = std::getenv("COLUMNS"))
        std::from_chars(columns, columns + std::strlen(columns), width);
    return width;
}

const char* codeOf(Style style) {
    switch (style) {
        case Style::Bold:
            return "\033[1m";
        case Style::Dim:
            return "\033[2m";
        case Style::Good:
            return "\033[32m";
        case Style::Bad:
            return "\033[31m";
        case Style::Accent:
            return "\033[36m";
        case Style::Plain:
            break;
    }
    return "";
}

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Number of bytes that the first `columns` code points of a text take.
std::size_t bytesOf(std::string_view text, std::size_t columns) {
    std::size_t i = 0;
    for (; i < text.size(); ++i) {
        if (isContinuation(text[i])) continue;
        if (columns == 0) break;
        --columns;
    }
    return i;
}

}  // namespace

std::size_t columnsOf(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return !isContinuation(byte); }));
}

std::string padded(std::string_view text, std::size_t columns) {
    const std::size_t taken = columnsOf(text);
    return std::string(text) + std::string(columns > taken ? columns - taken : 0, ' ');
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns, std::size_t hanging) {
    std::vector<std::string> lines;
    const auto indent = [&] { return lines.empty() ? std::size_t{0} : std::min(hanging, columns); };
    while (columnsOf(text) > columns - indent()) {
        const std::size_t fits = bytesOf(text, columns - indent());
        // A blank may stand just behind the line, a comma must still fit.
        std::size_t end = std::max(text.rfind(' ', fits) + 1, fits == 0 ? 0 : text.rfind(',', fits - 1) + 1);
        if (end <= 1) end = text.find_first_of(" ,", fits) + 1;
        if (end == 0) break;
        std::string line = std::string(indent(), ' ') + std::string(text.substr(0, end));
        if (line.ends_with(' ')) line.pop_back();
        lines.push_back(std::move(line));
        text.remove_prefix(end);
    }
    lines.push_back(std::string(indent(), ' ') + std::string(text));
    return lines;
}

Console::Console(Colour colour) : out_(&std::cout) {
    width_ = widthOf(STDOUT_FILENO);
    const char* noColour = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    const bool allowed = (noColour == nullptr || *noColour == '\0') &&
                         (terminal == nullptr || std::string_view(terminal) != "dumb");
    coloured_ = colour == Colour::Always || (colour == Colour::Auto && allowed && isatty(STDOUT_FILENO) == 1);
}

Console Console::forErrors() {
    return {std::cerr, widthOf(STDERR_FILENO)};
}

std::string Console::styled(Style style, std::string_view text) const {
    if (!coloured_ || style == Style::Plain) return std::string(text);
    return codeOf(style) + std::string(text) + "\033[0m";
}

void Console::heading(std::string_view text) const {
    out() << styled(Style::Bold, text) << '\n';
}

void Console::paragraph(std::string_view text, std::size_t indent, Style style, std::size_t hanging) const {
    const std::size_t columns =
        width_ == 0 ? std::string_view::npos : std::max(kNarrowestColumn, width_ - std::min(width_, indent));
    for (const auto& line : wrapped(text, columns, hanging))
        out() << std::string(indent, ' ') << styled(style, line) << '\n';
}

Table::Table(std::vector<std::string> headings) : headings_(std::move(headings)) {}

void Table::add(std::vector<std::string> cells, Style style) {
    rows_.push_back({std::move(cells), style});
}

void Table::alignRight(std::size_t column) {
    if (right_.size() <= column) right_.resize(column + 1);
    right_[column] = true;
}

void Table::print(const Console& console, std::size_t indent) const {
    Layout layout{.indent = indent, .widths = {}, .before = indent, .last = 0};
    auto& widths = layout.widths;
    const auto measure = [&widths](const std::vector<std::string>& cells) {
        if (widths.size() < cells.size()) widths.resize(cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], columnsOf(cells[i]));
    };
    measure(headings_);
    for (const auto& row : rows_) measure(row.cells);
    if (widths.empty()) return;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i) layout.before += widths[i] + kColumnGap;
    layout.last = widths.back();
    if (console.width() != 0)
        layout.last = std::min(layout.last, console.width() - std::min(console.width(), layout.before));
    if (!headings_.empty()) printRow(console, {headings_, Style::Dim}, layout);
    for (const auto& row : rows_) printRow(console, row, layout);
}

void Table::printRow(const Console& console, const Row& row, const Layout& layout) const {
    const std::size_t width = console.width() != 0 ? console.width() : std::string::npos;
    std::vector<std::string> lines{std::string(layout.indent, ' ')};
    const std::size_t indent = layout.indent + kContinuationIndent;
    const std::size_t room = width - std::min(width, indent);
    std::vector<std::string> below;  // side by side as far as they fit
    const auto addBelow = [&](const std::string& cell) {
        if (!below.empty() && columnsOf(below.back()) + kColumnGap + columnsOf(cell) <= room)
            below.back() += std::string(kColumnGap, ' ') + cell;
        else
            for (auto& part : wrapped(cell, room)) below.push_back(std::move(part));
    };
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
        const std::string& cell = row.cells[i];
        const std::size_t taken = columnsOf(cell);
        if (i + 1 == layout.widths.size()) {
            const auto parts = wrapped(cell, layout.last);
            const bool fits = std::all_of(parts.begin(), parts.end(),
                                          [&](const auto& part) { return columnsOf(part) <= layout.last; });
            if (!below.empty() || !fits || (parts.size() > 1 && layout.last < kNarrowestColumn)) {
                addBelow(cell);
                continue;
            }
            lines.front() += parts.front();
            for (std::size_t part = 1; part < parts.size(); ++part)
                lines.push_back(std::string(layout.before, ' ') + parts[part]);
        } else if (i > 0 && (!below.empty() || columnsOf(lines.front()) + taken > width)) {
            addBelow(cell);
        } else if (i < right_.size() && right_[i]) {
            lines.front() += std::string(layout.widths[i] - taken, ' ') + cell + std::string(kColumnGap, ' ');
        } else {
            lines.front() += padded(cell, layout.widths[i]) + std::string(kColumnGap, ' ');
        }
    }
    for (const auto& part : below) lines.push_back(std::string(indent, ' ') + part);
    for (auto& line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
        // A row whose first cells are empty may stand below them altogether.
        if (!line.empty() || lines.size() == 1) console.out() << console.styled(row.style, line) << '\n';
    }
}

}  // namespace marovine::host
