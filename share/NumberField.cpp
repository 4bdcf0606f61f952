#include "share/NumberField.h"

#include <QLabel>

#include <charconv>
#include <cmath>

namespace veltrac {

std::optional<double> numberOf(const QString& text)
{
    QByteArray bytes = text.trimmed().toLatin1();
    bytes.replace(',', '.');
    if (bytes.startsWith('+'))
        bytes.remove(0, 1);
    double number = 0.0;
    const auto [end, error] = std::from_chars(bytes.constData(), bytes.constData() + bytes.size(), number);
    if (error != std::errc() || end != bytes.constData() + bytes.size() || !std::isfinite(number))
        return std::nullopt;
    return number;
}

void markField(QWidget& field, bool good)
{
    QPalette colours;
    if (!good) {
        colours.setColor(QPalette::Base, QColor(0xF8, 0xC8, 0xC4));
        colours.setColor(QPalette::Text, QColor(0x60, 0x00, 0x00));
    }
    field.setPalette(colours);
}

NumberField::NumberField(const QString& text, QWidget* parent) : QLineEdit(text, parent)
{
    connect(this, &QLineEdit::textChanged, this, [this] { validate(); });
    validate();
}

void NumberField::setWhole(double least, double most)
{
    setCheck([least, most](double number) {
        if (number != std::floor(number))
            return QStringLiteral("This must be a whole number.");
        if (number < least || number > most)
            return QStringLiteral("This must lie between %1 and %2.")
                .arg(QString::number(least, 'f', 0), QString::number(most, 'f', 0));
        return QString();
    });
}

void NumberField::setCheck(Check check)
{
    m_check = std::move(check);
    validate();
}

void NumberField::setReasonLabel(QLabel* label)
{
    m_reasonLabel = label;
    validate();
}

double NumberField::number() const
{
    return numberOf(text()).value_or(0.0);
}

void NumberField::validate()
{
    const std::optional<double> parsed = numberOf(text());
    if (!parsed)
        m_reason = text().trimmed().isEmpty() ? QStringLiteral("A number is missing.")
                                              : QStringLiteral("\"%1\" is not a number.").arg(text());
    else
        m_reason = m_check ? m_check(*parsed) : QString();

    markField(*this, m_reason.isEmpty());
    if (m_reasonLabel != nullptr)
        m_reasonLabel->setText(m_reason);
    emit x_validated(m_reason.isEmpty());
}

}  // namespace veltrac
