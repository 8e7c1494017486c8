#include "command/TimingDiagram.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace marovine::host {

namespace {

std::string shortNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

/// Times of the axis: 1, 2 or 5 times a power of ten apart, at most so many.
std::vector<double> axisTimes(double from, double to, double most) {
    const double least = (to - from) / std::max(most, 1.0);
    double step = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0, 10.0}) {
        if (step * factor < least) continue;
        step *= factor;
        break;
    }
    std::vector<double> times;
    for (double n = std::ceil(from / step); n * step <= to * (1 + 1e-12); ++n) times.push_back(n * step);
    return times;
}

std::pair<double, double> limitsOf(const CurveTrack& curve) {
    if (curve.values.empty()) return {0, 1};
    const auto [least, most] = std::ranges::minmax(curve.values);
    return {std::min(least, 0.0), std::max({most, 0.0, least + 1e-9})};
}

// ---- text ----

/// Rows of characters that one track is drawn in.
class TextRows {
 public:
    TextRows(const TimingDiagram& diagram, std::size_t columns) : diagram_(diagram), columns_(columns) {}

    std::vector<std::string> operator()(const LevelTrack& level) const {
        std::string upper, lower;
        bool high = level.high;
        auto edge = level.edges.begin();
        for (std::size_t column = 0; column < columns_; ++column) {
            const double end = timeOf(column + 1);
            const auto first = edge;
            while (edge != level.edges.end() && *edge < end) ++edge;
            const auto changes = edge - first;
            if (changes == 0) {
                upper += high ? "─" : " ";
                lower += high ? " " : "─";
            } else if (changes == 1) {
                upper += high ? "┐" : "┌";
                lower += high ? "└" : "┘";
            } else if (changes == 2) {
                upper += high ? "┬" : "╷";
                lower += high ? "╵" : "┴";
            } else {
                upper += "▒";
                lower += "▒";
            }
            high = high != (changes % 2 != 0);
        }
        return {upper, lower};
    }

    std::vector<std::string> operator()(const CurveTrack& curve) const {
        constexpr std::array blocks{" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
        constexpr int rows = 3;
        const auto [least, most] = limitsOf(curve);
        std::vector<std::string> result(rows);
        for (std::size_t column = 0; column < columns_ && !curve.values.empty(); ++column) {
            const double value = curve.values[column * curve.values.size() / columns_];
            const auto height = static_cast<int>(std::lround((value - least) / (most - least) * rows * 8));
            for (int row = 0; row < rows; ++row)
                result[static_cast<std::size_t>(row)] +=
                    blocks[static_cast<std::size_t>(std::clamp(height - 8 * (rows - 1 - row), 0, 8))];
        }
        return result;
    }

    std::vector<std::string> operator()(const SpanTrack& track) const {
        std::vector<std::string> cells(columns_, " ");
        for (const auto& span : track.spans) {
            const std::size_t first = columnOf(span.from), last = std::max(first, columnOf(span.to));
            if (first >= columns_) break;
            for (std::size_t i = first; i <= std::min(last, columns_ - 1); ++i)
                cells[i] = first == last ? "│" : i == first ? "├" : i == last ? "┤" : "─";
            if (last >= first + span.label.size() + 2) {
                const std::size_t at = first + (last - first + 1 - span.label.size()) / 2;
                for (std::size_t i = 0; i < span.label.size() && at + i < columns_; ++i)
                    cells[at + i] = span.label[i];
            }
        }
        std::string row;
        for (const auto& cell : cells) row += cell;
        return {row};
    }

    std::string axis() const {
        std::string row;
        for (const double time : axisTimes(diagram_.from, diagram_.to, static_cast<double>(columns_) / 12)) {
            const std::size_t column = columnOf(time);
            const std::string label = "╵" + shortNumber(time);
            if (column < columnsOf(row) || column + columnsOf(label) > columns_ + 1) continue;
            row = padded(row, column);
            row += label;
        }
        return row + " ms";
    }

 private:
    double timeOf(std::size_t column) const {
        return diagram_.from +
               (diagram_.to - diagram_.from) * static_cast<double>(column) / static_cast<double>(columns_);
    }
    std::size_t columnOf(double time) const {
        const double share = (time - diagram_.from) / (diagram_.to - diagram_.from);
        return static_cast<std::size_t>(
            std::clamp(share * static_cast<double>(columns_), 0.0, static_cast<double>(columns_)));
    }

    const TimingDiagram& diagram_;
    std::size_t columns_;
};

/// What stands left of a track's rows.
std::vector<std::string> labelsOf(const TimingDiagram::Track& track) {
    if (const auto* curve = std::get_if<CurveTrack>(&track.content)) {
        const auto [least, most] = limitsOf(*curve);
        return {track.name, shortNumber(most) + " " + curve->unit, shortNumber(least)};
    }
    if (std::holds_alternative<LevelTrack>(track.content)) return {"", track.name};
    return {track.name};
}

// ---- SVG ----

constexpr double kLeft = 150, kWidth = 800, kTop = 28, kHigh = 22, kGap = 14, kCurve = 48;

class SvgTracks {
 public:
    explicit SvgTracks(const TimingDiagram& diagram) : diagram_(diagram) {}

    double heightOf(const TimingDiagram::Track& track) const {
        return std::holds_alternative<CurveTrack>(track.content) ? kCurve : kHigh;
    }

    std::string draw(const TimingDiagram::Track& track, double top) const {
        const double height = heightOf(track);
        std::string text = label(kLeft - 12, top + height - 6, "end", track.name);
        return text +
               std::visit([&](const auto& content) { return content_(content, top, height); }, track.content);
    }

    double x(double time) const {
        return kLeft + std::clamp((time - diagram_.from) / (diagram_.to - diagram_.from), 0.0, 1.0) * kWidth;
    }

    static std::string label(double x, double y, const char* anchor, const std::string& words) {
        std::string safe;
        for (const char c : words) safe += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
        return "<text x=\"" + shortNumber(x) + "\" y=\"" + shortNumber(y) + "\" text-anchor=\"" + anchor +
               "\">" + safe + "</text>\n";
    }

 private:
    std::string content_(const LevelTrack& level, double top, double height) const {
        // Edges nearer to each other than this are one shaded block.
        constexpr double kNear = 1.5;
        std::string path = "M" + shortNumber(kLeft) + " " + shortNumber(level.high ? top : top + height),
                    shades;
        bool high = level.high;
        const auto& edges = level.edges;
        for (std::size_t i = 0; i < edges.size(); ++i) {
            const double at = x(edges[i]);
            std::size_t end = i + 1;
            while (end < edges.size() && x(edges[end]) - x(edges[end - 1]) < kNear) ++end;
            if (end - i > 3) {
                const double right = x(edges[end - 1]);
                shades += "<rect class=\"busy\" x=\"" + shortNumber(at) + "\" y=\"" + shortNumber(top) +
                          "\" width=\"" + shortNumber(right - at) + "\" height=\"" + shortNumber(height) +
                          "\"/>\n";
                high = high != ((end - i) % 2 != 0);
                path += "H" + shortNumber(at) + "M" + shortNumber(right) + " " +
                        shortNumber(high ? top : top + height);
                i = end - 1;
                continue;
            }
            high = !high;
            path += "H" + shortNumber(at) + "V" + shortNumber(high ? top : top + height);
        }
        return shades + "<path d=\"" + path + "H" + shortNumber(kLeft + kWidth) + "\"/>\n";
    }

    std::string content_(const CurveTrack& curve, double top, double height) const {
        const auto [least, most] = limitsOf(curve);
        std::string path;
        for (std::size_t i = 0; i < curve.values.size(); ++i) {
            const double at =
                kLeft + kWidth * static_cast<double>(i) / static_cast<double>(curve.values.size() - 1);
            const double y = top + height * (1 - (curve.values[i] - least) / (most - least));
            path += (path.empty() ? "M" : "L") + shortNumber(at) + " " + shortNumber(y);
        }
        return "<path d=\"" + path + "\"/>\n" +
               label(kLeft - 12, top + 8, "end", shortNumber(most) + " " + curve.unit);
    }

    std::string content_(const SpanTrack& track, double top, double height) const {
        std::string text;
        for (const auto& span : track.spans) {
            const double left = x(span.from), width = std::max(x(span.to) - left, 1.0);
            text += "<rect class=\"span\" x=\"" + shortNumber(left) + "\" y=\"" + shortNumber(top) +
                    "\" width=\"" + shortNumber(width) + "\" height=\"" + shortNumber(height) + "\"/>\n";
            if (width > 8.0 * static_cast<double>(span.label.size()) + 4)
                text += label(left + width / 2, top + height - 6, "middle", span.label);
        }
        return text;
    }

    const TimingDiagram& diagram_;
};

}  // namespace

void TimingDiagram::print(const Console& console) const {
    std::size_t margin = 0;
    for (const auto& track : tracks)
        for (const auto& label : labelsOf(track)) margin = std::max(margin, columnsOf(label));
    const std::size_t width = console.drawingWidth();
    const TextRows rows(*this, std::max<std::size_t>(width > margin + 2 ? width - margin - 2 : 0, 20));
    for (const auto& track : tracks) {
        const auto labels = labelsOf(track);
        const auto lines = std::visit(rows, track.content);
        for (std::size_t i = 0; i < lines.size(); ++i)
            console.out() << padded(i < labels.size() ? labels[i] : "", margin + 1) << lines[i] << '\n';
    }
    console.out() << padded("", margin + 1) << rows.axis() << '\n';
}

std::string TimingDiagram::svg() const {
    const SvgTracks drawing(*this);
    std::string body;
    double top = kTop;
    for (const auto& track : tracks) {
        body += drawing.draw(track, top);
        top += drawing.heightOf(track) + kGap;
    }
    std::string axis;
    for (const double time : axisTimes(from, to, 10)) {
        const std::string at = shortNumber(drawing.x(time));
        axis += "<path class=\"grid\" d=\"M" + at + " " + shortNumber(kTop - 6) + "V" +
                shortNumber(top - kGap + 6) + "\"/>\n" +
                SvgTracks::label(drawing.x(time), kTop - 12, "middle", shortNumber(time) + " ms");
    }
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + shortNumber(kLeft + kWidth + 40) +
           " " + shortNumber(top) +
           "\">\n<style>\n"
           "svg { background: #fff; font: 12px sans-serif }\n"
           "path { fill: none; stroke: #24527a; stroke-width: 1.4 }\n"
           ".grid { stroke: #ddd; stroke-width: 1 }\n"
           ".busy { fill: #24527a; opacity: 0.45 }\n"
           ".span { fill: #dbe9f4; stroke: #24527a }\n"
           "</style>\n" +
           axis + body + "</svg>\n";
}

}  // namespace marovine::host
