// Lists the samples of one ts-file of any length, or edits them.
//
// Edits are kept as a list until they are saved; nothing is written before. While it edits, the window is
// registered with TsApplication as having its file open for writing. A file that cannot be written opens as
// a list and says so; one that cannot be opened gives an empty window that says so, and Reload tries again.
//
// This is the frame: file, menus, notices. SampleTable is what it shows, SampleSearch looks through it,
// SampleEditor changes it.
#pragma once

#include <QMessageBox>

#include <map>
#include <memory>
#include <vector>

#include "portal/TsTableModel.h"
#include "share/FileWatch.h"
#include "share/SubWindow.h"

class QLabel;
class QMenu;
class QModelIndex;

namespace veltrac {

enum class SampleAct;
class NoticeStrip;
class SampleEditor;
class SampleFollower;
class SampleSearch;
class SampleStatus;
class SampleTable;

}  // namespace veltrac

class TsTableView : public veltrac::SubWindow
{
    Q_OBJECT

public:
    // `mode`: 0 lists the file, 1 edits it. The window closes with the main window, which may be null.
    TsTableView(const QString& file, QWidget* mainWindow, int mode);
    ~TsTableView() override;

    bool isEditing() const { return m_editor != nullptr; }
    // The outcome of the last scan for the maximum, the minimum or the average.
    veltrac::ColumnExtremes lastScan() const;

public slots:
    void sl_rowHeight(int pixels);
    void sl_sorting(int state);
    void sl_col_selected();
    void sl_currentCell(const QModelIndex& index);
    void sl_currentColumn(const QModelIndex& current, const QModelIndex& previous);
    void sl_plotcol();
    void sl_findmax();
    void sl_findmin();
    void sl_findaverage();
    void sl_showGrid();
    void sl_altCol();
    void sl_finished();
    void sl_help();

    void sl_copy();
    void sl_copyWithNames();
    void sl_selectAll();
    void sl_writeSelected();
    void sl_restoreOldValues();
    void sl_reload();
    void sl_follow();

protected:
    bool mayClose() override;
    void changeEvent(QEvent* event) override;

private:
    void createFrame();
    void showFile(TSFILE* file, int mode);
    bool mayEdit();
    void connectFollower();
    void tellShape(TSFILE& file);
    void connectTable();
    void connectParts();
    void createActions();
    void createMenus();
    void createToolBar();
    void fillContextMenu();
    void updateActions();

    void showTitle();
    void showStatus(const QString& text);
    // A line above the table that stays; several stand one below the other.
    void addNote(const QString& text);
    void showOutcome(const QString& text);
    void showFailure(const QString& text);
    void showFileState();
    void answerNotice();
    void readAgain();

    QString m_name;  // as it is shown
    QString m_path;  // absolute: the working directory may change meanwhile
    int m_mode;
    std::unique_ptr<TsTableModel> m_model;
    // The parts of an open file's window; the editor only while it edits.
    veltrac::SampleTable* m_table = nullptr;
    veltrac::SampleSearch* m_search = nullptr;
    veltrac::SampleEditor* m_editor = nullptr;
    veltrac::SampleStatus* m_status = nullptr;
    veltrac::SampleFollower* m_follower = nullptr;
    QLabel* m_notes = nullptr;
    veltrac::NoticeStrip* m_changed = nullptr;
    veltrac::FileWatch m_watch;
    std::map<veltrac::SampleAct, QAction*> m_actions;
    std::vector<QAction*> m_operations;
};
