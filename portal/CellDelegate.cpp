#include "portal/CellDelegate.h"

#include <QLineEdit>

#include "portal/CellText.h"
#include "portal/TsTableModel.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr const char* kShownText = "shownText";

}  // namespace

CellDelegate::CellDelegate(const TsTableModel& model, QObject* parent)
    : QStyledItemDelegate(parent), m_model(model)
{
}

void CellDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (m_model.emptyRows() == 0)
        return;
    // The heads know the sample, whatever stands between the view and the model.
    const int row = index.model()->headerData(index.row(), Qt::Vertical).toInt() - 1;
    if (m_model.isWritten(row))
        return;
    const QColor grey = option->palette.color(QPalette::Disabled, QPalette::Text);
    option->palette.setColor(QPalette::Text, grey);
    QColor hatch = grey;
    hatch.setAlpha(64);
    option->backgroundBrush = QBrush(hatch, Qt::BDiagPattern);
}

QWidget* CellDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                    const QModelIndex& index) const
{
    auto* const editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setAlignment(Qt::AlignCenter);
    editor->setAccessibleName(QStringLiteral("Value of sample %1").arg(index.row() + 1));
    connect(editor, &QLineEdit::textChanged, editor, [editor](const QString& text) {
        markField(*editor, cellNumber(text.toStdString()).has_value());
    });
    return editor;
}

void CellDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    auto* const line = qobject_cast<QLineEdit*>(editor);
    const QString text = index.data(Qt::EditRole).toString();
    line->setProperty(kShownText, text);
    line->setText(text);
    line->selectAll();
}

void CellDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    const QString text = qobject_cast<QLineEdit*>(editor)->text();
    if (text == editor->property(kShownText).toString())
        return;
    if (!model->setData(index, text, Qt::EditRole))
        emit x_refused(text);
}

}  // namespace veltrac
