// A point in time as date and clock time, in local time or UTC.
#pragma once

#include <QWidget>

#include <optional>

class QComboBox;
class QLineEdit;

namespace veltrac {

class StartField : public QWidget
{
    Q_OBJECT

public:
    explicit StartField(QWidget* parent = nullptr);

    // Shows a time in seconds since the epoch, to the millisecond; nothing shows an empty field.
    void setTime(std::optional<double> seconds);
    // Why the text is no time; empty where it is one, and in an empty field that nobody has filled.
    const QString& reason() const { return m_reason; }
    QLineEdit& text() const { return *m_text; }

signals:
    // The user has typed another time.
    void x_edited(double seconds);
    // The text was looked at: reason() is new.
    void x_validated();

private:
    void read(const QString& text);
    // The time that a text means; m_reason where it is none, or none for a header.
    std::optional<double> meant(const QString& written);
    void show();

    QLineEdit* m_text;
    QComboBox* m_clock;
    std::optional<double> m_time;
    QString m_reason;
};

}  // namespace veltrac
