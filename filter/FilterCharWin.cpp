#include "filter/FilterCharWin.h"

#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

#include "filter/CharacteristicPlot.h"
#include "share/CursorDock.h"
#include "share/PlotCanvas.h"
#include "share/Resources.h"

namespace veltrac {

FilterCharWin::FilterCharWin(const FilterCharacteristic& characteristic, const QString& spec, QWidget* parent)
    : SubWindow(parent),
      m_characteristic(characteristic),
      m_canvas(new PlotCanvas(this)),
      m_cursors(new CursorDock(m_canvas))
{
    loadResources();
    setWindowTitle(QStringLiteral("Ts-Filt with: %1").arg(spec));
    setWindowIcon(QIcon(QStringLiteral(":img_PlotFilter")));
    m_canvas->setSuggestedName(QString(spec).replace(QLatin1Char('/'), QLatin1Char('_')));
    m_canvas->setAccessibleName(windowTitle());
    setCentralWidget(m_canvas);
    createActions();
    connect(m_canvas, &PlotCanvas::x_hovered, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(m_canvas, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    addDockWidget(Qt::BottomDockWidgetArea, m_cursors);
    statusBar();
    plot();
    resize(820, 700);
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
    QMenu* const view = menuBar()->addMenu(QStringLiteral("&View"));
    m_canvas->fillViewMenu(*view);
    PlotCanvas::holdInWindow(*view);
    view->addSeparator();
    view->addAction(m_cursors->toggleViewAction());
    m_canvas->fillCursorMenu(*menuBar()->addMenu(QStringLiteral("C&ursors")));
    QMenu* const output = menuBar()->addMenu(QStringLiteral("Out&put"));
    m_canvas->fillOutputMenu(*output);
    PlotCanvas::holdInWindow(*output);
    output->addSeparator();
    output->addAction(QStringLiteral("C&lose"), this, &QWidget::close, QKeySequence::Close);
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
    showCharacteristic(*m_canvas, m_characteristic, {m_decibels->isChecked(), m_logarithmic->isChecked()});
}

}  // namespace veltrac
