// A recorder process, and a plot and a list window that follow what it writes.
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QTest>

#include "core/RingFile.h"
#include "core/TSFILE.h"
#include "portal/SampleView.h"
#include "portal/TsTableView.h"
#include "share/PlotCanvas.h"
#include "share/PlotFollower.h"
#include "share/QtPlotWin1.h"
#include "tests/cli/Recorder.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

// 10,000 rows a second: a ring's round takes nine tenths.
constexpr std::chrono::milliseconds kPause(10);
constexpr qint64 kHalfARoundMs = 450;

}  // namespace

// Over several rounds of the ring, over a recorder that is killed and one that goes on.
TEST(Live, EveryRowArrivesInOrder)
{
    signal(SIGPIPE, SIG_IGN);
    const TestDirectory directory;
    makeRingFile("r.ts", {.samples = kRecordedRoom, .columns = {{"n", ""}, {"m", ""}, {"k", ""}}});
    QtPlotWin window("r.ts");
    window.show();
    window.sl_follow(true);
    Plot2D& plot = window.canvas()->plot();
    std::uint32_t seen = 0;
    std::uint32_t wrong = 0;
    QElapsedTimer sinceLook;
    sinceLook.start();
    QObject::connect(window.findChild<PlotFollower*>(), &PlotFollower::x_rows_came, &window, [&] {
        const auto v = plot.reference();
        if (!v)
            return;  // the ring was looked at before its first row
        const PlotSource& source = *v->variable().source();
        const std::uint32_t newest = source.sampleOf(v->variable().rows());
        // What was overwritten before anybody looked is gone, as it is for every reader of a ring; on a
        // machine with better things to do nobody may look for long.
        const std::uint32_t first = std::max(seen + 1, source.sampleOf(v->variable().firstRow()));
        if (sinceLook.restart() < kHalfARoundMs) {
            EXPECT_EQ(first, seen + 1) << "rows that nobody saw";
        }
        for (std::uint32_t s = first; s <= newest; ++s)
            wrong += v->variable().value(v->variable().rows() - (newest - s)) == s ? 0 : 1;
        const auto range = v->range(v->variable().rows() - (newest - first), v->variable().rows());
        EXPECT_EQ(range.least, first);
        EXPECT_EQ(range.greatest, newest);
        seen = newest;
    });
    for (int run = 0; run < 3; ++run) {
        const std::uint32_t before = seen;
        Recorder recorder(seen + 1, kPause);
        QElapsedTimer clock;
        clock.start();
        while (seen < before + kRecordedRoom / 2 * 3 && clock.elapsed() < 20000)
            QTest::qWait(5);
        recorder.end(run == 0 ? SIGKILL : SIGTERM);
        const std::uint32_t last = TSFILE("r.ts", true).lastSample();
        EXPECT_TRUE(QTest::qWaitFor([&] { return seen == last; })) << run << ": " << seen << " of " << last;
    }
    EXPECT_EQ(wrong, 0U);
    EXPECT_GT(seen, 4 * kRecordedRoom);
}

TEST(Live, TheListStaysAtTheEnd)
{
    signal(SIGPIPE, SIG_IGN);
    const TestDirectory directory;
    makeRingFile("r.ts", {.samples = kRecordedRoom, .columns = {{"n", ""}, {"m", ""}, {"k", ""}}});
    TsTableView list(QStringLiteral("r.ts"), nullptr, 0);
    list.show();
    QApplication::setActiveWindow(&list);
    auto& view = *list.findChild<SampleView*>();
    view.setFocus();
    QTest::keyClick(&view, Qt::Key_L);
    {
        Recorder recorder(1, kPause);
        QElapsedTimer clock;
        for (clock.start(); clock.elapsed() < 1500;)
            QTest::qWait(20);
        recorder.end(SIGTERM);
    }
    TSFILE file("r.ts", true);
    const std::uint32_t newest = file.lastSample();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return view.currentRow() == static_cast<int>((newest - 1) % kRecordedRoom); }));
    EXPECT_EQ(view.model()->data(view.currentIndex()).toString(), QString::number(newest) + ".0000");
    // Who goes elsewhere stays there.
    view.goTo(5, 0);
    Recorder recorder(newest + 1, kPause);
    EXPECT_TRUE(QTest::qWaitFor([&] { return file.refresh(); }, 20000));
    QTest::qWait(300);
    EXPECT_EQ(view.currentRow(), 5);
}
