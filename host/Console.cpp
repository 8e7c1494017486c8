#include "host/Console.h"

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
/// Below this a broken column cannot be read any more; the line is then longer than the terminal.
constexpr std::size_t kNarrowestColumn = 16;

std::size_t terminalWidth() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
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

std::vector<std::string> wrapped(std::string_view text, std::size_t columns) {
    std::vector<std::string> lines;
    while (columnsOf(text) > columns) {
        const std::size_t fits = bytesOf(text, columns);
        // A blank may stand just behind the line, a comma must still fit.
        std::size_t end = std::max(text.rfind(' ', fits) + 1, fits == 0 ? 0 : text.rfind(',', fits - 1) + 1);
        if (end <= 1) end = text.find_first_of(" ,", fits) + 1;
        if (end == 0) break;
        std::string line(text.substr(0, end));
        if (line.ends_with(' ')) line.pop_back();
        lines.push_back(std::move(line));
        text.remove_prefix(end);
    }
    lines.emplace_back(text);
    return lines;
}

Console::Console(Colour colour) : out_(&std::cout) {
    const bool terminal = isatty(STDOUT_FILENO) == 1;
    width_ = terminal || std::getenv("COLUMNS") != nullptr ? terminalWidth() : 0;
    coloured_ = colour == Colour::Always ||
                (colour == Colour::Auto && terminal && std::getenv("NO_COLOR") == nullptr);
}

std::string Console::styled(Style style, std::string_view text) const {
    if (!coloured_ || style == Style::Plain) return std::string(text);
    return codeOf(style) + std::string(text) + "\033[0m";
}

void Console::heading(std::string_view text) const {
    out() << styled(Style::Bold, text) << '\n';
}

void Console::paragraph(std::string_view text, std::size_t indent) const {
    const std::size_t columns =
        width_ == 0 ? std::string_view::npos : std::max(kNarrowestColumn, width_ - std::min(width_, indent));
    for (const auto& line : wrapped(text, columns)) out() << std::string(indent, ' ') << line << '\n';
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
    std::vector<std::size_t> widths;
    const auto measure = [&widths](const std::vector<std::string>& cells) {
        if (widths.size() < cells.size()) widths.resize(cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], columnsOf(cells[i]));
    };
    measure(headings_);
    for (const auto& row : rows_) measure(row.cells);
    if (widths.empty()) return;
    if (console.width() != 0) {
        std::size_t before = indent;
        for (std::size_t i = 0; i + 1 < widths.size(); ++i) before += widths[i] + kColumnGap;
        const std::size_t left = console.width() > before ? console.width() - before : 0;
        widths.back() = std::min(widths.back(), std::max(left, kNarrowestColumn));
    }
    if (!headings_.empty()) printRow(console, {headings_, Style::Dim}, widths, indent);
    for (const auto& row : rows_) printRow(console, row, widths, indent);
}

void Table::printRow(const Console& console, const Row& row, const std::vector<std::size_t>& widths,
                     std::size_t indent) const {
    std::string line(indent, ' ');
    std::vector<std::string> rest;
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
        const bool last = i + 1 == widths.size();
        std::string cell = row.cells[i];
        if (last) {
            rest = wrapped(cell, widths[i]);
            cell = rest.front();
        }
        const bool right = i < right_.size() && right_[i];
        if (right) cell = std::string(widths[i] - std::min(widths[i], columnsOf(cell)), ' ') + cell;
        line += last ? cell : padded(cell, widths[i]) + std::string(kColumnGap, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    console.out() << console.styled(row.style, line) << '\n';
    std::size_t before = indent;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i) before += widths[i] + kColumnGap;
    for (std::size_t i = 1; i < rest.size(); ++i)
        console.out() << console.styled(row.style, std::string(before, ' ') + rest[i]) << '\n';
}

}  // namespace marovine::host
