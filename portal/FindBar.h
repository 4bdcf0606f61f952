// The strip beneath the table that looks for values: equal, above, below, missing, or a jump.
#pragma once

#include <QWidget>

#include "core/ColumnScan.h"

class QComboBox;
class QLabel;
class QPushButton;

namespace veltrac {

class NumberField;

class FindBar : public QWidget
{
    Q_OBJECT

public:
    explicit FindBar(QWidget* parent = nullptr);

    // Shows the strip and puts the cursor into it.
    void open();
    bool isValid() const;
    SearchCondition condition() const;

signals:
    void x_find(Direction direction);
    // Escape or the close button: the strip is hidden, the table wants the keyboard back.
    void x_closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void updateFields();

    QComboBox* m_what;
    NumberField* m_number;
    QPushButton* m_next;
    QPushButton* m_previous;
    QLabel* m_reason;
};

}  // namespace veltrac
