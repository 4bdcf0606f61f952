// The same plot through the PostScript driver, by its lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <numeric>
#include <set>
#include <sstream>

#include "core/CellImage.h"
#include "core/PlotValues.h"
#include "core/TSFILE.h"
#include "core/XyPath.h"
#include "share/AxisTicks.h"
#include "share/ColorMap.h"
#include "share/EpsFile.h"
#include "share/Histogram.h"
#include "share/PlotGoTo.h"
#include "share/PlotPainter.h"
#include "share/PlotReadout.h"
#include "share/PlotVariables.h"
#include "share/PostscriptDriver.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

Plot2D plotOf(const std::vector<std::vector<float>>& columns)
{
    std::vector<double> x(columns.front().size());
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = 0.01 * (static_cast<double>(i) + 1.0);
    const auto source = std::make_shared<PlotValues>(x, columns);
    Plot2D plot;
    for (std::uint32_t c = 1; c <= columns.size(); ++c) {
        Variable v(source, c);
        v.label = "column " + std::to_string(c);
        v.colorIndex = 6 + static_cast<int>(c);
        plot.groups().emplace_back().variables().push_back(std::make_shared<HsVariable>(std::move(v)));
    }
    plot.buildMissing({});
    plot.fitAll();
    return plot;
}

std::string epsOf(const Plot2D& plot, PlotLayout* layout = nullptr, bool cursors = false, bool dashes = false)
{
    const PsParameters parameters;
    PlotLook look = paperLook(parameters, plot.grid);
    look.cursors = cursors;
    look.dashes = dashes;
    writeEps("plot.eps", parameters, [&](PostscriptDriver& driver) {
        const PlotLayout drawn = drawPlot(plot, driver, paperColumns(parameters), look);
        if (layout != nullptr)
            *layout = drawn;
    });
    std::ifstream file("plot.eps");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct Box
{
    double x1 = 1e9, y1 = 1e9, x2 = -1e9, y2 = -1e9;
    void add(const std::vector<double>& path)
    {
        for (std::size_t i = 0; i + 1 < path.size(); i += 2)
            *this = {std::min(x1, path[i]), std::min(y1, path[i + 1]), std::max(x2, path[i]),
                     std::max(y2, path[i + 1])};
    }
};

// What is filled: its part of the rectangle around it, and how much of the clip that is as wide and high.
struct Filled
{
    double share, width, height;
};

Filled filledOf(const std::string& eps)
{
    std::istringstream words(eps);
    std::vector<double> path, numbers{0.0, 0.0};
    double area = 0.0;
    Box around, clip;
    for (std::string word; words >> word;) {
        char* end = nullptr;
        const double number = std::strtod(word.c_str(), &end);
        if (*end == '\0')
            numbers.push_back(number);
        if (word == "_m")
            path.clear();
        if (word == "_m" || word == "_l")
            path.insert(path.end(), numbers.end() - 2, numbers.end());
        if (word == "clip")
            (clip = {}).add(path);
        if (word != "_f")
            continue;
        around.add(path);
        for (std::size_t i = 0; i < path.size(); i += 2) {
            const std::size_t next = (i + 2) % path.size();
            area += (path[i] * path[next + 1] - path[next] * path[i + 1]) / 2.0;
        }
    }
    const double width = around.x2 - around.x1;
    const double height = around.y2 - around.y1;
    return {std::abs(area) / (width * height), width / (clip.x2 - clip.x1), height / (clip.y2 - clip.y1)};
}

std::vector<float> noise(std::size_t n)
{
    std::vector<float> values(n);
    std::uint32_t state = 1;
    for (float& v : values) {
        state = state * 1664525U + 1013904223U;
        v = static_cast<float>(state >> 8);
    }
    return values;
}

using Triple = std::array<double, 3>;
using Matrix = std::array<Triple, 3>;

Triple times(const Matrix& m, const Triple& v)
{
    Triple out{};
    for (std::size_t i = 0; i < 3; ++i)
        out[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return out;
}

// sRGB without its gamma.
Triple linear(const PlotColor& color)
{
    Triple out{color.r, color.g, color.b};
    for (double& c : out)
        c = c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    return out;
}

constexpr Matrix kToXyz{{{0.4124, 0.3576, 0.1805}, {0.2126, 0.7152, 0.0722}, {0.0193, 0.1192, 0.9505}}};
// Machado et al. 2009, table 1, severity 1.
constexpr Matrix kEyes[] = {
    {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {{{0.152286, 1.052583, -0.204868}, {0.114503, 0.786281, 0.099216}, {-0.003882, -0.048116, 1.051998}}},
    {{{0.367322, 0.860646, -0.227968}, {0.280085, 0.672501, 0.047413}, {-0.011820, 0.042940, 0.968881}}},
    {{{1.255528, -0.076749, -0.178779}, {-0.078411, 0.930809, 0.147602}, {0.004733, 0.691367, 0.303900}}}};

// CIE 1976 L*a*b* of what an eye sees.
Triple lab(const Matrix& eye, const PlotColor& color)
{
    Triple seen = times(eye, linear(color));
    for (double& c : seen)
        c = std::clamp(c, 0.0, 1.0);
    const Triple white = times(kToXyz, {1, 1, 1});
    Triple f = times(kToXyz, seen);
    for (std::size_t i = 0; i < 3; ++i)
        f[i] = f[i] / white[i] > 0.008856 ? std::cbrt(f[i] / white[i]) : 7.787 * f[i] / white[i] + 16.0 / 116;
    return {116 * f[1] - 16, 500 * (f[0] - f[1]), 200 * (f[1] - f[2])};
}

// As the guidelines for the accessibility of web contents have it.
double contrast(const PlotColor& a, const PlotColor& b)
{
    const auto [least, greatest] =
        std::minmax({times(kToXyz, linear(a))[1] + 0.05, times(kToXyz, linear(b))[1] + 0.05});
    return greatest / least;
}

TEST(PlotLook, LinesAreReadableOnBothGroundsAndApartForEveryEye)
{
    const std::vector<PlotColor>& colors = defaultPlotColors();
    ASSERT_EQ(colors.size(), 12U);
    for (const bool isDark : {false, true}) {
        const auto shown = [&](std::size_t i) { return isDark ? onDarkGround(colors[i]) : colors[i]; };
        const PlotColor ground = isDark ? PlotColor{0.14F, 0.15F, 0.16F} : PlotColor{1, 1, 1};
        for (std::size_t i = 0; i < colors.size(); ++i) {
            EXPECT_GE(contrast(shown(i), ground), 3.0) << i << isDark;
            for (std::size_t j = 0; j < i; ++j)
                for (const Matrix& eye : kEyes) {
                    const Triple a = lab(eye, shown(i));
                    const Triple b = lab(eye, shown(j));
                    EXPECT_GE(std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]), i < 4   ? 18.0
                                                                                 : i < 8 ? 9.5
                                                                                         : 7.0)
                        << i << " and " << j << ", eye " << &eye - kEyes;
                }
        }
    }
}

TEST(PlotPainter, withoutColoursEachSolidLineHasAPatternOfItsOwn)
{
    const TestDirectory directory;
    Plot2D plot = plotOf({noise(50), noise(50), noise(50), noise(50)});
    plot.variables()[2]->variable().lineStyle = 5;
    std::size_t patterns[2];
    for (const bool dashes : {false, true}) {
        std::set<std::string> all;
        std::istringstream lines(epsOf(plot, nullptr, false, dashes));
        for (std::string line; std::getline(lines, line);)
            if (line.ends_with("] 0 _P"))
                all.insert(line);
        patterns[dashes ? 1 : 0] = all.size();
    }
    // The third line has the pattern that it was given, the first stays solid.
    EXPECT_EQ(patterns[1], patterns[0] + 2);
}

TEST(PlotPainter, longCurvesStaySmallOnPaper)
{
    const TestDirectory directory;
    const std::string eps = epsOf(plotOf({noise(3'000'000)}));
    EXPECT_LT(eps.size(), 130'000U);
    EXPECT_GT(eps.size(), 30'000U);
}

// The numbers are those of numpy.histogram(bins="fd"), whose outliers leave the quartiles few cells.
TEST(PlotPainter, histogramHasTheBinsOfFreedmanAndDiaconisAndCountsEveryValue)
{
    std::vector<float> values;
    values.reserve(40000);
    for (std::uint64_t i = 1; i <= 40000; ++i)
        values.push_back(static_cast<float>((i * i * 7919 + i * 104729) % 10007 + i * 31 % 101 +
                                            (i % 1000 == 0 ? 200'000 : 0)));
    std::vector<float> other(values.size(), 3.0F);
    values[50] = std::numeric_limits<float>::quiet_NaN();
    Plot2D plot = plotOf({other, values});
    const HsVariable& v = *plot.variables()[1];
    Histogram histogram;
    ASSERT_EQ(makeHistogram(v, {{101, 30001}}, histogram, {}), JobOutcome::Done);
    ASSERT_EQ(histogram.counts.size(), 650U);
    EXPECT_EQ(histogram.counts[0], 790U);
    EXPECT_EQ(histogram.counts[2], 1015U);
    EXPECT_EQ(histogram.counts[649], 2U);
    EXPECT_EQ(histogram.from, 4.0);
    EXPECT_NEAR(histogram.from + 650 * histogram.width, 209817.0, 1e-6);
    makeHistogram(v, {{101, 30001}, 7}, histogram, {});
    EXPECT_EQ(histogram.counts, (std::vector<std::uint64_t>{29871, 0, 0, 0, 0, 0, 30}));
    EXPECT_EQ(histogram.total, 29901U);
    // All of the range of a missing value, of equal values, of none.
    makeHistogram(v, {{1, 100}, 3}, histogram, {});
    EXPECT_EQ(histogram.missing, 1U);
    EXPECT_EQ(histogram.total, 99U);
    makeHistogram(*plot.variables()[0], {{1, 100}}, histogram, {});
    EXPECT_EQ(histogram.counts, (std::vector<std::uint64_t>{100}));
    EXPECT_EQ(histogram.from, 2.5);
    makeHistogram(v, {{51, 51}}, histogram, {});
    EXPECT_TRUE(histogram.counts.empty());
    EXPECT_EQ(makeHistogram(v, {{1, 40000}}, histogram, [](auto...) { return false; }),
              JobOutcome::Cancelled);
}

TEST(PlotPainter, pathOfTwoVariablesKeepsItsOrderItsGapsAndItsExtremesWhateverItsLength)
{
    const TestDirectory directory;
    // A spiral of a million samples, a gap in it, and one sample far out.
    constexpr std::size_t kCount = 1'000'000;
    std::vector<float> x(kCount), y(kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        const double turn = static_cast<double>(i) * 1e-4;
        x[i] = static_cast<float>(turn * std::cos(turn));
        y[i] = static_cast<float>(turn * std::sin(turn));
    }
    y[500'000] = std::numeric_limits<float>::quiet_NaN();
    x[700'001] = 400.0F;
    Plot2D plot = plotOf({x, y});
    XyPath path(plot.variables()[0]->variable(), plot.variables()[1]->variable(), {11, kCount});
    ASSERT_EQ(path.build({-100.0, -100.0, 400.0, 100.0}, {}), JobOutcome::Done);
    EXPECT_FALSE(path.isCloud());
    EXPECT_EQ(path.pairs(), kCount - 11);
    EXPECT_LE(path.points().size(), 2 * XyPath::kAllSamples);
    ASSERT_EQ(path.runEnds().size(), 2U);
    EXPECT_EQ(path.runEnds().back(), path.points().size() / 2);
    double before = 0.0;
    bool hasOutlier = false;
    for (std::size_t p = 0; p < path.points().size(); p += 2) {
        const double radius = std::hypot(path.points()[p], path.points()[p + 1]);
        hasOutlier = hasOutlier || path.points()[p] == 400.0;
        if (radius > 100.0)
            continue;
        EXPECT_GE(radius, before);  // in their order, and no step passes over more than two cells
        EXPECT_LT(radius - before, 500.0 / 4096);
        before = radius;
    }
    EXPECT_TRUE(hasOutlier);
    EXPECT_NEAR(before, 99.9999, 0.01);

    // What jumps about is no line: its places are told, row by row.
    std::vector<float> half = noise(1'000'001);
    half.erase(half.begin());
    for (std::size_t i = 1; i < half.size(); i += 2)
        half[i] /= 2.0F;  // three fall into the lower half of the cells for each one in the upper
    Plot2D jumps = plotOf({noise(1'000'000), half});
    XyPath cloud(jumps.variables()[0]->variable(), jumps.variables()[1]->variable(), {1, 1'000'000});
    const double most = 16777216.0;
    ASSERT_EQ(cloud.build({0.0, 0.0, 2.0 * most, most}, {}), JobOutcome::Done);
    EXPECT_TRUE(cloud.isCloud());
    for (const XyPath::CloudRun& run : cloud.cloudRuns())
        EXPECT_LE(run.last, XyPath::kCloudCells / 2);
    Variable reach(std::make_shared<PlotValues>(std::vector<double>{0.0, 2.0 * most},
                                                std::vector<std::vector<float>>{{0.0F, 16777216.0F}}),
                   1);
    reach.isMark = true;
    Plot2D shown;
    shown.groups().emplace_back().variables().push_back(std::make_shared<HsVariable>(std::move(reach)));
    shown.groups()[0].path = std::make_shared<XyPath>(cloud);
    shown.buildMissing({});
    shown.fitAll();
    shown.setY(0, 0.0, most);
    // Of 512 x 1024 cells those are filled that one of a million samples fell into.
    const Filled filled = filledOf(epsOf(shown));
    const double each = 1e6 / (512.0 * 1024.0);
    EXPECT_NEAR(filled.share, 1.0 - (std::exp(-each / 2.0) + std::exp(-each * 1.5)) / 2.0, 0.01);
    EXPECT_NEAR(filled.width, 0.5, 0.01);
    EXPECT_NEAR(filled.height, 1.0, 0.01);
}

TEST(PlotPainter, notesStandAtTheirTimesInAllGroupsAndBelowOneAnother)
{
    const TestDirectory directory;
    Plot2D plot = plotOf({noise(100), noise(100)});
    const std::string without = epsOf(plot);
    plot.notes = {{0.52, "pump on"}, {0.5, "valve"}, {0.98, "pump off"}, {7.0, "later"}};
    const std::string eps = epsOf(plot);
    EXPECT_NE(eps.find("pump on"), std::string::npos);
    EXPECT_EQ(eps.find("later"), std::string::npos);
    EXPECT_LT(eps.find("valve"), eps.find("pump on"));  // from left to right
    EXPECT_GT(eps.size(), without.size());
    const auto heightOf = [&eps](const std::string& text) {
        const std::size_t move = eps.find(" _m(" + text);
        return std::atof(eps.c_str() + eps.rfind(' ', move - 1));
    };
    EXPECT_GT(heightOf("valve"), heightOf("pump on") + 5.0) << "one below the other where they would meet";
    EXPECT_EQ(heightOf("valve"), heightOf("pump off"));
    for (std::size_t at = eps.find(" _w %", eps.find(" _w %") + 1); at != std::string::npos;
         at = eps.find(" _w %", at + 1))
        EXPECT_LT(std::atof(eps.c_str() + eps.rfind('\n', at)), 1.0) << "their lines are thin";
    EXPECT_NE(eps.find("_m(pump off) 1 1 _js"), std::string::npos) << "left of its line, as the page ends";
    plot.setMode(XMode::Sample);
    EXPECT_NEAR(plot.notes[0].x, 52.0, 1e-9);
}

TEST(PlotPainter, groupsShareTheirSidesAndDoNotOverlap)
{
    const TestDirectory directory;
    std::vector<float> large(100, 1e6F);
    large[3] = -1e6F;
    Plot2D plot = plotOf({noise(100), large, noise(100)});
    plot.groups()[1].share = 2.0;
    PlotLayout layout;
    const std::string eps = epsOf(plot, &layout);
    const std::size_t title = eps.find("(Time [s])");
    EXPECT_NE(title, std::string::npos) << "below the last";
    EXPECT_EQ(eps.find("(Time [s])", title + 1), std::string::npos);
    ASSERT_EQ(layout.groups.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(layout.groups[i].x1, layout.groups[0].x1);
        EXPECT_EQ(layout.groups[i].x2, layout.groups[0].x2);
        EXPECT_GE(layout.groups[i].y1, 0.0F);
        EXPECT_LT(layout.groups[i].y2, i == 0 ? 1.0F : layout.groups[i - 1].y1);
    }
    const auto height = [&](std::size_t i) { return layout.groups[i].y2 - layout.groups[i].y1; };
    EXPECT_NEAR(height(1), 2.0F * height(0), 1e-4F);
    plot.variables()[0]->variable().visible = false;
    epsOf(plot, &layout);
    EXPECT_EQ(layout.groupOf, (std::vector<std::size_t>{1, 2}));
}

// Where a text begins on the page, from the bottom; -1 where it is not there.
double heightOf(const std::string& text, const std::string& eps)
{
    const std::size_t end = eps.find(" _m(" + text + ")");
    if (end == std::string::npos)
        return -1.0;
    return std::stod(eps.substr(eps.rfind(' ', end - 1)));
}

TEST(PlotPainter, everyPlotEndsWithTextsOfWhatItCannotDraw)
{
    const TestDirectory directory;
    EXPECT_NE(epsOf(Plot2D()).find("No variable is shown."), std::string::npos);
    Plot2D plot = plotOf({{1.0F, 2.0F, 3.0F}, {-1.0F, 0.0F, 5.0F}});
    plot.variables()[0]->setFailure("cannot be read at byte 4096");
    plot.groups()[1].setLogarithmic(true);
    plot.buildMissing({});
    const std::string eps = epsOf(plot);
    EXPECT_NE(eps.find("column 1: cannot be read at byte 4096"), std::string::npos);
    EXPECT_NE(eps.find("column 2 \\(2 not above 0\\)"), std::string::npos);
    // Two that cannot be read in one group are told one below the other, a line apart.
    plot.groups()[0].variables().push_back(plot.variables()[1]);
    plot.variables()[1]->setFailure("is gone");
    const std::string both = epsOf(plot);
    const double apart =
        heightOf("column 1: cannot be read at byte 4096", both) - heightOf("column 2: is gone", both);
    EXPECT_GT(apart, 10.0);
    EXPECT_LT(apart, 25.0);
    // Values without a number, and a view of no width at all, are drawn without harm.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_NE(epsOf(plotOf({std::vector<float>(10, nan)})).find("column 1: no values"), std::string::npos);
    EXPECT_NE(epsOf(plotOf({{}})).find("column 1: no samples"), std::string::npos);
    epsOf(plotOf({{3.0F}}));
}

TEST(PlotPainter, axesReachTheEndsOfWhatAFloatHolds)
{
    const TestDirectory directory;
    struct Row
    {
        float least, greatest;
        const char *lower, *upper, *power;
    };
    for (const Row& row : {Row{-3.4e38F, 3.4e38F, "-200", "200", "x10^36"},
                           Row{0.0F, 9e-42F, "2", "8", "x10^-42"}, Row{0.0F, 9e6F, "2", "8", "x10^6"}}) {
        PlotLayout layout;
        const std::string eps = epsOf(plotOf({{row.least, row.greatest, row.least}}), &layout);
        const double height = 595.0 * (layout.groups[0].y2 - layout.groups[0].y1);
        EXPECT_GT(heightOf(row.upper, eps) - heightOf(row.lower, eps), height / 3.0) << row.power;
        EXPECT_GT(heightOf(row.power, eps), 595.0 * layout.groups[0].y2);
        EXPECT_LT(heightOf(row.power, eps), 595.0 - 8.0) << "must not leave the page";
    }
}

// Every "x y _m" and "x y _l" of the dashes that follow a width.
struct Dash
{
    double length, gapBefore;
};
std::vector<Dash> dashesOf(const std::string& eps, const std::string& color)
{
    std::istringstream stream(eps.substr(eps.find(color)));
    std::string word;
    std::vector<double> numbers;
    std::vector<Dash> dashes;
    double x = 0.0, end = -1.0;
    while (stream >> word && word != "grestore") {
        if (word == "_m") {
            x = numbers[numbers.size() - 2];
        } else if (word == "_l") {
            const double to = numbers[numbers.size() - 2];
            dashes.push_back({to - x, end < 0.0 ? 0.0 : x - end});
            end = x = to;
        } else {
            numbers.push_back(std::atof(word.c_str()));
        }
    }
    return dashes;
}

// Names take the rows that they need, up to a quarter of the height; what finds no room then is counted.
TEST(PlotPainter, everyCurveHasItsNameAboveTheFrame)
{
    const TestDirectory directory;
    for (const std::size_t count : {3U, 20U, 400U}) {
        SCOPED_TRACE(count);
        Plot2D plot = plotOf(std::vector<std::vector<float>>(count, {1, 2, 3}));
        std::vector<Group>& groups = plot.groups();
        for (std::size_t g = 1; g < count; ++g)
            groups[0].variables().push_back(groups[g].variables()[0]);
        groups.resize(1);
        groups[0].title = "all";
        PlotLayout layout;
        const std::string eps = epsOf(plot, &layout);
        std::map<double, std::size_t> rows;
        for (std::size_t c = 1; c <= count; ++c)
            if (const double height = heightOf("column " + std::to_string(c), eps); height > 0.0)
                ++rows[height];
        const std::size_t named =
            std::accumulate(rows.begin(), rows.end(), std::size_t{0},
                            [](std::size_t sum, const auto& row) { return sum + row.second; });
        EXPECT_EQ(named == count, count < 400);
        EXPECT_EQ(rows.size() > 1, count > 3);
        EXPECT_EQ(eps.find("(+" + std::to_string(count - named) + " more)") != std::string::npos,
                  named < count);
        const double top = 595.0 * layout.groups[0].y2;
        EXPECT_GT(rows.begin()->first, top);
        EXPECT_LT(rows.rbegin()->first, 595.0);
        EXPECT_GT(top, 595.0 * 0.7);
        for (auto row = std::next(rows.begin()); row != rows.end(); ++row)
            EXPECT_GT(row->first, std::prev(row)->first + 10.0);
    }
}

TEST(PlotPainter, thickDashedLinesKeepTheirGapsAndThinMarkers)
{
    const TestDirectory directory;
    Plot2D plot = plotOf({std::vector<float>(5, 1.0F)});
    Variable& v = plot.variables()[0]->variable();
    v.lineStyle = 1;
    v.marker = 1;
    EXPECT_NE(epsOf(plot).find("[12 3] 0 _P"), std::string::npos) << "thin lines are the driver's";
    v.widthMm = 1.75;
    const std::string eps = epsOf(plot);
    EXPECT_EQ(eps.find("[12 3] 0 _P"), std::string::npos);
    const double width = 5.0 * 1.75 * 0.2 * 0.8 * 72.0 / 25.4;
    const std::size_t begin = eps.find("3.97 _w");
    ASSERT_NE(begin, std::string::npos);
    const std::vector<Dash> dashes =
        dashesOf(eps.substr(begin, eps.find("0.57 _w", begin) - begin), "3.97 _w");
    ASSERT_GT(dashes.size(), 5U);
    // The round ends lengthen a dash by the width, and shorten a gap by it.
    EXPECT_NEAR(dashes[0].length + width, 12.0 * width, 0.3);
    EXPECT_NEAR(dashes[2].length + width, 12.0 * width, 0.3);
    EXPECT_NEAR(dashes[2].gapBefore - width, 3.0 * width, 0.3);
    EXPECT_NE(eps.find("0.57 _w", begin), std::string::npos) << "the pen of the markers";
    // In the legend it stands on its line, before the name; beyond the last colour the first one returns.
    v.lineStyle = -1;
    v.colorIndex = 7 + 12;
    plot.groups()[0].variables().push_back(plot.variables()[0]);
    PlotLayout layout;
    const std::string bare = epsOf(plot, &layout);
    const std::size_t name = bare.rfind(" _m(column 1)");
    const auto xBefore = [&bare](std::size_t move) {
        const std::size_t y = bare.rfind(' ', move - 1);
        return std::atof(bare.c_str() + bare.find_last_of(" \n", y - 1));
    };
    EXPECT_LT(xBefore(bare.rfind(" _m ", name - 1)), xBefore(name));
    EXPECT_NEAR(heightOf("column 1", bare.substr(bare.rfind('\n', name))), 595.0 * layout.groups[0].y2 + 5.0,
                4.0);
    const PlotColor& first = defaultPlotColors().front();
    char color[64];
    std::snprintf(color, sizeof color, "%f %f %f setrgbcolor", static_cast<double>(first.r),
                  static_cast<double>(first.g), static_cast<double>(first.b));
    EXPECT_NE(bare.find(color), std::string::npos) << color;
}

TEST(PlotReadout, VariablesOfOneUnitShareAnAxisAndADifferenceWantsBothCursors)
{
    Plot2D plot = plotOfValues({1, 2, 3}, "Time [s]",
                               {{"a", "V", {1, 2, 3}}, {"b", "A", {4, 5, 6}}, {"c", "V", {7, 8, 5}}}, true);
    ASSERT_EQ(plot.groups().size(), 2U);
    EXPECT_EQ(plot.groups()[0].variables().size(), 2U);
    EXPECT_EQ(plot.groups()[0].axisTitle(), "a, c [V]");
    EXPECT_EQ(placeInPlot(plot, "0%").x, 1.0);
    EXPECT_EQ(placeInPlot(plot, "100%").x, 3.0);
    plot.zoomY(0, 2.0, 4.5);
    EXPECT_NEAR(plot.groups()[0].y2() - plot.groups()[0].y1(), 7.0 * 1.1 / 2.0, 0.2);
    plot.setCursor(Plot2D::B, 3.0);
    const auto fields = [&plot] { return intervalFields(plot, intervalRows(plot).at(1)); };
    EXPECT_EQ(fields()[4], "");
    plot.setCursor(Plot2D::A, 2.0);
    EXPECT_EQ(fields()[0] + fields()[2] + fields()[3] + fields()[4], "c85-3");
    plot.groups()[0].variables().push_back(plot.variables()[2]);
    EXPECT_EQ(plot.groups()[0].axisTitle(), "a, c, b") << "no unit of all";

    const TestDirectory directory;
    for (const auto& [unit, title] : {std::pair("", "Time [s]"), {"ms", "Time [ms]"}, {"F[Hz]", "F[Hz]"}}) {
        TSFILE made("p.ts", 300, 3, 0);
        made.dt(0.25F);
        made.timeUnit(unit);
        made.flush(true);
        const auto file = std::make_shared<PlotFile>("p.ts");
        EXPECT_EQ(plottableColumns(*file), (std::vector<std::uint32_t>{1, 2, 3}));
        Plot2D timed;
        addAlone(timed, makeVariable(file, 3));
        chooseXAxis(timed);
        EXPECT_EQ(timed.xTitle, title);
    }
    TSFILE("p.ts", false).startSeconds(1463492730);
    TSFILE("p.ts", false).timeUnit("");
    Plot2D clock;
    addAlone(clock, makeVariable(std::make_shared<PlotFile>("p.ts"), 3));
    chooseXAxis(clock);
    setenv("TZ", "UTC", 1);
    EXPECT_EQ(xText(clock, 30.25), "2016-05-17 13:46:00.25");
}

TEST(PlotPainter, pictureHasItsCellsItsColoursAndLightSeamsOfItsCursors)
{
    const TestDirectory directory;
    const auto cells = std::make_shared<PlotValues>(
        std::vector<double>{1, 2, 3}, std::vector<std::vector<float>>{{0, 0, 0}, {0, 9, 0}, {0, 0, 0}});
    Plot2D plot;
    Group& group = plot.groups().emplace_back();
    group.image = std::make_shared<CellImage>(cells, 1.0, "V");
    ASSERT_EQ(group.image->build({}), JobOutcome::Done);
    Variable mark(cells, 1);
    mark.isMark = true;
    group.variables().push_back(std::make_shared<HsVariable>(std::move(mark)));
    plot.buildMissing({});
    plot.fitAll();
    plot.setCursor(Plot2D::A, 2.0);
    PlotLayout layout;
    const std::string eps = epsOf(plot, &layout, true);
    ASSERT_EQ(layout.colorBars.size(), 1U);
    EXPECT_GT(layout.colorBars[0].frame.x1, layout.groups[0].x1) << "behind the number of its lower end";
    const auto hex = [](const MapColor& c) {
        char text[8];
        std::snprintf(text, sizeof text, "%02x%02x%02x", c.r, c.g, c.b);
        return std::string(text);
    };
    const std::size_t palette = eps.find("DeviceRGB 1 <\n");
    ASSERT_NE(palette, std::string::npos) << eps;
    EXPECT_EQ(eps.substr(palette + 14, 12), hex(colorMap().front()) + hex(colorMap().back()));
    EXPECT_NE(eps.find("1.000000 1.000000 1.000000 setrgbcolor"), std::string::npos);
    EXPECT_NE(eps.find("(9.00 V)"), std::string::npos);
}

TEST(PlotPainter, titlesOfLowAxesAreSetSmallerBeforeTheyAreCut)
{
    const TestDirectory directory;
    std::vector<float> large(50, 1.0F);
    large[3] = -12345.0F;
    Plot2D plot = plotOf({noise(50), large, noise(50)});
    for (const auto& v : plot.variables())
        v->variable().unit = "m/s";
    plot.groups()[0].title = "Acceleration of the wheel [m/s]";
    const std::string eps = epsOf(plot);
    EXPECT_NE(eps.find("(Acceleration of the wheel [m/s])"), std::string::npos);
    // The turned titles stand in one line, whatever the width of the labels beside them.
    std::vector<std::string> places;
    for (std::size_t at = 0; (at = eps.find(" translate 90 rotate", at)) != std::string::npos; ++at) {
        const std::size_t line = eps.rfind("gsave ", at) + 6;
        places.push_back(eps.substr(line, eps.find(' ', line) - line));
    }
    ASSERT_EQ(places.size(), 3U);
    EXPECT_EQ(places[0], places[1]);
    EXPECT_EQ(places[1], places[2]);
}

TEST(PlotPainter, eightStackedAxesKeepTwoLabelsEach)
{
    const TestDirectory directory;
    std::vector<std::vector<float>> columns;
    for (int c = 0; c < 8; ++c)
        columns.push_back({0.3F + static_cast<float>(c), 9.7F - static_cast<float>(c) * 0.3F});
    for (int c = 0; c < 8; ++c) {
        const LabelRoom room{36.0, [](const std::string&) { return 11.0; }, 11.0, 3.0};
        const AxisTicks axis =
            linearTicks(static_cast<double>(columns[static_cast<std::size_t>(c)][0]),
                        static_cast<double>(columns[static_cast<std::size_t>(c)][1]), room);
        EXPECT_GE(labelCount(axis), 2) << c;
    }
    const std::string eps = epsOf(plotOf(columns));
    int labels = 0;
    for (std::size_t at = 0; (at = eps.find(" 1 .4 _js", at + 1)) != std::string::npos;)
        ++labels;
    EXPECT_GE(labels, 16);
}

TEST(PlotPainter, aSampleBetweenGapsIsSeen)
{
    const TestDirectory directory;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::string with = epsOf(plotOf({{1.0F, 2.0F, nan, 4.0F, nan, 2.0F, 3.0F}}));
    EXPECT_NE(with.find("closepath gsave fill"), std::string::npos);
    EXPECT_EQ(epsOf(plotOf({{1.0F, 2.0F, 3.0F}})).find("closepath gsave fill"), std::string::npos);
}

TEST(PlotPainter, cursorsAreOnPaperOnlyOnRequest)
{
    const TestDirectory directory;
    Plot2D plot = plotOf({noise(50)});
    plot.setCursor(Plot2D::A, 0.2);
    EXPECT_EQ(epsOf(plot).find("(A)"), std::string::npos);
    const std::string eps = epsOf(plot, nullptr, true);
    EXPECT_NE(eps.find("(A)"), std::string::npos);
    EXPECT_EQ(eps.find("1.000000 1.000000 1.000000 setrgbcolor"), std::string::npos)
        << "a light seam only over a picture";
}

}  // namespace
