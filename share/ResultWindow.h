// The base of the windows that compute something of one column of a ts-file: the choice of the column in a
// panel, the result on a canvas beside it with its read-out, and the questions about what is not saved.
//
// A window that derives from it puts its own fields into panel() and adds its menus. Its sl_execute() hands
// calculate() a job that fills a scratch file; the window keeps the last of these files that became whole, so
// that a calculation which fails or is cancelled takes no result away.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "core/Progress.h"
#include "share/FileWatch.h"
#include "share/ResultFile.h"
#include "share/SubWindow.h"
#include "share/WaitCursor.h"

class PlotCanvas;
class QAction;
class QMenu;
class QScrollArea;
class QVBoxLayout;
class TSFILE;

namespace veltrac {

class CursorTable;
class NoticeStrip;
class RangeFields;
class ReadoutLabel;
class SourceChooser;

inline constexpr int kSavedMs = 6000;  // how long the status bar tells what was saved

class ResultWindow : public SubWindow
{
    Q_OBJECT

public:
    // The range becomes the one to be computed.
    void offerRange(const SampleRange& range) override;

public slots:
    // Choose the entry of that index in the box; the status bar tells it.
    void sl_cbSourceFileActivated(int index);
    void sl_cbSourceColActivated(int index);
    // The read-out follows the mouse while there is a result.
    virtual void sl_cursor_moved(int x, int y, int buttons);
    void sl_plot();
    virtual void sl_execute() = 0;
    virtual void sl_saveResults() = 0;

protected:
    // `icon` is a resource, `panelWidth` in pixels what the panel has at least.
    ResultWindow(const QString& title, const QString& icon, int panelWidth, QWidget* parent);

    SourceChooser* source() const noexcept { return m_source; }
    RangeFields* range() const noexcept { return m_range; }
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
    // The chosen file, column or range is another one; null where the file cannot be read.
    virtual void sourceChanged(TSFILE* file) = 0;
    virtual void rangeChanged() = 0;
    // False, and the status bar says so, where no file is chosen.
    bool requireSource();
    // False for column 0, after a box that names the axis which it was meant for.
    bool requireColumn(const char* axis, unsigned column);
    // Shows a box under the window's title.
    void warnInBox(const QString& text);

    // Thrown by a job whose source cannot serve: its text is told in a box.
    struct Refusal
    {
        QString text;
    };
    // Fills the file of a new result and tells how it ended; no file where none could be made, after the
    // status bar has said so.
    using Job = std::function<JobOutcome(const Progress& progress, std::unique_ptr<ResultFile>& made)>;
    // Runs a job under a wait cursor and a progress of that title, with `busy` in the status bar. True where
    // the result has become the window's; else the one before is still there, and the user knows why.
    bool calculate(const QString& title, const QString& busy, const Job& job);

    // The result's file, its source (an absolute path) and the seconds that it took.
    bool hasResult() const noexcept { return m_result.file != nullptr; }
    const std::filesystem::path& resultPath() const { return m_result.file->path(); }
    QString resultFile() const;
    bool isResultHere() const;  // in the working directory
    const QString& resultSource() const noexcept { return m_result.source; }
    // The sample of the source that it begins with.
    std::uint32_t resultFirst() const noexcept { return m_result.first; }
    std::uint32_t resultSamples() const noexcept { return m_result.samples; }
    double seconds() const noexcept { return m_result.seconds; }
    void resultSaved();
    void dropResult();

    // What the result is saved as; empty until the user has chosen.
    const QString& resultName() const noexcept { return m_resultName; }
    void setResultName(const QString& name) { m_resultName = name; }

    // Asks whether a result that is not saved is to be; a save that fails keeps the window open.
    bool mayClose() override;
    void showEvent(QShowEvent* event) override;

private:
    void lookAtSource();
    void followSource();
    void showCursorTable();
    void keep(std::unique_ptr<ResultFile> made);

    PlotCanvas* m_canvas;
    CursorTable* m_cursors;  // below the canvas while there is a result
    QAction* m_showsCursors = nullptr;
    SourceChooser* m_source;
    ReadoutLabel* m_readout;
    QVBoxLayout* m_panel;
    QScrollArea* m_scroll;
    RangeFields* m_range;
    QString m_shownSource;  // whose range the fields hold
    FileWatch m_watch;      // of it
    NoticeStrip* m_changed;
    struct Result
    {
        std::unique_ptr<ResultFile> file;
        QString source;
        std::uint32_t first = 1;
        std::uint32_t samples = 0;
        double seconds = 0.0;
        bool isSaved = false;
    };
    Result m_result;
    QString m_resultName;
    std::optional<WaitCursor> m_cursor;
};

}  // namespace veltrac
