#include "share/PlotView.h"

#include <QApplication>
#include <QInputDialog>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>
#include <exception>

#include "core/TsExceptions.h"
#include "share/AxisLimitsDialog.h"
#include "share/JobProgress.h"
#include "share/PlotFileNames.h"
#include "share/PlotGoTo.h"
#include "share/PlotVariables.h"

namespace veltrac {

namespace {

constexpr double kKeyZoom = 1.25;
constexpr double kPanStep = 0.1;
constexpr int kKeyZoomGesture = -3;
constexpr int kKeyPanGesture = -4;

// What a progress bar says: "Reading test.ts".
QString whatIsMissing(const Plot2D& plot)
{
    QStringList names;
    for (const auto& v : plot.variables())
        if (v->variable().visible && !v->isBuilt())
            names.append(fileNameOf(v->variable()));
    names.removeDuplicates();
    return QObject::tr("Reading %1").arg(names.join(QStringLiteral(", ")));
}

// The group under the mouse, else the first one.
int activeGroup(const PlotView& view)
{
    const int under = view.groupAt(view.mouse());
    return under >= 0 || view.pictureLayout().groupOf.empty()
               ? under
               : static_cast<int>(view.pictureLayout().groupOf.front());
}

// What stays in its place when a key zooms: the last cursor where it is in view, else the middle.
double zoomCentre(const Plot2D& plot, Plot2D::Cursor active)
{
    const std::optional<double>& cursor = plot.cursor(active);
    return cursor && *cursor >= plot.x1() && *cursor <= plot.x2() ? *cursor : plot.xAtFraction(0.5);
}

void toExtreme(PlotView& view, bool greatest)
{
    const int group = activeGroup(view);
    if (group < 0)
        return;
    try {
        for (const auto& v : view.plot().groups()[static_cast<std::size_t>(group)].variables()) {
            if (!v->variable().visible || !v->isBuilt())
                continue;
            const std::uint32_t first = view.plot().axis().rowFrom(v->variable(), view.plot().x1());
            const std::uint32_t last = view.plot().axis().rowAt(v->variable(), view.plot().x2());
            const std::uint32_t row = first <= last ? v->rowOfExtreme(first, last, greatest) : 0;
            if (row == 0)
                return;
            view.placeCursor(view.activeCursor(), view.plot().axis().xOf(v->variable(), row));
            emit view.x_told((greatest ? QObject::tr("Greatest in view: %1, sample %2")
                                       : QObject::tr("Least in view: %1, sample %2"))
                                 .arg(QString::fromStdString(valueWithUnit(*v, v->variable().value(row))))
                                 .arg(v->variable().source()->sampleOf(row)));
            return;
        }
    } catch (const TS::Failure&) {
        emit view.x_told(QObject::tr("The file cannot be read."));
    }
}

}  // namespace

void PlotView::setSources(Plot2D plot, FileArray files)
{
    setPlot(std::move(plot));
    m_files = std::move(files);
}

bool PlotView::refresh(bool fit)
{
    // What the progress bar's events ask for waits for the one that is under way.
    if (m_reading)
        return false;
    const QScopedValueRollback<bool> reading(m_reading, true);
    bool whole = true;
    try {
        JobProgress progress(window(), whatIsMissing(plot()));
        whole = plot().buildMissing(progress.callback()) == JobOutcome::Done;
        // The times are known now.
        if (backwardsVariable(plot()))
            plot().setMode(XMode::Sample);
        fit ? plot().fitAll() : plot().refitY();
    } catch (const TS::Failure&) {
        // The variables tell it in their groups.
    } catch (const std::exception& e) {
        emit x_told(QString::fromLocal8Bit(e.what()));
    }
    viewChanged();
    emit x_plot_changed();
    return whole;
}

void PlotView::showNewRows(bool moves, bool withOverview)
{
    try {
        if (backwardsVariable(plot()))
            plot().setMode(XMode::Sample);
        if (moves && plot().reference()) {
            const double newest = plot().extent().x2;
            plot().setX(
                plot().axis().fromScale(plot().axis().toScale(newest) - (plot().axis().toScale(plot().x2()) -
                                                                         plot().axis().toScale(plot().x1()))),
                newest);
        }
        plot().refitY();
    } catch (const TS::Failure&) {
        // The next picture tells which file it is.
    }
    viewChanged();
    if (placeOf(m_mouse).zone == Zone::Plot)
        showHover();
    if (withOverview)
        emit x_plot_changed();
}

void PlotView::viewChanged()
{
    replot();
    emit x_view_changed();
}

void PlotView::setLogarithmicX(bool on)
{
    try {
        plot().setLogarithmicX(on);
    } catch (const TS::Failure&) {
        return;
    }
    viewChanged();
    emit x_plot_changed();
}

void PlotView::setLogarithmicY(int group, bool on)
{
    if (group < 0)
        return;
    plot().setLogarithmicY(static_cast<std::size_t>(group), on);
    refresh(false);
}

void PlotView::setMode(XMode mode)
{
    try {
        plot().setMode(mode);
    } catch (const TS::Failure&) {
        // The next picture tells which file it is.
    }
    viewChanged();
    emit x_cursors_changed();
    emit x_plot_changed();
}

void PlotView::changeView(int gesture, const std::function<void()>& change)
{
    try {
        plot().remember(gesture);
        change();
    } catch (const TS::Failure&) {
        // The next picture tells which file it is.
    }
    viewChanged();
    showHoverAgain();
}

void PlotView::editLimits(const Place& place)
{
    AxisLimits limits;
    if (place.zone == Zone::XAxis) {
        const XAxis& axis = plot().axis();
        const QString title = tr("Limits of the x axis");
        // Below, dates with milliseconds have no more to say.
        constexpr double kFewSeconds = 0.1;
        const bool isClock =
            axis.mode == XMode::Clock && !axis.logarithmic && plot().x2() - plot().x1() >= kFewSeconds;
        const double origin = isClock ? axis.origin : 0.0;
        limits = {plot().x1() + origin, plot().x2() + origin, false, axis.logarithmic};
        if (isClock ? askClockLimits(this, title, limits) : askAxisLimits(this, title, false, limits))
            changeView(0, [&] { plot().setX(limits.from - origin, limits.to - origin); });
        return;
    }
    Group& group = plot().groups()[static_cast<std::size_t>(place.group)];
    limits = {group.y1(), group.y2(), group.mode != YMode::Fixed, group.isLogarithmic()};
    if (!askAxisLimits(this, tr("Limits of the y axis"), true, limits))
        return;
    changeView(0, [&] {
        if (limits.automatic) {
            group.mode = YMode::Whole;
            group.fitY();
        } else {
            plot().setY(static_cast<std::size_t>(place.group), limits.from, limits.to);
        }
    });
}

void PlotView::showRange(double x1, double x2, int gesture)
{
    changeView(gesture, [&] { plot().setX(x1, x2); });
}

void PlotView::sl_fitAll()
{
    changeView(0, [this] { plot().fitAll(); });
}

void PlotView::sl_fitY()
{
    changeView(0, [this] { plot().fitY(); });
}

void PlotView::sl_zoomIn()
{
    changeView(kKeyZoomGesture, [this] { plot().zoomX(kKeyZoom, zoomCentre(plot(), activeCursor())); });
}

void PlotView::sl_zoomOut()
{
    changeView(kKeyZoomGesture, [this] { plot().zoomX(1.0 / kKeyZoom, zoomCentre(plot(), activeCursor())); });
}

void PlotView::sl_zoomInY()
{
    const int group = activeGroup(*this);
    if (group < 0)
        return;
    const double middle = yAt(group, groupArea(group).center().y());
    changeView(kKeyZoomGesture, [&] { plot().zoomY(static_cast<std::size_t>(group), kKeyZoom, middle); });
}

void PlotView::sl_zoomOutY()
{
    const int group = activeGroup(*this);
    if (group < 0)
        return;
    const double middle = yAt(group, groupArea(group).center().y());
    changeView(kKeyZoomGesture,
               [&] { plot().zoomY(static_cast<std::size_t>(group), 1.0 / kKeyZoom, middle); });
}

void PlotView::sl_zoomToCursors()
{
    const auto& a = plot().cursor(Plot2D::A);
    const auto& b = plot().cursor(Plot2D::B);
    if (a && b && *a != *b)
        changeView(0, [&] { plot().setX(*a, *b); });
    else
        emit x_told(tr("Set the cursors A and B first."));
}

void PlotView::sl_panLeft()
{
    changeView(kKeyPanGesture, [this] { plot().pan(-kPanStep); });
}

void PlotView::sl_panRight()
{
    changeView(kKeyPanGesture, [this] { plot().pan(kPanStep); });
}

void PlotView::sl_pageLeft()
{
    changeView(kKeyPanGesture, [this] { plot().pan(-1.0); });
}

void PlotView::sl_pageRight()
{
    changeView(kKeyPanGesture, [this] { plot().pan(1.0); });
}

void PlotView::sl_toStart()
{
    changeView(0, [this] { plot().pan(-1e12); });
}

void PlotView::sl_toEnd()
{
    changeView(0, [this] { plot().pan(1e12); });
}

void PlotView::sl_previousView()
{
    if (!plot().back()) {
        emit x_told(tr("There is no earlier view."));
        return;
    }
    viewChanged();
    showHoverAgain();
}

void PlotView::sl_nextView()
{
    if (!plot().forward()) {
        emit x_told(tr("There is no later view."));
        return;
    }
    viewChanged();
    showHoverAgain();
}

void PlotView::sl_goTo()
{
    bool ok = false;
    const QString text = QInputDialog::getText(
        this, tr("Go to"), tr("Sample, time or share: 250000, 12.5 s, 13:45:30, 2016-10-30 02:30 or 50%"),
        QLineEdit::Normal, QString(), &ok);
    if (!ok || text.trimmed().isEmpty())
        return;
    try {
        const PlaceInPlot place = placeInPlot(plot(), text.toStdString());
        if (!place.x) {
            emit x_told(
                tr("“%1” is not a place of this plot. %2").arg(text, QString::fromStdString(place.reason)));
            return;
        }
        const double half = (plot().x2() - plot().x1()) / 2.0;
        changeView(0, [&] { plot().setX(*place.x - half, *place.x + half); });
        placeCursor(activeCursor(), *place.x);
        if (!place.note.empty())
            emit x_told(QString::fromStdString(place.note));
    } catch (const TS::Failure&) {
        emit x_told(tr("The file cannot be read."));
    }
}

void PlotView::sl_cursorA()
{
    placeCursor(Plot2D::A, plot().xAtFraction(0.5));
}

void PlotView::sl_cursorB()
{
    placeCursor(Plot2D::B, plot().xAtFraction(0.5));
}

void PlotView::sl_clearCursors()
{
    plot().clearCursor(Plot2D::A);
    plot().clearCursor(Plot2D::B);
    for (Group& group : plot().groups())
        group.level.reset();
    update();
    emit x_cursors_changed();
}

void PlotView::sl_note()
{
    editNote(plot().cursor(activeCursor()).value_or(plot().xAtFraction(0.5)));
}

void PlotView::editNote(double x)
{
    constexpr int kNear = 5;  // pixels
    std::vector<PlotNote>& notes = plot().notes;
    const auto old = std::find_if(notes.begin(), notes.end(), [&](const PlotNote& note) {
        return std::abs(pixelOf(note.x) - pixelOf(x)) <= kNear;
    });
    bool ok = false;
    const QString before = old == notes.end() ? QString() : QString::fromStdString(old->text);
    const double at = old == notes.end() ? plot().snapped(x) : old->x;
    const QString text =
        QInputDialog::getText(
            this, tr("Note"),
            tr("Text at %1 (none removes the note):").arg(QString::fromStdString(xText(plot(), at))),
            QLineEdit::Normal, before, &ok)
            .trimmed();
    if (!ok)
        return;
    if (old != notes.end())
        notes.erase(old);
    if (!text.isEmpty())
        notes.push_back({at, text.toStdString()});
    replot();
}

void PlotView::sl_toGreatest()
{
    toExtreme(*this, true);
}

void PlotView::sl_toLeast()
{
    toExtreme(*this, false);
}

void PlotView::placeCursor(Plot2D::Cursor which, double x)
{
    try {
        plot().setCursor(which, x);
    } catch (const TS::Failure&) {
        return;
    }
    setActiveCursor(which);
    update();
    emit x_cursors_changed();
}

void PlotView::moveCursor(std::int64_t samples)
{
    if (!plot().cursor(activeCursor())) {
        placeCursor(activeCursor(), plot().xAtFraction(0.5));
        return;
    }
    try {
        plot().moveCursor(activeCursor(), samples);
        // A cursor that leaves the view takes it along.
        const double at = plot().fractionOf(*plot().cursor(activeCursor()));
        if (at < 0.0 || at > 1.0)
            changeView(kKeyPanGesture, [&] { plot().pan(at - 0.5); });
    } catch (const TS::Failure&) {
        return;
    }
    update();
    emit x_cursors_changed();
}

void PlotView::placeLevel(int group, double y)
{
    plot().groups()[static_cast<std::size_t>(group)].level = y;
    update();
    emit x_cursors_changed();
}

void PlotView::setMouse(const QPoint& pixel)
{
    m_mouse = pixel;
    showHover();
}

void PlotView::showHover()
{
    const Place place = placeOf(m_mouse);
    if (place.zone != Zone::Plot) {
        emit x_hovered(QString());
        return;
    }
    const double x = plot().snapped(xAt(m_mouse.x()));
    QStringList parts;
    if (const auto ref = plot().reference())
        parts.append(
            tr("sample %1")
                .arg(ref->variable().source()->sampleOf(plot().axis().nearestRow(ref->variable(), x))));
    if (plot().axis().mode != XMode::Sample)
        parts.append(QString::fromStdString(xText(plot(), x)));
    constexpr int kMostValues = 8;
    for (const auto& v : plot().groups()[static_cast<std::size_t>(place.group)].variables()) {
        if (!v->variable().visible || v->variable().isMark)
            continue;
        if (parts.size() > kMostValues) {
            parts.append(QStringLiteral("…"));
            break;
        }
        parts.append(
            QString::fromStdString(plot().nameOf(*v) + " = " + valueWithUnit(*v, valueAt(plot(), *v, x))));
    }
    emit x_hovered(parts.join(QStringLiteral(",  ")));
}

void PlotView::showHoverAgain()
{
    if (placeOf(m_mouse).zone != Zone::Plot)
        return;
    emit x_cursor_moved(m_mouse.x(), m_mouse.y(), static_cast<int>(QApplication::mouseButtons()));
    showHover();
}

}  // namespace veltrac
