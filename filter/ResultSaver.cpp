#include "filter/ResultSaver.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QWidget>

#include <algorithm>
#include <system_error>

#include "core/ColumnCopy.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "filter/SaveResultsDialog.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

using Outcome = ResultSaver::Outcome;

std::string pathOf(const QString& file)
{
    return QFile::encodeName(file).toStdString();
}

Outcome outcomeOf(JobOutcome outcome)
{
    return outcome == JobOutcome::Done ? Outcome::Saved : Outcome::Aborted;
}

}  // namespace

ResultSaver::ResultSaver(QWidget* window, std::filesystem::path work, QString source, std::uint32_t first)
    : m_window(window), m_work(std::move(work)), m_source(std::move(source)), m_first(first)
{
}

ResultSaver::Outcome ResultSaver::save(const SaveResultsDialog& dialog)
{
    const bool toFile = dialog.method() == SaveResultsDialog::ToFile;
    m_file = toFile ? dialog.file() : m_source;
    m_shown = QFileInfo(m_file).fileName();
    QString failure;
    try {
        if (!toFile)
            return dialog.outputColumn() > 0 ? saveToColumnsOf({0, dialog.outputColumn()})
                                             : saveToNewColumn();
        return QFileInfo::exists(m_file) ? saveToColumnsOf({dialog.inputColumn(), dialog.outputColumn()})
                                         : saveToNew();
    } catch (const TS::Failure&) {
        failure = summary(Outcome::Failed);
    } catch (const std::system_error& e) {
        failure = summary(Outcome::Failed) + QLatin1Char('\n') + QString::fromLocal8Bit(e.what());
    }
    showBox(QMessageBox::Warning, m_window, m_window->windowTitle(), failure);
    return Outcome::Failed;
}

QString ResultSaver::summary(Outcome outcome) const
{
    switch (outcome) {
        case Outcome::Saved:
            return QStringLiteral("File %1 saved").arg(m_shown);
        case Outcome::Failed:
            return QStringLiteral("Saving file %1 failed").arg(m_shown);
        default:
            return QStringLiteral("Saving aborted");
    }
}

ResultSaver::Outcome ResultSaver::saveToNew()
{
    const auto work = openTsFile(m_work.string(), true);
    JobProgress progress(m_window, QStringLiteral("Saving %1").arg(m_shown));
    const Outcome outcome = outcomeOf(saveToNewFile(*work, pathOf(m_file), progress.callback()));
    if (outcome == Outcome::Saved && QFileInfo(m_file).absolutePath() == QDir::currentPath())
        m_made = m_shown;
    return outcome;
}

ResultSaver::Outcome ResultSaver::saveToNewColumn()
{
    std::uint32_t count = 0;
    if (!mayTakeResults() || !agrees(count))
        return Outcome::Aborted;
    const auto work = openTsFile(m_work.string(), true);
    JobProgress progress(m_window, QStringLiteral("Saving %1").arg(m_shown));
    return outcomeOf(saveToAddedColumn(*work, pathOf(m_file), count, progress.callback()));
}

ResultSaver::Outcome ResultSaver::saveToColumnsOf(const ResultColumns& columns)
{
    const QString question =
        columns.input == 0
            ? QStringLiteral("Column %1 of %2 will be replaced.\nProceed?").arg(columns.output).arg(m_shown)
            : QStringLiteral("Columns %1 and %2 of %3 will be replaced.\nProceed?")
                  .arg(columns.input)
                  .arg(columns.output)
                  .arg(m_shown);
    std::uint32_t count = 0;
    if (!mayTakeResults() || !ask(question) || !agrees(count))
        return Outcome::Aborted;
    const auto work = openTsFile(m_work.string(), true);
    std::filesystem::path backup;
    const auto warnOfBackup = qScopeGuard([&] {
        if (!backup.empty())
            showBox(QMessageBox::Warning, m_window, m_window->windowTitle(),
                    QStringLiteral("The old values could not be put back; they lie in %1.")
                        .arg(QFile::decodeName(backup.c_str())));
    });
    JobProgress progress(m_window, QStringLiteral("Saving %1").arg(m_shown));
    return outcomeOf(saveToColumns(*work, pathOf(m_file), columns, count, progress.callback(), backup));
}

// Results do not go where they would be lost with the work file, nor to other samples than their own, nor
// under another window's hands.
bool ResultSaver::mayTakeResults()
{
    const QFileInfo target(m_file);
    QString reason;
    if (target == QFileInfo(QFile::decodeName(m_work.c_str())))
        reason = QStringLiteral("%1 is the work file of this window, which goes when the window closes.");
    else if (m_first > 1 && target == QFileInfo(m_source))
        reason =
            QStringLiteral("The results begin with sample %1 of the source; a file of their own takes them.")
                .arg(m_first);
    else if (!mayWrite(m_window, m_window->windowTitle(), m_file))
        return false;
    else if (oldestRow(*openTsFile(pathOf(m_file), true)) != 1)
        reason =
            QStringLiteral("%1 is a ring file that does not begin with its oldest sample; the results do.");
    if (reason.isEmpty())
        return true;
    showBox(QMessageBox::Warning, m_window, m_window->windowTitle(),
            reason.replace(QStringLiteral("%1"), m_shown) + QStringLiteral("\nNothing was saved."));
    return false;
}

// What differs is said, and the user decides. `count` becomes the number of samples that both have.
bool ResultSaver::agrees(std::uint32_t& count)
{
    const auto work = openTsFile(m_work.string(), true);
    const auto target = openTsFile(pathOf(m_file), true);
    count = std::min(work->samples(), target->samples());
    if (work->samples() != target->samples() &&
        !ask(QStringLiteral("%1 has %2 samples, the results have %3.\nSave the first %4 of them?")
                 .arg(m_shown)
                 .arg(target->samples())
                 .arg(work->samples())
                 .arg(count)))
        return false;
    return work->dt() == target->dt() ||
           ask(QStringLiteral(
                   "The sample time of %1 is %2 s, that of the results %3 s.\nSave them all the same?")
                   .arg(m_shown)
                   .arg(static_cast<double>(target->dt()), 0, 'g', 7)
                   .arg(static_cast<double>(work->dt()), 0, 'g', 7));
}

bool ResultSaver::ask(const QString& question)
{
    return askYesNo(QMessageBox::Question, m_window, m_window->windowTitle(), question);
}

}  // namespace veltrac
