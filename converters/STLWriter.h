// Puts rows of a log into a ts-file: missing values filled, time columns before the others, or all values
// at equal steps; the oldest row first.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "converters/STLCheck.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

class STLWriter
{
public:
    // Borrows all of them.
    STLWriter(TSFILE& target, const STLFormat& format, const STLCheck& found);

    // Whether rows go into the file as their values are, whatever their times; then many may be taken at
    // once.
    bool takesRowsAsTheyAre() const;
    void addRows(std::span<const float> values);
    // Takes the next row of the log; `seconds` since the first one, of turned rows since the last one.
    void add(double seconds, std::span<const float> values);
    // Writes what is left, and turns the rows round where the newest came first. Throws the TS exceptions, as
    // add() does.
    JobOutcome finish(const Progress& progress);

    std::uint64_t written() const { return m_written; }

private:
    void addResampled(double seconds, std::span<const float> values);
    void addRow(double seconds, std::span<const float> values);
    float filled(std::size_t column, float value);
    void fillGap(std::size_t column, double before, double behind);
    void flushRows();
    JobOutcome turnRound(const Progress& progress);

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

}  // namespace veltrac
