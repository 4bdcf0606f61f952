// Recording: what becomes of rows of all kinds, and of the file when the recorder is killed while others
// read.
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <random>
#include <thread>

#include "core/FileTime.h"
#include "core/RingFile.h"
#include "core/RingWriter.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "tests/cli/Recorder.h"
#include "tests/cli/Shell.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

ShellOutcome record(const std::string& input, const std::string& options)
{
    std::ofstream("input", std::ios::binary) << input;
    return cli("record r.ts " + options, "export TZ=UTC;", "input");
}

std::string rowsOf(const char* file)
{
    TSFILE ts(file, true);
    const FileTime time(ts);
    std::string text;
    for (std::uint32_t s = time.firstSample(); s <= time.lastSample(); ++s) {
        for (std::uint32_t c = 1; c <= ts.columns(); ++c) {
            char cell[32];
            std::snprintf(cell, sizeof cell, "%s%g", c == 1 ? "" : " ", static_cast<double>(ts.value(s, c)));
            text += cell;
        }
        text += '\n';
    }
    return text;
}

}  // namespace

TEST(Record, TextIsReadAsTheImportersReadIt)
{
    std::string clockAlone;
    for (int i = 0; i < 20; ++i)
        clockAlone += "12:00 5\n";
    const struct
    {
        const char* what;
        const char* options;
        const char* input;
        const char* rows;
        const char* told;
    } cases[] = {
        {"blanks, a head, CRLF", "--columns a,b[N]", "time  load\r\n 1   2.5\r\n3 -4e2\r\n",
         "1 2.5\n3 -400\n", "1 line before the first row"},
        {"semicolons and decimal commas", "--columns a,b", "1,5;2\n3;4,25\n", "1.5 2\n3 4.25\n",
         "2 rows recorded"},
        {"one column with decimal commas", "--columns a", "1,5\n2,5", "1.5\n2.5\n", "2 rows"},
        {"decimal commas behind whole numbers", "--columns a", "56\nnan\n0,5\n1,5\n", "56\nnan\n0.5\n1.5\n",
         "4 rows"},
        {"decimal commas first in a time", "--time --columns a", "1;nan\n1,5;2\n", "1 nan\n1.5 2\n",
         "2 rows"},
        {"a first row of missing values", "--columns a,b", "nan,nan\n1,2\n", "nan nan\n1 2\n", "2 rows"},
        {"a rule below the head", "--columns a,b", "a b\n--- ---\n1 2\n", "1 2\n",
         "2 lines before the first row"},
        {"points between thousands", "--columns a --grouping point", "1.000\n2.500,5\n", "1000\n2500.5\n",
         "2 rows"},
        {"chosen cells, a grouping sign", "--columns x=3,y=1 --grouping apostrophe", "1'000;7;2\n5;7;9\n",
         "2 1000\n9 5\n", "2 rows"},
        {"what cannot be read is missing and counted", "--columns a,b",
         "1 2\nx 4\n5\n-- 8\n# remark\n\n9 10\n", "1 2\nnan 4\n5 nan\nnan 8\n9 10\n",
         "2 rows with something that could not be read\nr.ts: 3 missing"},
        {"times as seconds", "--time --columns a", "0.5 7\n1.25 8\n", "0.5 7\n1.25 8\n", "2 rows"},
        {"dates apart from their times", "--time --columns a=2 --decimal ,",
         "day clock x a\n30.10.2016 12:00:00 1 0,5\n30.10.2016 12:00:01 2 1,5\n", "0 0.5\n1 1.5\n",
         "1 line before the first row"},
        {"a head without an end", "--time --columns a", clockAlone.c_str(), "",
         "r.ts: none of the first 20 lines is a row of values behind a time\nr.ts: no rows came\n"},
        {"a time that is none gets the one before", "--time --columns a", "0.5,7\nno,8\n", "0.5 7\n0.5 8\n",
         "1 row without a usable time"},
    };
    for (const auto& c : cases) {
        const TestDirectory directory;
        const ShellOutcome outcome = record(c.input, c.options);
        EXPECT_EQ(outcome.status, 0) << c.what << outcome.notes;
        EXPECT_EQ(rowsOf("r.ts"), c.rows) << c.what;
        EXPECT_NE(outcome.notes.find(c.told), std::string::npos) << c.what << ": " << outcome.notes;
    }
}

TEST(Record, DatesBecomeAClockOfMicroseconds)
{
    const TestDirectory directory;
    const ShellOutcome outcome =
        record("2016-10-30T02:30:00.000125 1\n2016-10-30T02:30:01.5 2\n", "--time32 --columns a --samples 3");
    ASSERT_EQ(outcome.status, 0) << outcome.notes;
    TSFILE ts("r.ts", true);
    const FileTime time(ts);
    EXPECT_EQ(ts.startSeconds(), 1477794600U);
    EXPECT_NEAR(time.moment(1), 1477794600.000125, 1e-6);
    EXPECT_NEAR(time.moment(2) - time.moment(1), 1.499875, 1e-6);
}

TEST(Record, GoesOnOverTheSeamAndKeepsItsClock)
{
    const TestDirectory directory;
    EXPECT_EQ(
        record("1 10\n2 20\n3 30\n", "--columns n,m --samples 7 --dt 0.5 --description \"Pump 3\"").status,
        0);
    EXPECT_STREQ(TSFILE("r.ts", true).description(), "Pump 3");
    EXPECT_EQ(record("4 40\n5 50\n6 60\n7 70\n8 80\n9 90\n", "--no-gap").status, 0);
    EXPECT_EQ(rowsOf("r.ts"), "3 30\n4 40\n5 50\n6 60\n7 70\n8 80\n9 90\n");
    // As if it had ended a second and a half ago: two rows of the time in between are missing.
    {
        TSFILE ts("r.ts", false);
        const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
        const double start = now.count() - 9 * 0.5 - 1.5;
        ts.setStart(static_cast<std::uint32_t>(start), static_cast<float>(start - std::floor(start)));
    }
    const ShellOutcome outcome = record("10 100\n", "");
    EXPECT_EQ(rowsOf("r.ts").substr(0, 10), "6 60\n7 70\n") << outcome.notes;
    EXPECT_NE(rowsOf("r.ts").find("9 90\nnan nan\n"), std::string::npos);
    const std::string before = rowsOf("r.ts");
    EXPECT_EQ(cli("record r.ts --unfold").status, 0);
    EXPECT_EQ(rowsOf("r.ts"), before);
    EXPECT_EQ(TSFILE("r.ts", true).ringStart(), 0U);
}

TEST(Record, RefusesWhatDoesNotFit)
{
    const TestDirectory directory;
    ASSERT_EQ(record("1 2\n", "--columns a,b --samples 10 --dt 2").status, 0);
    const auto bytes = bytesOf("r.ts");
    TSFILE("plain.ts", 3, 2, 0).flush(true);
    std::ofstream("text.ts") << "no ts-file";
    const struct
    {
        const char* arguments;
        int status;
        const char* told;
    } cases[] = {
        {"r.ts --columns a,c", 1, "its columns are others"},
        {"r.ts --samples 11", 1, "room for 10 samples"},
        {"r.ts --dt 3", 1, "another sample time"},
        {"r.ts --time", 1, "tells its time in another way"},
        {"plain.ts", 1, "no ring file"},
        {"text.ts", 1, "cut short"},
        {"new.ts", 1, "--columns is needed"},
        {"new.ts --columns a --samples 999999999", 1, "--samples 536870"},
        {"r.ts other.ts", 2, "one file"},
        {"new.ts --columns a=0", 2, "no number of a cell"},
        {"new.ts --columns a --f32 --decimal ,", 2, "no options for text"},
    };
    for (const auto& c : cases) {
        const ShellOutcome outcome = cli(std::string("record ") + c.arguments);
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_NE(outcome.notes.find(c.told), std::string::npos) << c.arguments << ": " << outcome.notes;
    }
    EXPECT_EQ(bytesOf("r.ts"), bytes);
    EXPECT_FALSE(std::filesystem::exists("new.ts"));
}

TEST(Record, FloatTimesBeginAnewBeforeTheyLoseTheirSteps)
{
    const TestDirectory directory;
    // After 100 s a float tells 8 us: more than a hundredth of a step of 0.5 ms.
    for (int part = 0; part < 3; ++part) {
        std::string input;
        for (int i = 100 * part; i < 100 * part + 100; ++i)
            input += std::to_string(1.5e9 + 0.25 + i) + ' ' + std::to_string(i) + '\n';
        const ShellOutcome outcome = record(input, "--time --columns i --samples 20 --flush 0 --dt 0.0005");
        ASSERT_EQ(outcome.status, 0) << outcome.notes;
    }
    TSFILE ts("r.ts", true);
    const FileTime time(ts);
    EXPECT_GT(ts.startSeconds(), 1500000100U);
    for (std::uint32_t s = time.firstSample(); s <= time.lastSample(); ++s)
        EXPECT_NEAR(time.moment(s), 1.5e9 + 0.25 + ts.value(s, 2), 2e-5) << s;
    EXPECT_EQ(ts.value(time.lastSample(), 2), 299.0F);
}

TEST(Record, SampleNumbersBeginAnewBeforeTheyEnd)
{
    const TestDirectory directory;
    makeRingFile("r.ts", {.samples = 7, .columns = {{"a", ""}}, .dt = 0.5F});
    {
        TSFILE ts("r.ts", false);
        for (std::uint32_t s = 4000000000U; s < 4000000009U; ++s)
            ts.setValue(s, 1, static_cast<float>(s - 4000000000U));
        ts.flush(true);
    }
    RingWriter("r.ts").setStart(1000000, 0.25F);
    const std::string before = rowsOf("r.ts");
    const double moment = [] {
        TSFILE ts("r.ts", true);
        return FileTime(ts).moment(ts.lastSample());
    }();
    EXPECT_EQ(TSFILE("r.ts", true).startTime(), 0.25F);
    renumberRing("r.ts");
    TSFILE ts("r.ts", true);
    EXPECT_LT(ts.lastSample(), 15U);
    EXPECT_EQ(rowsOf("r.ts"), before);
    EXPECT_DOUBLE_EQ(FileTime(ts).moment(ts.lastSample()), moment);
}

// -- Killed and stopped --

namespace {

// Samples first to last as a reader finds them: those that were overwritten while it read do not count.
std::uint32_t wrongRows(TSFILE& ts, std::uint32_t first, std::uint32_t last)
{
    if (first > last)
        return 0;
    std::vector<float> rows((last - first + 1) * std::size_t{3});
    ts.readRows(first, last - first + 1, rows.data());
    std::uint32_t wrong = 0;
    for (std::uint32_t s = std::max(first, ts.ringStartOnDisk()); s <= last; ++s) {
        const float* const row = &rows[(s - first) * std::size_t{3}];
        const auto number = static_cast<float>(s);
        wrong += row[0] == number && row[1] == static_cast<float>(s % 977) && row[2] == -number ? 0 : 1;
    }
    return wrong;
}

// Waits for a recorder's rows behind a sample, but not for ever.
bool hasRowsBehind(std::uint32_t sample)
{
    for (int i = 0; i < 4000; ++i) {
        try {
            if (TSFILE("r.ts", true).lastSample() > sample)
                return true;
        } catch (const TS::Failure&) {
            // The recorder has not made it yet.
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

}  // namespace

TEST(Record, RowsThatAReadCutsInTwoAreWhole)
{
    const TestDirectory directory;
    std::vector<float> rows;
    for (int s = 1; s <= 20'000; ++s)
        rows.insert(rows.end(), {static_cast<float>(s), static_cast<float>(s % 977), -static_cast<float>(s)});
    const std::string bytes(reinterpret_cast<const char*>(rows.data()), rows.size() * sizeof(float));
    std::ofstream("input", std::ios::binary) << bytes;
    ASSERT_EQ(cli("record r.ts --f32 --columns n,m,k --samples 20000",
                  "mkfifo pipe; dd if=input of=pipe bs=1003 2>.dd &", "pipe")
                  .status,
              0);
    TSFILE ts("r.ts", true);
    EXPECT_EQ(ts.lastSample(), 20'000U);
    EXPECT_EQ(wrongRows(ts, 1, 20'000), 0U);
}

// What a kill between any two calls of the system would leave, looked at after each of them.
TEST(Record, TheRingIsRightAfterEachStepOfAWrite)
{
    const TestDirectory directory;
    constexpr std::uint32_t kRoom = 40;
    makeRingFile("r.ts", {.samples = kRoom, .columns = {{"n", ""}, {"m", ""}, {"k", ""}}});
    const pid_t writer = fork();
    if (writer == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(77);
        raise(SIGSTOP);
        RingWriter ring("r.ts");
        for (std::uint32_t count = 1; count < 19; ++count) {
            std::vector<float> rows;
            for (std::uint32_t s = ring.lastSample() + 1; s <= ring.lastSample() + count; ++s)
                rows.insert(rows.end(),
                            {static_cast<float>(s), static_cast<float>(s % 977), -static_cast<float>(s)});
            ring.write(rows);
        }
        _exit(0);
    }
    TSFILE ts("r.ts", true);
    int status = 0;
    std::uint32_t steps = 0;
    for (waitpid(writer, &status, 0); WIFSTOPPED(status); waitpid(writer, &status, 0)) {
        ts.refresh();
        EXPECT_EQ(wrongRows(ts, ts.ringStart(), ts.lastSample()), 0U) << "step " << steps;
        EXPECT_GE(ts.lastSample() + 1 - ts.ringStart(), std::min(ts.lastSample(), kRoom - kRoom / 8));
        ++steps;
        ptrace(PTRACE_SYSCALL, writer, nullptr, nullptr);
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "this system lets no process be looked at";
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ts.lastSample(), 171U);
    EXPECT_GT(steps, 100U);
}

// A short form runs with all tests; VELTRAC_KILLS=500 is the whole trial.
TEST(Record, KilledAtAnyMomentItLosesOnlyWhatWasNotFlushed)
{
    signal(SIGPIPE, SIG_IGN);
    const TestDirectory directory;
    const char* const asked = std::getenv("VELTRAC_KILLS");
    const int kills = asked != nullptr ? std::atoi(asked) : 25;
    makeRingFile("r.ts", {.samples = kRecordedRoom, .columns = {{"n", ""}, {"m", ""}, {"k", ""}}});
    std::atomic<bool> goesOn = true;
    std::atomic<std::uint32_t> seen = 0;  // the highest sample that a reader has found
    std::atomic<std::uint64_t> wrong = 0;
    std::atomic<std::uint64_t> looks = 0;
    std::thread reader([&] {
        TSFILE ts("r.ts", true);
        while (goesOn) {
            ts.refresh();
            const std::uint32_t oldest = ts.ringStart();
            const std::uint32_t last = ts.lastSample();
            wrong += wrongRows(ts, std::max(oldest, last - std::min(last, 300U)), last);
            wrong += wrongRows(ts, oldest, std::min(oldest + 300U, last));
            seen = std::max(seen.load(), last);
            ++looks;
        }
    });
    std::mt19937 dice(7);
    std::uint32_t last = 0;
    for (int i = 0; i < kills; ++i) {
        Recorder recorder(last + 1);
        // One of five may go before it has begun.
        if (i % 5 != 0 && !hasRowsBehind(last)) {
            ADD_FAILURE() << "kill " << i;
            break;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(dice() % 60000));
        recorder.end(SIGKILL);
        TSFILE ts("r.ts", true);
        const std::uint32_t oldest = ts.ringStart();
        EXPECT_GE(ts.lastSample(), seen) << "kill " << i;
        EXPECT_GE(ts.lastSample(), last) << "kill " << i;
        last = ts.lastSample();
        EXPECT_EQ(wrongRows(ts, oldest, last), 0U) << "kill " << i;
        // What a part of the ring had made room for may be gone, no more.
        EXPECT_GE(last + 1 - oldest, std::min(last, kRecordedRoom - kRecordedRoom / 8)) << "kill " << i;
    }
    goesOn = false;
    reader.join();
    EXPECT_EQ(wrong, 0U);
    EXPECT_GT(last, kRecordedRoom) << "the ring has come round";
    EXPECT_GT(looks, static_cast<std::uint64_t>(kills));
    EXPECT_EQ(directory.fileCount(), 2U) << "the ring and the notes";
}

TEST(Record, SignalsEndItWithAReport)
{
    signal(SIGPIPE, SIG_IGN);
    for (const int stop : {SIGINT, SIGTERM}) {
        const TestDirectory directory;
        {
            Recorder recorder(1);
            ASSERT_TRUE(hasRowsBehind(100));
            const int status = recorder.end(stop);
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        }
        EXPECT_NE(textOf("notes").find("rows recorded"), std::string::npos) << textOf("notes");
        TSFILE ts("r.ts", true);
        EXPECT_GT(ts.lastSample(), 100U);
        EXPECT_EQ(wrongRows(ts, ts.ringStart(), ts.lastSample()), 0U);
    }
}

TEST(Record, OneRecorderAFileAndNoneIntoAFileThatIsGone)
{
    signal(SIGPIPE, SIG_IGN);
    const TestDirectory directory;
    Recorder recorder(1);
    ASSERT_TRUE(hasRowsBehind(0));
    const ShellOutcome second = cli("record r.ts --f32");
    EXPECT_EQ(second.status, 1);
    EXPECT_NE(second.notes.find("another program is recording"), std::string::npos) << second.notes;
    std::filesystem::remove("r.ts");
    EXPECT_EQ(WEXITSTATUS(recorder.end(0)), 1);
    EXPECT_NE(textOf("notes").find("it was removed"), std::string::npos) << textOf("notes");
}

// A ring that has come round, and one that is not full.
TEST(Record, APartOfARingIsThatPartOfTheSeries)
{
    for (const std::uint32_t rows : {80U, 30U}) {
        const TestDirectory directory;
        std::string input;
        for (std::uint32_t i = 1; i <= rows; ++i)
            input += std::to_string(i * 7 % 11) + ' ' + std::to_string(100 + i) + '\n';
        ASSERT_EQ(record(input, "--columns a,b --samples 50 --dt 0.5").status, 0);
        ASSERT_EQ(cli("cut -o u.ts r.ts").status, 0);
        const std::uint32_t before = rows > 50 ? rows - 50 : 0;
        const auto range = [](std::uint32_t from, std::uint32_t to) {
            return " --from " + std::to_string(from) + " --to " + std::to_string(to);
        };
        for (const std::string options :
             {"", " --every 3", " --every 2 --raw", " --columns b,a", " --from 10% --to 60%"}) {
            ASSERT_EQ(cli("cut --force -o part.ts r.ts" + options).status, 0) << options;
            ASSERT_EQ(cli("cut --force -o same.ts u.ts" + options).status, 0) << options;
            EXPECT_EQ(rowsOf("part.ts"), rowsOf("same.ts")) << rows << options;
        }
        // Samples have the numbers that info tells.
        ASSERT_EQ(cli("cut --force -o part.ts r.ts" + range(before + 4, before + 20)).status, 0);
        ASSERT_EQ(cli("cut --force -o same.ts u.ts" + range(4, 20)).status, 0);
        EXPECT_EQ(rowsOf("part.ts"), rowsOf("same.ts"));
        EXPECT_NE(cli("cut --force -o part.ts r.ts" + range(1, rows + 1)).notes.find("The samples run from"),
                  std::string::npos);
        const std::string formula = "formula --formula x1-x2*3 --in-place b";
        ASSERT_EQ(cli(formula + range(before + 4, before + 20) + " r.ts").status, 0);
        ASSERT_EQ(cli(formula + range(4, 20) + " u.ts").status, 0);
        EXPECT_EQ(rowsOf("r.ts"), rowsOf("u.ts"));
    }
}
