#include "portal/Veltrac.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QFontInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QSpinBox>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <utility>
#include <vector>

#include "converters/SCLWin.h"
#include "converters/TsaDialogs.h"
#include "core/ScratchFile.h"
#include "portal/DroppedTexts.h"
#include "portal/EmptyHint.h"
#include "portal/Examples.h"
#include "portal/FileCommands.h"
#include "portal/SubPrograms.h"
#include "portal/TsFileTexts.h"
#include "share/ActionIcon.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PsConfigDialog.h"
#include "share/QtCompat.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"
#include "share/SubWindow.h"
#include "share/TargetFile.h"
#include "share/WaitCursor.h"
#include "share/WindowManners.h"

using namespace veltrac;

namespace {

constexpr int kHelpWidth = 950;
constexpr int kHelpHeight = 650;

}  // namespace

VeltracWin::VeltracWin(QWidget* parent) : ReadingWindow(parent)
{
    loadResources();
    setInstance(this);
    QApplication::setFont(QFont(QStringLiteral("Helvetica [Cronyx]"), 8));
    PsParameters::setText(m_psParameters.fontName, "Times-Roman");
    PsParameters::setText(m_psParameters.creator, "Veltrac");
    setWindowTitle(QStringLiteral("Veltrac"));
    setWindowIcon(QIcon(QStringLiteral(":/img_Veltrac")));

    createTable();
    m_actions = new MainActions(this);
    connect(m_actions, &MainActions::x_ambiguous_key, this, &VeltracWin::showInStatusBar);
    connect(m_actions->rowHeight(), SIGNAL(valueChanged(int)), this, SLOT(sl_rowHeight(int)));
    m_status = new QLabel(this);
    // A long path is cut at the window's edge instead of widening the window.
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_status->setIndent(6);
    m_status->setTextFormat(Qt::PlainText);
    statusBar()->addWidget(m_status, 1);
    connect(this, &VeltracWin::x_new_plotdir, this, &VeltracWin::sl_set_plotdir);
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 42);

    m_emptyHint = makeEmptyHint(*m_actions, m_table->viewport());
    setAcceptDrops(true);

    connect(&m_watch, &DirectoryWatch::x_look, this, &VeltracWin::showNews);
    m_visited = QStringList{QDir::currentPath()};
    sl_rowHeight(m_actions->rowHeight()->value());
    sl_refresh();
    selectAskedFile();
    m_table->setFocus();
}

// Sub-windows that still stand have scratch files to remove.
VeltracWin::~VeltracWin()
{
    for (const QPointer<QWidget>& window : std::exchange(m_subWindows, {}))
        delete window;
}

// -- What the window is made of --

void VeltracWin::createTable()
{
    m_table = new FileTable(this);
    setCentralWidget(m_table);
    connect(m_table, SIGNAL(cellClicked(int, int)), this, SLOT(sl_itemSelected(int, int)));
    // The keyboard selects as well as the mouse does.
    connect(m_table, &QTableWidget::itemSelectionChanged, this,
            [this] { m_selected = m_table->selectedFile(); });
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
        sl_itemSelected(row, column);
        sl_listFile();
    });
    connect(m_table, &FileTable::x_entered, this, qOverload<>(&VeltracWin::sl_listFile));
    connect(m_table, &FileTable::x_menu_wanted, this, &VeltracWin::showContextMenu);
    connect(m_table->horizontalHeader(), SIGNAL(sectionClicked(int)), this, SLOT(sl_refresh()));
}

// -- The table --

int VeltracWin::nOOfTsFiles()
{
    m_files.shown = scanTsFiles(shownTsFiles(m_files.foreignNames), [this](const std::string& bytes) {
        const QString name = QFile::decodeName(bytes.c_str());
        // It may be a sub-window's work that has the directory read again: that window stays in front.
        showBox(
            QMessageBox::Warning, m_errorBox.inFront(this), QStringLiteral("Veltrac error, nOOfTsFiles()"),
            QStringLiteral("Found a corrupt ts-file: ") + name + QStringLiteral(".\nThe file is ignored"));
    });
    return static_cast<int>(m_files.shown.size());
}

void VeltracWin::sl_refresh()
{
    // A box about a corrupt file is open: what it interrupts is this very refresh.
    if (m_refreshing)
        return;
    m_refreshing = true;
    m_watch.watch(QDir::currentPath());
    nOOfTsFiles();
    m_refreshing = false;
    showFiles();
    reportForeignNames();
}

// What others have changed in the directory. Nobody has asked for it: no box, and nothing that a user looks
// at moves; the files that a window is only making are left out.
void VeltracWin::showNews()
{
    if (m_refreshing || JobProgress::isRunning() || QApplication::activePopupWidget() != nullptr)
        return;
    int foreign = 0;
    std::vector<std::string> names = shownTsFiles(foreign);
    std::erase_if(names, [](const std::string& name) { return isScratchFile(name); });
    const bool hasNews = m_files.seen.look(names, [this](const std::string& bytes) {
        showInStatusBar(
            QStringLiteral("Not listed: %1 is a corrupt ts-file.").arg(QFile::decodeName(bytes.c_str())));
    });
    // What was listed of a window's own files goes, too.
    if (!hasNews && m_files.shown.size() == m_files.seen.records().size())
        return;
    m_files.shown = m_files.seen.records();
    m_files.foreignNames = foreign;
    m_table->update(m_files.shown, m_sorted);
    m_selected = m_table->selectedFile();
    listInMenus();
    showCount();
}

// The launcher names the file that was double-clicked: the program takes no arguments. Its row is scrolled to
// when the window has its size.
void VeltracWin::selectAskedFile()
{
    const QString name = QFile::decodeName(qgetenv("VELTRAC_SELECT"));
    if (!name.isEmpty())
        QTimer::singleShot(0, this, [this, name] { m_table->select(name); });
}

void VeltracWin::reportForeignNames()
{
    const int count = m_files.foreignNames;
    if (count == 0)
        return;
    const QString text =
        QStringLiteral("Not listed: %1 with a name that is not in the encoding of this system.")
            .arg(count == 1 ? QStringLiteral("1 ts-file") : QStringLiteral("%1 ts-files").arg(count));
    // In a window that is not shown yet, a message would stand across the directory.
    if (isVisible())
        showInStatusBar(text);
    else
        QTimer::singleShot(0, this, [this, text] { showInStatusBar(text); });
}

void VeltracWin::showFiles()
{
    m_table->fill(m_files.shown, m_sorted);
    m_selected = m_table->selectedFile();
    listInMenus();
    showCount();
    statusBar()->clearMessage();  // or it would stand across the directory
}

void VeltracWin::listInMenus()
{
    std::vector<QString> names;
    names.reserve(m_files.shown.size());
    for (const TsFileRecord& file : m_files.shown)
        names.push_back(QFile::decodeName(file.name.c_str()));
    m_actions->setFiles(std::move(names));
}

void VeltracWin::showCount()
{
    m_emptyHint->setVisible(m_files.shown.empty());
    const QString path = QDir::currentPath();
    m_status->setText(QStringLiteral("Current working directory: %1 with %2 off ts-files.")
                          .arg(path, QString::number(m_files.shown.size())));
    m_status->setToolTip(path.toHtmlEscaped());
    m_status->show();
}

void VeltracWin::sl_itemSelected(int row, int /*column*/)
{
    const QString name = m_table->fileAt(row);
    if (name.isEmpty())
        return;
    // A click with Ctrl takes the mark away; the file that was clicked stays the selected one.
    if (m_table->selectedFile() != name)
        m_table->select(name);
    m_selected = name;
}

void VeltracWin::showContextMenu(int row, const QPoint& globalPosition)
{
    QMenu menu(this);
    if (row < 0) {
        m_actions->addDirectoryActions(&menu);
    } else {
        sl_itemSelected(row, 0);
        m_actions->addFileActions(&menu, m_selected);
        menu.addSeparator();
        const QString name = menuText(m_selected);
        menu.addAction(actionIcon(QStringLiteral("Copy")), QStringLiteral("&Copy %1…").arg(name), this,
                       &VeltracWin::sl_copyFile);
        menu.addAction(QStringLiteral("&Rename %1…").arg(name), this, &VeltracWin::sl_renameFile);
        if (isRingFile(m_selected))
            menu.addAction(QStringLiteral("&Unfold to a new file…"), this, &VeltracWin::sl_unfoldFile);
    }
    menu.exec(globalPosition);
}

void VeltracWin::sl_rowHeight(int pixels)
{
    m_table->setRowHeights(pixels);
}

void VeltracWin::sl_set_sorting()
{
    m_sorted = !m_sorted;
    m_actions->action(ActionId::Sorting)->setChecked(m_sorted);
    showFiles();
}

// -- Events --

// Asks all windows that hold unsaved work before the first of them closes: a Cancel keeps them all.
bool VeltracWin::othersMayClose()
{
    std::vector<SubWindow*> others;
    for (QWidget* const window : QApplication::topLevelWidgets())
        if (auto* const other = qobject_cast<SubWindow*>(window); other != nullptr && other->isVisible())
            others.push_back(other);
    for (SubWindow* const other : others) {
        if (other->askToClose())
            continue;
        for (SubWindow* const asked : others)
            asked->stayOpen();
        return false;
    }
    return true;
}

void VeltracWin::sl_quit()
{
    if (!JobProgress::isRunning() && othersMayClose())
        QApplication::closeAllWindows();
}

void VeltracWin::closeEvent(QCloseEvent* event)
{
    if (JobProgress::isRunning()) {
        event->ignore();
        return;
    }
    if (!othersMayClose()) {
        event->ignore();
        return;
    }
    // Without the portal the other windows have nobody to open their files: they close first.
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window != this && window->isVisible() && window->windowType() == Qt::Window && !window->close()) {
            event->ignore();
            return;
        }
    }
    ReadingWindow::closeEvent(event);
}

void VeltracWin::setVisible(bool visible)
{
    if (visible && !isVisible()) {
        fitToScreen(*this);
        explainByTips(*this);
    }
    ReadingWindow::setVisible(visible);
}

void VeltracWin::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls() && !JobProgress::isRunning())
        event->acceptProposedAction();
}

void VeltracWin::dropEvent(QDropEvent* event)
{
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    event->acceptProposedAction();
    // Questions come when the program that they were dragged from is free again.
    QTimer::singleShot(0, this, [this, paths] { openDropped(paths); });
}

void VeltracWin::showInStatusBar(const QString& text)
{
    statusBar()->showMessage(text, kMessageMs);
}

// -- What other windows ask --

void VeltracWin::ShowTsError(const char* text)
{
    m_errorBox.show(this, QString::fromUtf8(text));
}

void VeltracWin::registerWriter(const QString& path)
{
    m_writers.add(path);
}

void VeltracWin::unregisterWriter(const QString& path)
{
    m_writers.remove(path);
}

bool VeltracWin::isOpenForWriting(const QString& path) const
{
    return m_writers.contains(path);
}

QWidget* VeltracWin::openSubProgram(SubProgram kind, const QString& file, unsigned column)
{
    if (JobProgress::isRunning())
        return nullptr;
    SubWindow* window = nullptr;
    {
        const WaitCursor waiting;
        window = makeSubProgram(kind, file, column);
    }
    if (window == nullptr)
        return nullptr;
    m_subWindows.emplace_back(window);
    connect(window, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    connect(window, &SubWindow::x_directory_changed, this, &VeltracWin::sl_refresh);
    // A window may have made this connection itself.
    connect(window, SIGNAL(x_file_made(const QString&)), this, SLOT(sl_fileMade(const QString&)),
            Qt::UniqueConnection);
    window->show();
    return window;
}

void VeltracWin::sl_fileMade(const QString& name)
{
    sl_refresh();
    m_table->select(name);
}

void VeltracWin::sl_subwindowGone(subWindow window)
{
    std::erase_if(m_subWindows, [window](const QPointer<QWidget>& w) { return w.isNull() || w == window; });
}

bool VeltracWin::exportInterval(const QString& file, std::uint32_t first, std::uint32_t last)
{
    // The dialogs stand over the window that asks, and leave it in front.
    QWidget* const asking = QApplication::activeWindow();
    const TsaOutcome outcome = exportTsaInterval(asking != nullptr ? asking : this, file, first, last);
    showInStatusBar(outcome.status);
    return outcome.done;
}

// -- Sub-programs on the directory --

void VeltracWin::sl_createFile()
{
    openSubProgram(SubProgram::Create, QString(), 0);
}

void VeltracWin::sl_readASCIIFile()
{
    const QString tsaFile = chooseTsaFile(this);
    if (!tsaFile.isEmpty())
        importTsaText(tsaFile);
}

void VeltracWin::importTsaText(const QString& tsaFile)
{
    const TsaOutcome outcome = importTsa(this, tsaFile);
    sl_fileMade(outcome.file);
    showInStatusBar(outcome.status);
}

void VeltracWin::sl_openSubProgram()
{
    const auto* const action = qobject_cast<QAction*>(sender());
    if (action == nullptr)
        return;
    // An importer begins without a file; the others take the selected one.
    const auto kind = static_cast<SubProgram>(action->data().toInt());
    openSubProgram(kind, isImporter(kind) ? QString() : m_selected, 0);
}

void VeltracWin::sl_readSTLFile()
{
    openSubProgram(SubProgram::StlImport, QString(), 0);
}

void VeltracWin::sl_readSCLFile()
{
    openSubProgram(SubProgram::SclImport, QString(), 0);
}

void VeltracWin::sl_editWin()
{
    openSubProgram(SubProgram::Formula, m_selected, 0);
}

void VeltracWin::sl_derivative()
{
    openSubProgram(SubProgram::Derivative, m_selected, 0);
}

void VeltracWin::sl_integrate()
{
    openSubProgram(SubProgram::Integral, m_selected, 0);
}

void VeltracWin::sl_dft()
{
    openSubProgram(SubProgram::Spectrum, m_selected, 0);
}

void VeltracWin::sl_filter()
{
    openSubProgram(SubProgram::Filter, m_selected, 0);
}

void VeltracWin::sl_otherDir()
{
    QFileDialog dialog(this, QStringLiteral("Choose a directory"), QDir::currentPath());
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    dialog.setHistory(m_visited);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    enterDirectory(dialog.selectedFiles().constFirst());
}

void VeltracWin::enterDirectory(const QString& directory)
{
    if (!QDir::setCurrent(directory)) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"),
                QStringLiteral("The directory %1 cannot be entered.").arg(directory));
        return;
    }
    // Where the next dialog for files begins, which Qt remembers for the whole program.
    QFileDialog().setDirectoryUrl(QUrl::fromLocalFile(QDir::currentPath()));
    m_table->clearSelection();
    sl_refresh();
    emit x_new_plotdir(QDir::currentPath());
}

// -- What is dropped on the window --

void VeltracWin::openDropped(const QStringList& paths)
{
    QStringList texts;
    for (const QString& path : paths) {
        const QFileInfo file(path);
        if (file.isDir())
            enterDirectory(path);
        else if (file.suffix().toLower() == QLatin1String("ts"))
            openSubProgram(SubProgram::List, shownName(path), 0);
        else
            texts << path;
    }
    if (!texts.isEmpty())
        importTexts(texts);
}

void VeltracWin::importTexts(const QStringList& texts)
{
    const std::optional<ImportKind> kind = askImportKind(this, texts);
    if (kind == ImportKind::Scl) {
        // Several of them are the columns of one file.
        auto* const window =
            dynamic_cast<SCLWin*>(openSubProgram(SubProgram::SclImport, texts.constFirst(), 0));
        for (int i = 1; window != nullptr && i < texts.size(); ++i)
            window->add(texts.at(i));
    } else if (kind) {
        for (const QString& text : texts) {
            if (kind == ImportKind::Tsa)
                importTsaText(text);
            else
                openSubProgram(SubProgram::StlImport, text, 0);
        }
    }
}

void VeltracWin::sl_set_plotdir(QString const& directory)
{
    m_visited.removeAll(directory);
    m_visited << directory;
}

// -- What is done with one file --

bool VeltracWin::fileIsSelected()
{
    if (m_selected.isEmpty())
        showInStatusBar(QStringLiteral("Select a ts-file in the table first."));
    return !m_selected.isEmpty();
}

void VeltracWin::openOnSelected(SubProgram kind)
{
    if (fileIsSelected())
        openSubProgram(kind, m_selected, 0);
}

void VeltracWin::sl_plotFile()
{
    openOnSelected(SubProgram::Plot);
}

void VeltracWin::sl_writeASCII()
{
    if (fileIsSelected())
        showInStatusBar(exportTsa(this, m_selected).status);
}

void VeltracWin::sl_editHeader()
{
    openOnSelected(SubProgram::Header);
}

void VeltracWin::sl_listFile()
{
    openOnSelected(SubProgram::List);
}

void VeltracWin::sl_editFile()
{
    openOnSelected(SubProgram::Edit);
}

void VeltracWin::sl_deleteFile()
{
    if (!fileIsSelected() || JobProgress::isRunning())
        return;
    const QString name = m_selected;
    if (!mayMove(this, QStringLiteral("Veltrac"), name))
        return;
    const bool sure = askYesNo(QMessageBox::Question, this, QStringLiteral("Delete a file?"),
                               QStringLiteral("Do you really want to delete %1?").arg(name));
    QFile file(name);
    if (sure && !file.remove())
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"),
                QStringLiteral("The file %1 could not be deleted: %2.").arg(name, file.errorString()));
    sl_refresh();
}

void VeltracWin::sl_copyFile()
{
    if (fileIsSelected() && !JobProgress::isRunning())
        if (const QString made = copyTsFile(this, m_selected); !made.isEmpty())
            sl_fileMade(made);
}

void VeltracWin::sl_renameFile()
{
    if (fileIsSelected() && !JobProgress::isRunning())
        if (const QString name = renameTsFile(this, m_selected); !name.isEmpty())
            sl_fileMade(name);
}

void VeltracWin::sl_unfoldFile()
{
    if (fileIsSelected() && !JobProgress::isRunning())
        if (const QString made = unfoldTsFile(this, m_selected); !made.isEmpty())
            sl_fileMade(made);
}

void VeltracWin::sl_plotFile(QAction* action)
{
    if (m_table->select(FileMenus::fileOf(action)))
        sl_plotFile();
}

void VeltracWin::sl_writeASCII(QAction* action)
{
    if (m_table->select(FileMenus::fileOf(action)))
        sl_writeASCII();
}

void VeltracWin::sl_editHeader(QAction* action)
{
    if (m_table->select(FileMenus::fileOf(action)))
        sl_editHeader();
}

void VeltracWin::sl_listFile(QAction* action)
{
    if (m_table->select(FileMenus::fileOf(action)))
        sl_listFile();
}

void VeltracWin::sl_editFile(QAction* action)
{
    if (m_table->select(FileMenus::fileOf(action)))
        sl_editFile();
}

void VeltracWin::sl_deleteFile(QAction* action)
{
    if (m_table->select(FileMenus::fileOf(action)))
        sl_deleteFile();
}

// -- Settings and help --

void VeltracWin::sl_config_ps()
{
    if (m_psDialog.isNull())
        m_psDialog = new PsConfigDialog(&m_psParameters, this);
    m_psDialog->show();
    m_psDialog->raise();
    m_psDialog->activateWindow();
}

void VeltracWin::sl_config_font()
{
    // Where the family is missing, the dialog would offer the first one of all: it starts with the stand-in.
    QFont current = QApplication::font();
    const QFontInfo used(current);
    if (!hasFontFamily(current.family())) {
        current.setFamily(used.family());
        current.setStyleName(used.styleName());
    }
    bool chosen = false;
    const QFont font = QFontDialog::getFont(&chosen, current, this, QStringLiteral("Select the font"));
    if (chosen)
        QApplication::setFont(font);
}

void VeltracWin::sl_help()
{
    showHelp(this, QStringLiteral("intro"), QStringLiteral("Veltrac info"), kHelpWidth, kHelpHeight);
}

void VeltracWin::sl_asciihelp()
{
    showHelp(this, QStringLiteral("tsa"), QStringLiteral("Veltrac, TSA format"), kHelpWidth, kHelpHeight);
}

void VeltracWin::sl_stlhelp()
{
    showHelp(this, QStringLiteral("stl"), QStringLiteral("Veltrac, STL format"), kHelpWidth, kHelpHeight);
}

void VeltracWin::sl_examples()
{
    const ExampleCopies copies = copyExamples(this);
    if (copies.directory.isEmpty())
        return;
    enterDirectory(copies.directory);
    const QString kept =
        copies.kept == 0 ? QString() : QStringLiteral(", %1 were there already").arg(copies.kept);
    showInStatusBar(QStringLiteral("Examples: %1 files copied%2.").arg(copies.copied).arg(kept));
}

void VeltracWin::sl_about()
{
    showBox(QMessageBox::Information, this, QStringLiteral("Veltrac"),
            QStringLiteral("  Veltrac, version 3.1.\n"
                           "  Beta version, May 2016.\n"
                           "  A program for ts-file administration.\n"
                           "  Measured series of any length: import, look, compute, plot.\n"
                           "  Ts-files are plain blocks of numbers; Help tells how they are built."));
}
