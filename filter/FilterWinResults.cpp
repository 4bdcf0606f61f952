// Saving the results of Ts-Filt, and what becomes of them when it closes.
#include <QFile>
#include <QFileInfo>
#include <QStatusBar>

#include <cmath>
#include <system_error>

#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "filter/FilterWin.h"
#include "filter/SaveResults.h"
#include "filter/SaveResultsDialog.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"

namespace {

const QString kTitle = QStringLiteral("Ts-Filt");
constexpr int kSavedMs = 6000;

std::string pathOf(const QString& file)
{
    return QFile::encodeName(file).toStdString();
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
    if (save(dialog)) {
        m_saved = true;
        emit x_directory_changed();
    }
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
    const auto work = openTsFile(m_work->path().string(), true);
    if (!QFileInfo::exists(file)) {
        JobProgress progress(this, QStringLiteral("Saving %1").arg(file));
        const JobOutcome outcome = saveToNewFile(*work, pathOf(file), progress.callback());
        if (tellSaved(file, outcome) &&
            QFileInfo(file).absolutePath() == QFileInfo(QStringLiteral(".")).absoluteFilePath())
            emit x_file_made(QFileInfo(file).fileName());
        return outcome == JobOutcome::Done;
    }
    if (!mayWrite(file) || !askYesNo(QMessageBox::Question, this, kTitle,
                                     QStringLiteral("Columns %1 and %2 of %3 will be replaced.\nProceed?")
                                         .arg(dialog.inputColumn())
                                         .arg(dialog.outputColumn())
                                         .arg(file)))
        return tellSaved(file, JobOutcome::Cancelled);
    const auto target = openTsFile(pathOf(file), false);
    std::uint32_t count = 0;
    if (!agreesWith(*target, file, count))
        return tellSaved(file, JobOutcome::Cancelled);
    std::filesystem::path backup;
    const auto tellBackup = [&] {
        if (!backup.empty())
            showBox(QMessageBox::Warning, this, kTitle,
                    QStringLiteral("The old values could not be put back; they lie in %1.")
                        .arg(QFile::decodeName(backup.c_str())));
    };
    try {
        JobProgress progress(this, QStringLiteral("Saving %1").arg(file));
        return tellSaved(file, saveToColumns(*work, *target, {dialog.inputColumn(), dialog.outputColumn()},
                                             count, progress.callback(), backup));
    } catch (...) {
        tellBackup();
        throw;
    }
}

bool FilterWin::saveToSource(const SaveResultsDialog& dialog)
{
    const unsigned column = dialog.outputColumn();
    const QString shown = QFileInfo(m_sourceFile).fileName();
    if (!mayWrite(m_sourceFile) ||
        (column > 0 &&
         !askYesNo(QMessageBox::Question, this, kTitle,
                   QStringLiteral("Column %1 of %2 will be replaced.\nProceed?").arg(column).arg(shown))))
        return tellSaved(shown, JobOutcome::Cancelled);
    const auto work = openTsFile(m_work->path().string(), true);
    std::filesystem::path backup;
    std::uint32_t count = 0;
    auto target = openTsFile(pathOf(m_sourceFile), column == 0);
    if (!agreesWith(*target, shown, count))
        return tellSaved(shown, JobOutcome::Cancelled);
    try {
        JobProgress progress(this, QStringLiteral("Saving %1").arg(shown));
        if (column == 0)
            target.reset();
        return tellSaved(
            m_sourceFile,
            column == 0 ? saveToAddedColumn(*work, pathOf(m_sourceFile), count, progress.callback(), backup)
                        : saveToColumns(*work, *target, {0, column}, count, progress.callback(), backup));
    } catch (...) {
        if (!backup.empty())
            showBox(QMessageBox::Warning, this, kTitle,
                    QStringLiteral("The old values could not be put back; they lie in %1.")
                        .arg(QFile::decodeName(backup.c_str())));
        throw;
    }
}

bool FilterWin::mayWrite(const QString& file)
{
    const TsApplication* const application = TsApplication::instance();
    if (application == nullptr || !application->isOpenForWriting(file))
        return true;
    showBox(QMessageBox::Warning, this, kTitle,
            QStringLiteral("%1 is open for writing in another window.\nNothing was saved.").arg(file));
    return false;
}

// What differs is said, and the user decides. `count` becomes the number of samples that both have.
bool FilterWin::agreesWith(TSFILE& target, const QString& file, std::uint32_t& count)
{
    const auto work = openTsFile(m_work->path().string(), true);
    count = std::min(work->samples(), target.samples());
    if (work->samples() != target.samples() &&
        !askYesNo(QMessageBox::Question, this, kTitle,
                  QStringLiteral("%1 has %2 samples, the results have %3.\nSave the first %4 of them?")
                      .arg(file)
                      .arg(target.samples())
                      .arg(work->samples())
                      .arg(count)))
        return false;
    return work->dt() == target.dt() ||
           askYesNo(QMessageBox::Question, this, kTitle,
                    QStringLiteral(
                        "The sample time of %1 is %2 s, that of the results %3 s.\nSave them all the same?")
                        .arg(file)
                        .arg(static_cast<double>(target.dt()), 0, 'g', 7)
                        .arg(static_cast<double>(work->dt()), 0, 'g', 7));
}

bool FilterWin::tellSaved(const QString& file, JobOutcome outcome)
{
    const bool done = outcome == JobOutcome::Done;
    statusBar()->showMessage(
        done ? QStringLiteral("File %1 saved").arg(file) : QStringLiteral("Saving aborted"), kSavedMs);
    return done;
}

// -- Closing --

bool FilterWin::mayClose()
{
    if (!m_saved &&
        askYesNo(QMessageBox::Question, this, kTitle, QStringLiteral("Do you want to save the results?"))) {
        sl_saveResults();
        // What could not be saved is not thrown away.
        if (!m_saved)
            return false;
    }
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
    m_canvas->showText(QString());
    m_work.reset();
}
