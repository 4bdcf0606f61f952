// The main window: the ts-files of the working directory, and the actions that start every sub-program.
//
// Files and directories are the process's: the working directory is QDir::currentPath(), and file names are
// handed to sub-programs as the directory shows them.
#pragma once

#include <QMainWindow>
#include <QPointer>

#include <map>
#include <vector>

#include "portal/ActionTable.h"
#include "portal/FileMenus.h"
#include "portal/FileTable.h"
#include "portal/TsApplication.h"
#include "portal/TsDirectory.h"
#include "portal/WriterRegistry.h"
#include "share/SubWindow.h"

class QLabel;
class QSpinBox;
class QToolBar;

class VeltracWin : public QMainWindow, public TsApplication
{
    Q_OBJECT

public:
    explicit VeltracWin(QWidget* parent = nullptr);
    ~VeltracWin() override;

    // A box "Veltrac error" with one button "Ok". The two texts that a formula can report for each of its
    // samples can be silenced for the rest of the calculation.
    void ShowTsError(const char* text) override;

    void registerWriter(const QString& path) override;
    void unregisterWriter(const QString& path) override;
    bool isOpenForWriting(const QString& path) const override;
    QWidget* openSubProgram(SubProgram kind, const QString& file, unsigned column) override;

    // Reads the directory anew, with a box for each corrupt file, and returns how many ts-files it holds.
    int nOOfTsFiles();

public slots:
    void sl_help();
    void sl_about();
    void sl_asciihelp();
    void sl_stlhelp();

    void sl_createFile();
    void sl_readASCIIFile();
    void sl_readSTLFile();
    void sl_readSCLFile();
    void sl_otherDir();
    // Reads the directory and shows it.
    void sl_refresh();

    void sl_editWin();
    void sl_derivative();
    void sl_integrate();
    void sl_dft();
    void sl_filter();

    void sl_config_ps();
    void sl_config_font();
    void sl_set_sorting();
    void sl_rowHeight(int pixels);

    // What is done with the selected file; without one the status bar says so. The others first select the
    // file of a menu's action.
    void sl_plotFile();
    void sl_writeASCII();
    void sl_editHeader();
    void sl_listFile();
    void sl_editFile();
    void sl_deleteFile();
    void sl_plotFile(QAction* action);
    void sl_writeASCII(QAction* action);
    void sl_editHeader(QAction* action);
    void sl_listFile(QAction* action);
    void sl_editFile(QAction* action);
    void sl_deleteFile(QAction* action);

    // The file of that row becomes the selected one.
    void sl_itemSelected(int row, int column);
    void sl_set_plotdir(QString const& directory);
    void sl_subwindowGone(subWindow window);

signals:
    // The working directory has changed.
    void x_new_plotdir(QString const& directory);

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void createActions();
    void createTable();
    void createMenus();
    void createFileMenus(QMenu* menu);
    void createToolBars();
    void addRowHeight(QToolBar* bar);
    QAction* action(ActionId id) const { return m_actions.at(id); }

    void showContextMenu(int row, const QPoint& globalPosition);
    void showFiles();
    void say(const QString& text);
    // False, and said in the status bar, where no file is selected.
    bool fileIsSelected();
    void openOnSelected(SubProgram kind);
    bool isRuntimeTextSilenced(const QString& text) const;

    std::map<ActionId, QAction*> m_actions;
    FileTable* m_table = nullptr;
    FileMenus* m_fileMenus = nullptr;
    QLabel* m_status = nullptr;
    QSpinBox* m_rowHeight = nullptr;

    std::vector<TsFileRecord> m_files;
    QString m_selected;
    bool m_sorted = false;
    bool m_refreshing = false;
    QStringList m_visited;  // directories, the present one last
    WriterRegistry m_writers;
    std::vector<QPointer<QWidget>> m_subWindows;

    // Formula texts that are silent, and the calculation in which they are.
    QStringList m_silenced;
    std::uint64_t m_silencedJob = 0;
};
