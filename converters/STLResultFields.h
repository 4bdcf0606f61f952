// The fields of an STL import that tell what the ts-file becomes.
#pragma once

#include "converters/ImportFields.h"
#include "converters/STLFormat.h"

class QComboBox;
class QLabel;
class QLineEdit;

namespace veltrac {

class NumberField;

class STLResultFields : public ScrolledForm
{
    Q_OBJECT

public:
    explicit STLResultFields(QWidget* parent = nullptr);

    QString target() const;
    // Of another file; nothing is announced then, nor by show().
    void showTarget(const QString& name);
    void show(const STLFormat& format);
    // What the file takes on the disk.
    void showSize(const QString& text);
    void read(STLFormat& format) const;
    // Says at each field what is wrong with it; true where all are good.
    bool validate();

signals:
    void x_changed();

private:
    bool m_filling = false;
    QLineEdit* m_target;
    QLabel* m_targetReason = nullptr;
    QLineEdit* m_description;
    NumberField* m_fromRow;
    NumberField* m_toRow;
    NumberField* m_everyNth;
    QComboBox* m_fill;
    QLabel* m_size;
    QLabel* m_head;
};

}  // namespace veltrac
