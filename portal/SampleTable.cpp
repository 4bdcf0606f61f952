#include "portal/SampleTable.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QListWidget>
#include <QScrollBar>
#include <QSplitter>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "portal/CellDelegate.h"
#include "portal/FieldsDialog.h"
#include "share/GroupedNumber.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

constexpr int kTableWidth = 400;
constexpr int kColumnListWidth = 100;
constexpr std::uint64_t kMostCopied = 2000000;  // values
constexpr int kMostSorted = RowStretch::kRows;
constexpr double kNineDigits = 1e9;
constexpr int kMostDecimals = 12;
constexpr int kMoreDecimals = 2;
constexpr double kCalendarEnd = 253402300800.0;  // seconds since the epoch; the year 10000

// The decimals of a number as it is written shortest.
int decimalsOf(float number)
{
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed).ptr;
    const auto point = std::find(text, end, '.');
    return point == end ? 0 : static_cast<int>(end - point) - 1;
}

// With as many decimals as it takes to tell a sample from the next, and some more where they make it exact.
QString elapsedText(double elapsed, TSFILE& file)
{
    const float dt = file.dt();
    if (file.timeColumn() != 0 || !(dt > 0.0F) || !std::isfinite(dt))
        return std::abs(elapsed) < kNineDigits ? QString::number(elapsed, 'g', 9)
                                               : QString::number(elapsed, 'f', 0);
    const int least = std::clamp(static_cast<int>(std::ceil(-std::log10(dt))) + 1, 0, kMostDecimals);
    const int exact = decimalsOf(dt);
    return QString::number(elapsed, 'f', exact <= least + kMoreDecimals ? std::max(least, exact) : least);
}

// Empty for a moment that no calendar has: a damaged header may claim any.
QString calendarText(double moment)
{
    if (!(std::abs(moment) < kCalendarEnd))
        return QString();
    return QDateTime::fromMSecsSinceEpoch(qRound64(moment * 1000.0))
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

}  // namespace

SampleTable::SampleTable(TsTableModel& model, QString name, QWidget* parent)
    : QWidget(parent),
      m_model(model),
      m_name(std::move(name)),
      m_layout(new QVBoxLayout(this)),
      m_columns(new QListWidget),
      m_view(new SampleView(&model)),
      m_sorting(new QCheckBox(QStringLiteral("Enable sorting")))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    auto* const table = new QWidget;
    auto* const row = new QHBoxLayout(table);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(m_view, 1);
    row->addWidget(m_view->sampleBar());
    auto* const splitter = new QSplitter;
    splitter->addWidget(m_columns);
    splitter->addWidget(table);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({kColumnListWidth, kTableWidth});
    m_layout->addWidget(splitter, 1);
    m_sorting->setToolTip(
        QStringLiteral("Sort on the values of a column; a click on its name turns the order."));
    m_columns->setToolTip(QStringLiteral("Select which columns to show."));
    m_columns->setAccessibleName(QStringLiteral("Columns"));
    m_columns->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_columns->setUniformItemSizes(true);
    fillColumnList();
    connect(m_columns, &QListWidget::itemSelectionChanged, this, &SampleTable::x_columns_chosen);
    createView();
}

void SampleTable::addBelow(QWidget* widget)
{
    m_layout->addWidget(widget);
}

void SampleTable::createView()
{
    const bool editing = m_model.editedFile() != nullptr;
    auto* const delegate = new CellDelegate(m_model, m_view);
    m_view->setItemDelegate(delegate);
    connect(delegate, &CellDelegate::x_refused, this, [this](const QString& text) {
        emit x_status(QStringLiteral("\"%1\" is no number; the cell keeps its value.").arg(text));
    });
    // Where nothing is edited, Tab goes on to the other parts of the window.
    m_view->setTabKeyNavigation(editing);
    m_view->setEditTriggers(editing ? QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                                          QAbstractItemView::AnyKeyPressed
                                    : QAbstractItemView::NoEditTriggers);
    connect(m_view->sampleBar(), &QScrollBar::sliderMoved, this,
            [this](int row) { QToolTip::showText(QCursor::pos(), rowText(row), m_view->sampleBar()); });
    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(m_view, &SampleView::x_current_moved, this, [this] { m_column = m_view->currentColumn(); });
    // A new model shows all columns.
    connect(m_view, &SampleView::x_model_set, this, &SampleTable::showChosenColumns);
    m_view->horizontalHeader()->setSectionsClickable(true);
    connect(m_view->horizontalHeader(), &QHeaderView::sectionClicked, this, &SampleTable::sortByHead);
}

// -- What is shown --

void SampleTable::fillColumnList()
{
    const QSignalBlocker still(m_columns);
    m_columns->clear();
    for (int column = 0; column < m_model.columnCount(); ++column)
        m_columns->addItem(columnTitle(column));
    m_columns->selectAll();
}

void SampleTable::showChosenColumns()
{
    m_view->setUpdatesEnabled(false);
    for (int column = 0; column < m_columns->count(); ++column) {
        const bool hidden = !m_columns->item(column)->isSelected();
        if (m_view->isColumnHidden(column) != hidden)
            m_view->setColumnHidden(column, hidden);
    }
    m_view->setUpdatesEnabled(true);
}

void SampleTable::show(std::unique_ptr<TSFILE> file)
{
    m_view->detach();
    m_model.setFile(file.release());
    m_column = std::clamp(m_column, 0, std::max(0, m_model.columnCount() - 1));
    fillColumnList();
    m_view->showAll();
    // Not before: it fits the columns of the rows that are shown.
    m_sorting->setChecked(false);
    m_view->fitColumns();
}

QString SampleTable::columnTitle(int column) const
{
    const QString name = m_model.columnName(column);
    return name.isEmpty() ? QStringLiteral("Column %1").arg(column + 1) : name;
}

QString SampleTable::timeText(std::uint32_t row) const
{
    try {
        const FileTime time(m_model.file());
        const double elapsed = time.elapsed(time.sampleIn(row));
        if (!std::isfinite(elapsed))
            return QStringLiteral("time unknown");
        const QString text =
            elapsedText(elapsed, m_model.file()) + QLatin1Char(' ') + headerText(time.unit().c_str());
        const QString date = time.hasCalendar() ? calendarText(time.moment(time.sampleIn(row))) : QString();
        return date.isEmpty() ? text : text + QStringLiteral(", ") + date;
    } catch (...) {
        return QStringLiteral("time unreadable");
    }
}

QString SampleTable::sampleText(std::uint32_t row) const
{
    const std::uint32_t sample = m_model.sampleInRow(static_cast<int>(row) - 1);
    return sample == row ? groupedNumber(sample)
                         : QStringLiteral("%1 (row %2)").arg(groupedNumber(sample), groupedNumber(row));
}

QString SampleTable::rowText(int row) const
{
    const std::uint32_t fileRow = m_view->rows().sampleOf(row);
    const QString count = groupedNumber(static_cast<std::uint64_t>(m_model.rowCount()));
    if (!m_model.isWritten(static_cast<int>(fileRow) - 1))
        return QStringLiteral("Row %1 of %2 of the ring is empty: nothing was written there yet.")
            .arg(groupedNumber(fileRow), count);
    return QStringLiteral("Sample %1 of %2, %3").arg(sampleText(fileRow), count, timeText(fileRow));
}

bool SampleTable::goToSample(std::uint32_t sample)
{
    if (m_view->goToSample(sample, m_column))
        return true;
    emit x_status(QStringLiteral("Sample %1 is not among the sorted ones.").arg(groupedNumber(sample)));
    return false;
}

// -- What is selected --

ReaderOfColumn SampleTable::readerOfColumn() const
{
    return [this](std::uint32_t column) { return m_model.columnReader(static_cast<int>(column) - 1); };
}

std::vector<int> SampleTable::visibleColumns(int from, int to) const
{
    std::vector<int> columns;
    for (int column = from; column <= to; ++column)
        if (!m_view->isColumnHidden(column))
            columns.push_back(column);
    return columns;
}

std::vector<SampleRun> SampleTable::selectedRuns() const
{
    std::vector<SampleRun> runs;
    for (const CellBlock& block : m_view->selectedBlocks()) {
        const std::vector<SampleRun> samples = m_view->rows().samplesOf(block.firstRow, block.lastRow);
        for (const int column : visibleColumns(block.firstColumn, block.lastColumn)) {
            // Bits of integers are neither changed nor averaged.
            if (m_model.isIntegerColumn(column))
                continue;
            for (SampleRun run : samples) {
                run.column = static_cast<std::uint32_t>(column) + 1;
                runs.push_back(run);
            }
        }
    }
    return joinedRuns(std::move(runs));
}

// A block is copied as it stands; of several, the hull with blanks would surprise, so one after the other.
void SampleTable::copy(bool withNames)
{
    std::uint64_t cells = 0;
    for (const CellBlock& block : m_view->selectedBlocks())
        cells += (std::uint64_t{static_cast<unsigned>(block.lastRow - block.firstRow)} + 1) *
                 visibleColumns(block.firstColumn, block.lastColumn).size();
    if (cells == 0 || cells > kMostCopied) {
        emit x_status(cells == 0 ? QStringLiteral("Nothing is selected.")
                                 : QStringLiteral("At most %1 values can be copied; these are %2.")
                                       .arg(groupedNumber(kMostCopied), groupedNumber(cells)));
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
            const int source = static_cast<int>(m_view->rows().sampleOf(row)) - 1;
            for (std::size_t i = 0; i < columns.size(); ++i)
                text +=
                    (i == 0 ? QString() : QStringLiteral("\t")) + m_model.exactCellText(source, columns[i]);
            text += QLatin1Char('\n');
        }
    }
    QApplication::clipboard()->setText(text);
    emit x_status(cells == 1 ? QStringLiteral("1 value copied.")
                             : QStringLiteral("%1 values copied.").arg(groupedNumber(cells)));
}

// -- Sorting --

void SampleTable::setSorting(bool on)
{
    if (!on) {
        m_view->horizontalHeader()->setSortIndicatorShown(false);
        if (m_view->rows().isSorted())
            m_view->showAll();
        m_view->fitColumns();
    } else if (!sortBy(m_column, SortOrder::Ascending)) {
        m_sorting->setChecked(false);
    }
}

void SampleTable::sortByHead(int section)
{
    if (!m_sorting->isChecked())
        return;
    const QHeaderView& header = *m_view->horizontalHeader();
    const bool turn = header.sortIndicatorSection() == section &&
                      header.sortIndicatorOrder() == Qt::AscendingOrder && m_view->rows().isSorted();
    sortBy(section, turn ? SortOrder::Descending : SortOrder::Ascending);
}

bool SampleTable::askSortRange(std::uint32_t& first, std::uint32_t& last)
{
    const auto samples = static_cast<std::uint32_t>(m_model.rowCount());
    first = 1;
    last = samples;
    if (samples <= static_cast<std::uint32_t>(kMostSorted))
        return true;
    const double middle = m_view->rows().sampleOf(m_view->currentRow());
    const double from = std::clamp(middle - kMostSorted / 2.0, 1.0, samples - kMostSorted + 1.0);
    FieldsDialog dialog(QStringLiteral("Enable sorting"),
                        QStringLiteral("The file has %1 samples. At most %2 of them can be sorted at once.")
                            .arg(groupedNumber(samples), groupedNumber(kMostSorted)),
                        {{"&First sample:", false}, {"&Last sample:", false}},
                        {std::floor(from), std::floor(from) + kMostSorted - 1.0}, this);
    dialog.setCheck([samples](const std::vector<double>& n) {
        if (n[0] != std::floor(n[0]) || n[1] != std::floor(n[1]) || n[0] < 1 || n[1] > samples || n[0] > n[1])
            return QStringLiteral("The samples run from 1 to %1.").arg(groupedNumber(samples));
        return n[1] - n[0] >= kMostSorted
                   ? QStringLiteral("These are more than %1 samples.").arg(groupedNumber(kMostSorted))
                   : QString();
    });
    if (dialog.exec() != QDialog::Accepted)
        return false;
    first = static_cast<std::uint32_t>(dialog.numbers()[0]);
    last = static_cast<std::uint32_t>(dialog.numbers()[1]);
    return true;
}

bool SampleTable::sortBy(int column, SortOrder order)
{
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    if (m_model.rowCount() == 0 || m_model.columnCount() == 0 || !askSortRange(first, last))
        return false;
    std::vector<std::uint32_t> samples;
    try {
        JobProgress progress(this, QStringLiteral("Sorting column %1 of %2").arg(column + 1).arg(m_name));
        if (sortSamples(m_model.columnReader(column), first, last, order, progress.callback(), samples) ==
            JobOutcome::Cancelled)
            return false;
    } catch (...) {
        emit x_failed(QString::fromLatin1(kCutShort));
        return false;
    }
    m_column = column;
    m_view->showSorted(std::move(samples));
    m_view->horizontalHeader()->setSortIndicator(
        column, order == SortOrder::Ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    m_view->horizontalHeader()->setSortIndicatorShown(true);
    m_view->fitColumns();
    return true;
}

}  // namespace veltrac
