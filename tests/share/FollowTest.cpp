// A plot window over a ring file that a recorder writes.
#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>

#include <cmath>
#include <numeric>

#include "core/RingFile.h"
#include "core/RingWriter.h"
#include "core/TSFILE.h"
#include "share/CursorTable.h"
#include "share/NoticeStrip.h"
#include "share/PlotCanvas.h"
#include "share/PlotFollower.h"
#include "share/QtPlotColWin.h"
#include "share/QtPlotWin1.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kRoom = 3000;

// Value of column c (from 0) in sample s.
float valueIn(std::uint32_t s, std::uint32_t c)
{
    return c == 0 ? static_cast<float>(s) : std::sin(0.01F * static_cast<float>(s));
}

void append(RingWriter& ring, std::uint32_t count)
{
    std::vector<float> rows;
    for (std::uint32_t i = 1; i <= count; ++i)
        for (std::uint32_t c = 0; c < 2; ++c)
            rows.push_back(valueIn(ring.lastSample() + i, c));
    ring.write(rows);
}

// A ring of two columns with `count` samples.
std::unique_ptr<RingWriter> ringWith(std::uint32_t count, const char* file = "ring.ts")
{
    makeRingFile(file, {.samples = kRoom, .columns = {{"n", ""}, {"wave", "wave [V]"}}, .dt = 0.5F});
    auto ring = std::make_unique<RingWriter>(file);
    append(*ring, count);
    return ring;
}

// Each sample that the plot shows is the right one, and its statistics are those of the samples.
void expectSamples(const Plot2D& plot, std::uint32_t first, std::uint32_t last)
{
    const auto v = plot.reference();
    const PlotSource& source = *v->variable().source();
    ASSERT_EQ(source.sampleOf(v->variable().firstRow()), first);
    ASSERT_EQ(source.sampleOf(v->variable().rows()), last);
    for (std::uint32_t row = v->variable().firstRow(); row <= v->variable().rows(); ++row)
        ASSERT_EQ(v->variable().value(row), source.sampleOf(row)) << row;
    ASSERT_TRUE(v->isBuilt());
    const auto s = v->statistics(v->variable().firstRow(), v->variable().rows());
    EXPECT_EQ(s.count, last - first + 1);
    EXPECT_EQ(s.least, first);
    EXPECT_EQ(s.greatest, last);
    EXPECT_NEAR(s.mean, (first + last) / 2.0, 1e-6 * last);
    if (last - first < 1001)
        return;
    const auto inside = v->statistics(v->variable().firstRow() + 700, v->variable().rows() - 300);
    EXPECT_EQ(inside.least, first + 700);
    EXPECT_EQ(inside.greatest, last - 300);
}

}  // namespace

TEST(Follow, RowsComeInOrderOverTheSeamAndOverRoundAfterRound)
{
    const TestDirectory directory;
    auto ring = ringWith(2000);
    QtPlotWin window("ring.ts");
    window.show();
    PlotCanvas& canvas = *window.canvas();
    canvas.showRange(canvas.plot().extent().x1, canvas.plot().extent().x1 + 250.0, 0);
    QTest::keyClick(&canvas, Qt::Key_L);
    auto& follower = *window.findChild<PlotFollower*>();
    ASSERT_TRUE(follower.isOn());
    EXPECT_NEAR(canvas.plot().x2(), canvas.plot().extent().x2, 1e-6);
    for (const std::uint32_t more : {1U, 255U, 300U, 777U, 2000U, 2999U, 1500U, 1500U, 1500U, 17U}) {
        append(*ring, more);
        follower.look();
        const std::uint32_t last = ring->lastSample();
        expectSamples(canvas.plot(), ring->ringStart(), last);
        EXPECT_NEAR(canvas.plot().x2(), last * 0.5, 1e-6);
        EXPECT_NEAR(canvas.plot().x2() - canvas.plot().x1(), 250.0, 1e-6);
    }
    EXPECT_TRUE(window.statusBar()->findChild<QLabel*>()->text().contains("ring, oldest sample"));
    // More came than the ring holds: nothing is left of what was known.
    append(*ring, 2 * kRoom + 5);
    follower.look();
    expectSamples(canvas.plot(), ring->ringStart(), ring->lastSample());
    // A recorder that ends and goes on.
    ring.reset();
    ring = std::make_unique<RingWriter>("ring.ts");
    append(*ring, 123);
    follower.look();
    expectSamples(canvas.plot(), ring->ringStart(), ring->lastSample());
}

TEST(Follow, PausesWhenTheUserLooksBackAndGoesOn)
{
    const TestDirectory directory;
    const auto ring = ringWith(2900);
    QtPlotColWin window("ring.ts", 2);
    window.show();
    PlotCanvas& canvas = *window.canvas();
    window.sl_follow(true);
    auto& follower = *window.findChild<PlotFollower*>();
    canvas.sl_zoomIn();
    EXPECT_TRUE(follower.isPaused());
    NoticeStrip* strip = nullptr;
    for (NoticeStrip* const one : window.findChildren<NoticeStrip*>())
        strip = one->isVisible() ? one : strip;
    ASSERT_NE(strip, nullptr);
    EXPECT_TRUE(strip->text().startsWith("Paused at ")) << strip->text().toStdString();
    const double x1 = canvas.plot().x1();
    canvas.placeCursor(Plot2D::A, canvas.plot().extent().x1 + 10.0);
    append(*ring, 1000);
    follower.look();
    EXPECT_EQ(canvas.plot().x1(), x1) << "the view stands still";
    EXPECT_EQ(canvas.plot().reference()->variable().rows(), 3900U) << "the rows come";
    EXPECT_NE(cursorText(canvas.plot()).find("has left the ring"), std::string::npos);
    const double span = canvas.plot().x2() - x1;
    QTest::mouseClick(strip->findChild<QPushButton*>(), Qt::LeftButton);
    EXPECT_FALSE(follower.isPaused());
    EXPECT_FALSE(strip->isVisible());
    EXPECT_NEAR(canvas.plot().x2(), canvas.plot().extent().x2, 1e-6);
    EXPECT_NEAR(canvas.plot().x2() - canvas.plot().x1(), span, 1e-6);
}

TEST(Follow, TellsWhatHasBecomeOfTheFileAndGoesOnWhenItIsBack)
{
    const TestDirectory directory;
    auto ring = ringWith(500);
    QtPlotWin window("ring.ts");
    window.show();
    window.sl_follow(true);
    auto& follower = *window.findChild<PlotFollower*>();
    const auto told = [&] {
        for (const NoticeStrip* const one : window.findChildren<NoticeStrip*>())
            if (one->isVisible())
                return one->text().toStdString();
        return std::string();
    };
    const struct
    {
        const char* what;
        std::function<void()> happens;
        const char* told;
        std::uint32_t samples;  // of the file that comes back
    } cases[] = {
        {"gone", [] { std::filesystem::rename("ring.ts", "away.ts"); }, "is gone", 700},
        {"cut", [] { std::filesystem::resize_file("ring.ts", 3000); }, "was cut short", 40},
        {"emptied", [] { std::filesystem::resize_file("ring.ts", 0); }, "was cut short", 300},
    };
    std::uint32_t known = 500;
    for (const auto& c : cases) {
        c.happens();
        follower.look();
        EXPECT_NE(told().find(c.told), std::string::npos) << c.what << ": " << told();
        EXPECT_EQ(window.canvas()->plot().reference()->variable().rows(), known) << c.what;
        std::filesystem::remove("ring.ts");
        ring = ringWith(c.samples);
        follower.look();
        EXPECT_EQ(told(), "") << c.what;
        expectSamples(window.canvas()->plot(), 1, c.samples);
        known = c.samples;
    }
    // What is no ts-file for a while is not taken for one, and one with other columns is.
    std::ofstream("other", std::ios::binary) << std::string(4096, 'x');
    std::filesystem::rename("other", "ring.ts");
    follower.look();
    EXPECT_NE(told().find("cannot be read"), std::string::npos) << told();
    makeRingFile("ring.ts", {.samples = 50, .columns = {{"n", ""}}});
    follower.look();
    EXPECT_EQ(window.canvas()->plot().variables().size(), 1U);
}

TEST(Follow, AnOrdinaryFileThatGrowsAndTimesOfTheirOwn)
{
    const TestDirectory directory;
    TSFILE grows("grows.ts", 300, 1, 1);
    for (std::uint32_t s = 1; s <= 300; ++s) {
        grows.setSampleTime(s, 0.1 * s);
        grows.setValue(s, 2, static_cast<float>(s));
    }
    grows.flush(true);
    QtPlotWin window("grows.ts");
    window.show();
    window.sl_follow(true);
    for (std::uint32_t to = 350; to < 800; to += 150) {
        const std::uint32_t from = grows.samples();
        grows.resize(to);
        for (std::uint32_t s = from + 1; s <= to; ++s) {
            grows.setSampleTime(s, 0.1 * s);
            grows.setValue(s, 2, static_cast<float>(s));
        }
        grows.flush(true);
        window.findChild<PlotFollower*>()->look();
        const auto v = window.canvas()->plot().reference();
        ASSERT_EQ(v->variable().rows(), to);
        EXPECT_EQ(v->statistics(1, to).greatest, to);
        EXPECT_NEAR(window.canvas()->plot().x2(), 0.1 * to, 1e-4);
        EXPECT_EQ(v->variable().sampleAt(0.1 * (to - 20) + 0.01), to - 20);
    }
}
