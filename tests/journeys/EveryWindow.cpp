#include "tests/journeys/EveryWindow.h"

#include <QAction>
#include <QApplication>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <filesystem>

#include "calc/DFTWin.h"
#include "calc/DerivativeWin.h"
#include "calc/IntegrateWin.h"
#include "converters/ImportReport.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "filter/FilterCharWin.h"
#include "filter/FilterWin.h"
#include "filter/SaveResultsDialog.h"
#include "portal/FieldsDialog.h"
#include "portal/TsApplication.h"
#include "share/AxisLimitsDialog.h"
#include "share/ColorConfigDialog.h"
#include "share/HistogramWin.h"
#include "share/PictureSaving.h"
#include "share/PlotCanvas.h"
#include "share/PsConfigDialog.h"
#include "share/QtMessageWin.h"
#include "share/QtPlotWin1.h"
#include "share/ValuePlots.h"
#include "share/VariableMenu.h"
#include "share/XyWin.h"
#include "tests/BoxAnswer.h"

namespace veltrac {

namespace {

template <typename Window>
std::vector<Window*> openWindows()
{
    std::vector<Window*> windows;
    for (QWidget* const widget : QApplication::topLevelWidgets())
        if (auto* const window = qobject_cast<Window*>(widget))
            windows.push_back(window);
    return windows;
}

void trigger(const QWidget& window, const char* text)
{
    QList<QAction*> actions = window.actions();
    actions << window.findChildren<QAction*>();
    for (QAction* const action : actions)
        if (action->text() == QString::fromUtf8(text)) {
            action->trigger();
            return;
        }
    ADD_FAILURE() << "no entry " << text;
}

}  // namespace

EveryWindow::EveryWindow()
{
    constexpr std::uint32_t kSamples = 3000;
    const auto ecg = openTsFile(VELTRAC_EXAMPLES "/ecg.ts", true);
    const auto copy = createTsFile(m_file.toStdString(), kSamples, 3);
    copy->dt(ecg->dt());
    for (std::uint32_t col = 1; col <= 3; ++col)
        for (std::uint32_t s = 1; s <= kSamples; ++s)
            copy->setValue(s, col, ecg->value(s * col, 1));
    copy->columnName(1, "MLII");
    copy->columnDescription(1, "Lead MLII [mV]");
    for (const char* const text : {"troubles.stl", "clock.scl"})
        std::filesystem::copy_file(std::filesystem::path(VELTRAC_TEXTS) / text, text);
}

QWidget* EveryWindow::mainWindow()
{
    return dynamic_cast<QWidget*>(TsApplication::instance());
}

QString EveryWindow::fileOf(SubProgram kind) const
{
    return kind == SubProgram::StlImport   ? QStringLiteral("troubles.stl")
           : kind == SubProgram::SclImport ? QStringLiteral("clock.scl")
                                           : m_file;
}

void EveryWindow::show(QWidget* window, const Look& look)
{
    const QPointer<QWidget> shown(window);
    ASSERT_FALSE(shown.isNull());
    shown->show();
    QApplication::setActiveWindow(shown);
    QApplication::processEvents();
    look(*shown, shown->windowTitle().toStdString());
    const BoxAnswer no(QStringLiteral("&No"));
    shown->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    delete shown;
}

void EveryWindow::forEachWindow(const Look& look)
{
    using enum SubProgram;
    mainWindow()->show();
    QApplication::setActiveWindow(mainWindow());
    trigger(*mainWindow(), "Refresh...");
    QApplication::processEvents();
    look(*mainWindow(), "Veltrac");
    const auto open = [](SubProgram kind, const QString& file) {
        return TsApplication::instance()->openSubProgram(kind, file, 2);
    };
    for (const SubProgram kind : {Create, Plot, PlotColumn, List, Edit, Header, Formula})
        show(open(kind, m_file), look);
    QWidget* const searched = open(List, m_file);
    trigger(*searched, "&Find…");
    show(searched, look);
    for (const SubProgram kind : {StlImport, SclImport})
        show(open(kind, fileOf(kind)), look);
    // With what they have computed.
    for (const SubProgram kind : {Derivative, Integral, Spectrum, Filter}) {
        QWidget* const window = open(kind, m_file);
        QMetaObject::invokeMethod(window, "sl_execute");
        show(window, look);
    }
    auto* const filter = dynamic_cast<FilterWin*>(open(Filter, m_file));
    ASSERT_NE(filter, nullptr);
    filter->sl_plotFiltWin();
    for (FilterCharWin* const window : openWindows<FilterCharWin>())
        show(window, look);
    filter->close();
    lookAtPlotsOfValues(look);
    show(new PsConfigDialog(&m_settings, mainWindow()), look);
    show(new ColorConfigDialog(&m_colors, m_colors, nullptr), look);
    show(showHelp(nullptr, "intro", "Veltrac info"), look);
    forEachDialog(look);
}

void EveryWindow::lookAtPlotsOfValues(const Look& look)
{
    auto* const plot =
        dynamic_cast<QtPlotWin*>(TsApplication::instance()->openSubProgram(SubProgram::Plot, m_file, 0));
    ASSERT_NE(plot, nullptr);
    auto& canvas = *plot->findChild<PlotCanvas*>();
    const auto& variables = canvas.plot().variables();
    ASSERT_TRUE(QTest::qWaitFor([&] { return variables.at(0)->isBuilt() && variables.at(1)->isBuilt(); }));
    openHistogram(*plot, canvas, variables[0]);
    openXyPlot(*plot, canvas, variables[0], variables[1]);
    for (HistogramWin* const window : openWindows<HistogramWin>())
        show(window, look);
    for (XyWin* const window : openWindows<XyWin>())
        show(window, look);
    const std::function<void()> asked[] = {
        [&] { canvas.sl_goTo(); },
        [&] { canvas.sl_note(); },
        [&] {
            QTimer::singleShot(0, [] {
                const QPointer<QWidget> menu(QApplication::activePopupWidget());
                ASSERT_FALSE(menu.isNull());
                trigger(*menu, "&Gain, offset, time shift…");
                menu->close();
            });
            plot->findChild<VariableMenu*>()->popUp(variables[0], QPoint(10, 10));
        },
    };
    for (const auto& ask : asked)
        showAsked(ask, look);
    plot->close();
}

void EveryWindow::showAsked(const std::function<void()>& ask, const Look& look)
{
    const BoxAnswer close(QStringLiteral("by its frame"), [&](QWidget& box) {
        QApplication::processEvents();
        look(box, box.windowTitle().toStdString());
    });
    ask();
    EXPECT_TRUE(close.wasAsked());
}

void EveryWindow::forEachDialog(const Look& look)
{
    AxisLimits limits;
    PictureRequest picture;
    const std::function<void()> asked[] = {
        [&] { askAxisLimits(mainWindow(), QStringLiteral("Limits of the y axis"), true, limits); },
        [&] { askClockLimits(mainWindow(), QStringLiteral("Limits of the x axis"), limits); },
        [&] { askPicture(mainWindow(), picture); },
        [&] { SaveResultsDialog(m_file, QStringLiteral("bed 3_filt.ts"), mainWindow()).exec(); },
        [&] {
            FieldsDialog(QStringLiteral("Ramp"), QStringLiteral("Values on a straight line (3 selected)."),
                         {{"&First value:", true}, {"&Last value:", false}}, {1.0, NAN}, mainWindow())
                .exec();
        },
        [&] {
            const ImportTrouble trouble{QStringLiteral("Line 17"), QStringLiteral("MLII"),
                                        QStringLiteral("no number"), QStringLiteral("n/a")};
            ImportReport(mainWindow(), QStringLiteral("Import"), QStringLiteral("3000 samples."), {trouble},
                         2, true)
                .exec();
        },
    };
    for (const auto& ask : asked)
        showAsked(ask, look);
}

}  // namespace veltrac
