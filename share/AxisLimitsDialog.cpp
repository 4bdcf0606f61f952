#include "share/AxisLimitsDialog.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

#include <cmath>

#include "share/Boxes.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

// Wide enough for its title too.
constexpr int kLeastWidth = 300;

// With no more digits than tell apart what the axis shows: 0.036 and not 0.0360000061989.
QString limitText(double limit, double span)
{
    constexpr int kDigits = 12;
    constexpr double kLeastPart = 1e-6;
    const double unit = std::pow(10.0, std::floor(std::log10(std::fabs(span) * kLeastPart)));
    const double rounded = unit > 0.0 && std::isfinite(unit) ? std::round(limit / unit) * unit : limit;
    return QString::number(rounded, 'g', kDigits);
}

}  // namespace

bool askAxisLimits(QWidget* parent, const QString& title, bool offersAutomatic, AxisLimits& limits)
{
    const QString fromBefore =
        limitText(limits.from, limits.logarithmic ? limits.from : limits.to - limits.from);
    const QString toBefore = limitText(limits.to, limits.logarithmic ? limits.to : limits.to - limits.from);
    QDialog dialog(parent);
    dialog.setWindowTitle(title);
    dialog.setMinimumWidth(kLeastWidth);
    auto* const form = new QFormLayout(&dialog);
    auto* const automatic = new QCheckBox(QObject::tr("&Fit the data"), &dialog);
    automatic->setChecked(limits.automatic);
    automatic->setVisible(offersAutomatic);
    auto* const from = new NumberField(fromBefore, &dialog);
    auto* const to = new NumberField(toBefore, &dialog);
    auto* const reason = new QLabel(&dialog);
    reason->setWordWrap(true);
    form->addRow(automatic);
    form->addRow(QObject::tr("F&rom:"), from);
    form->addRow(QObject::tr("&To:"), to);
    form->addRow(reason);
    QPushButton* const ok = addFormButtons(dialog, *form, QObject::tr("&Ok"));

    const auto check = [&] {
        const bool fits = offersAutomatic && automatic->isChecked();
        const bool numbers = from->isValid() && to->isValid();
        const bool positive = !limits.logarithmic || (from->number() > 0.0 && to->number() > 0.0);
        const bool differ = from->number() != to->number();
        if (fits)
            reason->clear();
        else if (!numbers)
            reason->setText(from->isValid() ? to->reason() : from->reason());
        else if (!positive)
            reason->setText(QObject::tr("A logarithmic axis needs limits above 0."));
        else
            reason->setText(differ ? QString() : QObject::tr("The limits are equal."));
        ok->setEnabled(fits || (numbers && positive && differ));
    };
    QObject::connect(automatic, &QCheckBox::toggled, &dialog, check);
    // Whoever types a limit means it.
    for (const NumberField* const field : {from, to})
        QObject::connect(field, &QLineEdit::textEdited, automatic, [=] { automatic->setChecked(false); });
    QObject::connect(from, &NumberField::x_validated, &dialog, check);
    QObject::connect(to, &NumberField::x_validated, &dialog, check);
    check();
    from->selectAll();
    from->setFocus();
    if (dialog.exec() != QDialog::Accepted)
        return false;
    limits.automatic = offersAutomatic && automatic->isChecked();
    // What nobody has touched stays what it is, to the last digit.
    if (from->text() != fromBefore)
        limits.from = from->number();
    if (to->text() != toBefore)
        limits.to = to->number();
    return true;
}

bool askClockLimits(QWidget* parent, const QString& title, AxisLimits& limits)
{
    constexpr double kMsPerSecond = 1000.0;
    QDialog dialog(parent);
    dialog.setWindowTitle(title);
    dialog.setMinimumWidth(kLeastWidth);
    auto* const form = new QFormLayout(&dialog);
    const auto add = [&](const QString& label, double seconds) {
        auto* const field = new QDateTimeEdit(&dialog);
        field->setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
        field->setDateTime(QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(seconds * kMsPerSecond)));
        form->addRow(label, field);
        return field;
    };
    QDateTimeEdit* const from = add(QObject::tr("F&rom:"), limits.from);
    QDateTimeEdit* const to = add(QObject::tr("&To:"), limits.to);
    const QDateTime fromBefore = from->dateTime();
    const QDateTime toBefore = to->dateTime();
    QPushButton* const ok = addFormButtons(dialog, *form, QObject::tr("&Ok"));
    const auto check = [&] { ok->setEnabled(from->dateTime() != to->dateTime()); };
    QObject::connect(from, &QDateTimeEdit::dateTimeChanged, &dialog, check);
    QObject::connect(to, &QDateTimeEdit::dateTimeChanged, &dialog, check);
    check();
    from->setFocus();
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const auto seconds = [&](const QDateTimeEdit* field) {
        return static_cast<double>(field->dateTime().toMSecsSinceEpoch()) / kMsPerSecond;
    };
    if (from->dateTime() != fromBefore)
        limits.from = seconds(from);
    if (to->dateTime() != toBefore)
        limits.to = seconds(to);
    return true;
}

}  // namespace veltrac
