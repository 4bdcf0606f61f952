#include "converters/STLColumnTable.h"

#include <QHeaderView>
#include <QScopedValueRollback>

#include <array>

#include "converters/STLLines.h"

namespace veltrac {

namespace {

enum Column { kTakeColumn, kNameColumn, kDescriptionColumn, kUnitColumn, kValuesColumn };

constexpr int kFirstValues = 4;

}  // namespace

STLColumnTable::STLColumnTable(QWidget* parent) : QTableWidget(0, kValuesColumn + 1, parent)
{
    setHorizontalHeaderLabels({QStringLiteral("Take"), QStringLiteral("Name"), QStringLiteral("Description"),
                               QStringLiteral("Unit"), QStringLiteral("First values")});
    setAccessibleName(QStringLiteral("The columns"));
    horizontalHeader()->setStretchLastSection(true);
    setTabKeyNavigation(false);
    setWordWrap(false);
    connect(this, &QTableWidget::itemChanged, this, [this] {
        if (!m_filling)
            emit x_changed();
    });
}

void STLColumnTable::showTake(int row, const STLColumn& column, bool isTime)
{
    const bool isText = column.kind == STLKind::Text;
    auto* const take = new QTableWidgetItem(isTime   ? QStringLiteral("time")
                                            : isText ? QStringLiteral("Number the texts")
                                                     : QString());
    take->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable |
                   (isTime ? Qt::NoItemFlags : Qt::ItemIsUserCheckable));
    if (!isTime)
        take->setCheckState(column.take ? Qt::Checked : Qt::Unchecked);
    if (isText)
        take->setToolTip(
            QStringLiteral("Texts: when they are taken they are numbered, 1, 2, …, in the "
                           "order in which they come."));
    setItem(row, kTakeColumn, take);
}

void STLColumnTable::show(const STLObject& log, const STLLines& lines)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    const STLFormat& format = log.format();
    const std::vector<std::string> names = log.columnNames();
    std::size_t taken = 0;
    setRowCount(static_cast<int>(format.columns.size()));
    for (int row = 0; row < rowCount(); ++row) {
        const auto c = static_cast<std::size_t>(row);
        const STLColumn& column = format.columns[c];
        showTake(row, column, tellsTime(format, c));
        const std::array<std::string, 3> texts = {column.take ? names[taken++] : column.name,
                                                  log.columnDescription(c), column.unit};
        for (int i = 0; i < 3; ++i)
            setItem(row, kNameColumn + i,
                    new QTableWidgetItem(QString::fromStdString(texts[static_cast<std::size_t>(i)])));
        auto* const values = new QTableWidgetItem(lines.firstValues(c, kFirstValues));
        values->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        setItem(row, kValuesColumn, values);
    }
    // The last one fills the rest.
    for (int column = kTakeColumn; column < kValuesColumn; ++column)
        resizeColumnToContents(column);
}

void STLColumnTable::read(STLObject& log) const
{
    STLFormat& format = log.format();
    const std::vector<std::string> names = log.columnNames();
    std::size_t taken = 0;
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        STLColumn& column = format.columns[c];
        const int row = static_cast<int>(c);
        if (item(row, kTakeColumn) == nullptr)
            return;
        const std::string name = item(row, kNameColumn)->text().toStdString();
        if (name != (column.take ? names[taken] : column.name))
            column.label = name;
        taken += column.take ? 1 : 0;
        const std::string described = item(row, kDescriptionColumn)->text().toStdString();
        if (described != log.columnDescription(c))
            column.description = described;
        column.unit = item(row, kUnitColumn)->text().toStdString();
        column.take = !tellsTime(format, c) && item(row, kTakeColumn)->checkState() == Qt::Checked;
        column.numberTexts = column.take && column.kind == STLKind::Text;
    }
}

}  // namespace veltrac
