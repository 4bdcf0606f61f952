#include "portal/FileTable.h"

#include <QContextMenuEvent>
#include <QFile>
#include <QHash>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QSet>

#include <algorithm>
#include <array>

#include "portal/RowHeight.h"
#include "portal/TsFileTexts.h"
#include "share/HeaderText.h"

namespace veltrac {

namespace {

struct HeaderRow
{
    const char* label;  // the blanks belong to it: they set the least widths
    const char* toolTip;
    const char* whatsThis;
};

constexpr std::array<HeaderRow, 5> kHeaders{{
    {" File name", "File name", "Only time series (ts) files with extention .ts are shown in this table."},
    {" Samples    ", "Number of lines (=samples) in the listed files.",
     "You may increase or decrease the number of samples in the header edit window."},
    {" Columns    ", "Number of columns in the listed files.",
     "You may increase or decrease the number of columns in the header edit window."},
    {" Sample time    ", "Sample time, normally constant",
     "If variable sample time, the time must be stored on a dedicated column."},
    {" Description", "File description", "Editable in the header edit window"},
}};

constexpr int kNameColumn = 0;
constexpr int kSampleTimeColumn = 3;
constexpr int kDescriptionColumn = 4;
// Characters that the column of names is wide at most: the other columns stay in view.
constexpr int kLongestName = 60;

}  // namespace

FileTable::FileTable(QWidget* parent) : QTableWidget(0, static_cast<int>(kHeaders.size()), parent)
{
    setAccessibleName(QStringLiteral("Ts-files of the working directory"));
    setWhatsThis(
        QStringLiteral("A row for each ts-file of the working directory. A click or the arrow keys "
                       "select one, a double click lists its values, the right button or the menu "
                       "key shows what can be done with it."));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);  // Tab leaves the table, the arrows walk in it
    setShowGrid(false);
    setAlternatingRowColors(true);
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle);
    makeHeader();
}

void FileTable::makeHeader()
{
    for (int column = 0; column < columnCount(); ++column) {
        const HeaderRow& row = kHeaders[static_cast<std::size_t>(column)];
        auto* const item = new QTableWidgetItem(QString::fromLatin1(row.label));
        item->setToolTip(QString::fromLatin1(row.toolTip));
        if (column == kNameColumn || column == kDescriptionColumn)
            item->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        item->setWhatsThis(QString::fromLatin1(row.whatsThis));
        setHorizontalHeaderItem(column, item);
    }
    horizontalHeader()->setSortIndicator(kNameColumn, Qt::AscendingOrder);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setStretchLastSection(true);
    verticalHeader()->setMinimumSectionSize(kLeastRowHeight);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->hide();
    resizeColumnsToContents();
}

void FileTable::fill(const std::vector<TsFileRecord>& records, bool sorted)
{
    const QString selected = selectedFile();
    // Rows would move under the loop while sorting is on, and each item would be painted.
    setSortingEnabled(false);
    setUpdatesEnabled(false);
    clearContents();
    setRowCount(static_cast<int>(records.size()));
    for (std::size_t i = 0; i < records.size(); ++i)
        setRow(static_cast<int>(i), records[i]);
    if (sorted)
        setSortingEnabled(true);
    fitColumns();
    setUpdatesEnabled(true);
    if (!select(selected))
        clearSelection();
}

void FileTable::removeOthers(const std::vector<TsFileRecord>& records)
{
    QSet<QString> names;
    names.reserve(static_cast<int>(records.size()));
    for (const TsFileRecord& record : records)
        names.insert(QFile::decodeName(record.name.c_str()));
    for (int last = rowCount() - 1; last >= 0; --last) {
        // Neighbours go together: each removal moves all rows below.
        int first = last;
        while (first >= 0 && !names.contains(fileAt(first)))
            --first;
        if (first < last)
            model()->removeRows(first + 1, last - first);
        last = first;
    }
}

void FileTable::update(const std::vector<TsFileRecord>& records, bool sorted)
{
    const QString top = fileAt(rowAt(0));
    const int across = horizontalScrollBar()->value();
    const bool isAtTop = verticalScrollBar()->value() == 0;
    setSortingEnabled(false);
    setUpdatesEnabled(false);
    removeOthers(records);
    QHash<QString, int> rows;
    for (int row = 0; sorted && row < rowCount(); ++row)
        rows.insert(fileAt(row), row);
    for (std::size_t i = 0; i < records.size(); ++i) {
        const QString name = QFile::decodeName(records[i].name.c_str());
        // The records stand in the order of their names, and so do rows that are not sorted otherwise.
        const int row = sorted ? rows.value(name, rowCount()) : static_cast<int>(i);
        if (row >= rowCount() || fileAt(row) != name)
            insertRow(row);
        setRow(row, records[i]);
    }
    if (sorted)
        setSortingEnabled(true);
    for (int row = 0; !isAtTop && row < rowCount(); ++row)
        if (fileAt(row) == top)
            verticalScrollBar()->setValue(row);
    horizontalScrollBar()->setValue(across);
    setUpdatesEnabled(true);
}

void FileTable::fitColumns()
{
    resizeColumnsToContents();
    const int character = fontMetrics().averageCharWidth();
    setColumnWidth(kNameColumn, std::min(columnWidth(kNameColumn) + 2 * character, kLongestName * character));
}

// A desktop's theme may set the font after the table was filled.
void FileTable::changeEvent(QEvent* event)
{
    QTableWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitColumns();
}

void FileTable::setRow(int row, const TsFileRecord& record)
{
    const QString name = QFile::decodeName(record.name.c_str());
    const std::array<QString, kHeaders.size()> texts = {
        name, QString::number(record.samples), QString::number(record.columns),
        sampleTimeText(record.sampleTime), headerText(record.description.c_str())};
    for (int column = 0; column < columnCount(); ++column) {
        const QString& text = texts[static_cast<std::size_t>(column)];
        QTableWidgetItem* const there = item(row, column);
        if (there != nullptr && there->text() == text && column != kSampleTimeColumn)
            continue;
        // What stands in the table already tells of each change: a new cell comes whole.
        QTableWidgetItem* const cell = there == nullptr ? new QTableWidgetItem : there;
        cell->setText(text);
        if (there == nullptr && column != kNameColumn && column != kDescriptionColumn)
            cell->setTextAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
        if (column == kNameColumn && name.size() > kLongestName / 2)
            cell->setToolTip(name.toHtmlEscaped());
        if (column == kSampleTimeColumn)
            cell->setToolTip(sampleTimeTip(record).toHtmlEscaped());
        if (there == nullptr)
            setItem(row, column, cell);
    }
}

QString FileTable::fileAt(int row) const
{
    const QTableWidgetItem* const cell = item(row, kNameColumn);
    return cell == nullptr ? QString() : cell->text();
}

QString FileTable::selectedFile() const
{
    const QModelIndexList rows = selectionModel()->selectedRows(kNameColumn);
    return rows.isEmpty() ? QString() : fileAt(rows.first().row());
}

bool FileTable::select(const QString& name)
{
    if (name.isEmpty())
        return false;
    for (int row = 0; row < rowCount(); ++row) {
        if (fileAt(row) == name) {
            setCurrentCell(row, kNameColumn, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
            scrollToItem(item(row, kNameColumn));
            return true;
        }
    }
    return false;
}

void FileTable::setRowHeights(int pixels)
{
    verticalHeader()->setDefaultSectionSize(pixels);
}

bool FileTable::viewportEvent(QEvent* event)
{
    // A right click names its row. Whatever comes from the keyboard goes to contextMenuEvent() instead.
    if (event->type() != QEvent::ContextMenu)
        return QTableWidget::viewportEvent(event);
    const auto* const menu = static_cast<QContextMenuEvent*>(event);
    emit x_menu_wanted(rowAt(menu->pos().y()), menu->globalPos());
    return true;
}

void FileTable::contextMenuEvent(QContextMenuEvent* event)
{
    event->accept();
    const QModelIndexList rows = selectionModel()->selectedRows(kNameColumn);
    if (rows.isEmpty())
        emit x_menu_wanted(-1, viewport()->mapToGlobal(viewport()->rect().center()));
    else
        emit x_menu_wanted(rows.first().row(),
                           viewport()->mapToGlobal(visualRect(rows.first()).bottomLeft()));
}

void FileTable::keyPressEvent(QKeyEvent* event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isArrow = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    const bool isEnd = event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
    // The row that has the focus at first is not selected: the first arrow selects it, be it the only one.
    if (isArrow && selectedFile().isEmpty() && currentRow() >= 0)
        selectRow(currentRow());
    // A row is one file: its ends are of no interest, those of the list are.
    else if (isEnd && rowCount() > 0)
        select(fileAt(event->key() == Qt::Key_Home ? 0 : rowCount() - 1));
    else if (isEnter && !selectedFile().isEmpty())
        emit x_entered();
    else
        QTableWidget::keyPressEvent(event);
}

}  // namespace veltrac
