// What the main window's actions do.
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFontDialog>
#include <QPushButton>

#include "portal/SubPrograms.h"
#include "portal/Veltrac.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/QtMessageWin.h"

namespace {

constexpr int kHelpWidth = 950;
constexpr int kHelpHeight = 650;

// What a formula can report once for each of its samples.
const QStringList& runtimeTexts()
{
    static const QStringList texts{QStringLiteral("Attempt to divide on zero"),
                                   QStringLiteral("Missing argument in function")};
    return texts;
}

}  // namespace

// -- What other windows ask --

bool VeltracWin::isRuntimeTextSilenced(const QString& text) const
{
    return m_silencedJob == JobProgress::serial() && m_silenced.contains(text);
}

void VeltracWin::ShowTsError(const char* text)
{
    const QString shown = QString::fromUtf8(text);
    if (!runtimeTexts().contains(shown)) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac error"), shown);
        return;
    }
    if (isRuntimeTextSilenced(shown))
        return;

    QMessageBox box(QMessageBox::Warning, QStringLiteral("Veltrac error"), shown, QMessageBox::NoButton,
                    this);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const ok = box.addButton(QStringLiteral("Ok"), QMessageBox::AcceptRole);
    box.setEscapeButton(ok);
    // The box owns the check box.
    auto* const silence =
        new QCheckBox(QStringLiteral("Do not show this text again during this calculation"));
    box.setCheckBox(silence);
    box.exec();
    if (silence->isChecked()) {
        if (m_silencedJob != JobProgress::serial())
            m_silenced.clear();
        m_silencedJob = JobProgress::serial();
        m_silenced << shown;
    }
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
    QApplication::setOverrideCursor(Qt::WaitCursor);
    SubWindow* const window = makeSubProgram(kind, file, column);
    QApplication::restoreOverrideCursor();
    if (window == nullptr)
        return nullptr;
    m_subWindows.emplace_back(window);
    connect(window, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    connect(window, &SubWindow::x_directory_changed, this, &VeltracWin::sl_refresh);
    connect(window, &SubWindow::x_file_made, this, [this](const QString& name) {
        sl_refresh();
        m_table->select(name);
    });
    window->show();
    return window;
}

void VeltracWin::sl_subwindowGone(subWindow window)
{
    std::erase_if(m_subWindows, [window](const QPointer<QWidget>& w) { return w.isNull() || w == window; });
}

// -- Sub-programs on the directory --

void VeltracWin::sl_createFile()
{
    openSubProgram(SubProgram::Create, QString(), 0);
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
    const QString directory = dialog.selectedFiles().constFirst();
    if (!QDir::setCurrent(directory)) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"),
                QStringLiteral("The directory %1 cannot be entered.").arg(directory));
        return;
    }
    m_table->clearSelection();
    sl_refresh();
    emit x_new_plotdir(QDir::currentPath());
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
        say(QStringLiteral("Select a ts-file in the table first."));
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
    if (isOpenForWriting(name)) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"),
                QStringLiteral("The file %1 is open for writing in another window.\n"
                               "Close that window first.")
                    .arg(name));
        return;
    }
    const bool sure = askYesNo(QMessageBox::Question, this, QStringLiteral("Delete a file?"),
                               QStringLiteral("Do you really want to delete %1?").arg(name));
    QFile file(name);
    if (sure && !file.remove())
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"),
                QStringLiteral("The file %1 could not be deleted: %2.").arg(name, file.errorString()));
    sl_refresh();
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

void VeltracWin::sl_config_ps() {}

void VeltracWin::sl_readASCIIFile() {}

void VeltracWin::sl_writeASCII() {}

void VeltracWin::sl_config_font()
{
    bool chosen = false;
    const QFont font =
        QFontDialog::getFont(&chosen, QApplication::font(), this, QStringLiteral("Select the font"));
    if (!chosen)
        return;
    QApplication::setFont(font);
    m_table->resizeColumnsToContents();
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

void VeltracWin::sl_about()
{
    showBox(QMessageBox::Information, this, QStringLiteral("Veltrac"),
            QStringLiteral("  Veltrac, version 3.1.\n"
                           "  Beta version, May 2016.\n"
                           "  A program for ts-file administration.\n"
                           "  Measured series of any length: import, look, compute, plot.\n"
                           "  Ts-files are plain blocks of numbers; Help tells how they are built."));
}
