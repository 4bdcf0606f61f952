#include "filter/FilterCharWin.h"

#include <QDockWidget>
#include <QHeaderView>
#include <QMenuBar>
#include <QStatusBar>
#include <QTabBar>
#include <QTableWidget>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

#include "filter/CharacteristicPlot.h"
#include "filter/FilterNumbers.h"
#include "share/CursorDock.h"
#include "share/PlotCanvas.h"
#include "share/Resources.h"

namespace veltrac {

FilterCharWin::FilterCharWin(const FidFilter* filter, double samplingHz, FilterPass pass, const QString& spec,
                             QWidget* parent)
    : SubWindow(parent),
      m_characteristic(characteristicOf(filter, samplingHz, pass == FilterPass::ZeroPhase)),
      m_delays(groupDelays(filter, m_characteristic.frequencies, samplingHz)),
      m_responses(responsesOf(filter, samplingHz, pass)),
      m_roots(rootsOf(filter)),
      m_hasPhase(pass != FilterPass::ZeroPhase),
      m_pages(new QTabBar),
      m_canvas(new PlotCanvas(this)),
      m_cursors(new CursorDock(m_canvas)),
      m_numbers(createNumbers())
{
    loadResources();
    setWindowTitle(QStringLiteral("Ts-Filt with: %1").arg(spec));
    setWindowIcon(QIcon(QStringLiteral(":img_PlotFilter")));
    m_canvas->setSuggestedName(QString(spec).replace(QLatin1Char('/'), QLatin1Char('_')));
    m_canvas->setAccessibleName(windowTitle());
    if (!m_hasPhase)
        std::fill(m_delays.begin(), m_delays.end(), 0.0F);
    for (const char* const page :
         {"&Gain and phase", "Group &delay", "&Impulse and step", "Poles and &zeros"})
        m_pages->addTab(QLatin1String(page));
    if (!m_hasPhase)
        m_pages->setTabText(GainAndPhase, QStringLiteral("&Gain"));
    m_pages->setAccessibleName(QStringLiteral("Pages"));
    auto* const centre = new QWidget(this);
    auto* const column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_pages);
    column->addWidget(m_canvas, 1);
    setCentralWidget(centre);
    createActions();
    connect(m_pages, &QTabBar::currentChanged, this, &FilterCharWin::plot);
    connect(m_canvas, &PlotCanvas::x_got_resize_event, this, [this] {
        if (m_pages->currentIndex() == PolesAndZeros)
            fitRoots();
    });
    connect(m_canvas, &PlotCanvas::x_hovered, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(m_canvas, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    addDockWidget(Qt::BottomDockWidgetArea, m_cursors);
    addDockWidget(Qt::BottomDockWidgetArea, m_numbers);
    statusBar();
    plot();
    resize(820, 700);
    resizeDocks({m_cursors, m_numbers}, {150, 150}, Qt::Vertical);
}

void FilterCharWin::createActions()
{
    m_decibels = new QAction(QStringLiteral("Gain in &dB"), this);
    m_decibels->setCheckable(true);
    m_decibels->setShortcut(QKeySequence(QStringLiteral("Ctrl+D")));
    m_decibels->setToolTip(QStringLiteral("Show the gain in decibels or as a factor."));
    connect(m_decibels, &QAction::toggled, this, &FilterCharWin::sl_decibels);
    m_logarithmic = new QAction(QStringLiteral("&Logarithmic frequency"), this);
    m_logarithmic->setCheckable(true);
    m_logarithmic->setShortcut(QKeySequence(QStringLiteral("Ctrl+L")));
    m_logarithmic->setToolTip(QStringLiteral("Show the frequency on a logarithmic or a linear axis."));
    connect(m_logarithmic, &QAction::toggled, this, &FilterCharWin::sl_logarithmic);

    QMenu* const axes = menuBar()->addMenu(QStringLiteral("&Axes"));
    axes->addActions({m_decibels, m_logarithmic});
    const PlotCanvas::Menus menus = m_canvas->addMenus(*menuBar());
    menus.view->addSeparator();
    menus.view->addActions({m_cursors->toggleViewAction(), m_numbers->toggleViewAction()});
    menus.output->addSeparator();
    menus.output->addAction(QStringLiteral("C&lose"), this, &QWidget::close)
        ->setShortcut(QKeySequence::Close);
    addToolBar(QStringLiteral("Axes"))->addActions({m_decibels, m_logarithmic});
}

void FilterCharWin::sl_decibels(bool /*on*/)
{
    plot();
}

void FilterCharWin::sl_logarithmic(bool /*on*/)
{
    plot();
}

void FilterCharWin::plot()
{
    const int page = m_pages->currentIndex();
    const bool logarithmic = m_logarithmic->isChecked();
    m_decibels->setEnabled(page == GainAndPhase);
    m_logarithmic->setEnabled(page == GainAndPhase || page == GroupDelay);
    if (page == GainAndPhase)
        m_canvas->showPlot(gainPlot(m_characteristic, {m_decibels->isChecked(), logarithmic, m_hasPhase}));
    else if (page == GroupDelay)
        m_canvas->showPlot(delayPlot(m_characteristic.frequencies, m_delays, logarithmic));
    else if (page == Responses)
        m_canvas->showPlot(responsePlot(m_responses));
    else
        m_canvas->showPlot(rootPlot(m_roots));
    if (page == PolesAndZeros) {
        m_canvas->image();  // lays the axes out
        fitRoots();
    }
    if (page == PolesAndZeros && !m_roots.isComplete)
        statusBar()->showMessage(
            QStringLiteral("Windows of more than %1 points have too many zeros to be found.")
                .arg(kMostRoots));
}

void FilterCharWin::fitRoots()
{
    const QRect area = m_canvas->plotArea();
    squareRoots(m_canvas->plot(), area.width(), area.height());
    m_canvas->replot();
}

QDockWidget* FilterCharWin::createNumbers()
{
    const auto rows = filterNumbers(m_characteristic, m_delays, m_responses);
    auto* const table = new QTableWidget(static_cast<int>(rows.size()), 2);
    table->setAccessibleName(QStringLiteral("Numbers"));
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->horizontalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->verticalHeader()->hide();
    int row = 0;
    for (const auto& [name, number] : rows) {
        table->setItem(row, 0, new QTableWidgetItem(QString::fromStdString(name)));
        table->setItem(row++, 1, new QTableWidgetItem(QString::fromStdString(number)));
    }
    table->resizeColumnsToContents();
    table->resizeRowsToContents();
    auto* const dock = new QDockWidget(QStringLiteral("Numbers"), this);
    dock->setObjectName(dock->windowTitle());
    dock->setWidget(table);
    return dock;
}

}  // namespace veltrac
