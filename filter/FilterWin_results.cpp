// Saving the results of Ts-Filt, and what becomes of them when it closes.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QStatusBar>

#include <cmath>
#include <system_error>

#include "core/ColumnCopy.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "filter/FilterWin.h"
#include "filter/SaveResults.h"
#include "filter/SaveResultsDialog.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"

using namespace veltrac;

namespace {

const QString kTitle = QStringLiteral("Ts-Filt");
constexpr int kSavedMs = 6000;

std::string pathOf(const QString& file)
{
    return QFile::encodeName(file).toStdString();
}

// The file as messages name it.
QString shown(const QString& file)
{
    return QFileInfo(file).fileName();
}

}  // namespace

void FilterWin::sl_saveResults()
{
    if (!m_work) {
        statusBar()->showMessage(QStringLiteral("There is nothing to save: execute the calculation first"));
        return;
    }
    const QString suggested = QFileInfo(m_sourceFile).completeBaseName() + QStringLiteral("_filt");
    QString name = suggested;
    for (int i = 2; QFileInfo::exists(name + QStringLiteral(".ts")); ++i)
        name = suggested + QString::number(i);
    SaveResultsDialog dialog(m_sourceFile, name + QStringLiteral(".ts"), this);
    if (dialog.exec() != QDialog::Accepted) {
        statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
        return;
    }
    if (save(dialog))
        resultSaved();
}

bool FilterWin::save(const SaveResultsDialog& dialog)
{
    const QString file =
        dialog.method() == SaveResultsDialog::ToFile ? dialog.file() : QFileInfo(m_sourceFile).fileName();
    try {
        return dialog.method() == SaveResultsDialog::ToFile ? saveToFile(dialog) : saveToSource(dialog);
    } catch (const TS::Failure&) {
        showBox(QMessageBox::Warning, this, kTitle, QStringLiteral("Saving file %1 failed").arg(file));
    } catch (const std::system_error& e) {
        showBox(QMessageBox::Warning, this, kTitle,
                QStringLiteral("Saving file %1 failed").arg(file) + QStringLiteral("\n") +
                    QString::fromLocal8Bit(e.what()));
    }
    statusBar()->showMessage(QStringLiteral("Saving file %1 failed").arg(file), kSavedMs);
    return false;
}

bool FilterWin::saveToFile(const SaveResultsDialog& dialog)
{
    const QString file = dialog.file();
    if (QFileInfo::exists(file)) {
        const ResultColumns columns{dialog.inputColumn(), dialog.outputColumn()};
        return requireColumn("Y1", columns.input) && requireColumn("Y2", columns.output) &&
               saveToColumnsOf(file, columns);
    }
    JobOutcome outcome = JobOutcome::Done;
    {
        const auto work = openTsFile(m_work->path().string(), true);
        JobProgress progress(this, QStringLiteral("Saving %1").arg(shown(file)));
        outcome = saveToNewFile(*work, pathOf(file), progress.callback());
    }
    return tellSaved(file, outcome, true);
}

bool FilterWin::saveToSource(const SaveResultsDialog& dialog)
{
    if (dialog.outputColumn() > 0)
        return saveToColumnsOf(m_sourceFile, {0, dialog.outputColumn()});
    std::uint32_t count = 0;
    if (!mayTakeResults(m_sourceFile) || !agreesWith(m_sourceFile, count))
        return tellSaved(m_sourceFile, JobOutcome::Cancelled);
    const auto work = openTsFile(m_work->path().string(), true);
    JobProgress progress(this, QStringLiteral("Saving %1").arg(shown(m_sourceFile)));
    return tellSaved(m_sourceFile,
                     saveToAddedColumn(*work, pathOf(m_sourceFile), count, progress.callback()));
}

bool FilterWin::saveToColumnsOf(const QString& file, const ResultColumns& columns)
{
    const QString question = columns.input == 0
                                 ? QStringLiteral("Column %1 of %2 will be replaced.\nProceed?")
                                       .arg(columns.output)
                                       .arg(shown(file))
                                 : QStringLiteral("Columns %1 and %2 of %3 will be replaced.\nProceed?")
                                       .arg(columns.input)
                                       .arg(columns.output)
                                       .arg(shown(file));
    std::uint32_t count = 0;
    if (!mayTakeResults(file) || !askYesNo(QMessageBox::Question, this, kTitle, question) ||
        !agreesWith(file, count))
        return tellSaved(file, JobOutcome::Cancelled);
    const auto work = openTsFile(m_work->path().string(), true);
    std::filesystem::path backup;
    const auto tellBackup = qScopeGuard([&] {
        if (!backup.empty())
            showBox(QMessageBox::Warning, this, kTitle,
                    QStringLiteral("The old values could not be put back; they lie in %1.")
                        .arg(QFile::decodeName(backup.c_str())));
    });
    JobProgress progress(this, QStringLiteral("Saving %1").arg(shown(file)));
    return tellSaved(file, saveToColumns(*work, pathOf(file), columns, count, progress.callback(), backup));
}

// Results do not go where they would be lost with the work file, nor under another window's hands.
bool FilterWin::mayTakeResults(const QString& file)
{
    const bool isWork = QFileInfo(file) == QFileInfo(QFile::decodeName(m_work->path().c_str()));
    if (!isWork && !mayWrite(file))
        return false;
    if (!isWork && oldestRow(*openTsFile(pathOf(file), true)) == 1)
        return true;
    const QString reason =
        isWork
            ? QStringLiteral("%1 is the work file of this window, which goes when the window closes.")
            : QStringLiteral("%1 is a ring file that does not begin with its oldest sample; the results do.");
    showBox(QMessageBox::Warning, this, kTitle,
            reason.arg(shown(file)) + QStringLiteral("\nNothing was saved."));
    return false;
}

// What differs is said, and the user decides. `count` becomes the number of samples that both have.
bool FilterWin::agreesWith(const QString& file, std::uint32_t& count)
{
    const auto work = openTsFile(m_work->path().string(), true);
    const auto target = openTsFile(pathOf(file), true);
    count = std::min(work->samples(), target->samples());
    if (work->samples() != target->samples() &&
        !askYesNo(QMessageBox::Question, this, kTitle,
                  QStringLiteral("%1 has %2 samples, the results have %3.\nSave the first %4 of them?")
                      .arg(shown(file))
                      .arg(target->samples())
                      .arg(work->samples())
                      .arg(count)))
        return false;
    return work->dt() == target->dt() ||
           askYesNo(QMessageBox::Question, this, kTitle,
                    QStringLiteral(
                        "The sample time of %1 is %2 s, that of the results %3 s.\nSave them all the same?")
                        .arg(shown(file))
                        .arg(static_cast<double>(target->dt()), 0, 'g', 7)
                        .arg(static_cast<double>(work->dt()), 0, 'g', 7));
}

bool FilterWin::tellSaved(const QString& file, JobOutcome outcome, bool isNew)
{
    const bool done = outcome == JobOutcome::Done;
    statusBar()->showMessage(
        done ? QStringLiteral("File %1 saved").arg(shown(file)) : QStringLiteral("Saving aborted"), kSavedMs);
    if (done && isNew && QFileInfo(file).absolutePath() == QDir::currentPath())
        emit x_file_made(shown(file));
    else if (done)
        emit x_directory_changed();
    return done;
}

// -- Closing --

bool FilterWin::mayClose()
{
    if (!ResultWindow::mayClose())
        return false;
    const QVector<QPointer<QWidget>> windows = m_subWindows;
    for (const QPointer<QWidget>& window : windows) {
        if (window)
            window->close();
    }
    dropWork();
    return true;
}

void FilterWin::dropWork()
{
    canvas()->showText(QString());
    m_work.reset();
}
