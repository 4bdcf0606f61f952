#include "converters/STLResultFields.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>

#include "converters/ImportTexts.h"
#include "share/HeaderText.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr int kShownHeadLines = 12;
constexpr double kMostRows = 4294967295.0;

}  // namespace

STLResultFields::STLResultFields(QWidget* parent)
    : ScrolledForm(parent),
      m_target(new QLineEdit),
      m_description(new QLineEdit),
      m_fromRow(new NumberField(QStringLiteral("1"))),
      m_toRow(new NumberField(QStringLiteral("0"))),
      m_everyNth(new NumberField(QStringLiteral("1"))),
      m_fill(fillBox()),
      m_size(new QLabel),
      m_head(wrappedLabel())
{
    m_description->setMaxLength(kFileDescriptionBytes);
    for (NumberField* const field : {m_fromRow, m_everyNth})
        field->setWhole(1, kMostRows);
    m_toRow->setWhole(0, kMostRows);

    auto* const form = new QFormLayout;
    m_targetReason =
        addCheckedRow(form, "&File name", m_target, "The ts-file that is made in the working directory.");
    addRow(form, "&Description", m_description, "The description of the ts-file, at most 59 bytes.");
    addCheckedRow(form, "Ro&ws from", m_fromRow, "The first data row to take.");
    addCheckedRow(form, "to (0: the &last)", m_toRow, "The last data row to take; 0 takes all.");
    addCheckedRow(form, "&Every n-th row", m_everyNth, "1 takes every row, 10 every tenth.");
    addRow(form, "&Missing become", m_fill, "What stands in the ts-file for a missing value.");
    addRow(form, "Size", m_size, "What the ts-file takes on the disk.");
    form->addRow(m_head);
    setForm(form);

    const auto changed = [this] {
        if (!m_filling)
            emit x_changed();
    };
    for (QLineEdit* const field : {m_target, m_description, static_cast<QLineEdit*>(m_fromRow),
                                   static_cast<QLineEdit*>(m_toRow), static_cast<QLineEdit*>(m_everyNth)})
        connect(field, &QLineEdit::textChanged, this, changed);
    connect(m_fill, qOverload<int>(&QComboBox::currentIndexChanged), this, changed);
}

QString STLResultFields::target() const
{
    return m_target->text().trimmed();
}

void STLResultFields::showTarget(const QString& name)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_target->setText(name);
}

void STLResultFields::show(const STLFormat& format)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_description->setText(QString::fromStdString(format.description));
    QStringList head;
    for (const auto& [key, value] : format.head)
        head << QStringLiteral("%1: %2").arg(QString::fromStdString(key), QString::fromStdString(value));
    m_head->setText(head.isEmpty() ? QString()
                                   : QStringLiteral("The file's head says:\n") +
                                         head.mid(0, kShownHeadLines).join(QLatin1Char('\n')));
}

void STLResultFields::showSize(const QString& text)
{
    m_size->setText(text);
}

void STLResultFields::read(STLFormat& format) const
{
    format.description = m_description->text().toStdString();
    format.fromRow = static_cast<std::uint64_t>(m_fromRow->number());
    format.toRow = static_cast<std::uint64_t>(m_toRow->number());
    format.everyNth = static_cast<std::uint32_t>(m_everyNth->number());
    format.fill = static_cast<STLFill>(chosenValue(m_fill));
}

bool STLResultFields::validate()
{
    const QString target = reasonAgainstTarget(m_target->text());
    showReason(m_target, m_targetReason, target);
    return target.isEmpty() && m_fromRow->isValid() && m_toRow->isValid() && m_everyNth->isValid();
}

}  // namespace veltrac
