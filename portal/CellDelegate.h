// Edits a cell in place: nine significant digits, wrong text marked while it is typed, and nothing changed
// by an editor that was left as it was. Hatches the rows of a ring file that nobody has written yet.
#pragma once

#include <QStyledItemDelegate>

class TsTableModel;

namespace veltrac {

class CellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    // Borrows the model that lies below the views' own.
    explicit CellDelegate(const TsTableModel& model, QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

signals:
    // The text was no number; the cell keeps its value.
    void x_refused(const QString& text) const;

private:
    const TsTableModel& m_model;
};

}  // namespace veltrac
