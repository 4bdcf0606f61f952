// Which of a date's numbers is the day, where no date of a log tells: the reading under which its dates lie
// equal steps apart.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "converters/StampParts.h"

namespace veltrac {

class DateSteps
{
public:
    // The next date that names neither its year nor its day first, and its text.
    void add(const DateParts& date, std::string_view text);

    struct Verdict
    {
        DateOrder order;
        bool proven;  // else a mere guess: both readings are as regular
    };
    // Nothing where neither reading is more likely than the other.
    std::optional<Verdict> verdict() const;

    // The first date that means another day when it is read the other way; empty where none does.
    const std::string& ambiguousText() const { return m_ambiguousText; }
    const DateParts& ambiguousDate() const { return m_ambiguous; }

private:
    struct Day
    {
        Micros midnight;
        int month;  // since the year 0
        int dayOfMonth;
    };
    // The dates of one order.
    struct Reading
    {
        std::optional<Day> before;
        std::vector<std::int64_t> days;    // steps
        std::vector<std::int64_t> months;  // between equal days of months, else 0
        bool onTheFirst = true;            // of months, all of them
    };

    std::array<Reading, 2> m_readings;  // by DateOrder
    std::string m_ambiguousText;
    DateParts m_ambiguous;
};

}  // namespace veltrac
