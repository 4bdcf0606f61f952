// What the fields of the import windows have in common.
#pragma once

#include <QScrollArea>

#include <initializer_list>

#include "core/WallClock.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLayout;
class QLineEdit;
class QPushButton;
class QString;
class QWidget;

namespace veltrac {

// A box of choices, and the value of the chosen one; the first is chosen where none has the value.
struct Choice
{
    const char* text;
    int value;
};
QComboBox* choiceBox(std::initializer_list<Choice> choices);
int chosenValue(const QComboBox* box);
void chooseValue(QComboBox* box, int value);
// What missing values can become.
QComboBox* fillBox();

// A row of a form: label, field and what the field is for, perhaps with something beneath the field.
void addRow(QFormLayout* form, const char* label, QWidget* field, const char* help,
            QWidget* beneath = nullptr);

// The same, with room beneath the field for what is wrong with it. A NumberField fills that by itself.
QLabel* addCheckedRow(QFormLayout* form, const char* label, QLineEdit* field, const char* help);

// Marks the field and says why beneath it; an empty reason is a good field.
void showReason(QLineEdit* field, QLabel* label, const QString& reason);

// A push button of the row below; Enter presses the one that has the focus.
QPushButton* importButton(const char* text, const char* help);

// A form that is scrolled where it is low, and never narrower than its fields.
class ScrolledForm : public QScrollArea
{
public:
    explicit ScrolledForm(QWidget* parent);

    QSize minimumSizeHint() const override;

protected:
    void setForm(QLayout* form);
    bool eventFilter(QObject* watched, QEvent* event) override;
};

// A start of a series as a field shows it; empty for none.
QString wallFieldText(Micros wall);
// Why a text is no start of a series; empty where it is one, or empty itself.
QString reasonAgainstStart(const QString& text);
// Why no ts-file can be called so.
QString reasonAgainstTarget(const QString& text);

}  // namespace veltrac
