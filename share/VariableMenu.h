// The context menu of a plotted variable: looks, scaling, axis, and the sub-programs that it can go to.
#pragma once

#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

#include "core/HsVariable.h"

class ColorConfigDialog;
class PlotCanvas;
class QColor;
class QMenu;
class QPoint;

namespace veltrac {

class SubWindow;

class VariableMenu : public QObject
{
    Q_OBJECT

public:
    // The canvas stands in the window, which is the parent.
    VariableMenu(PlotCanvas* canvas, SubWindow* window);

    void popUp(const std::shared_ptr<HsVariable>& variable, const QPoint& globalPosition);
    // Puts a variable into another group (its number in the plot), or (-1) into a new one below the last.
    void moveToGroup(const std::shared_ptr<HsVariable>& variable, int group);
    // The colours of all shown variables.
    void editColors();

signals:
    // Looks, groups or scaling have changed; the canvas is drawn anew already.
    void x_changed();
    void x_told(const QString& text);

private:
    void addLooks(QMenu& menu, const std::shared_ptr<HsVariable>& variable);
    void addAxes(QMenu& menu, const std::shared_ptr<HsVariable>& variable);
    void addSubPrograms(QMenu& menu, const std::shared_ptr<HsVariable>& variable);
    void offerRange(SubWindow& window, const Variable& variable);
    void editScaling(const std::shared_ptr<HsVariable>& variable);
    void takeColors();
    void changed();

    PlotCanvas* m_canvas;
    SubWindow* m_window;
    // What the colour dialog edits, and whose colours they are.
    std::vector<QColor> m_dialogColors;
    std::vector<std::weak_ptr<HsVariable>> m_dialogVariables;
    QPointer<ColorConfigDialog> m_dialog;
};

}  // namespace veltrac
