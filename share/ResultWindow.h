// The base of the windows that compute something of one column of a ts-file: the choice of the column in a
// panel, the result on a canvas beside it with its read-out, and the questions about what is not saved.
//
// A window that derives from it puts its own fields into panel(), adds its menus, computes in sl_execute()
// and says by resultMade(), resultSaved() and resultGone() what became of the result.
#pragma once

#include <memory>

#include "core/TSFILE.h"
#include "share/SubWindow.h"

class PlotCanvas;
class QAction;
class QMenu;
class QVBoxLayout;

namespace veltrac {

class CursorTable;
class ReadoutLabel;
class SourceChooser;

class ResultWindow : public SubWindow
{
    Q_OBJECT

public slots:
    // Choose the entry of that index in the box; the status bar tells it.
    void sl_cbSourceFileActivated(int index);
    void sl_cbSourceColActivated(int index);
    // The read-out follows the mouse while there is a result.
    void sl_cursor_moved(int x, int y, int buttons);
    void sl_plot();
    virtual void sl_execute() = 0;
    virtual void sl_saveResults() = 0;

protected:
    // `icon` is a resource, `panelWidth` in pixels what the panel has at least.
    ResultWindow(const QString& title, const QString& icon, int panelWidth, QWidget* parent);

    SourceChooser* source() const noexcept { return m_source; }
    PlotCanvas* canvas() const noexcept { return m_canvas; }
    // A child of the panel that the window lays out where it likes.
    ReadoutLabel* readout() const noexcept { return m_readout; }
    // The panel's column of widgets; the source stands in it already.
    QVBoxLayout* panel() const noexcept { return m_panel; }

    // Entries that choose file and column and read the directory again; returns the last of them (F5).
    QAction* fillSourceMenu(QMenu& menu);
    // The menus "View", "Cursors" and "Output" of the canvas.
    void addCanvasMenus();

    // The chosen file as messages name it.
    QString sourceName() const;
    // Opens the chosen file for reading; null, and the status bar says so, where that fails.
    std::unique_ptr<TSFILE> openSource();
    // False for column 0, after a box that names the axis which it was meant for.
    bool requireColumn(const char* axis, unsigned column);
    // False, after a box, for a file that another window has open for writing.
    bool mayWrite(const QString& file);

    // Closing asks about a result that is worth it.
    void resultMade(bool worthAsking = true);
    void resultSaved() noexcept { m_asksOnClose = false; }
    void resultGone();
    bool hasResult() const noexcept { return m_computed; }

    // What the result is saved as; empty until the user has chosen.
    const QString& resultName() const noexcept { return m_resultName; }
    void setResultName(const QString& name) { m_resultName = name; }

    // Asks whether a result that is not saved is to be; a save that fails keeps the window open.
    bool mayClose() override;
    void showEvent(QShowEvent* event) override;

private:
    void showCursorTable();

    PlotCanvas* m_canvas;
    CursorTable* m_cursors;  // below the canvas while there is a result
    QAction* m_showsCursors = nullptr;
    SourceChooser* m_source;
    ReadoutLabel* m_readout;
    QVBoxLayout* m_panel;
    QString m_resultName;
    bool m_computed = false;
    bool m_asksOnClose = false;
};

}  // namespace veltrac
