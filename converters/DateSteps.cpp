#include "converters/DateSteps.h"

#include <algorithm>
#include <map>

namespace veltrac {

namespace {

constexpr std::size_t kMostSteps = 10000;
constexpr double kClearly = 0.05;
constexpr std::size_t kYearOfMonths = 11;  // steps

// The share of the steps that are the commonest one.
double regularity(const std::vector<std::int64_t>& steps)
{
    std::map<std::int64_t, std::size_t> counts;
    std::size_t most = 0;
    for (const std::int64_t step : steps)
        if (step != 0)
            most = std::max(most, ++counts[step]);
    return steps.empty() ? 0.0 : static_cast<double>(most) / static_cast<double>(steps.size());
}

}  // namespace

void DateSteps::add(const DateParts& date, std::string_view text)
{
    if (m_ambiguousText.empty() && date.first != date.second && date.first <= 12 && date.second <= 12) {
        m_ambiguousText = text;
        m_ambiguous = date;
    }
    for (const DateOrder order : {DateOrder::DayMonth, DateOrder::MonthDay}) {
        Reading& reading = m_readings[static_cast<std::size_t>(order)];
        const auto day = midnight(date, order);
        if (!day || reading.days.size() >= kMostSteps)
            continue;
        const bool dayFirst = order == DateOrder::DayMonth;
        const int month = date.third * 12 + (dayFirst ? date.second : date.first);
        const Day now{*day, month, dayFirst ? date.first : date.second};
        reading.onTheFirst = reading.onTheFirst && now.dayOfMonth == 1;
        if (const auto& before = reading.before) {
            reading.days.push_back((now.midnight - before->midnight) / kMicrosPerDay);
            reading.months.push_back(now.dayOfMonth == before->dayOfMonth ? now.month - before->month : 0);
        }
        reading.before = now;
    }
}

std::optional<DateSteps::Verdict> DateSteps::verdict() const
{
    const auto score = [](const Reading& reading) {
        return std::max(regularity(reading.days), regularity(reading.months));
    };
    const double dayFirst = score(m_readings[0]);
    const double monthFirst = score(m_readings[1]);
    if (dayFirst > monthFirst + kClearly)
        return Verdict{DateOrder::DayMonth, true};
    if (monthFirst > dayFirst + kClearly)
        return Verdict{DateOrder::MonthDay, true};
    // A year of firsts of months is likelier than twelve days that begin with a month and go no further.
    for (const DateOrder order : {DateOrder::DayMonth, DateOrder::MonthDay}) {
        const Reading& reading = m_readings[static_cast<std::size_t>(order)];
        if (reading.onTheFirst && reading.months.size() >= kYearOfMonths && regularity(reading.months) == 1.0)
            return Verdict{order, false};
    }
    return std::nullopt;
}

}  // namespace veltrac
