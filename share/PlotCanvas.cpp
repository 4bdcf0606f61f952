#include "share/PlotCanvas.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QUrl>

#include <algorithm>

#include "core/TsExceptions.h"
#include "share/PlotCommands.h"
#include "share/PlotMenus.h"
#include "share/PlotVariables.h"
#include "share/QtCompat.h"

using namespace veltrac;

namespace {

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

PlotCanvas::PlotCanvas(QWidget* parent) : PlotOutput(parent), m_gestures(*this) {}

// A plot in place of the present one, whose looks are the user's.
void PlotCanvas::replacePlot(Plot2D fresh)
{
    fresh.grid = plot().grid;
    fresh.legend = plot().legend;
    setSources(std::move(fresh), FileArray());
}

bool PlotCanvas::showColumns(const QString& file, const QVector<unsigned>& columns, Axes axes)
{
    const Plot2D before = plot();
    replacePlot({});
    try {
        const auto source = files().add(file.toLocal8Bit().toStdString());
        for (const unsigned column : columns) {
            const auto v = makeVariable(source, column);
            axes == Axes::OneEach ? addAlone(plot(), v) : addByUnit(plot(), v);
        }
        chooseXAxis(plot());
        plot().takeNotes(before);
    } catch (const TS::Failure&) {
        replacePlot({});
        showText(tr("%1 cannot be read.").arg(file));
        return false;
    }
    return refresh(true);
}

void PlotCanvas::showPlot(Plot2D fresh)
{
    fresh.takeNotes(plot());
    replacePlot(std::move(fresh));
    refresh(false);
}

void PlotCanvas::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls() || event->mimeData()->hasFormat(QLatin1String(variableMimeType())))
        event->acceptProposedAction();
}

void PlotCanvas::dropEvent(QDropEvent* event)
{
    const QMimeData& mime = *event->mimeData();
    if (mime.hasFormat(QLatin1String(variableMimeType()))) {
        const int variable = mime.data(QLatin1String(variableMimeType())).toInt();
        emit x_variable_dropped(variable, groupAt(mousePlace(*event)));
    } else {
        QStringList files;
        for (const QUrl& url : mime.urls())
            if (url.isLocalFile())
                files.append(url.toLocalFile());
        if (!files.isEmpty())
            emit x_files_dropped(files);
    }
    event->acceptProposedAction();
}

// -- Keys --

// Up and down step the horizontal cursor of a picture.
bool PlotCanvas::moveLevel(const QKeyEvent& event)
{
    const int steps = event.key() == Qt::Key_Up ? 1 : event.key() == Qt::Key_Down ? -1 : 0;
    if (steps == 0 || (event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return false;
    for (std::size_t g = 0; g < plot().groups().size(); ++g) {
        const Group& group = plot().groups()[g];
        if (!group.image)
            continue;
        const double at = group.level.value_or((group.y1() + group.y2()) / 2.0) + steps * group.image->step();
        placeLevel(static_cast<int>(g), std::clamp(at, group.image->step(), group.image->greatest()));
        return true;
    }
    return false;
}

bool PlotCanvas::handleKey(const QKeyEvent& event)
{
    if (const int step = cursorStep(event); step != 0) {
        moveCursor(step);
        return true;
    }
    if (moveLevel(event))
        return true;
    const PlotCommand* const command = plotCommandOf(event);
    if (command == nullptr)
        return false;
    (this->*command->run)();
    return true;
}

// Of two canvases in a window, the one that has the focus answers: not the window's menu.
bool PlotCanvas::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && text().isEmpty() &&
        plotCommandOf(*static_cast<QKeyEvent*>(event)) != nullptr) {
        event->accept();
        return true;
    }
    return PlotOutput::event(event);
}

void PlotCanvas::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space) {
        m_gestures.holdSpace(true);
        return;
    }
    if (event->key() == Qt::Key_Escape)
        m_gestures.cancel();
    if (!text().isEmpty() || !handleKey(*event))
        PlotOutput::keyPressEvent(event);
}

void PlotCanvas::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        m_gestures.holdSpace(false);
        return;
    }
    PlotOutput::keyReleaseEvent(event);
}

void PlotCanvas::focusOutEvent(QFocusEvent* event)
{
    // The release of a key that is held now goes elsewhere.
    m_gestures.holdSpace(false);
    PlotOutput::focusOutEvent(event);
}

// -- Mouse --

void PlotCanvas::mousePressEvent(QMouseEvent* event)
{
    m_gestures.press(*event);
}

void PlotCanvas::mouseMoveEvent(QMouseEvent* event)
{
    m_gestures.move(*event);
}

void PlotCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    m_gestures.release(*event);
}

void PlotCanvas::mouseDoubleClickEvent(QMouseEvent* event)
{
    m_gestures.doubleClick(*event);
}

void PlotCanvas::wheelEvent(QWheelEvent* event)
{
    m_gestures.wheel(*event);
}

void PlotCanvas::leaveEvent(QEvent* event)
{
    PlotOutput::leaveEvent(event);
    setMouse({-1, -1});
}

void PlotCanvas::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    fillMenu(menu, groupAt(event->pos()));
    menu.exec(event->globalPos());
}

// -- Menus --

void PlotCanvas::fillMenu(QMenu& menu, int group)
{
    fillPlotMenu(*this, menu, group);
}

void PlotCanvas::fillViewMenu(QMenu& menu)
{
    veltrac::fillViewMenu(*this, menu);
}

void PlotCanvas::fillCursorMenu(QMenu& menu)
{
    veltrac::fillCursorMenu(*this, menu);
}

void PlotCanvas::fillAxesMenu(QMenu& menu)
{
    veltrac::fillAxesMenu(*this, menu);
}

void PlotCanvas::fillOutputMenu(QMenu& menu)
{
    veltrac::fillOutputMenu(*this, menu);
}

PlotCanvas::Menus PlotCanvas::addMenus(QMenuBar& bar)
{
    QMenu* const view = bar.addMenu(tr("&View"));
    fillViewMenu(*view);
    holdInWindow(*view);
    fillCursorMenu(*bar.addMenu(tr("C&ursors")));
    QMenu* const output = bar.addMenu(tr("Out&put"));
    fillOutputMenu(*output);
    holdInWindow(*output);
    return {view, output};
}

void PlotCanvas::holdInWindow(QMenu& menu)
{
    veltrac::holdInWindow(menu);
}
