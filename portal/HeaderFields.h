// The fields of the header editor: the file's texts, times and counts, checked as they are typed, and a line
// that says what is wrong or how large the file becomes.
#pragma once

#include <QWidget>

#include <cstdint>

class QLabel;
class QLineEdit;

namespace veltrac {

class NumberField;
class StartField;

class HeaderFields : public QWidget
{
    Q_OBJECT

public:
    explicit HeaderFields(QWidget* parent = nullptr);

    QLineEdit& description() const { return *m_description; }
    QLineEdit& timeUnit() const { return *m_timeUnit; }
    NumberField& sampleTime() const { return *m_sampleTime; }
    NumberField& startTime() const { return *m_startTime; }
    NumberField& samples() const { return *m_samples; }
    NumberField& columns() const { return *m_columns; }

    // The start's whole seconds since the epoch, 0 for none. The start time is counted from there; a date
    // that is typed changes both.
    std::uint32_t startSeconds() const { return m_startSeconds; }
    void setStartSeconds(std::uint32_t seconds);
    StartField& startDate() const { return *m_startDate; }

    // The counts that the file has: they are no mistake of the user's, whatever they are. A field that shows
    // the count of before shows the new one; what was typed stays.
    void setCounts(unsigned samples, unsigned columns);
    // What is to be said of the file beside its size: "ring, oldest sample 123 457".
    void setKind(const QString& kind) { m_kind = kind; }
    // Shows the file's counts in place of what was typed.
    void resetCounts();
    // Says anew what is wrong, or how large the file is with these counts; false where something is wrong.
    bool validate();

signals:
    // A date was typed.
    void x_start_date_edited();

private:
    void showStartDate();
    void takeStartDate(double seconds);
    void addChecks();
    void layOut();
    QString sizeReason(double samples, double columns) const;

    QLineEdit* m_description;
    QLineEdit* m_timeUnit;
    NumberField* m_sampleTime;
    NumberField* m_startTime;
    StartField* m_startDate;
    NumberField* m_samples;
    NumberField* m_columns;
    QLabel* m_line;
    QString m_kind;
    std::uint32_t m_startSeconds = 0;
    unsigned m_fileSamples = 0;
    unsigned m_fileColumns = 0;
};

}  // namespace veltrac
