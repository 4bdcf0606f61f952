// Extremes, average and search of a column.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "core/ColumnScan.h"

using namespace veltrac;

namespace {

ColumnReader readerOf(const std::vector<float>& values)
{
    return [&values](std::uint32_t first, std::span<float> out) {
        std::copy_n(values.begin() + first - 1, out.size(), out.begin());
    };
}

std::uint32_t sizeOf(const std::vector<float>& values)
{
    return static_cast<std::uint32_t>(values.size());
}

}  // namespace

TEST(ColumnScan, FirstOfEqualExtremesWinsAndMissingValuesAreNoExtremes)
{
    struct Row
    {
        const char* label;
        std::vector<float> values;
        double least;
        std::uint32_t leastAt;
        double most;
        std::uint32_t mostAt;
        double average;
        double present;
        std::uint32_t missing;
    };
    const Row rows[] = {
        {"first of equals", {3, 7, 7, 1}, 1, 4, 7, 2, 4.5, 4.5, 0},
        {"one sample", {-2}, -2, 1, -2, 1, -2, -2, 0},
        {"missing", {NAN, 5, NAN, 1}, 1, 4, 5, 2, NAN, 3, 2},
        {"all missing", {NAN, NAN}, 1e36, 0, -1e36, 0, NAN, NAN, 2},
        {"beyond the bound", {2e36F, 3e36F}, 1e36, 0, 3e36F, 2, 2.5e36, 2.5e36, 0},
        {"no samples", {}, 1e36, 0, -1e36, 0, NAN, NAN, 0},
    };
    const auto same = [](double a, double b) {
        return (std::isnan(a) && std::isnan(b)) || std::abs(a - b) <= 1e-6 * std::abs(b);
    };
    for (const Row& row : rows) {
        ColumnExtremes scan;
        ASSERT_EQ(scanColumn(readerOf(row.values), sizeOf(row.values), {}, scan), JobOutcome::Done);
        EXPECT_EQ(scan.minimum, row.least) << row.label;
        EXPECT_EQ(scan.minimumSample, row.leastAt) << row.label;
        EXPECT_EQ(scan.maximum, row.most) << row.label;
        EXPECT_EQ(scan.maximumSample, row.mostAt) << row.label;
        EXPECT_TRUE(same(scan.average, row.average)) << row.label << ' ' << scan.average;
        EXPECT_TRUE(same(scan.averagePresent, row.present)) << row.label << ' ' << scan.averagePresent;
        EXPECT_EQ(scan.missing, row.missing) << row.label;
    }
}

TEST(ColumnScan, LongColumnsHaveTheExtremesOfAPlainLoop)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> any(-1.0F, 1.0F);
    // Below, at and above what is compared at once, and more than is read at once.
    for (const std::uint32_t size : {7U, 8U, 29U, 8'195U, 150'003U})
        for (const bool hasHoles : {false, true})
            for (const std::uint32_t high : {0U, size / 3, size / 2 + 1, size - 1}) {
                SCOPED_TRACE(testing::Message() << size << " samples, the greatest at " << high);
                std::vector<float> values(size);
                for (std::uint32_t i = 0; i < size; ++i)
                    values[i] = hasHoles && i % 5 == 2 ? NAN : any(random);
                const std::uint32_t low = size - 1 - high;
                values[high] = 9.0F;
                values[low] = -9.0F;
                double sum = 0.0;
                std::uint32_t missing = 0;
                for (const float v : values)
                    if (std::isnan(v))
                        ++missing;
                    else
                        sum += static_cast<double>(v);
                ColumnExtremes scan;
                ASSERT_EQ(scanColumn(readerOf(values), size, {}, scan), JobOutcome::Done);
                EXPECT_EQ(scan.maximumSample, high + 1);
                EXPECT_EQ(scan.minimumSample, low + 1);
                EXPECT_EQ(scan.maximum, 9.0);
                EXPECT_EQ(scan.minimum, -9.0);
                EXPECT_EQ(scan.missing, missing);
                EXPECT_NEAR(scan.averagePresent, sum / (size - missing), 1e-9);
            }
}

TEST(ColumnScan, CancelledScanLeavesTheLastOutcome)
{
    const std::vector<float> values(20000, 1.0F);
    ColumnExtremes scan;
    scan.maximum = 42;
    const auto cancel = [](std::uint64_t, std::uint64_t) { return false; };
    EXPECT_EQ(scanColumn(readerOf(values), sizeOf(values), cancel, scan), JobOutcome::Cancelled);
    EXPECT_EQ(scan.maximum, 42);
}

// Long enough that matches and jumps lie in different runs and on their seams.
TEST(ColumnSearch, FindsWhatAPlainLoopFindsInBothDirections)
{
    std::vector<float> values(20000, 1.0F);
    for (const std::size_t i : {0U, 5U, 8191U, 8192U, 16384U, 19999U})
        values[i] = 2.5F;
    values[9000] = NAN;
    const SearchCondition conditions[] = {
        {Looking::Equal, 2.5}, {Looking::Equal, 2.4, 0.2}, {Looking::Above, 2.0},     {Looking::Below, 1.5},
        {Looking::Missing},    {Looking::JumpAbove, 1.0},  {Looking::JumpAbove, 1.5}, {Looking::Equal, 3.0}};
    const auto meets = [&](const SearchCondition& c, std::size_t i) {
        const double v = values[i];
        switch (c.looking) {
            case Looking::Equal:
                return std::abs(v - c.number) <= c.tolerance;
            case Looking::Above:
                return v > c.number;
            case Looking::Below:
                return v < c.number;
            case Looking::Missing:
                return std::isnan(v);
            default:
                return i > 0 && std::abs(v - values[i - 1]) > c.number;
        }
    };
    const std::uint32_t n = sizeOf(values);
    for (const SearchCondition& condition : conditions)
        for (const std::uint32_t from : {0U, 1U, 6U, 8191U, 8192U, 8193U, 9001U, 19999U, 20000U, 20001U}) {
            std::uint32_t below = 0;
            for (std::uint32_t s = from + 1; s <= n && below == 0; ++s)
                below = meets(condition, s - 1) ? s : 0;
            std::uint32_t above = 0;
            for (std::uint32_t s = std::min(from, n + 1) - (from > 0 ? 1 : 0); s >= 1 && above == 0; --s)
                above = meets(condition, s - 1) ? s : 0;
            std::uint32_t found = 7;
            searchColumn(readerOf(values), n, condition, from, Direction::Forward, {}, found);
            EXPECT_EQ(found, below) << static_cast<int>(condition.looking) << " from " << from;
            searchColumn(readerOf(values), n, condition, from, Direction::Backward, {}, found);
            EXPECT_EQ(found, above) << static_cast<int>(condition.looking) << " back from " << from;
        }
}
