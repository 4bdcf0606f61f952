#include "converters/STLTimeGuess.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <set>

#include "converters/STLCourse.h"
#include "converters/STLNumericDates.h"
#include "converters/WordedDates.h"
#include "core/TimeUnits.h"

namespace veltrac {

namespace {

constexpr const char* kZoneWords[] = {"zone", "utc", "gmt"};

bool countsToTwelve(const STLFormat& format, const std::vector<STLRow>& rows)
{
    const std::string text =
        rows.empty() ? std::string()
                     : lowered(rows.front().cells[static_cast<std::size_t>(format.timeColumn)].text);
    return text.find(':') != std::string::npos &&
           text.find_first_of("ap", text.find(':')) != std::string::npos;
}

void findOrder(STLFormat& format, const std::vector<STLRow>& rows, int column)
{
    bool ambiguous = false;
    for (const STLRow& row : rows) {
        std::string_view text = unframed(row.cells[static_cast<std::size_t>(column)].text);
        const auto date = takeDate(text);
        if (!date)
            continue;
        if (const auto stamp = readStamp(row.cells[static_cast<std::size_t>(column)].text);
            stamp && stamp->zoneMinutes)
            format.greenwich = true;
        if (date->yearFirst || date->dayFirst)
            continue;
        ambiguous = true;
        if (date->first > 12 || date->second > 12) {
            format.order = date->first > 12 ? DateOrder::DayMonth : DateOrder::MonthDay;
            return;
        }
    }
    format.orderInDoubt = ambiguous;
    // Where neither is proven: those who count the hours to 12 mostly put the month first.
    if (ambiguous && countsToTwelve(format, rows))
        format.order = DateOrder::MonthDay;
}

// Whether a whole column of digits reads so.
bool allRead(const std::vector<STLRow>& data, std::size_t column, bool (*reads)(std::string_view))
{
    return !data.empty() && std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
        return row.cells[column].kind == STLKind::Number && reads(row.cells[column].text);
    });
}

bool namesTime(const std::string& name)
{
    const std::string lower = lowered(name);
    return lower == "t" || lower == "s" || lower.starts_with("time") || lower.starts_with("zeit") ||
           lower.starts_with("elapsed") || lower.starts_with("sec") || lower.starts_with("unix") ||
           lower.starts_with("epoch") || lower.starts_with("timestamp");
}

// "Time (UTC)"; what stands behind a sign there is another zone.
bool namesGreenwich(const STLColumn& column)
{
    for (const std::string& text : {lowered(column.name), lowered(column.unit)})
        for (const std::string_view zone : {"utc", "gmt"})
            if (const std::size_t at = text.find(zone);
                at != std::string::npos && text.find_first_of("+-0123456789", at) == std::string::npos &&
                (at == 0 || text.find_first_of(" _(,[/") != std::string::npos))
                return true;
    return false;
}

// The times of the day beside a column of days; -1 where there is none.
int compactTimeColumn(const STLFormat& format, const std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const std::size_t length = data.front().cells[c].text.size();
        const bool alike = std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
            const std::size_t size = row.cells[c].text.size();
            return size == length || (size <= 2 && length <= 2);
        });
        if (alike && namesClock(format.columns[c].name) &&
            allRead(data, c, [](std::string_view text) { return readTime(text).has_value(); }))
            return static_cast<int>(c);
    }
    return -1;
}

// Whether a column that is called so counts seconds: a row or two may stand still, one may run back.
bool goesOnAsTime(const STLColumn& column, const STLCourse& course)
{
    const std::size_t mostFalls = std::max<std::size_t>(course.breaks(), column.prefix.empty() ? 1 : 0);
    const bool isTemperature =
        lowered(column.name) == "t" && !column.unit.empty() && secondsOfUnit(column.unit) <= 0.0;
    return namesTime(column.name) && !isTemperature && course.risen >= course.fallen && course.risen > 0 &&
           course.fallen <= mostFalls && course.pairs - course.risen <= kMostBreaks;
}

// Whether no other key stands before this one: "t=0.5 x=1", but not "seq=1 time=0.5".
bool isFirstKey(const STLFormat& format, std::size_t column)
{
    return std::all_of(format.columns.begin(), format.columns.begin() + static_cast<std::ptrdiff_t>(column),
                       [](const STLColumn& before) { return before.prefix.empty(); });
}

// The share of the steps between the rows that are the commonest one.
template <typename Value>
double regularity(const std::vector<STLRow>& data, Value valueOf)
{
    std::map<double, std::size_t> steps;
    std::size_t most = 0;
    for (std::size_t i = 1; i < data.size(); ++i)
        most = std::max(most, ++steps[valueOf(data[i]) - valueOf(data[i - 1])]);
    return data.size() < 2 ? 0.0 : static_cast<double>(most) / static_cast<double>(data.size() - 1);
}

// Whether the numbers of a column called time are a clock's, "930" being half past nine: so their steps are
// alike, as numbers they are not.
bool areClockNumbers(const STLFormat& format, const std::vector<STLRow>& data, std::size_t c)
{
    constexpr double kClearly = 0.05;
    constexpr std::size_t kFewRows = 10;
    if (!namesClock(format.columns[c].name) || !format.columns[c].unit.empty() || data.size() < kFewRows ||
        !areWhole(data, c, 0, 2400) || std::any_of(data.begin(), data.end(), [c](const STLRow& row) {
            return static_cast<int>(row.cells[c].value) % 100 > 59;
        }))
        return false;
    const auto number = [c](const STLRow& row) { return row.cells[c].value; };
    const auto minutes = [c](const STLRow& row) {
        const int digits = static_cast<int>(row.cells[c].value);
        const int sum = digits / 100 * 60 + digits % 100;
        return static_cast<double>(sum);
    };
    return regularity(data, minutes) > regularity(data, number) + kClearly;
}

// Whether a column counts from 1970 on, and in what.
std::optional<STLTimeSource> sinceEpoch(const STLColumn& column, const std::vector<STLRow>& data,
                                        std::size_t c)
{
    constexpr double kYear1990 = 631152000.0;
    constexpr double kYear2100 = 4102444800.0;
    struct Unix
    {
        STLTimeSource source;
        double perSecond;
    };
    static constexpr std::array<Unix, 4> kUnix = {{{STLTimeSource::UnixSeconds, 1},
                                                   {STLTimeSource::UnixMilliseconds, 1e3},
                                                   {STLTimeSource::UnixMicroseconds, 1e6},
                                                   {STLTimeSource::UnixNanoseconds, 1e9}}};
    const double first = data.front().cells[c].value;
    double greatest = first;
    for (const STLRow& row : data)
        if (row.cells[c].kind == STLKind::Number)
            greatest = std::fmax(greatest, row.cells[c].value);
    // Microseconds of a quarter of an hour are as many as seconds since 1970; their unit tells.
    const double unit = namedUnit(column);
    for (const Unix& u : kUnix)
        if (first > kYear1990 * u.perSecond && greatest < kYear2100 * u.perSecond &&
            (unit <= 0.0 || unit * u.perSecond > 0.5))
            return u.source;
    return std::nullopt;
}

void findNumericTime(STLFormat& format, const std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        if (areClockNumbers(format, data, c)) {
            format.timeSource = STLTimeSource::ElapsedTime;
            format.timeColumn = static_cast<int>(c);
            format.timeIsHhmm = true;
            return;
        }
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const STLColumn& column = format.columns[c];
        if (column.kind != STLKind::Number || data.empty())
            continue;
        const STLCourse course = courseOf(data, c);
        const auto epoch = sinceEpoch(column, data, c);
        // Several rows may bear the same second.
        if (epoch && (course.neverFalls() || course.alwaysFalls()) && (c == 0 || namesTime(column.name)))
            format.timeSource = *epoch;
        else if (goesOnAsTime(column, course) && (column.prefix.empty() || isFirstKey(format, c)))
            format.timeSource = STLTimeSource::ElapsedSeconds;
        else
            continue;
        format.greenwich = format.timeSource != STLTimeSource::ElapsedSeconds;
        format.timeColumn = static_cast<int>(c);
        return;
    }
}

// The first column of times that go one way, but for midnights: others tell how long something took. -1 where
// there is none.
int clockColumn(const STLFormat& format, const std::vector<STLRow>& data)
{
    constexpr Micros kHalfDay = kMicrosPerDay / 2;
    constexpr std::size_t kManyTurns = 10;  // one in so many rows
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        if (format.columns[c].kind != STLKind::Time)
            continue;
        std::size_t risen = 0;
        std::size_t fallen = 0;
        Micros before = -1;
        for (const STLRow& row : data) {
            const auto time = readTime(row.cells[c].text);
            if (!time)
                continue;
            const Micros step = before < 0 ? 0 : time->micros - before;
            risen += step > 0 && step < kHalfDay ? 1 : 0;
            fallen += step < 0 && step > -kHalfDay ? 1 : 0;
            before = time->micros;
        }
        const bool fewTurns = fallen < risen && fallen * kManyTurns < data.size();
        if (std::min(risen, fallen) <= kMostBreaks || fewTurns)
            return static_cast<int>(c);
    }
    return -1;
}

// Whether a column's name says zone.
bool namesZone(const std::string& name)
{
    const std::string lower = lowered(name);
    return lower == "tz" || std::any_of(std::begin(kZoneWords), std::end(kZoneWords), [&](const char* word) {
               return lower.find(word) != std::string::npos;
           });
}

// Whether cells that can be zones and are numbers, too, are no measured ones: "-11" is a temperature, "-1000"
// may be one. Zones have four digits that tell quarters of an hour, and there are no more than two of them,
// since the clock is set.
bool areZones(const STLColumn& column, const std::vector<STLRow>& data, std::size_t c)
{
    constexpr std::size_t kSignAndDigits = 5;
    const bool named = namesZone(column.name);
    std::vector<std::string_view> known;
    for (const STLRow& row : data) {
        const STLToken& cell = row.cells[c];
        if (cell.kind != STLKind::Number || named)
            continue;
        const bool written =
            cell.text.size() == kSignAndDigits && (cell.text.front() == '+' || cell.text[1] == '0');
        if (!column.name.empty() || !written || std::lround(cell.value) % 100 % 15 != 0)
            return false;
        if (std::find(known.begin(), known.end(), cell.text) == known.end())
            known.push_back(cell.text);
    }
    return known.size() <= 2;
}

// The column behind a stamp or a time that tells its zone in each row; -1 where there is none.
int zoneColumn(const STLFormat& format, const std::vector<STLRow>& data)
{
    const auto c = static_cast<std::size_t>(format.timeColumn) + 1;
    const bool all = c < format.columns.size() && !data.empty() &&
                     std::all_of(data.begin(), data.end(), [c](const STLRow& row) {
                         const std::string_view text = row.cells[c].text;
                         return text.size() > 2 && readStampTail(text).has_value();
                     });
    return all && areZones(format.columns[c], data, c) ? static_cast<int>(c) : -1;
}

// Whether what stands before the times begins like a date: "2026-326".
bool looksDated(const STLFormat& format, const std::vector<STLRow>& data)
{
    const auto time = static_cast<std::size_t>(format.timeColumn);
    constexpr std::size_t kYearDigits = 4;
    return time >= 1 && !data.empty() && std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
               const std::string_view text = row.cells[time - 1].text;
               return row.cells[time - 1].kind == STLKind::Text &&
                      text.find_first_not_of("0123456789") == kYearDigits &&
                      (text.starts_with("19") || text.starts_with("20"));
           });
}

// "22-11" and "22/11".
bool isDayAndMonth(std::string_view text)
{
    const std::size_t sign = std::min(text.find_first_of("-/"), text.size());
    return sign >= 1 && sign <= 2 && text.size() > sign + 1 && text.size() <= sign + 3 &&
           text.find_first_not_of("0123456789-/") == std::string_view::npos;
}

// "Nov 22 01:40:30" and "22-11 01:40:30", in cells of their own.
bool datesLackYear(const STLFormat& format, const std::vector<STLRow>& data)
{
    const auto time = static_cast<std::size_t>(format.timeColumn);
    if (time >= 1 && !data.empty() && std::all_of(data.begin(), data.end(), [time](const STLRow& row) {
            return row.cells[time - 1].kind == STLKind::Text && isDayAndMonth(row.cells[time - 1].text);
        }))
        return true;
    return time >= 2 && !data.empty() && std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
               const bool dayLast =
                   isMonthName(row.cells[time - 2]) && row.cells[time - 1].kind == STLKind::Number;
               const bool monthLast =
                   isMonthName(row.cells[time - 1]) && row.cells[time - 2].kind == STLKind::Number;
               return dayLast || monthLast;
           });
}

// Times of day that go on from the start's own count from its midnight.
void startAtMidnight(STLFormat& format, const std::vector<STLRow>& data)
{
    if (format.typedStart == 0 || data.empty())
        return;
    const Micros ofDay = format.typedStart % kMicrosPerDay;
    const auto first = readTime(data.front().cells[static_cast<std::size_t>(format.timeColumn)].text);
    constexpr Micros kNear = 3600 * kMicrosPerSecond;
    if (ofDay > 0 && first && first->micros >= ofDay && first->micros < ofDay + kNear)
        format.typedStart -= ofDay;
}

// Whether a column of times tells the same one in each row: how long something has run, no clock.
bool standsStill(const std::vector<STLRow>& data, std::size_t column)
{
    constexpr std::size_t kFewRows = 3;
    return data.size() >= kFewRows && std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
               return row.cells[column].text == data.front().cells[column].text;
           });
}

// Times that are written with points ("09.58.30") look like dates; beside a date they are none.
void findDottedTimes(STLFormat& format, const std::vector<STLRow>& data)
{
    bool dated = false;
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        if (format.columns[c].kind == STLKind::Time || format.columns[c].kind == STLKind::Stamp)
            return;
        if (format.columns[c].kind != STLKind::Date)
            continue;
        const bool clock = std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
            return readClock(row.cells[c].text).has_value();
        });
        if (dated && clock) {
            format.columns[c].kind = STLKind::Time;
            return;
        }
        dated = true;
    }
}

// Whether the rows of nearly each time have the same cells in a column, as those of several things have their
// numbers.
bool comeInTurn(const std::vector<STLRow>& data, std::size_t time, std::size_t column)
{
    constexpr std::size_t kFewest = 3;
    std::map<std::vector<std::string_view>, std::size_t> turns;
    std::vector<std::string_view> turn;
    std::size_t count = 0;
    for (std::size_t i = 0; i < data.size(); ++i) {
        turn.push_back(data[i].cells[column].text);
        if (i + 1 < data.size() && data[i + 1].cells[time].text == data[i].cells[time].text)
            continue;
        ++turns[turn];
        ++count;
        turn.clear();
    }
    const auto most = std::max_element(turns.begin(), turns.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    return count >= kFewest && most->first.size() > 1 && most->second * 4 >= count * 3;
}

// Whether a column of texts tells rows of one time apart, with the same texts at other times.
bool areLabelled(const STLFormat& format, const std::vector<STLRow>& data)
{
    if (format.timeColumn < 0)
        return false;
    const auto time = static_cast<std::size_t>(format.timeColumn);
    const auto labels = [&](std::size_t c) {
        std::set<std::string_view> texts;
        bool again = false;
        std::size_t pairs = 0;
        for (std::size_t i = 0; i < data.size(); ++i) {
            const std::string_view text = data[i].cells[c].text;
            again = !texts.insert(text).second || again;
            if (i == 0 || data[i].cells[time].text != data[i - 1].cells[time].text)
                continue;
            ++pairs;
            if (text == data[i - 1].cells[c].text)
                return false;
        }
        return again && pairs > 1;
    };
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        if ((format.columns[c].kind == STLKind::Text && labels(c)) ||
            (format.columns[c].kind == STLKind::Number && labels(c) && comeInTurn(data, time, c)))
            return true;
    return false;
}

}  // namespace

void findCompactDates(STLFormat& format, const std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const auto reads = [](std::string_view text) {
            return text.size() >= 8 && readStamp(text).has_value();
        };
        if (format.columns[c].kind != STLKind::Number || !allRead(data, c, reads))
            continue;
        const bool days = data.front().cells[c].text.size() == 8;
        const int time = days ? compactTimeColumn(format, data) : -1;
        const STLCourse course = courseOf(data, c);
        const bool named = saysDate(lowered(format.columns[c].name)) && course.fallen <= course.breaks();
        const bool besideTimes =
            days && c + 1 < format.columns.size() && format.columns[c + 1].kind == STLKind::Time;
        if (time < 0 && !named && !besideTimes && !course.neverFalls() && !course.alwaysFalls())
            continue;
        format.columns[c].kind = days ? STLKind::Date : STLKind::Stamp;
        if (time >= 0)
            format.columns[static_cast<std::size_t>(time)].kind = STLKind::Time;
        return;
    }
}

void guessTime(STLFormat& format, const std::vector<STLRow>& data)
{
    findDottedTimes(format, data);
    const auto firstOf = [&](STLKind kind) {
        const auto found = std::find_if(format.columns.begin(), format.columns.end(),
                                        [&](const STLColumn& c) { return c.kind == kind; });
        return found == format.columns.end() ? -1 : static_cast<int>(found - format.columns.begin());
    };
    const int stamp = firstOf(STLKind::Stamp);
    const int date = firstOf(STLKind::Date);
    int time = date >= 0 ? firstOf(STLKind::Time) : clockColumn(format, data);
    if (time > 0 && date < 0 && standsStill(data, static_cast<std::size_t>(time)))
        time = -1;
    if (stamp < 0 && date >= 0 && time < 0)
        time = findNumericClock(format, data);
    if (stamp >= 0) {
        format.timeSource = STLTimeSource::Stamp;
        format.timeColumn = stamp;
    } else if (date >= 0 && time >= 0) {
        format.timeSource = STLTimeSource::DateAndTime;
        format.timeColumn = time;
        format.dateColumn = date;
    } else if (date >= 0) {
        format.timeSource = STLTimeSource::Stamp;
        format.timeColumn = date;
    } else if (time >= 0) {
        format.timeSource = STLTimeSource::ElapsedTime;
        format.timeColumn = time;
        format.yearMissing = datesLackYear(format, data);
        format.dateUnread = !format.yearMissing && looksDated(format, data);
        startAtMidnight(format, data);
    } else {
        findDateParts(format, data);
        if (format.timeSource == STLTimeSource::Typed && !findNumericDate(format, data))
            findNumericTime(format, data);
    }
    if (const int dated = format.dateColumn >= 0 ? format.dateColumn : format.timeColumn;
        dated >= 0 &&
        (format.timeSource == STLTimeSource::Stamp || format.timeSource == STLTimeSource::DateAndTime))
        findOrder(format, data, dated);
    if ((format.timeSource == STLTimeSource::Stamp || format.timeSource == STLTimeSource::DateAndTime) &&
        !datesAlone(format) && !clockIsInParts(format) && !format.timeIsHhmm)
        format.zoneColumn = zoneColumn(format, data);

    for (const int c : {format.timeColumn, format.dateColumn})
        if (c >= 0 && namesGreenwich(format.columns[static_cast<std::size_t>(c)]))
            format.greenwich = true;

    format.rowsAreLabelled = areLabelled(format, data);
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        format.columns[c].take = format.columns[c].kind == STLKind::Number && !tellsTime(format, c);
}

}  // namespace veltrac
