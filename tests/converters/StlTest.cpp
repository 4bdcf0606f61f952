// Smart tool logs as different loggers write them, each with what must come out.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <random>

#include "converters/ImportKind.h"
#include "converters/STLObject.h"
#include "converters/STLReport.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "tests/FileSizeLimit.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

const fs::path kData = TEST_DATA;
constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
constexpr double kNoon = 1463492730.0;  // 2016-05-17 13:45:30 UTC
constexpr double kOslo = 7200.0;        // in summer

struct Stl : testing::Test
{
    Stl()
    {
        std::string name = (fs::temp_directory_path() / "stlXXXXXX").string();
        fs::current_path(mkdtemp(name.data()));
        setenv("TZ", "Europe/Oslo", 1);
    }
    ~Stl() override
    {
        const fs::path directory = fs::current_path();
        fs::current_path("/");
        fs::remove_all(directory);
    }
    static std::unique_ptr<TSFILE> import(STLObject& log)
    {
        EXPECT_EQ(JobOutcome::Done, log.check({}));
        EXPECT_EQ(JobOutcome::Done, importSTL(log, "out.ts", {}));
        return openTsFile("out.ts", true);
    }
    static std::string errorOf(const fs::path& file)
    {
        try {
            STLObject log(file);
            log.detect();
            log.check({});
        } catch (const STLError& error) {
            return error.what();
        }
        return "";
    }
    static void write(const fs::path& file, const std::string& text)
    {
        std::ofstream(file, std::ios::binary) << text;
    }
};

struct Case
{
    const char* file;
    STLTimeSource source;
    std::vector<std::string> names;         // as in the ts-file, time columns included
    std::vector<std::string> descriptions;  // likewise
    std::vector<std::vector<float>> rows;   // of the value columns
    double first;                           // seconds since the epoch
    double dt;
    std::size_t troubles;
};

TEST_F(Stl, everyLoggersFileComesOutRight)
{
    using enum STLTimeSource;
    const std::vector<Case> cases = {
        {"preamble.stl",
         DateAndTime,
         {"Temp", "Press"},
         {"Temp [°C]", "Press [mbar]"},
         {{20, 1013}, {20.01F, kNone}, {1020.25F, 1013}},
         kNoon - kOslo,
         1,
         0},
        {"windows1252.stl",
         DateAndTime,
         {"Öldruck", "Größe"},
         {"Öldruck [bar]", "Größe [mm]"},
         {{1.5F, 2}, {1.6F, kNone}, {1.7F, 4}},
         1463529599 - kOslo,
         1,
         0},
        {"quotes.stl",
         Stamp,
         {"Flow, main", "Temp"},
         {"Flow, main [l/s]", "Temp"},
         {{1.5F, -10}, {1.6F, kNone}, {kNone, 3}},
         kNoon,
         0.5,
         1},
        {"tabs.stl",
         ElapsedSeconds,
         {"Force", "Force~2", "Temperature"},
         {"Force [kN]", "Force [kN]", "Temperature inside"},
         {{1, 2, 3}, {2, 3, 4}, {3, 4, 5}, {4, 5, 6}},
         0,
         0.01,
         0},
        {"blanks.stl",
         Typed,
         {"Col-1", "Col-2"},
         {"", ""},
         {{1.5F, 2.5F}, {1.6F, 2.6F}, {1.7F, 2.7F}},
         1,
         1,
         0},
        {"zones.stl", Stamp, {"A"}, {"A"}, {{1}, {2}, {3}}, 1459040340, 60, 0},
        {"ampm-blanks.stl", DateAndTime, {"A"}, {"A"}, {{1}, {2}, {3}}, 1463486399 - kOslo, 1, 0},
        {"elapsed.stl", ElapsedTime, {"P"}, {"P"}, {{1}, {2}, {3}}, 1463486400 - kOslo + 86340, 60, 0},
        {"time-of-day.stl", ElapsedTime, {"P"}, {"P"}, {{1}, {2}, {3}, {4}}, 1463529598 - kOslo, 1, 0},
        {"unix.stl", UnixMilliseconds, {"Col-2"}, {""}, {{1}, {2}, {3}, {4}}, kNoon, 0.25, 0},
        {"rate.stl",
         Typed,
         {"A", "B"},
         {"A", "B"},
         {{1, 2}, {3, 4}, {5, 6}},
         kNoon - kOslo + 0.004,
         0.004,
         0},
        {"four-line-head.stl",
         Stamp,
         {"Record", "AirT_Avg", "RH"},
         {"Record [RN]", "AirT_Avg [Deg C]", "RH [%]"},
         {{0, 20.5F, 80}, {1, 20.75F, kNone}, {2, -0.5F, 82}},
         kNoon - kOslo,
         60,
         0},
        {"apostrophes.stl",
         Stamp,
         {"Druck"},
         {"Druck [Pa]"},
         {{101325}, {101400.5F}, {99999}},
         1463443200 - kOslo,
         86400,
         0},
        {"crlf.stl",
         Typed,
         {"Kraft", "Weg"},
         {"Kraft [kN]", "Weg [mm]"},
         {{0.0015F, -0.5F}, {2, 1}, {kNone, 3}},
         kNoon - kOslo,
         0.0004,
         0},
        {"month-first.stl",
         Stamp,
         {"Time", "Level"},
         {"", "Level"},
         {{1}, {2}, {3}, {4}},
         1457098200 - 3600,
         600,
         0},
        {"troubles.stl",
         Stamp,
         {"Time", "A", "B"},
         {"", "A", "B"},
         {{1, 2}, {kNone, 2}, {1, kNone}, {1, 2}, {1, kNone}},
         1463443200 - kOslo,
         600,
         6},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        STLObject log(kData / c.file);
        log.detect();
        EXPECT_EQ(c.source, log.format().timeSource);
        const auto ts = import(log);
        EXPECT_EQ(c.troubles, log.found().troubleCount);
        ASSERT_EQ(c.names.size(), ts->columns());
        const auto extra = static_cast<std::uint32_t>(ts->timeMode());
        for (std::uint32_t col = 1; col <= ts->columns(); ++col) {
            EXPECT_EQ(c.names[col - 1], ts->columnName(col));
            EXPECT_EQ(c.descriptions[col - 1], ts->columnDescription(col));
        }
        ASSERT_EQ(c.rows.size(), ts->samples());
        for (std::uint32_t row = 1; row <= ts->samples(); ++row)
            for (std::uint32_t col = 1; col <= c.rows[0].size(); ++col) {
                const float v = ts->value(row, col + extra);
                const float wanted = c.rows[row - 1][col - 1];
                EXPECT_TRUE(std::isnan(wanted) ? std::isnan(v) : v == wanted)
                    << row << ' ' << col << ' ' << v;
            }
        EXPECT_FLOAT_EQ(static_cast<float>(c.dt), ts->dt());
        const double start = ts->startSeconds() + static_cast<double>(ts->startTime());
        const double first = start + (extra > 0 ? ts->value(1, 1) : c.dt);
        EXPECT_NEAR(c.first, first, 1e-3);
    }
}

struct Written
{
    const char* text;
    double first;  // seconds since the epoch
    double dt;
    std::vector<std::string> names;
    std::vector<float> row;  // the first one
};

TEST_F(Stl, whatOtherCountriesAndMakersWriteComesOutRight)
{
    constexpr double kStart = kNoon - kOslo;
    const std::vector<Written> cases = {
        {"Date,V\n17-May-2016 13:45:30,1\n17-May-2016 13:45:31,2\n", kStart, 1, {"V"}, {1}},
        {"Zeit;V\n17. Mai 2016 13:45:30;1,5\n17. Mai 2016 13:45:31;2,5\n", kStart, 1, {"V"}, {1.5F}},
        {"T,V\n\"May 17, 2016 01:45:30 PM\",1\n\"May 17, 2016 01:45:31 p.m.\",2\n", kStart, 1, {"V"}, {1}},
        {"Zeit;V\n17.05.2016 13:45 Uhr;1,5\n17.05.2016 13:46 Uhr;2,5\n", kStart - 30, 60, {"V"}, {1.5F}},
        {"Data;Ora;V\n17/05/2016;13.45.30;1\n17/05/2016;13.45.31;2\n", kStart, 1, {"V"}, {1}},
        {"T;V\n2016-05-17 13:45:30:000;1\n2016-05-17 13:45:30:125;2\n", kStart, 0.125, {"V"}, {1}},
        {"T;V\n17.05.2016 13:45:30 MESZ;1\n17.05.2016 13:45:31 MESZ;2\n", kStart, 1, {"V"}, {1}},
        {"Time (UTC),V\n2016-05-17 13:45:30,1\n2016-05-17 13:45:31,2\n", kNoon, 1, {"V"}, {1}},
        {"T,V\n20160517T134530Z,1\n20160517T134531Z,2\n", kNoon, 1, {"V"}, {1}},
        {"ID;WHEN;V\n7;201605171345;1\n7;201605171346;2\n", kStart - 30, 60, {"ID", "V"}, {7, 1}},
        {"Day,Time,V\n20160517,134530,1\n20160517,134531,2\n", kStart, 1, {"V"}, {1}},
        {"T,V\n5/8/16 9:58a,1\n5/8/16 9:59a,2\n", 1462701480 - kOslo, 60, {"V"}, {1}},
        {"T,V\n1463492730000000,1\n1463492730250000,2\n", kNoon, 0.25, {"V"}, {1}},
        {"T,V\n1463492730000000000,1\n1463492730250000000,2\n", kNoon, 0.25, {"V"}, {1}},
        {"t [ms];V\n2;1,5\n4;2,5\n", 0.002, 0.002, {"V"}, {1.5F}},
        {"time_min,V\n5,1\n10,2\n", 300, 300, {"V"}, {1}},
        {"T;V\r2016-05-17 13:45:30;1\r2016-05-17 13:45:31;2\r", kStart, 1, {"V"}, {1}},
        {"T,V\n2016-05-17 13:45:30,\"1,234.5\"\n2016-05-17 13:45:31,\"1,235.5\"\n",
         kStart,
         1,
         {"V"},
         {1234.5F}},
        {"T,V\n2016-05-17 13:45:30,\"1,5\"\n2016-05-17 13:45:31,\"2,5\"\n", kStart, 1, {"V"}, {1.5F}},
        {"T;V\n2016-05-17 13:45:30;\u22121\u202F234,5\n2016-05-17 13:45:31;0,5\n",
         kStart,
         1,
         {"V"},
         {-1234.5F}},
        {"T;V\n2016-05-17 13:45:30;20,5 °C\n2016-05-17 13:45:31;20,6 °C\n", kStart, 1, {"V"}, {20.5F}},
        {"\"T\";\"V\";\"Note\"\n\"2016-05-17 13:45:30\";\"1\";\"a \"\"b\"\"; c\"\n"
         "\"2016-05-17 13:45:31\";\"2\";\"d\"\n",
         kStart,
         1,
         {"V"},
         {1}},
        {"Interval,4\nLength,8\nA,1\nB,2\nC,3\nD,4\nTIME,CH1\n0.5,1\n1.0,2\n1.5,3\n2.0,4\n2.5,5\n3.0,6\n"
         "3.5,7\n4.0,8\n",
         0.5,
         0.5,
         {"CH1"},
         {1}},
        {"# made in May\n# T,A,B\n2016-05-17 13:45:30,1,2\n2016-05-17 13:45:31,3,4\n",
         kStart,
         1,
         {"A", "B"},
         {1, 2}},
        {"# ID,DAY,HH,V\n#\n7,20160517,   13,1\n7,20160517,   14,2\n",
         kStart - 2730,
         3600,
         {"ID", "V"},
         {7, 1}},
        {"T;A;B\n1463492730;1;5\n1463492731;2;\n1463492732;3;\n1463492733;4;\n1463492734;5;\n1463492735;6;\n"
         "1463492736;7;9\n",
         kNoon,
         1,
         {"A", "B"},
         {1, 5}},
        {"T\tA\tRemark\n2016-05-17 13:45:30\t1\n2016-05-17 13:45:31\t3\n", kStart, 1, {"A"}, {1}},
    };
    for (const Written& c : cases) {
        SCOPED_TRACE(c.text);
        write("a.csv", c.text);
        STLObject log("a.csv");
        log.detect();
        const auto ts = import(log);
        EXPECT_EQ(0U, log.found().troubleCount);
        EXPECT_EQ(c.names, log.columnNames());
        ASSERT_EQ(c.row.size(), ts->columns());
        for (std::uint32_t col = 1; col <= ts->columns(); ++col)
            EXPECT_EQ(c.row[col - 1], ts->value(1, col));
        EXPECT_FLOAT_EQ(static_cast<float>(c.dt), ts->dt());
        EXPECT_NEAR(c.first, ts->startSeconds() + static_cast<double>(ts->startTime()) + c.dt, 1e-6);
    }
}

TEST_F(Stl, newestRowFirstIsTurnedRound)
{
    constexpr int kRows = 100001;  // more than a run from either end
    std::string text = "T;W;V\n";
    for (int i = kRows; i >= 1; --i)
        text += std::to_string(1463492730 + i) + (i % 10 == 7 ? ";5;" : ";;") + std::to_string(i) + '\n';
    write("a.csv", text);
    STLObject log("a.csv");
    log.detect();
    const auto expectOrder = [&](TSFILE& ts, STLFill fill) {
        EXPECT_TRUE(log.found().steps.newestFirst);
        ASSERT_EQ(static_cast<std::uint32_t>(kRows), ts.samples());
        for (const std::uint32_t s : {1U, 2U, 32768U, 50000U, 50001U, 50002U, 100000U, 100001U})
            EXPECT_EQ(static_cast<float>(s), ts.value(s, ts.columns())) << s;
        EXPECT_DOUBLE_EQ(1463492731.0, ts.startSeconds() + (ts.timeMode() == 0 ? 1.0 : 0.0));
        // Behind the last one in time there is a previous value, but none to interpolate with.
        EXPECT_EQ(fill != STLFill::Previous, std::isnan(ts.value(100001, ts.columns() - 1)));
        EXPECT_EQ(fill == STLFill::NaN, std::isnan(ts.value(9, ts.columns() - 1)));
    };
    for (const STLFill fill : {STLFill::NaN, STLFill::Previous, STLFill::Interpolated}) {
        log.format().fill = fill;
        expectOrder(*import(log), fill);
        EXPECT_TRUE(log.found().steps.areEqual);
    }
    log.format().timeResult = STLTimeResult::TimeTwoColumns;
    const auto ts = import(log);
    expectOrder(*ts, STLFill::Interpolated);
    float row[2];
    EXPECT_EQ(1463492730.0 + kRows, ts->readRowWithTime(kRows, row));
    log.format().timeResult = STLTimeResult::Resampled;
    EXPECT_THROW(log.check({}), STLError);

    write("a.csv", "Time;V\n00:00:02;1\n00:00:01;2\n00:00:03;3\n00:00:09;4\n");
    STLObject mixed("a.csv");
    mixed.detect();
    const auto asItCame = import(mixed);
    EXPECT_FALSE(mixed.found().steps.newestFirst);
    EXPECT_EQ(-1.0, mixed.found().steps.least);
    EXPECT_EQ(7.0, mixed.found().steps.span);
    EXPECT_EQ("Tuesday, 17 May 2016 13:45:30", wallInWords(static_cast<Micros>(kNoon * 1e6)));
    EXPECT_EQ(4.0F, asItCame->value(4, 2));
}

TEST_F(Stl, clockThatIsSetWithinTheLogIsFollowed)
{
    // Local stamps of equal steps in truth; those of daily rows stay equal on the clock.
    const std::vector<std::pair<std::int64_t, int>> logs = {
        {1729967400, 3600}, {1729967400, 600}, {1729967400, 1}, {1711830600, 3600}, {1711830600, 420}};
    for (const auto& [start, step] : logs) {
        std::string text = "T;V\n";
        const int rows = 12 * 3600 / step;
        for (int i = 0; i < rows; ++i) {
            const std::time_t at = start + std::int64_t{i} * step;
            char stamp[32];
            std::strftime(stamp, sizeof stamp, "%d.%m.%Y %H:%M:%S", std::localtime(&at));
            text += std::string(stamp) + ".25;1\n";
        }
        write("a.csv", text);
        STLObject log("a.csv");
        log.detect();
        const auto ts = import(log);
        EXPECT_EQ(1U, log.found().lag.changes) << start << ' ' << step;
        EXPECT_EQ(0, ts->timeMode()) << start << ' ' << step;
        EXPECT_EQ(static_cast<float>(step), ts->dt());
        EXPECT_EQ(start - step, ts->startSeconds());
        EXPECT_EQ(0.25F, ts->startTime());
        log.format().greenwich = true;
        log.check({});
        EXPECT_FALSE(log.found().steps.areEqual) << "in UTC no clock is set";
    }
    // Rows of each day at one time of the clock: the second day has 25 hours.
    write("a.csv", "T;V\n26.10.2024 08:00:00.5;1\n27.10.2024 08:00:00.5;2\n28.10.2024 08:00:00.5;3\n");
    STLObject daily("a.csv");
    daily.detect();
    daily.format().timeResult = STLTimeResult::TimeTwoColumns;
    const auto ts = import(daily);
    float value = 0.0F;
    EXPECT_EQ(1729922400.5, ts->readRowWithTime(1, &value));
    EXPECT_EQ(1729922400.5 + 90000.0, ts->readRowWithTime(2, &value));
    EXPECT_EQ(1729922400.5 + 176400.0, ts->readRowWithTime(3, &value));
    // Two columns count 136 years; a longer series tells its times in one.
    write("ages.csv", "T;V\n2116-05-17 00:00:10;1\n2016-05-17 00:00:20;2\n2216-05-17 00:00:31;4\n");
    STLObject ages("ages.csv");
    ages.detect();
    ages.format().timeResult = STLTimeResult::TimeTwoColumns;
    const auto coarse = import(ages);
    EXPECT_EQ(1U, ages.found().target.timeColumns);
    EXPECT_FLOAT_EQ(7774783231.0F, coarse->value(3, 1));
    EXPECT_NEAR(463.4, ages.found().target.coarseness, 0.1);
}

TEST_F(Stl, publishedSeriesComeOutAsTheyAre)
{
    STLObject weather(kData / "seattle-weather.csv");
    weather.detect();
    auto ts = import(weather);
    EXPECT_EQ(1461U, ts->samples());
    EXPECT_EQ(4U, ts->columns());
    EXPECT_EQ(86400.0F, ts->dt());
    EXPECT_EQ(1325372400U - 86400U, ts->startSeconds()) << "midnight in Oslo, less a day";
    EXPECT_STREQ("precipitati", ts->columnName(1));
    EXPECT_EQ(12.8F, ts->value(1, 2));
    EXPECT_EQ(3.5F, ts->value(1461, 4));

    STLObject carbon(kData / "co2-concentration.csv");
    carbon.detect();
    carbon.format().greenwich = true;
    ts = import(carbon);
    EXPECT_EQ(741U, ts->samples());
    EXPECT_EQ(1, ts->timeMode());
    EXPECT_EQ(0U, ts->startSeconds());
    EXPECT_EQ(-373593600.0F, ts->value(1, 1)) << "1958-03-01";
    EXPECT_EQ(315.70F, ts->value(1, 2));
    EXPECT_GT(carbon.found().steps.gaps, 0U) << "months are missing in the sixties";
}

TEST_F(Stl, datesInDoubtAreSaidToBe)
{
    STLObject doubtful(kData / "doubtful.stl");
    doubtful.detect();
    doubtful.check({});
    EXPECT_TRUE(doubtful.format().orderInDoubt);
    STLObject told(kData / "month-first.stl");
    told.detect();
    EXPECT_FALSE(told.format().orderInDoubt);

    std::string text = "When,Level\n";
    for (int i = 0; i < 2000; ++i)
        text += "3/4/2016 13:30:00," + std::to_string(i) + '\n';
    text.insert(text.size() / 4, "\n3/14/2016 13:30:00,1\n");
    write("late.csv", text);
    STLObject late("late.csv");
    late.detect();
    ASSERT_TRUE(late.format().orderInDoubt);
    late.check({});
    EXPECT_FALSE(late.format().orderInDoubt) << "a date far from the sample tells";
    EXPECT_EQ(DateOrder::MonthDay, late.format().order);
}

TEST_F(Stl, missingValuesBecomeWhatTheUserWants)
{
    write("m.csv", "A;B\n1;1\n;2\n-;3\n4;nan\n");
    const float b = kNone;
    const std::vector<std::pair<STLFill, std::vector<float>>> cases = {
        {STLFill::NaN, {1, 1, b, 2, b, 3, 4, b}},
        {STLFill::Zero, {1, 1, 0, 2, 0, 3, 4, 0}},
        {STLFill::Previous, {1, 1, 1, 2, 1, 3, 4, 3}},
        {STLFill::Interpolated, {1, 1, 2, 2, 3, 3, 4, b}},
    };
    for (const auto& [fill, wanted] : cases) {
        STLObject log("m.csv");
        log.detect();
        log.format().fill = fill;
        const auto ts = import(log);
        EXPECT_EQ(3U, log.found().losses.missingCells());
        for (std::uint32_t i = 0; i < 8; ++i) {
            const float v = ts->value(i / 2 + 1, i % 2 + 1);
            EXPECT_TRUE(std::isnan(wanted[i]) ? std::isnan(v) : v == wanted[i]) << i << ' ' << v;
        }
    }
}

TEST_F(Stl, timeBecomesWhatTheUserWants)
{
    STLObject log(kData / "gaps.stl");
    log.detect();
    log.check({});
    EXPECT_EQ(1U, log.found().steps.gaps);
    EXPECT_EQ(13.0, log.found().steps.longestGap);
    EXPECT_EQ(STLTimeResult::TimeColumn, log.found().target.timeResult);

    log.format().timeResult = STLTimeResult::Resampled;
    auto ts = import(log);
    ASSERT_EQ(22U, ts->samples());
    EXPECT_EQ(70.0F, ts->value(8, 1));
    EXPECT_TRUE(std::isnan(ts->value(9, 1)));
    EXPECT_EQ(200.0F, ts->value(21, 1));
    for (const double step : {0.4, 1.6}) {
        log.format().resampleStep = step;
        ts = import(log);
        ASSERT_EQ(static_cast<std::uint32_t>(21.0 / step) + 1, ts->samples());
        for (std::uint32_t s = 1; s <= ts->samples(); ++s) {
            const double t = step * (s - 1.0);
            if (t > 7.0 && t < 20.0)
                EXPECT_TRUE(std::isnan(ts->value(s, 1))) << "in the gap: " << t;
            else
                EXPECT_NEAR(10.0 * t, ts->value(s, 1), 1e-4) << t;
        }
    }

    log.format().timeResult = STLTimeResult::TimeTwoColumns;
    log.format().fromRow = 2;
    log.format().everyNth = 3;
    ts = import(log);
    ASSERT_EQ(3U, ts->samples());
    EXPECT_EQ(2, ts->timeMode());
    EXPECT_EQ(7.0, ts->sampleTime(3));
    EXPECT_EQ(10.0F, ts->value(1, 3));
}

bool isSame(float wanted, float v)
{
    return std::isnan(wanted) ? std::isnan(v) : v == wanted;
}

// Of the columns from one on.
std::string namesOf(TSFILE& ts, std::uint32_t first, char between)
{
    std::string names;
    for (std::uint32_t c = first; c <= ts.columns(); ++c)
        names += (c == first ? "" : std::string(1, between)) + ts.columnName(c);
    return names;
}

// Times of samples, whichever way the ts-file tells them.
double timeOf(TSFILE& ts, std::uint32_t sample)
{
    const double start = ts.startSeconds() + static_cast<double>(ts.startTime());
    return ts.timeMode() == 0   ? start + static_cast<double>(sample) * static_cast<double>(ts.dt())
           : ts.timeMode() == 1 ? start + static_cast<double>(ts.value(sample, 1))
                                : ts.sampleTime(sample);
}

TEST_F(Stl, samplesKeepTheTimesOfTheirRows)
{
    struct TimeCase
    {
        const char* what;
        const char* text;
        int mode;
        std::vector<double> times;  // of the samples
        std::uint64_t fromRow = 1;
        std::uint64_t toRow = 0;
        std::uint32_t everyNth = 1;
        std::optional<STLTimeResult> becomes = {};
    };
    constexpr double kDay = 1463443200.0 - kOslo;   // 2016-05-17 in Oslo
    constexpr double kMarch = 1458950400.0 - 3600;  // 2016-03-26 in Oslo
    const char* const seconds =
        "D;A\n2016-05-17 00:00:00;1\n2016-05-17 00:00:01;2\n2016-05-17 00:00:02;3\n"
        "2016-05-17 00:00:03;4\n2016-05-17 00:00:04;5\n";
    const char* const gap = "t;A\n0;1\n1;2\n2;3\n3;4\n5;6\n6;7\n7;8\n8;9\n";
    const std::vector<TimeCase> cases = {
        {"rows from the third", seconds, 0, {kDay + 2, kDay + 3, kDay + 4}, 3},
        {"every second row", seconds, 0, {kDay + 1, kDay + 3}, 2, 0, 2},
        {"typed step, rows from the second", "A;B\n1;1\n2;2\n3;3\n4;4\n", 0, {2, 4}, 2, 0, 2},
        {"resampled rows only", gap, 0, {6, 7}, 6, 7, 1, STLTimeResult::Resampled},
        {"a gap among whole seconds is no slow clock", gap, 1, {0, 1, 2, 3, 5, 6, 7, 8}},
        {"four rows in each second of the clock",
         "D;A\n2016-05-17 00:00:00;1\n2016-05-17 00:00:00;2\n2016-05-17 00:00:00;3\n"
         "2016-05-17 00:00:00;4\n2016-05-17 00:00:01;5\n2016-05-17 00:00:01;6\n"
         "2016-05-17 00:00:01;7\n2016-05-17 00:00:01;8\n2016-05-17 00:00:02;9\n",
         0,
         {kDay, kDay + 0.25, kDay + 0.5, kDay + 0.75, kDay + 1, kDay + 1.25, kDay + 1.5, kDay + 1.75,
          kDay + 2}},
        {"bunches within a clock's tick are no equal steps",
         "D;A\n2016-05-17 00:00:00;1\n2016-05-17 00:00:00;2\n2016-05-17 00:00:00;3\n"
         "2016-05-17 00:00:01;4\n2016-05-17 00:00:02;5\n2016-05-17 00:00:03;6\n"
         "2016-05-17 00:00:04;7\n2016-05-17 00:00:05;8\n",
         1,
         {kDay, kDay, kDay, kDay + 1, kDay + 2, kDay + 3, kDay + 4, kDay + 5}},
        {"thirds in milliseconds", "t;A\n1.000;1\n1.333;2\n1.667;3\n2.000;4\n", 0, {1, 4.0 / 3, 5.0 / 3, 2}},
        {"seconds of its own, from 0", "t;A\n0;1\n0.25;2\n0.5;3\n0.75;4\n", 0, {0, 0.25, 0.5, 0.75}},
        {"a row of the year 9999",
         "D;A\n2016-05-17 00:00:00;1\n9999-12-31 00:00:00;2\n2016-05-17 00:00:02;3\n"
         "2016-05-17 00:00:04;4\n2016-05-17 00:00:06;5\n",
         0,
         {kDay, kDay + 2, kDay + 4, kDay + 6}},
        {"before the trigger", "t;A\n-0.5;1\n-0.25;2\n0;3\n0.25;4\n", 1, {-0.5, -0.25, 0, 0.25}},
        {"days across the change to summer time",
         "D;A\n2016-03-26;1\n2016-03-27;2\n2016-03-28;3\n",
         0,
         {kMarch, kMarch + 86400, kMarch + 172800}},
        {"hours of work, midnight between",
         "Date: 17.05.2016\nT;A\n15:00;1\n16:00;2\n08:00;3\n09:00;4\n",
         1,
         {kDay + 54000, kDay + 57600, kDay + 115200, kDay + 118800}},
        {"times that run back, seconds apart",
         "t;A\n5;1\n6.5;2\n1;3\n9;4\n",
         2,
         {5, 6.5, 1, 9},
         1,
         0,
         1,
         STLTimeResult::TimeTwoColumns},
    };
    for (const TimeCase& c : cases) {
        SCOPED_TRACE(c.what);
        write("t.csv", c.text);
        STLObject log("t.csv");
        log.detect();
        log.format().fromRow = c.fromRow;
        log.format().toRow = c.toRow;
        log.format().everyNth = c.everyNth;
        log.format().timeResult = c.becomes;
        const auto ts = import(log);
        EXPECT_EQ(c.mode, ts->timeMode());
        ASSERT_EQ(c.times.size(), ts->samples());
        for (std::uint32_t s = 1; s <= ts->samples(); ++s)
            EXPECT_NEAR(c.times[s - 1], timeOf(*ts, s), 1e-3) << s;
    }
}

TEST_F(Stl, stepsSaySoAsTheUserSeesThem)
{
    STLObject log(kData / "zones.stl");
    log.detect();
    log.format().greenwich = false;
    log.check({});
    EXPECT_EQ(1459040340U - 60, log.found().target.startSeconds) << "stamps with a zone are in no other one";

    write("a.csv", "D;A\n2016-05-17 00:00:00;1\n2016-13-17 00:00:01;2\n2016-05-17 99;3\n");
    STLObject bad("a.csv");
    bad.detect();
    bad.check({});
    EXPECT_EQ(2U, bad.found().losses.skippedLines);
    ASSERT_EQ(2U, bad.found().troubles.size());
    EXPECT_EQ(3U, bad.found().troubles[0].line);
    EXPECT_EQ("2016-13-17 00:00:01", bad.found().troubles[0].text);
    write("b.csv", "D;T;A\n2016-05-17;00:00:00;1\n2016-05-17;00:00:01;2\n2016-05-17;0x;3\n");
    STLObject time("b.csv");
    time.detect();
    time.check({});
    ASSERT_EQ(1U, time.found().troubles.size());
    EXPECT_EQ(1, time.found().troubles[0].column) << "the time, not the date";
}

TEST_F(Stl, headsAndTailsThatLoggersLeave)
{
    std::string head;
    for (int i = 0; i < 300; ++i)
        head += "Setting " + std::to_string(i) + " is on\n";
    std::string rows = "A;B\n";
    for (int i = 0; i < 400; ++i)
        rows += std::to_string(i) + ",5;1\n";
    write("long.csv", head + rows);
    STLObject longHead("long.csv");
    longHead.detect();
    EXPECT_EQ(302U, longHead.format().firstDataLine);
    EXPECT_EQ(400U, import(longHead)->samples());

    write("zeros.csv", rows + std::string(4096, '\0'));
    STLObject zeros("zeros.csv");
    zeros.detect();
    EXPECT_EQ(400U, import(zeros)->samples()) << "the power went, a line of zeros is left";
    EXPECT_EQ(1U, zeros.found().losses.skippedLines);

    // A log that was copied while its last line was written.
    const std::string stamped = "T;A;B\n2016-05-17 13:45:00;1;2\n2016-05-17 13:46:00;3;4\n";
    for (const auto& [rest, samples, skipped] : {std::tuple("2016-05", 2U, 1U),
                                                 {"2016-05-17", 2U, 1U},
                                                 {"2016-05-17 13:4", 2U, 1U},
                                                 {"2016-05-17 13:47", 3U, 0U},
                                                 {"2016-05-17 13:47:00;5", 3U, 0U}}) {
        write("cut.csv", stamped + rest);
        STLObject cut("cut.csv");
        cut.detect();
        EXPECT_EQ(samples, import(cut)->samples()) << rest;
        EXPECT_EQ(skipped, cut.found().losses.skippedLines) << rest;
        EXPECT_TRUE(cut.found().steps.areEqual) << rest;
    }
}

TEST_F(Stl, passIsRunAgainOnlyWhereItFindsSomethingElse)
{
    write("m.csv", "D;A;B\n2016-05-17;1;2\n2016-05-18;;4\n");
    STLObject log("m.csv");
    log.detect();
    log.check({});
    log.format().fill = STLFill::Zero;
    log.format().timeResult = STLTimeResult::TimeColumn;
    EXPECT_TRUE(log.isRead());
    log.check([](auto, auto) { return false; });
    EXPECT_EQ(1U, log.found().target.timeColumns);
    log.format().columns[1].take = false;
    EXPECT_FALSE(log.isRead());
    log.check({});
    EXPECT_EQ(0U, log.found().losses.missingCells());
    write("m.csv", "D;A;B\n2016-05-17;1;2\n2016-05-18;;4\n2016-05-19;5;6\n");
    EXPECT_FALSE(log.isRead()) << "the file has grown";
    EXPECT_THROW(importSTL(log, "out.ts", {}), STLError);
    EXPECT_EQ(3U, import(log)->samples());
}

// Local time of a sample, as the log would write it.
std::string clockOf(TSFILE& ts, std::uint32_t sample)
{
    const auto seconds = static_cast<std::time_t>(std::floor(timeOf(ts, sample)));
    char text[32];
    std::strftime(text, sizeof text, "%F %H:%M", std::localtime(&seconds));
    return text;
}

std::string monthsOf(const char* dayAndYear, int months)
{
    std::string text = "d,v\n";
    for (int m = 1; m <= months; ++m)
        text += std::to_string((m - 1) % 12 + 1) + dayAndYear + std::to_string(85 + (m - 1) / 12) + ",1\n";
    return text;
}

TEST_F(Stl, nothingIsReadWrongWithoutAWord)
{
    struct Form
    {
        const char* what;
        std::string text;
        std::string names;
        std::vector<float> column;  // the last one
        std::string last;           // the clock at the last sample, where it is dated
        bool inDoubt = false;
        bool proven = false;
        std::uint64_t titles = 0;
        std::uint64_t troubles = 0;
    };
    std::string quarters = "date,v\n";
    for (int y = 2015; y < 2019; ++y)
        for (const char* const day : {"-01-01", "-04-01", "-07-01", "-10-01"})
            quarters += std::to_string(y) + day + ",1\n";
    std::string quoted = "\"\",\"breaks\",\"wool\",\"dye\"\n";
    std::string blocks = "Linux 6.1 (host)\n\n";
    for (int i = 1; i <= 3; ++i) {
        quoted += "\"" + std::to_string(i) + "\",2" + std::to_string(i) + ",\"A\",\"L\"\n";
        const std::string clock = "10:00:0" + std::to_string(i);
        blocks += clock + " IFACE rx tx\n" + clock + " lo 1 2\n" + clock + " eth0 3 4\n\n";
    }
    std::string noons = "date,v\n";
    for (int m = 1; m <= 12; ++m)
        noons += "2015-" + std::string(m < 10 ? "0" : "") + std::to_string(m) + "-01 12:00,1\n";
    const std::vector<float> ones12(12, 1.0F);
    const std::vector<float> ones14(14, 1.0F);
    const std::vector<float> ones16(16, 1.0F);
    const std::vector<Form> forms = {
        {"quarters", quarters, "Time v", ones16, "2018-10-01 00:00"},
        {"a year of months", monthsOf("/1/", 12), "Time v", ones12, "1985-12-01 00:00", true, false},
        {"more months", monthsOf("/1/", 14), "Time v", ones14, "1986-02-01 00:00", true, true},
        {"twelve days of June", monthsOf("/6/", 12), "v", ones12, "1985-06-12 00:00", true, false},
        {"quoted texts", quoted, "Col-1 breaks", {21, 22, 23}, ""},
        {"first rows that are short",
         "a,b,c\n1,1\n2,2\n4,4,4\n5,5,5\n6,6,6\n7,7,7\n8,8,8\n",
         "a b c",
         {kNone, kNone, 4, 5, 6, 7, 8},
         "",
         false,
         false,
         0,
         2},
        {"a first row that is long",
         "a,b\n1,1,1\n2,2\n3,3\n4,4\n",
         "a b",
         {1, 2, 3, 4},
         "",
         false,
         false,
         0,
         1},
        {"few long rows",
         "a,b,c\n1,1\n2,2\n3,3\n4,4\n5,5,5\n",
         "a b c",
         {kNone, kNone, kNone, kNone, 5},
         "",
         false,
         false,
         0,
         4},
        {"years above",
         "Country,1990,2010\nA,1.5,3.5\nB,1.6,3.6\nC,1.7,3.7\n",
         "1990 2010",
         {3.5F, 3.6F, 3.7F},
         ""},
        {"years above more cells than the rows have",
         "a,b,1990,1991,1992\nA,u,1,1.5,\nB,v,1,1.6,\nC,w,1,1.7,\n",
         "1990 1991",
         {1.5F, 1.6F, 1.7F},
         ""},
        {"years above whole numbers",
         "Country,1990,2000,2010\nA,1.5,2.5,3.5\nB,1.6,2.5,3.6\nC,2,3,4\n",
         "1990 2000 2010",
         {3.5F, 3.6F, 4},
         ""},
        {"a text above numbers",
         "time\t10\t50\n0.5\t1.5\t3.5\n1.0\t1.6\t3.6\n1.5\t1.7\t3.7\n",
         "10 50",
         {3.5F, 3.6F, 3.7F},
         ""},
        {"numbers are no names", "1,2,3\n2,3,4\n3,4,5\n", "Col-1 Col-2 Col-3", {3, 4, 5}, ""},
        {"titled blocks",
         "Block 1\nx y\n1 2\n3 4\nBlock 12\nx y\n5 6\n7 8\n",
         "x y",
         {2, 4, 6, 8},
         "",
         false,
         false,
         2},
        {"first rows of missing values", "a,b\n,,\n,\n1,2\n3,4\n5,6\n", "a b", {kNone, kNone, 2, 4, 6}, ""},
        {"first rows with texts that are short",
         "n,a,b\nx,1\ny,2\nz,3,3\nu,4,4\nv,5,5\nw,6,6\nr,7,7\n",
         "a b",
         {kNone, kNone, 3, 4, 5, 6, 7},
         "",
         false,
         false,
         0,
         2},
        {"several things at a time",
         "time;what;v\n10:00:01;a;1\n10:00:01;b;2\n10:00:02;a;3\n10:00:02;b;4\n",
         "Time v",
         {1, 2, 3, 4},
         ""},
        {"years above names of rows",
         " 1990 2010\nA 1.5 3.5\nB 1.6 3.6\nC 1 3\n",
         "1990 2010",
         {3.5F, 3.6F, 3},
         ""},
        {"years above, or what follows an empty corner",
         ",1,2.15,4.64\n1,2,3,4\n2.15,3,4,3\n4.64,1,2,3\n",
         "Col-1 1 2.15 4.64",
         {4, 3, 3},
         ""},
        {"several numbers at a time",
         "time;cpu;v\n10:00:01;0;1\n10:00:01;1;2\n10:00:02;0;3\n10:00:02;1;4\n10:00:03;0;5\n10:00:03;1;6\n",
         "Time cpu v",
         {1, 2, 3, 4, 5, 6},
         ""},
        {"first rows that are marked as missing",
         "n,a,b\nx,NaN,NaN\ny,NaN,NaN\nz,3,3\nu,4,4\nv,5,5\nw,6,6\nr,7,7\n",
         "a b",
         {kNone, kNone, 3, 4, 5, 6, 7},
         ""},
        {"a cell with a blank between tabs",
         "S\tn\tr\n1\t>= 50\t4\n1\t>= 50\t5\n1\t>= 50\t6\n",
         "S r",
         {4, 5, 6},
         ""},
        {"weeks that begin again",
         "year,week,v\n2011,52,1\n2011,1,2\n2011,2,3\n",
         "year week v",
         {1, 2, 3},
         ""},
        {"times that something took",
         "PID ELAPSED v\n1 05:00:00 1\n2 03:00:00 2\n3 04:00:00 3\n4 02:30:00 4\n5 02:40:00 5\n6 01:00:00 "
         "6\n7 02:00:00 7\n",
         "PID v",
         {1, 2, 3, 4, 5, 6, 7},
         ""},
        {"a first row that is long, as others are",
         "0.5,1,a,b c\n1.5,2,a\n2.5,3,a\n3.5,4,a\n4.5,5,a,b c\n",
         "Col-1 Col-2",
         {1, 2, 3, 4, 5},
         "",
         false,
         false,
         0,
         2},
        {"two tables in turn",
         "Log of 1 May\n\ncpu: a b\n 1 2\n\nDev x y z\nsda 7 8 9\n\ncpu: a b\n 3 4\n\nDev x y z\nsda 7 8 "
         "9\n\n"
         "cpu: a b\n 5 6\n\nDev x y z\nsda 7 8 9\n",
         "a b",
         {2, 4, 6},
         "",
         false,
         false,
         2,
         3},
        {"names one short, again",
         "   total  used\nMem:  23Gi  5Gi\nSwap:  1Ki  0B\n\n   total  used\nMem:  23Gi  6Gi\nSwap:  1Ki  "
         "0B\n",
         "total used",
         {5.0F * (1 << 30), 0, 6.0F * (1 << 30), 0},
         "",
         false,
         false,
         1},
        {"tables of as many columns in turn",
         "t;a;b\n10:00:01;1;2\n\nt;x;y\n10:00:01;8;9\n\nt;a;b\n10:00:02;3;4\n\nt;x;y\n10:00:02;8;9\n",
         "a b",
         {2, 4},
         "",
         false,
         false,
         1,
         2},
        {"another table behind",
         "a,b\n1,2\n3,4\n5,6\n7,8\n9,10\n\nx,y\n8,9\n8,9\n",
         "a b",
         {2, 4, 6, 8, 10},
         "",
         false,
         false,
         0,
         1},
        {"words between the rows are no other table",
         "a,b\n1,2\n3,4\n5,6\n5,6\n5,6\noff,low\n7,8\n\nstarted again without a fault\n9,10\n",
         "a b",
         {2, 4, 6, 6, 6, 8, 10},
         "",
         false,
         false,
         0,
         2},
        {"months at noon", noons, "Time v", ones12, "2015-12-01 12:00"},
        {"blocks with heads", blocks, "Time rx tx", {2, 4, 2, 4, 2, 4}, "", false, false, 2},
    };
    for (const Form& form : forms) {
        SCOPED_TRACE(form.what);
        write("form.txt", form.text);
        STLObject log("form.txt");
        log.detect();
        const auto ts = import(log);
        EXPECT_EQ(form.names, namesOf(*ts, 1, ' '));
        ASSERT_EQ(form.column.size(), ts->samples());
        for (std::uint32_t row = 1; row <= ts->samples(); ++row) {
            const float v = ts->value(row, ts->columns());
            const float wanted = form.column[row - 1];
            EXPECT_TRUE(isSame(wanted, v)) << row << ' ' << v;
        }
        if (!form.last.empty()) {
            EXPECT_EQ(form.last, clockOf(*ts, ts->samples()));
        }
        EXPECT_EQ(form.inDoubt, log.format().orderInDoubt);
        EXPECT_EQ(form.proven, log.format().orderBySteps);
        EXPECT_EQ(form.titles, log.found().losses.titleLines);
        EXPECT_EQ(form.troubles, log.found().troubleCount);
        EXPECT_EQ(0U, log.found().lag.changes);
        EXPECT_EQ(std::string(form.what).starts_with("years above"), log.format().namesInDoubt);
    }
}

TEST_F(Stl, formsOfTextsAreReadInAnySpelling)
{
    struct Spelling
    {
        const char* text;
        const char* names;
        std::vector<float> row;  // the first one, without its time
        double first;            // seconds since 1970, or of the log's own
        double second;
    };
    constexpr double kJan2010 = 1262300400;  // in Oslo
    constexpr double kFeb2010 = 1264978800;
    constexpr double kMorning = 1795308300;  // 2026-11-22 01:45:00 in Oslo
    const std::vector<Spelling> spellings = {
        // Names above other counts of cells.
        {"\"a\" \"b\"\n\"r1\" 1 2\n\"r2\" 3 4\n\"r3\" 5 6\n", "a b", {1, 2}, 1, 2},
        {"      a  b\nNY  1  2\nLA  3  4\nSF  5  6\n", "a b", {1, 2}, 1, 2},
        {"a,b\nx,1,2\ny,3,4\nz,5,6\n", "a b", {1, 2}, 1, 2},
        {"Data: y x\n1 2\n3 4\n5 6\n", "y x", {1, 2}, 1, 2},
        {"r  b UTC\n1 2 2026-11-22 00:45:00\n3 4 2026-11-22 00:45:01\n",
         "r b",
         {1, 2},
         kMorning,
         kMorning + 1},
        {"KB/s in KB/s out\n1 2\n3 4\n5 6\n", "KB/s in|KB/s out", {1, 2}, 1, 2},
        {"time  v(in)  v(out)\n0.5 1 2\n1.0 3 4\n1.5 5 6\n", "v(in) v(out)", {1, 2}, 0.5, 1},
        {"x [mm],Level (high),F (kN)\n1,2,3\n4,5,6\n", "x|Level (high|F", {1, 2, 3}, 1, 2},
        {"Columns:\ty\tx\n1\t2\n3\t4\n5\t6\n", "y x", {1, 2}, 1, 2},
        {"Fields: y, x\n1, 2\n3, 4\n5, 6\n", "y x", {1, 2}, 1, 2},
        {"# Data: z y x\n1 2 3\n3 4 5\n5 6 7\n", "z y x", {1, 2, 3}, 1, 2},
        {"#YY MM DD hh mm WDIR WSPD\n#yr mo dy hr mn degT m/s\n2010 01 01 00 00 3 4\n2010 02 01 00 00 5 6\n",
         "WDIR WSPD",
         {3, 4},
         kJan2010,
         kFeb2010},
        {"name a b\nRome 1 2\nNew York 3 4\nOslo 5 6\nSao Paulo do Sul 7 8\nBonn 9 9\n", "a b", {1, 2}, 1, 2},
        {"a b c d e f\n1 2 3\n3 4 5\n5 6 7\n", "Col-1 Col-2 Col-3", {1, 2, 3}, 1, 2},
        {"Disk       Used Mounted on\ndev       12345 /dev\ntmpfs         5 /dev/shm\nvda   264212084 /\n",
         "Used",
         {12345},
         1,
         2},
        {"   a   b    kind\n  20  10 red bog\n  30  90 new bog\n  10  60 old fen\n", "a b", {20, 10}, 1, 2},
        {"l1 b1 l2 b2\n1 191 155 179 145\n2 195 149 201 152\n10 181 148 185 149\n",
         "Col-1 l1 b1 l2 b2",
         {1, 191, 155, 179, 145},
         1,
         2},
        {"l b\n132 1.5 155\n7 2.5 149\n90 3.5 148\n", "Col-1 l b", {132, 1.5F, 155}, 1, 2},
        {"rate d\n1 84 1\n2 84.7 1\n10 85 1\n", "Col-1 rate d", {1, 84, 1}, 1, 2},
        {"Index   v(out)\n0\t1.5,\t5\n1\t2.5,\t6\n2\t2.5,\t7\n", "Index v(out) Col-3", {0, 1.5F, 5}, 1, 2},
        {"AC of Sun Nov 22 19:37:13 2026\n0 1.5 5\n1 2.5 6\n2 2.5 7\n",
         "Col-1 Col-2 Col-3",
         {0, 1.5F, 5},
         1,
         2},
        {"HH:MM:SS   kB in   kB out\n00:00:05    1.0      7.0\n00:00:06    2.0      8.0\n",
         "kB in|kB out",
         {1, 7},
         5,
         6},
        {"PING h 56(84) bytes of data or more\n64 bytes from h: seq=1 ttl=63 time=0.5\n64 bytes from h: "
         "seq=2 ttl=63 "
         "time=0.6\n64 bytes from h: seq=3 ttl=63 time=0.7\n",
         "Col-1 seq ttl time",
         {64, 1, 63, 0.5F},
         1,
         2},
        {"   Murder HS Grad\nNY   15.1    41.3\nLA   11.3    66.7\n", "Murder|HS Grad", {15.1F, 41.3F}, 1, 2},
        {"        Life Exp  HS Grad\nNew York    70.5     52.7\nOhio        70.8     53.2\nIowa        72.5 "
         "    59.0\nNew Land    "
         "70.9     59.3\n",
         "Life Exp|HS Grad",
         {70.5F, 52.7F},
         1,
         2},
        {"Rural Male Urban Male\n      11.7       15.4\n      18.1       24.3\n",
         "Rural Male|Urban Male",
         {11.7F, 15.4F},
         1,
         2},
        {"@type xy\n1 2\n3 4\n5 6\n", "Col-1 Col-2", {1, 2}, 1, 2},
        {"ans =\n\n  1  2  3\n  4  5  6\n", "Col-1 Col-2 Col-3", {1, 2, 3}, 1, 2},
        {"item;qty;price\na;1;$1.50\nb;2;$2.00\n", "qty price", {1, 1.5F}, 1, 2},
        {"\"a\",\"b\",\n1,2,\n3,4,\n5,6,7\n6,7,8\n", "a b Col-3", {1, 2, kNone}, 1, 2},
        {"log(M1),F(kN),v(in)\n1,2,3\n4,5,6\n", "log(M1) F v(in)", {1, 2, 3}, 1, 2},
        {"a\tb\n5N\tN\n1\t2\n3\t4\n5\t6\n", "a b", {1, 2}, 1, 2},
        {"┌───┬───┐\n│ a │ b │\n├───┼───┤\n│ 1 │ 2 │\n│ 3 │ 4 │\n└───┴───┘\n", "a b", {1, 2}, 1, 2},
        {"|a|b|\n|-|-|\n|1|2|\n|3|4|\n", "a b", {1, 2}, 1, 2},
        {"T [degC];p [bar]\n1;2\n3;4\n", "T p", {1, 2}, 1, 2},
        {"t;p;q\nms;-;-\n500;1;2\n1000;3;4\n1500;5;6\n", "p q", {1, 2}, 0.5, 1},
        {"t [ms];p;q\n-;V;-\n500;1;2\n1000;3;4\n1500;5;6\n", "p q", {1, 2}, 0.5, 1},
        {"t  T\n1600000000  -6,25e+00\n1600000005  -7,5e-02\n", "T", {-6.25F}, 1600000000, 1600000005},
        {"time_us;v\n1000000000;7\n1000500000;8\n", "v", {7}, 1000, 1000.5},
        {"t;n\n0;2.990\n1;375\n2;3.880\n3;12.461\n4;-2.900\n5;1.000\n", "n", {2990}, 0, 1},
        {"t;n\n0;2.990\n1;375\n2;3.880\n3;2.461\n4;-2.900\n5;1.00\n", "n", {2.99F}, 0, 1},
        {"a;b\n7.719.172;2.099\n-2.461.352;375\n", "a b", {7719172, 2099}, 1, 2},
        {"a\tstate\n1\ton\nnan\ton\n3\toff\n4\toff\n5\ton\n6\ton\n", "a", {1}, 1, 2},
        {"a;b\nnan;nan\n1;2\n3;4\n", "a b", {kNone, kNone}, 1, 2},
        {"Device: Logger 7\nwhen\tP\tQ\n\tbar\t\n2026-11-22 01:45:00\t1\t\n2026-11-22 01:45:01\t2\t3\n",
         "P Q",
         {1, kNone},
         kMorning,
         kMorning + 1},
        {"time;P;state;\n;bar;;\n0;1;on;\n2;1,5;on;\n4;2;on;\n", "P", {1}, 0, 2},
        {"Device: Logger 7\nP(bar)  Q(m/s)  R(N)\n1  2  3\n3  4  5\n", "P Q R", {1, 2, 3}, 1, 2},
        {"#SamplingRate[Hz]=50\n1 2\n2 3\n", "Col-1 Col-2", {1, 2}, 0.02, 0.04},
        // Stamps.
        {"m,v\n2010-01,1\n2010-02,2\n", "v", {1}, kJan2010, kFeb2010},
        {"m;v\nJan 2010;1\nFeb 2010;2\n", "v", {1}, kJan2010, kFeb2010},
        {"m;v\n01-2010;1\n02-2010;2\n12-2010;3\n", "v", {1}, kJan2010, kFeb2010},
        {"q;v\n1Q2010;1\n2Q2010;2\n4Q2010;2\n", "v", {1}, kJan2010, 1270072800},
        {"w;v\nW5 2010;1\nW6 2010;2\n", "v", {1}, kFeb2010, kFeb2010 + 7 * 86400},
        {"w;v\n2010 W5;1\n2010 W6;2\n", "v", {1}, kFeb2010, kFeb2010 + 7 * 86400},
        {"year,month,v\n2010,1,1\n2010,2,2\n", "v", {1}, kJan2010, kFeb2010},
        {"year,month,v\n2010,3,3\n2010,2,2\n2010,1,1\n", "v", {1}, kJan2010, kFeb2010},
        {"Jan 2010 1\nFeb 2010 2\nMar 2010 3\n", "Col-3", {1}, kJan2010, kFeb2010},
        {"YEAR MON v\n2010 Jan 1\n2010 Feb 2\n2010 Mar 3\n", "v", {1}, kJan2010, kFeb2010},
        {"Month,v\n2010.01,1\n2010.02,2\n2010.03,3\n", "v", {1}, kJan2010, kFeb2010},
        {"t;v\n2010,01;1\n2010,02;2\n2010,12;3\n2011,01;3\n", "v", {1}, kJan2010, kFeb2010},
        {"year,week,v\n2010,5,1\n2010,6,2\n2010,7,3\n", "v", {1}, kFeb2010, kFeb2010 + 7 * 86400},
        {"iso_year;iso_week;v\n2009;53;1\n2010;1;2\n", "v", {1}, kJan2010 - 4 * 86400, kJan2010 + 3 * 86400},
        {"2026-11-22 00:45:00 +0000 7\n2026-11-22 00:45:01 +0000 8\n", "Col-4", {7}, kMorning, kMorning + 1},
        {"2026-11-22T00:45:00,500+00:00,7\n2026-11-22T00:45:01,500+00:00,8\n",
         "Col-3",
         {7},
         kMorning + 0.5,
         kMorning + 1.5},
        {"date;time;zone;v\n22.11.2026;00:45:00;UTC;7\n22.11.2026;00:45:01;UTC;8\n",
         "v",
         {7},
         kMorning,
         kMorning + 1},
        {"20261122 01:45:00 7\n20261122 01:45:01 8\n", "Col-3", {7}, kMorning, kMorning + 1},
        {"t,temp\n2026-11-22 01:45:00,-10\n2026-11-22 01:45:01,-11\n", "temp", {-10}, kMorning, kMorning + 1},
        {"t;mV\n2026-11-22 01:45:00;-1000\n2026-11-22 01:45:01;-1000\n",
         "mV",
         {-1000},
         kMorning,
         kMorning + 1},
        {" 01:45:00 up 1 day,  2:03,  load: 0.5, 7\n 01:45:10 up 1 day,  2:03,  load: 0.6, 8\n",
         "Col-3 Col-7 Col-8",
         {1, 0.5F, 7},
         6300,
         6310},
        {"time,v\n2010,1\n2010.08333,2\n2010.16667,3\n", "v", {1}, kJan2010, kFeb2010},
        {"Nov 22, 2026 1:45:00 AM,7\nNov 22, 2026 1:45:01 AM,8\n", "Col-2", {7}, kMorning, kMorning + 1},
        {"q,v\n2010 Q1,1\n2010 Q2,2\n", "v", {1}, kJan2010, 1270072800},
        {"year,quarter,v\n2010,1,1\n2010,2,2\n", "v", {1}, kJan2010, 1270072800},
        {"Sun Nov 22 01:45:00 CET 2026 7\nSun Nov 22 01:45:01 CET 2026 8\n",
         "Col-2",
         {7},
         kMorning,
         kMorning + 1},
        {"[2026-11-22 01:45:00.000] 7\n[2026-11-22 01:45:00.500] 8\n",
         "Col-2",
         {7},
         kMorning,
         kMorning + 0.5},
        {"a [22/Nov/2026:00:45:00 +0000] 7\nb [22/Nov/2026:00:45:01 +0000] 8\n",
         "Col-3",
         {7},
         kMorning,
         kMorning + 1},
        {"1795308300: 7\n1795308301: 8\n1795308302: 9\n", "Col-2", {7}, kMorning, kMorning + 1},
        {"So 22. Nov 01:45:00 CET 2026;7\nSo 22. Nov 01:45:01 CET 2026;8\n",
         "Col-2",
         {7},
         kMorning,
         kMorning + 1},
        {"Sun, 22 Nov 2026 00:45:00 +0000 7\nSun, 22 Nov 2026 00:45:01 +0000 8\n",
         "Col-2",
         {7},
         kMorning,
         kMorning + 1},
        {"22 Nov 2026 01:45:00 AM 7\n22 Nov 2026 01:45:01 AM 8\n", "Col-2", {7}, kMorning, kMorning + 1},
        {"[1795308300.500000] x time=3 ms\n[1795308301.500000] x time=4 ms\n[1795308302.500000] x time=3 "
         "ms\n",
         "time",
         {3},
         kMorning + 0.5,
         kMorning + 1.5},
        {"time=2026-11-22T00:45:00Z l=a v=7\ntime=2026-11-22T00:45:01Z l=b v=8\n",
         "v",
         {7},
         kMorning,
         kMorning + 1},
        {"date,HHMM,v\n2026-11-22,145,7\n2026-11-22,150,8\n", "v", {7}, kMorning, kMorning + 300},
        {"date,hour,minute,v\n2026-11-22,1,45,7\n2026-11-22,2,15,8\n", "v", {7}, kMorning, kMorning + 1800},
        {"Date;Hour;v\n22.11.2026;1;7\n22.11.2026;2;8\n", "v", {7}, kMorning - 2700, kMorning + 900},
        {"Date;v\n46348,072916667;7\n46348,083333333;8\n", "v", {7}, kMorning, kMorning + 900},
        // Heads, keys, frames and empty cells.
        {"; Sample Rate 8\n1 2\n3 4\n", "Col-1|Col-2", {1, 2}, 0.125, 0.25},
        {"; Samplerate: 1 kHz\na;b\n1;2\n3;4\n", "a b", {1, 2}, 0.001, 0.002},
        {"# fs=48k\n1 2\n3 4\n", "Col-1|Col-2", {1, 2}, 1 / 48e3, 2 / 48e3},
        {"# dt = 0.5 ms\n1 2\n3 4\n", "Col-1|Col-2", {1, 2}, 0.0005, 0.001},
        {"# rate: 2 MHz\n1 2\n3 4\n", "Col-1|Col-2", {1, 2}, 5e-7, 1e-6},
        {"% sampling frequency (Hz): 8\n1 2\n3 4\n", "Col-1|Col-2", {1, 2}, 0.125, 0.25},
        {"Sampling interval [ms]; 125\na;b\n1;2\n3;4\n", "a b", {1, 2}, 0.125, 0.25},
        {"t=0.5 x=1 y=2\nt=1.0 x=3 y=4\n", "x y", {1, 2}, 0.5, 1},
        {"2026-11-22 01:45:00,temp: 20.5 C,hum=7\n2026-11-22 01:45:01,temp: 20.6 C,hum=8\n",
         "temp hum",
         {20.5F, 7},
         kMorning,
         kMorning + 1},
        {"a b|c d|\n1 2|3 4|\n3 4|5 6|\n5 6|7 8|\n", "a b c d", {1, 2, 3, 4}, 1, 2},
        {"+---+---+\n| a | b |\n+---+---+\n| 1 | 2 |\n| 3 | 4 |\n+---+---+\n", "a b", {1, 2}, 1, 2},
        {"| a | b |\n|--:|:--|\n| 1 | 2 |\n| 3 | 4 |\n", "a b", {1, 2}, 1, 2},
        {"| a | b |\n| --- | :--- |\n| 1 | 2 |\n| 3 | 4 |\n", "a b", {1, 2}, 1, 2},
        {" a | b\n---+---\n 1 | 2\n 3 | 4\n", "a b", {1, 2}, 1, 2},
        {"  a    b    c\n  1         3\n  4    5    6\n  7    8\n 10   11   12\n",
         "a b c",
         {1, kNone, 3},
         1,
         2},
        {"name       a    b\nNew York   1    2\nRome       3    4\nSt Ives    5    6\nOslo       7    8\n",
         "a b",
         {1, 2},
         1,
         2},
        {"a, b\n1, 2,\n3, 4,\n5, 6,\n", "a b", {1, 2}, 1, 2},
        {"t = 0.5 | x = 1 | y = 2\nt = 1.0 | x = 3 | y = 4\n", "x y", {1, 2}, 0.5, 1},
        {"x=1;y=2,5\nx=3;y=4,5\n", "x y", {1, 2.5F}, 1, 2},
        {"td,v\n0 days 01:30:00,7\n0 days 03:00:00,8\n1 days 04:30:00,9\n", "v", {7}, 5400, 10800},
        {"\"\";\"a\";\"b\"\n\"1\";\"no\";5,56068\n\"2\";\"no\";5,72031\n\"3\";\"no\";5,99645\n",
         "Col-1 b",
         {1, 5.56068F},
         1,
         2},
        // Sizes.
        {"4.0K\t/etc/a\n12M\t/etc/b\n0\t/etc/c\n", "Col-1", {4096}, 1, 2},
        {"read writ\n313k 0\n 12M 144B\n   0 2k\n", "read writ", {313 * 1024, 0}, 1, 2},
        {"       total  used\nMem:   23Gi   5.8Gi\nSwap:   0B   12Ki\nAll:   23Gi   5.9Gi\n",
         "total used",
         {23.0F * 1024 * 1024 * 1024, 5.8F * 1024 * 1024 * 1024},
         1,
         2},
        {"Size;Used\n1,5 GiB;300 MiB\n2,0 GiB;1 GiB\n", "Size Used", {1.5F, 300.0F * (1 << 20)}, 1, 2},
        {"Freq,a\n2.4G,1\n433M,2\n868M,3\n", "Freq a", {2.4e9F, 1}, 1, 2},
        // Names by number.
        {"#   1 NUMBER    Running number\n#   2 X_IMAGE   Position along x   [pixel]\n1 2.5\n2 3.5\n",
         "NUMBER X_IMAGE",
         {1, 2.5F},
         1,
         2},
        {"# Column 1: x (mm)\n# Column 2: y (mm)\n1 2.5\n2 3.5\n", "x y", {1, 2.5F}, 1, 2},
        {"# col0 = x\n# col1 = y\n1,2.5\n2,3.5\n", "x y", {1, 2.5F}, 1, 2},
        {"; 1) left\n; 2) right\n1\t2.5\n2\t3.5\n", "left right", {1, 2.5F}, 1, 2},
        {"% Columns are: x(m) y(m)\n% made by hand\n1 2\n3 4\n5 6\n", "x y", {1, 2}, 1, 2},
        {"#S 1 scan\n#N 2\n#L Energy loss  Counts\n1 2\n3 4\n5 6\n", "Energy loss|Counts", {1, 2}, 1, 2},
        {"Column 1. x\nColumn 2. y\n1 2.5\n2 3.5\n3 4.5\n", "x y", {1, 2.5F}, 1, 2},
    };
    for (const Spelling& spelling : spellings) {
        SCOPED_TRACE(spelling.text);
        write("form.txt", spelling.text);
        STLObject log("form.txt");
        log.detect();
        const auto ts = import(log);
        const std::uint32_t times = ts->timeMode() == 0 ? 0 : 1;
        std::string wanted = spelling.names;
        if (wanted.find('|') == std::string::npos)
            std::replace(wanted.begin(), wanted.end(), ' ', '|');
        EXPECT_EQ(wanted, namesOf(*ts, times + 1, '|'));
        ASSERT_EQ(spelling.row.size() + times, ts->columns());
        for (std::uint32_t c = 0; c < spelling.row.size(); ++c) {
            const float v = ts->value(1, c + times + 1);
            EXPECT_TRUE(isSame(spelling.row[c], v)) << c << ' ' << v;
        }
        EXPECT_NEAR(spelling.first, timeOf(*ts, 1), 1e-3 * (spelling.second - spelling.first));
        EXPECT_NEAR(spelling.second, timeOf(*ts, 2), 1e-3 * (spelling.second - spelling.first));
        EXPECT_EQ(0U, log.found().losses.notNumbers + log.found().losses.skippedLines);
    }
}

TEST_F(Stl, stampsAreReadInFiveSpellings)
{
    struct Form
    {
        double first;
        double second;
        char digit;  // for '#' in the first row; the next ones below
        std::array<const char*, 5> spellings;
    };
    constexpr double kJan2010 = 1262300400;  // in Oslo
    constexpr double kMorning = 1795308300;  // 2026-11-22 01:45:00 in Oslo
    const std::vector<Form> forms = {
        {kMorning,
         kMorning + 1,
         '0',
         {"Sun Nov 22 01:45:0# CET 2026", "So 22. Nov 01:45:0# CET 2026", "Sun Nov 22 01:45:0# 2026",
          "Sun, 22 Nov 2026 00:45:0# +0000", "Sunday, November 22, 2026 01:45:0# AM"}},
        {kMorning,
         kMorning + 1,
         '0',
         {"[2026-11-22 01:45:0#.000]", "[22/Nov/2026:00:45:0# +0000]", "22/Nov/2026:02:45:0# +0200",
          "[Sun Nov 22 01:45:0# 2026]", "(2026-11-22T00:45:0#Z)"}},
        {kMorning,
         kMorning + 1,
         '0',
         {"dim. 22 nov. 2026 01:45:0#", "sön 22 nov 2026 01:45:0#", "domenica 22 novembre 2026 01:45:0#",
          "20261122 01:45:0#", "22-NOV-26 01.45.0#"}},
        {kMorning,
         kMorning + 1,
         '0',
         {"179530830#", "179530830#.000000", "179530830#000", "179530830#000000", "179530830#000000000"}},
        {kJan2010, kJan2010 + 31 * 86400, '1', {"2010-0#", "2010:0#", "0#/2010", "2010M0#", "2010/0#"}},
        {kJan2010, kJan2010 + 90 * 86400 - 3600, '1', {"2010 Q#", "2010-Q#", "Q# 2010", "2010:#", "2010q#"}},
        {kJan2010 + 3 * 86400,
         kJan2010 + 10 * 86400,
         '1',
         {"2010-W0#", "2010W0#", "2010-W0#-1", "2010-w0#", "2010 W0#"}},
    };
    for (const Form& form : forms)
        for (const std::string spelling : form.spellings) {
            SCOPED_TRACE(spelling);
            std::string text = "T;V\n";
            for (int i = 0; i < 3; ++i) {
                std::string row = spelling + ";7\n";
                row[row.find('#')] = static_cast<char>(form.digit + i);
                text += row;
            }
            write("form.txt", text);
            STLObject log("form.txt");
            log.detect();
            const auto ts = import(log);
            ASSERT_EQ(3U, ts->samples());
            EXPECT_EQ("V", namesOf(*ts, ts->timeMode() == 0 ? 1 : 2, '|'));
            EXPECT_NEAR(form.first, timeOf(*ts, 1), 1e-3);
            EXPECT_NEAR(form.second, timeOf(*ts, 2), 1e-3);
        }
}

TEST_F(Stl, packedTextsAreUnpacked)
{
    // "T;V\n1;2,5\n2;3,5\n" by gzip, by UTF-16 of either byte order, and by both.
    const std::string plain = "T;V\n1;2,5\n2;\xC3\xB8\n3;4,5\n";
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (const char16_t c : std::u16string(u"T;V\n1;2,5\n2;\u00F8\n3;4,5\n")) {
        little += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
        big += {static_cast<char>(c >> 8), static_cast<char>(c & 0xFF)};
    }
    const auto pack = [](const char* file, const std::string& bytes) {
        const gzFile out = gzopen(file, "wb");
        gzwrite(out, bytes.data(), static_cast<unsigned>(bytes.size()));
        gzclose(out);
    };
    write("little.csv", little);
    write("big.csv", big);
    pack("plain.gz", plain);
    pack("both.gz", little);
    for (const char* const file : {"little.csv", "big.csv", "plain.gz", "both.gz"}) {
        SCOPED_TRACE(file);
        STLObject log(file);
        log.detect();
        const auto ts = import(log);
        EXPECT_EQ(3U, ts->samples());
        EXPECT_STREQ("V", ts->columnName(1));
        EXPECT_EQ(4.5F, ts->value(3, 1));
        ASSERT_EQ(1U, log.found().troubles.size());
        EXPECT_EQ("\xC3\xB8", log.found().troubles[0].text);
        EXPECT_EQ(ImportKind::Stl, importKindOf(file));
    }
    std::uint64_t told = 0;
    STLObject cancelled("both.gz");
    EXPECT_EQ(JobOutcome::Cancelled, cancelled.unpack([&told](std::uint64_t done, std::uint64_t total) {
        told = total;
        return done > total;
    }));
    EXPECT_EQ(fs::file_size("both.gz"), told);
}

TEST_F(Stl, reportTellsEvidenceLossesAndAssumptions)
{
    std::string text = "time,name,v\n";
    for (int i = 0; i < 12; ++i)
        text += "10:00:" + std::to_string(10 + i) + ",a," +
                (i == 3   ? "-"
                 : i == 4 ? "x1"
                          : std::to_string(i)) +
                '\n';
    write("r.csv", text + "Average:,a,5\n");
    STLObject log("r.csv");
    log.detect();
    log.check({});
    EXPECT_EQ(
        "1 cell empty or marked as missing.\n1 cell no number: line 6 \"x1\".\n1 line skipped: line 14 "
        "\"Average:\".\n1 column not taken: name.",
        lossText(log.format(), log.found()));
    EXPECT_EQ("No date was found: the times count from midnight.", assumptionText(log.format(), log.found()));
    EXPECT_EQ(
        0U, evidenceText(log.format())
                .find("Read as cells between commas with a decimal point: 100 % of the lines have 3 cells"));

    // Told apart: short rows, a line without numbers, words that are no names, a clock that runs on.
    write("l.csv", "a b c d\n2015-03-28 08:00,1,2\n2015-03-29 08:00,3\n2015-03-30 08:00,4,5\n");
    STLObject loose("l.csv");
    loose.detect();
    loose.check({});
    EXPECT_EQ(
        "1 line above the data left out as titles: line 1 \"a b c d\".\n"
        "1 cell empty or marked as missing.\n1 row with too few cells: line 3 \"2015-03-29 08:00,3\".",
        lossText(loose.format(), loose.found()));
    EXPECT_NE(
        std::string::npos,
        assumptionText(loose.format(), loose.found()).find("The local clock was set between these rows"));
    EXPECT_NE(std::string::npos, evidenceText(loose.format())
                                     .find("No line gives names. Column 1 tells the time: 100 % of the rows "
                                           "looked at have one, and they go one way."));
    write("w.txt", "a b c d e\n1 2 3\n4 5 6\n7 8 9\n1 2 3\n4 5 6\nend of data\n7 8 9\n");
    STLObject words("w.txt");
    words.detect();
    words.check({});
    EXPECT_EQ(
        "1 line above the data left out as titles: line 1 \"a b c d e\".\n"
        "1 line skipped: line 7 \"end of data\".",
        lossText(words.format(), words.found()));
    EXPECT_EQ(
        "No start was found: the moment of the import stands for it.\n"
        "Line 1 has 5 words for 3 columns: they are taken for no names.",
        assumptionText(words.format(), words.found()));

    write("s.txt", "Nov 22 01:40:00 a 1\nNov 22 01:40:01 b 2\nNov 22 01:40:02 c 3\n");
    STLObject dated("s.txt");
    dated.detect();
    dated.check({});
    EXPECT_NE(std::string::npos, importDoubt(dated.format(), dated.found()).find("but no year"));
    // What is doubtful or assumed is asked or told.
    const std::array<std::array<const char*, 3>, 15> told = {{
        {"2026-326 10:00:00 1\n2026-326 10:00:01 2\n", "Something like a date stands before", ""},
        {"22-11 10:00:00 1\n22-11 10:00:01 2\n", "but no year", ""},
        {"2 4 6\n1 2 9\n3 1 1\n5 0 1\n", "The names of the columns are in doubt", ""},
        {"150,4,x,y,z\n5.1,3.5,1,2,0\n5.2,3.6,1,2,0\n", "line 1, which holds numbers, is taken for the names",
         ""},
        {"# a b c\n1 2 3\n4 5 6\n", "", "Line 1, a remark, is taken for the names"},
        {"row a(x) b\n1\t2\t3\n4\t5\t6\n", "",
         "The names in line 1 are parted by blanks, unlike the cells below"},
        {"T;V\n10:00:01;1\n10:00:02;2\n10:00:03;3\n10:00:05;4\n", "", "taken for rounded ones"},
        {"D;V\n2026-11-22;1\n2026-11-22;2\n", "", "All rows bear the same time."},
        {"id,v\n123456789,1\n-16777217,2\n16777216,2\n268435456,16777215\n", "",
         "2 numbers of more than seven digits rounded to 32 bits, as a ts-file keeps them: by up to 3."},
        {"Size a\n4.0K 1\n12M 2\n", "", "K is 1024 in Size."},
        {"[1]  5 11\n[3] 16 23\n[5] 36 58\n", "they run on from line to line", ""},
        {"1 2\n3 4\n\n5 6\n7 8\n", "",
         "Empty lines or remarks stand between the rows, once, above line 4: all rows are taken for one "
         "table."},
        {"  0     2.250\n 3.500  4.750\n 15.50  12.25\n 13.50  14.75\n", "",
         "From line 3 on the rows are set out"},
        {"  1  2\n 13 14\n   15   26\n    7    8\n", "", "From line 3 on the rows are set out"},
        {"a,b,c\n1,2,3\n4,5,6\n7,8,9\n\nx,y\n1,2\n3,4\n\nu,v,w,z\n1,2,3,4\n5,6,7,8\n",
         "The text holds several tables: 6 lines", ""},
    }};
    for (const auto& [written, asked, assumed] : told) {
        write("t.txt", written);
        STLObject doubtful("t.txt");
        doubtful.detect();
        doubtful.check({});
        const std::string doubt = importDoubt(doubtful.format(), doubtful.found());
        EXPECT_NE(std::string::npos, doubt.find(asked)) << written << doubt;
        EXPECT_EQ(*asked == 0, doubt.empty()) << written << doubt;
        EXPECT_NE(std::string::npos, assumptionText(doubtful.format(), doubtful.found()).find(assumed))
            << written;
    }
    STLObject second(kData / "one-column.stl");
    second.detect();
    EXPECT_NE(std::string::npos, evidenceText(second.format()).find("Another reading comes near"));
}

TEST_F(Stl, importerIsChosenByContent)
{
    const std::string prose = "We went 3 miles, to the sea. It rained, and\nwe stayed for 2 days there\n\n";
    const std::pair<const char*, std::string> texts[] = {
        {"a.txt", "%S 2\n%C 1\n1\n2\n"},
        {"b.tsa", "1 2\n"},
        {"c.dat", "t;A\n0;1\n1;2\n2;3\n"},
        {"d.csv", "1,25\n2,50\n3,75\n"},
        {"e.txt", "Name: ECG\nRate: 360 Hz\n-0,245\n-0,015\n0,120\n"},
        {"f.txt", "Volts\n1.5\n1.6\n1.7\n"},
        {"g.scl", "0,25\n1,50\n"},
        {"h.txt", prose + prose + prose},
        {"i.txt", ""},
        {"j.txt", "acc x\n-3098\n1338,8\n-880\nnan\n1664,932\n"},
        {"k.txt", "a,b\n1,5\n2,06\n3\n4,7\n5,5\n6\n7,1\n8,2\n"},
        {"l.txt", "6,3e-13\n1,5\n"},
        {"m.txt", "1,5\n1.212,5\n3,25\n1.400\n"},
        {"n.txt", "1,10\n2,11\n3\n4,1e6\n5\n6,13\n7,15\n8,14\n"},
        {"o.txt", "1,10\n2,11\n4\n5,1e6\n6\n7,13\n8,15\n9,14\n"},
    };
    std::vector<ImportKind> kinds = {importKindOf("none"), importKindOf(kData / "binary.stl")};
    for (const auto& [name, text] : texts) {
        write(name, text);
        kinds.push_back(importKindOf(name));
    }
    using enum ImportKind;
    EXPECT_EQ((std::vector{None, None, Tsa, Tsa, Stl, Stl, Scl, Scl, Scl, None, None, Scl, Stl, Scl, Stl, Stl,
                           Scl}),
              kinds);
    EXPECT_EQ("No line of numbers was found in h.txt.", errorOf("h.txt"));
}

// Far more lines than are read at once: troubles keep their lines, texts their numbers.
TEST_F(Stl, longLogsComeOutInTheirOrder)
{
    // Lines without a time and cells that are no numbers stand among those of every piece, in any order.
    constexpr int kLines = 20000;
    std::string text = "Date;Temp;State\n";
    std::vector<int> kept;
    std::vector<std::uint64_t> troubled;
    for (int i = 1; i <= kLines; ++i) {
        const bool isRow = i % 1409 != 0;
        const bool isNumber = i % 997 != 0;
        char line[64];
        std::snprintf(line, sizeof line, "2016-05-17 %02d:%02d:%02d;%s;s%d\n", i / 3600, i / 60 % 60, i % 60,
                      isNumber ? std::to_string(i).c_str() : "x1", i / 6000);
        text += isRow ? line : "soon;7;s2\n";
        if (isRow)
            kept.push_back(isNumber ? i : 0);
        if (!isRow || !isNumber)
            troubled.push_back(static_cast<std::uint64_t>(i) + 1);  // the heading is a line, too
    }
    write("long.csv", text);
    STLObject log("long.csv");
    log.detect();
    for (const bool numbered : {false, true}) {
        log.format().columns[2].take = log.format().columns[2].numberTexts = numbered;
        const auto ts = import(log);
        std::vector<std::uint64_t> lines;
        for (const STLTrouble& trouble : log.found().troubles)
            lines.push_back(trouble.line);
        EXPECT_EQ(troubled, lines);
        ASSERT_EQ(kept.size(), log.found().rows);
        EXPECT_EQ(14U, log.found().losses.skippedLines);
        EXPECT_EQ(20U, log.found().losses.notNumbers);
        const std::uint32_t column = ts->columns() - (numbered ? 1 : 0);
        for (std::uint32_t row = 1; row <= kept.size(); ++row) {
            const float value = ts->value(row, column);
            ASSERT_EQ(static_cast<float>(kept[row - 1]), std::isnan(value) ? 0.0F : value) << row;
        }
        if (numbered) {
            EXPECT_EQ((std::vector{1.0F, 2.0F, 4.0F}),
                      (std::vector{ts->value(1, column + 1), ts->value(6000, column + 1),
                                   ts->value(ts->samples(), column + 1)}));
        }
    }
}

TEST_F(Stl, textsAreNumberedOnDemand)
{
    STLObject log(kData / "quotes.stl");
    log.detect();
    STLColumn& state = log.format().columns[2];
    EXPECT_EQ(STLKind::Text, state.kind);
    EXPECT_FALSE(state.take);
    state.take = state.numberTexts = true;
    const auto ts = import(log);
    EXPECT_STREQ("1=on 2=off 3=on, again", ts->columnDescription(2));

    write("t.csv", "T;D;V\n2016-05-17 13:45:30;0:01:05;1\n2016-05-17 13:45:31;0:01:06;2\n");
    STLObject times("t.csv");
    times.detect();
    times.format().columns[1].take = true;
    EXPECT_EQ(66.0F, import(times)->value(2, 1)) << "durations in seconds";
    EXPECT_EQ(3.0F, ts->value(3, 2));
}

TEST_F(Stl, otherReadingIsOffered)
{
    STLObject log(kData / "one-column.stl");
    log.detect();
    EXPECT_EQ(2U, log.format().columns.size());
    EXPECT_EQ(',', log.format().otherDecimal);
    log.detect(log.format().otherSeparator, log.format().otherDecimal);
    EXPECT_EQ(1U, log.format().columns.size());
    EXPECT_EQ(5.5F, import(log)->value(5, 1));
}

TEST_F(Stl, hopelessFilesSayWhy)
{
    write("long.csv", std::string(100'000'000, '7'));
    std::string wide;
    for (int i = 0; i < 200000; ++i)
        wide += "1;2;3\xC3\xB8;";
    wide.resize(900'000);
    write("wide.csv", wide + '\n' + wide + '\n');
    write("wide-bytes.csv", std::string("1\0;\0002\0\n\0003\0;\0004\0\n\000", 16));
    write("cut.gz", std::string("\x1F\x8B\x08\0\0\0\0\0\0\x03\x4B", 11));
    write("raw.txt", "Variables:\n 0 time time\n 1 v(in) voltage\nValues:\n 0 0.0\n  1.5\n\n 1 1.0\n  2.5\n");
    write("lines.json", "{\"t\": 1, \"v\": 2.5}\n{\"t\": 2, \"v\": 3.5}\n");
    write("array.json", "[\n  {\n    \"t\": 1,\n    \"v\": 2.5\n  }\n]\n");
    write("doors.csv", "Day;Door\n2026-11-22;open\n2026-11-23;shut\n2026-11-24;open\n");
    const std::vector<std::pair<fs::path, const char*>> cases = {
        {"doors.csv", "No column of numbers was found in doors.csv."},
        {"lines.json", "This is JSON."},
        {"array.json", "This is JSON."},
        {"wide-bytes.csv", "UTF-16"},
        {"cut.gz", "damaged"},
        {"raw.txt", "The values of each row stand below each other, from line 5 on."},
        {kData / "words.stl", "No line of numbers was found in words.stl."},
        {kData / "empty.stl", "empty"},
        {kData / "binary.stl", "binary"},
        {"long.csv", "longer than a million"},
        {"wide.csv", "at most 4096 columns"},
    };
    for (const auto& [file, part] : cases)
        EXPECT_NE(std::string::npos, errorOf(file).find(part)) << file << ": " << errorOf(file);
    EXPECT_THROW(errorOf("none.csv"), std::system_error);

    write("big.csv", "t;A\n0;1\n1;2\n2;3\n");
    STLObject big("big.csv");
    big.detect();
    big.format().timeResult = STLTimeResult::Resampled;
    big.format().resampleStep = 1e-9;
    try {
        big.check({});
        FAIL();
    } catch (const STLError& error) {
        EXPECT_NE(std::string::npos, std::string(error.what())
                                         .find("The result would need 8.0 GB; a ts-file "
                                               "holds less than 2 GB."))
            << error.what();
    }
}

TEST_F(Stl, randomBytesNeverEndBadly)
{
    std::mt19937 random(4);
    const std::string alphabet = "0123456789.,;:-+/eT \t\n\n\n\"#%aN\xC3\xB8";
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (std::size_t i = random() % 400; i > 0; --i)
            text += alphabet[random() % alphabet.size()];
        write("r.csv", text);
        try {
            STLObject log("r.csv");
            log.detect();
            if (log.check({}) == JobOutcome::Done)
                importSTL(log, "r.ts", {});
        } catch (const STLError&) {
        }
    }
    EXPECT_LE(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 2);
}

TEST_F(Stl, fullDiskLeavesTheOldFile)
{
    std::string rows = "A;B\n";
    for (int i = 0; i < 50000; ++i)
        rows += "1;2\n";
    write("m.csv", rows);
    write("out.ts", "old");
    STLObject log("m.csv");
    log.detect();
    log.check({});
    {
        const FileSizeLimit full(100'000);
        EXPECT_ANY_THROW(importSTL(log, "out.ts", {}));
    }
    EXPECT_EQ(2, std::distance(fs::directory_iterator("."), fs::directory_iterator()));
    EXPECT_EQ(3U, fs::file_size("out.ts"));
    EXPECT_EQ(50000U, import(log)->samples()) << "and the log can be imported later";
}

TEST_F(Stl, failedImportLeavesTheOldFile)
{
    write("m.csv", "A;B\n1;1\n2;2\n3;3\n");
    write("out.ts", "old");
    STLObject log("m.csv");
    log.detect();
    log.check({});
    write("m.csv", "A;B\n1;1\n");
    EXPECT_THROW(importSTL(log, "out.ts", {}), STLError);
    fs::remove("m.csv");
    EXPECT_THROW(importSTL(log, "out.ts", {}), std::system_error);

    std::string rows = "A;B\n";
    for (int i = 0; i < 9000; ++i)
        rows += "1;1\n";
    write("m.csv", rows);
    log.detect();
    EXPECT_EQ(JobOutcome::Cancelled, log.check([](auto, auto) { return false; }));
    EXPECT_FALSE(log.isRead());
    log.check({});
    EXPECT_EQ(JobOutcome::Cancelled, importSTL(log, "out.ts", [](auto, auto) { return false; }));
    EXPECT_EQ(2, std::distance(fs::directory_iterator("."), fs::directory_iterator()));
    EXPECT_EQ(3U, fs::file_size("out.ts"));
}

}  // namespace
