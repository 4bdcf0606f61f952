// Single column logs, each with what must come out.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <tuple>

#include "converters/SCLObject.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

const fs::path kData = TEST_DATA;
constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

struct Scl : testing::Test
{
    Scl()
    {
        std::string name = (fs::temp_directory_path() / "sclXXXXXX").string();
        fs::current_path(mkdtemp(name.data()));
        setenv("TZ", "Europe/Oslo", 1);
    }
    ~Scl() override
    {
        const fs::path directory = fs::current_path();
        fs::current_path("/");
        fs::remove_all(directory);
    }
    static void write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }
    static std::unique_ptr<TSFILE> import(SCLObject& logs)
    {
        EXPECT_EQ(JobOutcome::Done, logs.check({}));
        EXPECT_EQ(JobOutcome::Done, importSCL(logs, "out.ts", {}));
        return openTsFile("out.ts", true);
    }
    static void expectColumn(TSFILE& ts, std::uint32_t col, const std::vector<float>& wanted)
    {
        ASSERT_EQ(wanted.size(), ts.samples());
        for (std::uint32_t s = 1; s <= ts.samples(); ++s) {
            const float v = ts.value(s, col);
            EXPECT_TRUE(std::isnan(wanted[s - 1]) ? std::isnan(v) : v == wanted[s - 1]) << s << ' ' << v;
        }
    }
};

TEST_F(Scl, everyFileComesOutRight)
{
    struct Case
    {
        const char* file;
        double step;
        std::vector<float> values;
        std::size_t troubles;
        std::size_t notices;
    };
    const std::vector<Case> cases = {
        {"ecg.scl", 1.0 / 360, {-0.245F, -0.215F, kNone, -0.185F, kNone}, 1, 0},
        {"index.scl", 1, {10.5F, 10.6F, 10.7F, kNone}, 0, 1},
        {"timed.scl", 0.5, {5, 6, 7}, 0, 1},
        {"clock.scl", 30, {1.5F, 1.6F, kNone, -5}, 0, 0},
        {"uneven.scl", 1, {1, 2, 3}, 0, 1},
        {"in-turn.scl", 1, {1, 5, 2, 7, 3, 9, 4, 4}, 0, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        SCLObject logs;
        logs.add(kData / c.file);
        EXPECT_DOUBLE_EQ(c.step, logs.step);
        const auto ts = import(logs);
        EXPECT_EQ(c.troubles, logs.found().troubleCount);
        EXPECT_EQ(c.notices, logs.notices().size());
        expectColumn(*ts, 1, c.values);
    }
}

TEST_F(Scl, headReachesTheFile)
{
    SCLObject logs;
    logs.add(kData / "ecg.scl");
    const auto ts = import(logs);
    EXPECT_STREQ("ECG", ts->columnName(1));
    EXPECT_STREQ("ECG [mV]", ts->columnDescription(1));
    EXPECT_EQ(1463492730U - 7200U, ts->startSeconds());
    EXPECT_EQ(1.0F / 360.0F, ts->dt());

    // A key without a sign behind a remark's; and what is assumed of a file that only was found to be one
    // column.
    write("rate.txt", "; Sample Rate 8000\n1\n2\n3\n");
    SCLObject rate;
    rate.add("rate.txt");
    EXPECT_DOUBLE_EQ(1.0 / 8000, rate.step);
    import(rate);
    EXPECT_TRUE(rate.notices().empty());
    write("word.scl", "1\n2\nrate 5\n3\n");
    SCLObject word;
    word.add("word.scl");
    expectColumn(*import(word), 1, {1, 2, kNone, 3});
    EXPECT_EQ(1U, word.found().troubleCount) << "no head without a remark's sign";
    EXPECT_EQ(1.0, word.step);
    // A header tells starts of 1970 to 2106; others stand in a column, as well as a float can.
    for (const auto& [year, seconds, told] :
         {std::tuple("1950", -631155600.0F, "37.62 s"), {"2110", 4417974000.0F, "263.3 s"}}) {
        write("far.txt", "Start: " + std::string(year) + "-01-01 00:00:00\nRate: 1 Hz\n1\n2\n");
        SCLObject far;
        far.add("far.txt");
        const auto made = import(far);
        EXPECT_EQ(0U, made->startSeconds());
        expectColumn(*made, 1, {seconds, seconds});
        expectColumn(*made, 2, {1, 2});
        EXPECT_EQ(
            std::vector<std::string>{"A column \"Time\" tells these times to " + std::string(told) + "."},
            far.notices());
    }
    write("ages.txt", "dt: 20000000000000000000\n2016-05-17 13:46:30 5\n");
    SCLObject ages;
    ages.add("ages.txt");
    EXPECT_EQ(2e19, ages.step);
    EXPECT_FALSE(ages.sources.at(0).start) << "no calendar tells it";
    write("commas.txt", "1,25\n2,5\n");
    SCLObject commas;
    commas.add("commas.txt");
    import(commas);
    EXPECT_EQ((std::vector<std::string>{"The commas in commas.txt are taken for decimal signs.",
                                        "No sample time was found: 1 s is assumed."}),
              commas.notices());

    write("plain.scl", "1\n2\n");
    const utimbuf dated = {1463492730, 1463492730};
    utime("plain.scl", &dated);
    SCLObject plain;
    plain.add("plain.scl");
    EXPECT_EQ(1463492730U, import(plain)->startSeconds()) << "the file's date";

    SCLObject clock;
    clock.add(kData / "clock.scl");
    EXPECT_EQ(1463492700U - 7200U - 30U, import(clock)->startSeconds())
        << "the first line's time, less a step";
    write("zoned.scl", "Start: 2016-05-17T13:45:30Z\n1\n2\n");
    SCLObject zoned;
    zoned.add("zoned.scl");
    EXPECT_EQ(1463492730U, import(zoned)->startSeconds());

    plain.start = -86400 * kMicrosPerSecond;
    const auto early = import(plain);
    EXPECT_EQ(1, early->timeMode());
    EXPECT_EQ(0U, early->startSeconds());
    EXPECT_EQ(-86400.0F - 3600.0F + 1.0F, early->value(1, 1));
}

TEST_F(Scl, roundedTimesTellTheirStep)
{
    const auto timesOf = [](double step, const char* form, const char* behind) {
        std::string text;
        for (int i = 1; i <= 40; ++i) {
            std::array<char, 64> line{};
            std::snprintf(line.data(), line.size(), form, i * step);
            text += line.data() + std::string(behind);
        }
        return text;
    };
    struct Form
    {
        const char* what;
        std::string text;
        double step;
        double within = 0.0;
    };
    for (const auto& [what, text, step, within] :
         {Form{"360 Hz", timesOf(1.0 / 360, "%.6f", " 5\n"), 1.0 / 360},
          {"its digits hardly tell", timesOf(1.0 / 360, "%.3f", " 5\n"), 1.0 / 360},
          {"a clock", timesOf(1.0 / 30, "2016-05-17 13:45:0%.3f", " 5\n"), 1.0 / 30},
          {"three values a second", timesOf(1.0 / 3, "2016-05-17 13:45:%02.0f", " 5\n"), 1.0 / 3},
          {"a clock of minutes", "2016-05-17 13:45 5\n2016-05-17 13:46 5\n2016-05-17 13:48 5\n", 90.0},
          {"no whole rate", timesOf(0.7654321, "%.3f", " 5\n"), 0.7654321, 3e-5},
          {"equal as they are written", "0.1 5\n0.4 6\n0.7 6\n", 0.3, 1e-15}}) {
        write("t.scl", text);
        SCLObject logs;
        logs.add("t.scl");
        EXPECT_NEAR(step, logs.step, within) << what;
        EXPECT_FALSE(logs.sources.at(0).inTurn || logs.sources.at(0).unevenTimes) << what;
    }
    // A minute that is missing is no rounding.
    std::string minutes;
    for (int i = 0; i < 40; ++i)
        minutes += "2016-05-17 13:" + std::to_string(10 + i + i / 30) + " 5\n";
    write("gap.scl", minutes);
    SCLObject gap;
    gap.add("gap.scl");
    EXPECT_TRUE(gap.sources.at(0).unevenTimes);
    // A head that tells the rate agrees with times that are rounded.
    write("head.scl", "Rate: 1.5 Hz\n1\n2\n3\n");
    write("times.scl", "0.667 5\n1.333 6\n2.000 7\n");
    SCLObject both;
    both.add("head.scl");
    both.add("times.scl");
    EXPECT_EQ(1.0F / 1.5F, import(both)->dt());
    // Whole numbers that rise unevenly are values, and so are others that stand or fall.
    for (const char* const text :
         {"1 5\n3 6\n4 7\n6 8\n", "0.1 5\n0.1 6\n0.2 7\n0.2 8\n", "0.3 5\n0.2 6\n0.4 7\n"}) {
        write("pairs.scl", text);
        SCLObject pairs;
        pairs.add("pairs.scl");
        EXPECT_TRUE(pairs.sources.at(0).inTurn) << text;
    }
}

TEST_F(Scl, severalFilesBecomeColumns)
{
    write("a.scl", "Rate: 360 Hz\n1\n2\n3\n");
    write("b.scl", "9\n8\n");
    SCLObject logs;
    logs.add("a.scl");
    logs.add("b.scl");
    logs.sources[1].name = "a";
    logs.fill = STLFill::Previous;
    const auto ts = import(logs);
    EXPECT_STREQ("a~2", ts->columnName(2));
    expectColumn(*ts, 1, {1, 2, 3});
    expectColumn(*ts, 2, {9, 8, 8});
    EXPECT_EQ(std::vector<std::string>{"b.scl has 1 value fewer."}, logs.notices());

    write("two.scl", "Name: first\n1\n2\nName: second\n3\n");
    SCLObject two;
    two.add("two.scl");
    EXPECT_STREQ("first", import(two)->columnName(1));
    EXPECT_EQ(
        std::vector<std::string>{
            "Line 4 of two.scl tells another name: all values are taken for one series."},
        two.notices());

    // Rows of 0.5 s: b begins two samples before a and lies a tenth of one beside it, c tells no start.
    write("a.scl", "Rate: 2 Hz\nStart: 2016-05-17 13:45:30\n1\n2\n3\n");
    write("b.scl", "Start: 2016-05-17T13:45:29.05\n9\n8\n7\n");
    write("c.scl", "5\n");
    SCLObject shifted;
    for (const char* const file : {"a.scl", "b.scl", "c.scl"})
        shifted.add(file);
    const auto late = import(shifted);
    EXPECT_EQ(1463492729U - 7200U, late->startSeconds());
    expectColumn(*late, 1, {kNone, kNone, 1, 2, 3});
    expectColumn(*late, 2, {9, 8, 7, kNone, kNone});
    expectColumn(*late, 3, {5, kNone, kNone, kNone, kNone});
    EXPECT_EQ((std::vector<std::string>{
                  "a.scl begins 2 samples later.",
                  "a.scl lies a fraction of a sample beside the others: it is moved by 0.05 s to later.",
                  "b.scl has 2 values fewer.", "c.scl has 4 values fewer.",
                  "c.scl tells no start: it is taken to begin with the series."}),
              shifted.notices());
    shifted.remove(1);
    EXPECT_EQ(1463492730U - 7200U, import(shifted)->startSeconds());
    // A rate of 0 tells no step.
    write("d.scl", "Rate: 2 Hz\nRate: 0 Hz\nStart: 2016-05-17 13:38:50\n9\n");
    shifted.add("d.scl");
    shifted.check({});
    EXPECT_EQ("a.scl begins 800 samples later.", shifted.notices().front());

    write("a.scl", "Rate: 360 Hz\n1\n2\n3\n");
    write("b.scl", "Rate: 250 Hz\n9\n8\n");
    logs.sources.pop_back();
    logs.add("b.scl");
    try {
        logs.check({});
        FAIL();
    } catch (const STLError& error) {
        EXPECT_STREQ("a.scl has 360 Hz, b.scl 250 Hz. Import them separately.", error.what());
    }
}

TEST_F(Scl, cancelledOrChangedLogsLeaveNothing)
{
    std::string lines;
    for (int i = 0; i < 40000; ++i)
        lines += "1,5\n";
    write("a.scl", lines);
    SCLObject logs;
    logs.add("a.scl");
    const auto cancel = [](auto, auto) { return false; };
    EXPECT_EQ(JobOutcome::Cancelled, logs.check(cancel));
    EXPECT_FALSE(logs.isRead());
    EXPECT_EQ(JobOutcome::Done, logs.check({}));
    EXPECT_EQ(JobOutcome::Done, logs.check(cancel)) << "read already";
    EXPECT_EQ(JobOutcome::Cancelled, importSCL(logs, "out.ts", cancel));
    logs.skipLines = 2;
    EXPECT_FALSE(logs.isRead());
    logs.check({});
    EXPECT_EQ(39998U, logs.result().target.samples);
    write("a.scl", lines + "2\n");
    EXPECT_THROW(importSCL(logs, "out.ts", {}), STLError) << "grown";
    fs::remove("a.scl");
    EXPECT_THROW(logs.check({}), std::system_error) << "gone";
    EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(Scl, headsSayItInTheirOwnWays)
{
    struct Head
    {
        const char* text;
        const char* name;
        const char* description;
        double step;
        std::vector<float> values;
    };
    const std::vector<Head> cases = {
        {"NAME = Flow\nUnit=l/s\ninterval: 5 min\n1\n2\n", "Flow", "Flow [l/s]", 300, {1, 2}},
        {"Description: Inlet\nRate: 2,5 kHz\n; remark\n// remark\n1e3\n-2\n",
         "h",
         "Inlet",
         0.0004,
         {1000, -2}},
        {"Name: Gr\xF6\xDF"
         "e\nUnit: \xB0"
         "C\n1,5 \xB0"
         "C\nOL\n",
         "Größe",
         "Größe [°C]",
         1,
         {1.5F, kNone}},
        {"\xEF\xBB\xBF"
         "10 1\r\n20 2\r\n30 3\r\n",
         "h",
         "h",
         10,
         {1, 2, 3}},
        {"2016-05-17T13:45:30 1\n2016-05-17T13:45:40 2\n", "h", "h", 10, {1, 2}},
        {"1\tm\n\n2\tm\nName: late\n3\tm", "late", "late", 1, {1, 2, 3}},
        {"made by hand\n\"Flow\"\n1\n2\n", "Flow", "Flow", 1, {1, 2}},
        {"Serial;12\nFlow\n(l/s)\n1\n2\n", "Flow", "Flow [l/s]", 1, {1, 2}},
        {"\xD6l flow (l/s)\n1\n2\n", "Öl flow", "Öl flow [l/s]", 1, {1, 2}},
        {"V\n1\n2\n", "V", "V", 1, {1, 2}},
    };
    for (const Head& c : cases) {
        SCOPED_TRACE(c.text);
        write("h.scl", c.text);
        SCLObject logs;
        logs.add("h.scl");
        EXPECT_DOUBLE_EQ(c.step, logs.step);
        const auto ts = import(logs);
        EXPECT_STREQ(c.name, ts->columnName(1));
        EXPECT_STREQ(c.description, ts->columnDescription(1));
        expectColumn(*ts, 1, c.values);
    }
}

TEST_F(Scl, hopelessFilesLeaveNothing)
{
    SCLObject logs;
    for (const char* file : {"words.stl", "empty.stl", "binary.stl"})
        EXPECT_THROW(logs.add(kData / file), STLError) << file;
    EXPECT_THROW(logs.add("none.scl"), std::system_error);
    for (const char* text : {"---\n13:45:30\nnan\n", "Serial;12345\nFlow\n"}) {
        write("none.scl", text);
        EXPECT_THROW(logs.add("none.scl"), STLError) << text;
        fs::remove("none.scl");
    }
    EXPECT_THROW(logs.check({}), STLError);
    write("a.scl", "1\n2\n3\n");
    logs.add("a.scl");
    logs.check({});
    write("a.scl", "1\n");
    EXPECT_THROW(importSCL(logs, "out.ts", {}), STLError);
    EXPECT_EQ(1, std::distance(fs::directory_iterator("."), fs::directory_iterator()));
}

}  // namespace
