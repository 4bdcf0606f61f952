// The ts-file by bytes: what is written by hand must be read, what is written must stand where it belongs.

#include "core/TSFILE.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <random>

#include "core/TsExceptions.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

// The payload of the exception that an access throws; a row that throws nothing fails.
template <typename Exception, typename Access>
TS::Failure failureOf(Access access)
{
    try {
        access();
    } catch (const Exception& e) {
        return e;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

void expectPayload(const TS::Failure& failure, std::uint32_t value1, std::uint32_t value2, int flag)
{
    EXPECT_EQ(failure.value1, value1);
    EXPECT_EQ(failure.value2, value2);
    EXPECT_EQ(failure.flag, flag);
}

class ByteOrders : public testing::TestWithParam<bool>
{
};

}  // namespace

TEST_P(ByteOrders, HandWrittenFileIsReadAndRewrittenInItsOwnOrder)
{
    const TestDirectory directory;
    HandMadeFile(1536, GetParam())
        .word(0, 3)
        .word(4, 2)
        .word(8, 77)
        .real(16, 0.5F)
        .real(24, 1.25F)
        .text(32, "Bridge")
        .text(92, "Time[s]")
        .word(132, 1000000000)
        .word(136, 42)
        .word(508, 3)
        .text(512 + 7, "Time  ")
        .text(576 + 7, "ABCDEFGHIJKL")
        .text(576 + 19, std::string(45, 'd'))
        .real(1024 + 4 * 3, -7.5F)
        .write("a.ts");
    {
        TSFILE file("a", false);
        EXPECT_EQ(file.samples(), 3U);
        EXPECT_EQ(file.columns(), 2U);
        EXPECT_EQ(file.dt(), 0.5F);
        EXPECT_EQ(file.startTime(), 1.25F);
        EXPECT_EQ(file.startSeconds(), 1000000000U);
        EXPECT_STREQ(file.description(), "Bridge");
        EXPECT_STREQ(file.timeUnit(), "Time[s]");
        EXPECT_STREQ(file.columnName(2), "ABCDEFGHIJKL");
        EXPECT_STREQ(file.columnDescription(2), std::string(45, 'd').c_str());
        EXPECT_EQ(file.columnNumber("Time\t"), 1U);
        EXPECT_EQ(file.columnNumber("time"), 0U);
        EXPECT_EQ(file.timeMode(), 1);
        EXPECT_EQ(file.value(2, 2), -7.5F);
        file.setValue(3, 1, 2.0F);
        file.dt(0.25F);
        file.columnName(2, "thirteen bytes");
        file.flush(true);
    }
    HandMadeFile expected(1536, GetParam());
    expected.word(0, 3).word(4, 2).word(8, 77).real(16, 0.25F).real(24, 1.25F).text(32, "Bridge");
    expected.text(92, "Time[s]").word(132, 1000000000).word(136, 42).word(508, 3).text(519, "Time  ");
    expected.text(583, "thirteen byt").text(595, std::string(45, 'd')).real(1036, -7.5F).real(1040, 2.0F);
    expected.write("expected");
    EXPECT_EQ(bytesOf("a.ts"), bytesOf("expected"));
}

TEST_P(ByteOrders, WildHeadersOpenAsTheyClaimAndDoNoWorseThanThrow)
{
    const TestDirectory directory;
    ::setenv("TMPDIR", directory.path().c_str(), 1);
    const std::vector<std::function<void(TSFILE&)>> accesses = {
        [](TSFILE& f) { f.value(1, 1); },
        [](TSFILE& f) { f.value(f.samples(), f.columns()); },
        [](TSFILE& f) { f.value(0, 0); },
        [](TSFILE& f) { f.setValue(f.samples(), f.columns(), 1.0F), f.flush(true); },
        [](TSFILE& f) { f.sampleTime(0), f.sampleTime(f.lastSample()); },
        [](TSFILE& f) { f.setSampleTime(0, NAN), f.setSampleTime(1, 1e300), f.flush(true); },
        [](TSFILE& f) { f.columnName(f.columns(), "new"), f.columnTime(1), f.columnNumber("none"); },
        [](TSFILE& f) {
            std::vector<float> v(300);
            f.readColumn(f.columns(), f.ringStart(), v);
        },
        [](TSFILE& f) {
            const std::vector<float> v(300);
            f.writeColumn(f.columns(), 1, v);
        },
        [](TSFILE& f) { f.refresh(), f.formatTime(f.sampleTime(1), true, "%Y"); },
        [](TSFILE& f) { f.setRingMode(f.ringStart() == 0); },
        [](TSFILE& f) { f.resize(f.samples() + 1); },
    };
    constexpr std::uint32_t kWords[] = {0, 1, 2, 9, 129, 0x7FFFFFFF, 0x80000000, 4000000000U, 0xFFFFFFFF};
    constexpr float kReals[] = {0.0F, 1.0F, -1.0F, NAN, INFINITY, 1e-45F, 3e38F};
    std::mt19937 random(7);
    const auto any = [&](const auto& pool) { return pool[random() % std::size(pool)]; };
    for (int round = 0; round < 200; ++round) {
        const std::uint32_t samples = any(kWords);
        const std::uint32_t columns = any(kWords);
        HandMadeFile made(512 + random() % 4 * 700, GetParam());
        made.word(0, samples).word(4, columns).real(16, any(kReals)).real(24, any(kReals));
        made.word(132, any(kWords))
            .word(140, round % 2 == 0 ? 0 : any(kWords))
            .word(144, any(kWords))
            .word(508, 3);
        made.write("a.ts");
        const auto before = bytesOf("a.ts");
        for (const bool readOnly : {true, false}) {
            TSFILE file("a", readOnly);
            ASSERT_EQ(file.samples(), samples);
            ASSERT_EQ(file.columns(), columns);
            for (const auto& access : accesses) {
                try {
                    access(file);
                } catch (const TS::Failure&) {
                    // No other exception, no crash and no change of what is only read: that is all.
                }
            }
            if (readOnly) {
                ASSERT_EQ(bytesOf("a.ts"), before);
            }
        }
    }
    ::unsetenv("TMPDIR");
}

INSTANTIATE_TEST_SUITE_P(Both, ByteOrders, testing::Values(false, true));

TEST(TsFile, CreatedFileHasExactlyTheBytesOfTheFormat)
{
    const TestDirectory directory;
    {
        const TSFILE file("a", 100, 9, 2);
    }
    HandMadeFile expected(512 + 1024 + 512 * 9, false);  // 1100 values: 9 blocks
    expected.word(0, 100).word(4, 11).word(508, 3).text(519, "Time").text(583, "Time32");
    for (std::size_t col = 3; col <= 11; ++col)
        expected.text(512 + 64 * (col - 1) + 7, (col < 10 ? "Column-0" : "Column-") + std::to_string(col));
    expected.write("expected");
    EXPECT_EQ(bytesOf("a.ts"), bytesOf("expected"));
}

TEST(TsFile, FileWithoutSamplesOrColumnsKeepsNoColumnOrientation)
{
    const TestDirectory directory;
    TSFILE("columns", 0, 3, 0);
    TSFILE("samples", 3, 0, 0);
    const auto bytes = bytesOf("columns.ts");
    EXPECT_EQ(bytes.size(), 1024U);
    EXPECT_EQ(bytes[12], 0);
    EXPECT_EQ(bytesOf("samples.ts").size(), 512U);
    HandMadeFile(512, false).write("zero.ts");
    TSFILE zero("zero", true);
    EXPECT_EQ(zero.samples() + zero.columns(), 0U);
}

TEST(TsFile, AddedColumnsMoveTheDataAndKeepTheSize)
{
    const TestDirectory directory;
    TSFILE file("a", 100, 2, 0);
    for (std::uint32_t s = 1; s <= 100; ++s)
        file.setValue(s, 1, static_cast<float>(s));
    file.resizeColumns(10);
    EXPECT_EQ(bytesOf("a.ts").size(), 1536U + 512U * 8);
    EXPECT_STREQ(file.columnName(10), "Column-10");
    EXPECT_EQ(file.value(1, 1), 1.0F);
    EXPECT_EQ(file.value(1, 3), 2.0F);  // values keep their place in the section
    file.resize(1000);
    EXPECT_EQ(bytesOf("a.ts").size(), 1536U + 512U * 79);
    EXPECT_EQ(file.value(1000, 10), 0.0F);
}

TEST(TsFile, EveryRefusedAccessCarriesItsPayload)
{
    const TestDirectory directory;
    TSFILE file("a", 10, 3, 0);
    expectPayload(failureOf<TS::ILL_SAMPLE>([&] { file.value(11, 1); }), 11, 10, 1);
    expectPayload(failureOf<TS::ILL_SAMPLE>([&] { file.setValue(0, 1, 1.0F); }), 0, 10, 0);
    expectPayload(failureOf<TS::ILL_SAMPLE>([&] { file.setValue(11, 1, 1.0F); }), 11, 10, 0);
    expectPayload(failureOf<TS::ILL_COLUMN>([&] { file.setValue(1, 4, 1.0F); }), 4, 3, 0);
    expectPayload(failureOf<TS::ILL_COLUMN>([&] { file.columnName(0); }), 0, 3, 1);
    expectPayload(failureOf<TS::ILL_COLUMN>([&] { file.columnDescription(4); }), 4, 3, 1);
    EXPECT_EQ(failureOf<TS::OPEN_ERROR>([] { TSFILE("none", true); }).name, "none");
    EXPECT_EQ(failureOf<TS::CREATE_ERROR>([] { TSFILE("no/such/dir", 1, 1, 0); }).name, "no/such/dir.ts");
    expectPayload(failureOf<TS::OPEN_ERROR>([] { TSFILE(9999, true); }), 9999, 0, 1);
    EXPECT_EQ(failureOf<TS::NO_TIME_COLUMN>([&] { file.appendRowWithTime(1.0, nullptr, false); }).name,
              "a.ts");

    TSFILE reader("a", true);
    expectPayload(failureOf<TS::READONLY_VIOLATION>([&] { reader.dt(2.0F); }), 0, 0, 1);
    EXPECT_EQ(reader.dt(), 0.0F);  // what the file refused is not claimed
    expectPayload(failureOf<TS::READONLY_VIOLATION>([&] { reader.flush(true); }), 0, 0, 1);
    reader.setValue(1, 1, 5.0F);
    expectPayload(failureOf<TS::READONLY_VIOLATION>([&] { reader.flush(false); }), 1024, 0, 1);

    HandMadeFile(512, false).word(508, 11).write("new.ts");
    expectPayload(failureOf<TS::NOT_TS_FILE>([] { TSFILE("new", true); }), 0, 0, 1);
    HandMadeFile(512, true).word(508, 11).write("new.ts");
    expectPayload(failureOf<TS::NOT_TS_FILE>([] { TSFILE("new", true); }), 0, 0, 1);
}

TEST(TsFile, ShortReadLeavesTheCachedBlockAndTellsItsBytes)
{
    const TestDirectory directory;
    {
        TSFILE file("a", 200, 1, 0);
        file.setValue(1, 1, 3.0F);
    }
    ASSERT_EQ(truncate("a.ts", 1024 + 512 + 100), 0);
    TSFILE file("a", true);
    EXPECT_EQ(file.value(1, 1), 3.0F);
    expectPayload(failureOf<TS::IO_ERROR>([&] { file.value(129, 1); }), 1536, 100100, 1);
    ASSERT_EQ(truncate("a.ts", 0), 0);
    EXPECT_EQ(file.value(1, 1), 3.0F);
}

TEST(TsFile, HeaderThatLiesOpensAndOnlyTheAccessThrows)
{
    const TestDirectory directory;
    HandMadeFile(1024, false)
        .word(0, 4000000000U)
        .word(4, 4000000000U)
        .real(16, NAN)
        .word(508, 3)
        .write("a.ts");
    TSFILE file("a", false);
    EXPECT_EQ(file.columns(), 4000000000U);
    EXPECT_EQ(file.timeMode(), 0);
    EXPECT_THROW(file.columnName(3999999999U), TS::IO_ERROR);
    EXPECT_THROW(file.value(4000000000U, 4000000000U), TS::IO_ERROR);
    EXPECT_THROW(file.value(0, 0), TS::IO_ERROR);
    EXPECT_THROW(file.resize(4100000000U), TS::IO_ERROR);

    HandMadeFile(512, false).word(0, 5).word(508, 3).write("nocolumns.ts");
    TSFILE noColumns("nocolumns", false);
    EXPECT_THROW(noColumns.value(1, 1), TS::IO_ERROR);
    EXPECT_THROW(noColumns.setValue(1, 1, 1.0F), TS::ILL_COLUMN);

    HandMadeFile(1024, false).word(0, 3000000000U).word(4, 1).word(140, 7).word(508, 3).write("ring.ts");
    TSFILE ring("ring", false);
    ::unsetenv("TMPDIR");
    ring.setRingMode(false);  // counts as done without TMPDIR
    EXPECT_EQ(ring.ringStart(), 0U);
}

TEST(TsFile, RefreshKeepsTheHeaderUntilANewOneIsRead)
{
    const TestDirectory directory;
    {
        TSFILE made("a.ts", 300, 2, 0);
        made.setValue(300, 2, 7.0F);
        made.flush(true);
    }
    const auto bytes = bytesOf("a.ts");
    TSFILE file("a", true);
    const auto put = [&](std::size_t count) {
        std::ofstream("a.ts", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(count));
    };
    put(0);
    EXPECT_THROW(file.refresh(), TS::IO_ERROR);
    EXPECT_EQ(file.samples(), 300U);
    EXPECT_EQ(file.columns(), 2U);
    EXPECT_THROW(file.value(300, 2), TS::IO_ERROR);
    put(bytes.size());
    file.refresh();
    EXPECT_EQ(file.value(300, 2), 7.0F);
}

TEST(TsFile, TooLargeIsRefusedBeforeAnythingIsTouched)
{
    const TestDirectory directory;
    std::ofstream("a.ts") << "precious";
    EXPECT_THROW(TSFILE("a", 536870912, 1, 0), TS::IO_ERROR);
    EXPECT_THROW(TSFILE("b", 4000000000U, 4000000000U, 0), TS::IO_ERROR);
    EXPECT_EQ(bytesOf("a.ts").size(), 8U);
    EXPECT_EQ(directory.fileCount(), 1U);
    TSFILE file("c", 1, 1, 0);
    const auto failure = failureOf<TS::IO_ERROR>([&] { file.resize(536870912); });
    EXPECT_EQ(failure.value1, static_cast<std::uint32_t>(file.descriptor()));
    EXPECT_EQ(file.samples(), 1U);
    EXPECT_EQ(bytesOf("c.ts").size(), 1536U);
}

TEST(TsFile, FullDiskLeavesNothingOfACreation)
{
    const TestDirectory directory;
    const auto failure = failureOf<TS::IO_ERROR>([] {
        const FileSizeLimit fullDisk(4096);
        TSFILE("a", 100000, 1, 0);
    });
    expectPayload(failure, 4096, 200000, 1);
    EXPECT_EQ(directory.fileCount(), 0U);
}

TEST(TsFile, GrowingClearsWhatStoodBehindTheValuesAndCountsOnlyWhenThereIsRoom)
{
    const TestDirectory directory;
    TSFILE("a", 100, 1, 0).setValue(1, 1, 3.0F);
    std::ofstream("a.ts", std::ios::binary | std::ios::app) << std::string(3000, 'x');
    TSFILE file("a", false);
    {
        const FileSizeLimit full(512 * 300 + 100);
        expectPayload(failureOf<TS::IO_ERROR>([&] { file.resize(200'000); }), 512 * 300, 200'100, 1);
        EXPECT_EQ(file.samples(), 100U);
    }
    file.resize(200'000);
    std::vector<float> all(200'000);
    file.readColumn(1, 1, all);
    EXPECT_EQ(all[0], 3.0F);
    EXPECT_EQ(std::count(all.begin(), all.end(), 0.0F), 199'999);
    EXPECT_EQ(std::filesystem::file_size("a.ts"), 1024 + dataBytes(200'000, 1));
}

TEST(TsFile, RunsEqualSingleValuesInBothOrders)
{
    const TestDirectory directory;
    for (const bool swapped : {false, true}) {
        for (const std::uint32_t columns : {1U, 3U, 128U, 129U, 300U}) {
            const std::uint32_t samples = 400;
            HandMadeFile(512 * (2 + (columns - 1) / 8) + dataBytes(samples, columns), swapped)
                .word(0, samples)
                .word(4, columns)
                .word(508, 3)
                .write("a.ts");
            TSFILE file("a", false);
            std::vector<float> column(300);
            for (std::size_t i = 0; i < column.size(); ++i)
                column[i] = static_cast<float>(i) + 0.5F;
            file.writeColumn(columns, 50, column);
            EXPECT_EQ(file.value(49, columns), 0.0F);
            EXPECT_EQ(file.value(50, columns), 0.5F);
            EXPECT_EQ(file.value(349, columns), 299.5F);

            std::vector<float> back(300);
            file.readColumn(columns, 50, back);
            EXPECT_EQ(back, column);
            std::vector<float> rows(std::size_t{20} * columns);
            file.readRows(60, 20, rows.data());
            EXPECT_EQ(rows[columns - 1], 10.5F);
            EXPECT_EQ(rows[rows.size() - 1], 29.5F);
            file.writeRows(100, 20, rows.data());
            EXPECT_EQ(file.value(119, columns), 29.5F);
            expectPayload(failureOf<TS::ILL_SAMPLE>([&] { file.readColumn(1, 102, back); }), 401, 400, 1);
            EXPECT_THROW(file.writeColumn(columns + 1, 1, column), TS::ILL_COLUMN);
            EXPECT_THROW(file.writeRows(0, 1, rows.data()), TS::ILL_SAMPLE);
        }
    }
}

TEST(TsFile, FlushWritesTheHeaderOnlyWhenItsBytesChanged)
{
    const TestDirectory directory;
    TSFILE file("a", 10, 1, 0);
    const int fd = open("a.ts", O_WRONLY);
    ASSERT_EQ(pwrite(fd, "X", 1, 200), 1);  // an unused byte of the header block
    file.flush(true);
    EXPECT_EQ(bytesOf("a.ts")[200], 'X');
    const float row = 1.0F;
    file.writeRow(4, &row, true);  // lastSample has changed
    close(fd);
    EXPECT_EQ(bytesOf("a.ts")[200], 0);
    EXPECT_EQ(bytesOf("a.ts")[144], 4);
}

TEST(TsFile, StampsAndNamesSurviveTheirOddities)
{
    const TestDirectory directory;
    TSFILE file("a", 1, 1, 0);
    EXPECT_LT(file.columnTime(1), 0);
    const int stamp[7] = {0, 30, 45, 13, 17, 5, 2016};
    file.setColumnStamp(1, stamp);
    int back[7];
    file.columnStamp(1, back);
    EXPECT_TRUE(std::equal(stamp, stamp + 7, back));
    EXPECT_STREQ(TSFILE::formatTime(static_cast<double>(file.columnTime(1)), false, "%Y-%m-%d %H:%M:%S"),
                 "2016-05-17 13:45:30");
    file.columnName(1, "");
    EXPECT_EQ(file.columnNameOrNull(1), nullptr);
    file.description(std::string(80, 'x').c_str());
    EXPECT_EQ(std::strlen(file.description("ab")), 2U);
    EXPECT_EQ(bytesOf("a.ts")[32 + 40], 0);  // the longer text is gone
}

TEST(TsFile, ManyColumnsAreChangedLikeOneAfterTheOther)
{
    const TestDirectory directory;
    constexpr std::uint32_t kColumns = 9'003;  // more than two transfers, the last block not full
    const int stamp[7] = {0, 30, 45, 13, 17, 5, 2016};
    for (const auto& [first, last] : {std::pair{1U, kColumns}, {11U, 8'999U}, {4'105U, 4'105U}}) {
        TSFILE one("one", 3, kColumns, 0);
        TSFILE many("many", 3, kColumns, 0);
        const auto name = [](std::uint32_t col) { return "n" + std::to_string(col * 7); };
        for (std::uint32_t col = first; col <= last; ++col) {
            one.columnName(col, name(col).c_str());
            one.setColumnStamp(col, stamp);
        }
        many.columnName(first);  // its block is held, and is not to come back as it was
        many.changeColumns(first, last, [&](std::uint32_t col, ColumnRecord record) {
            record.setName(name(col).c_str());
            record.setStamp(stamp);
        });
        EXPECT_EQ(many.columnName(first), name(first));
        EXPECT_EQ(many.columnNumber(name(last).c_str()), last);
        EXPECT_EQ(many.columnNumber("Column-9003"), last == kColumns ? 0U : kColumns);
        EXPECT_TRUE(bytesOf("one.ts") == bytesOf("many.ts")) << first;
    }
    TSFILE file("one", true);
    EXPECT_THROW(file.changeColumns(2, kColumns + 1, {}), TS::ILL_COLUMN);
    EXPECT_THROW(file.changeColumns(2, 3, [](auto, auto) {}), TS::READONLY_VIOLATION);
}

TEST(TsFileName, NumbersBlanksAndExtensions)
{
    EXPECT_EQ(std::string(TSFILE::tsFileName("12")), "ts0012.ts");
    EXPECT_EQ(std::string(TSFILE::tsFileName("")), " s0012.ts");  // only the first byte changes
    const struct
    {
        const char* text;
        const char* name;
    } rows[] = {
        {"9999", "9999.ts"},       {" 12", "ts0012.ts"},
        {"9998", "ts9998.ts"},     {"data.tsa", "data.ts"},
        {"5.dat", "ts0005.ts"},    {"99999999999", "99999999999.ts"},
        {".hidden", ".hidden.ts"}, {"dir.old/file", "dir.old/file.ts"},
        {"a\\b.c\\d", "a\\b.ts"},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(TSFILE::tsFileName(row.text), row.name);
    const std::string longest = TSFILE::tsFileName(std::string(400, 'n').c_str());
    EXPECT_EQ(longest.size(), 255U);
    EXPECT_TRUE(longest.ends_with(".ts"));
}

TEST(TsFile, WholeBlocksAreWrittenAroundAChangedOneAndRefusedBeyondACutBody)
{
    const TestDirectory directory;
    TSFILE file("a", 1000, 1, 0);
    file.setValue(300, 1, 5.0F);  // the cached block is changed
    std::vector<float> values(700, 2.0F);
    file.writeColumn(1, 1, std::span(values).first(256));
    EXPECT_EQ(file.value(300, 1), 5.0F);
    EXPECT_EQ(file.value(256, 1), 2.0F);
    EXPECT_EQ(file.value(257, 1), 0.0F);
    file.flush(false);
    ASSERT_EQ(truncate("a.ts", 1024 + 512 * 3), 0);
    TSFILE cut("a", false);
    EXPECT_THROW(cut.writeColumn(1, 1, values), TS::IO_ERROR);
    EXPECT_EQ(bytesOf("a.ts").size(), 1024U + 512U * 3);
    TSFILE reader("a", true);
    EXPECT_THROW(reader.writeColumn(1, 1, std::span(values).first(384)), TS::READONLY_VIOLATION);
}
