// "Go to" as a user types it: "250000" (a sample), "12.5 s" (time since the start), "13:45:30" (a time of
// day) or "50%".
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

class TSFILE;

namespace veltrac {

struct GoToTarget
{
    enum class Kind {
        Sample,     // number: the sample, from 1
        Elapsed,    // number: seconds since the start; with `fileUnit` in the file's time unit
        TimeOfDay,  // number: seconds since midnight, local time
        Percent     // number: 0 is the first sample, 100 the last
    };
    Kind kind = Kind::Sample;
    double number = 0.0;
    QString fileUnit;  // the unit as typed, where it is none of s, ms, us, min, h, d
};

// What the text means; nothing where it means nothing. Points and commas are decimal marks, blanks between
// the digits of a sample number do not count.
std::optional<GoToTarget> parseGoTo(const QString& text);

// The first moment at or after `start` with that time of day; both in seconds since the epoch. A start of
// less than a day after the epoch has no calendar: there the time counts from the start itself.
double momentOf(const GoToTarget& timeOfDay, double start);

// A file's time unit as it stands behind a number: "min" of "Time[min]" or "min", "s" of an empty text.
QString bareTimeUnit(const QString& unit);
// The seconds in one unit of a file's time unit; 1 where the text is empty or no unit of time.
double secondsInTimeUnit(const QString& unit);

// The time of a row since the file's start (startSeconds + startTime), in the file's time unit: row * dt, or
// what its time columns say. Computed in double, finer than TSFILE::sampleTime(). In a ring file the rows are
// those of the file, each with the time of the sample that it holds. Throws the TS exceptions.
double elapsedTime(TSFILE& file, std::uint32_t row);
// The file's start in seconds since the epoch.
double startOf(TSFILE& file);
// Whether its times are those of a calendar: it has a start, or a column "Time" that lies years from zero, as
// that of a series from before 1970 does. Throws the TS exceptions.
bool hasCalendar(TSFILE& file);
// The number of the sample that a row holds: in a ring file another than the row.
std::uint32_t sampleInRow(TSFILE& file, std::uint32_t row);

// The row that the text means: the one nearest to a time where dt tells it, else the last one at or before
// it. Nothing, and the reason, where the text means nothing or lies outside of the file. Throws the TS
// exceptions.
std::optional<std::uint32_t> goToRow(const QString& text, TSFILE& file, QString& reason);

}  // namespace veltrac
