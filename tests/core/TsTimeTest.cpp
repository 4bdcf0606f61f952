// Time, time columns and ring files.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

TEST(RingFile, WrittenNumbersFoldAndUnfoldingPutsTheOldestFirst)
{
    const TestDirectory directory;
    TSFILE file("a", 100, 1, 0);
    file.dt(0.5F);
    file.startSeconds(1000);
    file.setRingMode(true);
    for (std::uint32_t n = 1; n <= 250; ++n)
        file.setValue(n, 1, static_cast<float>(n));
    EXPECT_EQ(file.lastSample(), 250U);
    EXPECT_EQ(file.ringStart(), 151U);
    EXPECT_EQ(file.value(250, 1), 250.0F);
    EXPECT_EQ(file.value(50, 1), 250.0F);
    float run[20];
    file.readColumn(1, 195, run);
    EXPECT_EQ(run[19], 214.0F);

    file.setRingMode(false);
    EXPECT_EQ(file.value(1, 1), 151.0F);
    EXPECT_EQ(file.value(100, 1), 250.0F);
    EXPECT_EQ(file.startSeconds(), 1075U);
    EXPECT_EQ(file.lastSample() + file.ringStart(), 0U);
    TSFILE reader("a", true);
    EXPECT_EQ(reader.value(100, 1), 250.0F);
}

TEST(RingFile, EmptyOrReadOnlyOnesAreRefusedCleanly)
{
    const TestDirectory directory;
    TSFILE empty("empty", 0, 1, 0);
    empty.setRingMode(true);
    const std::function<void()> accesses[] = {[&] { empty.value(1, 1); },
                                              [&] { empty.setValue(1, 1, 1.0F); }};
    for (const auto& access : accesses) {
        try {
            access();
            FAIL();
        } catch (const TS::ILL_SAMPLE& e) {
            EXPECT_EQ(e.flag, 1);
        }
    }
    TSFILE reader("empty.ts", true);
    try {
        reader.setRingMode(false);
        FAIL();
    } catch (const TS::READONLY_VIOLATION& e) {
        EXPECT_EQ(e.name, "empty.ts");
    }
    EXPECT_EQ(reader.ringStart(), 1U);
}

TEST(SampleTime, FirstSampleLiesOneStepAfterTheStartOnTheFloatGrid)
{
    const TestDirectory directory;
    TSFILE file("a", 5, 1, 0);
    file.dt(0.1F);
    EXPECT_EQ(file.sampleTime(1), static_cast<double>(0.1F));
    EXPECT_EQ(file.sampleTime(0), file.sampleTime(1));
    EXPECT_EQ(file.sampleTime(3), static_cast<double>(3.0F * 0.1F));
    file.startSeconds(1000000063);
    file.startTime(0.25F);
    EXPECT_EQ(file.sampleTime(1), 1000000064.0 + static_cast<double>(0.1F));
}

TEST(SampleTime, TimeColumnsSplitWholeSecondsAndFractions)
{
    const TestDirectory directory;
    TSFILE file("a", 5, 1, 2);
    file.startSeconds(1000);
    file.setSampleTime(2, 101001.75);
    EXPECT_EQ(file.value(2, 1), 0.75F);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(file.value(2, 2)), 100001U);
    EXPECT_EQ(file.sampleTime(2), 101001.75);
    const float in[] = {7.0F};
    file.appendRowWithTime(1003.5, in, true);
    float out[1];
    EXPECT_EQ(file.readRowWithTime(1, out), 1003.5);
    EXPECT_EQ(out[0], 7.0F);
    // Rows of two who write take turns.
    TSFILE("a", false).appendRowWithTime(1004.5, in, true);
    file.refresh();
    file.appendRowWithTime(1005.25, in, true);
    EXPECT_EQ(file.readRowWithTime(2, out), 1004.5);
    EXPECT_EQ(file.readRowWithTime(3, out), 1005.25);
    file.startTime(0.5F);
    EXPECT_EQ(file.readRowWithTime(3, out), 1005.75);
    file.startTime(0.0F);
    try {
        file.appendRowWithTime(999.0, in, true);
        FAIL();
    } catch (const TS::ILL_TIME& e) {
        EXPECT_EQ(e.value1, 999U);
        EXPECT_EQ(e.value2, 1000U);
    }
    file.makeTimeColumns(3, 0);
    EXPECT_STREQ(file.columnName(1), "_Time");
    EXPECT_THROW(file.makeTimeColumns(4, 0), TS::ILL_COLUMN);
}

TEST(SampleTime, FindSampleEqualsALinearSearch)
{
    const TestDirectory directory;
    TSFILE file("a", 50000, 1, 0);
    file.dt(0.01F);
    for (const double t : {-1.0, 0.0, 0.005, 0.01, 0.015, 123.456, 499.99, 500.0, 1e9, std::nan("")}) {
        std::uint32_t expected = 1;
        for (std::uint32_t s = 1; s <= 50000 && file.sampleTime(s) <= t; ++s)
            expected = s;
        EXPECT_EQ(file.findSample(t), expected) << t;
    }
}

TEST(SampleTime, RebasingMovesTheStartToTheOldestSample)
{
    const TestDirectory directory;
    TSFILE file("a", 3, 0, 1);
    file.startSeconds(1000);
    file.setRingMode(true);
    for (std::uint32_t i = 1; i <= 5; ++i)
        file.appendRowWithTime(1000.0 + 100.0 * i, nullptr, true);
    EXPECT_EQ(file.ringStart(), 3U);
    file.adjustTime(true, 1000.0F);
    EXPECT_EQ(file.startSeconds(), 1000U);
    file.adjustTime(true, 100.0F);
    EXPECT_EQ(file.startSeconds(), 1300U);
    EXPECT_EQ(file.value(3, 1), 0.0F);
    EXPECT_EQ(file.sampleTime(5), 1500.0);
}

TEST(SampleTime, LyingCountsEndTheWalksSoon)
{
    const TestDirectory directory;
    constexpr std::uint32_t kClaimed = 4000000000;
    HandMadeFile(1024, false).word(0, kClaimed).word(4, 1).real(16, 0.001F).word(508, 3).write("plain.ts");
    TSFILE plain("plain", false);
    EXPECT_EQ(plain.findSample(1e12), kClaimed);
    EXPECT_NEAR(plain.sampleTime(plain.findSample(1e6)), 1e6, 0.1);
    plain.dt(0.0F);
    EXPECT_EQ(plain.findSample(1e12), kClaimed);

    HandMadeFile ring(2048, false);
    ring.word(0, 3).word(4, 1).word(140, 2).word(144, kClaimed).word(508, 3).text(519, "Time");
    ring.real(1024, 40.0F).real(1028, 20.0F).real(1032, 30.0F).write("ring.ts");
    TSFILE file("ring", false);
    EXPECT_EQ(file.findSample(50.0), kClaimed);
    // Nor do jumps that pass over the one row which lies late enough.
    HandMadeFile wide(2048, false);
    wide.word(0, 102)
        .word(4, 1)
        .real(16, 0.001F)
        .word(140, 2)
        .word(144, kClaimed)
        .word(508, 3)
        .text(519, "Time");
    for (std::size_t row = 0; row < 102; ++row)
        wide.real(1024 + 4 * row, row == 7 ? 70.0F : 48.98F);
    wide.write("wide.ts");
    EXPECT_EQ(TSFILE("wide", false).findSample(50.0),
              3999999979U);  // where single steps begin, not far before the end
    file.adjustTime(true, 1.0F);
    EXPECT_EQ(file.startSeconds(), 20U);
    EXPECT_EQ(file.sampleTime(4), 40.0);
}

// Each of them hands out a buffer that lives on behind the call.
TEST(Threads, TextsOfFilesThatAreReadAtOnceDoNotMeet)
{
    const TestDirectory directory;
    std::vector<int> wrong(4);
    std::vector<std::thread> readers;
    for (int id = 0; id < 4; ++id) {
        readers.emplace_back([id, &wrong] {
            const std::string own = "n" + std::to_string(id);
            TSFILE file(own.c_str(), 10, 3, 0);
            file.columnName(2, own.c_str());
            file.columnDescription(2, own.c_str());
            for (int i = 0; i < 300; ++i) {
                const std::string day = "197" + std::to_string(id);
                wrong[static_cast<std::size_t>(id)] +=
                    file.columnName(2) != own || file.columnDescription(2) != own ||
                    TSFILE::tsFileName(own.c_str()) != own + ".ts" ||
                    TSFILE::formatTime(31557600.0 * id + 8e6, i % 2 == 0, "%Y") != day;
            }
        });
    }
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(wrong, std::vector<int>(4));
}
