#include "portal/RowWindow.h"

#include <algorithm>

namespace veltrac {

RowWindow::RowWindow(QAbstractItemModel* source, QObject* parent) : QAbstractProxyModel(parent)
{
    setSourceModel(source);
    connect(source, &QAbstractItemModel::dataChanged, this, &RowWindow::passOn);
}

void RowWindow::setBase(int base)
{
    base = std::clamp(base, 0, std::max(0, sourceModel()->rowCount() - kRows));
    if (base == m_base)
        return;
    emit layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    const int shift = m_base - base;
    m_base = base;
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& old : before)
        after.append(index(old.row() + shift, old.column()));
    changePersistentIndexList(before, after);
    emit layoutChanged();
}

bool RowWindow::shows(int sourceRow) const
{
    return sourceRow >= m_base && sourceRow - m_base < rowCount();
}

int RowWindow::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : std::min(sourceModel()->rowCount() - m_base, kRows);
}

int RowWindow::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : sourceModel()->columnCount();
}

QModelIndex RowWindow::index(int row, int column, const QModelIndex& parent) const
{
    const bool inside =
        !parent.isValid() && row >= 0 && row < rowCount() && column >= 0 && column < columnCount();
    return inside ? createIndex(row, column) : QModelIndex();
}

QModelIndex RowWindow::parent(const QModelIndex& /*child*/) const
{
    return QModelIndex();
}

QModelIndex RowWindow::mapToSource(const QModelIndex& index) const
{
    return index.isValid() ? sourceModel()->index(index.row() + m_base, index.column()) : QModelIndex();
}

QModelIndex RowWindow::mapFromSource(const QModelIndex& source) const
{
    return source.isValid() && shows(source.row()) ? index(source.row() - m_base, source.column())
                                                   : QModelIndex();
}

QVariant RowWindow::headerData(int section, Qt::Orientation orientation, int role) const
{
    return sourceModel()->headerData(orientation == Qt::Vertical ? section + m_base : section, orientation,
                                     role);
}

void RowWindow::passOn(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    const int first = std::max(topLeft.row(), m_base) - m_base;
    const int last = std::min(bottomRight.row() - m_base, rowCount() - 1);
    if (first <= last)
        emit dataChanged(index(first, topLeft.column()), index(last, bottomRight.column()), roles);
}

}  // namespace veltrac
