// veltrac-cli where something goes wrong: what it says, its exit status, and that nothing of the user's is
// lost.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "cli/Workers.h"
#include "core/TSFILE.h"
#include "tests/cli/Shell.h"
#include "tests/core/TsFileBytes.h"

namespace {

namespace fs = std::filesystem;

// A directory with a.ts, b.ts and c.ts, of 20,000 samples in 3 columns each, and a scratch directory.
class CliFaults : public testing::Test
{
protected:
    CliFaults()
    {
        fs::create_directory("scratch");
        setenv("TMPDIR", fs::absolute("scratch").c_str(), 1);
        for (const char* const name : {"a.ts", "b.ts", "c.ts"}) {
            TSFILE file(name, 20'000, 3, 0);
            file.dt(0.5F);
            for (std::uint32_t c = 1; c <= 3; ++c) {
                file.columnName(c, ("col" + std::to_string(c)).c_str());
                for (std::uint32_t s = 1; s <= 20'000; ++s)
                    file.setValue(s, c, static_cast<float>(s % 97) * static_cast<float>(c));
            }
        }
    }
    ~CliFaults() override { unsetenv("TMPDIR"); }

    // What stands in the directory beside the three files and the scratch directory, and in that.
    std::size_t leftovers() const
    {
        return m_directory.fileCount() - 4 +
               static_cast<std::size_t>(std::distance(fs::directory_iterator("scratch"), {}));
    }

    const TestDirectory m_directory;
};

TEST_F(CliFaults, AnUnreadableFileAmongGoodOnesIsNamedAndTheOthersAreDone)
{
    std::ofstream("b.ts") << "no ts-file at all, though it is called one";
    for (const char* const jobs : {"1", "3"}) {
        const ShellOutcome run =
            cli(std::string("cut --every 2 --raw -o out/ a.ts b.ts gone.ts c.ts --jobs ") + jobs);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.notes,
                  "b.ts: the file cannot be read (is it cut short?)\ngone.ts: there is no such file\n"
                  "2 of 4 files failed\n");
        EXPECT_EQ(TSFILE("out/a.ts", true).samples(), 10'000U);
        EXPECT_EQ(TSFILE("out/c.ts", true).value(2, 3), 9.0F);
        EXPECT_FALSE(fs::exists("out/b.ts"));
        fs::remove_all("out");
    }
    const ShellOutcome json = cli("info --json --jobs 2 a.ts gone.ts c.ts");
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(std::count(json.out.begin(), json.out.end(), '\n'), 3);
    EXPECT_NE(json.out.find("{\"file\":\"gone.ts\",\"error\":\"there is no such file\"}\n{\"file\":\"c.ts\""),
              std::string::npos);
}

TEST_F(CliFaults, WhatIsThereStaysUnlessForced)
{
    std::ofstream("x.ts") << "precious";
    EXPECT_EQ(cli("cut --to 10 -o x.ts a.ts").notes, "a.ts: x.ts is there already (--force replaces it)\n");
    EXPECT_EQ(textOf("x.ts"), "precious");
    const std::string before = textOf("a.ts");
    EXPECT_EQ(cli("cut --force --to 10 -o a.ts a.ts").notes,
              "a.ts: it would replace itself: choose another target\n");
    EXPECT_EQ(textOf("a.ts"), before);
    EXPECT_EQ(cli("cut --force --to 10 -o x.ts a.ts").status, 0);
    EXPECT_EQ(TSFILE("x.ts", true).samples(), 10U);
}

TEST_F(CliFaults, SkipDoneGoesOnWhereARunWasCut)
{
    ASSERT_EQ(cli("cut --to 10 -o out/ a.ts").status, 0);
    const auto made = fs::last_write_time("out/a.ts");
    ASSERT_EQ(cli("cut --to 10 --skip-done -o out/ a.ts b.ts c.ts").status, 0);
    EXPECT_EQ(fs::last_write_time("out/a.ts"), made);
    EXPECT_TRUE(fs::exists("out/c.ts"));
    // Neither a target that is older than its source nor one that is cut short is done.
    fs::last_write_time("out/b.ts", fs::last_write_time("b.ts") - std::chrono::seconds(1));
    fs::resize_file("out/c.ts", 1024);
    const ShellOutcome again = cli("cut --to 10 --skip-done --force --json -o out/ a.ts b.ts c.ts");
    EXPECT_EQ(again.status, 0);
    EXPECT_NE(again.out.find("\"target\":\"out/a.ts\",\"skipped\":true"), std::string::npos) << again.out;
    EXPECT_EQ(again.out.find("\"skipped\"", again.out.find("\"skipped\"") + 1), std::string::npos);
    EXPECT_EQ(TSFILE("out/c.ts", true).value(10, 3), 30.0F);
}

TEST_F(CliFaults, WrongUsageDoesNothingAndSaysWhy)
{
    fs::create_directory("d");
    fs::copy("a.ts", "d/a.ts");
    const struct
    {
        const char* arguments;
        const char* says;
    } rows[] = {
        {"", "no verb is given"},
        {"info", "no files are named"},
        {"burn a.ts", "burn"},
        {"cut a.ts", "-o FILE or -o DIR is needed"},
        {"cut -o out/ a.ts d/a.ts", "a.ts and d/a.ts would both become out/a.ts"},
        {"cut -o - a.ts b.ts", "-o - takes the result of one file"},
        {"cut --every 0 -o x.ts a.ts", "--every"},
        {"export --csv --npy a.ts", "one format at a time"},
        {"filter --freq 0.1 a.ts", "where does the result go?"},
        {"filter --type brickwall --freq 1 -o x.ts a.ts",
         "\"brickwall\" is none of moving-average|bessel-lp|"},
        {"filter --type bessel-lp --order 11 --freq 0.1 -o x.ts a.ts", "Maximum Bessel filter order is 10"},
        {"spectrum --peaks 2 -o - a.ts", "-o - and --peaks both want standard output"},
        {"header a.ts", "nothing is to be changed"},
        {"header --start yesterday a.ts", "\"yesterday\" is no time"},
        {"header --sample-time 1e39 a.ts", "a sample time must be above 0"},  // and a 32-bit float
        {"import --rate 1e-60 a.ts", "a step must be above 0"},
        {"plot --font-size 6e46 -o y.svg a.ts", "--font-size is 200 at most, --line-width 100"},
        {"plot --line-width 1e30 -o y.svg a.ts", "--font-size is 200 at most, --line-width 100"},
        {"header --new-column -", "--new-column"},
        {"derivative --in-place 1 --new-column a.ts", "not both"},
        {"import --step 1 --rate 1 a.ts", "one of them"},
        {"import --separator none a.ts", "is one sign, \"tab\" or \"blank\""},
        {"plot --characteristic group-delay --type moving-average --rate 9 -o x.svg", "is not available"},
        {"plot --characteristic group-delay --freq 1 -o x.svg", "no files are named"},
        {"plot --characteristic group-delay --freq 1 --rate 9 -o x.svg a.ts", "not both"},
        {"plot --characteristic group-delay --freq 1 --columns 1 -o x.svg a.ts", "draws no columns"},
        {"plot --freq 1 -o x.svg a.ts", "belong to a --characteristic"},
    };
    for (const auto& row : rows) {
        const ShellOutcome run = cli(row.arguments);
        EXPECT_EQ(run.status, 2) << row.arguments;
        EXPECT_NE(run.notes.find(row.says), std::string::npos) << run.notes;
        EXPECT_EQ(run.out, "");
    }
    EXPECT_FALSE(fs::exists("out"));
    EXPECT_EQ(leftovers(), 1U);
}

TEST_F(CliFaults, WhatAFileCannotServeIsToldWithWhatThereIs)
{
    TSFILE("a.ts", false).dt(0.0F);
    fs::resize_file("c.ts", 121'000);
    const struct
    {
        const char* arguments;
        const char* says;
    } rows[] = {
        {"derivative -o x.ts a.ts", "a.ts: its sample time is not above 0; header --sample-time sets one\n"},
        {"derivative --column force -o x.ts b.ts",
         "b.ts: there is no column \"force\"; there are 1 col1, 2 col2, 3 col3\n"},
        {"derivative --column 4 -o x.ts b.ts",
         "b.ts: there is no column \"4\"; there are 1 col1, 2 col2, 3 col3\n"},
        {"cut --from 20001 -o x.ts b.ts", "b.ts: --from 20001: The samples run from 1 to 20000.\n"},
        {"cut --from 50% --to 5 -o x.ts b.ts", "b.ts: --from lies behind --to\n"},
        {"filter --freq 1 -o x.ts b.ts", "b.ts: Freq0 must be below half of the sampling frequency, 1 Hz\n"},
        {"integral --from 2 --new-column b.ts",
         "b.ts: the results begin with sample 2; a file of their own takes them (-o)\n"},
        {"formula --formula x4 -o x.ts b.ts", "b.ts: x4: the file has only 3 columns\n"},
        {"join -o x.ts a.ts b.ts", "x.ts: a.ts: its sample time is not above 0\n"},
        {"cut -o x.ts c.ts", "c.ts: the file is cut short: 10 016 of its samples are gone\n"},
        {"join -o x.ts b.ts c.ts", "x.ts: c.ts: the file is cut short: 10 016 of its samples are gone\n"},
        {"formula --formula x1+x2 --x2 c.ts:1 -o x.ts b.ts",
         "b.ts: x2: c.ts: the file is cut short: 10 016 of its samples are gone\n"},
        {"plot -o x.png b.ts", "b.ts: x.png: a picture ends in .svg or .eps\n"},
        {"info scratch", "scratch: it is a directory\n"},
    };
    for (const auto& row : rows) {
        const ShellOutcome run = cli(row.arguments);
        EXPECT_EQ(run.status, 1) << row.arguments;
        EXPECT_EQ(run.notes, row.says);
    }
    // What is there of it can be drawn all the same.
    EXPECT_EQ(cli("plot --together -o x.svg b.ts c.ts").notes,
              "x.svg: c.ts: the file is cut short: 10 016 of its samples are gone\n");
    fs::remove("x.svg");
    for (const auto& [option, room] : {std::pair("--name", 11), {"--text", 44}, {"--unit", 44}}) {
        const std::string text(60, 'x');
        EXPECT_EQ(
            cli(std::string("header ") + option + " 1=" + text + " b.ts").notes,
            "b.ts: \"" + text + "\" is longer than the " + std::to_string(room) + " bytes of its field\n");
    }
    EXPECT_EQ(leftovers(), 0U);
    // A window's question of three lines is one line here, without what asks.
    std::ofstream("days.csv") << "date,v\n1/2/2024,1\n5/3/2024,2\n4/7/2024,3\n";
    const ShellOutcome doubt = cli("import -o x.ts days.csv");
    EXPECT_EQ(doubt.status, 1);
    EXPECT_TRUE(doubt.notes.starts_with("days.csv: No date tells the day from the month. Please check: "));
    EXPECT_TRUE(doubt.notes.ends_with(". (--accept imports it all the same, --order settles it)\n"))
        << doubt.notes;
    EXPECT_EQ(std::count(doubt.notes.begin(), doubt.notes.end(), '\n'), 1);
}

TEST_F(CliFaults, AFullDiskLeavesTheOldFilesAndNoNewOnes)
{
    const std::string before = textOf("b.ts");
    ASSERT_EQ(cli("export -o text.tsa b.ts").status, 0);
    const char* const jobs[] = {"cut --columns 2 -o x.ts b.ts",
                                "export --csv -o x.csv b.ts",
                                "export --npy -o x.npy b.ts",
                                "export --wav -o x.wav b.ts",
                                "export -o x.tsa b.ts",
                                "import -o x.ts text.tsa",
                                "plot -o x.eps b.ts",
                                "join -o x.ts b.ts c.ts",
                                "filter --freq 0.1 -o x.ts b.ts",
                                "formula --formula x1+1 -o x.ts b.ts",
                                "integral --new-column b.ts",
                                "integral --in-place 2 b.ts",
                                "formula --formula x1+1 --in-place 2 b.ts",
                                "spectrum -o x.ts b.ts"};
    for (const char* const job : jobs) {
        const ShellOutcome run = cli(job, "ulimit -f 16;");  // blocks of 512 or 1024 bytes
        EXPECT_EQ(run.status, 1) << job;
        EXPECT_NE(run.notes.find("the disk took no more"), std::string::npos) << job << ": " << run.notes;
        EXPECT_EQ(textOf("b.ts"), before) << job;
        EXPECT_EQ(leftovers(), 1U) << job;
    }
    EXPECT_EQ(std::system(VELTRAC_CLI " info b.ts > /dev/full 2> .err") / 256, 1);
    EXPECT_EQ(textOf(".err"), "standard output: it took no more\n");
}

TEST(CliWorkers, OneThatIsKilledFailsItsOwnFileAndAllComeInTheirOrder)
{
    std::string told;
    std::size_t most = 0;
    veltrac::runTasks(
        7, 3,
        [](std::size_t number) {
            if (number % 5 == 1)
                raise(SIGKILL);
            return veltrac::TaskOutcome{.out = std::to_string(number)};
        },
        [&told](std::size_t number, const veltrac::TaskOutcome& outcome) {
            told += std::to_string(number) + ' ' + outcome.out + outcome.notes + '\n';
        },
        [&most](std::size_t done) { most = done; });
    const std::string killed = " its worker was ended by signal 9 (was there too little memory?)\n";
    EXPECT_EQ(told, "0 0\n1" + killed + "2 2\n3 3\n4 4\n5 5\n6" + killed);
    EXPECT_EQ(most, 7U);
}

TEST(CliWorkers, WhereNoneCanBeHadTheFilesAreDoneAllTheSame)
{
    // A worker needs descriptors. There are none left from the start, or when the only one has done its first
    // task.
    for (const std::size_t tasksBefore : {0U, 1U}) {
        rlimit before{};
        getrlimit(RLIMIT_NOFILE, &before);
        const int unused = dup(0);
        close(unused);
        const auto leave = [&](int descriptors) {
            const rlimit limit{static_cast<rlim_t>(unused + descriptors), before.rlim_max};
            setrlimit(RLIMIT_NOFILE, &limit);
        };
        leave(tasksBefore == 0 ? 0 : 2);
        const pid_t self = getpid();
        std::string told;
        veltrac::runTasks(
            4, 2,
            [self](std::size_t number) {
                if (getpid() != self && number == 1)
                    raise(SIGKILL);
                return veltrac::TaskOutcome{.out = getpid() == self ? "here" : "there"};
            },
            [&](std::size_t number, const veltrac::TaskOutcome& outcome) {
                told += std::to_string(number) + (outcome.out.empty() ? "died" : outcome.out) + ' ';
                leave(0);
            },
            [](std::size_t) {});
        setrlimit(RLIMIT_NOFILE, &before);
        EXPECT_EQ(told, tasksBefore == 0 ? "0here 1here 2here 3here " : "0there 1died 2here 3here ");
    }
}

TEST_F(CliFaults, ARunThatIsToldToStopLeavesWholeFilesOrNone)
{
    // Big enough that the stop comes in the middle.
    {
        TSFILE big("big.ts", 300'000, 1, 0);
        big.dt(0.001F);
    }
    for (const int copies : {0, 1, 2, 3, 4, 5})
        fs::copy("big.ts", "big" + std::to_string(copies) + ".ts");
    for (const char* const jobs : {"1", "2"}) {
        const ShellOutcome run =
            cli(std::string("export --csv -o out/ big0.ts big1.ts big2.ts big3.ts big4.ts big5.ts --jobs ") +
                    jobs,
                "sh -c '\"$0\" \"$@\" & job=$!; until [ -e out/big0.csv ] || ! kill -0 $job; do sleep 0.01; "
                "done; "
                "kill $job; wait $job'");
        EXPECT_EQ(run.status, 143) << run.notes;
        std::size_t whole = 0;
        for (const auto& entry : fs::directory_iterator("out")) {
            EXPECT_EQ(entry.path().extension(), ".csv");
            const std::string text = textOf(entry.path().string());
            EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 300'001);
            ++whole;
        }
        EXPECT_GE(whole, 1U);
        EXPECT_LT(whole, 6U);
        fs::remove_all("out");
    }
    EXPECT_EQ(leftovers(), 7U);
}

}  // namespace
