// Edits a cell in place: nine significant digits, wrong text marked while it is typed, and nothing changed
// by an editor that was left as it was.
#pragma once

#include <QStyledItemDelegate>

namespace veltrac {

class CellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

signals:
    // The text was no number; the cell keeps its value.
    void x_refused(const QString& text) const;
};

}  // namespace veltrac
