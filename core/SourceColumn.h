// A column of a ts-file as calculations read it: in the order of time, within a range, and without the rows
// of a ring file that nobody has written yet.
#pragma once

#include <cstdint>
#include <span>

#include "core/FileTime.h"

class TSFILE;

namespace veltrac {

class SourceColumn
{
public:
    // Places `first` to `last` (from 1, the oldest row first; both included) of a column (from 1); 0 for
    // `last` means the newest. A range beyond the rows held is cut to them. Borrows the file.
    SourceColumn(TSFILE& file, std::uint32_t column, std::uint32_t first = 1, std::uint32_t last = 0);

    TSFILE& file() const noexcept { return m_file; }
    std::uint32_t column() const noexcept { return m_column; }
    std::uint32_t samples() const noexcept { return m_samples; }

    // Samples of the range from its sample `first` (from 1) on. Throws the TS exceptions.
    void read(std::uint32_t first, std::span<float> out) const { read(m_column, first, out); }
    // Seconds (or the file's time unit) from each of out.size() samples to the next one, by "Time" and
    // "Time32" where `own` asks for them and the file has them; else the sample time. Throws the TS
    // exceptions.
    void readSteps(std::uint32_t first, std::span<double> out, bool own) const;

    // Gives the file of a result the source's header, with the start of the range's first sample.
    void copyHeaderTo(TSFILE& result) const;

private:
    void read(std::uint32_t column, std::uint32_t first, std::span<float> out) const;
    void readTimes(std::uint32_t first, std::span<double> out) const;

    TSFILE& m_file;
    FileTime m_time;
    std::uint32_t m_column;
    std::uint32_t m_first;    // place of the range's first sample
    std::uint32_t m_behind;   // rows before it
    std::uint32_t m_samples;  // of the range
};

}  // namespace veltrac
