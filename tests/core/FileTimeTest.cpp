// "Go to" as it is typed, on files that tell their time in different ways.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

using Kind = SeriesPlace::Kind;

// The row that a text goes to; 0 where it is refused.
std::uint32_t rowOf(const char* text, TSFILE& file)
{
    const MeantRow meant = meantRow(text, file);
    EXPECT_EQ(meant.row.has_value(), meant.reason.empty()) << text;
    return meant.row.value_or(0);
}

std::uint32_t localTime(int year, int month, int day, int hour)
{
    std::tm local = {};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_isdst = -1;
    return static_cast<std::uint32_t>(std::mktime(&local));
}

// A zone of the process, for the life of the object.
class Zone
{
public:
    explicit Zone(const char* rules)
    {
        ::setenv("TZ", rules, 1);
        ::tzset();
    }
    ~Zone()
    {
        ::unsetenv("TZ");
        ::tzset();
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;
};

struct Row
{
    const char* text;
    std::uint32_t row;
};

void expectRows(const std::vector<Row>& rows, TSFILE& file)
{
    for (const Row& row : rows)
        EXPECT_EQ(rowOf(row.text, file), row.row) << row.text;
}

}  // namespace

TEST(GoTo, ReadsWhatUsersType)
{
    struct Parsed
    {
        const char* text;
        Kind kind;
        double number;
        const char* unit;
    };
    const Parsed rows[] = {
        {"250000", Kind::Sample, 250000, ""},
        {" 250 000 ", Kind::Sample, 250000, ""},
        {"12.5 s", Kind::Elapsed, 12.5, ""},
        {"12,5s", Kind::Elapsed, 12.5, ""},
        {"250 ms", Kind::Elapsed, 0.25, ""},
        {"2 min", Kind::Elapsed, 120, ""},
        {"1e3 s", Kind::Elapsed, 1000, ""},
        {"3 months", Kind::Elapsed, 3, "months"},
        {"13:45:30", Kind::TimeOfDay, 49530, ""},
        {"13:45", Kind::TimeOfDay, 49500, ""},
        {"0:00:01.5", Kind::TimeOfDay, 1.5, ""},
        {"50%", Kind::Percent, 50, ""},
        {"12,5 %", Kind::Percent, 12.5, ""},
        {"5 e", Kind::Elapsed, 5, "e"},
        {"7 NS", Kind::Elapsed, 7e-9, ""},
        {"1970-01-02", Kind::Calendar, 86400, ""},
        {"1970-01-01 02:30:00.250", Kind::Calendar, 9000.25, ""},
        {"01.02.1970 1:00", Kind::Calendar, 2682000, ""},
        {"1969-12-31T23:00", Kind::Calendar, -3600, ""},
    };
    for (const Parsed& row : rows) {
        const auto target = parsePlace(row.text);
        ASSERT_TRUE(target.has_value()) << row.text;
        EXPECT_EQ(target->kind, row.kind) << row.text;
        EXPECT_NEAR(target->number, row.number, 1e-9) << row.text;
        EXPECT_EQ(target->fileUnit, row.unit) << row.text;
    }
    for (const char* const nothing :
         {"", "  ", "-5", "12.5", "24:00", "13:60", "%", "s", "1.2.3 s", "x 5", "2016-13-01", "30.02.2016",
          "2016-10-30 25:00", "2016-10-30 soon", "1/2/16"})
        EXPECT_FALSE(parsePlace(nothing).has_value()) << nothing;
}

TEST(GoTo, FindsRowsByTheSampleTime)
{
    const TestDirectory directory;
    TSFILE file("a.ts", 1001, 1, 0);
    file.dt(0.5F);
    expectRows({{"1", 1},
                {"1001", 1001},
                {"0", 0},
                {"1002", 0},
                {"0%", 1},
                {"50%", 501},
                {"100%", 1001},
                {"101%", 0},
                {"0 s", 1},
                {"0.5 s", 1},
                {"12.6 s", 25},
                {"500.5 s", 1001},
                {"502 s", 0},
                {"0:01:00", 120},
                {"1 h", 0},
                {"5 furlongs", 0}},
               file);
    for (const char* const minutes : {"min", "Time[min]"}) {
        file.timeUnit(minutes);
        expectRows({{"60 s", 2}, {"2 min", 4}, {"1 h", 120}}, file);
    }
    for (const char* const unit : {"years", "Age [years]"}) {
        file.timeUnit(unit);
        expectRows({{"12.5 years", 25}}, file);
    }
    file.dt(0.0F);
    expectRows({{"1 years", 0}, {"7", 7}}, file);
    TSFILE empty("b.ts", 0, 1, 0);
    expectRows({{"1", 0}, {"0%", 0}, {"1 s", 0}}, empty);
}

TEST(GoTo, TimeOfDayMeansTheNextOneAfterTheStart)
{
    const TestDirectory directory;
    TSFILE file("a.ts", 200000, 1, 0);
    file.dt(1.0F);
    file.startSeconds(localTime(2016, 5, 17, 22));
    expectRows({{"22:00:10", 10},
                {"23:00", 3600},
                {"1:00:00", 10800},
                {"21:59:59", 86399},
                {"2016-05-18 01:00:00.000", 10800},
                {"18.05.2016 1:00:00,6", 10801},
                {"2016-05-17", 0},
                {"2017-05-17 22:00:10", 0}},
               file);
    // A header may claim a start that no calendar has.
    for (const double start : {std::nan(""), -1e300, 1e18})
        EXPECT_FALSE(std::abs(momentOf({SeriesPlace::Kind::TimeOfDay, 60.0}, start, true).seconds) < 1e12);
}

TEST(GoTo, FindsRowsByTimeColumnsAndInRingFiles)
{
    const TestDirectory directory;
    TSFILE timed("a.ts", 5, 1, 2);
    const double times[] = {0.25, 1.5, 1.75, 70000.5, 70001.25};
    for (std::uint32_t s = 1; s <= 5; ++s)
        timed.setSampleTime(s, times[s - 1]);
    expectRows({{"0.25 s", 1}, {"1.6 s", 2}, {"1.7 s", 3}, {"70000 s", 4}, {"70001.25 s", 5}, {"80000 s", 0}},
               timed);
    EXPECT_EQ(FileTime(timed).elapsed(4), 70000.5);
    EXPECT_FALSE(FileTime(timed).hasCalendar());
    timed.setSampleTime(5, 1585699200.0);  // 2020
    EXPECT_TRUE(FileTime(timed).hasCalendar());

    TSFILE ring("b.ts", 100, 1, 0);
    ring.dt(1.0F);
    ring.setRingMode(true);
    ring.setValue(250, 1, 9.0F);  // samples 151 to 250; 250 lies in row 50
    const FileTime time(ring);
    EXPECT_EQ(time.sampleIn(50), 250U);
    EXPECT_EQ(time.sampleIn(51), 151U);
    EXPECT_EQ(time.oldestRow(), 51U);
    EXPECT_EQ(time.elapsed(250), 250.0);
    expectRows({{"250 s", 50}, {"151 s", 51}, {"200 s", 100}, {"100 s", 0}, {"100%", 100}}, ring);
    const auto sampleOf = [&](const char* text) { return meantSample(text, ring).sample.value_or(0); };
    EXPECT_EQ(sampleOf("0%"), 151U);
    EXPECT_EQ(sampleOf("100%"), 250U);
    EXPECT_EQ(sampleOf("200"), 200U);
    EXPECT_EQ(sampleOf("249.6 s"), 250U);
    EXPECT_EQ(meantSample("150", ring).reason, "The samples run from 151 to 250.");
}

TEST(FileTime, ARingThatIsNotFullHoldsTheWrittenRowsAlone)
{
    const TestDirectory directory;
    TSFILE ring("a.ts", 100, 2, 0);
    ring.dt(0.5F);
    ring.setRingMode(true);
    const float row[] = {1.0F, 2.0F};
    for (std::uint32_t s = 1; s <= 40; ++s)
        ring.writeRow(s, row, false);
    const FileTime time(ring);
    EXPECT_EQ(time.rows(), 40U);
    EXPECT_EQ(time.lastSample(), 40U);
    EXPECT_TRUE(time.isWritten(40));
    EXPECT_FALSE(time.isWritten(41));
    expectRows({{"20 s", 40}, {"30 s", 0}}, ring);
    EXPECT_EQ(meantSample("50%", ring).sample, 21U);
    EXPECT_FALSE(meantSample("41", ring).sample);
}

TEST(FileTime, SaysWhereTheClockIsSet)
{
    const Zone berlin("CET-1CEST,M3.5.0,M10.5.0/3");
    const TestDirectory directory;
    TSFILE file("a.ts", 400000, 1, 0);
    file.dt(60.0F);
    file.startSeconds(localTime(2016, 3, 26, 22));
    const auto noteOf = [&](const char* text) { return meantRow(text, file).note; };
    EXPECT_NE(noteOf("2016-03-27 02:30").find("never showed 2016-03-27 02:30:00"), std::string::npos);
    EXPECT_NE(noteOf("2:30").find("never showed"), std::string::npos);
    EXPECT_EQ(noteOf("2016-03-27 03:30"), "");
    EXPECT_EQ(meantRow("2016-03-27 03:30", file).row, 270U);
    EXPECT_NE(noteOf("2016-10-30 02:30").find("twice"), std::string::npos);
    EXPECT_EQ(*meantRow("2016-10-30 03:30", file).row - *meantRow("2016-10-30 02:30", file).row, 120U);
    // With its zone it is one time, wherever the clock stands.
    const std::uint32_t twice = *meantRow("2016-10-30 02:30", file).row;
    for (const char* const text : {"2016-10-30T02:30:00+02:00", "2016-10-30 02:30 +0200",
                                   "30.10.2016 00:30:00Z", "2016-10-29T20:00:00.0-04:30"})
        EXPECT_EQ(meantRow(text, file).row, twice) << text;
    EXPECT_EQ(meantRow("2016-10-30T02:30+01", file).row, twice + 60);
    EXPECT_EQ(noteOf("2016-10-30T02:30+01"), "");
    for (const char* const text : {"2016-10-30+02:00", "2016-10-30T02:30+", "2016-10-30T02:30+2",
                                   "2016-10-30T02:30+24:00", "2016-10-30T02:30+01:", "02:30Z"})
        EXPECT_FALSE(meantRow(text, file).row) << text;
}

TEST(FileTime, ASeriesFromBefore1970HasACalendar)
{
    const Zone utc("UTC");
    const TestDirectory directory;
    TSFILE file("a.ts", 3, 2, 1);
    for (std::uint32_t s = 1; s <= 3; ++s)
        file.setSampleTime(s, -378691200.0 + 86400.0 * s);  // from 1958-01-02 on
    EXPECT_TRUE(FileTime(file).hasCalendar());
    expectRows({{"1958-01-03 01:00", 2}, {"1958-01-03 23:00", 3}, {"13:00", 2}}, file);
}
