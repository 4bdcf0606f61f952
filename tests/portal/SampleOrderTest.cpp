// Which sample stands in which row, what a cell's text means, and statistics in steps.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "portal/CellText.h"
#include "portal/RunStatistics.h"
#include "portal/SampleOrder.h"

using namespace veltrac;

TEST(SampleOrder, MissingValuesStandLastAndEqualOnesKeepTheirOrder)
{
    const std::vector<float> values = {5, NAN, -1, 5, 3, NAN, -1};
    const ColumnReader read = [&](std::uint32_t first, std::span<float> out) {
        std::copy_n(values.begin() + first - 1, out.size(), out.begin());
    };
    std::vector<std::uint32_t> samples;
    sortSamples(read, 1, 7, SortOrder::Ascending, {}, samples);
    EXPECT_EQ(samples, (std::vector<std::uint32_t>{3, 7, 5, 1, 4, 2, 6}));
    sortSamples(read, 2, 5, SortOrder::Descending, {}, samples);
    EXPECT_EQ(samples, (std::vector<std::uint32_t>{4, 5, 3, 2}));
    // More than two steps of reading, not from the first sample on.
    constexpr std::uint32_t kLast = 20'000;
    const ColumnReader scattered = [](std::uint32_t first, std::span<float> out) {
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = static_cast<float>((first + i) * 7919 % 20011);
    };
    std::vector<std::uint32_t> many;
    sortSamples(scattered, 3, kLast, SortOrder::Ascending, {}, many);
    ASSERT_EQ(many.size(), kLast - 2U);
    for (std::size_t i = 1; i < many.size(); ++i)
        ASSERT_LT(many[i - 1] * 7919ULL % 20011, many[i] * 7919ULL % 20011) << i;
    const SampleOrder order(samples);
    for (int row = 0; row < 4; ++row)
        EXPECT_EQ(order.row(order.sample(row)), row);
    for (const std::uint32_t notShown : {0U, 1U, 6U, 4000000000U})
        EXPECT_FALSE(order.row(notShown)) << notShown;
}

TEST(CellText, NumbersGapsAndTolerances)
{
    struct Row
    {
        const char* typed;
        float number;
        double tolerance;
    };
    const Row good[] = {{" 2,5\t", 2.5F, 0},    {"-1e3", -1000, 0},       {"+7.1250", 7.125F, 0.5e-4},
                        {"3,0000 ", 3, 0.5e-4}, {"nan", NAN, 0},          {" NaN ", NAN, 0},
                        {"", NAN, 0},           {"0.12345", 0.12345F, 0}, {"1e38", 1e38F, 0}};
    for (const Row& row : good) {
        const std::optional<float> number = cellNumber(row.typed);
        ASSERT_TRUE(number) << row.typed;
        EXPECT_TRUE(*number == row.number || (std::isnan(*number) && std::isnan(row.number))) << row.typed;
        EXPECT_EQ(searchTolerance(row.typed), row.tolerance) << row.typed;
        EXPECT_EQ(std::isnan(row.number), isMissingText(row.typed)) << row.typed;
    }
    for (const char* const bad : {"1e39", "inf", "x", "1 2", "0x10", "1.234,5", "nano"})
        EXPECT_FALSE(cellNumber(bad)) << bad;
    EXPECT_EQ(exactText(0.1F), "0.1");
    EXPECT_EQ(exactText(NAN), "nan");
}

TEST(RunStatistics, CoverAllRunsInStepsAndStopAtWhatCannotBeRead)
{
    constexpr std::uint32_t kEnd = 10000;
    const ReaderOfColumn readerOf = [](std::uint32_t column) -> ColumnReader {
        return [column](std::uint32_t first, std::span<float> out) {
            if (column == 9)
                throw std::runtime_error("unreadable");
            for (std::size_t i = 0; i < out.size(); ++i)
                out[i] = first + i == 7 ? NAN : static_cast<float>(column * (first + i));
        };
    };
    const auto all = [&](std::vector<SampleRun> runs) {
        RunStatistics statistics(std::move(runs), readerOf);
        while (!statistics.isComplete())
            statistics.readOn();
        return statistics;
    };
    const RunStatistics done = all({{1, 5, kEnd}, {2, 3, 4}});
    EXPECT_EQ(done.total(), kEnd - 4U + 2U);
    EXPECT_EQ(done.missing(), 1U);
    EXPECT_EQ(done.least(), 5.0);
    EXPECT_EQ(done.greatest(), kEnd);
    const double sum = kEnd * (kEnd + 1.0) / 2.0 - 10.0 - 7.0 + 14.0;
    EXPECT_DOUBLE_EQ(done.mean(), sum / (kEnd - 4.0 + 1.0));
    EXPECT_TRUE(all({{1, 5, 6}, {9, 1, 2}}).isUnreadable());
}
