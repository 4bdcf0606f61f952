// Views, cursors and curves of a plot.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/Plot2D.h"
#include "core/PlotCurves.h"
#include "core/PlotValues.h"

using namespace veltrac;

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// One variable a group over x = step, 2 · step, …
Plot2D plotOf(const std::vector<std::vector<float>>& columns, double step = 1.0)
{
    std::vector<double> x(columns.front().size());
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = step * (static_cast<double>(i) + 1.0);
    const auto source = std::make_shared<PlotValues>(x, columns);
    Plot2D plot;
    for (std::uint32_t c = 1; c <= columns.size(); ++c) {
        Group& group = plot.groups().emplace_back();
        group.variables().push_back(std::make_shared<HsVariable>(Variable(source, c)));
    }
    EXPECT_EQ(plot.buildMissing({}), JobOutcome::Done);
    plot.fitAll();
    return plot;
}

std::vector<float> sine(std::size_t n)
{
    std::vector<float> values(n);
    for (std::size_t i = 0; i < n; ++i)
        values[i] = static_cast<float>(std::sin(static_cast<double>(i) * 0.01));
    return values;
}

TEST(Plot2D, zoomKeepsItsPointAndStaysWithinReach)
{
    Plot2D plot = plotOf({sine(10000)}, 0.5);
    EXPECT_EQ(plot.x1(), 0.5);
    EXPECT_EQ(plot.x2(), 5000.0);
    const double before = plot.fractionOf(1234.0);
    plot.zoomX(8.0, 1234.0);
    EXPECT_NEAR(plot.fractionOf(1234.0), before, 1e-9);
    EXPECT_NEAR(plot.x2() - plot.x1(), 4999.5 / 8.0, 1e-6);
    for (int i = 0; i < 200; ++i)
        plot.zoomX(2.0, 1234.0);
    EXPECT_GT(plot.x2(), plot.x1());
    EXPECT_NEAR(plot.fractionOf(1234.0), before, 1e-3);
    for (int i = 0; i < 200; ++i)
        plot.zoomX(0.5, 1234.0);
    EXPECT_LE(plot.x2() - plot.x1(), 1.11 * 4999.5);
    plot.setX(100.0, 200.0);
    plot.pan(-50.0);
    EXPECT_EQ(plot.x1(), 0.5);
    EXPECT_NEAR(plot.x2(), 100.5, 1e-9);
    plot.setX(std::nan(""), 3.0);
    EXPECT_EQ(plot.x1(), 0.5);
}

TEST(Plot2D, historyGoesBackAndForthAndJoinsGestures)
{
    Plot2D plot = plotOf({sine(1000)});
    const double y1 = plot.groups()[0].y1();
    plot.remember();
    plot.setX(100.0, 200.0);
    plot.setY(0, -9.0, 9.0);
    for (int i = 0; i < 5; ++i) {
        plot.remember(1);
        plot.zoomX(1.25, 150.0);
    }
    EXPECT_TRUE(plot.back());
    EXPECT_EQ(plot.x1(), 100.0);
    EXPECT_TRUE(plot.back());
    EXPECT_EQ(plot.x1(), 1.0);
    EXPECT_EQ(plot.groups()[0].y1(), y1);
    EXPECT_FALSE(plot.back());
    EXPECT_TRUE(plot.forward());
    EXPECT_EQ(plot.groups()[0].y1(), -9.0);
    EXPECT_TRUE(plot.forward());
    EXPECT_GT(plot.x1(), 100.0);
    EXPECT_FALSE(plot.forward());
    EXPECT_TRUE(plot.back());
    plot.remember();
    EXPECT_FALSE(plot.canGoForward());
    plot.moveCursor(Plot2D::B, 3);
    EXPECT_FALSE(plot.cursor(Plot2D::B)) << "what is not set does not move";
}

TEST(Plot2D, cursorsSnapToSamplesAndGiveTheInterval)
{
    Plot2D plot = plotOf({sine(1000)}, 0.25);
    plot.setCursor(Plot2D::A, 10.1);
    EXPECT_EQ(*plot.cursor(Plot2D::A), 10.0);
    EXPECT_EQ(plot.interval().x2, plot.x2());
    plot.setCursor(Plot2D::B, -5.0);
    plot.moveCursor(Plot2D::B, 3);
    EXPECT_EQ(*plot.cursor(Plot2D::B), 1.0);
    plot.moveCursor(Plot2D::A, 1'000'000);
    EXPECT_EQ(plot.interval().x1, 1.0);
    EXPECT_EQ(plot.interval().x2, 250.0);
    plot.setX(20.0, 30.0);
    plot.setMode(XMode::Sample);
    EXPECT_NEAR(plot.x1(), 80.0, 1e-9);
    EXPECT_NEAR(plot.x2(), 120.0, 1e-9);
    EXPECT_EQ(*plot.cursor(Plot2D::B), 4.0);
}

TEST(Group, limitsFitWhatIsShown)
{
    std::vector<float> values = sine(2000);
    values[1500] = 50.0F;
    values[10] = -3.0F;
    Plot2D plot = plotOf({values});
    Group& group = plot.groups()[0];
    EXPECT_LT(group.y1(), -3.0);
    EXPECT_GT(group.y2(), 50.0);
    plot.setX(100.0, 1400.0);
    plot.fitY();
    EXPECT_LT(group.y2(), 1.2);
    group.setLogarithmic(true);
    plot.buildMissing({});
    plot.fitAll();
    EXPECT_GT(group.y1(), 0.0);
    EXPECT_GT(group.y2(), 50.0);
    group.setLimits(-1.0, 5.0);
    EXPECT_GT(group.y1(), 0.0);
    // A constant gets an axis of some height.
    Plot2D flat = plotOf({std::vector<float>(300, 7.0F)});
    EXPECT_LT(flat.groups()[0].y1(), 7.0);
    EXPECT_GT(flat.groups()[0].y2(), 7.0);
}

// What a curve covers in each pixel column, from its polylines.
TEST(PlotCurves, envelopeCoversEachColumnExactly)
{
    constexpr int kColumns = 97;
    std::vector<float> values = sine(100'003);
    values[55'555] = 40.0F;
    std::fill(values.begin() + 20'000, values.begin() + 30'000, kNan);
    Plot2D plot = plotOf({values, sine(100'003)});
    plot.setX(333.0, 99'000.0);
    const std::vector<Curve> curves = curvesOf(plot, kColumns, 6);
    ASSERT_EQ(curves.size(), 2U);
    Plot2D other = plotOf({sine(100'003), values});  // which is drawn first changes nothing
    other.setX(333.0, 99'000.0);
    EXPECT_EQ(curvesOf(other, kColumns, 6)[1].points, curves[0].points);
    const Curve& curve = curves[0];
    EXPECT_EQ(curve.runEnds.size(), 2U);  // before and behind the gap
    EXPECT_TRUE(curve.markers.empty());
    const Group& group = plot.groups()[0];
    const double pixel = (plot.x2() - plot.x1()) / kColumns;
    std::size_t seen = 0;
    for (int c = 0; c < kColumns; ++c) {
        float low = 1e9F;
        float high = -1e9F;
        for (std::size_t i = 0; i < curve.points.size(); i += 2) {
            if (std::fabs(curve.points[i] * kColumns - static_cast<float>(c) - 0.5F) > 0.01F)
                continue;
            low = std::min(low, curve.points[i + 1]);
            high = std::max(high, curve.points[i + 1]);
        }
        float least = 1e9F;
        float greatest = -1e9F;
        for (int row = 1; row <= 100'003; ++row) {
            const double at = (row - plot.x1()) / pixel;
            if (at < c || at > c + 1 || row > plot.x2() ||
                std::isnan(values[static_cast<std::size_t>(row) - 1]))
                continue;
            least = std::min(least, values[static_cast<std::size_t>(row) - 1]);
            greatest = std::max(greatest, values[static_cast<std::size_t>(row) - 1]);
        }
        if (least > greatest)
            continue;
        ++seen;
        const auto height = [&](float y) {
            return (static_cast<double>(y) - group.y1()) / (group.y2() - group.y1());
        };
        // The edge between two columns may move by an eighth of one.
        EXPECT_NEAR(low, height(least), 0.05) << c;
        EXPECT_NEAR(high, height(greatest), greatest == 40.0F ? 1e-5 : 0.05) << c;
    }
    EXPECT_GT(seen, 85U);
}

TEST(PlotCurves, fewSamplesAreJoinedAndClipped)
{
    Plot2D plot = plotOf({{0.0F, 1.0F, kNan, 2.0F, kNan, 1e9F, 1.0F, 1.5F}});
    plot.setX(1.0, 8.0);
    plot.setY(0, 0.0, 2.0);
    const Curve curve = curvesOf(plot, 200, 6).front();
    // 1–2, the lonely 4, and 6–8, whose first segment comes from far above.
    ASSERT_EQ(curve.runEnds, (std::vector<std::size_t>{2, 3, 6}));
    EXPECT_EQ(curve.markers.size(), 2U * 5);
    EXPECT_FLOAT_EQ(curve.points[4], 3.0F / 7.0F);
    for (std::size_t i = 1; i < curve.points.size(); i += 2)
        EXPECT_LE(curve.points[i], 1.51F);
    // In single precision the start of a long axis would swallow the steps.
    Plot2D far = plotOf({sine(100'000)}, 100.0);
    far.setX(9'999'000.0, 9'999'400.0);
    const Curve fine = curvesOf(far, 100, 1).front();
    ASSERT_GE(fine.markers.size(), 10U);
    for (std::size_t i = 0; i < 10; i += 2)
        EXPECT_NEAR(fine.markers[i], static_cast<float>(i) / 8.0F, 1e-6F);
}

TEST(PlotCurves, logarithmicAxesLeaveOutZeroAndBelow)
{
    Plot2D plot = plotOf({{-1.0F, 1.0F, 10.0F, 0.0F, 100.0F}});
    plot.groups()[0].setLogarithmic(true);
    plot.buildMissing({});
    plot.setLogarithmicX(true);
    plot.fitAll();
    plot.setY(0, 1.0, 100.0);
    plot.setX(1.0, 5.0);
    const Curve curve = curvesOf(plot, 100, 6).front();
    ASSERT_EQ(curve.runEnds, (std::vector<std::size_t>{2, 3}));
    EXPECT_FLOAT_EQ(curve.points[0], std::log10(2.0F) / std::log10(5.0F));
    EXPECT_FLOAT_EQ(curve.points[3], 0.5F);
}

}  // namespace
