#include "portal/ColumnTable.h"

#include <QEvent>
#include <QHeaderView>
#include <QSignalBlocker>

#include <algorithm>
#include <ctime>
#include <optional>
#include <utility>

#include "core/LocalTime.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "share/HeaderText.h"

namespace veltrac {

namespace {

// A header that lies may claim billions of columns.
constexpr unsigned kMostRows = 100000;
constexpr int kYearBase = 1900;

std::pair<QString, QString> dateAndTime(std::time_t stamp)
{
    const std::optional<std::tm> local = stamp < 0 ? std::nullopt : localCalendar(stamp);
    if (!local)
        return {QStringLiteral("Not used"), QStringLiteral("Not used")};
    const int year = local->tm_year < kYearBase ? local->tm_year + kYearBase : local->tm_year;
    return {QString::asprintf("%04i.%02i.%02i", year, local->tm_mon + 1, local->tm_mday),
            QString::asprintf("%02i:%02i:%02i", local->tm_hour, local->tm_min, local->tm_sec)};
}

}  // namespace

ColumnTable::ColumnTable(QWidget* parent) : QTableWidget(0, kPlaceCount, parent)
{
    setHorizontalHeaderLabels({QStringLiteral("Date"), QStringLiteral("Time"), QStringLiteral("Column name"),
                               QStringLiteral("Column description")});
    setAccessibleName(QStringLiteral("Columns of the file"));
    setWhatsThis(
        QStringLiteral("Names and descriptions are written as they are edited: a name has at most "
                       "11 characters, a description 45. A click on the header reads them again."));
    setTabKeyNavigation(false);  // Tab leaves the table; out of an open cell it goes to the next one
    setShowGrid(false);
    horizontalHeader()->setSectionsClickable(true);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
}

std::vector<unsigned> ColumnTable::fill(TSFILE& file)
{
    const QSignalBlocker quiet(this);
    std::vector<unsigned> unnamed;
    const int wanted = static_cast<int>(std::min(file.columns(), kMostRows));
    clearContents();
    setRowCount(wanted);
    int row = 0;
    try {
        for (; row < wanted; ++row)
            if (!fillRow(file, row))
                unnamed.push_back(static_cast<unsigned>(row) + 1);
    } catch (const TS::Failure&) {
        setRowCount(row);
    }
    fitColumns();
    setShowGrid(false);
    return unnamed;
}

void ColumnTable::fitColumns()
{
    // Fitting takes the stretch from the last column of a table that is shown already.
    horizontalHeader()->setStretchLastSection(false);
    resizeColumnsToContents();
    horizontalHeader()->setStretchLastSection(true);
}

// A desktop's theme may set the font after the table was filled.
void ColumnTable::changeEvent(QEvent* event)
{
    QTableWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitColumns();
}

bool ColumnTable::fillRow(TSFILE& file, int row)
{
    const auto column = static_cast<unsigned>(row) + 1;
    const auto [date, time] = dateAndTime(file.columnTime(column));
    for (const auto& [place, text] : {std::pair(kDate, date), std::pair(kTime, time)}) {
        auto* const item = new QTableWidgetItem(text);
        item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        setItem(row, place, item);
    }
    // The core's texts share a buffer: one is copied before the other is asked for.
    const QString name = headerText(file.columnName(column));
    setItem(row, kName, new QTableWidgetItem(name));
    setItem(row, kDescription, new QTableWidgetItem(headerText(file.columnDescription(column))));
    return !name.isEmpty();
}

void ColumnTable::setRowHeights(int pixels)
{
    verticalHeader()->setMinimumSectionSize(pixels);
    verticalHeader()->setDefaultSectionSize(pixels);
}

}  // namespace veltrac
