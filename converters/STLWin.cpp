#include "converters/STLWin.h"

#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSpinBox>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>

#include <algorithm>
#include <system_error>

#include "converters/ImportFields.h"
#include "converters/ImportReport.h"
#include "converters/ImportTexts.h"
#include "converters/STLLines.h"
#include "core/TsNames.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/NumberField.h"

using namespace veltrac;

namespace {

const QString kFilter = QStringLiteral(
    "Text files (*.stl *.csv *.txt *.dat *.log *.asc *.tsv *.prn);;STL files (*.stl);;All files (*)");

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

// "Sunday, 3 April 2016 13:30:00"
QString inWords(Micros wall)
{
    return QLocale(QLocale::English)
        .toString(QDateTime::fromMSecsSinceEpoch(wall / 1000, Qt::UTC),
                  QStringLiteral("dddd, d MMMM yyyy hh:mm:ss"));
}

// "Step 1.000 s, constant", "0.98 to 1.07 s, 3 gaps, longest 12 min"
QString stepText(const STLFormat& format, const STLCheck& found)
{
    if (format.timeSource == STLTimeSource::Typed && !format.stepIsTold && format.typedStep == 1.0)
        return QStringLiteral("No time was found; 1 s is assumed.");
    if (found.chosen < 2)
        return QStringLiteral("One row only.");
    QString notes;
    if (found.newestFirst)
        notes += QStringLiteral(" The newest row came first: the rows are turned round.");
    if (found.clockChanges != 0)
        notes += QStringLiteral(
                     " The local clock was set %1 meanwhile (daylight saving time): the rows' order "
                     "tells their times.")
                     .arg(found.clockChanges == 1 ? QStringLiteral("once")
                                                  : counted(found.clockChanges, "time", "times"));
    if (found.equalSteps)
        return QStringLiteral("Step %1, constant.").arg(stepLength(found.typicalStep)) + notes;
    QString line = stepRange(found.leastStep, found.greatestStep);
    if (found.gaps > 0)
        line += QStringLiteral(", %1, longest %2")
                    .arg(counted(found.gaps, "gap", "gaps"), durationText(found.longestGap));
    if (found.leastStep < 0.0)
        line += QStringLiteral(", some backwards");
    return line + QLatin1Char('.') + notes;
}

// "Please check: 2/1/85 is read as 1 February 1985. The rows run from 1 January 1985 to 1 December 1985."
QString orderDoubt(const STLFormat& format, const STLCheck& found)
{
    if (!format.orderInDoubt)
        return QString();
    const auto day = [](Micros wall) {
        return QLocale(QLocale::English)
            .toString(QDateTime::fromMSecsSinceEpoch(wall / 1000, Qt::UTC).date(),
                      QStringLiteral("d MMMM yyyy"));
    };
    return QStringLiteral("Please check: %1 is read as %2. The rows run from %3 to %4.")
        .arg(text(found.ambiguousText), day(found.ambiguousDate), day(found.firstWall),
             day(found.firstWall + static_cast<Micros>(found.span * kMicrosPerSecond)));
}

QString resultText(const STLCheck& found)
{
    const QString step = durationText(static_cast<double>(found.dt));
    return found.resampled          ? QStringLiteral("At equal steps of %1.").arg(step)
           : found.timeColumns == 2 ? QStringLiteral("With \"Time\" and \"Time32\".")
           : found.timeColumns == 1 ? QStringLiteral("With a column \"Time\".")
                                    : QStringLiteral("With a sample time of %1.").arg(step);
}

QString problemText(STLProblem problem)
{
    switch (problem) {
        case STLProblem::NotANumber:
            return QStringLiteral("no number: missing");
        case STLProblem::TooFewCells:
            return QStringLiteral("too few cells: the rest is missing");
        case STLProblem::TooManyCells:
            return QStringLiteral("too many cells: the rest is ignored");
        case STLProblem::UnreadableStamp:
            return QStringLiteral("no readable time: line skipped");
        case STLProblem::FarTime:
            return QStringLiteral("136 years or more from the first row: line skipped");
        case STLProblem::LineTooLong:
            return QStringLiteral("line longer than a million bytes: skipped");
    }
    return QString();
}

}  // namespace

// -- Opening --

void STLWin::sl_open()
{
    const QString file = QFileDialog::getOpenFileName(
        this, QStringLiteral("Read a text file of measurements and convert to a ts-file."), QString(),
        kFilter);
    if (!file.isEmpty())
        open(file);
    else if (!m_log)
        close();
}

void STLWin::open(const QString& file)
{
    m_log = std::make_unique<STLObject>(pathOf(file));
    m_problem.clear();
    setWindowTitle(QStringLiteral("Import of %1").arg(QFileInfo(file).fileName()));
    m_fileLabel->setText(QStringLiteral("%1, %2").arg(
        QFileInfo(file).fileName(), sizeText(static_cast<std::uint64_t>(QFileInfo(file).size()))));
    {
        const QScopedValueRollback<bool> filling(m_filling, true);
        m_target->setText(QFileInfo(file).completeBaseName() + QStringLiteral(".ts"));
    }
    try {
        m_lines->load(pathOf(file));
        m_log->detect();
    } catch (const std::exception&) {
        m_problem = importFailure();
    }
    showFormat();
    m_import->setFocus();
}

void STLWin::detectAgain(char separator, char decimal)
{
    m_problem.clear();
    try {
        m_log->detect(separator, decimal);
    } catch (const std::exception&) {
        m_problem = importFailure();
        m_log->format().columns.clear();
        m_log->format().cells.separator = separator;
        m_log->format().cells.decimal = decimal;
    }
    showFormat();
}

// -- Findings --

// Lines are coloured across the whole view.
void STLWin::widenPreview()
{
    m_preview->resizeColumnToContents(0);
    m_preview->setColumnWidth(0, std::max(m_preview->columnWidth(0), m_preview->viewport()->width()));
}

void STLWin::resizeEvent(QResizeEvent* event)
{
    SubWindow::resizeEvent(event);
    QTimer::singleShot(0, this, &STLWin::widenPreview);
}

// A check may find the order of day and month further down in the file.
void STLWin::showOrder()
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_order->setCurrentIndex(m_order->findData(static_cast<int>(m_log->format().order)));
}

void STLWin::showFindings()
{
    showOrder();
    m_lines->explain(m_log->format().columns.empty() ? nullptr : &m_log->format());
    widenPreview();
    showColumns();
    enableFields();
    const STLCheck& found = m_log->found();
    const bool dated =
        m_checked && m_log->format().timeSource != STLTimeSource::Typed && found.firstWall != 0;
    m_timeFinding->setText((m_checked ? stepText(m_log->format(), found) : QString()) +
                           (dated ? QStringLiteral("\nFirst row: ") + inWords(found.firstWall) : QString()));
    m_size->setText(m_checked ? sizeText(tsFileBytes(found.samples, found.columns)) : QString());

    QString line;
    if (m_checked)
        line = summary() + QLatin1Char('\n') + stepText(m_log->format(), found) + QLatin1Char(' ') +
               resultText(found);
    else if (m_problem.isEmpty() && !m_check->isEnabled())
        line = kMarkedField;
    else if (m_problem.isEmpty())
        line = QStringLiteral(
            "Only the beginning of the file has been read. \"Check only\" reads all of it, and so does "
            "\"Import\".");
    const QString order = m_checked ? orderDoubt(m_log->format(), found) : QString();
    QStringList doubts;
    if (!order.isEmpty())
        doubts << order;
    if (m_log->format().namesInDoubt)
        doubts << QStringLiteral("Please check: line %1, of numbers, is taken for the names of the columns.")
                      .arg(m_log->format().namesLine);
    m_finding->setText(line);
    showText(m_warning, m_problem.isEmpty() ? doubts.join(QLatin1Char('\n')) : m_problem);
    showText(m_orderReason, order);
}

// "86 400 rows, 3 columns. 12 cells missing, 2 lines skipped."
QString STLWin::summary() const
{
    const STLCheck& found = m_log->found();
    const QString line =
        QStringLiteral("%1, %2.").arg(counted(found.samples, "row", "rows"),
                                      counted(found.columns - found.timeColumns, "column", "columns"));
    QStringList losses;
    if (found.missingCells != 0)
        losses << counted(found.missingCells, "cell", "cells") + QStringLiteral(" missing");
    if (found.skippedLines != 0)
        losses << counted(found.skippedLines, "line", "lines") + QStringLiteral(" skipped");
    if (found.titleLines != 0)
        losses << counted(found.titleLines, "repeated line", "repeated lines") +
                      QStringLiteral(" of names left out");
    return losses.isEmpty() ? line
                            : line + QLatin1Char(' ') + losses.join(QStringLiteral(", ")) + QLatin1Char('.');
}

// A box that is not used names no column.
void STLWin::enableColumn(QComboBox* box, bool used)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    box->setEnabled(used);
    if (used == (box->currentIndex() < 0))
        box->setCurrentIndex(used ? 0 : -1);
}

void STLWin::enableFields()
{
    const bool open = m_log && !m_log->format().columns.empty();
    const auto source = static_cast<STLTimeSource>(m_source->currentData().toInt());
    const bool typed = source == STLTimeSource::Typed;
    const bool elapsed = source == STLTimeSource::ElapsedTime || source == STLTimeSource::ElapsedSeconds;
    enableColumn(m_dateColumn, open && source == STLTimeSource::DateAndTime);
    enableColumn(m_timeColumn, open && !typed);
    m_order->setEnabled(open && (source == STLTimeSource::Stamp || source == STLTimeSource::DateAndTime));
    m_zone->setEnabled(open && !timesAreUnix(source));
    m_start->setEnabled(open && (typed || elapsed));
    m_step->setEnabled(open && typed);
    m_resampleStep->setEnabled(open && m_becomes->currentData().toInt() ==
                                           static_cast<int>(STLTimeResult::Resampled));
    const bool good = checkFields() && open;
    // Else the focus would go on to Cancel, and Enter close the window.
    if (m_import->hasFocus() && !(good && m_problem.isEmpty()))
        m_preview->setFocus();
    m_import->setEnabled(good && m_problem.isEmpty());
    m_check->setEnabled(good);
}

bool STLWin::checkFields()
{
    const QString start = reasonAgainstStart(m_start->text());
    const QString target = reasonAgainstTarget(m_target->text());
    const QString equal =
        m_resampleStep->text().trimmed().isEmpty() || numberOf(m_resampleStep->text()).value_or(0.0) > 0
            ? QString()
            : QStringLiteral("\"%1\" is no number above 0.").arg(m_resampleStep->text());
    showReason(m_start, m_startReason, start);
    showReason(m_target, m_targetReason, target);
    showReason(m_resampleStep, m_resampleReason, equal);
    return start.isEmpty() && target.isEmpty() && (equal.isEmpty() || !m_resampleStep->isEnabled()) &&
           (m_step->isValid() || !m_step->isEnabled()) && m_fromRow->isValid() && m_toRow->isValid() &&
           m_everyNth->isValid();
}

// -- Changes --

void STLWin::sl_changed()
{
    if (m_filling || !m_log || m_log->format().columns.empty())
        return;
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_checked = false;
    m_problem.clear();
    readFields();
    if (checkFields())
        checkQuietly();
    showFindings();
}

void STLWin::sl_names_changed()
{
    if (m_filling || !m_log || m_log->format().columns.empty())
        return;
    m_problem.clear();
    STLFormat& format = m_log->format();
    format.encoding = static_cast<STLEncoding>(m_encoding->currentData().toInt());
    format.cells.grouping = static_cast<char>(m_grouping->currentData().toInt());
    format.firstDataLine = static_cast<std::uint64_t>(m_firstData->value());
    format.namesLine = static_cast<std::uint64_t>(m_namesLine->value());
    format.unitsLine = static_cast<std::uint64_t>(m_unitsLine->value());
    try {
        takeNames(m_log->file(), format);
    } catch (const std::exception&) {
        m_problem = importFailure();
    }
    showFormat();
}

void STLWin::sl_reading_changed()
{
    if (m_filling || !m_log)
        return;
    const auto separator = static_cast<char>(m_separator->currentData().toInt());
    auto decimal = static_cast<char>(m_decimal->currentData().toInt());
    if (separator == decimal)
        decimal = '.';
    detectAgain(separator, decimal);
}

void STLWin::sl_other_reading()
{
    detectAgain(m_log->format().otherSeparator, m_log->format().otherDecimal);
}

// -- What the importers differ in --

std::uint64_t STLWin::fileBytes() const
{
    std::error_code unknown;
    const std::uintmax_t bytes = std::filesystem::file_size(m_log->file(), unknown);
    return unknown ? UINT64_MAX : bytes;
}

QString STLWin::readingText() const
{
    return QStringLiteral("Reading %1 …").arg(shown(m_log->file().filename().string()));
}

JobOutcome STLWin::check(const Progress& progress)
{
    return m_log->check(progress);
}

QString STLWin::doubt() const
{
    const STLCheck& found = m_log->found();
    const std::uint64_t troubled = found.troubledRows + found.skippedLines;
    const std::uint64_t rows = found.rows + found.skippedLines;
    const STLFormat& format = m_log->format();
    if (format.orderInDoubt && !format.orderBySteps)
        return QStringLiteral("No date tells the day from the month.\n%1\nImport it so?")
            .arg(orderDoubt(format, found));
    if (troubled * 2 <= rows)
        return QString();
    return QStringLiteral("More than half of the rows have troubles: %1 of %2.\nImport all the same?")
        .arg(groupedNumber(troubled), groupedNumber(rows));
}

JobOutcome STLWin::makeFile(const std::filesystem::path& target, const Progress& progress)
{
    return importSTL(*m_log, target, progress);
}

ImportWindow::Report STLWin::report() const
{
    const STLCheck& found = m_log->found();
    QVector<ImportTrouble> troubles;
    for (const STLTrouble& trouble : found.troubles)
        troubles.append({QStringLiteral("Line %1").arg(trouble.line),
                         trouble.column < 0 ? QString() : QString::number(trouble.column + 1),
                         problemText(trouble.problem), text(trouble.text)});
    return {summary() + QLatin1Char('\n') + stepText(m_log->format(), found) + QLatin1Char(' ') +
                resultText(found),
            troubles, found.troubleCount};
}
