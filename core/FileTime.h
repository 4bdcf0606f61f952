// How a ts-file tells time: its unit and start, the rows that hold data, the time of a row and the row at a
// time. The one answer to each of these for lists, plots, jobs and importers.
//
// Rows count from 1 as they stand in the file. In a ring file row and sample differ: samples go on counting
// when the file begins again with its first row. Times since the start are in the file's own unit and
// computed in double, finer than TSFILE::sampleTime().
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

class TSFILE;

namespace veltrac {

// A time unit as it stands behind a number: "min" of "Time[min]" or "min", "s" of an empty text.
std::string bareTimeUnit(std::string_view unit);
// The seconds in one unit of a file's time unit; 1 where the text is empty or no unit of time.
double secondsInTimeUnit(std::string_view unit);

// Whether a header can hold a sample time: it is a 32-bit float above 0.
bool isSampleTime(double time);

class FileTime
{
public:
    // Borrows the file, and looks at its header now: make a new one when that has changed. Throws the TS
    // exceptions, as all that reads times.
    explicit FileTime(TSFILE& file);

    const std::string& unit() const noexcept { return m_unit; }
    double unitSeconds() const noexcept { return m_unitSeconds; }
    // Seconds since the epoch from which the times count: startSeconds + startTime.
    double start() const noexcept { return m_start; }
    // Whether the times are those of a calendar: the file has a startSeconds, or a column "Time" that lies
    // years from zero, as that of a series from before 1970 does.
    bool hasCalendar() const;

    bool isRing() const noexcept { return m_ring; }
    // The rows that hold data: all of an ordinary file; of a ring file those that have been written.
    std::uint32_t rows() const noexcept { return m_rows; }
    // The samples in them: from 1, or in a ring file from its oldest, to the newest; first > last: none.
    std::uint32_t firstSample() const noexcept { return m_first; }
    std::uint32_t lastSample() const noexcept { return m_last; }
    // Where the oldest sample stands: 1, but in a ring file that has come round.
    std::uint32_t oldestRow() const noexcept { return rowOf(m_first); }
    // The row of a sample, and the sample in a row; nobody has written those after lastSample().
    std::uint32_t rowOf(std::uint32_t sample) const noexcept;
    std::uint32_t sampleIn(std::uint32_t row) const noexcept;
    bool isWritten(std::uint32_t row) const noexcept { return sampleIn(row) <= m_last; }

    // The time of a sample since the start: sample * dt, or what its time columns say.
    double elapsed(std::uint32_t sample) const;
    // The same in seconds since the epoch.
    double moment(std::uint32_t sample) const { return m_start + elapsed(sample) * m_unitSeconds; }
    // The sample nearest to a time since the start, up to one step outside of the file; nothing, and the
    // reason, where there is none.
    std::optional<std::uint32_t> sampleAt(double elapsed, std::string& reason) const;

private:
    std::uint32_t lastAtOrBefore(double elapsed) const;

    TSFILE& m_file;
    std::string m_unit;
    double m_unitSeconds = 1.0;
    double m_start = 0.0;
    double m_dt = 0.0;
    bool m_ring = false;
    std::uint32_t m_capacity = 0;
    std::uint32_t m_rows = 0;
    std::uint32_t m_first = 1;
    std::uint32_t m_last = 0;
};

// A place in a series as a user types it.
struct SeriesPlace
{
    enum class Kind {
        Sample,     // number: the row, from 1
        Elapsed,    // number: seconds since the start; with `fileUnit` in the file's time unit
        TimeOfDay,  // number: seconds since midnight, local time
        Calendar,   // number: what the local clock shows, in seconds as if each day had 24 hours
        Instant,    // number: seconds since the epoch, of a date and time with its zone
        Percent     // number: 0 is the first sample, 100 the last
    };
    Kind kind = Kind::Sample;
    double number = 0.0;
    std::string fileUnit{};  // the unit as typed, where it is none that the program knows
};

// What a text means, "250000", "12.5 s", "13:45:30", "2016-10-30 02:30:00.000", "30.10.2016 02:30",
// "2016-10-30T02:30:00+02:00" or "50%"; nothing where it means nothing. Points and commas are decimal marks,
// blanks between the digits of a sample number do not count.
std::optional<SeriesPlace> parsePlace(std::string_view text);

// The number that a whole text is, with point or comma; nothing for any other text and what is not finite.
std::optional<double> wholeNumber(std::string_view text);

// A moment in seconds since the epoch, and what is to be said of it: that the local clock skipped it, or
// showed it twice.
struct MeantMoment
{
    double seconds = 0.0;
    std::string note{};
};
// The moment of a calendar time; of a time of day the first one at or after `start`, seconds since the epoch,
// or without a calendar that time after the start.
MeantMoment momentOf(const SeriesPlace& place, double start, bool calendar);

// The sample that a text means in a file: the one of that number, the nearest one to a time, or the one
// behind a share of those that the file holds, from the oldest on.
struct MeantSample
{
    std::optional<std::uint32_t> sample{};
    std::string reason{};  // why there is none
    std::string note{};    // what is to be said of the time
};
MeantSample meantSample(std::string_view text, TSFILE& file);

// The row that a text means in a list of all rows as they stand in the file, where numbers and shares are
// those of rows.
struct MeantRow
{
    std::optional<std::uint32_t> row{};
    std::string reason{};
    std::string note{};
};
MeantRow meantRow(std::string_view text, TSFILE& file);

}  // namespace veltrac
