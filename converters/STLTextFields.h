// The fields of an STL import that tell how its text is written.
#pragma once

#include "converters/ImportFields.h"
#include "converters/STLFormat.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace veltrac {

class STLTextFields : public ScrolledForm
{
    Q_OBJECT

public:
    explicit STLTextFields(QWidget* parent = nullptr);

    void showFile(const QString& text);
    // Shows a format; nothing is announced then.
    void show(const STLFormat& format);
    // Reads what tells the lines apart, and the signs that any reading takes.
    void readLines(STLFormat& format) const;
    void readSigns(STLFormat& format) const;

signals:
    // The user wants other separators.
    void x_reading_changed(char separator, char decimal);
    void x_other_reading();
    // Lines mean something else: readLines().
    void x_lines_changed();
    // Signs mean something else: readSigns().
    void x_signs_changed();

private:
    void announceReading();

    bool m_filling = false;
    QLabel* m_file;
    QComboBox* m_encoding;
    QComboBox* m_separator;
    QComboBox* m_decimal;
    QComboBox* m_grouping;
    QSpinBox* m_firstData;
    QSpinBox* m_namesLine;
    QSpinBox* m_unitsLine;
    QLineEdit* m_remarks;
    QLineEdit* m_missing;
    QPushButton* m_other;
};

}  // namespace veltrac
