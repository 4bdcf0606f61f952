// The derivative, integral and FFT windows as a person uses them.

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <optional>

#include "calc/DFTWin.h"
#include "calc/DerivativeWin.h"
#include "calc/IntegrateWin.h"
#include "calc/PeakTable.h"
#include "core/TSFILE.h"
#include "share/CursorTable.h"
#include "share/NoticeStrip.h"
#include "share/PlotCanvas.h"
#include "share/ReadoutLabel.h"
#include "share/SourceChooser.h"
#include "tests/BoxAnswer.h"
#include "tests/Desk.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

// A directory with a.ts, a tone of 5 Hz and amplitude 2 at 100 Hz, and a scratch directory of its own.
class CalcWindows : public testing::Test
{
protected:
    CalcWindows()
    {
        std::filesystem::create_directory("scratch");
        setenv("TMPDIR", std::filesystem::absolute("scratch").c_str(), 1);
        TSFILE file("a", 2000, 2, 0);
        file.dt(0.01F);
        file.columnName(2, "Tone");
        file.columnDescription(2, "A tone [V]");
        for (std::uint32_t s = 1; s <= 2000; ++s)
            file.setValue(s, 2, static_cast<float>(2.0 * std::sin(2.0 * std::numbers::pi * 5.0 * s * 0.01)));
    }
    ~CalcWindows() override { unsetenv("TMPDIR"); }
    static std::size_t scratchFiles()
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("scratch"),
                                                      std::filesystem::directory_iterator()));
    }
    // Closes a window and lets it delete itself.
    static bool close(QWidget* window)
    {
        const QPointer<QWidget> watched(window);
        window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return watched.isNull();
    }

    const TestDirectory m_directory;
    Desk m_desk;
};

// Types a name into the file dialog that opens next and accepts it.
void typeName(QWidget& dialog, const char* name)
{
    auto* const files = qobject_cast<QFileDialog*>(&dialog);
    ASSERT_NE(files, nullptr);
    files->findChild<QLineEdit*>()->setText(QDir().absoluteFilePath(QLatin1String(name)));
}

QLineEdit& fieldOf(const QWidget& window, const char* name)
{
    for (QLineEdit* const field : window.findChildren<QLineEdit*>())
        if (field->accessibleName() == QLatin1String(name))
            return *field;
    throw std::logic_error(name);
}

}  // namespace

TEST_F(CalcWindows, ResultIsSavedIntoAnExistingFileAndTheScratchFileGoes)
{
    TSFILE("target", 1000, 3, 0).setValue(1, 3, 3.0F);
    auto* const window = new DerivativeWin(QStringLiteral("a.ts"), 2);
    window->show();
    EXPECT_EQ(window->statusBar()->currentMessage(), "Welcome to Ts-Derivate");
    window->sl_execute();
    EXPECT_EQ(window->statusBar()->currentMessage(), "Computing...finished");
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(scratchFiles(), 2U);
    const BoxAnswer save(QStringLiteral("&Save"), [](QWidget& dialog) { typeName(dialog, "target"); });
    window->sl_saveResults();
    TSFILE target("target", true);
    EXPECT_EQ(target.dt(), 0.01F);
    EXPECT_STREQ(target.columnName(1), "Tone");
    EXPECT_STREQ(target.columnName(2), "d(col1)/dt");
    EXPECT_STREQ(target.columnDescription(2), "d(Tone)/dt [V/s]");
    EXPECT_NEAR(target.value(20, 2), 2.0 * 2.0 * std::numbers::pi * 5.0, 2.0);
    EXPECT_EQ(target.value(1, 3), 3.0F);
    // A file that was just made can be chosen at once, and the cursors are read off beside the canvas.
    TSFILE("fresh", 1, 1, 0);
    emit window->x_directory_changed();
    EXPECT_GE(window->findChild<FileCombo*>()->findText(QStringLiteral("fresh.ts")), 0);
    EXPECT_TRUE(window->findChild<CursorTable*>()->isVisible());
    EXPECT_TRUE(close(window));
    EXPECT_EQ(scratchFiles(), 0U);
}

TEST_F(CalcWindows, WhatIsNotSavedIsAskedAboutAndNoLeavesNothing)
{
    TSFILE("a", false).setValue(7, 2, NAN);
    auto* const window = new IntegrateWin(QStringLiteral("a.ts"), 2);
    window->show();
    window->sl_execute();
    EXPECT_TRUE(window->findChild<ReadoutLabel*>()->text().contains(QStringLiteral("missing values. After")));
    EXPECT_EQ(window->statusBar()->currentMessage(), "Filtering...finished");
    const BoxAnswer no(QStringLiteral("&No"));
    EXPECT_TRUE(close(window));
    EXPECT_EQ(no.title(), "Ts-Integrate");
    EXPECT_EQ(no.text(), "Do you want to save the results?");
    EXPECT_EQ(scratchFiles(), 0U);
}

TEST_F(CalcWindows, SourcesAndTargetsThatCannotServeAreRefused)
{
    TSFILE("nodt", 10, 1, 0);
    TSFILE("narrow", 10, 1, 0);
    auto* const window = new DerivativeWin(QStringLiteral("nodt.ts"), 1);
    window->show();
    {
        const BoxAnswer told(QStringLiteral("Ok"));
        window->sl_execute();
        EXPECT_TRUE(told.text().contains(QStringLiteral("sample time")));
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
        EXPECT_EQ(scratchFiles(), 0U);
    }
    EXPECT_TRUE(close(window));
    TSFILE("none", 10, 0, 0);
    const auto says = [](const DFTWin& spectrum, const char* text) {
        const QList<QLabel*> labels = spectrum.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [text](const QLabel* label) { return label->text() == QLatin1String(text); });
    };
    EXPECT_TRUE(
        says(DFTWin(QStringLiteral("none.ts"), 0), "The file has no column that can be transformed."));
    const DFTWin shortest(QStringLiteral("a.ts"), 2);
    for (const int last : {1, 2}) {
        fieldOf(shortest, "To sample").setText(QString::number(last));
        EXPECT_EQ(says(shortest, "The range holds fewer than 2 samples."), last == 1);
    }

    auto* const other = new DerivativeWin(QStringLiteral("a.ts"), 2);
    other->sl_execute();
    const auto narrow = bytesOf("narrow.ts");
    for (const char* const target : {"narrow.ts", "a.ts"}) {
        int box = 0;
        QString asked;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            QWidget* const dialog = QApplication::activeModalWidget();
            if (auto* const files = qobject_cast<QFileDialog*>(dialog); files != nullptr && box == 0) {
                box = 1;
                typeName(*files, target);
                QMetaObject::invokeMethod(files, "accept");
            } else if (auto* const message = qobject_cast<QMessageBox*>(dialog)) {
                asked = message->text();
                message->reject();
            }
        });
        timer.start(5);
        other->sl_saveResults();
        EXPECT_TRUE(
            asked.contains(QLatin1String(target[0] == 'a' ? "source file itself" : "only one column")));
    }
    EXPECT_EQ(bytesOf("narrow.ts"), narrow);
    EXPECT_EQ(TSFILE("a", true).value(100, 1), 0.0F);
    delete other;
}

TEST_F(CalcWindows, SpectrumStandsInAScratchFileOfItsOwnAndIsSavedWhole)
{
    std::ofstream("tempDFT.ts") << "user's";
    auto* const window = new DFTWin(QStringLiteral("a.ts"), 2);
    window->show();
    window->sl_execute();
    EXPECT_TRUE(std::filesystem::exists("tempDFT_1.ts"));
    auto* const peaks = window->findChild<PeakTable*>()->findChild<QTableWidget*>();
    ASSERT_GE(peaks->rowCount(), 1);
    EXPECT_NEAR(peaks->item(0, 0)->text().toDouble(), 5.0, 1e-3);
    EXPECT_NEAR(peaks->item(0, 1)->text().toDouble(), 0.2, 1e-4);  // s
    EXPECT_NEAR(peaks->item(0, 2)->text().toDouble(), 2.0, 1e-3);
    EXPECT_NEAR(peaks->item(0, 3)->text().toDouble(), -72.0, 0.1);  // a sine, a sample before its period
    {
        const BoxAnswer save(QStringLiteral("&Save"), [](QWidget& dialog) { typeName(dialog, "a_fft.ts"); });
        window->sl_saveResults();
    }
    TSFILE spectrum("a_fft", true);
    EXPECT_EQ(spectrum.samples(), 1000U);
    EXPECT_STREQ(spectrum.timeUnit(), "Frequency[Hz]");
    EXPECT_STREQ(spectrum.columnDescription(2), "Amplitude of Tone [V]");
    EXPECT_NEAR(spectrum.value(100, 2), 2.0, 1e-4);
    EXPECT_TRUE(close(window));
    EXPECT_FALSE(std::filesystem::exists("tempDFT_1.ts"));
    EXPECT_EQ(bytesOf("tempDFT.ts").size(), 6U);
}

TEST_F(CalcWindows, SpectrumAsksAboutMissingValuesAndTellsWhatItCannotDo)
{
    TSFILE("a", false).setValue(77, 2, NAN);
    DFTWin window(QStringLiteral("a.ts"), 2);
    {
        const BoxAnswer cancel(QStringLiteral("Cancel"));
        window.sl_execute();
        EXPECT_EQ(cancel.text(), "Column Tone has 1 missing value in the range.");
    }
    EXPECT_FALSE(std::filesystem::exists("tempDFT.ts"));
    {
        const BoxAnswer go(QStringLiteral("Interpolate"));
        window.sl_execute();
    }
    EXPECT_TRUE(std::filesystem::exists("tempDFT.ts"));
    fieldOf(window, "To sample").setText(QStringLiteral("1"));
    bool told = false;
    for (const QLabel* const label : window.findChildren<QLabel*>())
        told = told || label->text() == QLatin1String("The range holds fewer than 2 samples.");
    EXPECT_TRUE(told);
}

TEST_F(CalcWindows, FullDiskLeavesNoScratchFileAndNoHalfResult)
{
    auto* const derivative = new DerivativeWin(QStringLiteral("a.ts"), 2);
    auto* const spectrum = new DFTWin(QStringLiteral("a.ts"), 2);
    {
        const FileSizeLimit full(2048);
        derivative->sl_execute();
        EXPECT_EQ(scratchFiles(), 0U);
        const BoxAnswer told(QStringLiteral("Ok"));
        spectrum->sl_execute();
        EXPECT_TRUE(told.wasAsked());
    }
    EXPECT_FALSE(std::filesystem::exists("tempDFT.ts"));
    // Both can do it now, and the wait cursor of the failure is gone.
    derivative->sl_execute();
    spectrum->sl_execute();
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    {
        const FileSizeLimit full(2048);
        std::optional<BoxAnswer> told;
        const BoxAnswer save(QStringLiteral("&Save"), [&told](QWidget& dialog) {
            typeName(dialog, "a_fft.ts");
            told.emplace(QStringLiteral("OK"));
        });
        spectrum->sl_saveResults();
        EXPECT_TRUE(told && told->wasAsked());
        EXPECT_FALSE(std::filesystem::exists("a_fft.ts"));
        const BoxAnswer no(QStringLiteral("&No"));
        EXPECT_TRUE(close(spectrum));
        EXPECT_EQ(no.text(), "Do you want to save the results?");
    }
    delete derivative;
    EXPECT_EQ(scratchFiles(), 0U);
}

TEST_F(CalcWindows, ChoicesOfTheSpectrumOutliveAnotherColumnAndTheNextCalculation)
{
    DFTWin window(QStringLiteral("a.ts"), 2);
    QLineEdit& to = fieldOf(window, "To sample");
    to.setText(QStringLiteral("10 s"));  // sample 1000
    window.sl_execute();
    for (QAction* const action : window.findChildren<QAction*>())
        if (action->text().remove(QLatin1Char('&')) == QLatin1String("Logarithmic frequency"))
            action->trigger();
    auto* const canvas = window.findChild<PlotCanvas*>();
    EXPECT_TRUE(canvas->plot().axis().logarithmic);
    for (QComboBox* const box : window.findChildren<QComboBox*>())
        if (box->accessibleName() == QLatin1String("Source column"))
            box->setCurrentIndex(0);
    EXPECT_EQ(to.text(), "10 s");
    window.sl_execute();
    EXPECT_TRUE(canvas->plot().axis().logarithmic);
    EXPECT_EQ(TSFILE("tempDFT", true).samples(), 500U);
}

TEST_F(CalcWindows, AFailedOrRefusedCalculationLeavesTheLastResultToBeAskedAbout)
{
    const std::pair<ResultWindow*, const char*> windows[] = {
        {new DerivativeWin(QStringLiteral("a.ts"), 2), "d(col1)/dt"},
        {new IntegrateWin(QStringLiteral("a.ts"), 2), "Int(col1)/dt"},
        {new DFTWin(QStringLiteral("a.ts"), 2), "Amplitude"},
    };
    for (const auto& [window, column] : windows) {
        SCOPED_TRACE(column);
        window->sl_execute();
        {
            const FileSizeLimit full(2048);
            const BoxAnswer answer(QStringLiteral("Ok"));
            window->sl_execute();
        }
        if (dynamic_cast<DFTWin*>(window)) {
            EXPECT_EQ(window->statusBar()->currentMessage().toStdString(),
                      "Nothing was computed; the last result is still there");
        }
        EXPECT_EQ(window->findChild<PlotCanvas*>()->plot().variables().size(),
                  dynamic_cast<DFTWin*>(window) ? 1U : 2U);
        {
            TSFILE("a", false).setValue(77, 2, NAN);
            const BoxAnswer cancel(QStringLiteral("Cancel"));
            if (dynamic_cast<DFTWin*>(window))
                window->sl_execute();
            TSFILE("a", false).setValue(77, 2, 0.0F);
        }
        const BoxAnswer no(QStringLiteral("&No"));
        EXPECT_TRUE(close(window));
        EXPECT_EQ(no.text(), "Do you want to save the results?");
    }
    EXPECT_EQ(scratchFiles(), 0U);
    EXPECT_FALSE(std::filesystem::exists("tempDFT.ts"));
}

// Waits for what a window tells of its source by itself.
bool isTold(const QWidget& window, const char* text)
{
    const auto* const strip = window.findChild<NoticeStrip*>();
    const auto isShown = [&] { return !strip->isHidden() && strip->text().startsWith(QLatin1String(text)); };
    return QTest::qWaitFor(isShown, 20'000);
}

TEST_F(CalcWindows, SourceThatAnotherProgramChangesIsToldAndTheJobRefusesOrTakesWhatIsThere)
{
    const std::pair<ResultWindow*, const char*> windows[] = {
        {new DerivativeWin(QStringLiteral("a.ts"), 2), "No file of yours was changed."},
        {new IntegrateWin(QStringLiteral("a.ts"), 2), "No file of yours was changed."},
        {new DFTWin(QStringLiteral("a.ts"), 2), "a.ts could not be read to its end."}};
    const auto intact = bytesOf("a.ts");
    for (const auto& [window, refusal] : windows) {
        SCOPED_TRACE(window->windowTitle().toStdString());
        window->show();
        TSFILE("a", false).setValue(9, 2, 7.0F);
        EXPECT_TRUE(isTold(*window, "a.ts has changed and was read again."));
        window->sl_execute();
        EXPECT_TRUE(window->findChild<NoticeStrip*>()->isHidden());
        // Replaced by a shorter one with another column: the fields follow.
        {
            TSFILE made("other", 700, 1, 0);
            made.dt(0.01F);
            made.columnName(1, "Else");
        }
        std::filesystem::rename("other.ts", "a.ts");
        EXPECT_TRUE(isTold(*window, "a.ts has changed since the calculation."));
        EXPECT_EQ(window->findChild<ColumnCombo*>()->currentText(), "Else");
        // Cut in the middle of its values.
        std::filesystem::resize_file("a.ts", 1500);
        {
            const BoxAnswer box(QStringLiteral("Ok"));
            window->sl_execute();
            EXPECT_TRUE(box.text().endsWith(QLatin1String(refusal))) << box.text().toStdString();
        }
        std::filesystem::remove("a.ts");
        EXPECT_TRUE(isTold(*window, "a.ts is gone; the result is of what it held."));
        window->sl_execute();
        EXPECT_EQ(window->statusBar()->currentMessage(), "a.ts could not be opened");
        std::ofstream("a.ts", std::ios::binary)
            .write(reinterpret_cast<const char*>(intact.data()), static_cast<std::streamsize>(intact.size()));
        EXPECT_TRUE(isTold(*window, "a.ts has changed since the calculation."));
        const BoxAnswer no(QStringLiteral("&No"));
        EXPECT_TRUE(close(window));
    }
}

TEST_F(CalcWindows, WithoutASourceNothingIsAskedAndSavingTellsWhatItNeeds)
{
    DerivativeWin window(QStringLiteral("a.ts"), 2);
    window.sl_execute();
    {
        const BoxAnswer save(QStringLiteral("&Save"), [](QWidget& dialog) { typeName(dialog, "nowhere"); });
        window.sl_saveResults();
    }
    EXPECT_TRUE(window.statusBar()->currentMessage().contains(
        QStringLiteral("an existing ts-file with two columns and 2 000 samples; F2")));
    EXPECT_FALSE(std::filesystem::exists("nowhere.ts"));
    std::filesystem::remove("a.ts");
    IntegrateWin bare;
    const BoxAnswer box(QStringLiteral("Ok"));
    bare.sl_execute();
    EXPECT_EQ(bare.statusBar()->currentMessage(), "No source file available");
    QTest::qWait(20);
    EXPECT_FALSE(box.wasAsked());
}

TEST_F(CalcWindows, OwnTimesOfTheSourceAreToldAndUsedWhereTheyAreChosen)
{
    {
        TSFILE timed("timed", 100, 1, 1);
        timed.dt(1.0F);
        for (std::uint32_t s = 1; s <= 100; ++s) {
            timed.setValue(s, 1, static_cast<float>(2 * s));
            timed.setValue(s, 2, static_cast<float>(6 * s));
        }
    }
    DerivativeWin window(QStringLiteral("timed.ts"), 2);
    window.show();
    auto* const own = window.findChild<QCheckBox*>();
    for (const bool isOwn : {false, true}) {
        own->setChecked(isOwn);
        window.sl_execute();
        const QString told = window.findChild<ReadoutLabel*>()->text();
        EXPECT_TRUE(told.contains(isOwn ? QStringLiteral("by the file's own times")
                                        : QStringLiteral("own times (\"Time\") are not used")))
            << told.toStdString();
        EXPECT_EQ(window.findChild<PlotCanvas*>()->plot().variables().back()->variable().value(50),
                  isOwn ? 3.0 : 6.0);
    }
}

TEST_F(CalcWindows, LevelsInDecibelStandOnALinearAxisAndHaveNoMeans)
{
    DFTWin window(QStringLiteral("a.ts"), 2);
    window.sl_execute();
    for (QAction* const action : window.findChildren<QAction*>())
        if (action->text().remove(QLatin1Char('&')).startsWith(QLatin1String("Logarithmic ")))
            action->trigger();
    const Plot2D& plot = window.findChild<PlotCanvas*>()->plot();
    EXPECT_TRUE(plot.groups().front().isLogarithmic());
    EXPECT_LE(plot.x1(), 0.05 * 1.0001) << "the first bin is in view";
    window.findChild<QCheckBox*>()->setChecked(true);
    window.sl_execute();
    EXPECT_FALSE(plot.groups().front().isLogarithmic());
    EXPECT_TRUE(plot.axis().logarithmic);
    const std::vector<IntervalRow> rows = intervalRows(plot);
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0].variable->variable().unit, "dB re 1 V");
    const IntervalFields fields = intervalFields(plot, rows[0]);
    for (const char* const name : {"mean", "RMS", "deviation"})
        for (std::size_t c = 0; c < fields.size(); ++c)
            EXPECT_TRUE(
                !QString::fromUtf8(kIntervalHeadings[c]).contains(QLatin1String(name), Qt::CaseInsensitive) ||
                fields[c].empty())
                << name;
}

TEST_F(CalcWindows, SecondColumnIsRefusedOverOneSegmentAndComparedOverMore)
{
    DFTWin window(QStringLiteral("a.ts"), 2);
    window.show();
    const auto box = [&](const char* name) -> QComboBox& {
        for (QComboBox* const combo : window.findChildren<QComboBox*>())
            if (combo->accessibleName() == QLatin1String(name))
                return *combo;
        throw std::logic_error(name);
    };
    const auto told = [&](const char* text) {
        const QList<QLabel*> labels = window.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->isVisible() && label->text().contains(QLatin1String(text));
        });
    };
    const QList<QCheckBox*> checks = window.findChildren<QCheckBox*>();
    (*std::find_if(checks.begin(), checks.end(), [](const QCheckBox* check) {
        return check->text() == QLatin1String("Seco&nd column");
    }))->setChecked(true);
    EXPECT_TRUE(told("over a single one, every coherence is 1"));
    window.sl_execute();
    EXPECT_TRUE(window.findChild<PlotCanvas*>()->plot().variables().empty());

    box("Method").setCurrentText(QStringLiteral("Averaged segments"));
    box("Segment length").setCurrentText(QStringLiteral("500"));
    box("Second column").setCurrentIndex(1);  // the tone with itself
    window.sl_execute();
    const auto& groups = window.findChild<PlotCanvas*>()->plot().groups();
    ASSERT_EQ(groups.size(), 3U);  // gain with its band, phase with its band, coherence
    EXPECT_EQ(groups[0].variables().size(), 3U);
    EXPECT_NEAR(groups[0].variables()[0]->variable().value(25), 1.0, 1e-6);  // 5 Hz
    EXPECT_NEAR(groups[2].variables()[0]->variable().value(25), 1.0, 1e-6);

    box("Method").setCurrentText(QStringLiteral("Correlation"));
    fieldOf(window, "Lags up to [s]").setText(QStringLiteral("0,25"));
    window.sl_execute();
    EXPECT_EQ(window.findChild<PlotCanvas*>()->plot().variables().at(0)->variable().rows(), 51U);
    EXPECT_TRUE(told("at a lag of 0 s"));
}

TEST_F(CalcWindows, SpectrogramShowsTheSpectrumAndTheCourseWhereItIsClicked)
{
    DFTWin window(QStringLiteral("a.ts"), 2);
    window.show();
    for (QComboBox* const combo : window.findChildren<QComboBox*>()) {
        if (combo->accessibleName() == QLatin1String("Method"))
            combo->setCurrentText(QStringLiteral("Spectrogram"));
        if (combo->accessibleName() == QLatin1String("Segment length"))
            combo->setCurrentText(QStringLiteral("256"));
    }
    window.sl_execute();
    auto* const canvas = window.findChild<PlotCanvas*>();
    ASSERT_FALSE(canvas->plot().groups().empty());
    ASSERT_TRUE(canvas->plot().groups()[0].image);
    // A tone of 5 Hz, 100 Hz in all: a light line where it is, dark elsewhere.
    const QImage shown = canvas->image();
    const QRect area = canvas->groupArea(0);
    const int tone = area.bottom() - area.height() * 5 / 50;
    const int x = area.center().x();
    EXPECT_GT(qGray(shown.pixel(x, tone)), 200);
    EXPECT_LT(qGray(shown.pixel(x, area.top() + area.height() / 4)), 100);
    QMouseEvent move(QEvent::MouseMove, QPoint(x, tone), canvas->mapToGlobal(QPoint(x, tone)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(canvas, &move);
    QTest::mouseClick(canvas, Qt::LeftButton, Qt::NoModifier, QPoint(x, tone));
    ASSERT_EQ(canvas->plot().groups().size(), 2U);
    EXPECT_EQ(canvas->plot().groups()[1].variables()[0]->variable().column(), 13U);  // 5.08 Hz
    QTest::keyClick(canvas, Qt::Key_Up);
    EXPECT_EQ(canvas->plot().groups()[1].variables()[0]->variable().column(), 14U);
    QTest::keyClick(canvas, Qt::Key_Down);
    const CellImage& cells = *canvas->plot().groups()[0].image;
    {
        const BoxAnswer save(QStringLiteral("&Save"), [](QWidget& dialog) { typeName(dialog, "course.ts"); });
        window.sl_saveCourse();
        TSFILE course("course", true);
        EXPECT_EQ(course.samples(), cells.source().rows());
        EXPECT_NEAR(course.value(3, 1), 2.0, 0.1);
        EXPECT_FLOAT_EQ(course.dt(), 1.28F);
    }
    {
        const BoxAnswer save(QStringLiteral("&Save"), [](QWidget& dialog) { typeName(dialog, "at.ts"); });
        window.sl_saveSpectrumAt();
        TSFILE at("at", true);
        EXPECT_EQ(at.samples(), 128U);
        EXPECT_FLOAT_EQ(at.value(13, 1), 13.0F / 2.56F);
        EXPECT_NEAR(at.value(13, 2), 2.0, 0.1);
    }
    // The right end of the colour bar, dragged by half of it.
    canvas->image();
    const QRect bar = canvas->colorBarArea(0);
    const double high = cells.high;
    const QPoint from(bar.right() - 2, bar.center().y());
    QTest::mousePress(canvas, Qt::LeftButton, Qt::NoModifier, from);
    const QPoint to = from - QPoint(bar.width() / 2, 0);
    QMouseEvent drag(QEvent::MouseMove, to, canvas->mapToGlobal(to), Qt::LeftButton, Qt::LeftButton, {});
    QApplication::sendEvent(canvas, &drag);
    QTest::mouseRelease(canvas, Qt::LeftButton, Qt::NoModifier, to);
    EXPECT_NEAR(cells.high - cells.low, 0.5 * (high - cells.low), 0.05 * high);
    const QList<PlotCanvas*> canvases = window.findChildren<PlotCanvas*>();
    const auto cut = std::find_if(canvases.begin(), canvases.end(), [](const PlotCanvas* one) {
        return one->accessibleName() == QLatin1String("Spectrum at cursor A");
    });
    ASSERT_NE(cut, canvases.end());
    EXPECT_EQ((*cut)->plot().variables().at(0)->variable().rows(), 128U);
    EXPECT_NEAR((*cut)->plot().variables().at(0)->variable().value(13), 2.0, 0.1);
}

TEST_F(CalcWindows, HarmonicsOfTheCursorAreMarkedAndAKeptSpectrumStaysWhileTheNextIsComputed)
{
    DFTWin window(QStringLiteral("a.ts"), 2);
    window.show();
    window.sl_execute();
    auto* const canvas = window.findChild<PlotCanvas*>();
    const auto shown = [&]() -> const Group::Variables& { return canvas->plot().groups().at(0).variables(); };
    canvas->placeCursor(Plot2D::A, 5.05);  // beside the line
    QTest::keyClick(canvas, Qt::Key_H);
    ASSERT_EQ(shown().size(), 2U);
    EXPECT_NEAR(shown()[1]->variable().timeAt(1), 5.0, 1e-4);
    EXPECT_NEAR(shown()[1]->variable().value(1), 2.0, 1e-3);
    EXPECT_NEAR(shown()[1]->variable().timeAt(3), 15.0, 0.11);
    canvas->placeCursor(Plot2D::A, 20.0);
    EXPECT_NEAR(shown()[1]->variable().timeAt(1), 20.0, 0.11) << "they follow the cursor";
    QTest::keyClick(canvas, Qt::Key_H);
    EXPECT_EQ(shown().size(), 1U);

    {
        const BoxAnswer name(QString(), [](QWidget& dialog) {
            dialog.findChild<QLineEdit*>()->setText(QStringLiteral("before"));
            static_cast<QDialog&>(dialog).accept();
        });
        window.sl_keep();
    }
    fieldOf(window, "To sample").setText(QStringLiteral("1000"));
    for (QComboBox* const combo : window.findChildren<QComboBox*>())
        if (combo->accessibleName() == QLatin1String("Result"))
            combo->setCurrentText(QStringLiteral("RMS amplitude"));
    window.sl_execute();
    ASSERT_EQ(shown().size(), 2U);
    EXPECT_EQ(shown()[0]->variable().rows(), 500U);
    EXPECT_EQ(shown()[1]->variable().label, "before");
    EXPECT_EQ(shown()[1]->variable().rows(), 1000U);
    EXPECT_NEAR(shown()[1]->variable().value(100), 2.0, 1e-3);
    EXPECT_NE(shown()[0]->variable().colorIndex, shown()[1]->variable().colorIndex);
    window.sl_dropKept();
    EXPECT_EQ(shown().size(), 1U);
    EXPECT_EQ(window.statusBar()->currentMessage(), "Only the last result is shown");

    for (QComboBox* const combo : window.findChildren<QComboBox*>())
        if (combo->accessibleName() == QLatin1String("Result"))
            combo->setCurrentText(QStringLiteral("Power density"));
    window.sl_execute();
    canvas->placeCursor(Plot2D::A, 4.5);
    canvas->placeCursor(Plot2D::B, 5.5);
    const QList<QLabel*> labels = window.findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->text() == QString::fromUtf8("4.5 to 5.5 Hz: power 2 V², RMS 1.414 V (11 bins)");
    }));
    for (QComboBox* const combo : window.findChildren<QComboBox*>())
        if (combo->accessibleName() == QLatin1String("Result"))
            combo->setCurrentText(QStringLiteral("Third-octave bands"));
    window.sl_execute();
    EXPECT_TRUE(canvas->plot().axis().logarithmic);
    EXPECT_EQ(window.findChild<PeakTable*>()->findChild<QTableWidget*>()->rowCount(),
              static_cast<int>(shown()[0]->variable().rows()));
}
