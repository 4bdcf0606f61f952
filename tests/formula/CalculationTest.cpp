// Computing a column by a formula, and formula files.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <fstream>
#include <random>

#include "core/ErrorReport.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "formula/BlockFormula.h"
#include "formula/Calculation.h"
#include "formula/FormulaFile.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

void makeRamp(const char* name, std::uint32_t samples, float dt)
{
    TSFILE file(name, samples, 2, 0);
    file.dt(dt);
    for (std::uint32_t s = 1; s <= samples; ++s)
        file.setValue(s, 1, static_cast<float>(s - 1) * dt);
}

}  // namespace

TEST(CalculationRange, BoundsBecomeSamplesWithATolerance)
{
    const TestDirectory directory;
    const struct
    {
        std::vector<TimeBounds> rows;
        double dt;
        std::uint32_t samples, first, last;
    } rows[] = {
        {{{0.0, 9.9}}, 0.1, 100, 1, 100},
        {{{0.3, 0.7}}, 0.1, 100, 4, 8},
        {{{0.30000001, 0.69999999}}, 0.1, 100, 4, 8},
        {{{0.31, 0.69}}, 0.1, 100, 5, 7},
        {{{0.5, 5000.0}}, 0.01F, 1000000, 51, 500001},
        {{{0.509, 5000.009}}, 0.01F, 1000000, 52, 500001},
        {{{-5.0, 1e30}}, 1.0, 100, 1, 100},
        {{{2.0, 8.0}, {4.0, 20.0}}, 1.0, 100, 5, 9},
        {{{5.0, 4.0}}, 1.0, 100, 6, 5},
        {{{200.0, 300.0}}, 1.0, 100, 1, 0},
        {{{0.0, 9.0}}, 0.0, 100, 1, 0},
        {{{0.0, NAN}}, 1.0, 100, 1, 0},
    };
    for (const auto& row : rows) {
        TSFILE target("a", row.samples, 1, 0);
        target.dt(static_cast<float>(row.dt));
        const CalculationRange range = calculationRange(row.rows, target);
        EXPECT_EQ(range.isEmpty(), row.last < row.first) << row.rows[0].start;
        if (!range.isEmpty()) {
            EXPECT_EQ(range.first, row.first) << row.rows[0].start;
            EXPECT_EQ(range.last, row.last) << row.rows[0].start;
        }
    }
    const auto used = usedRows("max(X1,x3)+x8", 3, 2);
    EXPECT_EQ(used, (std::array<bool, 8>{true, true, true}));
}

TEST(CalculationRange, BoundsAreTypedAsNumbersUnitsClockTimesAndShares)
{
    setenv("TZ", "UTC0", 1);
    tzset();
    const TestDirectory directory;
    TSFILE file("a", 1000, 1, 0);
    file.dt(0.5F);
    file.startTime(10.25F);
    file.startSeconds(1'000'000'800U);  // 2001-09-09 02:00:00 UTC, ten seconds and a quarter before the start
    const struct
    {
        const char* text;
        double time;
    } rows[] = {{"12.5", 12.5},
                {" 12,5 ", 12.5},
                {"12.5 s", 12.5},
                {"2 min", 120.0},
                {"1 000", 1000.0},
                {"-3", -3.0},
                {"02:00:20.75", 20.25},
                {"2001-09-09 02:01:00.25", 59.75},
                {"100%", 509.75},
                {"noon", NAN},
                {"", NAN},
                {"5 apples", NAN}};
    for (const auto& row : rows) {
        const std::optional<double> time = timeMeant(row.text, file);
        EXPECT_EQ(time.has_value(), !std::isnan(row.time)) << row.text;
        if (time.has_value()) {
            EXPECT_NEAR(*time, row.time, 1e-9) << row.text;
        }
    }
}

TEST(Calculation, TargetReadByItsOwnFormulaIsNeverStaleAndCancelPutsItBack)
{
    const TestDirectory directory;
    makeRamp("a", 20000, 1.0F);
    TSFILE file("a", false);
    const auto before = bytesOf("a.ts");
    CalculationReport report;
    int calls = 0;
    const auto cancelLater = [&](std::uint64_t, std::uint64_t) { return ++calls < 2; };
    FormulaParser constant("7");
    constant.Compile();
    EXPECT_EQ(calculate(constant, {file, 2, {1, 20000}, 0, {}}, cancelLater, report), JobOutcome::Cancelled);
    EXPECT_EQ(bytesOf("a.ts"), before);

    file.setValue(1, 2, 5.0F);
    FormulaParser chain("x1+1");
    chain.SetSource(&file, 2, 1);
    chain.Compile();
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(calculate(chain, {file, 2, {1, 1}, 0, {}}, {}, report), JobOutcome::Done);
    EXPECT_EQ(file.value(1, 2), 7.0F);
    EXPECT_EQ(file.value(2, 2), 0.0F);

    FormulaParser faulty("1/t+1/t+max(1)+ln(t)");
    faulty.Compile();
    calculate(faulty, {file, 2, {1, 1}, 0, {}}, {}, report);
    EXPECT_EQ(report.faultySamples, 1U);
    EXPECT_EQ(report.missing, 1U);
}

TEST(Calculation, SourceCutShortPutsTheOldValuesBack)
{
    const TestDirectory directory;
    makeRamp("a", 100000, 1.0F);
    makeRamp("cut", 100000, 1.0F);
    std::filesystem::resize_file("cut.ts", 500000);
    const auto before = bytesOf("a.ts");
    auto file = std::make_unique<TSFILE>("a", false);
    TSFILE cut("cut", true);
    FormulaParser formula("x1+1");
    formula.SetSource(&cut, 1, 1);
    formula.Compile();
    const auto reopen = [&]() -> TSFILE& {
        file.reset();
        EXPECT_NE(bytesOf("a.ts"), before);  // it had begun
        file = std::make_unique<TSFILE>("a", false);
        return *file;
    };
    CalculationReport report;
    EXPECT_THROW(calculate(formula, {*file, 2, {1, 100000}, 0, reopen}, {}, report), TS::IO_ERROR);
    EXPECT_EQ(bytesOf("a.ts"), before);
    EXPECT_TRUE(report.old.lost.empty());
}

TEST(FormulaFile, IsExactlyFiveLinesAndTheLastPairWins)
{
    const TestDirectory directory;
    writeFormulaFile("f.txt", "sqrt(x1)");
    std::ifstream in("f.txt");
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    EXPECT_EQ(text, "**Ts-Edit Documentation**\n\n  Composed function: \n   sqrt(x1)\n\n");
    EXPECT_EQ(readFormulaFile("f.txt"), "   sqrt(x1)");
    std::ofstream("g.txt") << "cOMPOSED one\r\nx1\r\nnoise\nComposed\nx2+" << std::string(400, '1');
    EXPECT_EQ(readFormulaFile("g.txt"), "x2+" + std::string(252, '1'));
    std::ofstream("rubbish.txt") << std::string(1000000, '\0');
    EXPECT_FALSE(readFormulaFile("rubbish.txt").has_value());
    EXPECT_THROW(readFormulaFile("none.txt"), std::system_error);
    EXPECT_THROW(writeFormulaFile("no/such/f.txt", "1"), std::system_error);
}

// The values and the reports of random formulas, run by run and sample by sample.
TEST(Calculation, BlocksGiveWhatSingleSamplesGiveToTheLastBit)
{
    static std::string reports;
    setErrorListener([](const char* text) { reports += *text; });
    const TestDirectory directory;
    constexpr std::uint32_t kSamples = 40000;  // more than a run
    const auto make = [](const char* name, std::uint32_t samples, float dt, float start, bool ring) {
        auto file = std::make_unique<TSFILE>(name, samples, 3, 0);
        file->dt(dt);
        file->startTime(start);
        file->setRingMode(ring);
        std::mt19937 random(samples);
        for (std::uint32_t s = 1; s <= (ring ? samples * 3 / 2 : samples); ++s) {
            const float zero = s > samples / 2 && random() % 1000 == 0 ? 0.0F : 1.0F;
            const float row[] = {static_cast<float>(random() % 2001) * 0.013F - 13.0F, zero, 2.0F};
            file->writeRow(s, row, false);
        }
        file->flush(true);
        return file;
    };
    const auto target = make("target", kSamples, 0.01F, 2.5F, false);
    const auto ring = make("ring", kSamples, 0.01F, 0.24F, true);
    const auto other = make("other", kSamples / 2, 0.03F, 1.0F, false);
    TSFILE* const sources[] = {target.get(), target.get(), other.get(),
                               ring.get(),   target.get(), other.get()};
    const std::int32_t columns[] = {1, 2, 1, 1, 3, 2};  // x5 is what is written
    std::mt19937 random(11);
    const auto piece = [&random](std::initializer_list<const char*> from) {
        return std::string(from.begin()[random() % from.size()]);
    };
    const std::function<std::string(int)> expression = [&](int depth) -> std::string {
        if (depth == 0 || random() % 5 == 0)
            return piece({"x1", "-x1", "x2", "x3", "-x4", "x5", "x6", "t", "-t", "2.5", "pi", "0", "-1e-3"});
        switch (random() % 5) {
            case 0:
                return piece({"sqrt", "-sqrt", "sin", "exp", "-abs", "nint", "bessi0", "sgn"}) + "(" +
                       expression(depth - 1) + ")";
            case 1:
                return piece({"max", "min", "pow", "-max"}) + "(" + expression(depth - 1) + "," +
                       expression(depth - 1) + ")";
            case 2:
                return "(" + expression(depth - 1) + ")^" + piece({"2", "3", "0.5", "x2"});
            default:
                return "(" + expression(depth - 1) + piece({"+", "-", "*", "/", ","}) +
                       expression(depth - 1) + ")";
        }
    };
    int inBlocks = 0;
    for (int n = 0; n < 120; ++n) {
        const std::string text = expression(4);
        SCOPED_TRACE(text);
        TSFILE& written = n % 8 == 7 ? *ring : *target;
        FormulaParser formula(text.c_str());
        formula.setTarget(&written);
        for (int k = 0; k < 6; ++k)
            formula.SetSource(sources[k], columns[k], k + 1);
        formula.Compile();
        ASSERT_EQ(formula.ErrorCode(), 0);
        inBlocks += BlockFormula::of(formula.root(), written, 3) != nullptr ? 1 : 0;
        const CalculationRange range = calculationRange(std::vector<TimeBounds>{timesOf(written)}, written);
        const std::uint32_t first = range.first + static_cast<std::uint32_t>(random() % 700);
        std::vector<float> single(range.last - first + 1);
        reports.clear();
        std::uint64_t faulty = 0;
        for (std::size_t i = 0; i < single.size(); ++i) {
            const auto sample = first + static_cast<std::uint32_t>(i);
            const std::size_t before = reports.size();
            single[i] = static_cast<float>(formula.Evaluate(
                static_cast<std::int32_t>(sample), (sample - 1) * static_cast<double>(written.dt())));
            faulty += reports.size() == before ? 0 : 1;
        }
        const std::string expected = std::move(reports);
        reports.clear();
        CalculationReport report;
        calculate(formula, {written, 3, {first, range.last}, 0, {}}, {}, report);
        EXPECT_EQ(reports, expected);
        EXPECT_EQ(report.faultySamples, faulty);
        std::vector<float> values(single.size());
        written.readColumn(3, first, values);
        for (std::size_t i = 0; i < values.size(); ++i)  // which NaN it is depends on the processor
            ASSERT_TRUE(std::bit_cast<std::uint32_t>(values[i]) == std::bit_cast<std::uint32_t>(single[i]) ||
                        (std::isnan(values[i]) && std::isnan(single[i])))
                << "sample " << first + i << ": " << values[i] << ", alone " << single[i];
        std::fill(values.begin(), values.end(), 2.0F);
        written.writeColumn(3, first, values);
    }
    EXPECT_GT(inBlocks, 100);
    setErrorListener(nullptr);
}

TEST(Calculation, OnlyFormulasOfAnyOrderAreComputedInBlocks)
{
    const TestDirectory directory;
    TSFILE file("a", 10, 2, 0);
    file.dt(1.0F);
    const struct
    {
        const char* text;
        bool hasTarget, inBlocks;
    } rows[] = {
        {"x1+t", true, true},      {"x2*2", true, true},
        {"x2*2", false, false},    {"x1*2", false, true},
        {"rnois(1)", true, false}, {"x1+gnois(t)", true, false},
        {"max(1)", true, false},   {"1/t", true, true},
        {"x", true, true},         {"min(1,sin(rnois(1)))", true, false},
    };
    for (const auto& row : rows) {
        FormulaParser formula(row.text);
        formula.setTarget(row.hasTarget ? &file : nullptr);
        formula.SetSource(&file, 1, 1);
        formula.SetSource(&file, 2, 2);
        formula.Compile();
        EXPECT_EQ(BlockFormula::of(formula.root(), file, 2) != nullptr, row.inBlocks) << row.text;
    }
    EXPECT_EQ(BlockFormula::of(nullptr, file, 2), nullptr);
}
