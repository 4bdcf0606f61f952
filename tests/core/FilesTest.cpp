// Scratch files, literal names, rebuilding, and old values that come back.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <fstream>
#include <system_error>

#include "core/ColumnBackup.h"
#include "core/CopyFile.h"
#include "core/Rebuild.h"
#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

bool cancelAtOnce(std::uint64_t /*done*/, std::uint64_t /*total*/)
{
    return false;
}

float valueAt(std::uint32_t s, std::uint32_t c)
{
    return s == 3 ? NAN : static_cast<float>(100 * s + c);
}

void makeFilled(const char* name, std::uint32_t samples, std::uint32_t columns)
{
    TSFILE file(name, samples, columns, 0);
    file.startSeconds(12345);
    file.startTime(0.5F);
    file.dt(0.125F);
    file.description("old");
    file.columnName(1, "TwelveBytes!");
    const int stamp[7] = {0, 1, 2, 3, 4, 5, 2016};
    file.setColumnStamp(1, stamp);
    for (std::uint32_t s = 1; s <= samples; ++s)
        for (std::uint32_t c = 1; c <= columns; ++c)
            file.setValue(s, c, valueAt(s, c));
}

}  // namespace

TEST(ScratchFile, NeverTakesAnExistingNameAndIsGoneUnlessPutInPlace)
{
    const TestDirectory directory;
    std::ofstream("tmp.ts") << "user's";
    {
        const ScratchFile lost("", "tmp", ".ts");
        EXPECT_EQ(lost.path(), "tmp_1.ts");
    }
    EXPECT_EQ(directory.fileCount(), 1U);
    std::ofstream("old.ts") << "old";
    std::filesystem::permissions("old.ts", std::filesystem::perms(0640));
    {
        ScratchFile kept("", "tmp", ".ts");
        std::ofstream(kept.path()) << "new";
        kept.putInPlace("old.ts");
    }
    EXPECT_EQ(bytesOf("old.ts").size(), 3U);
    EXPECT_EQ(std::filesystem::status("old.ts").permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(directory.fileCount(), 2U);
    {
        ScratchFile older("", "tmp", ".ts");
        ScratchFile newer("", "new", ".ts");
        std::ofstream(newer.path()) << "newer";
        newer.takePlaceOf(older);
        EXPECT_EQ(bytesOf("tmp_1.ts").size(), 5U);
    }
    EXPECT_EQ(directory.fileCount(), 2U);
    EXPECT_THROW(ScratchFile("no/such", "tmp", ".ts"), std::system_error);
}

TEST(CopyFile, CopyIsWholeOrLeavesTheTargetAsItWas)
{
    const TestDirectory directory;
    std::string text(20'000'000, 'a');
    for (std::size_t i = 0; i < text.size(); i += 4099)
        text[i] = static_cast<char>('b' + i % 17);
    std::ofstream("from.ts", std::ios::binary) << text;
    std::ofstream("to.ts") << "older";
    const int from = open("from.ts", O_RDONLY);
    const auto older = bytesOf("to.ts");
    const auto copy = [&](const Progress& progress) { return copyWholeFile(from, "to.ts", progress); };
    std::vector<std::uint64_t> told;
    EXPECT_EQ(copy([&](std::uint64_t done, std::uint64_t total) {
                  told.push_back(done);
                  return 2 * done < total;
              }),
              JobOutcome::Cancelled);
    EXPECT_GE(told.size(), 2U);
    EXPECT_EQ(bytesOf("to.ts"), older);
    {
        const FileSizeLimit full(15'000'000);
        try {
            copy({});
            ADD_FAILURE() << "the disk was full";
        } catch (const std::system_error& e) {
            EXPECT_EQ(e.code().value(), EFBIG);
        }
    }
    EXPECT_EQ(bytesOf("to.ts"), older);
    EXPECT_EQ(directory.fileCount(), 2U);
    for (int i = 0; i < 2; ++i) {  // over a small file, and over one whose blocks take their time to go
        EXPECT_EQ(copy([](auto...) { return true; }), JobOutcome::Done);
        EXPECT_EQ(bytesOf("to.ts"), bytesOf("from.ts"));
    }
    close(from);
}

TEST(TsNames, FilesOpenAndArriveUnderTheNameThatTheDirectoryShows)
{
    const TestDirectory directory;
    for (const std::string name :
         {"2016-05-17 log.ts", "data.v2.ts", "Öl.ts", " blank.ts", "plain.ts", "5.ts"}) {
        EXPECT_NO_THROW(TSFILE(literalTsName(name).c_str(), 1, 1, 0)) << name;
        EXPECT_TRUE(std::filesystem::exists(name)) << name;
        EXPECT_EQ(openTsFile(name, true)->samples(), 1U) << name;
    }
    std::filesystem::rename("plain.ts", "upper.TS");
    EXPECT_EQ(openTsFile("upper.TS", false)->samples(), 1U);
    EXPECT_THROW(openTsFile("none.TS", true), TS::OPEN_ERROR);
    EXPECT_EQ(newTsFileName("5"), "ts0005.ts");
    EXPECT_EQ(newTsFileName("5a.b"), "5a.b.ts");
    EXPECT_EQ(newTsFileName("a.ts"), "a.ts");
}

TEST(Rebuild, KeepsEveryValueNameStampAndTheHeader)
{
    const struct
    {
        std::uint32_t oldSamples, oldColumns, newSamples, newColumns;
    } rows[] = {{10, 3, 30, 20}, {30, 12, 30, 5}, {200, 5, 7, 9}, {5, 0, 5, 2}, {5, 2, 5, 0}, {0, 1, 3, 1}};
    for (const auto& row : rows) {
        const TestDirectory directory;
        std::ofstream("tmp.ts") << "user's";
        if (row.oldColumns > 0)
            makeFilled("a", row.oldSamples, row.oldColumns);
        else
            TSFILE("a", row.oldSamples, 0, 0).startSeconds(12345);
        ASSERT_EQ(rebuildTsFile("a.ts", row.newSamples, row.newColumns, {}), JobOutcome::Done);

        TSFILE file("a", true);
        EXPECT_EQ(file.samples(), row.newSamples);
        EXPECT_EQ(file.columns(), row.newColumns);
        EXPECT_EQ(file.startSeconds(), 12345U);
        for (std::uint32_t s = 1; s <= row.newSamples; ++s)
            for (std::uint32_t c = 1; c <= row.newColumns; ++c) {
                const float expected = s <= row.oldSamples && c <= row.oldColumns ? valueAt(s, c) : 0.0F;
                ASSERT_EQ(std::bit_cast<std::uint32_t>(file.value(s, c)),
                          std::bit_cast<std::uint32_t>(expected));
            }
        if (row.oldColumns > 0 && row.newColumns > 0) {
            int stamp[7];
            file.columnStamp(1, stamp);
            EXPECT_EQ(stamp[6], 2016);
            EXPECT_STREQ(file.columnName(1), "TwelveBytes!");
            EXPECT_EQ(file.startTime(), 0.5F);
        }
        EXPECT_EQ(bytesOf("tmp.ts").size(), 6U);
        EXPECT_EQ(directory.fileCount(), 2U);
    }
}

TEST(Rebuild, RefusedOrCancelledLeavesTheOldFile)
{
    const TestDirectory directory;
    makeFilled("a", 10, 3);
    const auto before = bytesOf("a.ts");
    EXPECT_EQ(rebuildTsFile("a.ts", 20, 3, cancelAtOnce), JobOutcome::Cancelled);
    EXPECT_THROW(rebuildTsFile("a.ts", 4000000000U, 3, {}), TS::IO_ERROR);
    EXPECT_EQ(bytesOf("a.ts"), before);
    EXPECT_EQ(directory.fileCount(), 1U);
    TSFILE("a", false).setRingMode(true);
    EXPECT_THROW(rebuildTsFile("a.ts", 20, 3, {}), TS::READONLY_VIOLATION);
}

TEST(Rebuild, KeepsTheByteOrderOfTheFile)
{
    const TestDirectory directory;
    for (const bool swapped : {false, true}) {
        HandMadeFile before(512 * 3, swapped);
        before.word(0, 3).word(4, 2).real(16, 0.5F).word(132, 12345).text(32, "Pump").word(508, 3);
        before.text(512 + 7, "Flow").text(512 + 64 + 7, "Force");
        for (std::size_t i = 0; i < 6; ++i)
            before.real(1024 + 4 * i, static_cast<float>(i) + 0.25F);
        before.write("a.ts");
        ASSERT_EQ(rebuildTsFile("a.ts", 5, 3, {}), JobOutcome::Done);

        const auto after = bytesOf("a.ts");
        HandMadeFile expected(after.size(), swapped);
        expected.word(0, 5).word(4, 3).real(16, 0.5F).word(508, 3);
        for (std::size_t i = 0; i < 9; ++i)
            if (i % 3 < 2)
                expected.real(1024 + 4 * i, static_cast<float>(i / 3 * 2 + i % 3) + 0.25F);
        expected.write("expected");
        const auto same = bytesOf("expected");
        for (const std::size_t offset : {0U, 4U, 16U, 508U, 1024U, 1028U, 1032U, 1036U, 1052U})
            EXPECT_TRUE(std::equal(&after[offset], &after[offset] + 4, &same[offset])) << offset;
        TSFILE file("a", true);
        EXPECT_EQ(file.startSeconds(), 12345U);
        EXPECT_STREQ(file.description(), "Pump");
        EXPECT_STREQ(file.columnName(2), "Force");
    }
}

TEST(Rebuild, RefusesCountsThatTheFileDoesNotHoldBeforeItMakesRoomForThem)
{
    const TestDirectory directory;
    for (const std::uint32_t columns : {1000000000U, 4000000000U, 100U}) {
        HandMadeFile(2048, false).word(0, 10).word(4, columns).word(508, 3).write("a.ts");
        try {
            rebuildTsFile("a.ts", 20, 3, {});
            FAIL() << columns;
        } catch (const TS::IO_ERROR& e) {
            EXPECT_EQ(e.value1, 2048U) << columns;
            EXPECT_EQ(e.value2, 100000U) << "a short read, not a full disk";
        }
        EXPECT_EQ(directory.fileCount(), 1U);
    }
    // What the file does hold can be kept: 128 of 1000 samples.
    HandMadeFile(1536, false).word(0, 1000).word(4, 1).real(1024, 7.0F).word(508, 3).write("a.ts");
    ASSERT_EQ(rebuildTsFile("a.ts", 128, 2, {}), JobOutcome::Done);
    EXPECT_EQ(TSFILE("a", true).value(1, 1), 7.0F);
}

TEST(ColumnBackup, OldValuesComeBackBitForBitAndTheOldestWin)
{
    const TestDirectory directory;
    ::setenv("TMPDIR", directory.path().c_str(), 1);
    constexpr std::uint32_t kRows = 70'000;  // more than are kept at once
    makeFilled("a", kRows, 3);
    const auto before = bytesOf("a.ts");
    TSFILE file("a", false);
    {
        ColumnBackup backup(file);
        backup.saveInfo(2);
        ASSERT_EQ(backup.save(2, 1, kRows, {}), JobOutcome::Done);
        for (std::uint32_t s = 1; s <= kRows; ++s)
            file.setValue(s, 2, 0.0F);
        file.columnName(2, "changed");
        ASSERT_EQ(backup.save(2, 100, 50, {}), JobOutcome::Done);
        file.flush(true);
        EXPECT_NE(bytesOf("a.ts"), before);
        backup.restore();
        EXPECT_EQ(bytesOf("a.ts"), before);
    }
    {
        ColumnBackup unchanged(file);
        unchanged.saveInfo(2);
        ASSERT_EQ(unchanged.save(2, 1, kRows, {}), JobOutcome::Done);
        const FileSizeLimit full(0);
        EXPECT_NO_THROW(unchanged.restore());
    }
    EXPECT_EQ(directory.fileCount(), 1U);
    ::unsetenv("TMPDIR");
}
