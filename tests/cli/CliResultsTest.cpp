// What veltrac-cli makes, beside closed forms and plain loops.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "cli/ColumnStatistics.h"
#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "tests/cli/Shell.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// wave.ts: 4000 samples at 100 Hz from 2016-05-17 10:00:00 UTC; "slow" (2 Hz) and "both" (with 40 Hz), in V.
class CliResults : public testing::Test
{
protected:
    CliResults()
    {
        setenv("TZ", "UTC", 1);
        TSFILE file("wave.ts", 4000, 2, 0);
        file.dt(0.01F);
        file.startSeconds(kStart);
        file.columnName(1, "slow");
        file.columnName(2, "both");
        file.columnDescription(2, "Sum [V]");
        for (std::uint32_t s = 1; s <= 4000; ++s) {
            file.setValue(s, 1, slow(s));
            file.setValue(s, 2,
                          slow(s) + static_cast<float>(std::sin(2.0 * 3.14159265358979 * 40.0 * s * 0.01)));
        }
    }
    static float slow(std::uint32_t s)
    {
        return static_cast<float>(1.0 + std::sin(2.0 * 3.14159265358979 * 2.0 * s * 0.01));
    }

    static constexpr std::uint32_t kStart = 1463479200;
    const TestDirectory m_directory;
};

TEST(CliStatistics, AreThoseOfAPlainLoopAlsoFarFromZeroAndWithMissingValues)
{
    const TestDirectory directory;
    constexpr std::uint32_t kSamples = 200'003;  // several runs and a rest
    std::vector<double> kept;
    {
        TSFILE file("s.ts", kSamples, 3, 0);
        for (std::uint32_t s = 1; s <= kSamples; ++s) {
            const float v = s % 1000 == 7 ? kNaN : 1e6F + static_cast<float>((s * 7919) % 1001) / 8.0F;
            file.setValue(s, 2, v);
            file.setValue(s, 3, kNaN);
            if (!std::isnan(v))
                kept.push_back(static_cast<double>(v));
        }
        file.setValue(5000, 2, -std::numeric_limits<float>::infinity());
        kept.erase(kept.begin() + 4999 - 5);
    }
    long double mean = 0.0L, squares = 0.0L, power = 0.0L;
    for (const double v : kept)
        mean += v / static_cast<long double>(kept.size());
    for (const double v : kept) {
        squares += (v - mean) * (v - mean);
        power += static_cast<long double>(v) * v / static_cast<long double>(kept.size());
    }
    std::vector<ColumnStatistics> all;
    ASSERT_EQ(readStatistics(PlotFile("s.ts"), {}, all), JobOutcome::Done);
    const ColumnStatistics& s = all[1];
    EXPECT_EQ(s.count, kept.size());
    EXPECT_EQ(s.missing, kSamples - kept.size());
    EXPECT_EQ(s.least, *std::min_element(kept.begin(), kept.end()));
    EXPECT_EQ(TSFILE("s.ts", true).value(s.greatestRow, 2), static_cast<float>(s.greatest));
    EXPECT_NEAR(s.mean, static_cast<double>(mean), 2e-9);
    EXPECT_NEAR(s.rms, static_cast<double>(std::sqrt(power)), 2e-9);
    EXPECT_NEAR(s.deviation,
                static_cast<double>(std::sqrt(squares / (static_cast<long double>(kept.size()) - 1.0L))),
                1e-9);
    EXPECT_EQ(all[2].count, 0U);
    EXPECT_EQ(all[0].deviation, 0.0);
}

TEST_F(CliResults, CutKeepsEachSamplesTimeAndTakesOffWhatFewerSamplesCannotShow)
{
    ASSERT_EQ(cli("cut --from 2016-05-17T10:00:05.01 --to \"30 s\" --every 5 --columns both -o c.ts wave.ts")
                  .status,
              0);
    TSFILE cut("c.ts", true);
    EXPECT_EQ(cut.columns(), 1U);
    EXPECT_STREQ(cut.columnDescription(1), "Sum [V]");
    EXPECT_FLOAT_EQ(cut.dt(), 0.05F);
    ASSERT_EQ(cut.samples(), 500U);
    // Row 1 is sample 501; 40 Hz would lie at 0 of the new 20 Hz.
    for (std::uint32_t i = 1; i <= 500; ++i)
        EXPECT_NEAR(cut.value(i, 1), slow(501 + 5 * (i - 1)), 0.01) << i;
    EXPECT_NEAR(FileTime(cut).moment(1), kStart + 5.01, 1e-4);
    EXPECT_NEAR(FileTime(cut).moment(500), kStart + 29.96, 1e-4);

    ASSERT_EQ(cli("cut --every 5 --raw --columns 2,slow -o r.ts wave.ts").status, 0);
    EXPECT_EQ(TSFILE("r.ts", true).value(3, 2), slow(11));
    EXPECT_EQ(cli("cut --every 1000000 --raw -o one.ts wave.ts").status, 0);
    EXPECT_EQ(cli("cut --every 1000001 --raw -o none.ts wave.ts").status, 2);
    ASSERT_EQ(cli("cut --from 11 --to 20 -o w.ts wave.ts").status, 0);
    TSFILE whole("w.ts", true);
    EXPECT_EQ(whole.value(2, 1), slow(12));
    EXPECT_NEAR(FileTime(whole).moment(2), kStart + 0.12, 1e-4);
}

TEST_F(CliResults, ColumnsAreNamesNumbersAndRanges)
{
    std::ofstream("six.csv") << "a;b;c;4-5;e;f\n1;2;3;4;5;6\n2;3;4;5;6;7\n";
    const auto namesOf = [](const char* name) {
        TSFILE file(name, true);
        std::string names;
        for (std::uint32_t c = 1; c <= file.columns(); ++c)
            names.append(c > 1 ? " " : "").append(file.columnName(c));
        return names;
    };
    ASSERT_EQ(cli("import --time-from step -o six.ts six.csv").status, 0);
    ASSERT_EQ(cli("cut --columns f,1-3,4-5 -o cut.ts six.ts").status, 0);
    EXPECT_EQ(namesOf("cut.ts"), "f a b c 4-5");
    ASSERT_EQ(cli("import --time-from step --columns 2-3,4-5,6-6 -o some.ts six.csv").status, 0);
    EXPECT_EQ(namesOf("some.ts"), "b c 4-5 f");
    TSFILE("wide.ts", 1, 40, 0).columnName(35, "\xD6l");  // in Windows-1252
    ASSERT_EQ(cli("cut --columns Öl -o oil.ts wide.ts").status, 0);
    EXPECT_EQ(namesOf("oil.ts"), "\xD6l");
    for (const char* const none : {"5-7", "3-2", "0-2", "-2", "2-", "1-2-3"})
        for (const char* const job : {"cut -o x.ts six.ts", "import --time-from step -o x.ts six.csv"})
            EXPECT_NE(cli(std::string(job) + " --columns=" + none).notes.find("there is no column \""),
                      std::string::npos)
                << job << ' ' << none;
}

TEST_F(CliResults, JoinLinesUpClocksAndLeavesMissingWhatIsOutside)
{
    ASSERT_EQ(cli("cut --from 101 --to 300 --columns slow -o late.ts wave.ts").status, 0);
    ASSERT_EQ(cli("join -o j.ts late.ts wave.ts").status, 0);
    TSFILE joined("j.ts", true);
    EXPECT_EQ(joined.samples(), 4000U);
    ASSERT_EQ(joined.columns(), 3U);
    EXPECT_EQ(joined.startSeconds(), kStart);
    EXPECT_STREQ(joined.columnName(2), "slow~2");
    EXPECT_TRUE(std::isnan(joined.value(100, 1)));
    EXPECT_TRUE(std::isnan(joined.value(301, 1)));
    for (const std::uint32_t s : {101U, 300U})
        EXPECT_EQ(joined.value(s, 1), joined.value(s, 2));
    ASSERT_EQ(cli("join --align first --columns slow -o f.ts late.ts wave.ts").status, 0);
    TSFILE first("f.ts", true);
    EXPECT_EQ(first.value(1, 1), slow(101));
    EXPECT_EQ(first.value(1, 2), slow(1));
    EXPECT_TRUE(std::isnan(first.value(201, 1)));
}

TEST_F(CliResults, WhateverAFileCountsInAPartOfItKeepsItsTimes)
{
    const auto momentOf = [](const char* name, std::uint32_t sample) {
        TSFILE file(name, true);
        return FileTime(file).moment(sample);
    };
    {
        TSFILE hours("hours.ts", 600, 1, 0);
        hours.dt(0.5F);
        hours.timeUnit("Time[h]");
        hours.startSeconds(kStart);
        // Part of a longer series, whose own times go on.
        TSFILE late("late.ts", 600, 1, 1);
        late.dt(0.5F);
        late.startSeconds(kStart);
        for (std::uint32_t s = 1; s <= 600; ++s)
            late.setSampleTime(s, kStart + 15.0 + 0.5 * s);
    }
    for (const char* const verb :
         {"cut", "cut --every 3 --raw", "derivative --column 1", "filter --freq 0.0001"}) {
        ASSERT_EQ(cli(std::string(verb) + " --force --from 61 -o part.ts hours.ts").status, 0) << verb;
        EXPECT_EQ(momentOf("part.ts", 1), kStart + 61 * 1800.0) << verb;
    }
    EXPECT_EQ(cli("filter --freq 0.1 --force -o part.ts hours.ts").notes,
              "hours.ts: its times count in h: 1 Hz stands for one per h\n");
    ASSERT_EQ(cli("derivative --column 2 --force -o part.ts late.ts").status, 0);
    EXPECT_EQ(momentOf("part.ts", 1), kStart + 15.5);
    // The middle of the segment stands for it.
    const std::string spectrogram =
        "spectrum --spectrogram --segment 256 --from 61 --force -o part.ts --column ";
    ASSERT_EQ(cli(spectrogram + "1 hours.ts").status, 0);
    EXPECT_EQ(momentOf("part.ts", 1), kStart + 188.5 * 1800.0);
    ASSERT_EQ(cli(spectrogram + "2 late.ts").status, 0);
    EXPECT_EQ(momentOf("part.ts", 1), kStart + 15.0 + 188.5 * 0.5);
    // Of files whose starts differ by whole seconds a formula knows nothing.
    ASSERT_EQ(cli("cut --from 151 --to 350 -o later.ts wave.ts").status, 0);
    EXPECT_EQ(cli("formula --formula x1-x2 --x2 later.ts:1 -o rest.ts wave.ts").notes,
              "wave.ts: 200 of 4 000 samples computed: the sources hold no others\n"
              "wave.ts: By the clock x2 1 s later; start times alone line them up\n");
    // Half an hour is no half second.
    ASSERT_EQ(cli("header --sample-time 0.5 wave.ts").status, 0);
    EXPECT_EQ(cli("join -o x.ts wave.ts hours.ts").notes,
              "x.ts: hours.ts: its sample time is 0.5 h, that of wave.ts 0.5 s\n");
    EXPECT_NE(
        cli("spectrum --segment 256 --second 1 --second-file hours.ts --of-both Coherence -o x.ts wave.ts")
            .notes.find("0.5 s here, 1800 s"),
        std::string::npos);
    EXPECT_NE(cli("plot --x clock -o x.svg hours.ts").notes.find("--x clock"), std::string::npos);
}

TEST_F(CliResults, TextsArraysAndSoundsComeBackAsTheyWere)
{
    {
        TSFILE file("wave.ts", false);
        file.setValue(2, 2, kNaN);
        file.setValue(3, 2, 1.17549435e-38F);
    }
    ASSERT_EQ(cli("export --csv -o w.csv wave.ts").status, 0);
    EXPECT_EQ(textOf("w.csv").substr(0, 60),
              "Time [s],slow,both [V]\n0.01,1.1253332,1.7131184\n0.02,1.24868");
    EXPECT_EQ(cli("export --csv --force -o w.csv wave.ts").notes, "");
    ASSERT_EQ(std::system("gzip w.csv"), 0);
    ASSERT_EQ(cli("import -o csv.ts w.csv.gz").status, 0);
    const std::string notes = cli("export -o w.csv wave.ts").notes;
    EXPECT_NE(notes.find("tsa text in spite of its name; --csv"), std::string::npos);
    EXPECT_EQ(notes.find("the sample time was rounded"), std::string::npos) << notes;
    ASSERT_EQ(cli("export --wav --columns both,slow -o w.wav wave.ts").status, 0);
    ASSERT_EQ(cli("import -o wav.ts w.wav").status, 0);
    TSFILE wave("wave.ts", true), csv("csv.ts", true), wav("wav.ts", true);
    ASSERT_EQ(csv.samples(), 4000U);
    EXPECT_FLOAT_EQ(wav.dt(), 0.01F);
    EXPECT_STREQ(wav.columnName(2), "Right");
    EXPECT_EQ(wav.value(2, 1), 0.0F);
    for (std::uint32_t s = 1; s <= 4000; ++s) {
        EXPECT_EQ(csv.value(s, 1), wave.value(s, 1));
        EXPECT_EQ(wav.value(s, 2), wave.value(s, 1));
        EXPECT_TRUE(s == 2 || csv.value(s, 2) == wave.value(s, 2)) << s;
    }
    EXPECT_TRUE(std::isnan(csv.value(2, 2)));

    ASSERT_EQ(cli("export --npy --columns both --from 3 --to 5 -o a.npy wave.ts").status, 0);
    const std::string npy = textOf("a.npy");
    EXPECT_EQ(npy.substr(0, 10), std::string("\x93NUMPY\x01\x00\x76\x00", 10));
    EXPECT_EQ(npy.substr(10, 61), "{'descr': '<f4', 'fortran_order': False, 'shape': (3, 1), }  ");
    ASSERT_EQ(npy.size(), 128U + 12U);
    float third = 0.0F;
    std::memcpy(&third, npy.data() + 128 + 8, sizeof third);
    EXPECT_EQ(third, wave.value(5, 2));
    EXPECT_NE(textOf("a.npy.txt").find("[:, 0]  both  Sum [V]\n"), std::string::npos);

    constexpr std::uint32_t kLong = 70'001;  // more rows than are written at once
    {
        TSFILE file("long.ts", kLong, 2, 0);
        file.dt(0.5F);
        for (std::uint32_t s = 1; s <= kLong; ++s) {
            const float row[] = {static_cast<float>(s), -2.0F * static_cast<float>(s)};
            file.writeRow(s, row, false);
        }
    }
    ASSERT_EQ(cli("export --csv -o l.csv long.ts").status, 0);
    ASSERT_EQ(cli("export --npy -o l.npy long.ts").status, 0);
    ASSERT_EQ(cli("export --wav -o l.wav long.ts").status, 0);
    const std::string rows = textOf("l.csv");
    EXPECT_NE(rows.find("\n16384,32768,-65536\n16384.5,32769,-65538\n"), std::string::npos);
    EXPECT_TRUE(rows.ends_with("\n35000.5,70001,-140002\n")) << rows.substr(rows.size() - 60);
    const std::string array = textOf("l.npy");
    ASSERT_EQ(array.size(), 128U + 8U * kLong);
    ASSERT_EQ(cli("import -o l.ts l.wav").status, 0);
    TSFILE sound("l.ts", true);
    ASSERT_EQ(sound.samples(), kLong);
    for (std::uint32_t s = 1; s <= kLong; ++s) {
        float second = 0.0F;
        std::memcpy(&second, array.data() + 128 + 8U * s - 4, sizeof second);
        ASSERT_EQ(second, -2.0F * static_cast<float>(s)) << s;
        ASSERT_EQ(sound.value(s, 2), second) << s;
    }

    // What has no place for a file's own times tells that they are left out.
    std::ofstream("uneven.csv") << "time [s],a\n0,1\n1.5,2\n2,3\n";
    ASSERT_EQ(cli("import --quiet --becomes time -o uneven.ts uneven.csv").status, 0);
    EXPECT_NE(cli("export --npy -o u.npy uneven.ts").notes.find("own times (\"Time\") are not in it"),
              std::string::npos);
    EXPECT_NE(textOf("u.npy.txt").find("own times (\"Time\") are not in it\nfirst row"), std::string::npos);
    EXPECT_EQ(cli("export --npy --columns Time,a --force -o u.npy uneven.ts").notes,
              "uneven.ts: what its columns are stands in u.npy.txt\n");
    EXPECT_NE(cli("export --wav -o u.wav uneven.ts").notes.find("taken at equal steps"), std::string::npos);
}

TEST_F(CliResults, WhatATsaTextLacksOrHasTooMuchIsToldAndNothingElse)
{
    std::ofstream("few.tsa") << "%S 5\n%C 2\n1 2\n3\n4 x5\n6 7 8 9\n\t1 2\n";
    EXPECT_EQ(cli("import -o few.ts few.tsa").notes,
              "few.tsa: 4 samples, 2 columns.\n"
              "few.tsa: 1 sample without a line in the text: zeros\n"
              "few.tsa: 1 data line beginning with a tab, passed over\n"
              "few.tsa: 1 word no number, or with text behind the number\n"
              "few.tsa: 1 value missing in their lines: 0\n"
              "few.tsa: 2 values more than the columns, left over\n");
    TSFILE few("few.ts", true);
    EXPECT_EQ(few.value(4, 2), 7.0F);
    EXPECT_EQ(few.value(5, 1), 0.0F);
    std::ofstream("more.tsa") << "%S 1\n%C 1\n1\n2\n3\n";
    std::ofstream("long.tsa") << "%S 1\n%C 1\n1 " << std::string(3000, 'x') << '\n';
    EXPECT_NE(cli("import -o long.ts long.tsa").notes.find("1 line cut: too long"), std::string::npos);
    EXPECT_EQ(cli("import -o more.ts more.tsa").notes,
              "more.tsa: 1 sample, 1 column.\nmore.tsa: 2 data lines more than the samples, left over\n");
}

TEST_F(CliResults, TimesAreReadAsTheOptionSays)
{
    const struct
    {
        const char* from;
        const char* rows;
        float dt;
        double first;  // seconds since 1970 of the first row
    } cases[] = {
        {"step --step 3 --start 1970-01-02T00:00:00", "7;1\n8;2\n9;3\n", 3.0F, 86403.0},
        {"stamp", "1970-01-02 00:00:05;1\n1970-01-02 00:00:07;2\n1970-01-02 00:00:09;3\n", 2.0F, 86405.0},
        {"serial-days", "25570.5;1\n25571;2\n25571.5;3\n", 43200.0F, 129600.0},
        {"decimal-years", "1973;1\n1974;2\n1975;3\n", 31536000.0F, 94694400.0},
        {"elapsed-time --start 1970-01-02T00:00:00", "0:10;1\n0:15;2\n0:20;3\n", 300.0F, 87000.0},
        {"elapsed-seconds --start 1970-01-02T00:00:00", "10;1\n14;2\n18;3\n", 4.0F, 86410.0},
        {"unix-seconds", "86500;1\n86560;2\n86620;3\n", 60.0F, 86500.0},
        {"unix-milliseconds", "86500500;1\n86501000;2\n86501500;3\n", 0.5F, 86500.5},
        {"unix-microseconds", "86500500000;1\n86500750000;2\n86501000000;3\n", 0.25F, 86500.5},
        {"unix-nanoseconds", "86500500000000;1\n86500625000000;2\n86500750000000;3\n", 0.125F, 86500.5}};
    for (const auto& c : cases) {
        std::ofstream("log.csv") << "t;v\n" << c.rows;
        const ShellOutcome run =
            cli("import --force --as stl --becomes constant --time-column 1 -o l.ts log.csv --time-from " +
                std::string(c.from));
        ASSERT_EQ(run.status, 0) << c.from << ": " << run.notes;
        TSFILE made("l.ts", true);
        EXPECT_EQ(made.columns(), 1U) << c.from;
        EXPECT_FLOAT_EQ(made.dt(), c.dt) << c.from;
        EXPECT_NEAR(FileTime(made).moment(1), c.first, 0.01) << c.from;
    }
    // The year in the first column; the month before the hours is no minute.
    std::ofstream("log.csv") << "YYYY;DD;MM;hh;mm;v\n1970;3;1;1;40;1\n1970;3;1;1;45;2\n";
    ASSERT_EQ(cli("import --force --becomes constant --time-from date-parts -o l.ts log.csv").status, 0);
    TSFILE made("l.ts", true);
    EXPECT_FLOAT_EQ(made.dt(), 300.0F);
    EXPECT_NEAR(FileTime(made).moment(1), 2 * 86400 + 6000.0, 0.01);
}

TEST_F(CliResults, EveryOptionOfAnImportHoldsAgainstWhatTheTextLooksLike)
{
    setenv("TZ", "Europe/Oslo", 1);
    std::ofstream("odd.csv") << "Logger 7|of 9\nDay|Hour|Load\n|h|kN\nTag|Zeit|Kraft|Weg\n||t|mm\n1|2|3|4\n"
                                "03/04/2016|10:00:00|1234,5|7\n!03/04/2016|10:00:05|8|8\n"
                                "03/04/2016|10:00:10|1235,5|8\n03/04/2016|10:00:20|void|9\n"
                                "03/04/2016|10:00:30|1236,5|10\n03/04/2016|10:00:40|1237,5|11\n";
    const ShellOutcome run =
        cli("import --as stl --separator '|' --decimal , --names-line 4 --units-line 5 "
            "--first-data-line 8 --remarks '!' --missing-markers void --time-from date-and-time "
            "--date-column Tag --time-column Zeit --order month-day --zone utc --becomes constant "
            "--columns Kraft --name Kraft=Force --unit Kraft=kN --rows-from 2 --rows-to 4 --every 2 "
            "--missing-become zero --description \"Run 7\" -o odd.ts odd.csv");
    setenv("TZ", "UTC", 1);
    ASSERT_EQ(run.status, 0) << run.notes;
    TSFILE made("odd.ts", true);
    ASSERT_EQ(made.samples(), 2U);
    ASSERT_EQ(made.columns(), 1U);
    EXPECT_EQ(made.value(1, 1), 0.0F);
    EXPECT_EQ(made.value(2, 1), 1237.5F);
    EXPECT_FLOAT_EQ(made.dt(), 20.0F);
    EXPECT_NEAR(FileTime(made).moment(1), 1457085620.0, 0.01);
    EXPECT_STREQ(made.description(), "Run 7");
    EXPECT_STREQ(made.columnName(1), "Force");
    EXPECT_TRUE(std::string(made.columnDescription(1)).ends_with("[kN]"));
    std::ofstream("few.csv") << "n;v\n1;1.234,5\n2;void\n3;1.236,5\n";
    const ShellOutcome few =
        cli("import --force --decimal , --grouping point --becomes constant -o odd.ts few.csv");
    ASSERT_EQ(few.status, 0) << few.notes;
    EXPECT_EQ(TSFILE("odd.ts", true).value(3, TSFILE("odd.ts", true).columns()), 1236.5F);
}

TEST_F(CliResults, ResultsGoToNewColumnsAndOverOldOnesAndNothingElseChanges)
{
    ASSERT_EQ(cli("formula --formula \"x2-x1\" --name fast --unit V --new-column wave.ts").status, 0);
    ASSERT_EQ(cli("integral --column fast --new-column wave.ts").status, 0);
    const std::string help = cli("formula --help").out;
    EXPECT_LT(help.find("What x1 is, and so on to x8"), help.find("Likewise"));
    ASSERT_EQ(
        cli("formula --formula \"2*x1\" --x1 wave.ts:both --from 11 --to 20 --in-place slow wave.ts").status,
        0);
    TSFILE wave("wave.ts", true);
    ASSERT_EQ(wave.columns(), 4U);
    EXPECT_STREQ(wave.columnName(3), "fast");
    EXPECT_STREQ(wave.columnDescription(3), "x2-x1 [V]");
    EXPECT_EQ(wave.value(10, 1), slow(10));
    EXPECT_EQ(wave.value(11, 1), 2.0F * wave.value(11, 2));
    EXPECT_EQ(wave.value(21, 1), slow(21));
    EXPECT_NEAR(wave.value(7, 3), std::sin(2.0 * 3.14159265358979 * 40.0 * 0.07), 1e-6);
    EXPECT_NEAR(wave.value(2, 4), 0.005 * static_cast<double>(wave.value(1, 3) + wave.value(2, 3)), 1e-6);
}

TEST_F(CliResults, HeadersAreSetAndTheRestStays)
{
    ASSERT_EQ(cli("header --description \"Run 7\" --rate 50 --start 2016-10-30T02:30:00.5 --name both=Force "
                  "--text 1=Position --unit 1=mm --unit 2=kN wave.ts")
                  .status,
              0);
    TSFILE wave("wave.ts", true);
    EXPECT_STREQ(wave.description(), "Run 7");
    EXPECT_FLOAT_EQ(wave.dt(), 0.02F);
    EXPECT_EQ(wave.startSeconds(), 1477794600U);
    EXPECT_FLOAT_EQ(wave.startTime(), 0.5F);
    EXPECT_STREQ(wave.columnName(2), "Force");
    EXPECT_STREQ(wave.columnDescription(2), "Sum [kN]");
    EXPECT_STREQ(wave.columnDescription(1), "Position [mm]");
    EXPECT_EQ(wave.value(4000, 1), slow(4000));
    const ShellOutcome told = cli("info wave.ts");
    EXPECT_NE(told.out.find("  start        2016-10-30T02:30:00.5+00:00\n"), std::string::npos) << told.out;
    ASSERT_EQ(cli("header --time-unit min --rate 50 wave.ts").status, 0);
    EXPECT_FLOAT_EQ(TSFILE("wave.ts", true).dt(), 0.02F / 60.0F);
}

TEST_F(CliResults, PeaksAndStreamsGoToStandardOutput)
{
    const ShellOutcome peaks = cli("spectrum --quiet --column both --remove mean --peaks 2 -o s.ts wave.ts");
    EXPECT_EQ(peaks.notes, "");
    EXPECT_TRUE(peaks.out == "40 Hz  1 V\n2 Hz  1 V\n" || peaks.out == "2 Hz  1 V\n40 Hz  1 V\n")
        << peaks.out;
    ASSERT_EQ(cli("spectrum --column both --segment 500 --overlap 0 --spectrogram -o g.ts wave.ts").status,
              0);
    TSFILE picture("g.ts", true);
    ASSERT_EQ(picture.samples(), 8U);
    for (const std::uint32_t bin : {10U, 200U})  // of 0.2 Hz
        EXPECT_NEAR(picture.value(8, bin), 1.0, 0.01) << bin;
    const ShellOutcome stream =
        cli("export --csv --quiet --clock --from 2 --to 3 --columns slow -o - wave.ts");
    EXPECT_EQ(stream.out.substr(0, 71),
              "Time,slow\n2016-05-17T10:00:00.02+00:00,1.2486899\n2016-05-17T10:00:00.03");
    const ShellOutcome ts = cli("cut --to 3 -o - wave.ts");
    EXPECT_EQ(ts.out.size(), 1024U + 512U);
}

TEST_F(CliResults, NumbersHaveAPointInEveryLocale)
{
    const std::string german = "LC_ALL=de_DE.UTF-8 LANG=de_DE.UTF-8";
    EXPECT_EQ(cli("info --stats --json wave.ts", german).out, cli("info --stats --json wave.ts").out);
    ASSERT_EQ(cli("filter --type moving-average --points 3 -o f.ts wave.ts", german).status, 0);
    ASSERT_EQ(cli("plot --cursors \"5 s,6 s\" -o p.eps wave.ts", german).status, 0);
    const std::string picture = textOf("p.eps");
    EXPECT_EQ(picture.find("0,"), std::string::npos);
    EXPECT_NE(picture.find("/Times-Roman _F"), std::string::npos);
    EXPECT_NE(picture.find("%%Creator: Veltrac"), std::string::npos);
    EXPECT_NE(picture.find("(A)"), std::string::npos);
    EXPECT_NE(picture.find("(B)"), std::string::npos);
    std::size_t lines = 0;
    for (std::size_t at = 0; (at = picture.find(" _l", at + 1)) != std::string::npos;)
        ++lines;
    EXPECT_GT(lines, 2000U) << "the curves of both columns";
}

}  // namespace
