// Puts rows of a log into a ts-file: missing values filled, time columns before the others, or all values
// at equal steps.
#pragma once

#include <vector>

#include "converters/STLCheck.h"
#include "core/TSFILE.h"

class STLWriter
{
public:
    // Borrows all of them.
    STLWriter(TSFILE& target, const STLFormat& format, const STLCheck& found);

    // Takes the next row; `seconds` since the first row.
    void add(double seconds, const std::vector<float>& values);
    // Writes what is left. Throws the TS exceptions, as add() does.
    void finish();

    std::uint64_t written() const { return m_written; }

private:
    void addResampled(double seconds, const std::vector<float>& values);
    void addRow(double seconds, const std::vector<float>& values);
    float filled(std::size_t column, float value);
    void interpolate(std::size_t column, float value);
    void flushRows();

    TSFILE& m_target;
    const STLFormat& m_format;
    const STLCheck& m_found;
    std::size_t m_timeColumns;
    std::uint64_t m_written = 0;           // rows handed over, those that still stand in m_rows included
    std::vector<float> m_rows;             // not yet in the file
    std::vector<float> m_last;             // by column: the last value that was not missing
    std::vector<std::uint64_t> m_lastRow;  // and its row, 0 for none
    double m_beforeSeconds = 0.0;
    std::vector<float> m_before;  // the row before, for resampling
};
