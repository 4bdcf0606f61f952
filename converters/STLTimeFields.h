// The fields of an STL import that tell where the rows' times come from and what becomes of them.
#pragma once

#include "converters/ImportFields.h"
#include "converters/STLCheck.h"

class QComboBox;
class QLabel;
class QLineEdit;

namespace veltrac {

class NumberField;

class STLTimeFields : public ScrolledForm
{
    Q_OBJECT

public:
    explicit STLTimeFields(QWidget* parent = nullptr);

    // Shows a format; nothing is announced then.
    void show(const STLFormat& format);
    // Shows the order of day and month, which a check may find further down in the file, and what is doubtful
    // about it.
    void showOrder(DateOrder order, const QString& doubt);
    // What was found of the times.
    void showFinding(const QString& text);
    // Enables what is used, of an open file.
    void enable(bool open);
    void read(STLFormat& format) const;
    // Says at each field what is wrong with it; true where all are good.
    bool validate();

signals:
    void x_changed();

private:
    QLayout* buildForm();
    void enableColumn(QComboBox* box, bool used);
    void readStart(STLFormat& format) const;

    bool m_filling = false;
    QComboBox* m_source;
    QComboBox* m_dateColumn;
    QComboBox* m_timeColumn;
    QComboBox* m_order;
    QComboBox* m_zone;
    QLineEdit* m_start;
    NumberField* m_step;
    QComboBox* m_becomes;
    QLineEdit* m_resampleStep;
    QLabel* m_orderReason = nullptr;
    QLabel* m_startReason = nullptr;
    QLabel* m_resampleReason = nullptr;
    QLabel* m_finding;
};

}  // namespace veltrac
