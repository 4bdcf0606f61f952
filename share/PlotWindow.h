// What the plot windows have in common: canvas, overview, docks, menus, files that change on the disk.
#pragma once

#include <cstdint>
#include <memory>

#include "core/PlotFile.h"
#include "share/FileWatch.h"
#include "share/SubWindow.h"

class PlotCanvas;
class QAction;
class QLabel;
class QMenu;
class QToolBar;

namespace veltrac {

class CursorDock;
class NoticeStrip;
class OverviewStrip;
class PlotFollower;
class VariableDock;
class VariableMenu;

class PlotWindow : public SubWindow
{
    Q_OBJECT

public:
    PlotCanvas* canvas() const noexcept { return m_canvas; }

public slots:
    // Asks for ts-files and adds them.
    void sl_addFile();
    void sl_saveInterval();
    void sl_exportInterval();
    // Reads what a cancel left out.
    void sl_refresh();
    void sl_help();
    // Looks whether a file has changed on the disk or is gone, and says so.
    void sl_checkFiles();
    // Keeps the newest samples in view while they come.
    void sl_follow(bool on);

protected:
    explicit PlotWindow(QWidget* parent);

    // Opens a file, or finds it among those that are open; null, and the reason on the canvas or in the
    // status bar, where that fails. Nothing is shown of it yet.
    std::shared_ptr<PlotFile> openFile(const QString& file);
    // Opens a file and shows up to eight of its columns.
    void addFile(const QString& file);
    // After variables came or went: x axis, reading, docks, notices.
    void shownChanged(bool fit);
    void showStatus(const QString& text);

    QMenu* fileMenu() const noexcept { return m_fileMenu; }
    QMenu* viewMenu() const noexcept { return m_viewMenu; }
    QToolBar* toolBar() const noexcept { return m_toolBar; }
    VariableDock* variableDock() const noexcept { return m_variables; }

    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void createMenus();
    void createToolBar();
    void connectCanvas();
    void connectDocks();
    void alignStart(bool on);
    void removeFile(int file);
    void reloadChanged();
    // Nothing of the series lies outside of the view.
    bool showsAll() const;
    // All of the shown series lie outside of it.
    bool seesNothing() const;
    void tellNotices();
    void tellRings();

    PlotCanvas* m_canvas;
    OverviewStrip* m_overview;
    NoticeStrip* m_changed;
    NoticeStrip* m_notice;
    PlotFollower* m_follower;
    QAction* m_follow = nullptr;
    QLabel* m_rings;
    VariableDock* m_variables;
    CursorDock* m_cursors;
    VariableMenu* m_menu;
    QMenu* m_fileMenu = nullptr;
    QMenu* m_viewMenu = nullptr;
    QToolBar* m_toolBar = nullptr;
    FileWatch m_watch;
    QString m_toldChange;  // what the strip told last
};

}  // namespace veltrac
