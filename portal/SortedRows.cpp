#include "portal/SortedRows.h"

#include <utility>

namespace veltrac {

SortedRows::SortedRows(QAbstractItemModel* source, std::vector<std::uint32_t> samples, QObject* parent)
    : QAbstractProxyModel(parent), m_order(std::move(samples))
{
    setSourceModel(source);
    // Which rows have changed is not worth finding out: the view paints only those that it shows.
    connect(source, &QAbstractItemModel::dataChanged, this, [this] {
        if (rowCount() > 0)
            emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    });
}

int SortedRows::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_order.rows();
}

int SortedRows::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : sourceModel()->columnCount();
}

QModelIndex SortedRows::index(int row, int column, const QModelIndex& parent) const
{
    const bool inside =
        !parent.isValid() && row >= 0 && row < rowCount() && column >= 0 && column < columnCount();
    return inside ? createIndex(row, column) : QModelIndex();
}

QModelIndex SortedRows::parent(const QModelIndex& /*child*/) const
{
    return QModelIndex();
}

QModelIndex SortedRows::mapToSource(const QModelIndex& index) const
{
    return index.isValid() ? sourceModel()->index(sourceRow(index.row()), index.column()) : QModelIndex();
}

QModelIndex SortedRows::mapFromSource(const QModelIndex& source) const
{
    if (!source.isValid())
        return QModelIndex();
    const std::optional<int> row = m_order.row(static_cast<std::uint32_t>(source.row()) + 1);
    return row ? index(*row, source.column()) : QModelIndex();
}

QVariant SortedRows::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool row = orientation == Qt::Vertical && section >= 0 && section < rowCount();
    return sourceModel()->headerData(row ? sourceRow(section) : section, orientation, role);
}

}  // namespace veltrac
