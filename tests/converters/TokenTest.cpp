// Cells, numbers and time stamps of text logs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <random>

#include "converters/ColumnTexts.h"
#include "converters/STLHead.h"
#include "converters/STLPlainRow.h"
#include "converters/STLToken.h"
#include "converters/TimeStamps.h"

using namespace veltrac;

namespace {

TEST(StlTokens, cellsAreCutAtSeparatorsOutsideQuotes)
{
    struct Case
    {
        const char* line;
        char separator;
        std::vector<std::string_view> cells;
    };
    const std::vector<Case> cases = {
        {"a; b ;c\r", ';', {"a", "b", "c"}},
        {";;", ';', {"", "", ""}},
        {"\"a;b\";\" c \";\"", ';', {"a;b", "c", "\""}},
        {"\"a\"\"b;\"; c\"", ';', {"a\"\"b;", "c\""}},
        {"\"5 inch;2", ';', {"\"5 inch", "2"}},
        {"\"a\"b\";\"c\" ;2", ';', {"a\"b", "c", "2"}},
        {"\"1\",21,\"A b\" \"c\"", ' ', {"1\",21,\"A b", "c"}},
        {"a\t\tb", '\t', {"a", "", "b"}},
        {"  1 \t 2\t\"x y\" ", ' ', {"1", "2", "x y"}},
        {"1:05 PM 7", ' ', {"1:05 PM", "7"}},
        {"1 PM", ' ', {"1", "PM"}},
        {"[2026-11-22 01:45:40] 7", ' ', {"[2026-11-22 01:45:40]", "7"}},
        {"[pump: on] 7", ' ', {"[pump:", "on]", "7"}},
        {"", ' ', {}},
    };
    std::vector<std::string_view> cells;
    for (const Case& c : cases) {
        splitCells(c.line, c.separator, cells);
        EXPECT_EQ(c.cells, cells) << c.line;
    }
}

TEST(StlTokens, numbersAreWholeOrNone)
{
    struct Case
    {
        const char* text;
        char decimal;
        char grouping;
        std::optional<double> value;
    };
    const std::vector<Case> cases = {
        {"1.5", '.', 0, 1.5},
        {"+1,5", ',', 0, 1.5},
        {"1.5", ',', 0, {}},
        {"1,5", '.', 0, {}},
        {".5", '.', 0, 0.5},
        {"-1e-3", '.', 0, -0.001},
        {"1.5 ", '.', 0, {}},
        {"1.5kN", '.', 0, {}},
        {"inf", '.', 0, {}},
        {"1.234,5", ',', '.', 1234.5},
        {"1.23,5", ',', '.', {}},
        {"1234.567", ',', '.', {}},
        {"1'234'567", '.', '\'', 1234567.0},
        {"12", ',', '.', 12.0},
        {"12,", ',', 0, {}},
        {"", '.', 0, {}},
        {"--5", '.', 0, {}},
        {"-", '.', 0, {}},
        {".", '.', 0, {}},
        {"1..5", '.', 0, {}},
        {"-0.1", '.', 0, -0.1},
        {"123456789012345", '.', 0, 123456789012345.0},
        {"0.12345678901234567", '.', 0, 0.12345678901234567},
    };
    for (const Case& c : cases) {
        STLCells cells;
        cells.decimal = c.decimal;
        cells.grouping = c.grouping;
        EXPECT_EQ(c.value, readNumber(c.text, cells)) << c.text;
        EXPECT_EQ(c.value.has_value(), isNumber(c.text, cells)) << c.text;
    }
    EXPECT_TRUE(isMissing("NaN", {}) && isMissing("", {}) && isMissing("OL", {}));
    EXPECT_FALSE(isMissing("n", {}) || isMissing("over 5", {}));
}

TEST(TimeStamps, stampsMeanWhatIsWritten)
{
    struct Case
    {
        const char* text;
        DateOrder order;
        std::optional<double> seconds;  // of the wall clock, or of Greenwich
    };
    constexpr double kNoon = 1463492730.0;  // 2016-05-17 13:45:30
    const std::vector<Case> cases = {
        {"2016-05-17T13:45:30Z", DateOrder::MonthDay, kNoon},
        {"2016/5/17 13:45:30.25", DateOrder::MonthDay, kNoon + 0.25},
        {"17.05.2016 13:45:30,5", DateOrder::MonthDay, kNoon + 0.5},
        {"17.5.16 1:45:30 PM", DateOrder::MonthDay, kNoon},
        {"5/17/2016 13:45:30", DateOrder::MonthDay, kNoon},
        {"17/5/2016 13:45:30", DateOrder::DayMonth, kNoon},
        {"17/5/2016 13:45:30", DateOrder::MonthDay, {}},
        {"2016-05-17 15:45:30 +02:00", DateOrder::DayMonth, kNoon},
        {"2016-05-17 09:15:30-0430", DateOrder::DayMonth, kNoon},
        {"2016-05-17", DateOrder::DayMonth, 1463443200.0},
        {"1958-03-01", DateOrder::DayMonth, -373593600.0},
        {"2016-02-29", DateOrder::DayMonth, 1456704000.0},
        {"2015-02-29", DateOrder::DayMonth, {}},
        {"2016-05-17 12:00 AM", DateOrder::DayMonth, 1463443200.0},
        {"2016-05-17 13:00 AM", DateOrder::DayMonth, {}},
        {"2016-05-17 13:60", DateOrder::DayMonth, {}},
        {"2016-05-17 13:45 x", DateOrder::DayMonth, {}},
        {"2016-05.17", DateOrder::DayMonth, {}},
        {"12345", DateOrder::DayMonth, {}},
        {"Tue, 17 May 2016 13:45:30 +0000", DateOrder::MonthDay, kNoon},
        {"Tue May 17 13:45:30 2016", DateOrder::DayMonth, kNoon},
        {"17-OKT-16", DateOrder::MonthDay, 1476662400.0},
        {"3. M\xE4rz 2016", DateOrder::DayMonth, 1456963200.0},
        {"Di. 17.05.2016 13.45.30", DateOrder::MonthDay, kNoon},
        {"2016-May-17 15:45:30 MESZ", DateOrder::DayMonth, kNoon},
        {"2016-05-17 13:45:30 UTC-05:30", DateOrder::DayMonth, kNoon + 19800},
        {"20160517", DateOrder::DayMonth, 1463443200.0},
        {"20160230", DateOrder::DayMonth, {}},
        {"22/May/2016:01:45:40 +0200", DateOrder::DayMonth, 1463874340.0},
        {"[2016-05-17 13:45:30.886]", DateOrder::DayMonth, kNoon + 0.886},
        {"Tue May 17 13:45:30 UTC 2016", DateOrder::DayMonth, kNoon},
        {"Tue May 17 09:45:30 EDT 2016", DateOrder::DayMonth, kNoon},
        {"Tue May 17 13:45:30 XYZ 2016", DateOrder::DayMonth, {}},
        {"2016-05-17-13:45:30:", DateOrder::DayMonth, kNoon},
        {"May 2016", DateOrder::DayMonth, 1462060800.0},
        {"2016-05", DateOrder::DayMonth, 1462060800.0},
        {"05/2016", DateOrder::DayMonth, 1462060800.0},
        {"2016-13", DateOrder::DayMonth, {}},
        {"2016-May", DateOrder::DayMonth, 1462060800.0},
        {"20160517T1345", DateOrder::DayMonth, 1463492700.0},
        {"2016 Q2", DateOrder::DayMonth, 1459468800.0},
        {"Q2-2016", DateOrder::DayMonth, 1459468800.0},
        {"2016-W20", DateOrder::DayMonth, 1463356800.0},
        {"2016W20-2", DateOrder::DayMonth, 1463443200.0},
        {"2015-W01", DateOrder::DayMonth, 1419811200.0},
        {"2016-W54", DateOrder::DayMonth, {}},
        {"Marble 3 2016", DateOrder::DayMonth, {}},
        {"17 May 2016 13:45:30 Alarm", DateOrder::DayMonth, {}},
    };
    for (const Case& c : cases) {
        const auto stamp = readStamp(c.text);
        const auto wall = stamp ? wallClock(*stamp, c.order) : std::nullopt;
        ASSERT_EQ(c.seconds.has_value(), wall.has_value()) << c.text;
        if (wall) {
            EXPECT_DOUBLE_EQ(*c.seconds, static_cast<double>(*wall) / 1e6) << c.text;
        }
    }
    EXPECT_EQ(26 * 3600 * kMicrosPerSecond, readTime("26:00:00")->micros) << "elapsed hours";
    EXPECT_FALSE(readDate("2016-05-17 13:45") || readDate("2016-05-17 noon"));
    EXPECT_FALSE(readTime("1:5:00") || readTime("12:00:0x") || readTime("12:61:00"));
}

TEST(TimeStamps, localTimeKnowsSummer)
{
    setenv("TZ", "Europe/Oslo", 1);
    tzset();
    EXPECT_EQ(1463492730 - 7200, localSeconds(1463492730 * kMicrosPerSecond));
    EXPECT_EQ(1456704000 - 3600, localSeconds(1456704000 * kMicrosPerSecond));
    EXPECT_EQ(-373593600 - 3600, localSeconds(-373593600 * kMicrosPerSecond));
}

TEST(ImportHead, intervalsAndRatesHaveUnits)
{
    STLCells comma;
    comma.decimal = ',';
    EXPECT_EQ(0.01, readInterval("10 ms", {}));
    EXPECT_EQ(0.5, readInterval("0,5s", comma));
    EXPECT_EQ(300.0, readInterval("5 min", {}));
    EXPECT_EQ(7200.0, readInterval("2 h", {}));
    EXPECT_EQ(std::nullopt, readInterval("5 apples", {}));
    EXPECT_EQ(360.0, readRate("360 Hz", {}));
    EXPECT_EQ(1500.0, readRate("1.5kHz", {}));
    EXPECT_EQ(STLKey::Interval, keyOf("Sample Time"));
    EXPECT_EQ(STLKey::Other, keyOf("Operator"));
}

TEST(ColumnTexts, namesAreCutAtCharactersAndMadeUnique)
{
    EXPECT_EQ((std::vector<std::string>{"Temperature", "Temperatu~2", "Temperatu~3", "Time~2", "aaaaaaaaaa"}),
              uniqueColumnNames({"Temperature inside", "Temperature outside", "Temperature", "Time",
                                 "aaaaaaaaaa\xC3\xB8"}));
    EXPECT_EQ("Force [kN]", nameWithUnit("Force", "kN"));
    EXPECT_EQ(45U, nameWithUnit(std::string(60, 'x'), "kN").size());
    EXPECT_EQ("[kN]", nameWithUnit("", "kN"));
}

// Digits of any number with a decimal sign anywhere between them.
std::string someNumber(std::mt19937& random, char decimal)
{
    std::string digits;
    for (std::size_t left = 1 + random() % 17; left > 0; --left)
        digits += static_cast<char>('0' + random() % 10);
    return digits.insert(random() % (digits.size() + 1), 1, decimal);
}

TEST(STLPlainRow, numbersOfAnyLengthAreThoseOfTheLibrary)
{
    STLFormat format;
    format.cells.separator = ';';
    format.columns.resize(2);
    std::mt19937 random(7);
    std::vector<std::string_view> cells(2);
    std::vector<float> values(2);
    std::vector<std::size_t> unread;
    for (int i = 0; i < 20000; ++i) {
        const std::string first = someNumber(random, '.');
        const std::string last = someNumber(random, '.');
        ASSERT_TRUE(STLPlainRow(format).read(first + ";" + last, cells, values, unread));
        // Long ones are left to the library, and large ones to who counts what is rounded.
        const auto isLeft = [](const std::string& text) {
            return text.size() > 15 || static_cast<float>(std::strtod(text.c_str(), nullptr)) >=
                                           static_cast<float>(kMostExactWhole);
        };
        const auto wanted = static_cast<std::size_t>(isLeft(first)) + (isLeft(last) ? 1 : 0);
        ASSERT_EQ(wanted, unread.size()) << first << ' ' << last;
        const auto expected = [&](const std::string& text, float otherwise) {
            return isLeft(text) ? otherwise : static_cast<float>(std::strtod(text.c_str(), nullptr));
        };
        ASSERT_EQ(expected(first, values[0]), values[0]) << first;
        ASSERT_EQ(expected(last, values[1]), values[1]) << last;
    }
}

// The quick way finds what the thorough one does, whatever stands in a row.
TEST(STLPlainRow, readsAsSplitCellsAndReadValue)
{
    const std::vector<std::string> words = {"1",
                                            "-2.5",
                                            "+3",
                                            "0,75",
                                            "1e5",
                                            "",
                                            "NA",
                                            "12:00:00",
                                            "2016-05-01",
                                            "a b",
                                            "\"q\"",
                                            "-",
                                            ".",
                                            "5.",
                                            ".5",
                                            "5,",
                                            "12:",
                                            " 7 ",
                                            "[1]",
                                            "22",
                                            "Nov",
                                            "1.5V",
                                            "1 234",
                                            "--1",
                                            "\t8",
                                            "9\r",
                                            "PM",
                                            "3.14159265",
                                            "1234567890123456",
                                            "0.1234567890123",
                                            "x=4"};
    std::mt19937 random(5);
    std::size_t plain = 0;
    std::vector<std::string_view> expected;
    std::vector<std::size_t> unread;
    for (int i = 0; i < 60000; ++i) {
        STLFormat format;
        format.cells.separator = ";,\t |"[random() % 5];
        format.cells.decimal = ".,"[random() % 2];
        format.columns.resize(1 + random() % 4);
        std::size_t taken = 0;
        for (STLColumn& column : format.columns)
            taken += (column.take = random() % 4 != 0) ? 1 : 0;
        std::string line;
        const std::size_t count = format.columns.size() + (random() % 8 == 0 ? 1 : 0);
        for (std::size_t c = 0; c < count; ++c)
            line += (c == 0 ? "" : std::string(1, format.cells.separator)) +
                    words[random() % (i % 2 == 0 ? 5 : words.size())];
        line += random() % 8 == 0 ? "\r" : "";

        std::vector<std::string_view> cells(format.columns.size());
        std::vector<float> values(taken, 77.0F);
        if (!STLPlainRow(format).read(line, cells, values, unread))
            continue;
        ++plain;
        splitCells(line, format.cells, expected);
        expected.resize(format.columns.size());
        ASSERT_EQ(expected, cells) << line;
        std::size_t place = 0;
        for (std::size_t c = 0; c < cells.size(); ++c) {
            if (!format.columns[c].take)
                continue;
            const bool isUnread = std::find(unread.begin(), unread.end(), place) != unread.end();
            const float value =
                isUnread ? 77.0F : static_cast<float>(readNumber(cells[c], format.cells).value());
            ASSERT_EQ(value, values[place]) << line;
            ++place;
        }
    }
    EXPECT_GT(plain, 20000U);
}

}  // namespace
