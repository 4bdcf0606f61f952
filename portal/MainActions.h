// Makes the main window's actions from their tables, and its menus and tool bars from them.
#pragma once

#include <QMainWindow>

#include <map>

#include "portal/ActionTable.h"
#include "portal/FileMenus.h"

class QSpinBox;
class QToolBar;

namespace veltrac {

class MainActions : public QObject
{
    Q_OBJECT

public:
    // Everything belongs to the window, whose slots the tables name.
    explicit MainActions(QMainWindow* window);

    QAction* action(ActionId id) const { return m_actions.at(id); }
    // Lists the directory's files in the menus.
    void setFiles(std::vector<QString> names) { m_fileMenus->setFiles(std::move(names)); }
    QSpinBox* rowHeight() const { return m_rowHeight; }
    // What can be done with a file, for the context menu of its row.
    void addFileActions(QMenu* menu, const QString& file) const;

signals:
    // A key was pressed that several actions share, so that none of them ran.
    void x_ambiguous_key(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void createActions();
    void createMenus();
    void createFileMenus(QMenu* menu);
    void createToolBars();
    void addRowHeight(QToolBar* bar);

    QMainWindow* m_window;
    std::map<ActionId, QAction*> m_actions;
    FileMenus* m_fileMenus = nullptr;
    QSpinBox* m_rowHeight = nullptr;
};

}  // namespace veltrac
