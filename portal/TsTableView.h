// Lists the samples of one ts-file of any length, or edits them.
//
// Edits are kept as a list until they are saved; nothing is written before. While it edits, the window is
// registered with TsApplication as having its file open for writing. A file that cannot be written opens as
// a list and says so; one that cannot be opened gives an empty window that says so.
#pragma once

#include <QDateTime>
#include <QMessageBox>

#include <array>
#include <memory>
#include <vector>

#include "portal/BlockOperation.h"
#include "portal/SampleView.h"
#include "portal/TsTableModel.h"
#include "share/SubWindow.h"

class QCheckBox;
class QLabel;
class QListWidget;
class QMenu;
class QModelIndex;
class QSpinBox;

namespace veltrac {

class FindBar;
class NoticeStrip;
class SelectionStatistics;

}  // namespace veltrac

class TsTableView : public veltrac::SubWindow
{
    Q_OBJECT

public:
    // `mode`: 0 lists the file, 1 edits it. The window closes with the main window, which may be null.
    TsTableView(const QString& file, QWidget* mainWindow, int mode);
    ~TsTableView() override;

    bool isEditing() const { return m_model != nullptr && m_model->editedFile() != nullptr; }
    // The outcome of the last scan for the maximum, the minimum or the average.
    const veltrac::ColumnExtremes& lastScan() const { return m_scan; }

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

    void sl_goTo();
    void sl_pageUp();
    void sl_pageDown();
    void sl_find();
    void sl_findNext();
    void sl_findPrevious();
    void sl_copy();
    void sl_copyWithNames();
    void sl_selectAll();
    void sl_writeSelected();
    void sl_reload();

    void sl_undo();
    void sl_redo();
    void sl_paste();
    void sl_save();
    void sl_saveAs();

protected:
    bool mayClose() override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    enum Act {
        kSave,
        kSaveAs,
        kReload,
        kWriteSelected,
        kQuit,
        kUndo,
        kRedo,
        kCopy,
        kCopyWithNames,
        kPaste,
        kSelectAll,
        kFind,
        kFindNext,
        kFindPrevious,
        kGoTo,
        kPageUp,
        kPageDown,
        kPlot,
        kMax,
        kMin,
        kAverage,
        kGrid,
        kAltColours,
        kHelp,
        kActCount,
        kSeparator = -1,
        kOperations = -2  // the operations on blocks
    };
    struct ActionRow;
    struct MenuRow;

    // Building.
    static const std::vector<ActionRow>& actionRows();
    static const std::vector<MenuRow>& menuRows();
    void openFile(const QString& file, int mode);
    void startEditing();
    void createActions();
    void createMenus();
    void createToolBar();
    void createTable();
    void setUpView();
    void connectView();
    void fillColumnList();
    void createStatusBar();
    void addOperations(QMenu& menu);
    void updateActions();
    void note(const QString& text);
    // A box titled "Ts-Edit" with one button.
    void tell(QMessageBox::Icon icon, const QString& text);

    // What is shown.
    void showTitle();
    void showPosition();
    void restartStatistics();
    QString rowText(int row) const;
    QString timeText(std::uint32_t sample) const;
    QString columnTitle(int column) const;

    // Listing.
    bool scan(veltrac::ColumnExtremes& out);
    void showScan(const QString& heading, const QString& result);
    void find(veltrac::Direction direction);
    void goToFound(std::uint32_t sample);
    void noteFileTime();
    // Tells when another window or program has changed or removed the file.
    void checkFile();
    bool sortBy(int column, Qt::SortOrder order);
    bool askSortRange(std::uint32_t& first, std::uint32_t& last);
    void copy(bool withNames);
    std::vector<int> visibleColumns(int from, int to) const;

    // Editing.
    std::vector<veltrac::SampleRun> selectedRuns() const;
    void operate(const veltrac::BlockOperationRow& operation);
    bool askNumbers(const veltrac::BlockOperationRow& operation, std::size_t cells,
                    std::vector<double>& numbers);
    std::vector<double> endValues(const veltrac::SampleRun& run) const;
    void addEdit(const QString& name, std::vector<veltrac::EditStrip> strips);
    void pasteRows(const std::vector<std::vector<float>>& rows);
    bool save();
    bool saveAs();
    QString askNewName();
    void commitOpenEditor();
    veltrac::ReaderOfColumn readerOfColumn() const;

    QString m_name;  // as it is shown
    QString m_path;  // absolute: the working directory may change meanwhile
    std::unique_ptr<TsTableModel> m_model;
    veltrac::SampleView* m_view = nullptr;
    QListWidget* m_columns = nullptr;
    veltrac::FindBar* m_findBar = nullptr;
    QLabel* m_note = nullptr;
    veltrac::NoticeStrip* m_changed = nullptr;
    QLabel* m_position = nullptr;
    QLabel* m_selected = nullptr;
    QCheckBox* m_sorting = nullptr;
    veltrac::SelectionStatistics* m_statistics = nullptr;
    std::array<QAction*, kActCount> m_actions{};
    std::vector<QAction*> m_operations;
    int m_column = 0;  // the selected column, from 0
    veltrac::ColumnExtremes m_scan;
    QString m_lastGoTo;
    std::array<std::vector<double>, 8> m_lastNumbers;  // of each block operation, for its next dialog
    QDateTime m_fileTime;                              // of the file as it is shown
    QDateTime m_toldTime;                              // of the change that the strip has told
    bool m_registered = false;
    bool m_fitted = false;
};
