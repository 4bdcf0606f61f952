#include "share/AxisLimitsDialog.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

#include "share/NumberField.h"

bool askAxisLimits(QWidget* parent, const QString& title, bool offersAutomatic, AxisLimits& limits)
{
    constexpr int kDigits = 12;
    QDialog dialog(parent);
    dialog.setWindowTitle(title);
    auto* const form = new QFormLayout(&dialog);
    auto* const automatic = new QCheckBox(QObject::tr("&Fit the data"), &dialog);
    automatic->setChecked(limits.automatic);
    automatic->setVisible(offersAutomatic);
    auto* const from = new NumberField(QString::number(limits.from, 'g', kDigits), &dialog);
    auto* const to = new NumberField(QString::number(limits.to, 'g', kDigits), &dialog);
    auto* const reason = new QLabel(&dialog);
    reason->setWordWrap(true);
    from->setReasonLabel(reason);
    to->setReasonLabel(reason);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, &dialog);
    QPushButton* const ok = buttons->addButton(QObject::tr("&Ok"), QDialogButtonBox::AcceptRole);
    form->addRow(automatic);
    form->addRow(QObject::tr("F&rom:"), from);
    form->addRow(QObject::tr("&To:"), to);
    form->addRow(reason);
    form->addRow(buttons);

    const auto check = [&] {
        const bool fits = offersAutomatic && automatic->isChecked();
        from->setEnabled(!fits);
        to->setEnabled(!fits);
        const bool numbers = from->isValid() && to->isValid();
        const bool positive = !limits.logarithmic || (from->number() > 0.0 && to->number() > 0.0);
        const bool differ = from->number() != to->number();
        if (numbers && !fits && !positive)
            reason->setText(QObject::tr("A logarithmic axis needs limits above 0."));
        else if (numbers && !fits && !differ)
            reason->setText(QObject::tr("The limits are equal."));
        else if (numbers)
            reason->clear();
        ok->setEnabled(fits || (numbers && positive && differ));
    };
    QObject::connect(automatic, &QCheckBox::toggled, &dialog, check);
    QObject::connect(from, &NumberField::x_validated, &dialog, check);
    QObject::connect(to, &NumberField::x_validated, &dialog, check);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    check();
    from->selectAll();
    from->setFocus();
    if (dialog.exec() != QDialog::Accepted)
        return false;
    limits.automatic = offersAutomatic && automatic->isChecked();
    limits.from = from->number();
    limits.to = to->number();
    return true;
}
