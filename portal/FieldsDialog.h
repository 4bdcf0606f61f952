// Asks for a few numbers; OK is disabled, and a line says why, while one of them is wrong.
#pragma once

#include <QDialog>

#include <functional>
#include <vector>

#include "portal/BlockOperation.h"

class QDialogButtonBox;
class QLabel;
class QLineEdit;

namespace veltrac {

class FieldsDialog : public QDialog
{
    Q_OBJECT

public:
    // Why the numbers together are refused, or an empty text.
    using Check = std::function<QString(const std::vector<double>& numbers)>;

    // `numbers` fills the fields at first.
    FieldsDialog(const QString& title, const QString& explanation, const std::vector<BlockField>& fields,
                 const std::vector<double>& numbers, QWidget* parent);

    void setCheck(Check check);
    // The fields' numbers; NaN for a missing value.
    std::vector<double> numbers() const;

private:
    void validate();

    std::vector<BlockField> m_fields;
    std::vector<QLineEdit*> m_edits;
    QLabel* m_reason;
    QDialogButtonBox* m_buttons;
    Check m_check;
};

}  // namespace veltrac
