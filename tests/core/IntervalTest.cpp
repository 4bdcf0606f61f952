// An interval saved as a file of its own.
#include <gtest/gtest.h>

#include "core/ColumnCopy.h"
#include "core/Interval.h"
#include "core/TSFILE.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

TEST(Interval, rowsKeepTheirTimesValuesAndTexts)
{
    const TestDirectory directory;
    const struct
    {
        const char* label;
        int timeMode;
        std::uint32_t startSeconds;
        bool ring;
    } cases[] = {{"plain", 0, 0, false},
                 {"clock", 0, 1'700'000'000, false},
                 {"own times", 1, 1'700'000'000, false},
                 {"ring", 0, 0, true}};
    constexpr std::uint32_t kSamples = 40'500;  // more than are copied at once
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        {
            TSFILE file("source.ts", kSamples, 2, c.timeMode);
            file.dt(0.5F);
            file.startTime(0.25F);
            file.startSeconds(c.startSeconds);
            file.description("a series");
            file.columnDescription(file.columns(), "force [N]");
            file.setRingMode(c.ring);
            std::vector<float> row(file.columns());
            for (std::uint32_t s = 1; s <= (c.ring ? kSamples + 200 : kSamples); ++s) {
                for (std::size_t i = 0; i < row.size(); ++i)
                    row[i] = static_cast<float>(s * (i + 1));
                file.writeRow(s, row.data(), s % 1000 == 0);
            }
        }
        const PlotFile from("source.ts");
        ASSERT_EQ(saveInterval(from, 101, kSamples - 100, "part.ts", {}), JobOutcome::Done);
        const PlotFile part("part.ts");
        ASSERT_EQ(part.rows(), kSamples - 200);
        ASSERT_EQ(part.columns(), from.columns());
        for (const std::uint32_t row : {1U, 2U, 32'768U, 32'769U, kSamples - 200}) {
            EXPECT_EQ(part.value(part.columns(), row), from.value(from.columns(), row + 100));
            EXPECT_EQ(part.startSeconds() + part.timeOf(row), from.startSeconds() + from.timeOf(row + 100));
        }
        EXPECT_EQ(part.columnDescription(part.columns()), "force [N]");
        EXPECT_EQ(part.description(), "a series");
        EXPECT_EQ(part.isPlottable(1), from.isPlottable(1));
    }
}

TEST(Interval, aCopyOfALongRingBeginsWhereItsOldestSampleStands)
{
    const TestDirectory directory;
    TSFILE ring("ring.ts", 1000, 1, 0);
    ring.dt(0.001F);
    ring.startSeconds(1'700'000'000);
    ring.setRingMode(true);
    const float value = 1.0F;
    for (std::uint32_t s = 86'400'000; s <= 86'401'500; ++s)  // a day at 1 kHz
        ring.writeRow(s, &value, true);
    ring.flush(true);
    ASSERT_EQ(ring.ringStart(), 86'400'501U);
    TSFILE copy("copy.ts", 1000, 1, 0);
    copyHeaderFromOldest(ring, copy);
    const double step = static_cast<double>(ring.dt());
    EXPECT_NEAR(copy.startSeconds() - 1.7e9 + static_cast<double>(copy.startTime()), 86'400'500.0 * step,
                1e-6);
}

TEST(Interval, cancelledLeavesTheOldFileAndNothingElse)
{
    const TestDirectory directory;
    TSFILE("source.ts", 1000, 1, 0).flush(true);
    TSFILE("part.ts", 7, 1, 0).flush(true);
    const PlotFile from("source.ts");
    EXPECT_EQ(saveInterval(from, 1, 1000, "part.ts", [](auto, auto) { return false; }),
              JobOutcome::Cancelled);
    EXPECT_EQ(PlotFile("part.ts").rows(), 7U);
    EXPECT_EQ(directory.fileCount(), 2U);
}

}  // namespace
