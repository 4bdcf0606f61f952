// The tsa text, read and written without a window.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <system_error>

#include "converters/TsaExport.h"
#include "converters/TsaImport.h"
#include "core/Rebuild.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "tests/FileSizeLimit.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

struct Answers : TsaQuestions
{
    std::optional<int> samples, columns;
    bool overwrite = true;
    bool busy = false;
    int asked = 0;
    std::string title, text;

    std::optional<int> askSamples(const std::string&) override { return ++asked, samples; }
    std::optional<int> askColumns(const std::string&) override { return ++asked, columns; }
    bool mayOverwrite(const std::string&) override { return ++asked, overwrite; }
    bool isOpenForWriting(const std::string&) override { return busy; }
    void warn(const std::string& boxTitle, const std::string& boxText) override
    {
        title = boxTitle;
        text = boxText;
    }
};

// A working directory of its own.
struct Tsa : testing::Test
{
    Tsa()
    {
        std::string name = (fs::temp_directory_path() / "tsaXXXXXX").string();
        fs::current_path(mkdtemp(name.data()));
        setenv("TZ", "Europe/Oslo", 1);
    }
    ~Tsa() override
    {
        const fs::path directory = fs::current_path();
        fs::current_path("/");
        fs::remove_all(directory);
    }

    static void write(const fs::path& file, const std::string& text)
    {
        std::ofstream(file, std::ios::binary) << text;
    }
    static std::string read(const fs::path& file)
    {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }
    int import(const std::string& text, const fs::path& file = "a.tsa")
    {
        write(file, text);
        report = {};
        return importTsaText(file, answers, progress, report);
    }
    std::unique_ptr<TSFILE> made() const { return openTsFile(report.tsFile, true); }
    static std::vector<float> values(TSFILE& ts)
    {
        std::vector<float> all(std::size_t{ts.samples()} * ts.columns());
        ts.readRows(1, ts.samples(), all.data());
        return all;
    }
    static std::size_t filesThere()
    {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator("."), fs::directory_iterator()));
    }

    Answers answers;
    Progress progress;
    TsaImportReport report;
};

TEST_F(Tsa, everyKeyReachesTheHeader)
{
    ASSERT_EQ(1, import("%N1 Speed\n%S 2 rest\n%C 2\n%D 0,25\n%I Ride  home\n%U s \n%I2 of the wheel\n%N2  \n"
                        "%T2 2016.05.17-13:45:30\n%T1 2016.13.17-13:45:30\n%T0 2000.01.01-00:00:00\n"
                        "%T3 2000.01.01-00:00:00\n%Samples 9\n%N01 Wrong\n1 2\n3 4\n%N1 Fart\tcut"));
    const auto ts = made();
    EXPECT_EQ(2U, ts->samples());
    EXPECT_EQ(2U, ts->columns());
    EXPECT_FLOAT_EQ(0.25F, ts->dt());
    EXPECT_STREQ("Ride  home", ts->description());
    EXPECT_STREQ("s ", ts->timeUnit());
    EXPECT_STREQ("Fart", ts->columnName(1));
    EXPECT_STREQ("Col-2", ts->columnName(2));
    EXPECT_STREQ("of the wheel", ts->columnDescription(2));
    int stamp[7];
    ts->columnStamp(2, stamp);
    EXPECT_EQ((std::vector{0, 30, 45, 13, 17, 5, 2016}), std::vector(stamp, stamp + 7));
    EXPECT_NEAR(static_cast<double>(std::time(nullptr)), static_cast<double>(ts->columnTime(1)), 100.0);
}

struct DataCase
{
    const char* label;
    std::string body;
    std::vector<float> expected;  // two samples of two columns
    std::uint64_t cut, tabbed, notNumbers, missing, leftOver, lines;
};

TEST_F(Tsa, dataLinesAreReadAsTheFormatSays)
{
    const std::string wide = "7 " + std::string(2046, ' ') + "8\n5 6\n";
    const std::vector<DataCase> cases = {
        {"decimal comma", "1,25 -2,5e1\n3 4\n", {1.25F, -25, 3, 4}, 0, 0, 0, 0, 0, 0},
        {"CR LF, mark, no last new line", "\r\n1 2\r\n3 4", {1, 2, 3, 4}, 0, 0, 0, 0, 0, 0},
        {"comments, blank lines", "; 9 9\n \n  1 2\n\f\n 3 4\n", {1, 2, 3, 4}, 0, 0, 0, 0, 0, 0},
        {"tab first", "\t8 9\n1\t2\n3 4\n", {1, 2, 3, 4}, 0, 1, 0, 0, 0, 0},
        {"no numbers", "abc 2x\n+1 0x10\n", {0, 2, 1, 16}, 0, 0, 2, 0, 0, 0},
        {"NUL", std::string("1\0 2\n3 4\n", 9), {1, 2, 3, 4}, 0, 0, 1, 0, 0, 0},
        {"too few, too many", "1\n3 4 5 6\n", {1, 0, 3, 4}, 0, 0, 0, 1, 2, 0},
        {"more lines than samples", "1 2\n3 4\n5 6\n", {1, 2, 3, 4}, 0, 0, 0, 0, 0, 1},
        {"a word behind the cut is dropped", wide, {7, 0, 5, 6}, 1, 0, 0, 1, 0, 0},
    };
    for (const DataCase& c : cases) {
        SCOPED_TRACE(c.label);
        ASSERT_EQ(1, import("\xEF\xBB\xBF%S 2\n%C 2\n" + c.body));
        EXPECT_EQ(c.expected, values(*made()));
        EXPECT_EQ((std::vector{c.cut, c.tabbed, c.notNumbers, c.missing, c.leftOver, c.lines}),
                  (std::vector{report.linesCut, report.linesTabbed, report.notNumbers, report.valuesMissing,
                               report.valuesLeftOver, report.linesLeftOver}));
    }
    ASSERT_EQ(1, import("%S 3\n%C 1\ninf\n-nan\n"));
    EXPECT_EQ(2U, report.rowsRead);
    EXPECT_FALSE(report.isLossless());
    EXPECT_TRUE(std::isinf(values(*made())[0]) && std::isnan(values(*made())[1]));
}

// Far more lines than are read at once, troubles in all parts, and the file ends among them.
TEST_F(Tsa, longTextsComeInAndGoOutInTheirOrder)
{
    constexpr std::uint32_t kLines = 40000;
    constexpr std::uint32_t kSamples = 30011;
    const auto hasValue = [](std::uint32_t i) { return i % 1009 != 0 && i % 1013 != 0; };
    std::string text = "%S " + std::to_string(kSamples) + "\n%C 2\n";
    for (std::uint32_t i = 1; i <= kLines; ++i)
        text += (i % 997 == 0 ? "\t8 9\n" : "") + std::to_string(i) +
                (hasValue(i)     ? " 0.3\n"
                 : i % 1009 == 0 ? "\n"
                                 : " word\n");
    ASSERT_EQ(1, import(text));
    EXPECT_EQ(kSamples, report.rowsRead);
    EXPECT_EQ(kLines - kSamples, report.linesLeftOver);
    EXPECT_EQ(kLines / 997, report.linesTabbed);
    EXPECT_EQ(kSamples / 1009, report.valuesMissing);
    EXPECT_EQ(kSamples / 1013, report.notNumbers);
    const auto ts = made();
    std::string wanted;
    for (std::uint32_t i = 1; i <= kSamples; ++i)
        wanted += std::to_string(i) + (hasValue(i) ? "  0.3  \n" : "  0  \n");
    TsaExportReport done;
    exportTsaText(*ts, "out.tsa", 1, kSamples, {}, done);
    EXPECT_FALSE(done.valuesRounded);
    const std::string out = read("out.tsa");
    EXPECT_EQ(wanted, out.substr(out.find("\n\n") + 2));
}

TEST_F(Tsa, lineOfAHundredMegabytesIsOneCutLine)
{
    ASSERT_EQ(1, import("%S 2\n%C 1\n4" + std::string(100'000'000, ' ') + "9\n5\n"));
    EXPECT_EQ((std::vector{4.0F, 5.0F}), values(*made()));
    EXPECT_EQ(1U, report.linesCut);
}

TEST_F(Tsa, missingCountsAreAskedFor)
{
    EXPECT_EQ(0, import("1 2\n"));
    answers.samples = 0;
    EXPECT_EQ(0, import("%C -2\n1 2\n"));
    EXPECT_EQ(1U, filesThere());
    answers.columns = 2;
    EXPECT_EQ(1, import("%S x\n1 2\n"));
    EXPECT_EQ((std::vector{1.0F, 2.0F}), values(*made()));
    EXPECT_EQ(5, answers.asked);
}

TEST_F(Tsa, namesMakeTheFileThatTheySay)
{
    for (const char* stem : {"12", "2016-05-17 log", "data.v2", "\xC3\x96l", "a'b"}) {
        ASSERT_EQ(1, import("%S 1\n%C 1\n5\n", std::string(stem) + ".tsa"));
        EXPECT_TRUE(fs::exists(std::string(stem) + ".ts")) << stem;
    }
}

TEST_F(Tsa, oldFileIsNeverLostUnasked)
{
    write("a.ts", "old");
    answers.overwrite = false;
    ASSERT_EQ(1, import("%S 1\n%C 1\n5\n"));
    EXPECT_EQ("a_1.ts", report.tsFile);
    answers.overwrite = answers.busy = true;
    ASSERT_EQ(1, import("%S 1\n%C 1\n5\n"));
    EXPECT_EQ("a_2.ts", report.tsFile);
    EXPECT_TRUE(report.oldFileKept);
    EXPECT_EQ("old", read("a.ts"));

    answers.busy = false;
    progress = [](std::uint64_t done, std::uint64_t total) { return done * 3 < total * 2; };
    std::string rows = "%S 9000\n%C 1\n";
    for (int i = 0; i < 9000; ++i)
        rows += "1\n";
    EXPECT_EQ(0, import(rows));
    EXPECT_EQ("old", read("a.ts"));
    EXPECT_EQ(4U, filesThere());

    progress = {};
    EXPECT_EQ(-1, import("%S 4000000000\n%C 1\n5\n"));
    EXPECT_NE(std::string::npos, answers.text.find("less than 2 GB"));
    EXPECT_EQ("old", read("a.ts"));
    ASSERT_EQ(1, import("%S 1\n%C 1\n5\n"));
    EXPECT_EQ("a.ts", report.tsFile);
    EXPECT_EQ(4U, filesThere());
}

TEST_F(Tsa, diskThatIsFullAtAnyByteLosesNothing)
{
    std::string text = "%S 600\n%C 2\n";
    for (int i = 0; i < 600; ++i)
        text += "1.5 2.5\n";
    write("a.tsa", text);
    write("b.tsa", "old text");
    TSFILE("a.ts", 600, 3, 0).description("old file");
    const std::string old = read("a.ts");
    const std::function<bool()> jobs[] = {
        [&] { return importTsaText("a.tsa", answers, {}, report) == 1; },
        [] { return rebuildTsFile("a.ts", 700, 9, {}) == JobOutcome::Done; },
        [] {
            TsaExportReport done;
            return exportTsaText(*openTsFile("a.ts", true), "b.tsa", 1, 600, {}, done) == JobOutcome::Done;
        },
    };
    for (const auto& job : jobs) {
        bool done = false;
        for (rlim_t bytes = 0; !done; bytes += bytes < 1024 ? 128 : 512) {
            try {
                const FileSizeLimit fullDisk(bytes);
                done = job();
            } catch (const TS::Failure&) {
            } catch (const std::system_error&) {
            }
            ASSERT_EQ(3U, filesThere()) << bytes;
            ASSERT_TRUE(done || (read("a.ts") == old && read("b.tsa") == "old text")) << bytes;
            ASSERT_LT(bytes, 100000U);
        }
        write("a.ts", old);
    }
}

TEST_F(Tsa, linksStayLinksAndProtectedFilesStay)
{
    fs::create_directory("elsewhere");
    write("elsewhere/real.ts", "old");
    fs::create_symlink("elsewhere/real.ts", "a.ts");
    std::size_t most = 0;
    progress = [&](auto, auto) {
        // Whoever pulls the plug now finds the old file.
        EXPECT_EQ("old", read("a.ts"));
        return ++most > 0;
    };
    std::string rows = "%S 9000\n%C 1\n";
    for (int i = 0; i < 9000; ++i)
        rows += "1\n";
    ASSERT_EQ(1, import(rows));
    EXPECT_GT(most, 0U);
    EXPECT_TRUE(fs::is_symlink("a.ts"));
    EXPECT_EQ(9000U, openTsFile("elsewhere/real.ts", true)->samples());
    EXPECT_EQ(2U, static_cast<std::size_t>(
                      std::distance(fs::directory_iterator("elsewhere"), fs::directory_iterator())) +
                      1);

    write("b.ts", "old");
    write("b.txt", "old");
    fs::permissions("b.ts", fs::perms::owner_read);
    fs::permissions("b.txt", fs::perms::owner_read);
    progress = {};
    EXPECT_EQ(-1, import("%S 1\n%C 1\n5\n", "b.tsa"));
    EXPECT_EQ("Ts-Create", answers.title);
    EXPECT_EQ("old", read("b.ts"));
    TsaExportReport done;
    EXPECT_THROW(exportTsaText(*openTsFile("a.ts", true), "b.txt", 1, 1, {}, done), std::system_error);
    EXPECT_EQ("old", read("b.txt"));
}

TEST_F(Tsa, unreadableTextsSayWhy)
{
    EXPECT_EQ(-1, importTsaText("none.tsa", answers, progress, report));
    EXPECT_EQ("Could not open none.tsa.\nOperation is aborted.", answers.text);
    fs::create_directory("a.ts");
    EXPECT_EQ(-1, import("%S 1\n%C 1\n5\n"));
    EXPECT_EQ("Ts-Create", answers.title);
    EXPECT_EQ("Could not delete old %s.\nOperation is aborted", answers.text);
    EXPECT_EQ(2U, filesThere());
}

TEST_F(Tsa, exportIsTextThatTheImportReadsBack)
{
    {
        TSFILE ts("b.ts", 2, 3, 2);
        ts.dt(1.0F / 360.0F);
        ts.description("two\tlines\nhere ");
        ts.timeUnit("s  ");
        ts.columnName(3, "T\xF8y");  // Windows-1252
        const int stamp[7] = {0, 1, 2, 3, 4, 5, 116};
        for (std::uint32_t col = 1; col <= 5; ++col)
            ts.setColumnStamp(col, col == 3 ? stamp : std::array<int, 7>{}.data());
        const float rows[] = {0.5F,     std::bit_cast<float>(4294967295U), 1e-5F, 1234567.0F, NAN,
                              -0.0625F, std::bit_cast<float>(1U),          3e38F, 0.1F,       -2.0F};
        ts.writeRows(1, 2, rows);
        ts.flush(true);
        TsaExportReport done;
        exportTsaText(ts, "b.tsa", 1, 2, {}, done);
        EXPECT_FALSE(done.startIsLost || done.isRing);
        EXPECT_TRUE(done.valuesRounded && done.sampleTimeRounded) << "1234567, 1/360";
        ts.startSeconds(5);
        exportTsaText(ts, "part.tsa", 2, 2, {}, done);
        EXPECT_TRUE(done.startIsLost);
    }
    EXPECT_EQ(
        "%N b.tsa\n%S 2\n%C 5\n%D 0.00277778\n%I two lines here \n%U s  \n%N1 Time\n%I1 \n%N2 Time32\n%I2 \n"
        "%N3 T\xC3\xB8y\n%I3 \n%T3 2016.05.04-03:02:01\n%N4 Column-04\n%I4 \n%N5 Column-05\n%I5 \n\n"
        "0.5  4294967295  1e-05  1.23457e+06  nan  \n-0.0625  1  3e+38  0.1  -2  \n",
        read("b.tsa"));
    EXPECT_NE(std::string::npos, read("part.tsa").find("\n\n-0.0625  1  3e+38  0.1  -2  \n"));
    fs::remove("b.ts");
    ASSERT_EQ(1, importTsaText("b.tsa", answers, progress, report));
    const auto ts = made();
    EXPECT_EQ(4294967295U, std::bit_cast<std::uint32_t>(ts->value(1, 2)));
    EXPECT_EQ(1234570.0F, ts->value(1, 4));
    EXPECT_EQ(2, ts->timeMode());
    const auto data = [](const std::string& text) { return text.substr(text.find("\n\n")); };
    TsaExportReport again;
    exportTsaText(*ts, "c.tsa", 1, 2, {}, again);
    EXPECT_EQ(data(read("b.tsa")), data(read("c.tsa")));
}

TEST_F(Tsa, exportOfARingSaysWhereItBegins)
{
    for (const auto& [written, oldest, unwritten] : {std::array{7U, 3U, 0U}, std::array{4U, 1U, 5U}}) {
        TSFILE ts("ring.ts", 5, 1, 0);
        ts.setRingMode(true);
        for (std::uint32_t sample = 1; sample <= written; ++sample) {
            const float value = static_cast<float>(sample) / 2;
            ts.writeRow(sample, &value, true);
        }
        TsaExportReport done;
        exportTsaText(ts, "ring.tsa", 1, 5, {}, done);
        EXPECT_TRUE(done.isRing && !done.valuesRounded && !done.sampleTimeRounded);
        EXPECT_EQ(oldest, done.oldestRow) << written;
        EXPECT_EQ(unwritten, done.firstUnwritten) << written;
        EXPECT_EQ(written == 7 ? "3  \n3.5  \n1.5  \n2  \n2.5  \n" : "0.5  \n1  \n1.5  \n2  \n0  \n",
                  read("ring.tsa").substr(read("ring.tsa").find("\n\n") + 2));
    }
}

TEST_F(Tsa, exportThatFailsKeepsTheOldText)
{
    TSFILE ts("b.ts", 20000, 900, 0);
    write("b.tsa", "old");
    TsaExportReport done;
    EXPECT_EQ(JobOutcome::Cancelled,
              exportTsaText(
                  ts, "b.tsa", 1, 20000, [](auto at, auto) { return at < 5000; }, done));
    EXPECT_GT(done.rowsTooLong, 0U);
    EXPECT_LE(done.rowsTooLong, 20000U);
    EXPECT_EQ("old", read("b.tsa"));
    EXPECT_EQ(2U, filesThere());
    EXPECT_THROW(exportTsaText(ts, "none/b.tsa", 1, 1, {}, done), std::system_error);
}

}  // namespace
