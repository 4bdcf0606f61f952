// Shows rows of a model in another order: those of a table that is sorted on the values of a column.
#pragma once

#include <QAbstractProxyModel>

#include "portal/SampleOrder.h"

namespace veltrac {

class SortedRows : public QAbstractProxyModel
{
    Q_OBJECT

public:
    // Row r shows sample samples[r], the source's row samples[r] - 1. The source is borrowed.
    SortedRows(QAbstractItemModel* source, std::vector<std::uint32_t> samples, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex mapToSource(const QModelIndex& index) const override;
    QModelIndex mapFromSource(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    int sourceRow(int row) const { return static_cast<int>(m_order.sample(row) - 1); }

    SampleOrder m_order;
};

}  // namespace veltrac
