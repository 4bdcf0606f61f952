// Files that take their name when they are whole, changes in place that can be taken back, and old values
// that outlive the program.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>

#include "core/FailureText.h"
#include "core/Rebuild.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
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

// The sweep of tests/faults holds that what is left does go; here is what stays.
TEST_F(SafeChange, OnlyOldScratchFilesWithoutAnOwnerAreRemovedAndNothingOfTheUsers)
{
    const struct
    {
        const char* name;
        int minutes;  // since it was changed
        bool owned;
        bool marked;
        bool stays;
    } rows[] = {
        {".veltrac-new.tmp", 70, false, false, false},  {".veltrac-new_3.tmp", 70, false, false, false},
        {".veltrac-new_1.tmp", 50, false, false, true}, {".veltrac-new_2.tmp", 70, true, false, true},
        {".veltrac-newer.tmp", 70, false, false, true}, {"tmp.ts", 70, false, false, true},
        {"tmp_1.ts", 70, false, true, false},           {"tmp_2.ts", 70, false, true, true},
    };
    std::vector<int> descriptors;
    for (const auto& row : rows) {
        std::ofstream(row.name) << "something";
        descriptors.push_back(::open(row.name, O_RDONLY));
        if (row.owned)
            lockAsOwner(descriptors.back());
        if (row.marked && ::setxattr(row.name, "user.veltrac.scratch", "tmp_1.ts", 8, 0) != 0)
            GTEST_SKIP() << "this file system takes no marks";
        fs::last_write_time(row.name, fs::file_time_type::clock::now() - std::chrono::minutes(row.minutes));
    }
    {
        const ScratchFile first(".", ".veltrac-new", ".tmp");
        const ScratchFile second(".", "tmp", ".ts");
        EXPECT_EQ(first.path(), "./.veltrac-new.tmp");
        EXPECT_EQ(second.path(), "./tmp_1.ts");
        EXPECT_EQ(bytesOf("tmp_1.ts").size(), 0U);
    }
    for (const auto& row : rows)
        EXPECT_EQ(fs::exists(row.name), row.stays) << row.name;
    for (const int descriptor : descriptors)
        ::close(descriptor);
}

TEST_F(SafeChange, OldValuesStayUntilTheJobIsDone)
{
    OldValues old;
    ASSERT_EQ(zero([] { return JobOutcome::Done; }, old), JobOutcome::Done);
    const fs::path done = old.backup->path();
    fs::copy_file(done, "veltrac-old-values_1.bin");
    fs::copy_file(done, "veltrac-old-values_2.bin");
    fs::resize_file("veltrac-old-values_2.bin", fs::file_size(done) - 5);  // without its last line
    for (const char* const name : {"veltrac-old-values_1.bin", "veltrac-old-values_2.bin"})
        fs::last_write_time(name, fs::file_time_type::clock::now() - std::chrono::hours(2));
    {
        const auto file = openTsFile("a.ts", false);
        const ColumnBackup next(*file);
    }
    EXPECT_FALSE(fs::exists("veltrac-old-values_1.bin"));
    EXPECT_TRUE(fs::exists("veltrac-old-values_2.bin"));
    // An undo that is cut leaves a file that no job removes either.
    old.backup->restore(*openTsFile("a.ts", false));
    EXPECT_EQ(bytesOf("a.ts"), m_before);
    EXPECT_EQ(fs::file_size(done), fs::file_size("veltrac-old-values_2.bin"));
}

TEST_F(SafeChange, WhoWritesAFileIsLetFinish)
{
    const int other = ::open("a.ts", O_RDONLY);
    OldValues old;
    const auto change = [&] { return zero([] { return JobOutcome::Done; }, old); };
    const auto describe = [] { changeHeader("a.ts", [](TSFILE& file) { file.description("x"); }); };
    const auto reason = [](const auto& job) {
        try {
            job();
        } catch (...) {
            return reasonOfFailure();
        }
        return std::string();
    };
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    const std::string busy = "another program is writing the file";
    EXPECT_EQ(reason(change), busy);
    EXPECT_EQ(reason(describe), busy);
    EXPECT_EQ(reason([] { rebuildTsFile("a.ts", 50, 2, {}); }), busy);
    EXPECT_EQ(bytesOf("a.ts"), m_before);
    ASSERT_EQ(::flock(other, LOCK_UN), 0);
    EXPECT_EQ(reason(describe), "");
    EXPECT_EQ(reason(change), "");
    EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0) << "a lock was left behind";
    ::flock(other, LOCK_UN);
    // Who is done only when the file has been replaced hears of it.
    const auto replaced = [&] {
        return zero(
            [] {
                rebuildTsFileAs("a.ts", "b.ts", 120, 3, {});
                fs::rename("b.ts", "a.ts");
                return JobOutcome::Done;
            },
            old);
    };
    fs::rename("a.ts", "c.ts");
    makeFile("a.ts");
    EXPECT_NE(reason(replaced), "");
    EXPECT_EQ(TSFILE("a.ts", true).value(5, 2), 52.0F);
    ::close(other);
}
