#include "converters/ImportFields.h"

#include <QComboBox>
#include <QDateTime>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QString>
#include <QVBoxLayout>

#include <algorithm>

#include "converters/ImportTexts.h"
#include "converters/STLFormat.h"
#include "converters/TimeStamps.h"
#include "share/NumberField.h"

namespace veltrac {

QComboBox* choiceBox(std::initializer_list<Choice> choices)
{
    auto* const box = new QComboBox;
    for (const Choice& choice : choices)
        box->addItem(QString::fromUtf8(choice.text), choice.value);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(16);
    return box;
}

int chosenValue(const QComboBox* box)
{
    return box->currentData().toInt();
}

void chooseValue(QComboBox* box, int value)
{
    box->setCurrentIndex(std::max(0, box->findData(value)));
}

QComboBox* fillBox()
{
    return choiceBox({{"missing (NaN)", static_cast<int>(STLFill::NaN)},
                      {"0", static_cast<int>(STLFill::Zero)},
                      {"the value before", static_cast<int>(STLFill::Previous)},
                      {"interpolated", static_cast<int>(STLFill::Interpolated)}});
}

void addRow(QFormLayout* form, const char* label, QWidget* field, const char* help, QWidget* beneath)
{
    if (beneath == nullptr) {
        form->addRow(QString::fromUtf8(label), field);
    } else {
        // In the field's own row: a row of its own would leave a gap while it is hidden.
        auto* const box = new QVBoxLayout;
        box->addWidget(field);
        box->addWidget(beneath);
        auto* const name = new QLabel(QString::fromUtf8(label));
        name->setBuddy(field);
        form->addRow(name, box);
    }
    field->setToolTip(QString::fromUtf8(help));
    field->setWhatsThis(field->toolTip());
    field->setAccessibleName(QString::fromUtf8(label).remove(QLatin1Char('&')));
}

QLabel* addCheckedRow(QFormLayout* form, const char* label, QLineEdit* field, const char* help)
{
    QLabel* const reason = warningLabel();
    addRow(form, label, field, help, reason);
    if (auto* const number = qobject_cast<NumberField*>(field))
        QObject::connect(number, &NumberField::x_validated, reason,
                         [number, reason] { showText(reason, number->reason()); });
    return reason;
}

void showReason(QLineEdit* field, QLabel* label, const QString& reason)
{
    markField(*field, reason.isEmpty());
    showText(label, reason);
}

QPushButton* importButton(const char* text, const char* help)
{
    auto* const button = new QPushButton(QString::fromLatin1(text));
    button->setToolTip(QString::fromLatin1(help));
    button->setAutoDefault(true);
    return button;
}

ScrolledForm::ScrolledForm(QWidget* parent) : QScrollArea(parent)
{
    setFocusPolicy(Qt::NoFocus);  // it follows the field that has the focus
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
}

void ScrolledForm::setForm(QLayout* form)
{
    auto* const inner = new QWidget;
    inner->setLayout(form);
    setWidget(inner);
}

QSize ScrolledForm::minimumSizeHint() const
{
    const int bar = verticalScrollBar()->sizeHint().width();
    return {(widget() == nullptr ? 0 : widget()->minimumSizeHint().width()) + bar,
            QScrollArea::minimumSizeHint().height()};
}

bool ScrolledForm::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

QString wallFieldText(Micros wall)
{
    return wall == 0
               ? QString()
               : QDateTime::fromMSecsSinceEpoch(wall / 1000, Qt::UTC)
                     .toString(wall % kMicrosPerSecond == 0 ? QStringLiteral("yyyy-MM-dd hh:mm:ss")
                                                            : QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
}

QString reasonAgainstStart(const QString& text)
{
    const auto stamp = readStamp(text.trimmed().toStdString());
    // Either order will do: the window knows which one is meant.
    if (text.trimmed().isEmpty() ||
        (stamp && (wallClock(*stamp, DateOrder::DayMonth) || wallClock(*stamp, DateOrder::MonthDay))))
        return QString();
    return QStringLiteral("\"%1\" is no date and time; write yyyy-mm-dd hh:mm:ss.").arg(text.trimmed());
}

QString reasonAgainstTarget(const QString& text)
{
    return text.trimmed().isEmpty() ? QStringLiteral("A file name is missing.") : QString();
}

}  // namespace veltrac
