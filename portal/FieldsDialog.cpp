#include "portal/FieldsDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "portal/CellText.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr int kLineLetters = 60;  // of an explanation, at most

bool isMissing(const QString& text)
{
    return isMissingText(text.toStdString());
}

bool isGood(const QString& text, const BlockField& field)
{
    return isMissing(text) ? field.mayBeMissing : numberOf(text).has_value();
}

}  // namespace

FieldsDialog::FieldsDialog(const QString& title, const QString& explanation,
                           const std::vector<BlockField>& fields, const std::vector<double>& numbers,
                           QWidget* parent)
    : QDialog(parent),
      m_fields(fields),
      m_reason(new QLabel),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel))
{
    setWindowTitle(title);
    auto* const form = new QFormLayout(this);
    auto* const about = new QLabel(explanation);
    about->setWordWrap(true);
    about->setMinimumWidth(std::min(fontMetrics().averageCharWidth() * kLineLetters,
                                    fontMetrics().horizontalAdvance(explanation)));
    form->addRow(about);
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const QString text =
            i < numbers.size() && !std::isnan(numbers[i]) ? QString::number(numbers[i], 'g', 10) : QString();
        auto* const edit = new QLineEdit(text);
        if (m_fields[i].mayBeMissing)
            edit->setPlaceholderText(QStringLiteral("missing"));
        edit->setAccessibleName(QString::fromUtf8(m_fields[i].label).remove(QLatin1Char('&')));
        connect(edit, &QLineEdit::textChanged, this, &FieldsDialog::validate);
        form->addRow(QString::fromUtf8(m_fields[i].label), edit);
        m_edits.push_back(edit);
    }
    form->addRow(m_reason);
    form->addRow(m_buttons);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    validate();
    m_edits.front()->selectAll();
}

void FieldsDialog::setCheck(Check check)
{
    m_check = std::move(check);
    validate();
}

std::vector<double> FieldsDialog::numbers() const
{
    std::vector<double> all;
    for (const QLineEdit* const edit : m_edits)
        all.push_back(numberOf(edit->text()).value_or(std::numeric_limits<double>::quiet_NaN()));
    return all;
}

void FieldsDialog::validate()
{
    QString reason;
    for (std::size_t i = 0; i < m_edits.size(); ++i) {
        const QString text = m_edits[i]->text();
        const bool good = isGood(text, m_fields[i]);
        markField(*m_edits[i], good);
        if (!good && reason.isEmpty())
            reason = isMissing(text) ? QStringLiteral("A number is missing.")
                                     : QStringLiteral("\"%1\" is not a number.").arg(text);
    }
    if (reason.isEmpty() && m_check)
        reason = m_check(numbers());
    m_reason->setText(reason);
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(reason.isEmpty());
}

}  // namespace veltrac
