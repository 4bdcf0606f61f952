#include "converters/STLRows.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "core/Utf8.h"

namespace veltrac {

namespace {

constexpr std::size_t kLongestLine = 1U << 20;
constexpr std::size_t kLongestQuote = 40;
constexpr std::size_t kMostTexts = 10000;
constexpr Micros kClockSetBack = 2 * 3600 * kMicrosPerSecond;
constexpr double kMostSeconds = 4e12;       // whose microseconds fit into 64 bits
constexpr double kFarthest = 4294967295.0;  // seconds that a time column can count: 136 years
constexpr Micros kMicrosPerHour = 3600 * kMicrosPerSecond;
constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();

constexpr std::array<double, 7> kFine = {1.0, 1e-1, 1e-2, 1e-3, 1e-4, 1e-5, 1e-6};

// How fine a written time is: its last digit, or the minute where it has no seconds.
double resolutionOf(const TimeOfDay& time)
{
    return time.hasSeconds ? kFine[static_cast<std::size_t>(std::min(time.fractionDigits, 6))] : 60.0;
}

// How fine a written number is; 0 where its digits do not tell.
double resolutionOf(std::string_view number, char decimal)
{
    const std::size_t mark = number.find(decimal);
    const std::size_t digits = mark == std::string_view::npos ? 0 : number.size() - mark - 1;
    return digits >= kFine.size() || number.find_first_of("eE") != std::string_view::npos ? 0.0
                                                                                          : kFine[digits];
}

// Of two of them the difference fits, too.
std::optional<std::int64_t> wholeNumber(std::string_view text)
{
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / 2;
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool fits =
        error == std::errc() && end == text.data() + text.size() && number >= -kMost && number <= kMost;
    return fits ? std::optional(number) : std::nullopt;
}

}  // namespace

STLRows::STLRows(const std::filesystem::path& file, const STLFormat& format, STLPass pass)
    : m_format(format), m_pass(pass), m_reader(file, kLongestLine)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const STLColumn& column = format.columns[c];
        if (column.take)
            m_taken.push_back(c);
        if (column.kind == STLKind::Number && !column.heading.empty() &&
            !readNumber(column.heading, format.cells))
            m_headed.push_back(c);
    }
    m_values.resize(m_taken.size());
    m_secondsPerUnit = secondsPerUnit(format);
}

bool STLRows::next()
{
    m_troubles.clear();
    m_hasRow = false;
    if (!m_reader.next())
        return false;
    ++m_lineNumber;
    if (m_lineNumber < m_format.firstDataLine || !holdsData(m_reader.text()))
        return true;
    const bool hasCells = readCells();
    if (hasCells && isTitle()) {
        m_troubles.clear();
        ++m_titles;
        return true;
    }
    m_hasRow = hasCells && readTime();
    if (m_hasRow)
        readValues();
    // Without a time of its own, a line without any number is no row.
    if (m_hasRow && m_format.timeSource == STLTimeSource::Typed && !m_troubles.empty() &&
        m_missing == m_values.size())
        m_hasRow = false;
    if (!m_hasRow)
        ++m_skipped;
    return true;
}

// Whether a line is neither empty nor a remark.
bool STLRows::holdsData(std::string_view line) const
{
    // Most lines begin with a digit.
    if (!line.empty() && line.front() >= '0' && line.front() <= '9')
        return true;
    return line.find_first_not_of(" \t\r") != std::string_view::npos && !isRemark(line, m_format);
}

bool STLRows::readCells()
{
    const std::string_view line = m_reader.text();
    if (m_reader.isCut()) {
        note(STLProblem::LineTooLong, -1, line);
        return false;
    }
    const std::size_t columns = m_format.columns.size();
    splitCells(line, m_format.cells.separator, m_cells);
    if (m_cells.size() < columns) {
        note(STLProblem::TooFewCells, -1, line);
        m_cells.resize(columns);
    } else if (m_cells.size() > columns && !(m_cells.size() == columns + 1 && m_cells.back().empty())) {
        // A separator at the end of the line is no cell too many.
        note(STLProblem::TooManyCells, -1, line);
    }
    return true;
}

// Whether the names of the columns stand there again, as above each block of some tools' output.
bool STLRows::isTitle() const
{
    return !m_headed.empty() && std::all_of(m_headed.begin(), m_headed.end(), [this](std::size_t c) {
        return m_cells[c] == m_format.columns[c].heading;
    });
}

// -- Time --

bool STLRows::readTime()
{
    if (m_format.timeSource == STLTimeSource::Typed || m_pass == STLPass::WriteValues)
        return true;
    m_unreadable = m_format.timeColumn;
    const std::optional<double> seconds = rowSeconds();
    if (!seconds) {
        note(STLProblem::UnreadableStamp, m_unreadable, m_cells[static_cast<std::size_t>(m_unreadable)]);
        return false;
    }
    if (std::fabs(*seconds) > kFarthest) {
        note(STLProblem::FarTime, m_format.timeColumn,
             m_cells[static_cast<std::size_t>(m_format.timeColumn)]);
        return false;
    }
    m_seconds = *seconds;
    m_hasFirst = true;
    return true;
}

std::optional<double> STLRows::rowSeconds()
{
    const std::string_view cell = m_cells[static_cast<std::size_t>(m_format.timeColumn)];
    Micros time = 0;
    switch (m_format.timeSource) {
        case STLTimeSource::Stamp:
            return sinceFirst(stampAt(cell));
        case STLTimeSource::DateAndTime: {
            const auto day = dateAt(m_cells[static_cast<std::size_t>(m_format.dateColumn)]);
            if (!day)
                m_unreadable = m_format.dateColumn;
            if (!day || !timeAt(cell, time))
                return std::nullopt;
            return sinceFirst(*day + time);
        }
        case STLTimeSource::ElapsedTime:
            if (!timeAt(cell, time))
                return std::nullopt;
            // A time of day begins anew at midnight; clocks that are set back go back by less than this, and
            // hours that go on above 24 never do.
            if (m_hasFirst && time < kMicrosPerDay && time + kClockSetBack < m_lastTime)
                m_days += kMicrosPerDay;
            m_lastTime = time;
            return sinceFirst(time + m_days);
        default:
            return numberAt(cell);
    }
}

std::optional<Micros> STLRows::stampAt(std::string_view cell)
{
    const std::size_t end = std::min(cell.find_first_of(" T_"), cell.size());
    const std::optional<Micros> day = dateAt(cell.substr(0, end));
    if (day && end == cell.size())
        return day;
    std::string_view rest = cell.substr(std::min(end + 1, cell.size()));
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const auto time = takeTime(rest);
    const auto zone = takeZone(rest);
    if (!day || !time || !rest.empty())
        return rareStamp(cell);
    m_resolution = std::min(m_resolution, resolutionOf(*time));
    m_zoned = m_zoned || zone;
    return *day + time->micros - Micros{zone.value_or(0)} * 60 * kMicrosPerSecond;
}

// One that is not a date, a blank or "T", and a time: it bears no day and month that could be taken for each
// other, or its date has been looked at already.
std::optional<Micros> STLRows::rareStamp(std::string_view cell)
{
    const std::optional<Stamp> stamp = readStamp(cell);
    if (!stamp)
        return std::nullopt;
    if (stamp->time)
        m_resolution = std::min(m_resolution, resolutionOf(*stamp->time));
    m_zoned = m_zoned || stamp->zoneMinutes;
    return wallClock(*stamp, m_format.order);
}

std::optional<double> STLRows::numberAt(std::string_view cell)
{
    const auto number = readNumber(cell, m_format.cells);
    if (!number || std::fabs(*number * m_secondsPerUnit) > kMostSeconds)
        return std::nullopt;
    // Nanoseconds since 1970 have more digits than a double: those since the first row are exact.
    const std::optional<std::int64_t> ticks =
        m_format.timeSource == STLTimeSource::UnixNanoseconds ? wholeNumber(cell) : std::nullopt;
    // Divided where the unit is a part of a second, which rounds once.
    const auto inSeconds = [this](double n) {
        return m_secondsPerUnit < 1.0 ? n / std::round(1.0 / m_secondsPerUnit) : n * m_secondsPerUnit;
    };
    m_resolution = std::min(m_resolution, resolutionOf(cell, m_format.cells.decimal) * m_secondsPerUnit);
    if (!m_hasFirst) {
        m_firstNumber = *number;
        m_firstTicks = ticks;
        m_firstSeconds = inSeconds(*number);
        if (m_format.timeSource != STLTimeSource::ElapsedSeconds)
            m_firstWall = static_cast<Micros>(std::llround(m_firstSeconds * kMicrosPerSecond));
    }
    return inSeconds(ticks && m_firstTicks ? static_cast<double>(*ticks - *m_firstTicks)
                                           : *number - m_firstNumber);
}

bool STLRows::timeAt(std::string_view text, Micros& micros)
{
    if (readPlainTime(text, micros)) {
        m_resolution = std::min(m_resolution, 1.0);
        return true;
    }
    const auto time = readClock(text);
    if (!time)
        return false;
    m_resolution = std::min(m_resolution, resolutionOf(*time));
    micros = time->micros;
    return true;
}

std::optional<double> STLRows::sinceFirst(std::optional<Micros> wall)
{
    if (!wall)
        return std::nullopt;
    if (!m_hasFirst) {
        m_firstWall = *wall;
        m_firstSeconds = static_cast<double>(*wall) / kMicrosPerSecond;
    } else if (const Micros step = *wall - m_lastWall; step != m_lastStep) {
        const Micros before = m_clockShift;
        followClock(*wall);
        m_lastStep = step + m_clockShift - before;
    }
    m_lastWall = *wall;
    return static_cast<double>(*wall + m_clockShift - m_firstWall) / kMicrosPerSecond;
}

// A local clock is set back in autumn, and the log shows an hour twice; in spring an hour is left out. Where
// the rows run back by less than an hour, or step by an hour more or less than before, and the zone's clock
// was set just then, their order tells the time. Dates alone show no clock.
void STLRows::followClock(Micros wall)
{
    if (m_format.greenwich || m_zoned || m_format.timeSource == STLTimeSource::ElapsedTime ||
        datesAlone(m_format))
        return;
    const Micros step = wall - m_lastWall;
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
    const auto from = localInstants(m_lastWall);
    const auto to = localInstants(wall);
    const Micros set = back ? kMicrosPerHour : -kMicrosPerHour;
    if ((back ? to.last : to.first) - from.first != step + set)
        return;
    m_clockShift += set;
    ++m_clockChanges;
}

// Two comparisons of eight bytes, which overlap.
bool STLRows::isLastDate(std::string_view text) const
{
    constexpr std::size_t kWord = 8;
    return text.size() == m_lastDateSize && m_lastDateSize >= kWord &&
           std::memcmp(text.data(), m_lastDate.data(), kWord) == 0 &&
           std::memcmp(text.data() + text.size() - kWord, m_lastDate.data() + text.size() - kWord, kWord) ==
               0;
}

std::optional<Micros> STLRows::dateAt(std::string_view text)
{
    if (isLastDate(text))
        return m_lastMidnight;
    const auto date = readDate(text);
    const auto day = date ? midnight(*date, m_format.order) : std::nullopt;
    if (date && !date->yearFirst && !date->dayFirst) {
        m_dates.add(*date, text);
        const DateOrder other =
            m_format.order == DateOrder::DayMonth ? DateOrder::MonthDay : DateOrder::DayMonth;
        const bool readsOtherwise = midnight(*date, other).has_value();
        m_contradictsOrder = m_contradictsOrder || (!day && readsOtherwise);
        m_provesOrder = m_provesOrder || (day && !readsOtherwise);
    }
    if (day && text.size() <= m_lastDate.size()) {
        m_lastDateSize = text.copy(m_lastDate.data(), m_lastDate.size());
        m_lastMidnight = *day;
    }
    return day;
}

// -- Values --

void STLRows::readValues()
{
    m_missing = 0;
    for (std::size_t i = 0; i < m_taken.size(); ++i)
        m_values[i] = valueOf(m_taken[i], m_cells[m_taken[i]]);
}

float STLRows::valueOf(std::size_t column, std::string_view cell)
{
    const STLColumn& wanted = m_format.columns[column];
    if (!wanted.numberTexts) {
        if (m_pass == STLPass::Check && isNumber(cell, m_format.cells))
            return 0.0F;
        if (const auto number = readValue(cell, wanted, m_format.cells))
            return static_cast<float>(*number);
        if (wanted.kind == STLKind::Time)
            if (const auto time = veltrac::readTime(cell))
                return static_cast<float>(static_cast<double>(time->micros) / kMicrosPerSecond);
    }
    if (isMissing(cell, m_format.cells)) {
        ++m_missing;
        return kMissing;
    }
    if (wanted.numberTexts) {
        STLTexts& texts = m_texts[column];
        if (const auto known = texts.find(cell); known != texts.end())
            return static_cast<float>(known->second);
        if (texts.size() < kMostTexts) {
            const int number = static_cast<int>(texts.size()) + 1;
            texts.emplace(cell, number);
            return static_cast<float>(number);
        }
    }
    ++m_missing;
    note(STLProblem::NotANumber, static_cast<int>(column), cell);
    return kMissing;
}

void STLRows::note(STLProblem problem, int column, std::string_view text)
{
    const std::string quote = decoded(text.substr(0, kLongestQuote), m_format.encoding);
    m_troubles.push_back({m_lineNumber, column, problem,
                          text.size() > kLongestQuote ? cutTo(quote, kLongestQuote - 1) + "…" : quote});
}

}  // namespace veltrac
