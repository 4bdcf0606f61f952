#include "filter/FilterCharWin.h"

#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

#include <algorithm>

#include "share/PlotCanvas.h"
#include "share/Resources.h"

namespace {

constexpr double kLeastShownDb = -100.0;

QString frequenciesText(const std::vector<double>& frequencies)
{
    QStringList texts;
    for (const double hz : frequencies)
        texts << QString::number(hz, 'g', 5);
    return texts.join(QStringLiteral(", "));
}

}  // namespace

FilterCharWin::FilterCharWin(const FilterCharacteristic& characteristic, const QString& spec, QWidget* parent)
    : SubWindow(parent), m_characteristic(characteristic), m_canvas(new PlotCanvas(this))
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
    plot();
    resize(820, 600);
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
    m_canvas->fillViewMenu(*menuBar()->addMenu(QStringLiteral("&View")));
    m_canvas->fillCursorMenu(*menuBar()->addMenu(QStringLiteral("C&ursors")));
    m_canvas->fillOutputMenu(*menuBar()->addMenu(QStringLiteral("&Output")));
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
    const FilterCharacteristic& c = m_characteristic;
    const bool decibels = m_decibels->isChecked();
    const QString unit = decibels ? QStringLiteral("dB") : QString();
    std::vector<PlotCanvas::Values> columns = {
        {QStringLiteral("Gain"), unit, decibels ? c.gainDb : c.gain},
        {QStringLiteral("Phase, 0-1 for 0-2pi"), QString(), c.phase},
    };
    if (!c.halfPower.empty())
        columns.push_back({QStringLiteral("-3.01 dB @ %1 Hz").arg(frequenciesText(c.halfPower)), unit,
                           decibels ? c.marksDb : c.marks});
    m_canvas->showValues(c.frequencies, QStringLiteral("Freq[Hz]"), columns);

    // The marks belong on the axis of the gain.
    std::vector<Group>& groups = m_canvas->plot().groups();
    if (groups.size() > 2) {
        groups[0].variables().push_back(groups[2].variables().front());
        groups[0].variables().back()->variable().lineStyle = 1;
        groups.erase(groups.begin() + 2);
    }
    groups[0].title = decibels ? "Gain [dB]" : "Gain";
    m_canvas->setLogarithmicX(m_logarithmic->isChecked());
    m_canvas->plot().fitAll();
    fitGain();
    m_canvas->replot();
}

// A stop band of -200 dB would press the pass band flat.
void FilterCharWin::fitGain()
{
    if (!m_decibels->isChecked())
        return;
    const auto [least, greatest] =
        std::minmax_element(m_characteristic.gainDb.begin(), m_characteristic.gainDb.end());
    const double low = std::max<double>(*least, kLeastShownDb);
    m_canvas->plot().setY(0, low - 2, static_cast<double>(*greatest) + 5);
}
