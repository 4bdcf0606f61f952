// Derivative and integral: the rules at both ends, over run borders, and what a save leaves of a target.

#include "calc/Calculus.h"

#include <gtest/gtest.h>

#include <cmath>

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
    ASSERT_EQ(differentiate(work, 0.5, {}), JobOutcome::Done);
    for (std::uint32_t s = 1; s < kSamples; ++s)
        ASSERT_EQ(work.value(s, 2), static_cast<float>((static_cast<double>(wave(s + 1)) - wave(s)) / 0.5))
            << s;
    EXPECT_EQ(work.value(kSamples, 2), work.value(kSamples - 1, 2));

    ASSERT_EQ(integrate(work, 0.5, {}), JobOutcome::Done);
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
    integrate(work, 1.0, {});
    for (std::uint32_t s = 1; s <= 2000; ++s)
        work.setValue(s, 1, work.value(s, 2));
    differentiate(work, 1.0, {});
    for (std::uint32_t s = 1; s < 2000; ++s)
        ASSERT_FLOAT_EQ(work.value(s, 2), static_cast<float>(s % 7 + (s + 1) % 7) * 0.5F) << s;
}

TEST(Calculus, ShortFilesHaveTheirOwnRules)
{
    const TestDirectory directory;
    TSFILE one("one", 1, 2, 0);
    one.setValue(1, 1, 5.0F);
    one.setValue(1, 2, 9.0F);
    differentiate(one, 1.0, {});
    EXPECT_EQ(one.value(1, 2), 0.0F);
    one.setValue(1, 2, 9.0F);
    integrate(one, 1.0, {});
    EXPECT_EQ(one.value(1, 2), 0.0F);
    TSFILE none("none", 0, 2, 0);
    EXPECT_EQ(integrate(none, 1.0, {}), JobOutcome::Done);
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
