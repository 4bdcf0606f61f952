// Derivative and integral: the rules at both ends, over run borders, and what a save leaves of a target.

#include "calc/Calculus.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kSamples = 100003;  // more than three runs

float wave(std::uint32_t s)
{
    return static_cast<float>(std::sin(s * 0.37) * 1000.0);
}

void fill(TSFILE& file)
{
    for (std::uint32_t s = 1; s <= file.samples(); ++s)
        file.setValue(s, 1, wave(s));
}

JobOutcome compute(decltype(&differentiate) job, TSFILE& work)
{
    return job(SourceColumn(work, 1), work, Steps::Equal, {});
}

bool goesOnToHalf(std::uint64_t done, std::uint64_t total)
{
    return 2 * done <= total;
}

}  // namespace

TEST(Calculus, EverySampleEqualsTheRuleAlsoAtRunBorders)
{
    const TestDirectory directory;
    TSFILE work("w", kSamples, 2, 0);
    fill(work);
    work.dt(0.5F);
    ASSERT_EQ(compute(differentiate, work), JobOutcome::Done);
    for (std::uint32_t s = 1; s < kSamples; ++s)
        ASSERT_EQ(work.value(s, 2), static_cast<float>((static_cast<double>(wave(s + 1)) - wave(s)) / 0.5))
            << s;
    EXPECT_EQ(work.value(kSamples, 2), work.value(kSamples - 1, 2));

    ASSERT_EQ(compute(integrate, work), JobOutcome::Done);
    EXPECT_EQ(work.value(1, 2), 0.0F);
    long double sum = 0.0L;
    for (std::uint32_t s = 2; s <= kSamples; ++s) {
        sum += (static_cast<long double>(wave(s - 1)) + wave(s)) * 0.5L * 0.5L;
        ASSERT_NEAR(work.value(s, 2), static_cast<double>(sum),
                    std::fabs(static_cast<double>(sum)) * 6e-8 + 1e-9)
            << s;
    }
}

TEST(Calculus, DerivativeOfTheIntegralIsTheMeanOfNeighbours)
{
    const TestDirectory directory;
    TSFILE work("w", 2000, 2, 0);
    for (std::uint32_t s = 1; s <= 2000; ++s)
        work.setValue(s, 1, static_cast<float>(s % 7));
    work.dt(1.0F);
    compute(integrate, work);
    for (std::uint32_t s = 1; s <= 2000; ++s)
        work.setValue(s, 1, work.value(s, 2));
    compute(differentiate, work);
    for (std::uint32_t s = 1; s < 2000; ++s)
        ASSERT_FLOAT_EQ(work.value(s, 2), static_cast<float>(s % 7 + (s + 1) % 7) * 0.5F) << s;
}

TEST(Calculus, ShortFilesHaveTheirOwnRules)
{
    const TestDirectory directory;
    TSFILE one("one", 1, 2, 0);
    one.setValue(1, 1, 5.0F);
    one.setValue(1, 2, 9.0F);
    one.dt(1.0F);
    compute(differentiate, one);
    EXPECT_EQ(one.value(1, 2), 0.0F);
    one.setValue(1, 2, 9.0F);
    compute(integrate, one);
    EXPECT_EQ(one.value(1, 2), 0.0F);
    TSFILE none("none", 0, 2, 0);
    EXPECT_EQ(compute(integrate, none), JobOutcome::Done);
}

TEST(Calculus, SaveCopiesWhatBothHaveAndLeavesTheRest)
{
    const TestDirectory directory;
    TSFILE work("w", 50, 2, 0);
    fill(work);
    work.dt(0.25F);
    work.columnName(2, "d(col1)/dt");
    ColumnTarget target{std::make_unique<TSFILE>("t", 80, 3, 0), "t.ts"};
    target.file->setValue(60, 1, 6.0F);
    target.file->setValue(10, 3, 3.0F);
    std::filesystem::path backup;
    const CalculusSave save = saveResult(work, target, {}, backup);
    EXPECT_EQ(save.copied, 50U);
    EXPECT_EQ(target.file->dt(), 0.25F);
    EXPECT_STREQ(target.file->columnName(2), "d(col1)/dt");
    EXPECT_EQ(target.file->value(50, 1), wave(50));
    EXPECT_EQ(target.file->value(60, 1), 6.0F);
    EXPECT_EQ(target.file->value(10, 3), 3.0F);
}

TEST(Calculus, CancelledOrFailedSavePutsTheOldValuesBack)
{
    const TestDirectory directory;
    TSFILE work("w", kSamples, 2, 0);
    fill(work);
    work.dt(0.25F);
    {
        TSFILE target("t", kSamples, 4, 0);
        target.dt(7.0F);
        target.setValue(1, 1, 42.0F);
    }
    const auto before = bytesOf("t.ts");
    std::filesystem::path backup;
    ColumnTarget target{openTsFile("t.ts", false), "t.ts"};
    EXPECT_EQ(saveResult(work, target, goesOnToHalf, backup).outcome, JobOutcome::Cancelled);
    EXPECT_EQ(bytesOf("t.ts"), before);
    {
        // There is room for the old values, which are half of the file, but not for all new ones.
        const FileSizeLimit full(before.size() / 512 * 3 / 4 * 512);
        EXPECT_THROW(saveResult(work, target, {}, backup), TS::Failure);
    }
    EXPECT_EQ(target.file, nullptr);
    EXPECT_EQ(bytesOf("t.ts"), before);
    EXPECT_TRUE(backup.empty());
}

TEST(Calculus, OwnTimesGiveTheDerivativeAndIntegralOfUnequalSteps)
{
    const TestDirectory directory;
    constexpr std::uint32_t kRows = 40000;  // more than a run
    TSFILE source("s", kRows, 1, 1);
    source.dt(1.0F);
    TSFILE work("w", kRows, 2, 0);
    const auto timeOf = [](std::uint32_t s) { return 0.5 * s + (s % 3 == 0 ? 0.125 : 0.0); };
    for (std::uint32_t s = 1; s <= kRows; ++s) {
        source.setValue(s, 1, static_cast<float>(timeOf(s)));
        source.setValue(s, 2, static_cast<float>(3.0 * timeOf(s)));
    }
    const SourceColumn column(source, 2);
    takeSource(column, work, "r", "d(%1)/dt", "%1/%2", {});
    ASSERT_EQ(differentiate(column, work, Steps::Own, {}), JobOutcome::Done);
    for (const std::uint32_t s : {1U, 3U, 32768U, 32769U, kRows})
        EXPECT_FLOAT_EQ(work.value(s, 2), 3.0F) << s;
    ASSERT_EQ(integrate(column, work, Steps::Own, {}), JobOutcome::Done);
    for (const std::uint32_t s : {2U, 4U, 32769U, kRows})
        EXPECT_FLOAT_EQ(work.value(s, 2),
                        static_cast<float>(1.5 * (timeOf(s) * timeOf(s) - timeOf(1) * timeOf(1))))
            << s;
}

TEST(SourceColumn, TakesOnlyTheRowsOfARingThatHoldDataAndStartsWhereTheRangeStarts)
{
    const TestDirectory directory;
    struct Case
    {
        std::uint32_t written;
        std::uint32_t first;
        std::uint32_t last;
        std::uint32_t samples;
        float value;  // of the range's first sample
    };
    for (const Case& c : {Case{40, 1, 0, 40, 1.0F}, Case{40, 11, 30, 20, 11.0F}, Case{130, 1, 0, 100, 31.0F},
                          Case{130, 81, 0, 20, 111.0F}, Case{0, 1, 0, 0, 0.0F}, Case{40, 50, 60, 0, 0.0F}}) {
        SCOPED_TRACE(std::to_string(c.written) + " from " + std::to_string(c.first));
        TSFILE ring("r", 100, 1, 0);
        ring.dt(0.25F);
        ring.startSeconds(1000000);
        ring.setRingMode(true);
        for (std::uint32_t s = 1; s <= c.written; ++s) {
            const auto v = static_cast<float>(s);
            ring.writeRow(s, &v, false);
        }
        const SourceColumn column(ring, 1, c.first, c.last);
        ASSERT_EQ(column.samples(), c.samples);
        if (c.samples == 0)
            continue;
        std::vector<float> values(c.samples);
        column.read(1, values);
        EXPECT_EQ(values.front(), c.value);
        EXPECT_EQ(values.back(), c.value + static_cast<float>(c.samples) - 1.0F);
        TSFILE result("o", c.samples, 2, 0);
        column.copyHeaderTo(result);
        EXPECT_EQ(result.sampleTime(1), 1000000 + 0.25 * static_cast<double>(c.value));
    }
}
