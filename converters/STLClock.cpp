#include "converters/STLClock.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "converters/WordedDates.h"

namespace veltrac {

namespace {

constexpr Micros kClockSetBack = 2 * 3600 * kMicrosPerSecond;
constexpr Micros kMicrosPerHour = 3600 * kMicrosPerSecond;

// Of two of them the difference fits, too.
std::optional<std::int64_t> nanosecondsIn(std::string_view text)
{
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / 2;
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool fits =
        error == std::errc() && end == text.data() + text.size() && number >= -kMost && number <= kMost;
    return fits ? std::optional(number) : std::nullopt;
}

}  // namespace

// -- Dates --

// Two comparisons of eight bytes, which overlap.
bool DateCells::isLast(std::string_view text) const
{
    constexpr std::size_t kWord = 8;
    return text.size() == m_lastSize && m_lastSize >= kWord &&
           std::memcmp(text.data(), m_last.data(), kWord) == 0 &&
           std::memcmp(text.data() + text.size() - kWord, m_last.data() + text.size() - kWord, kWord) == 0;
}

std::optional<Micros> DateCells::midnightOf(const DateParts& date, std::string_view text)
{
    const auto day = midnight(date, m_order);
    if (!date.yearFirst && !date.dayFirst) {
        m_steps.add(date, text);
        const DateOrder other = m_order == DateOrder::DayMonth ? DateOrder::MonthDay : DateOrder::DayMonth;
        const bool readsOtherwise = midnight(date, other).has_value();
        m_contradictsOrder = m_contradictsOrder || (!day && readsOtherwise);
        m_provesOrder = m_provesOrder || (day && !readsOtherwise);
    }
    return day;
}

std::optional<Micros> DateCells::midnightOf(std::string_view cell)
{
    if (isLast(cell))
        return m_lastMidnight;
    const auto date = readDate(cell);
    const auto day = date ? midnightOf(*date, cell) : std::nullopt;
    if (day && cell.size() <= m_last.size()) {
        m_lastSize = cell.copy(m_last.data(), m_last.size());
        m_lastMidnight = *day;
    }
    return day;
}

// -- Clocks that are set --

void ClockChanges::follow(Micros wall, bool mayBeSet)
{
    if (const Micros step = wall - m_last; step != m_lastStep) {
        const Micros before = m_shift;
        if (mayBeSet)
            judge(wall);
        m_lastStep = step + m_shift - before;
    }
    m_last = wall;
}

void ClockChanges::judge(Micros wall)
{
    const Micros step = wall - m_last;
    // Months and the like differ by more than the clock is set.
    const Micros near = std::min(m_lastStep / 2, kMicrosPerHour / 4);
    const auto isLast = [&](Micros other) {
        return other >= m_lastStep - near && other <= m_lastStep + near;
    };
    const bool back =
        step > -kMicrosPerHour && (step < 0 || (m_lastStep > 0 && isLast(step + kMicrosPerHour)));
    const bool forward = m_lastStep > 0 && isLast(step - kMicrosPerHour);
    if (!back && !forward)
        return;
    const auto from = localInstants(m_last);
    const auto to = localInstants(wall);
    const Micros set = back ? kMicrosPerHour : -kMicrosPerHour;
    if ((back ? to.last : to.first) - from.first != step + set)
        return;
    m_shift += set;
    ++m_count;
}

// -- Instants --

void LocalDays::begin(Micros wall)
{
    const Micros fraction = (wall % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
    m_first = localSeconds(wall) * kMicrosPerSecond + fraction;
}

void LocalDays::follow(Micros wall, Micros since)
{
    const Micros even = m_first + since;
    m_lag = static_cast<double>(instantOf(wall, even) - even) / kMicrosPerSecond;
}

Micros LocalDays::instantOf(Micros wall, Micros expected)
{
    m_isSkipped = false;
    if (wall >= m_from && wall < m_to)
        return wall + m_offset;
    const Micros ofDay = (wall % kMicrosPerDay + kMicrosPerDay) % kMicrosPerDay;
    const Micros from = wall - ofDay;
    const LocalInstants begin = localInstants(from);
    const LocalInstants end = localInstants(from + kMicrosPerDay);
    if (begin.first == begin.last && end.first == end.last && end.first - begin.first == kMicrosPerDay) {
        m_from = from;
        m_to = from + kMicrosPerDay;
        m_offset = begin.first - from;
        return wall + m_offset;
    }
    m_isSkipped = veltrac::isSkipped(wall);
    const LocalInstants instants = localInstants(wall);
    return std::abs(instants.first - expected) <= std::abs(instants.last - expected) ? instants.first
                                                                                     : instants.last;
}

// -- Times --

STLClock::STLClock(const STLFormat& format) : m_format(format), m_reader(format), m_dates(format.order) {}

std::optional<double> STLClock::read(std::span<const std::string_view> cells)
{
    return read(cells, m_reader.read(cells));
}

std::optional<double> STLClock::read(std::span<const std::string_view> cells, const STLTimeText& told)
{
    m_unreadable = m_format.timeColumn;
    const std::optional<double> seconds = secondsOf(cells, told);
    m_hasFirst = m_hasFirst || seconds;
    return seconds;
}

std::optional<double> STLClock::secondsOf(std::span<const std::string_view> cells, const STLTimeText& told)
{
    const auto timeColumn = static_cast<std::size_t>(m_format.timeColumn);
    const auto cell = [&] { return bareCell(cells[timeColumn], m_format.columns[timeColumn]); };
    Micros tail = 0;
    const bool hasTail = m_format.zoneColumn >= 0 && (m_format.timeSource == STLTimeSource::Stamp ||
                                                      m_format.timeSource == STLTimeSource::DateAndTime);
    if (hasTail && !tailAt(cells[static_cast<std::size_t>(m_format.zoneColumn)], tail))
        return std::nullopt;
    switch (m_format.timeSource) {
        case STLTimeSource::Stamp: {
            const auto stamp = stampAt(cell(), told);
            return sinceFirst(stamp ? std::optional(*stamp + tail) : std::nullopt);
        }
        case STLTimeSource::DateAndTime: {
            const auto day = m_dates.midnightOf(cells[static_cast<std::size_t>(m_format.dateColumn)]);
            if (!day)
                m_unreadable = m_format.dateColumn;
            if (clockIsInParts(m_format)) {
                const auto clock = day ? clockOf(cells) : std::nullopt;
                return clock ? sinceFirst(*day + *clock) : std::nullopt;
            }
            if (!day || !told.isRead)
                return std::nullopt;
            m_resolution = std::min(m_resolution, told.resolution);
            return sinceFirst(*day + told.micros + tail);
        }
        case STLTimeSource::ElapsedTime:
            return told.isRead ? sinceFirst(elapsed(told)) : std::nullopt;
        case STLTimeSource::DateParts:
            return sinceFirst(partsOf(cells));
        case STLTimeSource::DecimalYears:
        case STLTimeSource::SerialDays:
            return sinceFirst(dayAt(cell()));
        default:
            return told.isRead ? std::optional(numberAt(cells[timeColumn], told)) : std::nullopt;
    }
}

Micros STLClock::elapsed(const STLTimeText& told)
{
    m_resolution = std::min(m_resolution, told.resolution);
    // A time of day begins anew at midnight; clocks that are set back go back by less than this, and hours
    // that go on above 24 never do.
    if (m_hasFirst && told.micros < kMicrosPerDay && told.micros + kClockSetBack < m_lastTime)
        m_days += kMicrosPerDay;
    m_lastTime = told.micros;
    return told.micros + m_days;
}

std::optional<Micros> STLClock::stampAt(std::string_view cell, const STLTimeText& told)
{
    const std::optional<Micros> day = m_dates.midnightOf(cell.substr(0, told.dateEnd));
    if (day && told.dateEnd == cell.size())
        return day;
    if (!day || !told.isRead)
        return rareStamp(cell, day);
    m_resolution = std::min(m_resolution, told.resolution);
    m_zoned = m_zoned || told.isZoned;
    return *day + told.micros;
}

// One that is not a date, a blank or "T", and a time; perhaps its day is known already.
std::optional<Micros> STLClock::rareStamp(std::string_view cell, std::optional<Micros> day)
{
    const std::optional<Stamp> stamp = readStamp(cell);
    if (stamp && !day)
        day = m_dates.midnightOf(stamp->date, cell);
    if (!stamp || !day)
        return std::nullopt;
    if (stamp->time)
        m_resolution = std::min(m_resolution, resolutionOf(*stamp->time));
    m_zoned = m_zoned || stamp->zoneMinutes;
    return *day + (stamp->time ? stamp->time->micros : 0) -
           Micros{stamp->zoneMinutes.value_or(0)} * 60 * kMicrosPerSecond;
}

double STLClock::numberAt(std::string_view cell, const STLTimeText& told)
{
    m_resolution = std::min(m_resolution, told.resolution);
    // Nanoseconds since 1970 have more digits than a double: those since the first row are exact.
    const std::optional<std::int64_t> ticks =
        m_format.timeSource == STLTimeSource::UnixNanoseconds
            ? nanosecondsIn(bareCell(cell, m_format.columns[static_cast<std::size_t>(m_format.timeColumn)]))
            : std::nullopt;
    if (!m_hasFirst) {
        m_firstNumber = told.number;
        m_firstTicks = ticks;
        m_firstSeconds = m_reader.inSeconds(told.number);
        if (m_format.timeSource != STLTimeSource::ElapsedSeconds)
            m_firstWall = static_cast<Micros>(std::llround(m_firstSeconds * kMicrosPerSecond));
    }
    return m_reader.inSeconds(ticks && m_firstTicks ? static_cast<double>(*ticks - *m_firstTicks)
                                                    : told.number - m_firstNumber);
}

// What a column of zones adds to a stamp.
bool STLClock::tailAt(std::string_view cell, Micros& micros)
{
    const auto tail = readStampTail(cell);
    if (!tail) {
        m_unreadable = m_format.zoneColumn;
        return false;
    }
    if (tail->fractionDigits > 0)
        m_resolution = std::min(m_resolution, resolutionOf({0, tail->fractionDigits, true}));
    m_zoned = true;
    micros = tail->fraction - Micros{tail->zoneMinutes} * 60 * kMicrosPerSecond;
    return true;
}

std::optional<Micros> STLClock::dayAt(std::string_view cell)
{
    const auto number = readNumber(cell, m_format.cells);
    if (!number)
        return std::nullopt;
    if (m_format.monthsInDigits) {
        const double year = std::floor(*number);
        return midnight(
            {static_cast<int>(year), static_cast<int>(std::lround((*number - year) * 100.0)), 1, true, false},
            m_format.order);
    }
    return m_format.timeSource == STLTimeSource::SerialDays ? serialDay(*number)
                                                            : decimalYear(*number, m_format.yearsInMonths);
}

// A part of a date or time, or `otherwise` where no column tells it.
std::optional<int> STLClock::partAt(std::span<const std::string_view> cells, STLDatePart which, int least,
                                    int most, int otherwise)
{
    const int column = m_format.partColumns[static_cast<std::size_t>(which)];
    if (column < 0)
        return otherwise;
    const std::string_view cell = cells[static_cast<std::size_t>(column)];
    const auto number = wholeAt(cell, m_format.cells, least, most);
    if (!number && which == STLDatePart::Month)
        if (const int month = monthOfName(cell))
            return month;
    if (!number)
        m_unreadable = column;
    return number;
}

std::optional<Micros> STLClock::clockOf(std::span<const std::string_view> cells)
{
    const auto hour = partAt(cells, STLDatePart::Hour, 0, 24, 0);
    const auto minute = partAt(cells, STLDatePart::Minute, 0, 59, 0);
    const auto second = partAt(cells, STLDatePart::Second, 0, 60, 0);
    if (!hour || !minute || !second)
        return std::nullopt;
    return *hour * kMicrosPerHour + (*minute * 60 + *second) * kMicrosPerSecond;
}

std::optional<Micros> STLClock::partsOf(std::span<const std::string_view> cells)
{
    const auto part = [&](STLDatePart which, int least, int most, int otherwise) {
        return partAt(cells, which, least, most, otherwise);
    };
    const auto year =
        part(STLDatePart::Year, static_cast<int>(kFirstDecimalYear), static_cast<int>(kLastDecimalYear), 0);
    const auto quarter = part(STLDatePart::Quarter, 1, 4, 1);
    const auto month = part(STLDatePart::Month, 1, 12, quarter.value_or(1) * 3 - 2);
    const auto day = part(STLDatePart::Day, 1, 31, 1);
    const auto dayOfYear = part(STLDatePart::DayOfYear, 1, 366, 1);
    const auto week = part(STLDatePart::Week, 1, 53, 0);
    const auto clock = clockOf(cells);
    if (!year || !quarter || !month || !day || !dayOfYear || !week || !clock)
        return std::nullopt;
    const auto monday = *week > 0 ? dateOfWeek(*year, *week, 1) : DateParts{*year, *month, *day, true, false};
    const auto midnightThen = monday ? midnight(*monday, m_format.order) : std::nullopt;
    if (!midnightThen)
        return std::nullopt;
    return *midnightThen + (*dayOfYear - 1) * kMicrosPerDay + *clock;
}

std::optional<double> STLClock::sinceFirst(std::optional<Micros> wall)
{
    if (!wall)
        return std::nullopt;
    const bool local = !m_format.greenwich && !m_zoned && m_format.timeSource != STLTimeSource::ElapsedTime;
    if (!m_hasFirst) {
        m_firstWall = *wall;
        m_firstSeconds = static_cast<double>(*wall) / kMicrosPerSecond;
        m_changes.begin(*wall);
        if (local)
            m_local.begin(*wall);
    } else {
        // Dates alone show no clock.
        m_changes.follow(*wall, local && !datesAlone(m_format));
    }
    const Micros since = *wall + m_changes.shift() - m_firstWall;
    if (local && m_hasFirst)
        m_local.follow(*wall, since);
    return static_cast<double>(since) / kMicrosPerSecond;
}

}  // namespace veltrac
