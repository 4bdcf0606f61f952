// The quick way through a row of a log: its cells and their numbers in one go.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "converters/STLFormat.h"

namespace veltrac {

// Up to this, a 32-bit float tells every whole number.
inline constexpr double kMostExactWhole = 16777216.0;

// Reads what splitCells() and readValue() read, of rows that are plain: as many cells as columns, none in
// quotes; between blanks, cells that begin like numbers.
class STLPlainRow
{
public:
    explicit STLPlainRow(const STLFormat& format);

    // Gives the cell of each column, and of each taken one its number; where a taken column's cell is no
    // plain number, or too large a one to be kept exactly, its place among the taken ones is appended to
    // `unread` instead. Not where texts are numbered: then values stay as they are. False where the row is
    // not plain, and what was given means nothing.
    bool read(std::string_view line, std::span<std::string_view> cells, std::span<float> values,
              std::vector<std::size_t>& unread) const;

private:
    // Where the numbers of a row go.
    struct Taken
    {
        std::span<float> values;
        std::vector<std::size_t>& unread;
        std::size_t count = 0;
    };
    bool readSeparated(std::string_view line, std::span<std::string_view> cells, std::span<float> values,
                       std::vector<std::size_t>& unread) const;
    bool readBetweenBlanks(std::string_view line, std::span<std::string_view> cells, std::span<float> values,
                           std::vector<std::size_t>& unread) const;
    std::string_view takeCell(const char*& at, const char* end, std::size_t column, Taken& into) const;
    bool takeNumber(const char*& at, const char* end, float& value) const;
    void passCell(const char*& at, const char* end) const;
    bool endsCell(char c) const { return c == m_separator || (m_separator == ' ' && c == '\t'); }

    char m_separator;
    char m_decimal;
    bool m_isUsable;
    std::vector<char> m_taken;  // of each column, whether its value is wanted
};

}  // namespace veltrac
