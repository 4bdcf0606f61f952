#include "converters/ImportFields.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QString>
#include <QVBoxLayout>

#include "converters/ImportTexts.h"
#include "converters/TimeStamps.h"
#include "share/NumberField.h"

namespace veltrac {

void addRow(QFormLayout* form, const char* label, QWidget* field, const char* help, QWidget* beneath)
{
    if (beneath == nullptr) {
        form->addRow(QString::fromUtf8(label), field);
    } else {
        // In the field's own row: a row of its own would leave a gap while it is hidden.
        auto* const box = new QVBoxLayout;
        box->addWidget(field);
        box->addWidget(beneath);
        auto* const name = new QLabel(QString::fromUtf8(label));
        name->setBuddy(field);
        form->addRow(name, box);
    }
    field->setToolTip(QString::fromUtf8(help));
    field->setWhatsThis(field->toolTip());
    field->setAccessibleName(QString::fromUtf8(label).remove(QLatin1Char('&')));
}

QLabel* addCheckedRow(QFormLayout* form, const char* label, QLineEdit* field, const char* help)
{
    QLabel* const reason = warningLabel();
    addRow(form, label, field, help, reason);
    if (auto* const number = qobject_cast<NumberField*>(field))
        QObject::connect(number, &NumberField::x_validated, reason,
                         [number, reason] { showText(reason, number->reason()); });
    return reason;
}

void showReason(QLineEdit* field, QLabel* label, const QString& reason)
{
    markField(*field, reason.isEmpty());
    showText(label, reason);
}

QPushButton* importButton(const char* text, const char* help)
{
    auto* const button = new QPushButton(QString::fromLatin1(text));
    button->setToolTip(QString::fromLatin1(help));
    button->setAutoDefault(true);
    return button;
}

QString reasonAgainstStart(const QString& text)
{
    const auto stamp = readStamp(text.trimmed().toStdString());
    // Either order will do: the window knows which one is meant.
    if (text.trimmed().isEmpty() ||
        (stamp && (wallClock(*stamp, DateOrder::DayMonth) || wallClock(*stamp, DateOrder::MonthDay))))
        return QString();
    return QStringLiteral("\"%1\" is no date and time; write yyyy-mm-dd hh:mm:ss.").arg(text.trimmed());
}

QString reasonAgainstTarget(const QString& text)
{
    return text.trimmed().isEmpty() ? QStringLiteral("A file name is missing.") : QString();
}

}  // namespace veltrac
