#include "share/ValuePlots.h"

#include <QMenu>

#include "core/TsExceptions.h"
#include "share/HistogramWin.h"
#include "share/PlotCanvas.h"
#include "share/XyWin.h"

namespace veltrac {

namespace {

// The rows between the cursors, else in view.
SampleRange rowsOf(const Plot2D& plot, const Variable& v)
{
    const Plot2D::Extent interval = plot.interval();
    SampleRange rows{plot.axis().rowFrom(v, interval.x1), plot.axis().rowAt(v, interval.x2)};
    return rows.last < rows.first ? SampleRange() : rows;
}

bool isOffered(const HsVariable& v)
{
    return v.variable().visible && !v.variable().isMark;
}

// A label as a menu shows it: an ampersand of the user's is no mnemonic.
QString entryOf(const HsVariable& v)
{
    return QString::fromStdString(v.variable().label).replace(QLatin1Char('&'), QLatin1String("&&"));
}

// False, and the canvas tells why, where there is nothing to be shown yet.
bool isReadYet(PlotCanvas& canvas, const HsVariable& v)
{
    if (!v.isBuilt() || !v.failure().empty())
        emit canvas.x_told(
            QObject::tr("%1 is not read yet; F5 reads on.").arg(QString::fromStdString(v.variable().label)));
    return v.isBuilt() && v.failure().empty();
}

void showBeside(SubWindow& window, SubWindow& opened)
{
    QObject::connect(&window, &SubWindow::windowGone, &opened, &QWidget::close);
    opened.show();
}

}  // namespace

void openHistogram(SubWindow& window, PlotCanvas& canvas, const std::shared_ptr<HsVariable>& variable)
{
    if (!isReadYet(canvas, *variable))
        return;
    try {
        const Variable& v = variable->variable();
        const QString name = QString::fromStdString(v.label) + QStringLiteral("_histogram");
        auto* const histogram = new HistogramWin(variable, rowsOf(canvas.plot(), v), name);
        showBeside(window, *histogram);
        histogram->sl_count();
    } catch (const TS::Failure&) {
        emit canvas.x_told(QObject::tr("The file cannot be read."));
    }
}

void openXyPlot(SubWindow& window, PlotCanvas& canvas, const std::shared_ptr<HsVariable>& x,
                const std::shared_ptr<HsVariable>& y)
{
    if (!isReadYet(canvas, *x) || !isReadYet(canvas, *y))
        return;
    try {
        const QString name = QString::fromStdString(y->variable().label) + QStringLiteral("_over_") +
                             QString::fromStdString(x->variable().label);
        showBeside(window, *new XyWin(x, y, rowsOf(canvas.plot(), y->variable()), name));
    } catch (const TS::Failure&) {
        emit canvas.x_told(QObject::tr("The file cannot be read."));
    }
}

void addHistogramMenu(QMenu& menu, SubWindow& window, PlotCanvas& canvas)
{
    QMenu* const entries = menu.addMenu(QObject::tr("&Histogram"));
    for (const auto& variable : canvas.plot().variables())
        if (isOffered(*variable))
            entries->addAction(entryOf(*variable), &window,
                               [&window, &canvas, variable] { openHistogram(window, canvas, variable); });
    entries->setEnabled(!entries->isEmpty());
}

void addXyMenu(QMenu& menu, SubWindow& window, PlotCanvas& canvas, const std::shared_ptr<HsVariable>& y)
{
    for (const auto& x : canvas.plot().variables())
        if (x != y && isOffered(*x) && x->variable().source() == y->variable().source())
            menu.addAction(QObject::tr("over %1").arg(entryOf(*x)), &window,
                           [&window, &canvas, x, y] { openXyPlot(window, canvas, x, y); });
    menu.setEnabled(!menu.isEmpty());
}

void addXyMenus(QMenu& menu, SubWindow& window, PlotCanvas& canvas)
{
    QMenu* const entries = menu.addMenu(QObject::tr("X-Y &plot"));
    for (const auto& y : canvas.plot().variables())
        if (isOffered(*y))
            addXyMenu(*entries->addMenu(entryOf(*y)), window, canvas, y);
    entries->setEnabled(!entries->isEmpty());
}

}  // namespace veltrac
