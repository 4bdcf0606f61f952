// Numbers and lines of text files.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "core/LineReader.h"
#include "core/TextNumbers.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

std::string sixDigits(float v)
{
    char text[kNumberRoom];
    return {text, formatSixDigits(v, text)};
}

TEST(TextNumbers, sixDigitsAreThoseOfPrintf)
{
    std::vector<std::uint32_t> patterns = {0, 1, 2, 0x7FFFFF, 0x800000, 0x7F7FFFFF, 0x7F800000, 0x7FC00000};
    for (const float tie : {1000005.0F, 1000015.0F, 100000.5F, 100001.5F, 0.5F, 999999.5F, 9999995.0F, 1e10F,
                            1e-4F, 9.999995e-5F, 123456.5F, 8388607.5F, 16777215.0F})
        patterns.push_back(std::bit_cast<std::uint32_t>(tie));
    std::mt19937 random(1);
    for (int i = 0; i < 200000; ++i)
        patterns.push_back(static_cast<std::uint32_t>(random()));
    for (std::uint32_t bits : patterns) {
        for (const std::uint32_t sign : {0U, 0x80000000U}) {
            const float v = std::bit_cast<float>(bits ^ sign);
            char expected[32];
            std::snprintf(expected, sizeof expected, "%g", static_cast<double>(v));
            ASSERT_EQ(expected, sixDigits(v)) << bits;
        }
    }
}

TEST(TextNumbers, numbersAreThoseOfAtof)
{
    std::vector<std::string> texts = {"+1",
                                      "-0",
                                      ".5",
                                      "5.",
                                      "-.5e-3",
                                      "1e",
                                      "1e+",
                                      "1e5x",
                                      "inf",
                                      "-Infinity",
                                      "nan",
                                      "0x1p-3",
                                      "-0X1F",
                                      "0x",
                                      "1x2",
                                      "1e400",
                                      "-1e400",
                                      "1e-400",
                                      "4.9e-324",
                                      "",
                                      "-",
                                      "+-1",
                                      " 2",
                                      "\v3",
                                      "e5",
                                      "..1",
                                      "1.2.3",
                                      "1e0000000000000000001",
                                      "1e99999999999",
                                      "0e999999",
                                      "123456789012345678901234567890",
                                      "9007199254740993",
                                      "0.1000000000000000055511151231257827021181583404541015625",
                                      "8.5e22",
                                      "179769313486231580793e289"};
    std::mt19937_64 random(2);
    for (int i = 0; i < 20000; ++i) {
        char text[48];
        std::snprintf(text, sizeof text, "%.*g", static_cast<int>(random() % 18 + 1),
                      std::bit_cast<double>(random()));
        texts.emplace_back(text);
    }
    for (const std::string& text : texts) {
        char* end = nullptr;
        const double expected = std::strtod(text.c_str(), &end);
        const ParsedNumber parsed = parseNumber(text.data(), text.data() + text.size(), DecimalMark::Both);
        if (std::isnan(expected))
            ASSERT_TRUE(std::isnan(parsed.value)) << text;
        else
            ASSERT_EQ(std::bit_cast<std::uint64_t>(expected), std::bit_cast<std::uint64_t>(parsed.value))
                << text;
        ASSERT_EQ(end - text.c_str(), parsed.end - text.data()) << text;
    }
    const std::string comma = "1,5,2";
    EXPECT_EQ(1.5, parseNumber(comma.data(), comma.data() + 5, DecimalMark::Comma).value);
    EXPECT_EQ(1.0, parseNumber(comma.data(), comma.data() + 5).value);
    const std::string point = "1.5";
    EXPECT_EQ(point.data() + 1, parseNumber(point.data(), point.data() + 3, DecimalMark::Comma).end);
}

TEST(LineReader, linesOfEveryLengthComeWholeOrCut)
{
    const TestDirectory directory;
    const std::string file = "lines.txt";
    std::string text = "\xEF\xBB\xBF";
    std::vector<std::string> lines;
    std::mt19937 random(3);
    for (int i = 0; i < 3000; ++i)
        lines.emplace_back(i % 500 == 7 ? 600000 + random() % 300000 : random() % 300,
                           static_cast<char>(i % 3 == 0 ? '\0' : 'a' + i % 20));
    for (const std::string& line : lines)
        text += line + '\n';
    text += "last";
    lines.emplace_back("last");
    std::ofstream(file, std::ios::binary) << text;

    LineReader reader(file, 100);
    std::uint64_t offset = 3;
    for (const std::string& line : lines) {
        ASSERT_TRUE(reader.next());
        ASSERT_EQ(line.substr(0, 100), reader.text());
        ASSERT_EQ(line.size(), reader.lineBytes());
        ASSERT_EQ(line.size() > 100, reader.isCut());
        ASSERT_EQ(offset, reader.lineOffset());
        offset += line.size() + 1;
    }
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(text.size(), reader.position());

    // As many at once as 90 bytes hold.
    reader.seek(0);
    std::size_t at = 0;
    std::size_t calls = 0;
    for (; reader.nextLines(90); ++calls) {
        ASSERT_EQ(lines[at].size() > 100, reader.isCut());
        std::istringstream run(std::string(reader.text()) + '\n');
        for (std::string one; std::getline(run, one); ++at)
            ASSERT_EQ(lines[at].substr(0, 100), one);
    }
    EXPECT_EQ(lines.size(), at);
    EXPECT_LT(calls, at - 100);

    for (const std::uint64_t from :
         {std::uint64_t{0}, std::uint64_t{3}, std::uint64_t{4}, std::uint64_t{700000}}) {
        reader.seek(from);
        ASSERT_TRUE(reader.next());
        EXPECT_TRUE(reader.lineOffset() == 3 || text[reader.lineOffset() - 1] == '\n');
        EXPECT_GE(reader.lineOffset(), from);
    }
    std::ofstream(file, std::ios::binary) << "a\rbc\r\rd";
    LineReader returns(file, 100);
    for (const char* const line : {"a", "bc", "", "d"}) {
        ASSERT_TRUE(returns.next());
        EXPECT_EQ(line, returns.text());
    }
    EXPECT_FALSE(returns.next());

    std::filesystem::remove(file);
    EXPECT_THROW(LineReader(file, 100), std::system_error);
    EXPECT_THROW(LineReader("/", 100), std::system_error);
}

}  // namespace
