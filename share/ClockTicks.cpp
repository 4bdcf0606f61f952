// Ticks at round places of the calendar and the clock.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>

#include "share/AxisTicks.h"

using namespace veltrac;

namespace {

enum class Unit { Second, Hour, Day, Month, Year };

constexpr double kMinute = 60.0;
constexpr double kHour = 3600.0;
constexpr double kDay = 86400.0;
constexpr double kMonth = 30.44 * kDay;
constexpr double kYear = 365.2425 * kDay;

struct ClockStep
{
    Unit unit;
    Unit minorUnit;
    double count;
    double minorCount;
    double seconds;  // about
};

constexpr ClockStep kSteps[] = {
    {Unit::Second, Unit::Second, 1, 0.2, 1},
    {Unit::Second, Unit::Second, 2, 0.5, 2},
    {Unit::Second, Unit::Second, 5, 1, 5},
    {Unit::Second, Unit::Second, 10, 2, 10},
    {Unit::Second, Unit::Second, 15, 5, 15},
    {Unit::Second, Unit::Second, 30, 5, 30},
    {Unit::Second, Unit::Second, kMinute, 10, kMinute},
    {Unit::Second, Unit::Second, 2 * kMinute, 30, 2 * kMinute},
    {Unit::Second, Unit::Second, 5 * kMinute, kMinute, 5 * kMinute},
    {Unit::Second, Unit::Second, 10 * kMinute, 2 * kMinute, 10 * kMinute},
    {Unit::Second, Unit::Second, 15 * kMinute, 5 * kMinute, 15 * kMinute},
    {Unit::Second, Unit::Second, 30 * kMinute, 5 * kMinute, 30 * kMinute},
    {Unit::Hour, Unit::Second, 1, 10 * kMinute, kHour},
    {Unit::Hour, Unit::Second, 2, 30 * kMinute, 2 * kHour},
    {Unit::Hour, Unit::Second, 3, 30 * kMinute, 3 * kHour},
    {Unit::Hour, Unit::Hour, 6, 1, 6 * kHour},
    {Unit::Hour, Unit::Hour, 12, 2, 12 * kHour},
    {Unit::Day, Unit::Hour, 1, 6, kDay},
    {Unit::Day, Unit::Hour, 2, 12, 2 * kDay},
    {Unit::Day, Unit::Day, 5, 1, 5 * kDay},
    {Unit::Day, Unit::Day, 10, 5, 10 * kDay},
    {Unit::Day, Unit::Day, 15, 5, 15 * kDay},
    {Unit::Month, Unit::Day, 1, 10, kMonth},
    {Unit::Month, Unit::Month, 2, 1, 2 * kMonth},
    {Unit::Month, Unit::Month, 3, 1, 3 * kMonth},
    {Unit::Month, Unit::Month, 6, 1, 6 * kMonth},
};

// 1, 2, 5 times a power of ten of a unit: number `rung` from 10^0 on, also downwards.
ClockStep decimalStep(Unit unit, double unitSeconds, int rung)
{
    const int place = ((rung % 3) + 3) % 3;
    const double power = std::pow(10.0, (rung - place) / 3);
    const double mantissas[] = {1.0, 2.0, 5.0};
    const double minors[] = {0.2, 0.5, 1.0};
    const double count = mantissas[place] * power;
    if (unit == Unit::Year && rung < 2)
        return {unit, Unit::Month, count, count * 3, count * unitSeconds};
    return {unit, unit, count, minors[place] * power, count * unitSeconds};
}

// Local time or UTC, from and to seconds since 1970.
class Calendar
{
public:
    explicit Calendar(ClockZone zone) : m_zone(zone) {}

    std::tm civil(double t) const
    {
        const auto whole = static_cast<std::time_t>(std::floor(t));
        std::tm fields = {};
        m_zone == ClockZone::Utc ? gmtime_r(&whole, &fields) : localtime_r(&whole, &fields);
        return fields;
    }

    double seconds(std::int64_t year, int month, int day, int hour) const
    {
        std::tm fields = {};
        fields.tm_year = static_cast<int>(year - 1900);
        fields.tm_mon = month - 1;
        fields.tm_mday = day;
        fields.tm_hour = hour;
        fields.tm_isdst = -1;
        return static_cast<double>(m_zone == ClockZone::Utc ? timegm(&fields) : std::mktime(&fields));
    }

    // Seconds that the clock is ahead of UTC.
    double offset(double t) const
    {
        std::tm fields = civil(t);
        return static_cast<double>(timegm(&fields)) - std::floor(t);
    }

private:
    ClockZone m_zone;
};

int daysOf(std::int64_t year, int month)
{
    const bool isLeap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    const int days[] = {31, isLeap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days[month - 1];
}

// The round places of a step within [least, most], rising.
class Places
{
public:
    Places(const Calendar& calendar, double least, double most)
        : m_calendar(calendar), m_least(least), m_most(most)
    {
    }

    std::vector<double> of(Unit unit, double count)
    {
        m_places.clear();
        if (unit == Unit::Second)
            addSeconds(count);
        else if (unit == Unit::Year)
            addYears(static_cast<std::int64_t>(count));
        else
            addMonths(unit, static_cast<int>(count));
        return m_places;
    }

private:
    void add(double t)
    {
        // The hour that summer time leaves out comes back as the one behind it.
        if (t >= m_least && t <= m_most && (m_places.empty() || t > m_places.back()))
            m_places.push_back(t);
    }

    void addSeconds(double step)
    {
        constexpr double kSlack = 1e-6;
        const double offset = step > 1.0 ? m_calendar.offset(m_least) : 0.0;
        const double first = std::ceil((m_least + offset) / step - kSlack);
        const double last = std::floor((m_most + offset) / step + kSlack);
        // Steps below a second are whole parts of it: dividing gives the nearest double.
        const double parts = std::round(1.0 / step);
        const auto count = static_cast<std::int64_t>(last - first);
        for (std::int64_t i = 0; i <= count; ++i) {
            const double k = first + static_cast<double>(i);
            m_places.push_back((step < 1.0 ? k / parts : k * step) - offset);
        }
    }

    void addYears(std::int64_t step)
    {
        const std::int64_t last = yearOf(m_most);
        for (std::int64_t year = yearOf(m_least); year <= last + 1; ++year)
            if (year % step == 0)
                add(m_calendar.seconds(year, 1, 1, 0));
    }

    void addMonths(Unit unit, int step)
    {
        const std::tm begin = m_calendar.civil(m_least);
        std::int64_t year = yearOf(m_least);
        int month = begin.tm_mon + 1;
        while (m_calendar.seconds(year, month, 1, 0) <= m_most) {
            if (unit != Unit::Month)
                addDays(year, month, unit == Unit::Day ? step : 1, unit == Unit::Hour ? step : 24);
            else if ((month - 1) % step == 0)
                add(m_calendar.seconds(year, month, 1, 0));
            year += month / 12;
            month = month % 12 + 1;
        }
    }

    void addDays(std::int64_t year, int month, int step, int hourStep)
    {
        const int days = daysOf(year, month);
        for (int day = 1; day <= days; ++day) {
            // 1, 3, 5, … or 1, 5, 10, …; not so near the next 1st that its label would stand in the way.
            const bool isRound = step <= 2 ? (day - 1) % step == 0 : day == 1 || day % step == 0;
            if (!isRound || (day > 1 && 2 * (days + 1 - day) < step + 1))
                continue;
            if (m_calendar.seconds(year, month, day + 1, 0) < m_least)
                continue;
            if (m_calendar.seconds(year, month, day, 0) > m_most)
                break;
            for (int hour = 0; hour < 24; hour += hourStep)
                add(m_calendar.seconds(year, month, day, hour));
        }
    }

    std::int64_t yearOf(double t) const { return m_calendar.civil(t).tm_year + std::int64_t{1900}; }

    const Calendar& m_calendar;
    double m_least;
    double m_most;
    std::vector<double> m_places;
};

std::string formatted(const char* format, const std::tm& fields)
{
    char text[64];
    return {text, std::strftime(text, sizeof text, format, &fields)};
}

std::string yearText(const std::tm& fields)
{
    return std::to_string(fields.tm_year + 1900);
}

std::string dayText(const std::tm& fields)
{
    char text[32];
    std::snprintf(text, sizeof text, "%02d-%02d", fields.tm_mon + 1, fields.tm_mday);
    return text;
}

std::string dateText(const std::tm& fields)
{
    return yearText(fields) + '-' + dayText(fields);
}

// English whatever the locale, as all of the program's texts.
std::string monthText(const std::tm& fields)
{
    static constexpr const char* kNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    return kNames[fields.tm_mon];
}

// Seconds and their part: "30.25".
std::string fractionText(const std::tm& fields, double t, double step)
{
    const int decimals = std::clamp(static_cast<int>(std::ceil(-std::log10(step) - 1e-9)), 1, 9);
    char text[32];
    std::snprintf(text, sizeof text, "%0*.*f", decimals + 3, decimals, fields.tm_sec + (t - std::floor(t)));
    return text;
}

// What has changed since the tick before; `before` is that of the left edge for the first.
std::string labelOf(const ClockStep& step, double t, const std::tm& now, const std::tm& before)
{
    const bool isNewYear = now.tm_year != before.tm_year;
    const bool isNewDay = isNewYear || now.tm_yday != before.tm_yday;
    switch (step.unit) {
        case Unit::Year:
            return yearText(now);
        case Unit::Month:
            return now.tm_mon == 0 ? yearText(now) : monthText(now);
        case Unit::Day:
            return isNewYear ? dateText(now) : dayText(now);
        case Unit::Hour:
        case Unit::Second:
            break;
    }
    if (step.count < 1.0) {
        const bool isNewMinute = isNewDay || now.tm_hour != before.tm_hour || now.tm_min != before.tm_min;
        return isNewMinute ? formatted("%H:%M:%S", now) : fractionText(now, t, step.count);
    }
    const bool isMidnight = now.tm_hour == 0 && now.tm_min == 0 && now.tm_sec == 0;
    if (isNewDay && isMidnight)
        return isNewYear ? dateText(now) : dayText(now);
    return formatted(step.unit == Unit::Second && step.count < kMinute ? "%H:%M:%S" : "%H:%M", now);
}

AxisTicks clockWith(const ClockStep& step, double least, double most, double edge, const Calendar& calendar)
{
    AxisTicks axis;
    Places places(calendar, least, most);
    std::tm before = calendar.civil(edge);
    for (const double t : places.of(step.unit, step.count)) {
        const std::tm now = calendar.civil(t);
        axis.ticks.push_back({t, labelOf(step, t, now, before), true});
        before = now;
    }
    const double half = std::min(step.seconds, 1.0) * 1e-3;
    std::vector<double> majors;
    for (const Tick& tick : axis.ticks)
        majors.push_back(tick.position);
    for (const double t : places.of(step.minorUnit, step.minorCount)) {
        const auto nearest = std::lower_bound(majors.begin(), majors.end(), t - half);
        if (nearest == majors.end() || *nearest > t + half)
            axis.ticks.push_back({t, "", false});
    }
    std::sort(axis.ticks.begin(), axis.ticks.end(),
              [](const Tick& a, const Tick& b) { return a.position < b.position; });
    const std::tm left = calendar.civil(edge);
    axis.edgeText = dateText(left);
    if (step.count < 1.0)
        axis.edgeText += formatted(" %H:%M", left);
    return axis;
}

// The steps from fine to coarse, from the first whose ticks are few enough.
class Ladder
{
public:
    explicit Ladder(double span)
    {
        const double finest = span / kMostLabels;
        if (finest <= 0.5) {
            m_rung = static_cast<int>(std::floor(3.0 * std::log10(finest))) - 1;
            while (m_rung < 0 && decimalStep(Unit::Second, 1.0, m_rung).seconds < finest)
                ++m_rung;
        }
        while (step().seconds < finest)
            next();
    }

    ClockStep step() const
    {
        if (m_rung < 0)
            return decimalStep(Unit::Second, 1.0, m_rung);
        constexpr int kCount = sizeof kSteps / sizeof *kSteps;
        return m_rung < kCount ? kSteps[m_rung] : decimalStep(Unit::Year, kYear, m_rung - kCount);
    }

    void next() { ++m_rung; }

private:
    int m_rung = 0;  // of kSteps; below it parts of a second, behind it years
};

}  // namespace

AxisTicks veltrac::clockTicks(double first, double last, const LabelRoom& room, ClockZone zone)
{
    const double least = std::min(first, last);
    const double most = std::max(first, last);
    constexpr double kResolution = 1e-6;  // doubles in our days do not hold much finer seconds
    constexpr double kFurthest = 2.5e11;  // year 9892
    if (!(most - least >= kResolution))
        return {};
    if (!(least >= -kFurthest) || !(most <= kFurthest))
        return linearTicks(first, last, room);
    const Calendar calendar(zone);
    AxisTicks axis;
    for (Ladder ladder(most - least);; ladder.next()) {
        AxisTicks next = clockWith(ladder.step(), least, most, first, calendar);
        if (labelsFit(next, most - least, room))
            return labelCount(next) > 0 || axis.ticks.empty() ? next : oneLabel(std::move(axis));
        axis = std::move(next);
    }
}
