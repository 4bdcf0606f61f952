#include "portal/CellDelegate.h"

#include <QLineEdit>

#include "portal/TsTableModel.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr const char* kShownText = "shownText";

}  // namespace

QWidget* CellDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                    const QModelIndex& index) const
{
    auto* const editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setAlignment(Qt::AlignCenter);
    editor->setAccessibleName(QStringLiteral("Value of sample %1").arg(index.row() + 1));
    connect(editor, &QLineEdit::textChanged, editor,
            [editor](const QString& text) { markField(*editor, cellNumber(text).has_value()); });
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
