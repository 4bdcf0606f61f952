// The canvas and the plot windows, driven with mouse and keys.
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QDateTimeEdit>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPageLayout>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QWheelEvent>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "core/CellImage.h"
#include "core/FileTime.h"
#include "core/PlotFile.h"
#include "core/TSFILE.h"
#include "portal/TsApplication.h"
#include "share/ColorConfigDialog.h"
#include "share/HistogramWin.h"
#include "share/NoticeStrip.h"
#include "share/OverviewStrip.h"
#include "share/PlotCanvas.h"
#include "share/PlotExport.h"
#include "share/PlotGoTo.h"
#include "share/PlotReadout.h"
#include "share/PlotVariables.h"
#include "share/QtPlotColWin.h"
#include "share/QtPlotWin1.h"
#include "share/ReadoutLabel.h"
#include "share/ValuePlots.h"
#include "share/VariableMenu.h"
#include "share/XyWin.h"
#include "tests/BoxAnswer.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

// Ten seconds of a sine of 1 Hz with a spike, and a ramp in newtons.
void makeFile(const char* name, std::uint32_t samples = 10'000)
{
    TSFILE file(name, samples, 3, 0);
    file.dt(0.001F);
    for (std::uint32_t c = 1; c <= 3; ++c)
        file.columnDescription(c, c == 3 ? "ramp [N]" : "wave [V]");
    for (std::uint32_t s = 1; s <= samples; ++s) {
        file.setValue(s, 1, static_cast<float>(std::sin(s * 0.001 * 6.283185307179586)));
        file.setValue(s, 2, s == 7000 ? 5.0F : 0.0F);
        file.setValue(s, 3, static_cast<float>(s));
    }
    file.flush(true);
}

class PlotCanvasTest : public testing::Test
{
protected:
    PlotCanvasTest()
    {
        makeFile("test.ts");
        m_canvas.resize(800, 500);
        m_canvas.showColumns("test.ts", {1, 2, 3});
        m_canvas.show();
        m_canvas.grab();
    }
    Plot2D& plot() { return m_canvas.plot(); }
    QPoint at(double x, double height = 0.5)
    {
        const QRect area = m_canvas.groupArea(0);
        return {m_canvas.pixelOf(x), area.bottom() - static_cast<int>(height * area.height())};
    }
    void wheel(const QPoint& pixel, int notches, Qt::KeyboardModifiers modifiers)
    {
        QWheelEvent event(pixel, m_canvas.mapToGlobal(pixel), QPoint(), QPoint(0, 120 * notches),
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&m_canvas, &event);
    }
    void drag(const QPoint& from, const QPoint& to, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mousePress(&m_canvas, button, {}, from);
        for (const QPoint& p : {(from + to) / 2, to}) {
            QMouseEvent move(QEvent::MouseMove, p, m_canvas.mapToGlobal(p), button, button, {});
            QApplication::sendEvent(&m_canvas, &move);
        }
        QTest::mouseRelease(&m_canvas, button, {}, to);
    }
    double pixel() { return (plot().x2() - plot().x1()) / m_canvas.plotArea().width(); }

    TestDirectory m_directory;
    PlotCanvas m_canvas;
};

TEST_F(PlotCanvasTest, placesGoThereAndBack)
{
    ASSERT_EQ(plot().groups().size(), 2U);  // volts and newtons
    for (int p = m_canvas.plotArea().left(); p < m_canvas.plotArea().right(); p += 13)
        EXPECT_EQ(m_canvas.pixelOf(m_canvas.xAt(p)), p);
    EXPECT_EQ(m_canvas.groupAt(m_canvas.groupArea(1).center()), 1);
    const Group& group = plot().groups()[0];
    EXPECT_NEAR(m_canvas.yAt(0, m_canvas.groupArea(0).bottom()), group.y1(), 1e-9);
    EXPECT_NEAR(m_canvas.yAt(0, m_canvas.groupArea(0).top()), group.y2(), 1e-9);
}

TEST_F(PlotCanvasTest, wheelZoomsAndPansWhatItShould)
{
    wheel(at(4.0), 2, {});
    EXPECT_NEAR(plot().x2() - plot().x1(), 9.999 / 1.5625, 1e-6);
    EXPECT_NEAR(m_canvas.xAt(m_canvas.pixelOf(4.0)), 4.0, 2 * pixel());
    const double y = plot().groups()[1].y2();
    const double width = plot().groups()[0].y2() - plot().groups()[0].y1();
    wheel(at(4.0), 1, Qt::ControlModifier);
    EXPECT_NEAR(plot().groups()[0].y2() - plot().groups()[0].y1(), width / 1.25, 1e-9);
    EXPECT_EQ(plot().groups()[1].y2(), y);
    const double x1 = plot().x1();
    wheel(at(4.0), -1, Qt::ShiftModifier);
    EXPECT_NEAR(plot().x1() - x1, 0.1 * (plot().x2() - plot().x1()), 1e-9);
    // Notches of one kind that follow each other are one step back.
    QTest::keyClick(&m_canvas, Qt::Key_Backspace);
    QTest::keyClick(&m_canvas, Qt::Key_Backspace);
    EXPECT_NEAR(plot().x1(), 0.001, 1e-9);
    QTest::keyClick(&m_canvas, Qt::Key_Right, Qt::AltModifier);
    EXPECT_LT(plot().x2() - plot().x1(), 7.0);
}

TEST_F(PlotCanvasTest, rubberBandIsAboutXWhereItIsFlat)
{
    const double y2 = plot().groups()[0].y2();
    drag(at(2.0, 0.5), at(3.0, 0.52));
    EXPECT_NEAR(plot().x1(), 2.0, 0.03);
    EXPECT_NEAR(plot().x2(), 3.0, 0.03);
    EXPECT_EQ(plot().groups()[0].y2(), y2);
    drag(at(2.2, 0.2), at(2.4, 0.8));
    EXPECT_NEAR(plot().x2() - plot().x1(), 0.2, 0.01);
    EXPECT_LT(plot().groups()[0].y2(), y2);
    QTest::mouseDClick(&m_canvas, Qt::LeftButton, {}, m_canvas.groupArea(0).center());
    EXPECT_NEAR(plot().x2(), 10.0, 1e-6);
    EXPECT_EQ(plot().groups()[0].y2(), y2);
    EXPECT_FALSE(plot().cursor(Plot2D::A));
}

TEST_F(PlotCanvasTest, clicksSetCursorsAndDragsMoveThem)
{
    QSignalSpy changed(&m_canvas, &PlotCanvas::x_cursors_changed);
    QTest::mouseClick(&m_canvas, Qt::LeftButton, {}, at(2.0));
    QTest::mouseClick(&m_canvas, Qt::LeftButton, Qt::ShiftModifier, at(6.0));
    ASSERT_TRUE(plot().cursor(Plot2D::A) && plot().cursor(Plot2D::B));
    EXPECT_NEAR(*plot().cursor(Plot2D::A), 2.0, pixel());
    EXPECT_NEAR(*plot().cursor(Plot2D::B), 6.0, pixel());
    EXPECT_EQ(changed.count(), 2);
    drag(at(6.0), at(8.0));
    EXPECT_NEAR(*plot().cursor(Plot2D::B), 8.0, 2 * pixel());
    // The pointer tells what a press would do there.
    const auto shapeAt = [this](const QPoint& place) {
        QMouseEvent move(QEvent::MouseMove, place, m_canvas.mapToGlobal(place), Qt::NoButton, Qt::NoButton,
                         {});
        QApplication::sendEvent(&m_canvas, &move);
        return m_canvas.cursor().shape();
    };
    const QRect area = m_canvas.plotArea();
    EXPECT_EQ(shapeAt({area.left() - 20, m_canvas.groupArea(0).center().y()}), Qt::SizeVerCursor);
    EXPECT_EQ(shapeAt({area.center().x(), area.bottom() + 10}), Qt::SizeHorCursor);
    EXPECT_EQ(shapeAt(at(8.0)), Qt::SplitHCursor);
    EXPECT_EQ(shapeAt(at(3.0)), Qt::CrossCursor);
    QTest::keyPress(&m_canvas, Qt::Key_Space);
    EXPECT_EQ(m_canvas.cursor().shape(), Qt::OpenHandCursor);
    QFocusEvent away(QEvent::FocusOut);
    QApplication::sendEvent(&m_canvas, &away);
    EXPECT_EQ(m_canvas.cursor().shape(), Qt::CrossCursor) << "the key is let go elsewhere";
    const double b = *plot().cursor(Plot2D::B);
    QTest::keyClick(&m_canvas, Qt::Key_Comma, Qt::ControlModifier);
    QTest::keyClick(&m_canvas, Qt::Key_Period, Qt::ShiftModifier);
    QTest::keyClick(&m_canvas, Qt::Key_Period);
    EXPECT_NEAR(*plot().cursor(Plot2D::B), b - 0.989, 1e-6);
    QTest::keyClick(&m_canvas, Qt::Key_Z);
    EXPECT_EQ(plot().x1(), *plot().cursor(Plot2D::A));
    QTest::keyClick(&m_canvas, Qt::Key_M);
    EXPECT_NEAR(std::sin(*plot().cursor(Plot2D::B) * 6.283185307), 1.0, 1e-4);
    QTest::keyClick(&m_canvas, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QApplication::clipboard()->text().contains(QStringLiteral("1/Δt\t")));
    QTest::keyClick(&m_canvas, Qt::Key_Escape);
    EXPECT_FALSE(plot().cursor(Plot2D::A) || plot().cursor(Plot2D::B));
}

TEST_F(PlotCanvasTest, axesPanZoomAndTakeTypedLimits)
{
    wheel(at(5.0), 3, {});
    const QRect area = m_canvas.plotArea();
    const double x1 = plot().x1();
    drag({area.center().x(), area.bottom() + 12}, {area.center().x() - 50, area.bottom() + 12});
    EXPECT_NEAR(plot().x1() - x1, 50 * pixel(), 3 * pixel());
    drag(at(5.0), at(5.0) + QPoint(50, 0), Qt::MiddleButton);
    EXPECT_NEAR(plot().x1(), x1, 3 * pixel());
    EXPECT_FALSE(plot().cursor(Plot2D::A)) << "what was dragged is no click";
    const BoxAnswer answer(QStringLiteral("&Ok"), [](QWidget& dialog) {
        const auto fields = dialog.findChildren<QLineEdit*>();
        fields[0]->setText(QStringLiteral("1,5"));
        fields[1]->setText(QStringLiteral("2"));
    });
    QTest::mouseDClick(&m_canvas, Qt::LeftButton, {}, {area.center().x(), area.bottom() + 12});
    EXPECT_EQ(plot().x1(), 1.5);
    EXPECT_EQ(plot().x2(), 2.0);
    // The y axis fits the data until a limit is typed.
    const BoxAnswer typed(QStringLiteral("&Ok"), [](QWidget& dialog) {
        QLineEdit* const from = dialog.findChildren<QLineEdit*>().first();
        from->selectAll();
        QTest::keyClicks(from, QStringLiteral("-7"));
    });
    QTest::mouseDClick(&m_canvas, Qt::LeftButton, {}, {area.left() - 20, m_canvas.groupArea(0).center().y()});
    EXPECT_EQ(plot().groups()[0].y1(), -7.0);
}

TEST_F(PlotCanvasTest, theEndsOfAColourBarAreDraggedAndNeverPassEachOther)
{
    Plot2D cells = plotOfValues({1.0, 2.0}, "Time [s]", {{"a", "", {1.0F, 2.0F}}, {"b", "", {3.0F, 4.0F}}});
    const auto image = std::make_shared<CellImage>(cells.variables()[0]->variable().source(), 0.5, "V");
    ASSERT_EQ(image->build({}), JobOutcome::Done);
    cells.groups()[0].image = image;
    m_canvas.showPlot(std::move(cells));
    m_canvas.image();
    image->low = 10.0;
    image->high = 30.0;
    const QRect bar = m_canvas.colorBarArea(0);
    ASSERT_GT(bar.width(), 40);
    const auto pull = [&](double from, double by, Qt::MouseButton button = Qt::LeftButton) {
        const QPoint start(bar.left() + static_cast<int>(from * bar.width()), bar.center().y());
        drag(start, start + QPoint(static_cast<int>(by * bar.width()), 0), button);
    };
    pull(0.2, 0.5, Qt::MiddleButton);
    EXPECT_EQ(image->low, 10.0);
    pull(0.1, 0.5);
    EXPECT_NEAR(image->low, 20.0, 3.0);  // in two steps, the second one of a shorter range
    EXPECT_EQ(image->high, 30.0);
    image->low = 10.0;
    pull(0.9, -0.25);
    EXPECT_NEAR(image->high, 25.0, 2.0);
    EXPECT_EQ(image->low, 10.0);
    pull(0.1, 4.0);
    EXPECT_LT(image->low, image->high);
    EXPECT_NEAR(image->low, image->high, 1e-3);
    EXPECT_NEAR(image->high, 25.0, 2.0);
}

TEST_F(PlotCanvasTest, clockAxesTakeDatesAsLimits)
{
    TSFILE("test.ts", false).startSeconds(1'700'000'000);
    m_canvas.showColumns("test.ts", {1});
    m_canvas.grab();
    ASSERT_EQ(plot().axis().mode, XMode::Clock);
    const double x2 = plot().x2();
    const BoxAnswer answer(QStringLiteral("&Ok"), [](QWidget& dialog) {
        auto* const from = dialog.findChild<QDateTimeEdit*>();
        from->setDateTime(from->dateTime().addMSecs(2500));
    });
    const QRect area = m_canvas.plotArea();
    QTest::mouseDClick(&m_canvas, Qt::LeftButton, {}, {area.center().x(), area.bottom() + 12});
    EXPECT_NEAR(plot().x1(), 2.501, 1e-6);
    EXPECT_NEAR(plot().x2(), x2, 1e-6);
}

TEST_F(PlotCanvasTest, goToUnderstandsSamplesTimesAndShares)
{
    const struct
    {
        const char* text;
        double x;
    } cases[] = {{"2500", 2.5}, {"7,5 s", 7.5}, {"0.05 min", 3.0}, {"50%", 5.0005}};
    plot().setX(1.0, 2.0);
    for (const auto& c : cases) {
        const BoxAnswer answer(QStringLiteral("OK"), [&](QWidget& dialog) {
            dialog.findChild<QLineEdit*>()->setText(QString::fromLatin1(c.text));
        });
        QTest::keyClick(&m_canvas, Qt::Key_G, Qt::ControlModifier);
        EXPECT_NEAR((plot().x1() + plot().x2()) / 2.0, c.x, 1e-6) << c.text;
        EXPECT_NEAR(plot().x2() - plot().x1(), 1.0, 1e-6);
    }
    for (const char* const nothing : {"far away", "5 apples", "20 s", "10001", "101%"}) {
        QSignalSpy told(&m_canvas, &PlotCanvas::x_told);
        const BoxAnswer answer(QStringLiteral("OK"), [&](QWidget& dialog) {
            dialog.findChild<QLineEdit*>()->setText(QString::fromLatin1(nothing));
        });
        QTest::keyClick(&m_canvas, Qt::Key_G, Qt::ControlModifier);
        EXPECT_EQ(told.count(), 1) << nothing;
    }
    EXPECT_NEAR((plot().x1() + plot().x2()) / 2.0, 5.0005, 1e-6);
}

struct CentralEurope
{
    CentralEurope() { set("CET-1CEST,M3.5.0,M10.5.0/3"); }
    ~CentralEurope() { set("UTC"); }
    static void set(const char* rules)
    {
        ::setenv("TZ", rules, 1);
        ::tzset();
    }
};

TEST(PlotGoTo, datesLeadWhereTheListGoes)
{
    const TestDirectory directory;
    const CentralEurope zone;
    TSFILE file("clock.ts", 4000, 1, 0);
    file.dt(7.0F);
    file.startSeconds(1'477'774'800);  // 2016-10-29 23:00
    file.flush(true);
    PlotCanvas canvas;
    canvas.showColumns(QStringLiteral("clock.ts"), {1});
    ASSERT_EQ(canvas.plot().axis().mode, XMode::Clock);
    const struct
    {
        const char* text;
        const char* note;
    } cases[] = {{"2016-10-30 00:00:03.000", ""},
                 {"30.10.2016 00:00:04", ""},
                 {"2016-10-30 02:30", "twice"},
                 {"01:13:20", ""}};
    for (const auto& c : cases) {
        const PlaceInPlot place = placeInPlot(canvas.plot(), c.text);
        const MeantRow listed = meantRow(c.text, file);
        ASSERT_TRUE(place.x && listed.row) << c.text << place.reason;
        EXPECT_NEAR(*place.x, 7.0 * *listed.row, 1e-6) << c.text;
        EXPECT_NE(place.note.find(c.note), std::string::npos) << place.note;
    }
}

TEST(PlotVariables, aSeriesFromBefore1970KeepsItsDatesBesideOthers)
{
    const TestDirectory directory;
    {
        TSFILE old("co2.ts", 400, 1, 1);
        TSFILE other("other.ts", 400, 1, 0);
        other.dt(86400.0F);
        other.startSeconds(1'000'000'000);
        for (std::uint32_t s = 1; s <= 400; ++s)
            old.setValue(s, 1, static_cast<float>(-372e6 + s * 604800.0));  // from March 1958
        old.flush(true);
        other.flush(true);
    }
    for (const char* const first : {"co2.ts", "other.ts"}) {
        QtPlotWin window(QString::fromLatin1(first));
        window.show();
        emit window.canvas()->x_files_dropped({QStringLiteral("co2.ts"), QStringLiteral("other.ts")});
        const Plot2D& plot = window.canvas()->plot();
        for (const auto& v : plot.variables()) {
            const double x = plot.axis().xOf(v->variable(), 1);
            const auto file = std::dynamic_pointer_cast<PlotFile>(v->variable().source());
            EXPECT_EQ(xText(plot, x).substr(0, 4), file->name() == "co2.ts" ? "1958" : "2001") << first;
        }
    }
}

TEST(PlotVariables, filesOfOneNameAreToldByTheirFolders)
{
    const TestDirectory directory;
    const std::vector<std::pair<const char*, std::string>> files = {
        {"run.ts", "Column-01 (" + std::filesystem::current_path().filename().string() + "/run)"},
        {"may/run.ts", "Column-01 (may/run)"},
        {"x/june/run.ts", "Column-01 (x/june/run)"},
        {"y/june/run.ts", "Column-01 (y/june/run)"},
        {"y/june/test.ts", "Column-01 (test)"}};
    QStringList names;
    for (const auto& [name, told] : files) {
        if (const std::filesystem::path folder = std::filesystem::path(name).parent_path(); !folder.empty())
            std::filesystem::create_directories(folder);
        TSFILE(name, 4, 1, 0).dt(0.5F);
        names += QString::fromLatin1(name);
    }
    QtPlotWin window(names.front());
    emit window.canvas()->x_files_dropped(names);
    const Plot2D& plot = window.canvas()->plot();
    ASSERT_EQ(files.size(), plot.variables().size());
    for (std::size_t i = 0; i < files.size(); ++i)
        EXPECT_EQ(files[i].second, plot.nameOf(*plot.variables()[i]));
    EXPECT_EQ("Column-01", plot.groups()[0].axisTitle());
}

TEST(PlotVariables, filesThatCountInHoursStandAtTheirTimesBesideOthers)
{
    const TestDirectory directory;
    constexpr std::uint32_t kStart = 1'000'000'000;
    {
        TSFILE hours("hours.ts", 400, 1, 0);
        hours.dt(0.7F);
        hours.timeUnit("Time[h]");
        hours.startSeconds(kStart);
        TSFILE seconds("seconds.ts", 400, 1, 0);
        seconds.dt(60.0F);
        seconds.startSeconds(kStart + 7200);
    }
    for (const char* const first : {"hours.ts", "seconds.ts"}) {
        QtPlotWin window(QString::fromLatin1(first));
        window.show();
        emit window.canvas()->x_files_dropped({QStringLiteral("hours.ts"), QStringLiteral("seconds.ts")});
        const XAxis& axis = window.canvas()->plot().axis();
        const double unit = axis.mode == XMode::Clock ? 1.0 : 3600.0;
        EXPECT_EQ(axis.mode == XMode::Clock, first == std::string("seconds.ts"));
        for (const auto& shown : window.canvas()->plot().variables()) {
            const Variable& v = shown->variable();
            const bool isHours = v.source()->step() < 1.0;
            const double moment = isHours ? kStart + 7 * 0.7F * 3600.0 : kStart + 7200 + 7 * 60.0;
            EXPECT_NEAR(axis.origin + axis.xOf(v, 7) * unit, moment, 1e-3) << first;
            EXPECT_EQ(window.canvas()->plot().nameOf(*shown),
                      isHours ? "Column-01 (hours)" : "Column-01 (seconds)");
            for (std::uint32_t row = 1; row <= 400; ++row)
                ASSERT_EQ(axis.rowAt(v, axis.xOf(v, row)), row) << first;
        }
        if (axis.mode == XMode::Clock)
            continue;
        // Without the hours a clock can be had, with the same times in view.
        Plot2D& plot = window.canvas()->plot();
        plot.remove(*plot.variables().front());
        plot.setX(3.0, 5.0);
        plot.setMode(XMode::Clock);
        EXPECT_NEAR(plot.x1(), 3.0 * 3600.0, 1e-3);
        EXPECT_NEAR(plot.x2(), 5.0 * 3600.0, 1e-3);
    }
}

TEST_F(PlotCanvasTest, everySignalAndReadoutForTheCalculatingWindows)
{
    QSignalSpy moved(&m_canvas, SIGNAL(x_cursor_moved(int, int, int)));
    QSignalSpy resized(&m_canvas, SIGNAL(x_got_resize_event()));
    const QPoint place = at(7.0);
    QMouseEvent move(QEvent::MouseMove, place, m_canvas.mapToGlobal(place), Qt::NoButton, Qt::NoButton, {});
    QApplication::sendEvent(&m_canvas, &move);
    ASSERT_EQ(moved.count(), 1);
    EXPECT_EQ(moved[0][0].toInt(), place.x());
    const Readout readout = m_canvas.readoutAt(place.x());
    ASSERT_EQ(readout.size(), 5);
    EXPECT_NEAR(std::stod(readout[4].value), 7000.0, 1000 * pixel() + 1);
    EXPECT_EQ(readoutTable({{"a<b", "1"}}),
              QStringLiteral(
                  "<table  BGCOLOR=#ffffe0><tr><td><b>a&lt;b</b></td><td>=</td><td>1</td></tr>\n</table>"));
    m_canvas.resize(500, 400);
    QApplication::processEvents();
    EXPECT_GE(resized.count(), 1);
    EXPECT_FALSE(m_canvas.showColumns(QStringLiteral("none.ts"), {1}));
    // No picture is left that zooming could ask for its groups.
    m_canvas.sl_zoomInY();
    EXPECT_EQ(m_canvas.groupAt(place), -1);
    m_canvas.grab();
}

TEST(PlotReadout, momentsAreAsFineAsTheSamples)
{
    const TestDirectory directory;
    const struct
    {
        float dt;
        double after;  // the start, 22:13:20 of some zone
        const char* end;
    } cases[] = {{0.01F, 0.0099999998, ":20.01"},
                 {0.01F, 0.9999999, ":21"},
                 {0.0001F, 0.0003, ":20.0003"},
                 {86400.0F, 0.7, ":21"}};
    for (const auto& c : cases) {
        {
            TSFILE file("clock.ts", 10, 1, 0);
            file.startSeconds(1'700'000'000);
            file.dt(c.dt);
        }
        PlotCanvas canvas;
        canvas.showColumns(QStringLiteral("clock.ts"), {1});
        const std::string text = xText(canvas.plot(), c.after);
        EXPECT_TRUE(text.ends_with(c.end)) << text;
        EXPECT_EQ(distanceText(canvas.plot(), -93784.0), "-93784 s (1 d 02:03:04)");
    }
}

TEST(PlotReadout, valuesHaveTheDigitsThatAFloatNeeds)
{
    const std::pair<double, const char*> cases[] = {{0.1F, "0.1"},
                                                    {16777217.0 - 1.0, "16777216"},
                                                    {123456.79F, "123456.79"},
                                                    {1.00000012F, "1.0000001"},
                                                    {1.0 / 3.0, "0.3333333"}};  // a mean, no float
    for (const auto& [value, text] : cases)
        EXPECT_EQ(valueText(value), text);
}

TEST(PlotReadout, differencesAreThoseOfTheNumbersAsWritten)
{
    EXPECT_EQ(differenceText(1.69F, 1.685F), "-0.005");
    EXPECT_EQ(differenceText(8.9F, 9.1F), "0.2");
    EXPECT_EQ(differenceText(16777215.0F, 16777216.0F), "1");
    EXPECT_EQ(differenceText(1e9 + 0.25, 1e9 + 0.5), "0.25");  // scaled: no float
    EXPECT_EQ(differenceText(std::nan(""), 1.0), "missing");
}

TEST_F(PlotCanvasTest, keysZoomAboutTheCursorAndTheReadOutFollowsTheView)
{
    plot().setCursor(Plot2D::A, 7.0);
    QTest::mouseMove(&m_canvas, at(4.0));
    QMouseEvent move(QEvent::MouseMove, at(4.0), m_canvas.mapToGlobal(at(4.0)), Qt::NoButton, Qt::NoButton,
                     {});
    QApplication::sendEvent(&m_canvas, &move);
    const QSignalSpy hovered(&m_canvas, &PlotCanvas::x_hovered);
    const int before = m_canvas.pixelOf(7.0);
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(&m_canvas, Qt::Key_Equal);
    EXPECT_NEAR(m_canvas.pixelOf(7.0), before, 1);
    ASSERT_EQ(hovered.count(), 5);
    EXPECT_NE(hovered.first(), hovered.last());
    m_canvas.grab();
    EXPECT_TRUE(m_canvas.accessibleDescription().contains(QStringLiteral(" [N], ")));
}

TEST_F(PlotCanvasTest, notesAreWrittenChangedAndRemovedInTheMarginAndByTheKeyboard)
{
    makeFile("a.ts", 1000);
    m_canvas.showColumns("a.ts", {1, 2});
    m_canvas.grab();
    const auto write = [&](const char* text, const std::function<void()>& open) {
        const BoxAnswer answer(QString(), [&](QWidget& dialog) {
            dialog.findChild<QLineEdit*>()->setText(QLatin1String(text));
            static_cast<QDialog&>(dialog).accept();
        });
        open();
    };
    const QPoint margin(m_canvas.plotArea().center().x(), m_canvas.plotArea().top() - 3);
    const auto doubleClick = [&] { QTest::mouseDClick(&m_canvas, Qt::LeftButton, {}, margin); };
    write("pump on", doubleClick);
    ASSERT_EQ(plot().notes.size(), 1U);
    EXPECT_NEAR(m_canvas.pixelOf(plot().notes[0].x), margin.x(), 1);
    const QImage with = m_canvas.image();
    write("pump off", doubleClick);
    ASSERT_EQ(plot().notes.size(), 1U);
    EXPECT_EQ(plot().notes[0].text, "pump off");
    m_canvas.placeCursor(Plot2D::A, plot().xAtFraction(0.25));
    write("valve", [&] { QTest::keyClick(&m_canvas, Qt::Key_N); });
    ASSERT_EQ(plot().notes.size(), 2U);
    EXPECT_EQ(plot().notes[1].x, *plot().cursor(Plot2D::A));
    write("", doubleClick);
    ASSERT_EQ(plot().notes.size(), 1U);
    EXPECT_EQ(plot().notes[0].text, "valve");
    EXPECT_NE(m_canvas.image(), with);
    // Another result in its place has it too, not one along another axis.
    m_canvas.showColumns("a.ts", {2});
    ASSERT_EQ(plot().notes.size(), 1U);
    m_canvas.showPlot(plotOfValues({1.0, 2.0}, "Frequency [Hz]", {{"gain", "", {1.0F, 2.0F}}}));
    EXPECT_TRUE(plot().notes.empty());
}

TEST_F(PlotCanvasTest, pictureHasTheSizeTheResolutionAndTheGroundThatWereAskedFor)
{
    makeFile("a.ts", 1000);
    m_canvas.showColumns("a.ts", {1});
    QPalette dark = m_canvas.palette();
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    m_canvas.setPalette(dark);
    PictureRequest request;
    request.widthMm = 101.6;
    request.heightMm = 50.8;
    request.dotsPerInch = 300;
    for (const bool asOnScreen : {true, false}) {
        request.isAsOnScreen = asOnScreen;
        ASSERT_EQ(writePlotPicture("plot.png", request, m_canvas, m_canvas.psParameters()), "");
        const QImage image("plot.png");
        EXPECT_EQ(image.size(), QSize(1200, 600));
        EXPECT_NEAR(image.dotsPerMeterX(), 300 / 0.0254, 1.0);
        EXPECT_EQ(image.pixelColor(1, 1), QColor(asOnScreen ? Qt::black : Qt::white));
    }
    EXPECT_EQ(pixelsOf(millimetresOf(901), 96), 901);
    request.format = PictureRequest::Format::Pdf;
    EXPECT_EQ(writePlotPicture("plot.pdf", request, m_canvas, m_canvas.psParameters()), "");
    const std::vector<unsigned char> page = bytesOf("plot.pdf");
    EXPECT_NE(std::string(page.begin(), page.end()).find("/MediaBox [0 0 288"), std::string::npos);
    request.format = PictureRequest::Format::Png;
    request.dotsPerInch = 1200;
    request.widthMm = 500.0;
    EXPECT_NE(pictureComplaint(request), "");
}

TEST_F(PlotCanvasTest, pictureIsSavedUnderTheNameThatIsChosenAndNoneWithoutOne)
{
    for (const char* const name : {"", "chosen.png"}) {
        std::unique_ptr<BoxAnswer> file;
        const BoxAnswer size(QStringLiteral("&Save as…"), [&](QWidget&) {
            file = std::make_unique<BoxAnswer>(
                QLatin1String(*name == 0 ? "&Cancel" : "&Save"),
                [&](QWidget& box) { box.findChild<QLineEdit*>()->setText(QLatin1String(name)); });
        });
        m_canvas.sl_savePicture();
        EXPECT_TRUE(file && file->wasAsked());
        EXPECT_EQ(m_directory.fileCount(), *name == 0 ? 1U : 2U);
    }
    EXPECT_FALSE(QImage("chosen.png").isNull());
}

TEST_F(PlotCanvasTest, fileThatShrinksUnderThePlotIsToldInThePicture)
{
    makeFile("long.ts", 200'000);
    m_canvas.showColumns("long.ts", {1, 2, 3});
    std::filesystem::resize_file("long.ts", 2048);
    plot().setX(150.0, 150.5);
    m_canvas.replot();
    m_canvas.grab();
    for (const int key : {Qt::Key_M, Qt::Key_Y, Qt::Key_F, Qt::Key_Plus, Qt::Key_A, Qt::Key_Period})
        QTest::keyClick(&m_canvas, static_cast<Qt::Key>(key));
    m_canvas.grab();
    // Nothing of it takes the place of a good picture.
    for (const char* const name : {"x.eps", "x.svg", "x.pdf", "plot.png"}) {
        std::ofstream(name) << "good";
        const QString file = QString::fromLatin1(name);
        QString failure;
        if (file == QLatin1String("plot.png")) {
            PictureRequest request;
            request.widthMm = request.heightMm = 100.0;
            failure = writePlotPicture(file, request, m_canvas, m_canvas.psParameters());
        } else if (!file.endsWith(QLatin1String("pdf"))) {
            failure = writePlotEps(file, m_canvas.psParameters(), plot(), m_canvas.colors(), true);
        } else {
            failure = writePlotPdf(file, QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, {}),
                                   plot(), m_canvas.colors());
        }
        EXPECT_TRUE(failure.contains(QStringLiteral("cannot be read any more"))) << name;
        EXPECT_EQ(bytesOf(name).size(), 4U) << name;
    }
    // Nor does a picture without any plot.
    m_canvas.showColumns("none.ts", {1});
    EXPECT_TRUE(writePlotEps("x.eps", m_canvas.psParameters(), plot(), m_canvas.colors(), true)
                    .contains(QStringLiteral("Nothing is shown")));
    EXPECT_EQ(bytesOf("x.eps").size(), 4U);
}

// -- The windows --

TEST(PlotWindow, showsEightColumnsAndFollowsTheCheckBoxes)
{
    const TestDirectory directory;
    TSFILE("wide.ts", 500, 12, 0).dt(1.0F);
    QPointer<QtPlotWin> window = new QtPlotWin(QStringLiteral("wide.ts"));
    window->show();
    EXPECT_EQ(window->canvas()->plot().variables().size(), 8U);
    auto* const tree = window->findChild<QTreeWidget*>();
    ASSERT_EQ(tree->topLevelItem(0)->childCount(), 12);
    tree->topLevelItem(0)->child(11)->setCheckState(0, Qt::Checked);
    tree->topLevelItem(0)->child(0)->setCheckState(0, Qt::Unchecked);
    tree->setCurrentItem(tree->topLevelItem(0)->child(11));
    QApplication::processEvents();
    EXPECT_EQ(tree->currentItem(), tree->topLevelItem(0)->child(11));
    int shown = 0;
    for (const auto& v : window->canvas()->plot().variables()) {
        shown += v->variable().visible ? 1 : 0;
        EXPECT_EQ(v->variable().visible, v->variable().column() != 1);
        EXPECT_TRUE(v->isBuilt());
    }
    EXPECT_EQ(shown, 8);
    QSignalSpy hovered(window->canvas(), &PlotCanvas::x_hovered);
    window->grab();
    window->canvas()->setMouse(window->canvas()->plotArea().center());
    const QStringList parts = hovered.last()[0].toString().split(QStringLiteral(",  "));
    EXPECT_EQ(parts.size(), 10);  // sample, time, seven values, and that there are more
    EXPECT_EQ(parts.last(), QStringLiteral("…"));
    emit window->canvas()->x_variable_dropped(2, -1);
    EXPECT_EQ(window->canvas()->plot().groups().size(), 2U);
    // What is shown again after nothing was comes into view.
    for (const Qt::CheckState state : {Qt::Unchecked, Qt::Checked}) {
        for (int i = 0; i < 12; ++i)
            tree->topLevelItem(0)->child(i)->setCheckState(0, state);
        QApplication::processEvents();
        if (state == Qt::Unchecked)
            window->canvas()->showRange(0.1, 0.9, 0);
    }
    EXPECT_EQ(window->canvas()->plot().x2(), 500.0);
    int gone = 0;
    QObject::connect(window, &SubWindow::windowGone, [&] { ++gone; });
    window->close();
    EXPECT_EQ(gone, 1);
}

TEST(PlotWindow, histogramAndXyPlotAreThoseOfTheIntervalAndCloseWithTheirWindow)
{
    const TestDirectory directory;
    makeFile("a.ts");
    QPointer<QtPlotWin> window = new QtPlotWin(QStringLiteral("a.ts"));
    window->show();
    PlotCanvas& canvas = *window->canvas();
    canvas.placeCursor(Plot2D::A, 1.001);
    canvas.placeCursor(Plot2D::B, 9.0);
    const Group::Variables all = canvas.plot().variables();
    openHistogram(*window, canvas, all[2]);
    openXyPlot(*window, canvas, all[0], all[1]);
    QPointer<HistogramWin> histogram;
    QPointer<XyWin> xy;
    for (QWidget* const top : QApplication::topLevelWidgets()) {
        if (auto* const one = qobject_cast<HistogramWin*>(top))
            histogram = one;
        if (auto* const one = qobject_cast<XyWin*>(top))
            xy = one;
    }
    ASSERT_TRUE(histogram && xy);
    EXPECT_EQ(histogram->histogram().total, 8000U);
    EXPECT_EQ(histogram->histogram().from, 1001.0);
    auto* const bins = histogram->findChild<QLineEdit*>();
    bins->setText(QStringLiteral("8"));
    histogram->sl_count();
    EXPECT_EQ(histogram->histogram().counts, (std::vector<std::uint64_t>(8, 1000)));
    bins->setText(QStringLiteral("8.5"));
    histogram->sl_count();
    EXPECT_EQ(histogram->histogram().counts.size(), 8U);
    EXPECT_EQ(xy->path().pairs(), 8000U);
    EXPECT_FALSE(xy->path().isThinned());
    for (QWidget* const opened : {static_cast<QWidget*>(histogram), static_cast<QWidget*>(xy)})
        EXPECT_FALSE(opened->grab().isNull());
    // What is being read again is not counted.
    bins->setText(QStringLiteral("8"));
    all[2]->forget();
    histogram->sl_count();
    EXPECT_TRUE(histogram->histogram().counts.empty());
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(histogram.isNull());
    EXPECT_TRUE(xy.isNull());
}

TEST(PlotWindow, lettersAreTheMenusWhileTheyHaveTheFocus)
{
    const TestDirectory directory;
    makeFile("test.ts");
    QtPlotWin window(QStringLiteral("test.ts"));
    window.show();
    QApplication::setActiveWindow(&window);
    window.menuBar()->setFocus();
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_M, Qt::Key_Plus, Qt::Key_Right})
        QTest::keyClick(window.menuBar(), key);
    EXPECT_FALSE(window.canvas()->plot().cursor(Plot2D::A));
    EXPECT_FALSE(window.canvas()->plot().canGoBack());
}

TEST(PlotWindow, changedFileIsToldAndLoadedAgain)
{
    const TestDirectory directory;
    makeFile("test.ts");
    QtPlotWin window(QStringLiteral("test.ts"));
    window.show();
    auto* const strip = window.findChild<NoticeStrip*>();
    window.sl_checkFiles();
    EXPECT_FALSE(strip->isVisible());
    makeFile("test.ts", 4000);
    window.sl_checkFiles();
    ASSERT_TRUE(strip->isVisible());
    EXPECT_EQ(strip->text(), QStringLiteral("test.ts has changed."));
    QTest::mouseClick(strip->findChild<QPushButton*>(), Qt::LeftButton);
    EXPECT_FALSE(strip->isVisible());
    EXPECT_EQ(window.canvas()->plot().variables()[0]->variable().rows(), 4000U);
    EXPECT_TRUE(window.canvas()->plot().variables()[0]->isBuilt());
    EXPECT_NEAR(window.canvas()->plot().x2(), 4.0, 1e-3);
    // Nobody asks any more: the window notices by itself what others do, and keeps what it has.
    makeFile("other.ts", 70);
    std::filesystem::rename("other.ts", "test.ts");
    EXPECT_TRUE(QTest::qWaitFor([&] { return strip->isVisible(); }, 5000));
    EXPECT_EQ(strip->text(), QStringLiteral("test.ts has changed."));
    std::filesystem::remove("test.ts");
    EXPECT_TRUE(QTest::qWaitFor([&] { return strip->text().startsWith("test.ts is gone"); }, 5000));
    EXPECT_TRUE(strip->findChild<QPushButton*>()->isHidden());
    EXPECT_EQ(window.canvas()->plot().variables()[0]->variable().rows(), 4000U);
    window.sl_follow(true);
    EXPECT_FALSE(strip->isVisible()) << "who follows tells it himself";
}

// Types a name into the file dialog that opens next.
BoxAnswer saveAs(const char* name)
{
    return BoxAnswer(QStringLiteral("&Save"), [name](QWidget& dialog) {
        dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromLatin1(name));
    });
}

TEST(PlotWindow, savesTheIntervalBetweenTheCursorsAndNeverOverItsOwnFile)
{
    const TestDirectory directory;
    makeFile("test.ts");
    QtPlotWin window(QStringLiteral("test.ts"));
    window.show();
    window.canvas()->plot().setCursor(Plot2D::A, 4.0);
    window.canvas()->plot().setCursor(Plot2D::B, 2.001);
    {
        const BoxAnswer answer = saveAs("part of it.ts");
        window.sl_saveInterval();
    }
    const PlotFile part("part of it.ts");
    EXPECT_EQ(part.rows(), 2000U);
    EXPECT_EQ(part.value(3, 1), 2001.0F);
    EXPECT_FLOAT_EQ(static_cast<float>(part.timeOf(2000)), 4.0F);
}

TEST(PlotWindow, noIntervalIsSavedOfAFileThatCouldNotBeRead)
{
    const TestDirectory directory;
    makeFile("test.ts");
    makeFile("good.ts", 10);
    QtPlotWin window(QStringLiteral("test.ts"));
    window.show();
    for (const auto& v : window.canvas()->plot().variables()) {
        v->forget();
        v->setFailure("cannot be read at byte 4096");
    }
    window.canvas()->sl_fitAll();
    const BoxAnswer answer(QStringLiteral("&Ok"));
    window.sl_saveInterval();
    EXPECT_EQ(PlotFile("good.ts").rows(), 10U);
    EXPECT_TRUE(answer.text().startsWith(QLatin1String("Nothing was saved: the column ")));
}

TEST(PlotWindow, cursorTableMeasuresBetweenTheCursors)
{
    const TestDirectory directory;
    makeFile("test.ts");
    QtPlotWin window(QStringLiteral("test.ts"));
    window.show();
    PlotCanvas& canvas = *window.canvas();
    canvas.plot().setCursor(Plot2D::A, 1.0);
    canvas.plot().setCursor(Plot2D::B, 1.5);
    emit canvas.x_cursors_changed();
    auto* const table = window.findChild<QTableWidget*>();
    QTRY_COMPARE(table->rowCount(), 3);
    // The ramp counts samples: 1000 at A, 1500 at B, all of them in between.
    QTRY_COMPARE(table->item(2, 2)->text(), QStringLiteral("1000"));
    const char* const expected[] = {"Column-03", "N", "1000", "1500", "500", "1000", "1500", "1250"};
    for (int c = 0; c < 8; ++c)
        EXPECT_EQ(table->item(2, c)->text().toStdString(), expected[c]);
    EXPECT_NEAR(table->item(2, 9)->text().toDouble(), std::sqrt(501.0 * 502.0 / 12.0), 1e-3);
    EXPECT_TRUE(cursorText(canvas.plot()).ends_with("Δt: 0.5 s     1/Δt: 2 Hz"));
}

TEST(PlotWindow, overviewMovesAndStretchesTheView)
{
    const TestDirectory directory;
    makeFile("test.ts");
    QtPlotWin window(QStringLiteral("test.ts"));
    window.show();
    window.grab();
    const Plot2D& plot = window.canvas()->plot();
    auto* const strip = window.findChild<OverviewStrip*>();
    window.canvas()->showRange(2.0, 4.0, 0);
    const int left =
        strip->mapFromGlobal(window.canvas()->mapToGlobal(window.canvas()->plotArea().topLeft())).x();
    const double second = window.canvas()->plotArea().width() / 10.0;
    const auto drag = [&](double from, double to) {
        const QPoint start(left + static_cast<int>(from * second), 20);
        const QPoint end(left + static_cast<int>(to * second), 20);
        QTest::mousePress(strip, Qt::LeftButton, {}, start);
        QMouseEvent move(QEvent::MouseMove, end, strip->mapToGlobal(end), Qt::LeftButton, Qt::LeftButton, {});
        QApplication::sendEvent(strip, &move);
        QTest::mouseRelease(strip, Qt::LeftButton, {}, end);
    };
    const struct
    {
        double from, to, x1, x2;
    } cases[] = {{3.0, 6.0, 5.0, 7.0}, {7.0, 9.0, 5.0, 9.0}, {7.0, 99.0, 6.0, 10.0}, {1.0, 2.0, 0.0, 4.0}};
    for (const auto& c : cases) {
        drag(c.from, c.to);
        EXPECT_NEAR(plot.x1(), c.x1, 0.06) << c.from << " to " << c.to;
        EXPECT_NEAR(plot.x2(), c.x2, 0.06) << c.from << " to " << c.to;
    }
    QTest::keyClick(window.canvas(), Qt::Key_Backspace);
    EXPECT_NEAR(plot.x1(), 6.0, 0.06);
    const auto shapeAt = [&](double x) {
        const QPoint place(left + static_cast<int>(x * second), 20);
        QMouseEvent move(QEvent::MouseMove, place, strip->mapToGlobal(place), Qt::NoButton, Qt::NoButton, {});
        QApplication::sendEvent(strip, &move);
        return strip->cursor().shape();
    };
    window.canvas()->showRange(4.0, 6.0, 0);
    const std::pair<double, Qt::CursorShape> shapes[] = {{1.0, Qt::ArrowCursor},
                                                         {4.0, Qt::SizeHorCursor},
                                                         {5.0, Qt::OpenHandCursor},
                                                         {6.0, Qt::SizeHorCursor},
                                                         {7.0, Qt::ArrowCursor}};
    for (const auto& [x, shape] : shapes)
        EXPECT_EQ(shapeAt(x), shape) << x;
    QWheelEvent wheel({left + 1.0, 20.0}, strip->mapToGlobal(QPoint(left + 1, 20)), QPoint(), QPoint(0, 240),
                      Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(strip, &wheel);
    EXPECT_NEAR(plot.x2() - plot.x1(), 2.0 / (1.25 * 1.25), 1e-6);
    EXPECT_NEAR(plot.x1() + plot.x2(), 10.0, 1e-6);
    // A frame of ten pixels is moved by its edges too.
    const double narrow = 10.0 / second;
    window.canvas()->showRange(3.0, 3.0 + narrow, 0);
    drag(3.0 + 2.0 / second, 5.0);
    EXPECT_NEAR(plot.x2() - plot.x1(), narrow, 1e-6);
    EXPECT_NEAR(plot.x1(), 5.0, 3.0 / second);
    QTest::mouseDClick(strip, Qt::LeftButton, {}, {left + 5, 20});
    EXPECT_NEAR(plot.x2(), 10.0, 1e-6);
}

TEST(PlotWindow, overviewHasALaneForEachOfTheFirstSixAxesAndShowsTheWholeSeries)
{
    const TestDirectory directory;
    constexpr int kLanes = 6;
    {
        TSFILE file("wide.ts", 4000, 8, 0);
        for (std::uint32_t s = 1; s <= 4000; ++s)
            for (std::uint32_t c = 1; c <= 8; ++c)
                file.setValue(s, c, static_cast<float>(s % 2 + (s == 3000 ? 3 : 0)));
    }
    PlotCanvas canvas;
    OverviewStrip strip(&canvas);
    canvas.resize(800, 900);
    strip.resize(800, 74);
    canvas.showColumns(QStringLiteral("wide.ts"), {1, 2, 3, 4, 5, 6, 7, 8}, PlotCanvas::Axes::OneEach);
    canvas.image();
    canvas.showRange(canvas.plot().x1(), canvas.plot().xAtFraction(0.5), 0);
    const QImage image = strip.grab().toImage();
    const auto inkOf = [&](std::size_t variable) {
        QRect ink;
        const QColor color = canvas.colorOf(canvas.plot().variables()[variable]->variable());
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width() / 2; ++x)  // where no shade lies
                if (image.pixel(x, y) == color.rgb())
                    ink |= QRect(x, y, 1, 1);
        return ink;
    };
    const double lane = 70.0 / kLanes;
    for (std::size_t i = 0; i < kLanes; ++i) {
        const QRect ink = inkOf(i);
        EXPECT_GE(ink.top(), 2.0 + lane * static_cast<double>(i)) << i;
        EXPECT_LE(ink.bottom(), 2.0 + lane * static_cast<double>(i + 1)) << i;
        // All but the one sample of the second half are in its lower third.
        EXPECT_GT(ink.top(), 2.0 + lane * (static_cast<double>(i) + 0.4)) << i;
    }
    EXPECT_TRUE(inkOf(7).isEmpty());
    // The one sample, three quarters of the way along.
    const QRect area = canvas.plotArea();
    const int above = 2 + static_cast<int>(0.3 * lane);
    const auto isBare = [&](double part) {
        const int x = area.left() + static_cast<int>(part * area.width());
        int marked = 0;
        for (int beside = x - 2; beside <= x + 2; ++beside)
            marked += image.pixel(beside, above) != image.pixel(area.left() + area.width() * 9 / 10, above);
        return marked == 0;
    };
    EXPECT_FALSE(isBare(0.75));
    EXPECT_TRUE(isBare(0.6) && isBare(0.85));
}

TEST(PlotWindow, colourDialogChangesTheColourOfItsOwnVariable)
{
    const TestDirectory directory;
    makeFile("test.ts");
    QtPlotWin window(QStringLiteral("test.ts"));
    window.show();
    const Group::Variables all = window.canvas()->plot().variables();
    all[0]->variable().visible = false;  // rows and variables do not agree any more
    window.findChild<VariableMenu*>()->editColors();
    ColorConfigDialog* dialog = nullptr;
    for (QWidget* const widget : QApplication::topLevelWidgets())
        if (auto* const found = qobject_cast<ColorConfigDialog*>(widget))
            dialog = found;
    ASSERT_NE(dialog, nullptr);
    const QColor second = window.canvas()->colorOf(all[1]->variable());
    {
        const BoxAnswer answer(QString(), [](QWidget& box) {
            auto& chooser = dynamic_cast<QColorDialog&>(box);
            chooser.setCurrentColor(QColor(1, 2, 3));
            chooser.accept();
        });
        dialog->sl_colorselected(2);
    }
    EXPECT_EQ(window.canvas()->colorOf(all[2]->variable()), QColor(1, 2, 3));
    EXPECT_EQ(window.canvas()->colorOf(all[1]->variable()), second);
    dialog->close();
    EXPECT_NE(window.canvas()->colorOf(all[2]->variable()), QColor(1, 2, 3));
}

TEST(PlotWindow, secondFileIsAlignedWithTheFirst)
{
    const TestDirectory directory;
    makeFile("one.ts");
    makeFile("two.ts", 500);
    TSFILE("two.ts", false).startTime(100.0F);
    QtPlotWin window(QStringLiteral("one.ts"));
    window.show();
    emit window.canvas()->x_files_dropped({QStringLiteral("two.ts")});
    const Plot2D& plot = window.canvas()->plot();
    EXPECT_EQ(plot.variables().size(), 6U);
    EXPECT_NEAR(plot.x2(), 100.5, 1e-3);
    for (QPushButton* const button : window.findChildren<QPushButton*>())
        if (button->text() == QLatin1String("A&lign start"))
            button->click();
    EXPECT_NEAR(plot.x2(), 10.0, 1e-3);
    EXPECT_NEAR(plot.axis().xOf(plot.variables().back()->variable(), 1), 0.001, 1e-6);
    // Its own menu takes the second one away again.
    auto* const tree = window.findChild<QTreeWidget*>();
    const auto choose = [&](Qt::Key letter) {
        QTimer::singleShot(0, [letter] { QTest::keyClick(QApplication::activePopupWidget(), letter); });
        emit tree->customContextMenuRequested(tree->visualItemRect(tree->topLevelItem(1)).center());
        QApplication::processEvents();
    };
    choose(Qt::Key_H);
    EXPECT_FALSE(plot.variables().back()->variable().visible);
    choose(Qt::Key_R);
    EXPECT_EQ(plot.variables().size(), 3U);
    EXPECT_EQ(tree->topLevelItemCount(), 1);
}

TEST(PlotWindow, unreadableAndHostileFilesAreToldInTheWindow)
{
    const TestDirectory directory;
    std::ofstream("junk.ts") << "no ts-file at all";
    TsHeader header;
    header.samples = 0x7FFFFFFF;
    header.columns = 0x7FFFFFFF;
    Block head{};
    encodeHeader(header, 0, ByteOrder::Native, head);
    std::ofstream("lies.ts", std::ios::binary).write(reinterpret_cast<const char*>(head.data()), 512);
    TSFILE("empty.ts", 0, 2, 0).flush(true);
    const std::pair<const char*, const char*> cases[] = {
        {"none.ts", "none.ts cannot be read."},
        {"junk.ts", "junk.ts cannot be read."},
        {"lies.ts", "lies.ts is cut short: 0 of its 2147483647 samples are there."},
        {"empty.ts", "empty.ts has no times that rise: sample numbers are shown."}};
    for (const auto& [name, said] : cases) {
        QtPlotWin window(QString::fromLatin1(name));
        window.show();
        window.grab();
        EXPECT_EQ((window.statusBar()->currentMessage() + window.findChildren<NoticeStrip*>()[1]->text())
                      .toStdString(),
                  said);
        QTest::keyClick(window.canvas(), Qt::Key_F);
        QtPlotColWin column(QString::fromLatin1(name), 1);
        column.show();
        column.grab();
    }
}

TEST(PlotWindow, timesThatRunBackwardsAreTold)
{
    const TestDirectory directory;
    {
        TSFILE file("back.ts", 100, 1, 1);
        for (std::uint32_t s = 1; s <= 100; ++s)
            file.setValue(s, 1, static_cast<float>(s == 50 ? 0 : s));
    }
    QtPlotWin window(QStringLiteral("back.ts"));
    window.show();
    EXPECT_EQ(window.canvas()->plot().axis().mode, XMode::Sample);
    EXPECT_TRUE(window.findChildren<NoticeStrip*>()[1]->isVisible());
}

// What a computing window takes from the plot that opens it.
class RangeWindow : public SubWindow
{
public:
    void offerRange(const SampleRange& offered) override { range = offered; }
    SampleRange range;
};

class RangeApplication : public TsApplication
{
public:
    explicit RangeApplication(RangeWindow* window) : m_window(window) { setInstance(this); }
    ~RangeApplication() { setInstance(nullptr); }
    QWidget* openSubProgram(SubProgram, const QString&, unsigned) override { return m_window; }

private:
    RangeWindow* m_window;
};

TEST(PlotWindow, subProgramsBeginWithTheIntervalOrTheView)
{
    const TestDirectory directory;
    {
        // A ring that has come round: samples 7001 to 17000, which the windows count from 1.
        TSFILE file("ring.ts", 10'000, 1, 0);
        file.dt(0.5F);
        file.setRingMode(true);
        const float value = 1.0F;
        for (std::uint32_t s = 1; s <= 17'000; ++s)
            file.writeRow(s, &value, true);
    }
    RangeWindow opened;
    const RangeApplication application(&opened);
    QtPlotWin window(QStringLiteral("ring.ts"));
    window.show();
    Plot2D& plot = window.canvas()->plot();
    const auto openFilter = [&] {
        QTimer::singleShot(0, [] {
            auto* const menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_NE(menu, nullptr);
            for (QAction* const action : menu->actions())
                if (action->text() == QStringLiteral("Ts-F&ilt…"))
                    action->trigger();
            menu->close();
        });
        window.findChild<VariableMenu*>()->popUp(plot.variables()[0], QPoint(10, 10));
    };
    plot.setX(3600.2, 3700.0);
    openFilter();
    EXPECT_EQ(opened.range.first, 201U);
    EXPECT_EQ(opened.range.last, 400U);
    plot.setCursor(Plot2D::A, 3650.0);
    plot.setCursor(Plot2D::B, 3640.0);
    openFilter();
    EXPECT_EQ(opened.range.first, 280U);
    EXPECT_EQ(opened.range.last, 300U);
}

TEST(PlotColumnWindow, stepsThroughTheColumns)
{
    const TestDirectory directory;
    makeFile("test.ts");
    QtPlotColWin window(QStringLiteral("test.ts"), 2);
    window.show();
    EXPECT_EQ(window.column(), 2U);
    window.canvas()->showRange(2.0, 3.0, 0);
    QApplication::setActiveWindow(&window);
    QTest::keyClick(&window, Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(window.column(), 3U);
    EXPECT_EQ(window.canvas()->plot().reference()->variable().column(), 3U);
    EXPECT_EQ(window.canvas()->plot().x1(), 2.0);
    {
        const BoxAnswer answer = saveAs("copy.ts");
        window.sl_saveAs();
    }
    EXPECT_EQ(bytesOf("copy.ts"), bytesOf("test.ts"));
    QTest::keyClick(&window, Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(window.column(), 3U);
}

}  // namespace
