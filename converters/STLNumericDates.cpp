#include "converters/STLNumericDates.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "converters/STLCourse.h"
#include "converters/TimeStamps.h"
#include "converters/WordedDates.h"

namespace veltrac {

bool namesClock(const std::string& name)
{
    const std::string lower = lowered(name);
    return lower.starts_with("time") || lower.starts_with("uhrzeit") || lower.starts_with("zeit") ||
           lower.starts_with("hour") || lower.starts_with("stunde") || lower == "hh" || lower == "hhmm" ||
           lower == "hhmmss" || lower == "hr" || lower == "h";
}

bool saysDate(const std::string& name)
{
    return (name.find("date") != std::string::npos && name.find("update") == std::string::npos) ||
           name.find("datum") != std::string::npos;
}

bool isMonthName(const STLToken& cell)
{
    return cell.kind == STLKind::Text && monthOfName(cell.text) != 0;
}

namespace {

// Whether a column counts hours: it says so, or it begins again below 25.
bool countsHours(const STLColumn& column, const std::vector<STLRow>& data, std::size_t c)
{
    const std::string name = lowered(column.name);
    const bool hours = (name.starts_with("hour") || name.starts_with("hr") || name.starts_with("stunde") ||
                        name == "h" || name == "hh") &&
                       !name.ends_with("mm") && !name.ends_with("mn");
    if (!areWhole(data, c, 0, 24) || (!hours && !namesClock(column.name)))
        return false;
    const STLCourse course = courseOf(data, c);
    return hours || (course.fallen > course.breaks() && course.risen > course.fallen);
}

// A column of times of the day that are numbers, 5 past midnight being 5 and noon 1200; -1 where there is
// none.
int hhmmColumn(const STLFormat& format, const std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const std::string name = lowered(format.columns[c].name);
        if ((namesClock(name) || name == "hrmn" || name == "hhmm utc") && areWhole(data, c, 0, 2400) &&
            std::all_of(data.begin(), data.end(),
                        [c](const STLRow& row) { return static_cast<int>(row.cells[c].value) % 100 < 60; }))
            return static_cast<int>(c);
    }
    return -1;
}

// What the columns of a date's parts are called, as whole names.
struct DatePartNames
{
    std::string_view names;  // each between blanks
    double least;
    double most;
};
constexpr std::array<DatePartNames, kSTLDateParts> kDateParts = {{
    {" year yr yyyy years jahr annee anno ano year_ #yy yy isoyear iso_year ", kFirstDecimalYear,
     kLastDecimalYear},
    {" quarter qtr q quartal trimester ", 1, 4},
    {" month mon mo mm monat mois mese mes month_ ", 1, 12},
    {" day dd dy dom mday tag jour day_of_month dayofmonth ", 1, 31},
    {" doy yday jday day_of_year dayofyear julian ", 1, 366},
    {" hour hours hr hrs hh h stunde heure ", 0, 24},
    {" minute minutes min mn mi mm minuten ", 0, 59},
    {" second seconds sec ss sek sekunde ", 0, 60},
    {" week weeks wk isoweek iso_week weekno week_no weeknum calendar_week kw kalenderwoche semaine ", 1, 53},
}};

bool areMonthNames(const std::vector<STLRow>& data, std::size_t column)
{
    return !data.empty() && std::all_of(data.begin(), data.end(), [column](const STLRow& row) {
        return isMonthName(row.cells[column]);
    });
}

// The first column from `from` on that is called so, within the part's bounds; -1 where there is none.
int partColumn(const STLFormat& format, const std::vector<STLRow>& data, STLDatePart part, int from = 0)
{
    const DatePartNames& wanted = kDateParts[static_cast<std::size_t>(part)];
    for (std::size_t c = static_cast<std::size_t>(from); c < format.columns.size(); ++c) {
        const std::string name = ' ' + lowered(format.columns[c].name) + ' ';
        if (name.size() > 2 && wanted.names.find(name) != std::string_view::npos &&
            (areWhole(data, c, wanted.least, wanted.most) ||
             (part == STLDatePart::Month && areMonthNames(data, c))))
            return static_cast<int>(c);
    }
    return -1;
}

// "mm" is the month, and behind the hours the minutes.
int minuteColumn(const STLFormat& format, const std::vector<STLRow>& data, int hours)
{
    return hours < 0 ? -1 : partColumn(format, data, STLDatePart::Minute, hours + 1);
}

// The moment of a row by its parts as far as days; only good for telling whether rows rise.
double dayOfParts(const STLRow& row, const std::array<int, kSTLDateParts>& parts)
{
    constexpr std::array<double, kSTLDateParts> kDays = {372,     93,        31,         1, 1,
                                                         1. / 24, 1. / 1440, 1. / 86400, 7};
    double sum = 0.0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i] < 0)
            continue;
        const STLToken& cell = row.cells[static_cast<std::size_t>(parts[i])];
        sum += kDays[i] * (isMonthName(cell) ? monthOfName(cell.text) : cell.value);
    }
    return sum;
}

// "Jan 2010" in cells of their own, which no name has to tell.
void findUnnamedMonths(const STLFormat& format, const std::vector<STLRow>& data,
                       std::array<int, kSTLDateParts>& parts)
{
    int& year = parts[static_cast<std::size_t>(STLDatePart::Year)];
    int& month = parts[static_cast<std::size_t>(STLDatePart::Month)];
    for (std::size_t c = 0; c + 1 < format.columns.size() && year < 0 && month < 0; ++c)
        for (const auto& [y, m] : {std::pair(c, c + 1), std::pair(c + 1, c)})
            if (areMonthNames(data, m) && areWhole(data, y, kFirstDecimalYear, kLastDecimalYear)) {
                year = static_cast<int>(y);
                month = static_cast<int>(m);
            }
}

// Whether a column of numbers can be years with decimals, by its name and by its numbers.
bool areYears(const STLColumn& column, const std::vector<STLRow>& data, std::size_t c)
{
    const std::string name = lowered(column.name);
    const bool years = name.find("year") != std::string::npos || name == "yr" || name == "jahr";
    const bool times = name == "time" || saysDate(name);
    if ((!years && !times) || !column.unit.empty() || !courseOf(data, c).alwaysRises())
        return false;
    const auto inRange = [c](const STLRow& row) {
        const STLToken& cell = row.cells[c];
        return cell.kind == STLKind::Number && cell.value >= kFirstDecimalYear &&
               cell.value < kLastDecimalYear;
    };
    // A clock that counts other units runs through them faster.
    constexpr double kFewYears = 10.0;
    return std::all_of(data.begin(), data.end(), inRange) &&
           (years || data.size() < 2 || data[1].cells[c].value - data[0].cells[c].value <= kFewYears);
}

// Whether decimal years are firsts of months, as well as two decimals can tell them.
bool areMonths(const std::vector<STLRow>& data, std::size_t c)
{
    constexpr double kNear = 0.07;  // months
    return std::all_of(data.begin(), data.end(), [c](const STLRow& row) {
        const double months = row.cells[c].value * 12.0;
        return std::fabs(months - std::round(months)) < kNear;
    });
}

// Whether numbers are years with the month in two digits behind them: "1959.01" to "1959.12". Years with
// decimals would go on beyond these, so that a change of years proves it; without one a name has to tell.
bool areYearsAndMonths(const STLColumn& column, const std::vector<STLRow>& data, std::size_t c)
{
    constexpr double kExact = 1e-6;
    bool proven = false;
    double before = 0.0;
    for (const STLRow& row : data) {
        const STLToken& cell = row.cells[c];
        const double year = std::floor(cell.value);
        const double month = (cell.value - year) * 100.0;
        if (cell.kind != STLKind::Number || year < kFirstDecimalYear || year >= kLastDecimalYear ||
            std::fabs(month - std::round(month)) > kExact || month < 1.0 - kExact || month > 12.0 + kExact)
            return false;
        // From one December to the next January.
        proven = proven || (year == before + 1.0 && std::lround(month) == 1);
        before = std::lround(month) == 12 ? year : 0.0;
    }
    const std::string name = lowered(column.name);
    const bool named = name.find("month") != std::string::npos || name.find("monat") != std::string::npos ||
                       name.find("yyyy.mm") != std::string::npos;
    return (proven || named) && column.unit.empty() && courseOf(data, c).alwaysRises();
}

// Days as spreadsheets count them, between 1954 and 2119, where a name says date.
bool areSerialDays(const STLColumn& column, const std::vector<STLRow>& data, std::size_t c)
{
    const std::string name = lowered(column.name);
    const bool dated = saysDate(name) || name.find("serial") != std::string::npos;
    return dated && courseOf(data, c).alwaysRises() &&
           std::all_of(data.begin(), data.end(), [c](const STLRow& row) {
               return row.cells[c].kind == STLKind::Number && row.cells[c].value > 20000.0 &&
                      row.cells[c].value < 80000.0;
           });
}

}  // namespace

int findNumericClock(STLFormat& format, const std::vector<STLRow>& data)
{
    const auto put = [&](STLDatePart part, int column) {
        return format.partColumns[static_cast<std::size_t>(part)] = column;
    };
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        if (!countsHours(format.columns[c], data, c))
            continue;
        put(STLDatePart::Hour, static_cast<int>(c));
        if (put(STLDatePart::Minute, minuteColumn(format, data, static_cast<int>(c))) >= 0)
            put(STLDatePart::Second, partColumn(format, data, STLDatePart::Second));
        return static_cast<int>(c);
    }
    const int column = hhmmColumn(format, data);
    format.timeIsHhmm = column >= 0;
    return column;
}

void findDateParts(STLFormat& format, const std::vector<STLRow>& data)
{
    std::array<int, kSTLDateParts> parts;
    parts.fill(-1);
    for (std::size_t i = 0; i < parts.size(); ++i)
        parts[i] = partColumn(format, data, static_cast<STLDatePart>(i));
    parts[static_cast<std::size_t>(STLDatePart::Minute)] =
        minuteColumn(format, data, parts[static_cast<std::size_t>(STLDatePart::Hour)]);
    findUnnamedMonths(format, data, parts);
    const auto has = [&](STLDatePart part) { return parts[static_cast<std::size_t>(part)] >= 0; };
    const auto drop = [&](STLDatePart part) { parts[static_cast<std::size_t>(part)] = -1; };
    // A part says something only below the one that it is a part of.
    if (has(STLDatePart::Month))
        drop(STLDatePart::Quarter);
    if (!has(STLDatePart::Month))
        drop(STLDatePart::Day);
    if (has(STLDatePart::Day))
        drop(STLDatePart::DayOfYear);
    if (has(STLDatePart::Quarter) || has(STLDatePart::Month) || has(STLDatePart::DayOfYear))
        drop(STLDatePart::Week);
    if (!has(STLDatePart::Day) && !has(STLDatePart::DayOfYear))
        drop(STLDatePart::Hour);  // of which day?
    if (!has(STLDatePart::Hour))
        drop(STLDatePart::Minute);
    if (!has(STLDatePart::Minute))
        drop(STLDatePart::Second);
    if (!has(STLDatePart::Year) || std::count(parts.begin(), parts.end(), -1) == kSTLDateParts - 1)
        return;
    STLCourse course;
    for (std::size_t i = 1; i < data.size(); ++i) {
        const double step = dayOfParts(data[i], parts) - dayOfParts(data[i - 1], parts);
        ++course.pairs;
        course.risen += step > 0.0 ? 1 : 0;
        course.fallen += step < 0.0 ? 1 : 0;
    }
    if (!course.alwaysRises() && !course.alwaysFalls())
        return;
    format.timeSource = STLTimeSource::DateParts;
    format.partColumns = parts;
    format.timeColumn = parts[static_cast<std::size_t>(STLDatePart::Year)];
}

bool findNumericDate(STLFormat& format, const std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size() && !data.empty(); ++c) {
        const bool months = areYearsAndMonths(format.columns[c], data, c);
        const bool years = months || areYears(format.columns[c], data, c);
        if (!years && !areSerialDays(format.columns[c], data, c))
            continue;
        // More years than these a ts-file cannot count: they stay numbers, and no seconds either.
        constexpr double kMostYears = 136.0;
        if (years && data.back().cells[c].value - data.front().cells[c].value >= kMostYears)
            return true;
        format.timeSource = years ? STLTimeSource::DecimalYears : STLTimeSource::SerialDays;
        format.monthsInDigits = months;
        format.yearsInMonths = years && !months && areMonths(data, c);
        format.timeColumn = static_cast<int>(c);
        return true;
    }
    return false;
}

}  // namespace veltrac
