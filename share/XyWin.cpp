#include "share/XyWin.h"

#include <QMenuBar>
#include <QStatusBar>
#include <QVBoxLayout>

#include <cmath>
#include <limits>

#include "core/NumberTexts.h"
#include "core/PlotValues.h"
#include "core/TsExceptions.h"
#include "share/FileNotice.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kRefinedAtOnce = 2'000'000;  // samples that are joined anew with each view
constexpr int kCursorSteps = 1000;                   // over the path's width
constexpr double kPathWidthMm = 0.25;

std::string titleOf(const Variable& v)
{
    return v.label + (v.unit.empty() ? "" : " [" + v.unit + "]");
}

// Least and greatest, a little apart where they are equal.
struct Reach
{
    double from, to;
};
Reach reachOf(const HsVariable& v, const SampleRange& rows)
{
    const HsVariable::Range range = v.range(rows.first, rows.last);
    if (range.empty)
        return {0.0, 1.0};
    const double beside = range.least < range.greatest ? 0.0 : std::fmax(1.0, std::fabs(range.least)) / 2.0;
    return {range.least - beside, range.greatest + beside};
}

// A variable that reaches as far as the path, for axes and cursors.
std::shared_ptr<HsVariable> reachMark(const Reach& x, const Reach& y)
{
    std::vector<double> steps;
    steps.reserve(kCursorSteps + 1);
    std::vector<float> heights(kCursorSteps + 1, std::numeric_limits<float>::quiet_NaN());
    for (int i = 0; i <= kCursorSteps; ++i)
        steps.push_back(x.from + (x.to - x.from) * i / kCursorSteps);
    heights.front() = static_cast<float>(y.from);
    heights.back() = static_cast<float>(y.to);
    Variable mark(std::make_shared<PlotValues>(steps, std::vector<std::vector<float>>{heights}), 1);
    mark.isMark = true;
    mark.widthMm = kPathWidthMm;
    return std::make_shared<HsVariable>(std::move(mark));
}

}  // namespace

XyWin::XyWin(std::shared_ptr<HsVariable> x, std::shared_ptr<HsVariable> y, const SampleRange& rows,
             const QString& name)
    : m_x(std::move(x)),
      m_y(std::move(y)),
      m_rows(rows),
      m_path(std::make_shared<XyPath>(m_x->variable(), m_y->variable(), rows)),
      m_canvas(new PlotCanvas(this))
{
    setWindowTitle(tr("%1 over %2")
                       .arg(QString::fromStdString(m_y->variable().label),
                            QString::fromStdString(m_x->variable().label)));
    m_canvas->setAccessibleName(windowTitle());
    m_canvas->setSuggestedName(name);
    auto* const centre = new QWidget(this);
    auto* const column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(FileNotice::ofValues(*m_x->variable().source(), centre));
    column->addWidget(m_canvas, 1);
    setCentralWidget(centre);
    createMenus();
    connect(m_canvas, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(m_canvas, &PlotCanvas::x_cursor_moved, this, [this](int px, int py) {
        if (m_canvas->groupAt({px, py}) == 0)
            statusBar()->showMessage(QStringLiteral("%1: %2   %3: %4")
                                         .arg(QString::fromStdString(titleOf(m_x->variable())))
                                         .arg(m_canvas->xAt(px), 0, 'g', 5)
                                         .arg(QString::fromStdString(titleOf(m_y->variable())))
                                         .arg(m_canvas->yAt(0, py), 0, 'g', 5));
    });
    connect(m_canvas, &PlotCanvas::x_view_changed, this, [this] {
        if (m_rows.count() > XyPath::kAllSamples && m_rows.count() <= kRefinedAtOnce)
            sl_refine();
    });
    resize(620, 600);
    showPath();
}

void XyWin::createMenus()
{
    const PlotCanvas::Menus menus = m_canvas->addMenus(*menuBar());
    menus.view->addSeparator();
    menus.view->addAction(tr("&Refine"), this, &XyWin::sl_refine)->setShortcut(QKeySequence::Refresh);
    menus.output->addSeparator();
    menus.output->addAction(tr("C&lose"), this, &QWidget::close)->setShortcut(QKeySequence::Close);
    addHelpMenu(this, QStringLiteral("plot"), tr("Plot windows"));
}

bool XyWin::join(const XyPath::Rectangle& seen)
{
    if (JobProgress::isRunning())
        return false;
    try {
        JobProgress progress(this, tr("Joining the samples"));
        if (m_path->build(seen, progress.callback()) == JobOutcome::Done)
            return true;
        statusBar()->showMessage(tr("Cancelled; F5 joins the samples of this view"));
    } catch (const TS::Failure&) {
        m_canvas->showText(tr("The file cannot be read."));
    }
    return false;
}

void XyWin::showPath()
{
    if (m_rows.isEmpty()) {
        m_canvas->showText(tr("There are no samples in the interval."));
        return;
    }
    const Reach x = reachOf(*m_x, m_rows);
    const Reach y = reachOf(*m_y, m_rows);
    const bool isJoined = join({x.from, y.from, x.to, y.to});
    if (!isJoined && !m_canvas->text().isEmpty())
        return;
    Plot2D plot;
    Group& group = plot.groups().emplace_back();
    group.variables().push_back(reachMark(x, y));
    group.path = m_path;
    group.title = titleOf(m_y->variable());
    plot.xTitle = titleOf(m_x->variable());
    m_canvas->showPlot(std::move(plot));
    m_canvas->plot().fitAll();
    m_canvas->replot();
    if (isJoined)
        tell();
}

void XyWin::sl_refine()
{
    const Plot2D& plot = m_canvas->plot();
    if (plot.groups().empty())
        return;
    const Group& group = plot.groups().front();
    if (!join({plot.x1(), group.y1(), plot.x2(), group.y2()}))
        return;
    m_canvas->replot();
    tell();
}

void XyWin::tell()
{
    QString text = QString::fromStdString(counted(m_path->pairs(), "sample"));
    if (m_path->isCloud())
        text += tr(", too many turns for a line: shown is where samples lie");
    else if (m_path->isThinned())
        text += tr(", %1 points of them; F5 joins anew what a closer view shows")
                    .arg(QString::fromStdString(groupedDigits(m_path->points().size() / 2)));
    statusBar()->showMessage(text);
}

}  // namespace veltrac
