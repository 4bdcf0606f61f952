#include "share/AxisTicks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace veltrac;

namespace {

// 1000 units long, 7 a character.
LabelRoom roomOf(double length)
{
    return {length, [](const std::string& label) { return 7.0 * static_cast<double>(label.size()); }, 10.0};
}

std::string labelsOf(const AxisTicks& axis)
{
    std::string all;
    for (const Tick& tick : axis.ticks)
        if (!tick.label.empty())
            all += (all.empty() ? "" : " ") + tick.label;
    return all + (axis.powerText.empty() ? "" : " " + axis.powerText);
}

double utc(int year, int month, int day, int hour = 0, int minute = 0, double second = 0.0)
{
    std::tm fields = {};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    return static_cast<double>(timegm(&fields)) + second;
}

struct NumberRow
{
    double first, last, length;
    const char* labels;
};

TEST(AxisTicks, LinearStepsAre125AndLabelsHaveNoTrailingZeros)
{
    const NumberRow rows[] = {
        {0, 10, 1000, "0 1 2 3 4 5 6 7 8 9 10"},
        {0, 10, 60, "0 5 10"},
        {10, 0, 60, "0 5 10"},
        {-0.3, 0.3, 300, "-0.3 -0.2 -0.1 0 0.1 0.2 0.3"},
        {0.25, 1.05, 1000, "0.3 0.4 0.5 0.6 0.7 0.8 0.9 1"},
        {0, 2.5e6, 300, "0 0.5 1 1.5 2 2.5 ×10⁶"},
        {0, 4e-5, 110, "0 10 20 30 40 ×10⁻⁶"},
        {250000001, 250000006, 1000,
         "250000001 250000001.5 250000002 250000002.5 250000003 250000003.5 250000004 250000004.5 "
         "250000005 250000005.5 250000006"},
        {3e6, 9e6, 10, "5 ×10⁶"},
        {1000000, 1000010, 150, "1000000 1000005 1000010"},  // no shorter as 1.000005
        {999.9, 1000.1, 300, "999.9 999.95 1000 1000.05 1000.1"},
        {0.4, 9.6, 10, "5"},
        {-8.8, 8.8, 60, "-5 5"},  // one number would tell no scale
    };
    for (const NumberRow& row : rows)
        EXPECT_EQ(labelsOf(linearTicks(row.first, row.last, roomOf(row.length))), row.labels)
            << row.first << " to " << row.last << " on " << row.length;
}

TEST(AxisTicks, HopelessRangesGiveNoTicks)
{
    const double infinite = std::numeric_limits<double>::infinity();
    const double bad[][2] = {
        {1, 1}, {std::nan(""), 1}, {0, infinite}, {1e15, 1e15 + 0.125}, {-1e308 * 1.7, 1e308 * 1.7}};
    for (const auto& range : bad) {
        EXPECT_TRUE(linearTicks(range[0], range[1], roomOf(500)).ticks.empty()) << range[0];
        EXPECT_TRUE(logTicks(range[0], range[1] == 1 ? range[0] : range[1], roomOf(500)).ticks.empty());
    }
    EXPECT_TRUE(clockTicks(5, 5, roomOf(500)).ticks.empty());
    EXPECT_FALSE(clockTicks(0, 1e15, roomOf(500)).ticks.empty());  // numbers, beyond the calendar
}

TEST(AxisTicks, LogarithmicDecades)
{
    const NumberRow rows[] = {
        {-2, 2, 300, "0.01 0.1 1 10 100"},          {-2, 2, 1000, "0.01 0.1 1 10 100"},
        {-1, 1, 1000, "0.1 0.2 0.5 1 2 5 10"},      {0, 4.344, 600, "1 10 100 1000 10000"},
        {0, 6, 600, "10⁰ 10¹ 10² 10³ 10⁴ 10⁵ 10⁶"}, {0, 30, 400, "10⁰ 10⁶ 10¹² 10¹⁸ 10²⁴ 10³⁰"},
        {0.05, 0.55, 300, "1.5 2 2.5 3 3.5"},
    };
    for (const NumberRow& row : rows)
        EXPECT_EQ(labelsOf(logTicks(row.first, row.last, roomOf(row.length))), row.labels)
            << row.first << " to " << row.last << " on " << row.length;
    const AxisTicks axis = logTicks(0, 1, roomOf(100));
    ASSERT_EQ(axis.ticks.size(), 10U);
    for (int digit = 1; digit <= 10; ++digit)
        EXPECT_NEAR(axis.ticks[static_cast<std::size_t>(digit - 1)].position, std::log10(digit), 1e-12);
}

TEST(AxisTicks, ClockLabelsShowWhatChanges)
{
    struct Row
    {
        double first, last, length;
        const char* labels;
        const char* edge;
    };
    const Row rows[] = {
        {utc(2016, 5, 17, 13, 45, 30.4), utc(2016, 5, 17, 13, 45, 31.45), 900,
         "30.4 30.5 30.6 30.7 30.8 30.9 31.0 31.1 31.2 31.3 31.4", "2016-05-17 13:45"},
        {utc(2016, 5, 17, 13, 45, 59.7), utc(2016, 5, 17, 13, 46, 0.25), 480,
         "59.7 59.8 59.9 13:46:00 00.1 00.2", "2016-05-17 13:45"},
        {utc(2016, 5, 17, 13, 45, 1), utc(2016, 5, 17, 13, 46, 1), 360, "13:45:15 13:45:30 13:45:45 13:46:00",
         "2016-05-17"},
        {utc(2016, 5, 17, 13, 45), utc(2016, 5, 17, 14, 20), 900,
         "13:45 13:50 13:55 14:00 14:05 14:10 14:15 14:20", "2016-05-17"},
        {utc(2015, 12, 31, 15), utc(2016, 1, 1, 15), 520,
         "15:00 18:00 21:00 2016-01-01 03:00 06:00 09:00 12:00 15:00", "2015-12-31"},
        {utc(2016, 2, 26), utc(2016, 3, 3), 450, "02-26 02-27 02-28 02-29 03-01 03-02 03-03", "2016-02-26"},
        {utc(2015, 1, 20), utc(2015, 3, 12), 900,
         "01-20 01-25 02-01 02-05 02-10 02-15 02-20 02-25 03-01 03-05 03-10", "2015-01-20"},
        {utc(2015, 9, 20), utc(2016, 7, 2), 900, "Oct Nov Dec 2016 Feb Mar Apr May Jun Jul", "2015-09-20"},
        {utc(1958, 3, 1), utc(2001, 12, 1), 900, "1960 1965 1970 1975 1980 1985 1990 1995 2000",
         "1958-03-01"},
    };
    for (const Row& row : rows) {
        const AxisTicks axis = clockTicks(row.first, row.last, roomOf(row.length), ClockZone::Utc);
        EXPECT_EQ(labelsOf(axis), row.labels);
        EXPECT_EQ(axis.edgeText, row.edge);
    }
}

TEST(AxisTicks, LocalClockTicksStandAtLocalMidnightAcrossSummerTime)
{
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    const AxisTicks axis = clockTicks(utc(2016, 3, 25, 12), utc(2016, 3, 29, 12), roomOf(400));
    std::vector<double> days;
    for (const Tick& tick : axis.ticks)
        if (tick.label == "03-27" || tick.label == "03-28")
            days.push_back(tick.position);
    setenv("TZ", "UTC", 1);
    tzset();
    ASSERT_EQ(days.size(), 2U);
    EXPECT_EQ(days[0], utc(2016, 3, 26, 23));
    EXPECT_EQ(days[1], utc(2016, 3, 27, 22));  // that day has 23 hours
}

TEST(AxisTicks, LabelsNeverOverlapAndTicksStayInside)
{
    const auto check = [](const AxisTicks& axis, double first, double last, const LabelRoom& room) {
        const double slack = (last - first) * 1e-6;
        double end = -std::numeric_limits<double>::infinity();
        double before = end;
        for (const Tick& tick : axis.ticks) {
            ASSERT_GE(tick.position, first - slack);
            ASSERT_LE(tick.position, last + slack);
            ASSERT_GT(tick.position, before);
            before = tick.position;
            if (tick.label.empty())
                continue;
            const double at = (tick.position - first) * room.length / (last - first);
            const double half = room.extent(tick.label) / 2.0;
            ASSERT_GE(at - half, end) << tick.label << " on " << first << " to " << last;
            end = at + half + room.gap * 0.999;
        }
    };
    unsigned seed = 12345;
    const auto random = [&seed] { return (seed = seed * 1664525U + 1013904223U) / 4294967296.0; };
    for (int i = 0; i < 3000; ++i) {
        const double span = std::pow(10.0, 14.0 * random() - 5.0);
        const double first = (random() - 0.5) * span * std::pow(10.0, 4.0 * random());
        const LabelRoom room = roomOf(50.0 + 1500.0 * random());
        check(linearTicks(first, first + span, room), first, first + span, room);
        check(clockTicks(first, first + span, room, ClockZone::Utc), first, first + span, room);
        const double decades = 40.0 * random() * random() + 0.01;
        const double from = 20.0 * (random() - 0.5);
        check(logTicks(from, from + decades, room), from, from + decades, room);
    }
}

}  // namespace
