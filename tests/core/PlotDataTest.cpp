// Plot data against plain walks over the samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <random>

#include "core/FileArray.h"
#include "core/HsVariable.h"
#include "core/PlotCurves.h"
#include "core/PlotValues.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/XAxis.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

struct Dice : std::mt19937
{
    using std::mt19937::mt19937;
    unsigned operator()() { return static_cast<unsigned>(std::mt19937::operator()()); }
};

// Noise with gaps, infinities and single-sample spikes, from a fixed seed.
std::vector<float> wildSamples(std::size_t n, unsigned seed)
{
    Dice random(seed);
    std::normal_distribution<float> noise(3.0F, 2.0F);
    std::vector<float> values(n);
    for (float& v : values) {
        const unsigned dice = random() % 100;
        v = dice == 0   ? kNan
            : dice == 1 ? kInf
            : dice == 2 ? -kInf
            : dice == 3 ? 1e6F
                        : noise(static_cast<std::mt19937&>(random));
    }
    if (n > 700)
        std::fill(values.begin() + 200, values.begin() + 700, kNan);
    return values;
}

std::shared_ptr<PlotValues> inMemory(const std::vector<float>& values)
{
    std::vector<double> x(values.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<double>(i) + 1.0;
    return std::make_shared<PlotValues>(x, std::vector<std::vector<float>>{values});
}

HsVariable built(std::shared_ptr<PlotSource> source, std::uint32_t column = 1)
{
    HsVariable v(Variable(std::move(source), column));
    EXPECT_EQ(v.build({}), JobOutcome::Done);
    EXPECT_TRUE(v.isBuilt());
    return v;
}

// The answers by a walk, in the shown values.
void expectSameAsWalk(const HsVariable& v, const std::vector<float>& raw, std::uint32_t first,
                      std::uint32_t last, bool positiveOnly = false)
{
    SCOPED_TRACE(testing::Message() << raw.size() << " samples, " << first << " to " << last);
    std::vector<double> kept;
    for (std::uint32_t row = first; row <= last; ++row)
        if (const double y = v.variable().shown(raw[row - 1]); std::isfinite(y) && (!positiveOnly || y > 0.0))
            kept.push_back(y);
    const HsVariable::Range range = v.range(first, last);
    const HsVariable::Statistics s = v.statistics(first, last);
    ASSERT_EQ(range.empty, kept.empty());
    ASSERT_EQ(s.count, kept.size());
    ASSERT_EQ(s.missing, last - first + 1 - kept.size());
    if (kept.empty())
        return;
    ASSERT_EQ(range.least, *std::min_element(kept.begin(), kept.end()));
    ASSERT_EQ(range.greatest, *std::max_element(kept.begin(), kept.end()));
    double sum = 0.0;
    double power = 0.0;
    for (const double y : kept) {
        sum += y;
        power += y * y;
    }
    const double n = static_cast<double>(kept.size());
    const double mean = sum / n;
    double squares = 0.0;
    for (const double y : kept)
        squares += (y - mean) * (y - mean);
    const double scale = std::sqrt(power / n);
    ASSERT_NEAR(s.mean, mean, 1e-12 * scale);
    ASSERT_NEAR(s.rms, scale, 1e-12 * scale);
    ASSERT_NEAR(s.deviation, n > 1 ? std::sqrt(squares / (n - 1)) : 0.0, 1e-7 * scale);
}

TEST(HsVariable, answersWhatAWalkAnswers)
{
    for (const std::size_t n :
         {1U, 2U, 255U, 256U, 257U, 511U, 513U, 2047U, 2049U, 16383U, 16385U, 140001U}) {
        const std::vector<float> raw = wildSamples(n, static_cast<unsigned>(n));
        HsVariable v = built(inMemory(raw));
        Dice random(7);
        const auto last = static_cast<std::uint32_t>(n);
        expectSameAsWalk(v, raw, 1, last);
        expectSameAsWalk(v, raw, last, last);
        for (int i = 0; i < 60; ++i) {
            std::uint32_t a = random() % last + 1;
            std::uint32_t b =
                i % 2 == 0 ? random() % last + 1 : std::min<std::uint32_t>(last, a + random() % 300);
            expectSameAsWalk(v, raw, std::min(a, b), std::max(a, b));
        }
        v.variable().gain = -2.5;
        v.variable().offset = 100.0;
        expectSameAsWalk(v, raw, 1, last);
    }
}

TEST(HsVariable, columnsTogetherAnswerWhatEachDoes)
{
    std::vector<std::vector<float>> raw;
    for (unsigned c = 0; c < 21; ++c)
        raw.push_back(wildSamples(3001, c + 1));
    std::vector<double> x(3001);
    std::iota(x.begin(), x.end(), 1.0);
    const auto source = std::make_shared<PlotValues>(x, raw);
    // Most of the columns, in an order of their own, and few.
    for (const std::vector<std::uint32_t>& columns :
         {std::vector<std::uint32_t>{21, 3, 4, 5, 1, 17, 16, 2}, std::vector<std::uint32_t>{20, 2}}) {
        Dice random(5);
        for (int i = 0; i < 100; ++i) {
            const std::uint32_t first = random() % 3001 + 1;
            const std::uint32_t last = std::min(3001U, first + random() % (i % 2 == 0 ? 40 : 1500));
            const PlotSource::Pieces rows = source->pieces(first, last);
            std::vector<Extremes> loose(columns.size());
            source->widen(rows.before, columns, loose);
            source->widen(rows.behind, columns, loose);
            for (std::size_t k = 0; k < columns.size(); ++k) {
                const HsVariable v = built(source, columns[k]);
                expectSameAsWalk(v, raw[columns[k] - 1], first, last);
                const HsVariable::Range together = v.range(rows, loose[k]);
                const HsVariable::Range alone = v.range(first, last);
                ASSERT_EQ(std::tuple(together.least, together.greatest, together.empty),
                          std::tuple(alone.least, alone.greatest, alone.empty));
            }
        }
    }
}

TEST(HsVariable, logarithmicAxisLeavesOutWhatIsNotAboveZero)
{
    const std::vector<float> raw = wildSamples(5001, 3);
    HsVariable v = built(inMemory(raw));
    v.setLogarithmic(true);
    ASSERT_FALSE(v.isBuilt());
    ASSERT_EQ(v.build({}), JobOutcome::Done);
    for (const std::uint32_t first : {1U, 100U, 3000U})
        expectSameAsWalk(v, raw, first, 4321, true);
    const auto low =
        std::count_if(raw.begin(), raw.end(), [](float x) { return std::isfinite(x) && x <= 0; });
    EXPECT_EQ(v.notPositive(1, 5001), low);
    v.variable().offset = 2.0;  // other values are above 0 now
    EXPECT_FALSE(v.isBuilt());
    ASSERT_EQ(v.build({}), JobOutcome::Done);
    expectSameAsWalk(v, raw, 1, 5001, true);
}

TEST(HsVariable, extremeIsFoundWhereItStands)
{
    std::vector<float> raw(50001, 1.0F);
    raw[31234] = 9.0F;
    raw[777] = -4.0F;
    HsVariable v = built(inMemory(raw));
    EXPECT_EQ(v.rowOfExtreme(1, 50001, true), 31235U);
    EXPECT_EQ(v.rowOfExtreme(1, 50001, false), 778U);
    EXPECT_EQ(v.rowOfExtreme(1000, 2000, true), 1000U);
    v.variable().gain = -1.0;
    EXPECT_EQ(v.rowOfExtreme(1, 50001, true), 778U);
}

TEST(HsVariable, cancelLeavesItUnbuilt)
{
    HsVariable v(Variable(inMemory(wildSamples(100000, 1)), 1));
    EXPECT_EQ(v.build([](std::uint64_t done, std::uint64_t) { return done < 50000; }), JobOutcome::Cancelled);
    EXPECT_FALSE(v.isBuilt());
}

TEST(PlotFile, oneReadingServesAllColumnsOfAFile)
{
    const TestDirectory directory;
    constexpr std::uint32_t kRows = 3001;
    std::vector<std::vector<float>> columns;
    {
        TSFILE file("wide.ts", kRows, 5, 0);
        file.dt(0.5F);
        for (std::uint32_t c = 1; c <= 5; ++c) {
            columns.push_back(wildSamples(kRows, c));
            file.writeColumn(c, 1, columns.back());
        }
        file.flush(true);
    }
    FileArray files;
    const auto file = files.add("wide.ts");
    EXPECT_EQ(files.add("./wide.ts"), file);
    std::vector<std::shared_ptr<HsVariable>> variables;
    for (const std::uint32_t c : {2U, 5U})
        variables.push_back(std::make_shared<HsVariable>(Variable(file, c)));
    std::uint64_t most = 0;
    HsVariable::buildAll(variables, [&](std::uint64_t done, std::uint64_t total) {
        EXPECT_EQ(total, kRows * 5U);
        most = done;
        return true;
    });
    EXPECT_EQ(most, kRows * 5U);
    expectSameAsWalk(*variables[0], columns[1], 17, 2999);
    expectSameAsWalk(*variables[1], columns[4], 1, 3000);

    // Changed on disk: noticed, and read anew.
    EXPECT_FALSE(files.changedOnDisk(0));
    TSFILE("wide.ts", 10, 5, 0).flush(true);
    EXPECT_TRUE(files.changedOnDisk(0));
    file->reload();
    EXPECT_FALSE(files.changedOnDisk(0));
    EXPECT_EQ(file->rows(), 10U);
}

TEST(PlotFile, shortBodyGivesTheRowsThatAreThere)
{
    const TestDirectory directory;
    {
        TSFILE file("short.ts", 10000, 3, 0);
        file.dt(1.0F);
    }
    std::filesystem::resize_file("short.ts", 1024 + 512 * 10 + 100);
    PlotFile file("short.ts");
    EXPECT_EQ(file.rows(), 1280U / 3);
    EXPECT_EQ(file.missingRows(), 10000 - 1280U / 3);

    // What vanishes after opening is told by the variable, not thrown.
    HsVariable v(Variable(std::make_shared<PlotFile>("short.ts"), 2));
    std::filesystem::resize_file("short.ts", 2048);
    EXPECT_EQ(v.build({}), JobOutcome::Done);
    EXPECT_FALSE(v.failure().empty());
    EXPECT_FALSE(v.isBuilt());

    // Nor is what is cut while it is shown drawn in part.
    TSFILE("shown.ts", 5000, 1, 0).dt(1.0F);
    Plot2D plot;
    plot.groups().emplace_back().variables().push_back(
        std::make_shared<HsVariable>(Variable(std::make_shared<PlotFile>("shown.ts"), 1)));
    plot.buildMissing({});
    plot.fitAll();
    std::filesystem::resize_file("shown.ts", 1024 + 512 * 20);
    const Curve cut = curvesOf(plot, 5000, 1).at(0);
    EXPECT_TRUE(cut.unread);
    EXPECT_TRUE(cut.points.empty() && cut.runEnds.empty() && cut.markers.empty());
}

TEST(PlotFile, swappedBytesAndBracketsInDescriptions)
{
    const TestDirectory directory;
    TsHeader header;
    header.samples = 3;
    header.columns = 1;
    header.dt = 0.25F;
    Block head{};
    encodeHeader(header, 0, ByteOrder::Swapped, head);
    HandMadeFile body(1024, true);
    body.text(kColumnDescription.offset, "x [N] at [ kN ]").real(512, 1.5F).real(516, 3.0F).real(520, 4.5F);
    body.write("swapped.ts");
    const std::vector<unsigned char> rest = bytesOf("swapped.ts");
    std::ofstream out("swapped.ts", std::ios::binary);
    out.write(reinterpret_cast<const char*>(head.data()), 512);
    out.write(reinterpret_cast<const char*>(rest.data()), 1024);
    out.close();
    const auto file = std::make_shared<PlotFile>("swapped.ts");
    ASSERT_EQ(file->rows(), 3U);
    EXPECT_EQ(unitIn(file->columnDescription(1)), "kN");
    EXPECT_EQ(file->timeOf(3), 0.75);
    const HsVariable v = built(file);
    EXPECT_EQ(v.range(2, 3).greatest, 4.5);
}

TEST(PlotFile, ringBeginsAtTheOldestSample)
{
    const TestDirectory directory;
    {
        TSFILE file("ring.ts", 100, 1, 0);
        file.dt(0.5F);
        file.setRingMode(true);
        for (std::uint32_t s = 1; s <= 250; ++s) {
            const float v = static_cast<float>(s);
            file.writeRow(s, &v, true);
            if (s == 30) {
                EXPECT_EQ(PlotFile("ring.ts").rows(), 30U) << "what there is of one that is not full";
            }
        }
    }
    const auto file = std::make_shared<PlotFile>("ring.ts");
    ASSERT_EQ(file->rows(), 100U);
    EXPECT_EQ(file->value(1, 1), 151.0F);
    EXPECT_EQ(file->value(1, 100), 250.0F);
    EXPECT_EQ(file->sampleOf(1), 151U);
    EXPECT_DOUBLE_EQ(file->timeOf(1), 75.5);
    EXPECT_EQ(file->rowAt(76.2), 2U);
    // In sample numbers x is the sample's own.
    XAxis axis;
    axis.mode = XMode::Sample;
    const Variable v(file, 1);
    EXPECT_EQ(axis.xOf(v, 2), 152.0);
    EXPECT_EQ(axis.nearestRow(v, 152.3), 2U);
}

TEST(PlotSource, rowAtIsTheLastRowAtOrBefore)
{
    const TestDirectory directory;
    constexpr std::uint32_t kRows = 2001;
    std::vector<float> times;
    {
        TSFILE steps("steps.ts", kRows, 1, 0);
        steps.dt(0.1F);
        TSFILE own("own.ts", kRows, 1, 1);
        Dice random(5);
        float t = -50.0F;
        for (std::uint32_t s = 1; s <= kRows; ++s) {
            t += static_cast<float>(random() % 4) * 0.25F;  // some rows share a time
            times.push_back(t);
            own.setValue(s, 1, t);
        }
        own.flush(true);
    }
    for (const char* name : {"steps.ts", "own.ts"}) {
        const auto file = std::make_shared<PlotFile>(name);
        const HsVariable v = built(file, file->columns());
        EXPECT_EQ(file->isPlottable(1), file->columns() == 1);
        for (const double t : {-1e9, -50.0, 0.05, 0.1, 0.3, 77.7, 100.0, 200.1, 1e9}) {
            std::uint32_t walked = 0;
            for (std::uint32_t row = 1; row <= kRows && file->timeOf(row) <= t; ++row)
                walked = row;
            EXPECT_EQ(file->rowAt(t), walked) << name << " at " << t;
            const std::uint32_t near = file->rowNear(t, 20.0);
            EXPECT_TRUE(near == walked || std::fabs(file->timeOf(near + 1) - t) <= 20.0) << name << t;
        }
        for (std::uint32_t row = 1; row < kRows; row += 7) {
            const double t = file->timeOf(row);
            EXPECT_EQ(file->timeOf(file->rowAt(t)), t) << name;
        }
    }
}

TEST(PlotSource, timesThatAreAllEqualAreOneMoment)
{
    const TestDirectory directory;
    TSFILE("still.ts", 300'000, 1, 1).flush(true);
    const auto file = std::make_shared<PlotFile>("still.ts");
    const HsVariable v = built(file, 2);
    XAxis axis;
    EXPECT_EQ(axis.rowFrom(v.variable(), 0.0), 1U);
    EXPECT_EQ(axis.rowAt(v.variable(), 0.0), 300'000U);
    EXPECT_EQ(axis.rowFrom(v.variable(), 0.1), 300'001U);
    EXPECT_EQ(axis.rowAt(v.variable(), -0.1), 0U);
}

TEST(PlotSource, timesThatRunBackwardsGiveRowNumbers)
{
    const TestDirectory directory;
    for (const float bad : {-1.0F, kNan, kInf}) {
        {
            TSFILE file("back.ts", 1000, 1, 1);
            for (std::uint32_t s = 1; s <= 1000; ++s)
                file.setValue(s, 1, s == 700 ? bad : static_cast<float>(s));
            file.flush(true);
        }
        const auto file = std::make_shared<PlotFile>("back.ts");
        built(file, 2);
        EXPECT_EQ(file->timeKind(), PlotSource::TimeKind::RowNumbers);
        EXPECT_EQ(file->rowAt(33.4), 33U);
    }
}

}  // namespace
