// Saving edits: what the file holds afterwards, undo after saving, and saves that fail.

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>

#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/EditedFile.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

void makeFile(const std::string& name, std::uint32_t samples, std::uint32_t columns)
{
    TSFILE file(name.c_str(), samples, columns, 0);
    for (std::uint32_t s = 1; s <= samples; ++s)
        for (std::uint32_t c = 1; c <= columns; ++c)
            file.setValue(s, c, s == 3 ? NAN : static_cast<float>(s * 10 + c));
    const int stamp[7] = {0, 1, 2, 3, 4, 5, 2016};
    for (std::uint32_t c = 1; c <= columns; ++c)
        file.setColumnStamp(c, stamp);
    file.flush(true);
}

std::vector<float> columnOf(const std::string& name, std::uint32_t column)
{
    const auto file = openTsFile(name, true);
    std::vector<float> values(file->samples());
    file->readColumn(column, 1, values);
    return values;
}

std::vector<float> shownColumn(EditedFile& edited, std::uint32_t samples, std::uint32_t column)
{
    std::vector<float> values(samples);
    edited.read(column, 1, values);
    return values;
}

bool sameBits(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

}  // namespace

TEST(EditedFile, SavesAndUndoesAcrossSavesWithoutLosingAValue)
{
    const TestDirectory directory;
    constexpr std::uint32_t kSamples = 300;
    makeFile("a b.ts", kSamples, 2);
    const auto reader = openTsFile("a b.ts", true);
    EditedFile edited(*reader, "a b.ts");
    const std::vector<float> originals[2] = {columnOf("a b.ts", 1), columnOf("a b.ts", 2)};
    std::mt19937 random(2);
    for (int step = 0; step < 200; ++step) {
        const SampleRun run{1 + static_cast<std::uint32_t>(random() % 2),
                            1 + static_cast<std::uint32_t>(random() % 250), 0};
        const SampleRun cells{run.column, run.first, run.first + static_cast<std::uint32_t>(random() % 50)};
        switch (random() % 5) {
            case 0:
                edited.edits().undo();
                break;
            case 1:
                edited.edits().redo();
                break;
            case 2:
                edited.edits().add({"add", {addStrip(cells, 1)}});
                break;
            case 3:
                edited.edits().add({"set", {setStrip(cells, static_cast<double>(step))}});
                break;
            default: {
                const std::vector<float> before = shownColumn(edited, kSamples, 1);
                ASSERT_EQ(edited.save({}), JobOutcome::Done);
                ASSERT_TRUE(sameBits(shownColumn(edited, kSamples, 1), before)) << step;
                for (std::uint32_t c = 1; c <= 2; ++c)
                    ASSERT_TRUE(sameBits(shownColumn(edited, kSamples, c), columnOf("a b.ts", c))) << step;
                ASSERT_FALSE(edited.edits().isChanged());
            }
        }
    }
    while (edited.edits().canUndo())
        edited.edits().undo();
    edited.save({});
    EXPECT_TRUE(sameBits(columnOf("a b.ts", 1), originals[0]));
    EXPECT_TRUE(sameBits(columnOf("a b.ts", 2), originals[1]));
}

TEST(EditedFile, OnlyChangedColumnsGetANewStamp)
{
    const TestDirectory directory;
    makeFile("a.ts", 10, 2);
    const auto reader = openTsFile("a.ts", true);
    EditedFile edited(*reader, "a.ts");
    edited.edits().add({"set", {setStrip({2, 1, 1}, 5)}});
    edited.save({});
    const auto file = openTsFile("a.ts", true);
    int stamps[2][7];
    file->columnStamp(1, stamps[0]);
    file->columnStamp(2, stamps[1]);
    EXPECT_EQ(stamps[0][6], 2016);
    EXPECT_GT(stamps[1][6], 2016);
}

TEST(EditedFile, CancelledAndFailedSavesLeaveEveryByteAndTheEdits)
{
    const TestDirectory directory;
    constexpr std::uint32_t kSamples = 40000;  // 1.28 MB; the old values of a column are 160 KB
    makeFile("a.ts", kSamples, 8);
    const auto before = bytesOf("a.ts");
    const auto reader = openTsFile("a.ts", true);
    EditedFile edited(*reader, "a.ts");
    edited.edits().add({"add", {addStrip({1, 1, kSamples}, 1)}});

    for (const std::uint64_t share : {10U, 60U, 90U}) {
        const Progress cancel = [share](std::uint64_t done, std::uint64_t total) {
            return done * 100 < share * total;
        };
        EXPECT_EQ(edited.save(cancel), JobOutcome::Cancelled);
        EXPECT_TRUE(bytesOf("a.ts") == before) << "cancelled at " << share << " %";
    }
    {
        const FileSizeLimit full(1172 * 512);
        try {
            edited.save({});
            ADD_FAILURE() << "saved on a full disk";
        } catch (const SaveFailed& failure) {
            EXPECT_EQ(failure.text, "Nothing was saved: the disk took no more (is it full?).");
        }
        EXPECT_THROW(edited.saveAs("b.ts", {}), SaveFailed);
    }
    EXPECT_TRUE(bytesOf("a.ts") == before) << "failed";
    EXPECT_EQ(directory.fileCount(), 1U);
    EXPECT_TRUE(edited.edits().isChanged());
    EXPECT_EQ(edited.save({}), JobOutcome::Done);
    EXPECT_EQ(columnOf("a.ts", 1)[kSamples - 1], kSamples * 10.0F + 2.0F);
}

TEST(EditedFile, SaveAsWritesACopyAndLeavesTheFileAlone)
{
    const TestDirectory directory;
    makeFile("a.ts", 1000, 3);
    const auto before = bytesOf("a.ts");
    const auto reader = openTsFile("a.ts", true);
    EditedFile edited(*reader, "a.ts");
    edited.edits().add({"set", {setStrip({2, 10, 20}, 5)}});
    const auto cancel = [](std::uint64_t, std::uint64_t) { return false; };
    EXPECT_EQ(edited.saveAs("2016-05 log.ts", cancel), JobOutcome::Cancelled);
    EXPECT_EQ(directory.fileCount(), 1U);
    EXPECT_EQ(edited.saveAs("2016-05 log.ts", {}), JobOutcome::Done);
    EXPECT_EQ(directory.fileCount(), 2U);
    EXPECT_TRUE(bytesOf("a.ts") == before);
    EXPECT_TRUE(edited.edits().isChanged());
    EXPECT_TRUE(sameBits(columnOf("2016-05 log.ts", 2), shownColumn(edited, 1000, 2)));
    EXPECT_TRUE(sameBits(columnOf("2016-05 log.ts", 1), columnOf("a.ts", 1)));
}

TEST(EditedFile, FileThatIsGoneOrReplacedIsNotSavedButRescuedUnderAnyName)
{
    for (const bool replaced : {false, true}) {
        const TestDirectory directory;
        makeFile("a.ts", 100, 2);
        const auto reader = openTsFile("a.ts", true);
        EditedFile edited(*reader, "a.ts");
        EXPECT_TRUE(edited.isItself("./a.ts"));
        edited.edits().add({"set", {setStrip({1, 90, 100}, 5)}});
        const std::vector<float> shown[] = {shownColumn(edited, 100, 1), shownColumn(edited, 100, 2)};
        std::filesystem::remove("a.ts");
        if (replaced) {
            TSFILE other("a.ts", 100, 2, 0);
            other.flush(true);
        }
        EXPECT_FALSE(edited.isItself("a.ts"));
        const auto before = bytesOf("a.ts");
        EXPECT_THROW(edited.save({}), SaveFailed);
        EXPECT_TRUE(bytesOf("a.ts") == before);
        for (const char* const name : {"rescued.ts", "a.ts"}) {
            EXPECT_EQ(edited.saveAs(name, {}), JobOutcome::Done);
            for (std::uint32_t c = 1; c <= 2; ++c)
                EXPECT_TRUE(sameBits(columnOf(name, c), shown[c - 1])) << name << replaced;
        }
    }
}

TEST(EditedFile, WhatAnotherProgramHasChangedUnderTheEditsIsToldAndTheUserChooses)
{
    using Choice = EditedFile::Choice;
    for (const Choice choice : {Choice::Mine, Choice::Theirs, Choice::Look}) {
        const TestDirectory directory;
        makeFile("a.ts", 1000, 2);
        const auto reader = openTsFile("a.ts", true);
        EditedFile edited(*reader, "a.ts");
        edited.add({"set", {setStrip({2, 300, 600}, 5), setStrip({1, 7, 9}, 6)}});
        {
            TSFILE other("a.ts", false);
            other.setValue(400, 2, 99.0F);
            other.setValue(8, 2, 77.0F);  // under no edit
        }
        int asked = 0;
        const auto ask = [&](const EditConflict& conflict) {
            ++asked;
            EXPECT_EQ(conflict.changed, 1U);
            EXPECT_EQ(conflict.unknown, 0U);
            const EditConflict::Cell& cell = conflict.cells.at(0);
            EXPECT_EQ(cell.column, 2U);
            EXPECT_EQ(cell.sample, 400U);
            EXPECT_EQ(cell.read, 4002.0F);
            EXPECT_EQ(cell.now, 99.0F);
            return choice;
        };
        EXPECT_EQ(edited.save({}, ask), choice == Choice::Look ? JobOutcome::Cancelled : JobOutcome::Done);
        EXPECT_EQ(asked, 1);
        const std::vector<float> now = columnOf("a.ts", 2);
        EXPECT_EQ(now[399], choice == Choice::Mine ? 5.0F : 99.0F);
        EXPECT_EQ(now[400], choice == Choice::Look ? 4012.0F : 5.0F);
        EXPECT_EQ(now[7], 77.0F);
        EXPECT_EQ(edited.edits().isChanged(), choice == Choice::Look);
        if (choice == Choice::Look)
            continue;
        // Nobody has changed it since. Mine gives back what it has overwritten, theirs is an edit like any
        // other.
        edited.edits().undo();
        EXPECT_EQ(edited.save({}, ask), JobOutcome::Done);
        EXPECT_EQ(asked, 1);
        EXPECT_EQ(columnOf("a.ts", 2)[399], choice == Choice::Mine ? 99.0F : 5.0F);
    }
}

TEST(EditedFile, BlocksTooLongToRememberAreAskedAboutWhereTheFileHasChangedAtAll)
{
    const TestDirectory directory;
    constexpr std::uint32_t kSamples = 70'000;
    makeFile("a.ts", kSamples, 1);
    const auto reader = openTsFile("a.ts", true);
    EditedFile edited(*reader, "a.ts");
    edited.add({"add", {addStrip({1, 1, kSamples}, 1)}});
    std::uint64_t unknown = 0;
    const auto ask = [&](const EditConflict& conflict) {
        unknown += conflict.unknown;
        return EditedFile::Choice::Look;
    };
    std::filesystem::last_write_time("a.ts",
                                     std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    EXPECT_EQ(edited.save({}, ask), JobOutcome::Cancelled);
    EXPECT_EQ(unknown, kSamples);
}
