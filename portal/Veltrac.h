// The main window: the ts-files of the working directory, and the actions that start every sub-program.
//
// Files and directories are the process's: the working directory is QDir::currentPath(), and file names are
// handed to sub-programs as the directory shows them.
#pragma once

#include <QPointer>

#include <vector>

#include "core/TsDirectory.h"
#include "portal/DirectoryWatch.h"
#include "portal/ErrorBox.h"
#include "portal/FileTable.h"
#include "portal/MainActions.h"
#include "portal/TsApplication.h"
#include "portal/WriterRegistry.h"
#include "share/PsParameters.h"
#include "share/SubWindow.h"

class QLabel;
class PsConfigDialog;

class VeltracWin : public veltrac::ReadingWindow, public TsApplication
{
    Q_OBJECT

public:
    explicit VeltracWin(QWidget* parent = nullptr);
    ~VeltracWin() override;

    // The program's one error box, see ErrorBox.
    void ShowTsError(const char* text) override;

    void registerWriter(const QString& path) override;
    void unregisterWriter(const QString& path) override;
    bool isOpenForWriting(const QString& path) const override;
    QWidget* openSubProgram(SubProgram kind, const QString& file, unsigned column) override;
    bool exportInterval(const QString& file, std::uint32_t first, std::uint32_t last) override;
    const PsParameters* psParameters() const override { return &m_psParameters; }

    // Reads the directory anew, with a box for each corrupt file, and returns how many ts-files it holds.
    int nOOfTsFiles();

public slots:
    void sl_help();
    void sl_about();
    void sl_asciihelp();
    void sl_stlhelp();
    // Copies the examples to a folder of the user's and goes there.
    void sl_examples();

    void sl_createFile();
    void sl_readASCIIFile();
    void sl_readSTLFile();
    void sl_readSCLFile();
    void sl_otherDir();
    // Reads the directory and shows it.
    void sl_refresh();

    // Opens the sub-program that the action which calls stands for, on the selected file.
    void sl_openSubProgram();
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

    // Beside them: a copy of the selected file, and another name for it.
    void sl_copyFile();
    void sl_renameFile();
    // And an ordinary file of what a ring file holds.
    void sl_unfoldFile();

    // A ts-file of that name was made in the working directory: it is listed and selected.
    void sl_fileMade(const QString& name);
    // The file of that row becomes the selected one.
    void sl_itemSelected(int row, int column);
    void sl_set_plotdir(QString const& directory);
    void sl_subwindowGone(subWindow window);
    void sl_quit();

signals:
    // The working directory has changed.
    void x_new_plotdir(QString const& directory);

protected:
    void closeEvent(QCloseEvent* event) override;
    void setVisible(bool visible) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool othersMayClose();
    void createTable();
    void selectAskedFile();
    void showContextMenu(int row, const QPoint& globalPosition);
    void showFiles();
    void reportForeignNames();
    void showNews();
    void showCount();
    void listInMenus();
    void showInStatusBar(const QString& text);
    void enterDirectory(const QString& directory);
    // A directory is entered, ts-files are listed, texts imported.
    void openDropped(const QStringList& paths);
    void importTexts(const QStringList& texts);
    void importTsaText(const QString& tsaFile);
    // False, and said in the status bar, where no file is selected.
    bool fileIsSelected();
    void openOnSelected(SubProgram kind);

    veltrac::FileTable* m_table = nullptr;
    veltrac::MainActions* m_actions = nullptr;
    QLabel* m_status = nullptr;
    QWidget* m_emptyHint = nullptr;  // stands in the empty table

    // The working directory's ts-files.
    struct Listing
    {
        std::vector<veltrac::TsFileRecord> shown;
        int foreignNames = 0;      // files that cannot be listed
        veltrac::TsFileList seen;  // what the watch has seen
    };
    Listing m_files;
    veltrac::DirectoryWatch m_watch;
    QString m_selected;
    bool m_sorted = false;
    bool m_refreshing = false;
    QStringList m_visited;  // directories, the present one last
    veltrac::WriterRegistry m_writers;
    veltrac::ErrorBox m_errorBox;
    PsParameters m_psParameters;  // what new plot windows start from
    QPointer<PsConfigDialog> m_psDialog;
    std::vector<QPointer<QWidget>> m_subWindows;
};
