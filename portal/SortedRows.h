// Shows rows of a model in another order: those of a table that is sorted on the values of a column.
#pragma once

#include <QAbstractProxyModel>

#include <cstdint>
#include <vector>

#include "core/ColumnScan.h"

namespace veltrac {

// The samples first to last, by their values; equal ones keep their order, missing ones stand last either
// way. Takes 12 bytes a sample. What the reader throws passes through.
JobOutcome sortSamples(const ColumnReader& read, std::uint32_t first, std::uint32_t last, Qt::SortOrder order,
                       const Progress& progress, std::vector<std::uint32_t>& samples);

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
    int sourceRow(int row) const { return static_cast<int>(m_samples[static_cast<std::size_t>(row)] - 1); }

    std::vector<std::uint32_t> m_samples;
    std::uint32_t m_least = 0;
    std::vector<int> m_rows;  // of sample m_least + i; -1 where it is not shown
};

}  // namespace veltrac
