#include "share/HistogramWin.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QStatusBar>
#include <QVBoxLayout>

#include <algorithm>

#include "core/NumberTexts.h"
#include "core/PlotValues.h"
#include "core/TsExceptions.h"
#include "share/BasicDriver.h"
#include "share/FileNotice.h"
#include "share/JobProgress.h"
#include "share/NumberField.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"

namespace veltrac {

namespace {

constexpr int kNormalPoints = 401;
constexpr double kNormalReach = 4.0;  // deviations
constexpr int kNumberDigits = 5;

QString shortNumber(double value)
{
    return QString::fromStdString(generalNumber(value, kNumberDigits));
}

// Stairs from the first edge to the last, which begin and end on the ground; read off at a place they tell
// the bin that it lies in.
std::shared_ptr<HsVariable> stairsOf(const Histogram& histogram, double scale)
{
    std::vector<double> x;
    std::vector<float> y{0.0F};
    for (std::size_t bin = 0; bin <= histogram.counts.size(); ++bin) {
        const double edge = histogram.from + static_cast<double>(bin) * histogram.width;
        const double height =
            bin < histogram.counts.size() ? scale * static_cast<double>(histogram.counts[bin]) : 0.0;
        x.insert(x.end(), 2, edge);
        y.insert(y.end(), bin < histogram.counts.size() ? 2 : 1, static_cast<float>(height));
    }
    Variable stairs(std::make_shared<PlotValues>(x, std::vector<std::vector<float>>{y}), 1);
    return std::make_shared<HsVariable>(std::move(stairs));
}

std::shared_ptr<HsVariable> normalCurve(const Histogram& histogram, double scale)
{
    const double reach = kNormalReach * histogram.deviation;
    std::vector<double> x;
    std::vector<float> y;
    x.reserve(kNormalPoints);
    y.reserve(kNormalPoints);
    for (int i = 0; i < kNormalPoints; ++i) {
        x.push_back(histogram.mean + reach * (2.0 * i / (kNormalPoints - 1) - 1.0));
        y.push_back(static_cast<float>(scale * normalDensity(histogram, x.back())));
    }
    Variable curve(std::make_shared<PlotValues>(x, std::vector<std::vector<float>>{y}), 1);
    curve.label = "Normal distribution";
    curve.colorIndex = kFirstVariableColor + 1;
    return std::make_shared<HsVariable>(std::move(curve));
}

}  // namespace

HistogramWin::HistogramWin(std::shared_ptr<HsVariable> variable, const SampleRange& rows, const QString& name)
    : m_variable(std::move(variable)), m_rows(rows), m_canvas(new PlotCanvas(this))
{
    const QString label = QString::fromStdString(m_variable->variable().label);
    setWindowTitle(tr("Histogram of %1").arg(label));
    m_canvas->setAccessibleName(windowTitle());
    m_canvas->setSuggestedName(name);
    auto* const centre = new QWidget(this);
    auto* const bar = new QWidget(centre);
    createFields(*bar);
    auto* const column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(bar);
    column->addWidget(FileNotice::ofValues(*m_variable->variable().source(), centre));
    column->addWidget(m_canvas, 1);
    setCentralWidget(centre);
    createMenus();
    for (const auto signal : {&PlotCanvas::x_hovered, &PlotCanvas::x_told})
        connect(m_canvas, signal, this,
                [this](const QString& text) { text.isEmpty() ? tell() : statusBar()->showMessage(text); });
    resize(760, 520);
}

void HistogramWin::createFields(QWidget& bar)
{
    m_bins = new QLineEdit;
    m_bins->setPlaceholderText(tr("automatic"));
    m_bins->setMaximumWidth(110);
    m_bins->setAccessibleName(tr("Bins"));
    m_bins->setToolTip(tr("1 to 1000; without a number as many as the rule of Freedman and Diaconis gives."));
    m_height = new QComboBox;
    m_height->addItems({tr("Counts"), tr("Density")});
    m_height->setAccessibleName(tr("Height"));
    m_height->setToolTip(tr("Values in each bin, or their share by the width of the bin: its area is 1."));
    m_normal = new QCheckBox(tr("&Normal curve"));
    m_normal->setToolTip(tr("The normal distribution of the same mean and standard deviation."));
    auto* const line = new QHBoxLayout(&bar);
    const auto add = [&](const QString& text, QWidget* field) {
        auto* const label = new QLabel(text);
        label->setBuddy(field);
        line->addWidget(label);
        line->addWidget(field);
    };
    add(tr("&Bins:"), m_bins);
    add(tr("&Height:"), m_height);
    line->addWidget(m_normal);
    line->addStretch();
    connect(m_bins, &QLineEdit::editingFinished, this, &HistogramWin::sl_count);
    connect(m_height, qOverload<int>(&QComboBox::currentIndexChanged), this, &HistogramWin::draw);
    connect(m_normal, &QCheckBox::toggled, this, &HistogramWin::draw);
}

void HistogramWin::createMenus()
{
    const PlotCanvas::Menus menus = m_canvas->addMenus(*menuBar());
    menus.output->addSeparator();
    menus.output->addAction(tr("C&lose"), this, &QWidget::close)->setShortcut(QKeySequence::Close);
    addHelpMenu(this, QStringLiteral("plot"), tr("Plot windows"));
}

void HistogramWin::sl_count()
{
    if (JobProgress::isRunning())
        return;
    const QString typed = m_bins->text().trimmed();
    const std::optional<double> bins = numberOf(typed);
    const bool isGood = typed.isEmpty() || (bins && *bins >= 1.0 && *bins <= kMostHistogramBins &&
                                            *bins == static_cast<double>(static_cast<std::uint32_t>(*bins)));
    markField(*m_bins, isGood);
    if (!isGood) {
        statusBar()->showMessage(tr("A histogram has 1 to 1000 bins; without a number they are found."));
        return;
    }
    // The plot window may have read the file again since.
    const Variable& v = m_variable->variable();
    const bool isThere = m_rows.isEmpty() || (m_rows.first >= v.firstRow() && m_rows.last <= v.rows());
    if (!m_variable->isBuilt() || !isThere) {
        m_histogram = {};
        m_canvas->showText(tr("The file is not what it was; open the histogram again."));
        return;
    }
    try {
        JobProgress progress(this, tr("Counting"));
        const HistogramRequest request{m_rows, bins ? static_cast<std::uint32_t>(*bins) : 0};
        if (makeHistogram(*m_variable, request, m_histogram, progress.callback()) == JobOutcome::Cancelled) {
            statusBar()->showMessage(tr("Cancelled"));
            if (m_histogram.counts.empty())
                m_canvas->showText(tr("Nothing was counted."));
            return;
        }
    } catch (const TS::Failure&) {
        m_histogram = {};
        m_canvas->showText(tr("The file cannot be read."));
        return;
    }
    draw();
}

void HistogramWin::draw()
{
    if (m_histogram.counts.empty()) {
        m_canvas->showText(tr("There are no values in the interval."));
        return;
    }
    const Variable& v = m_variable->variable();
    const QString unit = QString::fromStdString(v.unit);
    const bool isDensity = m_height->currentIndex() == 1;
    const auto total = static_cast<double>(m_histogram.total);
    const double perDensity = isDensity ? 1.0 : total * m_histogram.width;
    const auto stairs = stairsOf(m_histogram, isDensity ? 1.0 / (total * m_histogram.width) : 1.0);
    stairs->variable().label = v.label;
    Plot2D plot;
    Group& group = plot.groups().emplace_back();
    group.title = (!isDensity       ? tr("Count")
                   : unit.isEmpty() ? tr("Density")
                                    : tr("Density [1/%1]").arg(unit))
                      .toStdString();
    group.variables().push_back(stairs);
    if (m_normal->isChecked() && m_histogram.deviation > 0.0)
        group.variables().push_back(normalCurve(m_histogram, perDensity));
    plot.xTitle = v.label + (v.unit.empty() ? "" : " [" + v.unit + "]");
    m_canvas->showPlot(std::move(plot));
    m_canvas->plot().fitAll();
    m_canvas->replot();
    tell();
}

void HistogramWin::tell()
{
    if (m_histogram.counts.empty())
        return;
    QString text = tr("%1, mean %2, standard deviation %3; %4 of %5")
                       .arg(QString::fromStdString(counted(m_histogram.total, "value")),
                            shortNumber(m_histogram.mean), shortNumber(m_histogram.deviation),
                            QString::fromStdString(counted(m_histogram.counts.size(), "bin")),
                            shortNumber(m_histogram.width));
    if (m_histogram.missing > 0)
        text += QStringLiteral("; ") + QString::fromStdString(counted(m_histogram.missing, "missing value"));
    if (m_histogram.isCapped)
        text += tr("; more bins than 1000 are not drawn");
    statusBar()->showMessage(text);
}

}  // namespace veltrac
