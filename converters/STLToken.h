// A cell of a smart tool log: what kind of thing stands there, and what it says.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veltrac {

enum class STLKind { Missing, Number, Date, Time, Stamp, Text };
inline constexpr int kSTLKinds = 6;

// How cells are told apart and numbers read.
struct STLCells
{
    char separator = '\t';  // ' ' stands for any run of blanks and tabs
    // Where each column of a table of fixed widths begins, as offsets into a line; empty for other tables.
    std::vector<std::size_t> edges;
    // Whether rows between blanks begin with a name, which may be several words.
    bool rowNames = false;
    // Whether '|' stands between groups of cells that blanks tell apart: "1 2|3 4".
    bool bars = false;
    char decimal = '.';  // or ','
    char grouping = 0;   // between thousands: ',', '.', '\'', ' ', or 0 for none
    // Compared without case; an empty cell is missing anyway.
    std::vector<std::string> missing = {"-",    "--",   "---", "nan",  "na",  "n/a",
                                        "null", "none", "ol",  "over", "err", "*"};

    bool operator==(const STLCells&) const = default;
};

}  // namespace veltrac

// Text is a view into the line: valid as long as that is.
struct STLToken
{
    veltrac::STLKind kind = veltrac::STLKind::Missing;
    std::string_view text;
    double value = 0.0;  // of a number
};

namespace veltrac {

inline bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// A cell without the blanks behind it, and without the carriage return of a line's end.
inline std::string_view withoutTail(std::string_view cell)
{
    while (!cell.empty() && (isBlank(cell.back()) || cell.back() == '\r'))
        cell.remove_suffix(1);
    return cell;
}

// Cuts a line at its separators; cells come without the blanks around them, and without their quotes. `out`
// is cleared first. Returns the number of cells.
std::size_t splitCells(std::string_view line, char separator, std::vector<std::string_view>& out);
// The same, or at the columns of a table of fixed widths, in which cells may be empty.
std::size_t splitCells(std::string_view line, const STLCells& cells, std::vector<std::string_view>& out);

// A number: [sign] digits [decimal digits] [e [sign] digits], and nothing behind it.
std::optional<double> readNumber(std::string_view cell, const STLCells& cells);

// Whether readNumber() finds one; quicker than to read it.
bool isNumber(std::string_view cell, const STLCells& cells);

bool isMissing(std::string_view cell, const STLCells& cells);

// What stands in a cell.
STLToken readToken(std::string_view cell, const STLCells& cells);

}  // namespace veltrac
