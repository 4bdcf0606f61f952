// Shows a million rows of a longer model, so that a table view, which keeps state for each row, can stand
// before a model of any length.
#pragma once

#include <QAbstractProxyModel>

#include "portal/SampleOrder.h"

namespace veltrac {

class RowWindow : public QAbstractProxyModel
{
    Q_OBJECT

public:
    // The source is borrowed and has no children.
    explicit RowWindow(QAbstractItemModel* source, QObject* parent = nullptr);

    // The source's row that is shown first.
    int base() const noexcept { return m_stretch.base(); }
    // Moves the window, as far as the source goes. Persistent indexes stay with their cell; those whose cell
    // is not shown any more become invalid.
    void setBase(int base);
    bool shows(int sourceRow) const noexcept { return m_stretch.shows(sourceRow); }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex mapToSource(const QModelIndex& index) const override;
    QModelIndex mapFromSource(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    void passOn(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);

    RowStretch m_stretch;
};

}  // namespace veltrac
