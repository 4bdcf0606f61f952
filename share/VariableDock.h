// The dock "Variables": the plot's files and their columns, with check boxes, colours and a filter.
#pragma once

#include <QDockWidget>

#include <memory>

#include "core/HsVariable.h"
#include "core/PlotFile.h"

class PlotCanvas;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace veltrac {

class VariableDock : public QDockWidget
{
    Q_OBJECT

public:
    // The canvas is borrowed and lives at least as long.
    explicit VariableDock(PlotCanvas* canvas, QWidget* parent = nullptr);

    // Shows the canvas' files as they are now. After files, groups or colours have changed.
    void rebuild();
    // Shows or hides a column of a file; a variable is made where there is none yet. The caller refreshes
    // the canvas.
    std::shared_ptr<HsVariable> setShown(const std::shared_ptr<PlotFile>& file, std::uint32_t column,
                                         bool shown);

signals:
    // A check box was changed: the plot has another variable in view, or one less.
    void x_shown_changed();
    void x_add_file();
    void x_remove_file(int file);
    void x_align_start(bool on);
    // The context menu of a column is wanted; its variable is shown.
    void x_menu(int file, unsigned column, const QPoint& globalPosition);

private:
    void addFileItem(int file);
    void dress(QTreeWidgetItem* item, const HsVariable* variable);
    void applyFilter();
    void itemChanged(QTreeWidgetItem* item);
    void contextMenu(const QPoint& position);
    int groupNumberOf(const HsVariable& variable) const;

    PlotCanvas* m_canvas;
    QLineEdit* m_filter;
    QTreeWidget* m_tree;
    QPushButton* m_align;
    bool m_filling = false;
};

}  // namespace veltrac
