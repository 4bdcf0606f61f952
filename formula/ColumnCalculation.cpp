#include "formula/ColumnCalculation.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <ctime>

#include "core/FailureText.h"
#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "formula/FormulaParser.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

QString failureInFlight()
{
    return QString::fromLocal8Bit(reasonOfFailure().c_str());
}

// "all 108 000 values are missing"
QString missingValues(std::uint64_t missing, std::uint32_t count)
{
    if (missing == 0)
        return {};
    if (missing == 1)
        return QStringLiteral("1 value is missing");
    return (missing == count ? QStringLiteral("all %1 values are missing")
                             : QStringLiteral("%1 values are missing"))
        .arg(groupedNumber(missing));
}

}  // namespace

QStringList readingsOf(const FormulaParser& parser)
{
    QStringList words;
    for (const std::string& reading : parser.readings())
        words << QString::fromStdString(reading);
    return words;
}

QString clockDifferences(const std::vector<const EditVariable*>& rows, const EditVariable& target)
{
    std::vector<std::pair<int, TSFILE*>> sources;
    for (const EditVariable* const row : rows)
        if (row->ts())
            sources.emplace_back(row->index(), row->ts().get());
    return target.ts() ? QString::fromStdString(clockDifferences(sources, *target.ts())) : QString();
}

// -- Calculating --

ColumnCalculation::Answer ColumnCalculation::refused(const QString& text) const
{
    return {text, {}, {}, false};
}

// A file can vanish, or lose columns, behind the window's back: the target is not filled with what is not
// there.
QString ColumnCalculation::whyNot(const EditVariable& target,
                                  const std::vector<const EditVariable*>& rows) const
{
    const TsApplication* const application = TsApplication::instance();
    if (application != nullptr && application->isOpenForWriting(target.file()))
        return QStringLiteral(
            "Cannot execute this command while the\ntarget file is open as read/write in the "
            "List window.");
    if (const QString refusal = TsApplication::refusalToWrite(target.file()); !refusal.isEmpty())
        return refusal + QStringLiteral("\nNothing was calculated.");
    if (target.ts() && target.ts()->readOnly())
        return QStringLiteral("%1 is read-only. Nothing was calculated.").arg(target.fileName());
    for (const EditVariable* const row : rows) {
        const QString name = QStringLiteral("x%1: %2").arg(row->index()).arg(row->fileName());
        if (!row->ts())
            return QStringLiteral("%1 could not be opened. Nothing was calculated.").arg(name);
        if (row->column() == 0 || row->column() > row->ts()->columns())
            return QStringLiteral("%1 does not have the chosen column. Nothing was calculated.").arg(name);
    }
    return {};
}

CalculationRange ColumnCalculation::rangeFor(const EditVariable& target,
                                             const std::vector<const EditVariable*>& rows,
                                             QString& reason) const
{
    std::vector<TimeBounds> bounds;
    for (const EditVariable* const row : rows) {
        if (!row->hasBounds()) {
            reason = QStringLiteral("Start or end of x%1 is not a time").arg(row->index());
            return {1, 0};
        }
        bounds.push_back(row->bounds());
    }
    TSFILE& file = *target.ts();
    const CalculationRange range = calculationRange(bounds, file);
    if (!range.isEmpty())
        return range;
    const TimeBounds times = timesOf(file);
    reason = !(file.dt() > 0.0F) ? QStringLiteral("The sample time of the target is not above 0")
             : FileTime(file).rows() == 0
                 ? QStringLiteral("The target has no samples")
                 : QStringLiteral(
                       "Nothing to calculate: the target runs from %1 to %2 s, and the start and "
                       "end times of the rows leave none of it")
                       .arg(times.start)
                       .arg(times.end);
    return range;
}

ColumnCalculation::Answer ColumnCalculation::calculate(EditVariable& target, const QByteArray& formula)
try {
    m_sources.reopenFiles();
    const auto rows = m_sources.usedBy(formula, target);
    if (const QString reason = whyNot(target, rows); !reason.isEmpty())
        return refused(reason);
    FormulaParser parser(formula.constData());
    m_sources.bindTo(parser, &target);
    parser.Compile();
    if (parser.ErrorCode() != 0) {
        parser.ReportError();
        return {};
    }
    QString reason;
    const CalculationRange range = rangeFor(target, rows, reason);
    if (range.isEmpty())
        return {{}, reason, {}, false};
    return run(target, parser, range);
} catch (const TS::Failure&) {
    return refused(QStringLiteral("A source file cannot be read. Nothing was calculated."));
}

// Changes that a file still holds are written or given up now.
TSFILE& ColumnCalculation::reopenTarget(const EditVariable& target)
{
    m_sources.reopenFiles();
    if (!target.ts() || target.ts()->readOnly())
        throw TS::OPEN_ERROR(QFile::encodeName(target.file()).toStdString());
    return *target.ts();
}

ColumnCalculation::Answer ColumnCalculation::told(const EditVariable& target, const FormulaParser& formula,
                                                  const CalculationRange& range,
                                                  const CalculationReport& report, double seconds) const
{
    QStringList troubles;
    if (report.faultySamples > 0)
        troubles
            << QStringLiteral("%1 with an error and the value 0").arg(groupedNumber(report.faultySamples));
    if (report.missing > 0)
        troubles << missingValues(report.missing, range.count());
    const QStringList status(
        QStringLiteral("%1 samples in %2 s").arg(groupedNumber(range.count())).arg(seconds, 0, 'f', 1));
    const QStringList notice(
        QStringLiteral("x%1 of %2 was calculated").arg(target.index()).arg(target.fileName()));
    return {{},
            (status + troubles).join(QStringLiteral(", ")),
            (notice + readingsOf(formula) + troubles).join(QStringLiteral("; ")),
            true};
}

ColumnCalculation::Answer ColumnCalculation::run(const EditVariable& target, FormulaParser& formula,
                                                 const CalculationRange& range)
{
    const bool undoIsGood = m_undo != nullptr && !m_undo->wasChangedSince();
    CalculationReport report;
    Answer answer;
    try {
        JobProgress progress(m_window, QStringLiteral("Calculating x%1").arg(target.index()));
        const CalculationTarget job{*target.ts(), target.column(), range, std::time(nullptr),
                                    [&]() -> TSFILE& { return reopenTarget(target); }};
        if (veltrac::calculate(formula, job, progress.callback(), report) == JobOutcome::Cancelled) {
            answer.status = QStringLiteral("Cancelled: the column is as it was");
        } else {
            m_undo = std::make_unique<CalculationUndo>(QFile::encodeName(target.file()).toStdString(),
                                                       std::move(report.old.backup));
            answer = told(target, formula, range, report, progress.seconds());
        }
    } catch (...) {
        const QString failure = failureInFlight();
        answer.box =
            report.old.lost.empty()
                ? QStringLiteral("The calculation failed: %1.\nThe column is as it was.").arg(failure)
                : QStringLiteral(
                      "The calculation failed: %1.\nThe old values could not be put back. "
                      "They lie in %2.")
                      .arg(failure, QFile::decodeName(report.old.lost.c_str()));
    }
    // What was put back is what the calculation before had left.
    if (!answer.hasChanged && undoIsGood && report.old.lost.empty())
        m_undo->noteState();
    return answer;
}

// -- Undoing --

ColumnCalculation::Answer ColumnCalculation::undo()
{
    if (m_undo == nullptr)
        return {};
    const QString file = QFile::decodeName(m_undo->file().c_str());
    const QString name = QFileInfo(file).fileName();
    if (const QString refusal = TsApplication::refusalToWrite(file); !refusal.isEmpty())
        return refused(refusal);
    m_sources.reopenFiles();
    if (m_undo->wasChangedSince() &&
        !askYesNo(QMessageBox::Question, m_window, QStringLiteral("Ts-Edit"),
                  QStringLiteral("%1 was changed after the calculation.\nPut the values from before the "
                                 "calculation back all the same?")
                      .arg(name)))
        return {{}, QStringLiteral("Nothing was undone"), {}, false};
    const QString oldValues =
        QStringLiteral("The old values lie in %1.").arg(QFile::decodeName(m_undo->oldValues().c_str()));
    try {
        JobProgress progress(m_window, QStringLiteral("Putting the old values back"));
        const std::shared_ptr<TSFILE> ts = m_sources.openShared(file);
        if (!ts || ts->readOnly())
            return refused(QStringLiteral("%1 cannot be opened for writing.\n%2").arg(name, oldValues));
        m_undo->undo(*ts, progress.callback());
    } catch (...) {
        return refused(
            QStringLiteral("The calculation could not be undone: %1.\n%2").arg(failureInFlight(), oldValues));
    }
    m_undo.reset();
    return {{}, QStringLiteral("The calculation was undone: the column is as it was"), {}, true};
}

}  // namespace veltrac
