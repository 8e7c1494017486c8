#pragma once

/// Output to a terminal or a pipe: colour and width only where they help.

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace marovine::host {

/// When to colour.
enum class Colour { Auto, Always, Never };

/// How a piece of text stands out.
enum class Style { Plain, Bold, Dim, Good, Bad, Accent };

/// Columns that a UTF-8 text takes on a terminal; every code point counts as one.
std::size_t columnsOf(std::string_view text);
/// A text padded with blanks to a number of columns.
std::string padded(std::string_view text, std::size_t columns);
/// A text broken at blanks and behind commas into lines of at most `columns`, all but the first behind
/// `hanging` blanks; a longer word stays whole.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns, std::size_t hanging = 0);

/// Where a command writes its results.
class Console {
 public:
    /// Writes to standard output. `Auto` colours a terminal unless NO_COLOR says something.
    explicit Console(Colour colour = Colour::Auto);
    /// Writes to a stream, in lines of at most `width` columns (0: as long as they are).
    Console(std::ostream& out, std::size_t width, bool coloured = false)
        : out_(&out), width_(width), coloured_(coloured) {}

    /// Writes to standard error, without colour.
    static Console forErrors();

    std::ostream& out() const { return *out_; }
    bool coloured() const { return coloured_; }
    /// Columns of the terminal, or COLUMNS; 0 when lines may be of any length.
    std::size_t width() const { return width_; }
    /// Columns for drawings, which need some width even in a pipe.
    std::size_t drawingWidth() const { return width_ != 0 ? width_ : 80; }

    /// A text in a style; the plain text where there is no colour.
    std::string styled(Style style, std::string_view text) const;
    /// A heading.
    void heading(std::string_view text) const;
    /// A text in lines that fit, each behind `indent` blanks; all but the first behind `hanging` more.
    void paragraph(std::string_view text, std::size_t indent = 0, Style style = Style::Plain,
                   std::size_t hanging = 0) const;

 private:
    std::ostream* out_;
    std::size_t width_ = 0;
    bool coloured_ = false;
};

/// Rows in aligned columns. When they do not fit the terminal, the last column breaks into several lines or,
/// with too little room, goes below the others; so does any other cell that does not fit.
class Table {
 public:
    /// A table with a heading per column; without headings only the rows are printed.
    explicit Table(std::vector<std::string> headings = {});

    /// Adds a row; its cells belong to the columns from the left.
    void add(std::vector<std::string> cells, Style style = Style::Plain);
    /// Aligns a column to the right, for numbers.
    void alignRight(std::size_t column);
    bool empty() const { return rows_.empty(); }

    void print(const Console& console, std::size_t indent = 0) const;

 private:
    struct Row {
        std::vector<std::string> cells;
        Style style;
    };

    struct Layout {
        std::size_t indent;
        std::vector<std::size_t> widths;  ///< columns of each cell
        std::size_t before;               ///< columns before the last cell
        std::size_t last;                 ///< columns that the last cell may take
    };

    void printRow(const Console& console, const Row& row, const Layout& layout) const;

    std::vector<std::string> headings_;
    std::vector<Row> rows_;
    std::vector<bool> right_;
};

}  // namespace marovine::host
