// Makes the main window's actions from their tables, and its menus and tool bars from them.
#pragma once

#include <QMainWindow>

#include <map>

#include "portal/ActionTable.h"
#include "portal/FileMenus.h"
#include "portal/TsApplication.h"

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
    QAction* action(SubProgram kind) const { return m_subPrograms.at(kind); }
    // Lists the directory's files in the menus.
    void setFiles(std::vector<QString> names) { m_fileMenus->setFiles(std::move(names)); }
    QSpinBox* rowHeight() const { return m_rowHeight; }
    // Adds the actions of a place in a menu or bar, one or several.
    void addTo(QWidget* bar, const BarItem& item) const;
    // What can be done with a file, for the context menu of its row.
    void addFileActions(QMenu* menu, const QString& file) const;
    // What can be done in the directory, for a menu or a widget that shows its actions.
    void addDirectoryActions(QWidget* menu) const;

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
    std::map<SubProgram, QAction*> m_subPrograms;
    FileMenus* m_fileMenus = nullptr;
    QSpinBox* m_rowHeight = nullptr;
};

}  // namespace veltrac
