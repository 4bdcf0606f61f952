// Rows of numbers out of a stream that comes in pieces of any length: lines of text, or binary frames.
//
// Both append to a Rows; nothing of them is kept but what belongs to a row whose end has not come yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "converters/STLToken.h"

namespace veltrac {

// What has been read: `columns` values a row, and its time where rows carry one (NaN where none could be
// read).
struct Rows
{
    std::vector<float> values{};
    std::vector<double> times{};  // seconds; since the epoch where they are dates or so large
    std::size_t count = 0;

    void clear()
    {
        values.clear();
        times.clear();
        count = 0;
    }
};

struct RowCounts
{
    std::uint64_t rows = 0;
    std::uint64_t faulty = 0;     // rows with something that could not be read
    std::uint64_t missing = 0;    // values: empty cells, marks of missing values, and what could not be read
    std::uint64_t headLines = 0;  // before the first row
    bool endsWithin = false;      // the input ended within a row, which is left out
};

// Lines of text. What separates their cells is seen from the first line that can be a row, the decimal sign
// from the first number that has one; empty lines and those that begin with # are passed over.
class TextRows
{
public:
    struct Layout
    {
        std::vector<std::size_t> cells;  // of each column: its place among those of a line, from 0
        bool timed = false;  // a line begins with its time, which is no cell of a column; a date may be apart
        STLCells signs{};
        bool knowsSeparator = false;  // else it is seen from the lines, as is the decimal sign
        bool knowsDecimal = false;
    };

    explicit TextRows(Layout layout);

    void feed(std::string_view bytes, Rows& rows);
    // No more will come: a last line without its end counts where `whole`, else it may be half a number.
    void end(bool whole, Rows& rows);

    const RowCounts& counts() const noexcept { return m_counts; }

private:
    void takeLine(std::string_view line, Rows& rows);
    bool learn(std::string_view line);
    bool fits(std::string_view line, const STLCells& signs, bool exactly);
    void takeCells(Rows& rows);
    void joinDate();
    std::optional<double> numberIn(std::string_view cell);
    static std::optional<double> timeIn(std::string_view cell, std::optional<double> seconds);
    std::size_t cellsNeeded() const noexcept { return m_needed + (m_layout.timed ? 1 : 0); }

    Layout m_layout;
    std::size_t m_needed;  // cells behind the time
    bool m_known = false;  // how cells are told apart
    bool m_decimalIsSure;
    std::string m_rest;
    bool m_overlong = false;
    std::vector<std::string_view> m_cells;
    bool m_dateIsApart = false;  // in a cell before that of the time
    std::string m_stamp;         // both of a line
    RowCounts m_counts;
};

// Frames of 32-bit floats, a value for each column, in this machine's byte order; where rows carry a time, a
// 64-bit float of seconds stands before them.
class FrameRows
{
public:
    FrameRows(std::size_t columns, bool timed);

    void feed(std::string_view bytes, Rows& rows);
    // No more will come.
    void end();

    const RowCounts& counts() const noexcept { return m_counts; }

private:
    void takeFrame(const char* frame, Rows& rows);

    std::size_t m_columns;
    bool m_timed;
    std::size_t m_frameBytes;
    std::string m_rest;
    RowCounts m_counts;
};

}  // namespace veltrac
