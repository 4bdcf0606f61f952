#include "portal/RowWindow.h"

#include <algorithm>

namespace veltrac {

RowWindow::RowWindow(QAbstractItemModel* source, QObject* parent)
    : QAbstractProxyModel(parent), m_stretch(source->rowCount())
{
    setSourceModel(source);
    connect(source, &QAbstractItemModel::dataChanged, this, &RowWindow::passOn);
}

void RowWindow::setBase(int base)
{
    const int shift = m_stretch.base() - m_stretch.clamped(base);
    if (shift == 0)
        return;
    emit layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    m_stretch.moveTo(base);
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& old : before)
        after.append(index(old.row() + shift, old.column()));
    changePersistentIndexList(before, after);
    emit layoutChanged();
}

int RowWindow::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_stretch.rows();
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
    return index.isValid() ? sourceModel()->index(index.row() + base(), index.column()) : QModelIndex();
}

QModelIndex RowWindow::mapFromSource(const QModelIndex& source) const
{
    return source.isValid() && shows(source.row()) ? index(source.row() - base(), source.column())
                                                   : QModelIndex();
}

QVariant RowWindow::headerData(int section, Qt::Orientation orientation, int role) const
{
    return sourceModel()->headerData(orientation == Qt::Vertical ? section + base() : section, orientation,
                                     role);
}

void RowWindow::passOn(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    const int first = std::max(topLeft.row(), base()) - base();
    const int last = std::min(bottomRight.row() - base(), rowCount() - 1);
    if (first <= last)
        emit dataChanged(index(first, topLeft.column()), index(last, bottomRight.column()), roles);
}

}  // namespace veltrac
