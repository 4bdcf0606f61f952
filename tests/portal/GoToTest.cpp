// "Go to" as it is typed, on files that tell their time in different ways.

#include <gtest/gtest.h>

#include <QDateTime>

#include "core/TSFILE.h"
#include "share/GoTo.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

using Kind = GoToTarget::Kind;

// The row that a text goes to; 0 where it is refused.
std::uint32_t rowOf(const char* text, TSFILE& file)
{
    QString reason;
    const auto row = goToRow(QString::fromUtf8(text), file, reason);
    EXPECT_EQ(row.has_value(), reason.isEmpty()) << text;
    return row.value_or(0);
}

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
        {"250000", Kind::Sample, 250000, ""},     {" 250 000 ", Kind::Sample, 250000, ""},
        {"12.5 s", Kind::Elapsed, 12.5, ""},      {"12,5s", Kind::Elapsed, 12.5, ""},
        {"250 ms", Kind::Elapsed, 0.25, ""},      {"2 min", Kind::Elapsed, 120, ""},
        {"1e3 s", Kind::Elapsed, 1000, ""},       {"3 months", Kind::Elapsed, 3, "months"},
        {"13:45:30", Kind::TimeOfDay, 49530, ""}, {"13:45", Kind::TimeOfDay, 49500, ""},
        {"0:00:01.5", Kind::TimeOfDay, 1.5, ""},  {"50%", Kind::Percent, 50, ""},
        {"12,5 %", Kind::Percent, 12.5, ""},
    };
    for (const Parsed& row : rows) {
        const auto target = parseGoTo(QString::fromUtf8(row.text));
        ASSERT_TRUE(target.has_value()) << row.text;
        EXPECT_EQ(target->kind, row.kind) << row.text;
        EXPECT_NEAR(target->number, row.number, 1e-9) << row.text;
        EXPECT_EQ(target->fileUnit.toStdString(), row.unit) << row.text;
    }
    for (const char* const nothing : {"", "  ", "-5", "12.5", "24:00", "13:60", "%", "s", "1.2.3 s", "x 5"})
        EXPECT_FALSE(parseGoTo(QString::fromUtf8(nothing)).has_value()) << nothing;
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
    const QDateTime start(QDate(2016, 5, 17), QTime(22, 0, 0));
    file.startSeconds(static_cast<std::uint32_t>(start.toSecsSinceEpoch()));
    expectRows({{"22:00:10", 10}, {"23:00", 3600}, {"1:00:00", 10800}, {"21:59:59", 86399}}, file);
}

TEST(GoTo, FindsRowsByTimeColumnsAndInRingFiles)
{
    const TestDirectory directory;
    TSFILE timed("a.ts", 5, 1, 2);
    const double times[] = {0.25, 1.5, 1.75, 70000.5, 70001.25};
    for (std::uint32_t s = 1; s <= 5; ++s)
        timed.setSampleTime(s, times[s - 1]);
    expectRows({{"0.25 s", 1}, {"1.6 s", 2}, {"70000 s", 3}, {"70001.25 s", 5}, {"80000 s", 0}}, timed);
    EXPECT_EQ(elapsedTime(timed, 4), 70000.5);
    EXPECT_FALSE(hasCalendar(timed));
    timed.setSampleTime(5, 1585699200.0);  // 2020
    EXPECT_TRUE(hasCalendar(timed));

    TSFILE ring("b.ts", 100, 1, 0);
    ring.dt(1.0F);
    ring.setRingMode(true);
    ring.setValue(250, 1, 9.0F);  // samples 151 to 250; 250 lies in row 50
    EXPECT_EQ(sampleInRow(ring, 50), 250U);
    EXPECT_EQ(sampleInRow(ring, 51), 151U);
    EXPECT_EQ(elapsedTime(ring, 50), 250.0);
    expectRows({{"250 s", 50}, {"151 s", 51}, {"200 s", 100}, {"100 s", 0}}, ring);
}
