#include "core/FileTime.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

#include "core/Characters.h"
#include "core/TSFILE.h"
#include "core/TimeUnits.h"
#include "core/Variable.h"
#include "core/WallClock.h"

namespace veltrac {

namespace {

constexpr double kSecondsADay = 86400.0;
constexpr double kSurelyCalendar = 1e8;  // seconds; no series was measured for so long from zero

std::string_view trimmed(std::string_view text)
{
    const auto isBlank = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string lowered(std::string_view text)
{
    std::string low(text);
    std::transform(low.begin(), low.end(), low.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return low;
}

double secondsOf(std::string_view unit)
{
    return secondsOfUnit(lowered(unit));
}

// Takes a whole number of `least` to `most` digits from the beginning of a text; -1 where there is none.
int takeDigits(std::string_view& text, std::size_t least, std::size_t most)
{
    std::size_t count = 0;
    while (count < text.size() && count < most && isDigit(text[count]))
        ++count;
    int number = -1;
    if (count < least || std::from_chars(text.data(), text.data() + count, number).ec != std::errc())
        return -1;
    text.remove_prefix(count);
    return number;
}

bool take(std::string_view& text, char sign)
{
    if (text.empty() || text.front() != sign)
        return false;
    text.remove_prefix(1);
    return true;
}

// "13:45", "13:45:30" or "13:45:30.250", the whole text, in seconds.
std::optional<double> clockTime(std::string_view text)
{
    const int hours = takeDigits(text, 1, 2);
    if (hours < 0 || hours > 23 || !take(text, ':'))
        return std::nullopt;
    const int minutes = takeDigits(text, 2, 2);
    if (minutes < 0 || minutes > 59)
        return std::nullopt;
    double seconds = 0.0;
    if (take(text, ':')) {
        const std::string_view rest = text;
        const int whole = takeDigits(text, 2, 2);
        const bool fraction = take(text, '.') || take(text, ',');
        if (whole < 0 || whole > 59 || !std::all_of(text.begin(), text.end(), isDigit) ||
            (!fraction && !text.empty()))
            return std::nullopt;
        seconds =
            wholeNumber(rest.ends_with('.') || rest.ends_with(',') ? rest.substr(0, 2) : rest).value_or(0.0);
    } else if (!text.empty()) {
        return std::nullopt;
    }
    return hours * 3600.0 + minutes * 60.0 + seconds;
}

// Takes "2016-10-30", "2016/10/30" or "30.10.2016": days since 1970-01-01.
std::optional<std::int64_t> takeDate(std::string_view& text)
{
    using namespace std::chrono;
    std::string_view rest = text;
    int first = takeDigits(rest, 1, 4);
    const char sign = rest.empty() ? '\0' : rest.front();
    if (first < 0 || (sign != '-' && sign != '/' && sign != '.'))
        return std::nullopt;
    rest.remove_prefix(1);
    const int second = takeDigits(rest, 1, 2);
    if (second < 0 || !take(rest, sign))
        return std::nullopt;
    int third = takeDigits(rest, 1, 4);
    if (third < 0)
        return std::nullopt;
    if (sign == '.')
        std::swap(first, third);
    const year_month_day date(year(first), month(static_cast<unsigned>(second)),
                              day(static_cast<unsigned>(third)));
    if (!date.ok() || first < 1000)
        return std::nullopt;
    text = rest;
    return sys_days(date).time_since_epoch().count();
}

// Takes "Z", "+02:00", "+0200" or "-05" from the end of a time of day: seconds ahead of UTC.
std::optional<double> takeOffset(std::string_view& time)
{
    if (time.ends_with('Z')) {
        time.remove_suffix(1);
        return 0.0;
    }
    const std::size_t sign = time.find_last_of("+-");
    if (sign == std::string_view::npos)
        return std::nullopt;
    std::string_view rest = time.substr(sign + 1);
    const int hours = takeDigits(rest, 2, 2);
    const bool hasMinutes = take(rest, ':') || !rest.empty();
    const int minutes = hasMinutes ? takeDigits(rest, 2, 2) : 0;
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || !rest.empty())
        return std::nullopt;
    const double ahead = hours * 3600.0 + minutes * 60.0;
    const bool isBehind = time[sign] == '-';
    time = time.substr(0, sign);
    return isBehind ? -ahead : ahead;
}

std::optional<SeriesPlace> calendarPlace(std::string_view text)
{
    const auto days = takeDate(text);
    if (!days)
        return std::nullopt;
    const double midnight = static_cast<double>(*days) * kSecondsADay;
    if (text.empty())
        return SeriesPlace{SeriesPlace::Kind::Calendar, midnight};
    if (text.front() != ' ' && text.front() != 'T')
        return std::nullopt;
    std::string_view rest = trimmed(text.substr(1));
    const auto offset = takeOffset(rest);
    const auto time = clockTime(trimmed(rest));
    if (!time)
        return std::nullopt;
    return offset ? SeriesPlace{SeriesPlace::Kind::Instant, midnight + *time - *offset}
                  : SeriesPlace{SeriesPlace::Kind::Calendar, midnight + *time};
}

std::optional<SeriesPlace> sampleNumber(std::string_view text)
{
    std::string digits(text);
    std::erase_if(digits, [](unsigned char c) { return std::isspace(c) != 0; });
    std::uint64_t sample = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, sample);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return SeriesPlace{SeriesPlace::Kind::Sample, static_cast<double>(sample)};
}

// A number and a unit behind it.
std::optional<SeriesPlace> elapsedPlace(std::string_view text)
{
    std::size_t end = 0;
    while (end < text.size() && std::string_view("+-0123456789.,").find(text[end]) != std::string_view::npos)
        ++end;
    // An exponent, but not the unit of "5 e".
    if (std::string_view rest = text.substr(end);
        !rest.empty() && (rest.front() == 'e' || rest.front() == 'E')) {
        rest.remove_prefix(1);
        if (!rest.empty() && (rest.front() == '+' || rest.front() == '-'))
            rest.remove_prefix(1);
        if (takeDigits(rest, 1, 3) >= 0)
            end = text.size() - rest.size();
    }
    const auto number = wholeNumber(text.substr(0, end));
    const std::string_view unit = trimmed(text.substr(end));
    if (!number || unit.empty() || unit.front() == ':' || unit.front() == '/')
        return std::nullopt;
    const double seconds = secondsOf(unit);
    if (seconds > 0.0)
        return SeriesPlace{SeriesPlace::Kind::Elapsed, *number * seconds};
    return SeriesPlace{SeriesPlace::Kind::Elapsed, *number, std::string(unit)};
}

MeantMoment momentAtWall(double wallSeconds)
{
    const auto wall = static_cast<Micros>(std::llround(wallSeconds * 1e6));
    const LocalInstants instants = localInstants(wall);
    MeantMoment meant{static_cast<double>(instants.first) / 1e6};
    if (isSkipped(wall))
        meant.note = "The clock never showed " + wallText(wall) + ": it was set forward.";
    else if (instants.first != instants.last)
        meant.note = "The clock showed " + wallText(wall) + " twice; this is the first time.";
    return meant;
}

}  // namespace

std::string bareTimeUnit(std::string_view unit)
{
    const std::string_view inner = trimmed(unitIn(unit));
    const std::string_view bare = inner.empty() ? trimmed(unit) : inner;
    return bare.empty() ? "s" : std::string(bare);
}

double secondsInTimeUnit(std::string_view unit)
{
    const double seconds = secondsOf(bareTimeUnit(unit));
    return seconds > 0.0 ? seconds : 1.0;
}

bool isSampleTime(double time)
{
    constexpr double kGreatest = std::numeric_limits<float>::max();
    return time > 0.0 && time <= kGreatest && static_cast<float>(time) > 0.0F;
}

std::optional<double> wholeNumber(std::string_view text)
{
    std::string bytes(trimmed(text));
    std::replace(bytes.begin(), bytes.end(), ',', '.');
    const char* const first = bytes.data() + (bytes.starts_with('+') ? 1 : 0);
    const char* const end = bytes.data() + bytes.size();
    double number = 0.0;
    const auto [stop, error] = std::from_chars(first, end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number))
        return std::nullopt;
    return number;
}

FileTime::FileTime(TSFILE& file)
    : m_file(file),
      m_unit(bareTimeUnit(file.timeUnit())),
      m_unitSeconds(secondsInTimeUnit(m_unit)),
      m_start(static_cast<double>(file.startSeconds()) + static_cast<double>(file.startTime())),
      m_dt(static_cast<double>(file.dt())),
      m_ring(file.ringStart() != 0),
      m_capacity(file.samples()),
      m_rows(m_capacity),
      m_last(m_capacity)
{
    if (!m_ring)
        return;
    m_first = file.ringStart();
    m_last = file.lastSample();
    const std::uint32_t held = m_last >= m_first ? m_last - m_first + 1 : 0;
    m_rows = std::min(m_capacity, held);
    m_last = m_first + m_rows - 1;
}

bool FileTime::hasCalendar() const
{
    if (m_file.startSeconds() != 0)
        return true;
    if (m_file.timeColumn() == 0 || m_rows == 0)
        return false;
    const auto isFar = [this](std::uint32_t sample) {
        return std::abs(elapsed(sample)) * m_unitSeconds > kSurelyCalendar;
    };
    return isFar(m_first) || isFar(m_last);
}

std::uint32_t FileTime::rowOf(std::uint32_t sample) const noexcept
{
    return !m_ring || m_capacity == 0 || sample == 0 ? sample : (sample - 1) % m_capacity + 1;
}

std::uint32_t FileTime::sampleIn(std::uint32_t row) const noexcept
{
    if (!m_ring || m_capacity == 0)
        return row;
    const std::uint32_t oldest = oldestRow();
    return row >= oldest ? m_first + (row - oldest) : m_first + (m_capacity - oldest) + row;
}

double FileTime::elapsed(std::uint32_t sample) const
{
    if (m_file.timeColumn() == 0)
        return static_cast<double>(sample) * m_dt;
    double time = static_cast<double>(m_file.value(rowOf(sample), m_file.timeColumn()));
    if (m_file.time32Column() != 0)
        time += std::bit_cast<std::uint32_t>(m_file.value(rowOf(sample), m_file.time32Column()));
    return time;
}

// Times run forward.
std::uint32_t FileTime::lastAtOrBefore(double elapsedTime) const
{
    std::uint32_t low = m_first;
    std::uint32_t high = m_last;
    while (low < high) {
        const std::uint32_t middle = low + (high - low + 1) / 2;
        if (elapsed(middle) <= elapsedTime)
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

std::optional<std::uint32_t> FileTime::sampleAt(double elapsedTime, std::string& reason) const
{
    const bool bySteps = m_file.timeColumn() == 0;
    if (m_rows == 0) {
        reason = "The file has no samples.";
        return std::nullopt;
    }
    if (bySteps && !(m_dt > 0.0)) {
        reason = "The file has no sample time.";
        return std::nullopt;
    }
    // A first sample at dt makes "0 s" mean that sample.
    const double slack = m_dt > 0.0 ? m_dt : 0.0;
    if (!(elapsedTime >= elapsed(m_first) - slack && elapsedTime <= elapsed(m_last) + slack)) {
        reason = "That time lies outside of the file.";
        return std::nullopt;
    }
    if (bySteps)
        return static_cast<std::uint32_t>(std::clamp(
            std::round(elapsedTime / m_dt), static_cast<double>(m_first), static_cast<double>(m_last)));
    const std::uint32_t before = lastAtOrBefore(elapsedTime);
    const bool nextIsNearer =
        before < m_last && elapsed(before + 1) - elapsedTime < elapsedTime - elapsed(before);
    return nextIsNearer ? before + 1 : before;
}

std::optional<SeriesPlace> parsePlace(std::string_view typed)
{
    const std::string_view text = trimmed(typed);
    if (const auto time = clockTime(text))
        return SeriesPlace{SeriesPlace::Kind::TimeOfDay, *time};
    if (auto place = calendarPlace(text))
        return place;
    if (text.ends_with('%')) {
        const auto share = wholeNumber(text.substr(0, text.size() - 1));
        return share ? std::optional(SeriesPlace{SeriesPlace::Kind::Percent, *share}) : std::nullopt;
    }
    if (auto place = sampleNumber(text))
        return place;
    return elapsedPlace(text);
}

MeantMoment momentOf(const SeriesPlace& place, double start, bool calendar)
{
    if (place.kind == SeriesPlace::Kind::Instant)
        return {place.number};
    if (place.kind == SeriesPlace::Kind::Calendar)
        return momentAtWall(place.number);
    // A header may claim any start.
    constexpr double kFarthest = 1e12;
    if (!calendar || !(std::fabs(start) < kFarthest))
        return {start + place.number};
    const double wall = static_cast<double>(wallAt(static_cast<std::int64_t>(std::floor(start)))) / 1e6;
    const double midnight = std::floor(wall / kSecondsADay) * kSecondsADay;
    MeantMoment today = momentAtWall(midnight + place.number);
    return today.seconds >= start ? today : momentAtWall(midnight + kSecondsADay + place.number);
}

namespace {

// What a text says of a file with so many samples or rows; nothing, and the reason, where it says nothing.
std::optional<SeriesPlace> placeMeant(std::string_view text, std::uint32_t held, const FileTime& time,
                                      std::string& reason)
{
    if (held == 0) {
        reason = "The file has no samples.";
        return std::nullopt;
    }
    auto place = parsePlace(text);
    if (place && (place->fileUnit.empty() || lowered(place->fileUnit) == lowered(time.unit())))
        return place;
    reason = "Type a sample (250000), a time (12.5 s, 13:45:30 or 2016-10-30 13:45) or a share (50%).";
    return std::nullopt;
}

bool isCount(const SeriesPlace& place)
{
    return place.kind == SeriesPlace::Kind::Sample || place.kind == SeriesPlace::Kind::Percent;
}

// A number or a share among `first` to `last`.
std::optional<std::uint32_t> countMeant(const SeriesPlace& place, std::uint32_t first, std::uint32_t last,
                                        std::string& reason)
{
    if (place.kind == SeriesPlace::Kind::Percent) {
        if (place.number >= 0.0 && place.number <= 100.0)
            return first + static_cast<std::uint32_t>(std::llround((last - first) * place.number / 100.0));
        reason = "A share lies between 0% and 100%.";
        return std::nullopt;
    }
    if (place.number >= first && place.number <= last)
        return static_cast<std::uint32_t>(place.number);
    reason = "The samples run from " + std::to_string(first) + " to " + std::to_string(last) + ".";
    return std::nullopt;
}

MeantSample sampleAtTime(const SeriesPlace& place, TSFILE& file, const FileTime& time)
{
    MeantSample meant;
    double elapsed = place.number / (place.fileUnit.empty() ? time.unitSeconds() : 1.0);
    if (place.kind != SeriesPlace::Kind::Elapsed) {
        const bool calendar = time.hasCalendar();
        if (!calendar && place.kind != SeriesPlace::Kind::TimeOfDay) {
            meant.reason = "The file has no calendar: its times count from 0.";
            return meant;
        }
        // A series from before 1970 begins where its first time is.
        const bool countsFromEpoch = calendar && file.startSeconds() == 0;
        const double first = countsFromEpoch ? time.moment(time.firstSample()) : time.start();
        const MeantMoment moment = momentOf(place, first, calendar);
        meant.note = moment.note;
        elapsed = (moment.seconds - time.start()) / time.unitSeconds();
    }
    meant.sample = time.sampleAt(elapsed, meant.reason);
    return meant;
}

}  // namespace

MeantSample meantSample(std::string_view text, TSFILE& file)
{
    const FileTime time(file);
    MeantSample meant;
    const auto place = placeMeant(text, time.rows(), time, meant.reason);
    if (place && !isCount(*place))
        return sampleAtTime(*place, file, time);
    if (place)
        meant.sample = countMeant(*place, time.firstSample(), time.lastSample(), meant.reason);
    return meant;
}

MeantRow meantRow(std::string_view text, TSFILE& file)
{
    const FileTime time(file);
    MeantRow meant;
    const auto place = placeMeant(text, file.samples(), time, meant.reason);
    if (place && isCount(*place)) {
        meant.row = countMeant(*place, 1, file.samples(), meant.reason);
    } else if (place) {
        const MeantSample found = sampleAtTime(*place, file, time);
        meant = {found.sample ? std::optional(time.rowOf(*found.sample)) : std::nullopt, found.reason,
                 found.note};
    }
    return meant;
}

}  // namespace veltrac
