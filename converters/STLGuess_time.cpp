// Guesses at the time of a smart tool log: see STLGuess.h.
#include <algorithm>
#include <array>

#include "converters/STLGuess.h"

namespace veltrac {

namespace {

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
        std::string_view text = row.cells[static_cast<std::size_t>(column)].text;
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

// Whether a column of numbers goes one way: 1 it rises, -1 it falls, 0 it does neither.
int courseOf(const std::vector<STLRow>& rows, std::size_t column)
{
    // The three places that were looked at may overlap; within a place the column has to keep its way.
    std::size_t risen = 0;
    std::size_t fallen = 0;
    std::size_t pairs = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const STLToken& before = rows[i - 1].cells[column];
        const STLToken& now = rows[i].cells[column];
        if (before.kind != STLKind::Number || now.kind != STLKind::Number)
            continue;
        ++pairs;
        risen += now.value > before.value ? 1 : 0;
        fallen += now.value < before.value ? 1 : 0;
    }
    if (pairs > 0 && pairs - risen <= 2 && risen >= fallen)
        return 1;
    return pairs > 0 && pairs - fallen <= 2 ? -1 : 0;
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

bool namesClock(const std::string& name)
{
    const std::string lower = lowered(name);
    return lower.starts_with("time") || lower.starts_with("uhrzeit") || lower.starts_with("zeit") ||
           lower.starts_with("hour") || lower.starts_with("stunde") || lower == "hh" || lower == "hhmm" ||
           lower == "hhmmss" || lower == "hr" || lower == "h";
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

void findNumericTime(STLFormat& format, const std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const int course = format.columns[c].kind == STLKind::Number && !data.empty() ? courseOf(data, c) : 0;
        if (course == 0)
            continue;
        const double first = data.front().cells[c].value;
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
        const auto* const found = std::find_if(kUnix.begin(), kUnix.end(), [first](const Unix& u) {
            return first > kYear1990 * u.perSecond && first < kYear2100 * u.perSecond;
        });
        if (found != kUnix.end() && (c == 0 || namesTime(format.columns[c].name)))
            format.timeSource = found->source;
        else if (course > 0 && namesTime(format.columns[c].name))
            format.timeSource = STLTimeSource::ElapsedSeconds;
        else
            continue;
        format.greenwich = format.timeSource != STLTimeSource::ElapsedSeconds;
        format.timeColumn = static_cast<int>(c);
        return;
    }
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
        if (time < 0 && courseOf(data, c) == 0)
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
    const int time = firstOf(STLKind::Time);
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
        startAtMidnight(format, data);
    } else {
        findNumericTime(format, data);
    }
    if (const int dated = format.dateColumn >= 0 ? format.dateColumn : format.timeColumn;
        dated >= 0 && format.timeSource != STLTimeSource::ElapsedTime)
        findOrder(format, data, dated);

    if (format.timeColumn >= 0 && namesGreenwich(format.columns[static_cast<std::size_t>(format.timeColumn)]))
        format.greenwich = true;

    for (std::size_t c = 0; c < format.columns.size(); ++c)
        format.columns[c].take =
            format.columns[c].kind == STLKind::Number && static_cast<int>(c) != format.timeColumn;
}

}  // namespace veltrac
