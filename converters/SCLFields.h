// The fields of an SCL import: when its series begins, how far apart the values lie, and what they become.
#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class SCLObject;

namespace veltrac {

class NumberField;

class SCLFields : public QWidget
{
    Q_OBJECT

public:
    explicit SCLFields(QWidget* parent = nullptr);

    // Each shows a part of what is imported; nothing is announced then.
    void showStart(const SCLObject& logs);
    void showStep(const SCLObject& logs);
    void showDescription(const SCLObject& logs);
    void showTarget(const QString& name);
    void read(SCLObject& logs) const;
    QString target() const;
    // Says at each field what is wrong with it; true where all are good. Without any file no name is missed.
    bool validate(bool hasFiles);

signals:
    void x_changed();
    void x_skip_changed(std::uint64_t lines);

private:
    void follow(const NumberField& edited, NumberField& other);

    bool m_filling = false;
    QLineEdit* m_start;
    QLabel* m_startReason;
    NumberField* m_step;
    NumberField* m_frequency;
    QSpinBox* m_skip;
    QComboBox* m_fill;
    QLineEdit* m_target;
    QLabel* m_targetReason;
    QLineEdit* m_description;
};

}  // namespace veltrac
