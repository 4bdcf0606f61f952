// How a smart tool log is read and what becomes of it: found by detection, changed by the user.
//
// Texts are the file's bytes made UTF-8. Lines count from 1, columns from 0.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "converters/STLToken.h"
#include "converters/TimeStamps.h"

namespace veltrac {

// What keeps a file from being imported, in words for the user.
class STLError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

enum class STLEncoding { Utf8, Windows1252 };

// Where the time of a row comes from.
enum class STLTimeSource {
    Typed,           // the start and step that the user typed, or that the file's head names
    Stamp,           // one column of dates or stamps
    DateAndTime,     // a column of dates and one of times
    DateParts,       // columns of the year, the month, the day, …
    DecimalYears,    // a column of years with decimals: 2010.25
    SerialDays,      // a column of days as spreadsheets count them
    ElapsedTime,     // a column of hours:minutes:seconds since the start
    ElapsedSeconds,  // a column of seconds since the start, or of the unit that it names
    UnixSeconds,
    UnixMilliseconds,
    UnixMicroseconds,
    UnixNanoseconds
};

// What it becomes in the ts-file.
enum class STLTimeResult {
    Constant,        // equal steps: a sample time
    TimeColumn,      // "Time"
    TimeTwoColumns,  // "Time" with "Time32": whole seconds apart from their fractions
    Resampled        // values interpolated at equal steps, gaps missing
};

enum class STLFill { NaN, Zero, Previous, Interpolated };

struct STLColumn
{
    STLKind kind = STLKind::Number;
    bool take = true;
    std::string prefix;   // before each number in its cell: the file's own bytes of "temp="
    std::string suffix;   // that each number bears in its cell: the file's own bytes of "°C" or "%"
    double factor = 0.0;  // what K behind its numbers means, 1000 or 1024 ("12G" is three times that); or 0
    bool numberTexts = false;  // a column of texts becomes 1, 2, …, in the order in which they come
    std::string heading;       // the file's own bytes above the column, which may stand there again
    std::string name;          // the same as UTF-8, without the unit
    std::string unit;
    // The user's own words; without them they follow from the two above.
    std::string label;
    std::string description;
};

// What columns of a date's parts hold.
enum class STLDatePart { Year, Quarter, Month, Day, DayOfYear, Hour, Minute, Second, Week };
inline constexpr std::size_t kSTLDateParts = 9;

// What speaks for a reading.
struct STLEvidence
{
    std::size_t cells = 0;  // of a line
    double lines = 0.0;     // the share of the lines that have so many
    double typed = 0.0;  // the share of their cells that are numbers, dates or times; missing ones are half
    std::string firstRow = {};  // the cells of the first data line under it, as UTF-8
    std::uint64_t namesLine = 0;
    bool namesMatch = false;  // as many words as columns
    int timeColumn = -1;
    double times = 0.0;  // the share of the rows looked at whose time can be read
    bool timesGoOneWay = false;
};

struct STLFormat
{
    STLEncoding encoding = STLEncoding::Utf8;
    STLCells cells;
    std::vector<std::string> remarks = {"#", "%", "//", ";"};  // ";" only where it is not the separator
    std::uint64_t firstDataLine = 1;
    std::uint64_t namesLine = 0;  // 0: none
    std::uint64_t unitsLine = 0;
    // The line right above the data whose words are more or fewer than the columns, and how many.
    std::uint64_t unmatchedLine = 0;
    std::size_t unmatchedWords = 0;
    // Lines above the data that give neither names nor units: how many, and the first ones with their
    // numbers.
    std::size_t titleCount = 0;
    std::vector<std::pair<std::uint64_t, std::string>> titles;
    // Where the rows begin to be set out in another way, as tables that were joined are; or 0.
    std::uint64_t otherLayoutLine = 0;
    // A title above the names, with any digits in it, which may stand above each block of rows.
    std::string blockTitle;
    std::vector<STLColumn> columns;
    // What the file's head says, key and value as they stand.
    std::vector<std::pair<std::string, std::string>> head;

    STLTimeSource timeSource = STLTimeSource::Typed;
    int timeColumn = -1;  // the stamp's, the time's or the seconds' column
    int dateColumn = -1;
    // Beside a stamp or a time: "+0100", perhaps with the decimals of the second before it.
    int zoneColumn = -1;
    // By STLDatePart, -1 where there is none. The year's column stands in timeColumn too; beside dates there
    // may be hours, minutes and seconds, and the hours' column stands there.
    std::array<int, kSTLDateParts> partColumns = {-1, -1, -1, -1, -1, -1, -1, -1, -1};
    DateOrder order = DateOrder::DayMonth;
    bool groupsAssumed = false;    // signs between digits that could be decimal ones part thousands
    bool namesInDoubt = false;     // they are numbers, or the first data line may be names
    bool namesInRemark = false;    // "# a b c"
    bool namesListed = false;      // "# 1 a", "# 2 b"
    bool namesAreApart = false;    // blanks lie between them, other separators between the cells below
    bool namesAsked = false;       // so much so that the user is asked
    bool timeIsHhmm = false;       // times are numbers: 5 past midnight is 5, noon 1200
    bool yearsInMonths = false;    // decimal years tell firsts of months, as well as their digits can
    bool valuesRunOn = false;      // from line to line: the first cells count them
    bool monthsInDigits = false;   // these are no decimals: 1959.01 is January
    bool orderInDoubt = false;     // no date tells; the user is asked to check
    bool orderBySteps = false;     // but the steps between the dates do
    bool rowsAreLabelled = false;  // rows of one time are told apart by a text: several things at that time
    bool yearMissing = false;      // days and months stand before the times of day, and no year
    bool dateUnread = false;       // something like a date stands before the times of day
    bool greenwich = false;        // stamps carry a zone, or the user says that they are UTC
    bool stepIsTold = false;       // the step below, by the file's head
    Micros typedStart = 0;         // wall clock; 0 for none
    double typedStep = 1.0;        // seconds

    std::optional<STLTimeResult> timeResult;  // the user's choice; without it the check chooses
    double resampleStep = 0.0;                // seconds; 0 for the typical step
    std::string description;
    std::uint64_t fromRow = 1;  // of the data rows
    std::uint64_t toRow = 0;    // 0: the last
    std::uint32_t everyNth = 1;
    STLFill fill = STLFill::NaN;

    // Why it is read so. And a second reading that scored nearly as well, or 0: its separator and decimal,
    // and the reason for it.
    STLEvidence evidence;
    char otherSeparator = 0;
    char otherDecimal = 0;
    STLEvidence otherEvidence;
};

// Whether the times are numbers: of seconds, or of another unit.
bool timesAreNumbers(STLTimeSource source);
// Whether they count from 1970 on, at Greenwich.
bool timesAreUnix(STLTimeSource source);
// Whether they count from the log's own beginning.
bool timesAreElapsed(STLTimeSource source);
// Whether a column tells the time, or a part of it.
bool tellsTime(const STLFormat& format, std::size_t column);
// Whether times of the day beside dates stand in columns of hours, and perhaps minutes and seconds.
bool clockIsInParts(const STLFormat& format);
// Whether they are days, without any time of the day.
bool datesAlone(const STLFormat& format);
// How many seconds a one in the column of times means.
double secondsPerUnit(const STLFormat& format);

// What the file or the user calls the unit of a column of times, else the name's last word ("time_ms"), in
// seconds; 0 for none.
double namedUnit(const STLColumn& times);

// Whether that column names no unit of time, so that seconds are assumed.
bool secondsAreAssumed(const STLFormat& format);

// A cell without the column's key before it and the unit behind it.
std::string_view bareCell(std::string_view cell, const STLColumn& column);
// A cell's number, with or without the column's key and unit.
std::optional<double> readValue(std::string_view cell, const STLColumn& column, const STLCells& cells);
inline constexpr double kDecimalFactor = 1000.0;
inline constexpr double kBinaryFactor = 1024.0;
// What K, M, G … behind a number multiply it by, K being `factor`: "4.0K", "12 GiB", "144B"; nothing where
// none of them ends the cell.
std::optional<double> readFactored(std::string_view cell, double factor, const STLCells& cells);
// What stands before the number of a cell and can be its key ("temp=", "temp: "); empty where nothing does.
std::string_view keyBefore(std::string_view cell, const STLCells& cells);
// What stands behind the number of a cell and can be its unit; empty where none does.
std::string_view unitBehind(std::string_view cell, const STLCells& cells);

bool isEmptyLine(std::string_view line);
// Whether a line is only drawn: "+----+----+", "|---|---|", "---- ----".
bool isRule(std::string_view line);
// A line's leading remark sign, where it is one.
bool isRemark(std::string_view line, const STLFormat& format);
// A line without its remark sign, where it has one.
std::string_view withoutRemark(std::string_view line, const STLFormat& format);

// In small letters, as far as they are ASCII.
std::string lowered(std::string_view text);

// Text of the file as UTF-8.
std::string decoded(std::string_view bytes, STLEncoding encoding);
// The text of a cell, in which two quotes stand for one.
std::string cellText(std::string_view cell, STLEncoding encoding);

}  // namespace veltrac
