#include "converters/TsaDialogs.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <system_error>

#include "converters/ImportTexts.h"
#include "converters/TsaExport.h"
#include "converters/TsaImport.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/JobProgress.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

const QString kTsaFilter = QStringLiteral("TS-ASCII files (*.tsa);;");

// "1 line", "2 000 lines"
QString counted(std::uint64_t n, const char* one, const char* many)
{
    return groupedNumber(n) + QLatin1Char(' ') + QString::fromLatin1(n == 1 ? one : many);
}

void warnBox(QWidget* parent, const QString& title, const QString& text)
{
    showBox(QMessageBox::Warning, parent, title, text);
}

class QuestionBoxes : public TsaQuestions
{
public:
    QuestionBoxes(QWidget* parent, JobProgress& job) : m_parent(parent), m_job(job) {}

    std::optional<int> askSamples(const std::string& tsaFile) override
    {
        return ask(QStringLiteral("Enter no of samples: "),
                   QStringLiteral("No of samples was not found in %1").arg(shown(tsaFile)), 10, 100000, 1);
    }

    std::optional<int> askColumns(const std::string& tsaFile) override
    {
        // The arrows go in steps of two on purpose.
        return ask(QStringLiteral("Enter no of columns:"),
                   QStringLiteral("No of columns was not found in %1").arg(shown(tsaFile)), 1, 1000, 2);
    }

    bool mayOverwrite(const std::string& file) override
    {
        const JobProgress::Pause pause(m_job);
        return askOverwrite(m_parent, shown(file));
    }

    bool isOpenForWriting(const std::string& file) override
    {
        const TsApplication* const application = TsApplication::instance();
        return application != nullptr && application->isOpenForWriting(shown(file));
    }

    void warn(const std::string& title, const std::string& text) override
    {
        warnBox(m_parent, shown(title), shown(text));
    }

private:
    std::optional<int> ask(const QString& title, const QString& label, int start, int most, int step)
    {
        const JobProgress::Pause pause(m_job);
        bool ok = false;
        const int answer = QInputDialog::getInt(m_parent, title, label, start, 0, most, step, &ok);
        return ok ? std::optional<int>(answer) : std::nullopt;
    }

    QWidget* m_parent;
    JobProgress& m_job;
};

// -- What happened, in words --

QStringList losses(const TsaImportReport& report)
{
    struct Row
    {
        std::uint64_t count;
        const char* one;
        const char* many;
    };
    const Row rows[] = {
        {report.samples - report.rowsRead, "sample has no line in the text and holds zeros.",
         "samples have no line in the text and hold zeros."},
        {report.linesCut, "line is too long and was cut (header 256, data 2048 characters).",
         "lines are too long and were cut (header 256, data 2048 characters)."},
        {report.linesTabbed, "data line begins with a tab and was passed over.",
         "data lines begin with a tab and were passed over."},
        {report.notNumbers, "word is no number, or has text behind the number.",
         "words are no numbers, or have text behind the number."},
        {report.valuesMissing, "value is missing in its line and became 0.",
         "values are missing in their lines and became 0."},
        {report.valuesLeftOver, "value is more than the columns and was left over.",
         "values are more than the columns and were left over."},
        {report.linesLeftOver, "data line is more than the samples and was left over.",
         "data lines are more than the samples and were left over."},
    };
    QStringList texts;
    for (const Row& row : rows)
        if (row.count != 0)
            texts << counted(row.count, row.one, row.many);
    return texts;
}

QString importStatus(const TsaImportReport& report, const QString& tsaFile, double seconds)
{
    QString text = QStringLiteral("%1: %2 of %3 read from %4 in %5 s")
                       .arg(shown(report.tsFile), counted(report.rowsRead, "sample", "samples"),
                            counted(report.columns, "column", "columns"), QFileInfo(tsaFile).fileName(),
                            QString::number(seconds, 'f', 1));
    text += report.isLossless() ? QStringLiteral(".") : QStringLiteral("; not everything could be kept.");
    if (report.oldFileKept)
        text += QStringLiteral(" The old file was kept.");
    return text;
}

void reportLosses(QWidget* parent, const TsaImportReport& report)
{
    if (report.isLossless())
        return;
    showBox(QMessageBox::Information, parent, QStringLiteral("Veltrac"),
            QStringLiteral("%1 was made, but not everything in the text could be kept:\n\n%2")
                .arg(shown(report.tsFile), losses(report).join(QLatin1Char('\n'))));
}

// "A ring file: it begins at row 41, the text at row 1; rows 90 to 100 are not yet written."
QString ringNote(const TsaExportReport& report, std::uint32_t rows)
{
    QString note = QStringLiteral("A ring file, written as its rows stand: it begins at row %1")
                       .arg(groupedNumber(report.oldestRow));
    if (report.firstUnwritten != 0)
        note += QStringLiteral(", and nobody has written rows %1 to %2 yet")
                    .arg(groupedNumber(report.firstUnwritten), groupedNumber(rows));
    return note + QStringLiteral(". \"Save interval\" in its plot unfolds it.");
}

QStringList exportNotes(const TsaExportReport& report, std::uint32_t rows)
{
    QStringList notes;
    if (report.isRing)
        notes << ringNote(report, rows);
    if (report.valuesRounded)
        notes << QStringLiteral("Values were rounded to six digits.");
    if (report.sampleTimeRounded)
        notes << QStringLiteral("The sample time was rounded to six digits.");
    if (report.rowsTooLong != 0)
        notes << counted(report.rowsTooLong,
                         "row is longer than 2048 characters: it cannot be read back whole.",
                         "rows are longer than 2048 characters: they cannot be read back whole.");
    if (report.startIsLost)
        notes << QStringLiteral("A tsa text has no place for the file's start time.");
    return notes;
}

TsaOutcome failed(QWidget* parent, const QString& what)
{
    const QString text = what + QLatin1Char('\n') + importFailure();
    warnBox(parent, QStringLiteral("Veltrac error"), text);
    return {false, QString(), text.simplified()};
}

}  // namespace

QString chooseTsaFile(QWidget* parent)
{
    return QFileDialog::getOpenFileName(parent, QStringLiteral("Read a tsa-file and convert to a ts-file."),
                                        QString(), kTsaFilter);
}

TsaOutcome importTsa(QWidget* parent, const QString& tsaFile)
{
    const QString name = QFileInfo(tsaFile).fileName();
    TsaImportReport report;
    double seconds = 0.0;
    try {
        JobProgress progress(parent, QStringLiteral("Reading %1 …").arg(name));
        QuestionBoxes questions(parent, progress);
        const int made = importTsaText(pathOf(tsaFile), questions, progress.callback(), report);
        if (made == 0)
            return {false, QString(), QStringLiteral("The import of %1 was cancelled.").arg(name)};
        if (made < 0)
            return {false, QString(), QStringLiteral("%1 was not imported; nothing was changed.").arg(name)};
        seconds = progress.seconds();
    } catch (...) {
        return failed(parent, QStringLiteral("%1 was not imported; nothing was changed.").arg(name));
    }
    reportLosses(parent, report);
    return {true, shown(report.tsFile), importStatus(report, tsaFile, seconds)};
}

TsaOutcome exportTsa(QWidget* parent, const QString& tsFile)
{
    return exportTsaInterval(parent, tsFile, 1, UINT32_MAX);
}

TsaOutcome exportTsaInterval(QWidget* parent, const QString& tsFile, std::uint32_t first, std::uint32_t last)
{
    const bool isWhole = first <= 1 && last == UINT32_MAX;
    const QString suggested = QFileInfo(tsFile).completeBaseName() +
                              (isWhole ? QStringLiteral(".tsa") : QStringLiteral("_part.tsa"));
    QString target = QFileDialog::getSaveFileName(
        parent, QStringLiteral("Write %1 as a tsa-file").arg(QFileInfo(tsFile).fileName()),
        saveSuggestion(suggested), kTsaFilter, nullptr, QFileDialog::DontConfirmOverwrite);
    if (target.isEmpty())
        return {false, QString(), QStringLiteral("Nothing was written.")};
    if (!target.endsWith(QStringLiteral(".tsa"), Qt::CaseInsensitive))
        target += QStringLiteral(".tsa");
    return exportTsaTo(parent, tsFile, target, first, last);
}

TsaOutcome exportTsaTo(QWidget* parent, const QString& tsFile, const QString& target, std::uint32_t first,
                       std::uint32_t last)
{
    const QString name = QFileInfo(target).fileName();
    std::unique_ptr<TSFILE> ts;
    if (TsApplication* const application = TsApplication::instance())
        ts.reset(application->OpenTs(tsFile, true));
    if (!ts)
        return {false, QString(), QStringLiteral("%1 could not be opened; nothing was written.").arg(tsFile)};
    if (QFileInfo::exists(target) &&
        !(mayWrite(parent, QStringLiteral("Veltrac"), target) && askOverwrite(parent, name)))
        return {false, QString(), QStringLiteral("%1 was kept; nothing was written.").arg(name)};
    try {
        JobProgress progress(parent, QStringLiteral("Writing %1 …").arg(name));
        TsaExportReport report;
        const JobOutcome outcome = exportTsaText(*ts, pathOf(target), first, std::min(last, ts->samples()),
                                                 progress.callback(), report);
        if (outcome == JobOutcome::Cancelled)
            return {false, QString(),
                    QStringLiteral("The export was cancelled; no %1 was written.").arg(name)};
        QStringList texts(QStringLiteral("%1: %2 of %3 written in %4 s.")
                              .arg(name, counted(report.samples, "sample", "samples"),
                                   counted(report.columns, "column", "columns"),
                                   QString::number(progress.seconds(), 'f', 1)));
        texts += exportNotes(report, ts->samples());
        return {true, target, texts.join(QLatin1Char(' '))};
    } catch (...) {
        return failed(parent, QStringLiteral("%1 was not written.").arg(name));
    }
}

}  // namespace veltrac
