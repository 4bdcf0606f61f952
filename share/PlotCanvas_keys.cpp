// PlotCanvas: keys, and what keys and menus do.

#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QKeyEvent>

#include <algorithm>
#include <cmath>

#include "core/TsExceptions.h"
#include "share/GoTo.h"
#include "share/PlotCanvas.h"
#include "share/PlotCommands.h"
#include "share/PlotExport.h"
#include "share/PlotVariables.h"
#include "share/PsConfigDialog.h"

using namespace veltrac;

namespace {

constexpr double kKeyZoom = 1.25;
constexpr double kPanStep = 0.1;
constexpr int kKeyZoomGesture = -3;
constexpr int kKeyPanGesture = -4;
constexpr double kSecondsADay = 86400.0;

// Steps of the last cursor: comma and full stop, and what they turn into with Shift on various keyboards.
int cursorStep(const QKeyEvent& event)
{
    static const int back[] = {Qt::Key_Comma, Qt::Key_Less, Qt::Key_Semicolon};
    static const int ahead[] = {Qt::Key_Period, Qt::Key_Greater, Qt::Key_Colon};
    const auto isIn = [&](const int(&keys)[3]) {
        return std::find(std::begin(keys), std::end(keys), event.key()) != std::end(keys);
    };
    const int direction = isIn(back) ? -1 : isIn(ahead) ? 1 : 0;
    if ((event.modifiers() & Qt::ControlModifier) != 0)
        return direction * 1000;
    return (event.modifiers() & Qt::ShiftModifier) != 0 ? direction * 10 : direction;
}

}  // namespace

// -- Keys --

const PlotCommand* PlotCanvas::commandOf(const QKeyEvent& event)
{
    const int pressed = event.key() | static_cast<int>(event.modifiers() & ~Qt::KeypadModifier);
    for (const PlotCommand& command : plotCommands())
        if (pressed == command.key || (command.otherKey != 0 && pressed == command.otherKey))
            return &command;
    return nullptr;
}

bool PlotCanvas::handleKey(const QKeyEvent& event)
{
    if (const int step = cursorStep(event); step != 0) {
        moveCursor(step);
        return true;
    }
    const PlotCommand* const command = commandOf(event);
    if (command == nullptr)
        return false;
    (this->*command->run)();
    return true;
}

// Of two canvases in a window, the one that has the focus answers: not the window's menu.
bool PlotCanvas::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && m_text.isEmpty() &&
        commandOf(*static_cast<QKeyEvent*>(event)) != nullptr) {
        event->accept();
        return true;
    }
    return QFrame::event(event);
}

void PlotCanvas::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space) {
        m_spaceHeld = true;
        updateShape(m_mouse);
        return;
    }
    if (!m_text.isEmpty() || !handleKey(*event))
        QFrame::keyPressEvent(event);
}

void PlotCanvas::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        m_spaceHeld = false;
        updateShape(m_mouse);
        return;
    }
    QFrame::keyReleaseEvent(event);
}

void PlotCanvas::focusOutEvent(QFocusEvent* event)
{
    // The release of a key that is held now goes elsewhere.
    m_spaceHeld = false;
    QFrame::focusOutEvent(event);
}

// -- The view --

void PlotCanvas::showRange(double x1, double x2, int gesture)
{
    changeView(gesture, [&] { m_plot.setX(x1, x2); });
}

void PlotCanvas::sl_fitAll()
{
    changeView(0, [this] { m_plot.fitAll(); });
}

void PlotCanvas::sl_fitY()
{
    changeView(0, [this] { m_plot.fitY(); });
}

// What stays in its place when a key zooms: the last cursor where it is in view, else the middle.
double PlotCanvas::zoomCentre() const
{
    const std::optional<double>& cursor = m_plot.cursor(m_lastCursor);
    return cursor && *cursor >= m_plot.x1() && *cursor <= m_plot.x2() ? *cursor : m_plot.xAtFraction(0.5);
}

void PlotCanvas::sl_zoomIn()
{
    changeView(kKeyZoomGesture, [this] { m_plot.zoomX(kKeyZoom, zoomCentre()); });
}

void PlotCanvas::sl_zoomOut()
{
    changeView(kKeyZoomGesture, [this] { m_plot.zoomX(1.0 / kKeyZoom, zoomCentre()); });
}

// The group under the mouse, else the first one.
int PlotCanvas::activeGroup() const
{
    const int under = groupAt(m_mouse);
    return under >= 0 || m_layout.groupOf.empty() ? under : static_cast<int>(m_layout.groupOf.front());
}

void PlotCanvas::sl_zoomInY()
{
    const int group = activeGroup();
    if (group < 0)
        return;
    const double middle = yAt(group, groupArea(group).center().y());
    changeView(kKeyZoomGesture, [&] { m_plot.zoomY(static_cast<std::size_t>(group), kKeyZoom, middle); });
}

void PlotCanvas::sl_zoomOutY()
{
    const int group = activeGroup();
    if (group < 0)
        return;
    const double middle = yAt(group, groupArea(group).center().y());
    changeView(kKeyZoomGesture,
               [&] { m_plot.zoomY(static_cast<std::size_t>(group), 1.0 / kKeyZoom, middle); });
}

void PlotCanvas::sl_zoomToCursors()
{
    const auto& a = m_plot.cursor(Plot2D::A);
    const auto& b = m_plot.cursor(Plot2D::B);
    if (a && b && *a != *b)
        changeView(0, [&] { m_plot.setX(*a, *b); });
    else
        emit x_told(tr("Set the cursors A and B first."));
}

void PlotCanvas::sl_panLeft()
{
    changeView(kKeyPanGesture, [this] { m_plot.pan(-kPanStep); });
}

void PlotCanvas::sl_panRight()
{
    changeView(kKeyPanGesture, [this] { m_plot.pan(kPanStep); });
}

void PlotCanvas::sl_pageLeft()
{
    changeView(kKeyPanGesture, [this] { m_plot.pan(-1.0); });
}

void PlotCanvas::sl_pageRight()
{
    changeView(kKeyPanGesture, [this] { m_plot.pan(1.0); });
}

void PlotCanvas::sl_toStart()
{
    changeView(0, [this] { m_plot.pan(-1e12); });
}

void PlotCanvas::sl_toEnd()
{
    changeView(0, [this] { m_plot.pan(1e12); });
}

void PlotCanvas::sl_previousView()
{
    if (!m_plot.back()) {
        emit x_told(tr("There is no earlier view."));
        return;
    }
    viewChanged();
    tellHoverAgain();
}

void PlotCanvas::sl_nextView()
{
    if (!m_plot.forward()) {
        emit x_told(tr("There is no later view."));
        return;
    }
    viewChanged();
    tellHoverAgain();
}

namespace {

// Where a "go to" text leads on the x axis; nothing where it means nothing here.
std::optional<double> goToX(const Plot2D& plot, const QString& text)
{
    const auto ref = plot.reference();
    const std::optional<GoToTarget> target = parseGoTo(text);
    if (!ref || !target)
        return std::nullopt;
    const XAxis& axis = plot.axis();
    const Variable& v = ref->variable();
    const Plot2D::Extent all = plot.extent();
    switch (target->kind) {
        case GoToTarget::Kind::Sample:
            if (target->number < 1.0 || target->number > v.rows())
                return std::nullopt;
            return axis.xOf(v, static_cast<std::uint32_t>(target->number));
        case GoToTarget::Kind::Percent:
            return all.x1 + target->number / 100.0 * (all.x2 - all.x1);
        case GoToTarget::Kind::Elapsed:
        case GoToTarget::Kind::TimeOfDay:
            break;
    }
    XAxis seconds = axis;
    seconds.mode = XMode::Elapsed;
    double x = target->number;
    if (target->kind == GoToTarget::Kind::TimeOfDay) {
        const double start = seconds.xOf(v, 1) + axis.origin;
        x = momentOf(*target, start) - (start < kSecondsADay ? 0.0 : axis.origin);
    }
    if (axis.mode != XMode::Sample)
        return x;
    return axis.xOf(v, std::max<std::uint32_t>(1, seconds.nearestRow(v, x)));
}

}  // namespace

void PlotCanvas::sl_goTo()
{
    bool ok = false;
    const QString text =
        QInputDialog::getText(this, tr("Go to"), tr("Sample, time or share: 250000, 12.5 s, 13:45:30 or 50%"),
                              QLineEdit::Normal, QString(), &ok);
    if (!ok || text.trimmed().isEmpty())
        return;
    try {
        const std::optional<double> x = goToX(m_plot, text);
        const Plot2D::Extent all = m_plot.extent();
        if (!x || *x < all.x1 || *x > all.x2) {
            emit x_told(tr("“%1” is not a place of this plot.").arg(text));
            return;
        }
        const double half = (m_plot.x2() - m_plot.x1()) / 2.0;
        changeView(0, [&] { m_plot.setX(*x - half, *x + half); });
        placeCursor(m_lastCursor, *x);
    } catch (const TS::Failure&) {
        emit x_told(tr("The file cannot be read."));
    }
}

// -- Cursors --

void PlotCanvas::sl_cursorA()
{
    placeCursor(Plot2D::A, m_plot.xAtFraction(0.5));
}

void PlotCanvas::sl_cursorB()
{
    placeCursor(Plot2D::B, m_plot.xAtFraction(0.5));
}

void PlotCanvas::sl_clearCursors()
{
    m_drag = Drag::None;
    m_plot.clearCursor(Plot2D::A);
    m_plot.clearCursor(Plot2D::B);
    update();
    emit x_cursors_changed();
}

void PlotCanvas::moveCursor(std::int64_t samples)
{
    if (!m_plot.cursor(m_lastCursor)) {
        placeCursor(m_lastCursor, m_plot.xAtFraction(0.5));
        return;
    }
    try {
        m_plot.moveCursor(m_lastCursor, samples);
        // A cursor that leaves the view takes it along.
        const double at = m_plot.fractionOf(*m_plot.cursor(m_lastCursor));
        if (at < 0.0 || at > 1.0)
            changeView(kKeyPanGesture, [&] { m_plot.pan(at - 0.5); });
    } catch (const TS::Failure&) {
        return;
    }
    update();
    emit x_cursors_changed();
}

void PlotCanvas::toExtreme(bool greatest)
{
    const int group = activeGroup();
    if (group < 0)
        return;
    try {
        for (const auto& v : m_plot.groups()[static_cast<std::size_t>(group)].variables()) {
            if (!v->variable().visible || !v->isBuilt())
                continue;
            const std::uint32_t first = m_plot.axis().rowFrom(v->variable(), m_plot.x1());
            const std::uint32_t last = m_plot.axis().rowAt(v->variable(), m_plot.x2());
            const std::uint32_t row = first <= last ? v->rowOfExtreme(first, last, greatest) : 0;
            if (row != 0)
                placeCursor(m_lastCursor, m_plot.axis().xOf(v->variable(), row));
            return;
        }
    } catch (const TS::Failure&) {
        emit x_told(tr("The file cannot be read."));
    }
}

void PlotCanvas::sl_toGreatest()
{
    toExtreme(true);
}

void PlotCanvas::sl_toLeast()
{
    toExtreme(false);
}

// -- Output --

void PlotCanvas::sl_copyReadout()
{
    QApplication::clipboard()->setText(intervalText(m_plot));
    emit x_told(tr("The read-out is in the clipboard."));
}

void PlotCanvas::sl_copyPicture()
{
    QApplication::clipboard()->setImage(image());
    emit x_told(tr("The picture is in the clipboard."));
}

void PlotCanvas::hardCopyOf(bool withCursors)
{
    const QString file =
        plotHardCopy(window(), m_suggestedName, m_psParameters, m_plot, m_colors, withCursors);
    if (!file.isEmpty())
        emit x_told(tr("Saved %1").arg(file));
}

void PlotCanvas::sl_hardCopy()
{
    hardCopyOf(false);
}

void PlotCanvas::sl_hardCopyWithCursors()
{
    hardCopyOf(true);
}

void PlotCanvas::sl_psParameters()
{
    if (!m_psDialog)
        m_psDialog = new PsConfigDialog(&m_psParameters, window());
    m_psDialog->show();
    m_psDialog->raise();
    m_psDialog->activateWindow();
}

void PlotCanvas::sl_savePicture()
{
    const QImage picture = image();
    const QString file = savePicture(window(), m_suggestedName, m_layout, picture);
    if (!file.isEmpty())
        emit x_told(tr("Saved %1").arg(file));
}

void PlotCanvas::sl_print()
{
    if (printPlot(window(), m_suggestedName, m_plot, m_colors))
        emit x_told(tr("Printed."));
}
