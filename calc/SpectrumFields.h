// The fields of Ts-FFT: which samples are transformed, and how. The line below them tells what that comes to,
// or why it cannot be.
#pragma once

#include <QWidget>

#include "calc/SpectrumMethod.h"
#include "calc/SpectrumRequest.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;

namespace veltrac {

class SecondColumnFields;

class SpectrumFields : public QWidget
{
    Q_OBJECT

public:
    explicit SpectrumFields(QWidget* parent = nullptr);

    // The range of a column of a file that is transformed, in samples that are `dt` seconds apart.
    void setSource(const QString& file, unsigned column, std::uint32_t from, std::uint32_t to, double dt);
    // A file, column or range that cannot be transformed, and why.
    void refuseSource(const QString& why);

    SpectrumMethod method() const;
    SpectrumRequest request() const;
    const SecondColumnFields& second() const { return *m_second; }
    // What will be computed, in words.
    QString planText() const;
    // Why that cannot be executed; empty where it can.
    const QString& reason() const { return m_reason; }
    // Chooses the method "Averaged segments".
    void useSegments();

signals:
    void x_changed();

private:
    void createChoices();
    void addRows(QFormLayout& form);
    void connectFields();
    // The first thing that is wrong, and the field to be marked; none where it is the source.
    QString findReason(QWidget*& field) const;
    void enableFields();
    void check();

    QComboBox* m_trend = nullptr;
    QComboBox* m_window = nullptr;
    QComboBox* m_method = nullptr;
    QComboBox* m_segment = nullptr;
    QComboBox* m_overlap = nullptr;
    QComboBox* m_length = nullptr;
    QComboBox* m_result = nullptr;
    QCheckBox* m_decibel = nullptr;
    SecondColumnFields* m_second = nullptr;
    QLabel* m_plan = nullptr;

    SpectrumRequest m_source;  // its column, range and step
    QString m_refusal;         // of the source
    QString m_reason;
};

}  // namespace veltrac
