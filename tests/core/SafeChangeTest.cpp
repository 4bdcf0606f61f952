// Files that take their name when they are whole, changes in place that can be taken back, and old values
// that outlive the program.

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

#include "core/FailureText.h"
#include "core/SafeChange.h"
#include "core/TsNames.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

std::string reasonAgainst(const fs::path& target)
{
    try {
        PendingFile pending(target);
        return {};
    } catch (...) {
        return reasonOfFailure();
    }
}

// A file of 100 samples and 3 columns, sample s of column c being 10 s + c.
void makeFile(const char* name)
{
    TSFILE file(name, 100, 3, 0);
    for (std::uint32_t s = 1; s <= 100; ++s)
        for (std::uint32_t c = 1; c <= 3; ++c)
            file.setValue(s, c, static_cast<float>(10 * s + c));
}

class SafeChange : public ::testing::Test
{
protected:
    SafeChange()
    {
        ::setenv("TMPDIR", m_directory.path().c_str(), 1);
        makeFile("a.ts");
        m_before = bytesOf("a.ts");
    }
    ~SafeChange() override { ::unsetenv("TMPDIR"); }

    // Writes 0 over two ranges; `end` decides how it goes on after the first.
    JobOutcome zero(const std::function<JobOutcome()>& end, OldValues& old)
    {
        auto file = openTsFile("a.ts", false);
        const ColumnRange ranges[] = {{2, 5, 20}, {3, 90, 11}};
        const auto write = [&](TSFILE& to, const Progress&) {
            const std::vector<float> zeros(20, 0.0F);
            to.writeColumn(2, 5, zeros);
            to.columnName(2, "zeros");
            to.flush(true);
            if (const JobOutcome outcome = end(); outcome == JobOutcome::Cancelled)
                return outcome;
            to.writeColumn(3, 90, std::span(zeros).first(11));
            return JobOutcome::Done;
        };
        const auto reopen = [&]() -> TSFILE& {
            file.reset();
            file = openTsFile("a.ts", false);
            return *file;
        };
        return changeInPlace({*file, ranges, write, reopen}, {}, old);
    }

    TestDirectory m_directory;
    std::vector<unsigned char> m_before;
};

}  // namespace

TEST_F(SafeChange, APendingFileTakesTheNameWhenItIsWhole)
{
    fs::create_directory("elsewhere");
    fs::create_symlink("elsewhere/real.ts", "link.ts");
    for (const char* const content : {"first", "second"}) {
        PendingFile pending("link.ts");
        EXPECT_EQ(pending.path().parent_path(), "elsewhere");
        std::ofstream(pending.path()) << content;
        pending.commit();
        EXPECT_TRUE(fs::is_symlink("link.ts"));
        EXPECT_EQ(bytesOf("elsewhere/real.ts").size(), std::string(content).size());
    }
    {
        PendingFile dropped("a.ts");
        std::ofstream(dropped.path()) << "third";
        EXPECT_EQ(dropped.commit([](std::uint64_t, std::uint64_t) { return false; }), JobOutcome::Cancelled);
    }
    EXPECT_EQ(bytesOf("a.ts"), m_before);
    EXPECT_EQ(m_directory.fileCount(), 3U);
}

TEST_F(SafeChange, WhatMayNotBeReplacedIsRefusedBeforeAnythingIsMade)
{
    fs::permissions("a.ts", fs::perms(0444));
    fs::create_symlink("a.ts", "link.ts");
    fs::create_directory("directory");
    EXPECT_NE(reasonAgainst("a.ts").find("write-protected"), std::string::npos);
    EXPECT_NE(reasonAgainst("link.ts").find("write-protected"), std::string::npos);
    EXPECT_NE(reasonAgainst("directory").find("directory"), std::string::npos);
    EXPECT_NE(reasonAgainst("/dev/null").find("ordinary file"), std::string::npos);
    EXPECT_NE(reasonAgainst("no/such/file.ts").find("gone"), std::string::npos);
    EXPECT_EQ(m_directory.fileCount(), 3U);
}

TEST_F(SafeChange, ACancelledOrFailedChangeLeavesTheOldValues)
{
    OldValues old;
    EXPECT_EQ(zero([] { return JobOutcome::Cancelled; }, old), JobOutcome::Cancelled);
    EXPECT_EQ(bytesOf("a.ts"), m_before);
    EXPECT_THROW(zero([]() -> JobOutcome { throw std::runtime_error("x"); }, old), std::runtime_error);
    EXPECT_EQ(bytesOf("a.ts"), m_before);
    EXPECT_TRUE(old.lost.empty());
    EXPECT_EQ(m_directory.fileCount(), 1U);
}

TEST_F(SafeChange, OldValuesComeBackFromTheirFile)
{
    OldValues old;
    ASSERT_EQ(zero([] { return JobOutcome::Done; }, old), JobOutcome::Done);
    EXPECT_NE(bytesOf("a.ts"), m_before);
    const fs::path scratch = old.backup->path();
    const KeptValues kept = readOldValues(scratch);
    EXPECT_EQ(kept.file, fs::absolute("a.ts"));
    ASSERT_EQ(kept.ranges.size(), 2U);
    EXPECT_EQ(kept.ranges[1].column, 3U);
    EXPECT_EQ(kept.ranges[1].first, 90U);
    EXPECT_EQ(kept.ranges[1].count, 11U);

    fs::copy_file(scratch, "cut.bin");
    fs::resize_file("cut.bin", fs::file_size(scratch) - 20);
    EXPECT_EQ(readOldValues("cut.bin").ranges.size(), 1U);
    std::ofstream("none.bin") << "something else";
    EXPECT_THROW(readOldValues("none.bin"), std::runtime_error);
    TSFILE small("small.ts", 50, 3, 0);
    EXPECT_THROW(restoreOldValues(scratch, small, {}), std::out_of_range);

    restoreOldValues(scratch, *openTsFile("a.ts", false), {});
    EXPECT_EQ(bytesOf("a.ts"), m_before);
}
