// The Ts-Edit window's compiling and calculating.
#include "formula/EditTsWin1.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <system_error>

#include "core/TsExceptions.h"
#include "formula/FormulaFile.h"
#include "formula/FormulaParser.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/JobProgress.h"

using namespace veltrac;

namespace {

constexpr int kShownChars = 24;  // of a text that is ignored: the status bar stays as narrow as the window

// What the compiler accepts and the user may not have meant.
QString hintFor(const FormulaParser& parser)
{
    const QString ignored = QString::fromUtf8(parser.ignoredText()).trimmed();
    if (parser.isNothing())
        return QStringLiteral("Not understood: this gives 0 everywhere");
    if (!ignored.isEmpty())
        return QStringLiteral("Ignored from position %1 on: %2")
            .arg(parser.position())
            .arg(ignored.size() > kShownChars ? ignored.left(kShownChars) + QChar(0x2026) : ignored);
    if (parser.hasStrayComma())
        return QStringLiteral("A comma between no two arguments gives 0 (decimals have a point)");
    if (parser.lacksOperand())
        return QStringLiteral("An operand is missing at the end: it counts as 0");
    return {};
}

}  // namespace

// -- Compiling --

QByteArray EditTsWin::formulaBytes() const
{
    return m_formula->text().toUtf8().left(static_cast<int>(kFormulaBytes));
}

std::unique_ptr<FormulaParser> EditTsWin::makeParser()
{
    m_buffer = formulaBytes();
    auto parser = std::make_unique<FormulaParser>(m_buffer.constData());
    if (const EditVariable* const target = targetRow())
        parser->SetSource(target->ts().get(), static_cast<std::int32_t>(target->column()), target->index());
    for (const EditVariable* const row : m_rows)
        parser->SetSource(row->ts().get(), static_cast<std::int32_t>(row->column()), row->index());
    return parser;
}

// While the user types: the status bar says what is wrong, nothing pops up.
void EditTsWin::checkQuietly()
{
    m_parser.reset();
    QString text;
    if (!m_formula->text().trimmed().isEmpty()) {
        try {
            m_parser = makeParser();
            m_parser->Compile();
            text = m_parser->ErrorCode() != 0
                       ? QString::fromLatin1(errorText(m_parser->ErrorCode(), m_parser->errorPosition()))
                       : hintFor(*m_parser);
        } catch (const TS::Failure&) {
            text = QStringLiteral("A source file cannot be read");
        }
    }
    if (m_formula->text().toUtf8().size() > static_cast<int>(kFormulaBytes))
        text = QStringLiteral("The formula is longer than 255 characters and will be cut");
    m_status->setText(text);
}

// -- Calculating --

bool EditTsWin::targetMayChange(const EditVariable& target)
{
    const TsApplication* const application = TsApplication::instance();
    if (application != nullptr && application->isOpenForWriting(target.file())) {
        showMessage(
            QStringLiteral("Cannot execute this command while the\ntarget file is open as read/write in the "
                           "List window."));
        return false;
    }
    if (target.ts() && target.ts()->readOnly()) {
        showMessage(QStringLiteral("%1 is read-only. Nothing was calculated.").arg(target.fileName()));
        return false;
    }
    return true;
}

// The rows that the formula uses, and the target's, from 1.
std::vector<const EditVariable*> EditTsWin::usedBy(const EditVariable& target) const
{
    const auto used = usedRows(formulaBytes().toStdString(), static_cast<int>(m_rows.size()), target.index());
    std::vector<const EditVariable*> rows;
    std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(rows), [&used](const EditVariable* row) {
        return used[static_cast<std::size_t>(row->index() - 1)];
    });
    return rows;
}

// A file can vanish, or lose columns, behind the window's back: the target is not filled with what is not
// there.
bool EditTsWin::areThere(const std::vector<const EditVariable*>& rows)
{
    const auto missing = std::find_if(rows.begin(), rows.end(), [](const EditVariable* row) {
        return !row->ts() || row->column() == 0 || row->column() > row->ts()->columns();
    });
    if (missing == rows.end())
        return true;
    const EditVariable& row = **missing;
    const QString name = QStringLiteral("x%1: %2").arg(row.index()).arg(row.fileName());
    showMessage(row.ts()
                    ? QStringLiteral("%1 does not have the chosen column. Nothing was calculated.").arg(name)
                    : QStringLiteral("%1 could not be opened. Nothing was calculated.").arg(name));
    return false;
}

CalculationRange EditTsWin::rangeFor(const EditVariable& target, QString& reason) const
{
    std::vector<TimeBounds> bounds;
    for (const EditVariable* const row : usedBy(target)) {
        if (!row->hasBounds()) {
            reason = QStringLiteral("Start or end of x%1 is not a number").arg(row->index());
            return {1, 0};
        }
        bounds.push_back(row->bounds());
    }
    const double dt = target.ts()->dt();
    const CalculationRange range = calculationRange(bounds, dt, target.ts()->samples());
    if (range.isEmpty())
        reason =
            !(dt > 0.0) ? QStringLiteral("The sample time of the target is not above 0")
            : target.ts()->samples() == 0
                ? QStringLiteral("The target has no samples")
                : QStringLiteral(
                      "Nothing to calculate: t runs from 0 to %1 s over the target, and the start and end "
                      "times of the rows leave none of it")
                      .arg((target.ts()->samples() - 1.0) * dt);
    return range;
}

void EditTsWin::sl_calculate()
{
    statusBar()->clearMessage();  // it told of the calculation before
    EditVariable* const target = targetRow();
    if (target == nullptr) {
        showMessage(QStringLiteral("No target selected"));
        return;
    }
    try {
        m_parser.reset();
        reopenFiles();
        if (!targetMayChange(*target) || !areThere(usedBy(*target)))
            return;
        m_parser = makeParser();
        m_parser->Compile();
        if (m_parser->ErrorCode() != 0) {
            m_parser->ReportError();
            return;
        }
        QString reason;
        const CalculationRange range = rangeFor(*target, reason);
        if (range.isEmpty()) {
            say(reason);
            return;
        }
        // No column is lost to a slip of the pen: "-(x1)" is nothing to the compiler.
        if (m_parser->isNothing() &&
            !askYesNo(
                QMessageBox::Question, this, windowTitle(),
                QStringLiteral("The formula was not understood: it gives 0 everywhere.\nFill x%1 with 0?")
                    .arg(target->index()))) {
            say(QStringLiteral("Nothing was calculated"));
            return;
        }
        run(*target, range);
    } catch (const TS::Failure&) {
        showMessage(QStringLiteral("A source file cannot be read. Nothing was calculated."));
    }
}

// Changes that a file still holds are written or given up now.
TSFILE& EditTsWin::reopenTarget(const EditVariable& target)
{
    m_parser.reset();
    reopenFiles();
    if (!target.ts() || target.ts()->readOnly())
        throw TS::OPEN_ERROR(QFile::encodeName(target.file()).toStdString());
    return *target.ts();
}

void EditTsWin::run(const EditVariable& target, const CalculationRange& range)
{
    CalculationReport report;
    QString failure;
    try {
        JobProgress progress(this, QStringLiteral("Calculating x%1").arg(target.index()));
        const CalculationTarget job{*target.ts(), target.column(), range, std::time(nullptr),
                                    [&]() -> TSFILE& { return reopenTarget(target); }};
        const JobOutcome outcome = calculate(*m_parser, job, progress.callback(), report);
        tellOutcome(outcome, range, report, progress.seconds());
        if (outcome == JobOutcome::Done)
            emit x_directory_changed();
        return;
    } catch (const std::system_error& error) {
        failure = QFile::decodeName(error.what());
    } catch (...) {
        failure = QStringLiteral("a file could not be read or written to its end");
    }
    showMessage(report.oldValues.empty()
                    ? QStringLiteral("The calculation failed: %1.\nThe column is as it was.").arg(failure)
                    : QStringLiteral("The calculation failed: %1.\nThe old values could not be put back. "
                                     "They lie in %2.")
                          .arg(failure, QFile::decodeName(report.oldValues.c_str())));
}

void EditTsWin::tellOutcome(JobOutcome outcome, const CalculationRange& range,
                            const CalculationReport& report, double seconds)
{
    QString told =
        outcome == JobOutcome::Cancelled
            ? QStringLiteral("Cancelled: the column is as it was")
            : QStringLiteral("%1 samples in %2 s").arg(groupedNumber(range.count())).arg(seconds, 0, 'f', 1);
    if (report.faultySamples > 0)
        told += QStringLiteral(", %1 with an error and the value 0").arg(groupedNumber(report.faultySamples));
    if (report.missing > 0 && outcome == JobOutcome::Done)
        told += QStringLiteral(", %1 missing %2")
                    .arg(groupedNumber(report.missing),
                         report.missing == 1 ? QStringLiteral("value") : QStringLiteral("values"));
    say(told);
}
