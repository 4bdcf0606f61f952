// A line edit for a number: point or comma, checked as it is typed, marked where it is wrong.
#pragma once

#include <QLineEdit>

#include <functional>
#include <optional>

class QLabel;

namespace veltrac {

// The number that a text holds, with a decimal point or comma and blanks around it; "inf" and "nan" and
// anything else are none.
std::optional<double> numberOf(const QString& text);

// Reddens a field whose text is wrong, and gives a good one its own colours back.
void markField(QWidget& field, bool good);

class NumberField : public QLineEdit
{
    Q_OBJECT

public:
    // Says why a number is refused, or an empty text where it is good.
    using Check = std::function<QString(double)>;

    explicit NumberField(const QString& text = QString(), QWidget* parent = nullptr);

    // Whole numbers within [least, most]; nothing else.
    void setWhole(double least, double most);
    // A further check; it sees numbers only.
    void setCheck(Check check);
    // The label that shows why the text is wrong; borrowed, may be null.
    void setReasonLabel(QLabel* label);

    bool isValid() const { return m_reason.isEmpty(); }
    const QString& reason() const { return m_reason; }
    // The number; 0 where the text is none.
    double number() const;

signals:
    // After each change of the text.
    void x_validated(bool valid);

private:
    void validate();

    Check m_check;
    QLabel* m_reasonLabel = nullptr;
    QString m_reason;
};

}  // namespace veltrac
