// TsTableView: what looks into the file and changes nothing.

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QHeaderView>
#include <QInputDialog>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>

#include <algorithm>
#include <cmath>

#include "core/TsNames.h"
#include "portal/FieldsDialog.h"
#include "portal/FindBar.h"
#include "portal/RowWindow.h"
#include "portal/SelectionStatistics.h"
#include "portal/SortedRows.h"
#include "portal/TsApplication.h"
#include "portal/TsTableView.h"
#include "share/GoTo.h"
#include "share/JobProgress.h"
#include "share/QtMessageWin.h"
#include "share/WaitCursor.h"

using namespace veltrac;

namespace {

constexpr int kMessageMs = 8000;
constexpr std::uint64_t kMostCopied = 2000000;  // values
constexpr int kMostSorted = RowWindow::kRows;
const char* const kUnreadable = "The file cannot be read to its end: it may be cut short.";

QString resultText(double extreme, std::uint32_t sample)
{
    return QString::asprintf(" %g at sample %u", extreme, sample);
}

}  // namespace

void TsTableView::sl_rowHeight(int pixels)
{
    m_view->setRowHeight(pixels);
}

void TsTableView::sl_showGrid()
{
    m_view->setShowGrid(!m_view->showGrid());
    m_actions[kGrid]->setChecked(m_view->showGrid());
}

void TsTableView::sl_altCol()
{
    m_view->setAlternatingRowColors(!m_view->alternatingRowColors());
    m_actions[kAltColours]->setChecked(m_view->alternatingRowColors());
}

void TsTableView::sl_finished()
{
    close();
}

void TsTableView::sl_col_selected()
{
    m_view->setUpdatesEnabled(false);
    for (int column = 0; column < m_columns->count(); ++column) {
        const bool hidden = !m_columns->item(column)->isSelected();
        if (m_view->isColumnHidden(column) != hidden)
            m_view->setColumnHidden(column, hidden);
    }
    m_view->setUpdatesEnabled(true);
    restartStatistics();
}

void TsTableView::sl_currentCell(const QModelIndex& index)
{
    if (index.isValid())
        m_column = index.column();
}

void TsTableView::sl_currentColumn(const QModelIndex& current, const QModelIndex& /*previous*/)
{
    if (current.isValid())
        m_column = current.column();
}

void TsTableView::sl_plotcol()
{
    TsApplication* const application = TsApplication::instance();
    const auto column = static_cast<unsigned>(m_column) + 1;
    if (application == nullptr ||
        application->openSubProgram(SubProgram::PlotColumn, m_path, column) == nullptr) {
        statusBar()->showMessage(QStringLiteral("The column cannot be plotted."), kMessageMs);
        return;
    }
    if (isEditing() && m_model->editedFile()->edits().isChanged())
        statusBar()->showMessage(
            QStringLiteral("The plot shows the file, without the edits that are not saved."), kMessageMs);
}

// -- The scan --

bool TsTableView::scan(ColumnExtremes& out)
{
    if (m_model->file().samples() == 0 || m_model->file().columns() == 0) {
        tell(QMessageBox::Information, m_model->file().columns() == 0
                                           ? QStringLiteral("The file has no columns.")
                                           : QStringLiteral("The file has no samples."));
        return false;
    }
    try {
        const WaitCursor waiting;
        JobProgress progress(this, QStringLiteral("Reading column %1 of %2").arg(m_column + 1).arg(m_name));
        if (scanColumn(m_model->columnReader(m_column), m_model->file().samples(), progress.callback(),
                       out) == JobOutcome::Done)
            return true;
        statusBar()->showMessage(QStringLiteral("Cancelled."), kMessageMs);
    } catch (...) {
        tell(QMessageBox::Warning, QString::fromLatin1(kUnreadable));
    }
    return false;
}

void TsTableView::showScan(const QString& heading, const QString& result)
{
    QString text = heading.arg(m_column + 1) + result;
    if (m_scan.missing > 0) {
        text += m_scan.missing == 1 ? QStringLiteral("\n1 value is missing")
                                    : QStringLiteral("\n%1 values are missing").arg(m_scan.missing);
        text += std::isnan(m_scan.averagePresent)
                    ? QStringLiteral("; there is no other")
                    : QString::asprintf("; the average without them is %g", m_scan.averagePresent);
    }
    tell(QMessageBox::Information, text);
}

void TsTableView::sl_findmax()
{
    if (!scan(m_scan))
        return;
    if (m_scan.maximumSample != 0)
        goToFound(m_scan.maximumSample);
    showScan(QStringLiteral("The max value in column %1 is:\n"),
             resultText(m_scan.maximum, m_scan.maximumSample));
}

void TsTableView::sl_findmin()
{
    if (!scan(m_scan))
        return;
    if (m_scan.minimumSample != 0)
        goToFound(m_scan.minimumSample);
    showScan(QStringLiteral("The minimum value in column %1 is:\n"),
             resultText(m_scan.minimum, m_scan.minimumSample));
}

void TsTableView::sl_findaverage()
{
    if (scan(m_scan))
        showScan(QStringLiteral("The average value of column %1 is:\n"),
                 QString::asprintf("%g", m_scan.average));
}

// -- Going and finding --

void TsTableView::sl_goTo()
{
    QString label = QStringLiteral("A sample (250000), a time (12.5 s or 13:45:30) or a share (50%):");
    const QString question = label;
    for (;;) {
        bool accepted = false;
        const QString text = QInputDialog::getText(this, QStringLiteral("Go to"), label, QLineEdit::Normal,
                                                   m_lastGoTo, &accepted);
        if (!accepted)
            return;
        m_lastGoTo = text;
        QString reason;
        try {
            if (const auto row = goToRow(text, m_model->file(), reason)) {
                goToFound(*row);
                m_view->setFocus();
                return;
            }
        } catch (...) {
            reason = QString::fromLatin1(kUnreadable);
        }
        label = reason + QStringLiteral("\n\n") + question;
    }
}

void TsTableView::sl_pageUp()
{
    m_view->goTo(m_view->currentRow() - std::max(1, m_view->totalRows() / 100), m_column);
}

void TsTableView::sl_pageDown()
{
    const int step = std::max(1, m_view->totalRows() / 100);
    m_view->goTo(std::min(m_view->totalRows() - 1 - step, m_view->currentRow()) + step, m_column);
}

void TsTableView::goToFound(std::uint32_t sample)
{
    if (!m_view->goToSample(sample, m_column))
        statusBar()->showMessage(QStringLiteral("Sample %1 is not among the sorted ones.").arg(sample),
                                 kMessageMs);
}

void TsTableView::sl_find()
{
    m_findBar->open();
}

void TsTableView::sl_findNext()
{
    find(Direction::Forward);
}

void TsTableView::sl_findPrevious()
{
    find(Direction::Backward);
}

void TsTableView::find(Direction direction)
{
    if (!m_findBar->isValid()) {
        m_findBar->open();
        return;
    }
    const std::uint32_t samples = m_model->file().samples();
    if (samples == 0 || m_model->file().columns() == 0)
        return;
    std::uint32_t found = 0;
    try {
        JobProgress progress(this, QStringLiteral("Searching column %1 of %2").arg(m_column + 1).arg(m_name));
        if (searchColumn(m_model->columnReader(m_column), samples, m_findBar->condition(),
                         m_view->sampleOfRow(m_view->currentRow()), direction, progress.callback(),
                         found) == JobOutcome::Cancelled) {
            statusBar()->showMessage(QStringLiteral("Cancelled."), kMessageMs);
            return;
        }
    } catch (...) {
        statusBar()->showMessage(QString::fromLatin1(kUnreadable), kMessageMs);
        return;
    }
    if (found != 0)
        goToFound(found);
    else
        statusBar()->showMessage(
            QStringLiteral("No more %1 the current cell.")
                .arg(direction == Direction::Forward ? QStringLiteral("below") : QStringLiteral("above")),
            kMessageMs);
}

// -- Sorting --

void TsTableView::sl_sorting(int state)
{
    if (state == Qt::Unchecked) {
        m_view->horizontalHeader()->setSortIndicatorShown(false);
        if (m_view->isSorted())
            m_view->showAll();
        m_view->fitColumns();
    } else if (!sortBy(m_column, Qt::AscendingOrder)) {
        m_sorting->setChecked(false);
    }
    updateActions();
}

bool TsTableView::askSortRange(std::uint32_t& first, std::uint32_t& last)
{
    const std::uint32_t samples = m_model->file().samples();
    first = 1;
    last = samples;
    if (samples <= static_cast<std::uint32_t>(kMostSorted))
        return true;
    const double middle = m_view->sampleOfRow(m_view->currentRow());
    const double from = std::clamp(middle - kMostSorted / 2.0, 1.0, samples - kMostSorted + 1.0);
    FieldsDialog dialog(QStringLiteral("Enable sorting"),
                        QStringLiteral("The file has %1 samples. At most %2 of them can be sorted at once.")
                            .arg(samples)
                            .arg(kMostSorted),
                        {{"&First sample:", false}, {"&Last sample:", false}},
                        {std::floor(from), std::floor(from) + kMostSorted - 1.0}, this);
    dialog.setCheck([samples](const std::vector<double>& n) {
        if (n[0] != std::floor(n[0]) || n[1] != std::floor(n[1]) || n[0] < 1 || n[1] > samples || n[0] > n[1])
            return QStringLiteral("The samples run from 1 to %1.").arg(samples);
        return n[1] - n[0] >= kMostSorted ? QStringLiteral("These are more than %1 samples.").arg(kMostSorted)
                                          : QString();
    });
    if (dialog.exec() != QDialog::Accepted)
        return false;
    first = static_cast<std::uint32_t>(dialog.numbers()[0]);
    last = static_cast<std::uint32_t>(dialog.numbers()[1]);
    return true;
}

bool TsTableView::sortBy(int column, Qt::SortOrder order)
{
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    if (m_model->rowCount() == 0 || m_model->columnCount() == 0 || !askSortRange(first, last))
        return false;
    std::vector<std::uint32_t> samples;
    try {
        JobProgress progress(this, QStringLiteral("Sorting column %1 of %2").arg(column + 1).arg(m_name));
        if (sortSamples(m_model->columnReader(column), first, last, order, progress.callback(), samples) ==
            JobOutcome::Cancelled)
            return false;
    } catch (...) {
        tell(QMessageBox::Warning, QString::fromLatin1(kUnreadable));
        return false;
    }
    m_column = column;
    m_view->showSorted(std::move(samples));
    m_view->horizontalHeader()->setSortIndicator(column, order);
    m_view->horizontalHeader()->setSortIndicatorShown(true);
    m_view->fitColumns();
    return true;
}

// -- Copying --

void TsTableView::sl_copy()
{
    copy(false);
}

void TsTableView::sl_copyWithNames()
{
    copy(true);
}

void TsTableView::copy(bool withNames)
{
    // A block is copied as it stands; of several, the hull with blanks would surprise, so one after the
    // other.
    std::uint64_t cells = 0;
    for (const CellBlock& block : m_view->selectedBlocks())
        cells += (std::uint64_t{static_cast<unsigned>(block.lastRow - block.firstRow)} + 1) *
                 visibleColumns(block.firstColumn, block.lastColumn).size();
    if (cells == 0 || cells > kMostCopied) {
        statusBar()->showMessage(cells == 0 ? QStringLiteral("Nothing is selected.")
                                            : QStringLiteral("At most %1 values can be copied; these are %2.")
                                                  .arg(kMostCopied)
                                                  .arg(cells),
                                 kMessageMs);
        return;
    }
    QString text;
    for (const CellBlock& block : m_view->selectedBlocks()) {
        const std::vector<int> columns = visibleColumns(block.firstColumn, block.lastColumn);
        QStringList names;
        for (const int column : columns)
            names << columnTitle(column);
        if (withNames)
            text += names.join(QLatin1Char('\t')) + QLatin1Char('\n');
        for (int row = block.firstRow; row <= block.lastRow; ++row) {
            const int source = static_cast<int>(m_view->sampleOfRow(row)) - 1;
            for (std::size_t i = 0; i < columns.size(); ++i)
                text +=
                    (i == 0 ? QString() : QStringLiteral("\t")) + m_model->exactCellText(source, columns[i]);
            text += QLatin1Char('\n');
        }
    }
    QApplication::clipboard()->setText(text);
    statusBar()->showMessage(QStringLiteral("%1 values copied.").arg(cells), kMessageMs);
}

void TsTableView::sl_selectAll()
{
    m_view->selectAll();
}

void TsTableView::sl_writeSelected()
{
    if (m_view->isSorted() || m_view->selectedBlocks().size() != 1) {
        statusBar()->showMessage(QStringLiteral("Select one block of samples of the unsorted table first."),
                                 kMessageMs);
        return;
    }
    if (isEditing() && m_model->editedFile()->edits().isChanged()) {
        statusBar()->showMessage(QStringLiteral("Save the edits first: the text is written from the file."),
                                 kMessageMs);
        return;
    }
    const CellBlock& block = m_view->selectedBlocks().front();
    TsApplication::instance()->exportInterval(m_path, static_cast<std::uint32_t>(block.firstRow) + 1,
                                              static_cast<std::uint32_t>(block.lastRow) + 1);
}

void TsTableView::sl_reload()
{
    noteFileTime();
    std::unique_ptr<TSFILE> file;
    try {
        file = openTsFile(m_path.toLocal8Bit().toStdString(), true);
    } catch (...) {
        statusBar()->showMessage(QStringLiteral("%1 cannot be opened any more.").arg(m_name), kMessageMs);
        return;
    }
    m_statistics->stop();
    m_view->detach();
    m_model->setFile(file.release());
    m_column = std::max(0, std::min(m_column, m_model->columnCount() - 1));
    const QSignalBlocker still(m_columns);
    m_columns->clear();
    for (int column = 0; column < m_model->columnCount(); ++column)
        m_columns->addItem(columnTitle(column));
    m_columns->selectAll();
    m_view->showAll();
    // Not before: it fits the columns of the rows that are shown.
    m_sorting->setChecked(false);
    m_view->fitColumns();
    showPosition();
    statusBar()->showMessage(QStringLiteral("Read again."), kMessageMs);
}

void TsTableView::sl_help()
{
    showHelp(this, QStringLiteral("list"), QStringLiteral("Veltrac, listing and editing"));
}
