#include "converters/SCLFields.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QSpinBox>

#include "converters/ImportFields.h"
#include "converters/SCLObject.h"
#include "core/FileTime.h"
#include "share/HeaderText.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr int kMostSkippedLines = 1'000'000;

QString stepFieldText(double number)
{
    constexpr int kDigits = 10;
    return QString::number(number, 'g', kDigits);
}

}  // namespace

SCLFields::SCLFields(QWidget* parent)
    : QWidget(parent),
      m_start(new QLineEdit),
      m_step(new NumberField(QStringLiteral("1"))),
      m_frequency(new NumberField(QStringLiteral("1"))),
      m_skip(new QSpinBox),
      m_fill(fillBox()),
      m_target(new QLineEdit),
      m_description(new QLineEdit)
{
    m_start->setPlaceholderText(QStringLiteral("yyyy-mm-dd hh:mm:ss"));
    m_skip->setRange(0, kMostSkippedLines);
    m_skip->setKeyboardTracking(false);
    m_description->setMaxLength(kFileDescriptionBytes);
    for (NumberField* const field : {m_step, m_frequency})
        field->setCheck([](double number) {
            return isSampleTime(number) && isSampleTime(1.0 / number)
                       ? QString()
                       : QStringLiteral("This must be above 0.");
        });

    auto* const form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    m_startReason =
        addCheckedRow(form, "&Start", m_start,
                      "When the series begins, in local time; the first sample lies one step later.");
    addCheckedRow(form, "Sample &time [s]", m_step, "Seconds from value to value.");
    addCheckedRow(form, "Sampling &frequency [Hz]", m_frequency, "Values a second.");
    addRow(form, "S&kip first lines", m_skip, "Lines at the beginning of each file that are not looked at.");
    addRow(form, "&Missing become", m_fill, "What stands in the ts-file for a missing value.");
    m_targetReason =
        addCheckedRow(form, "Result &name", m_target, "The ts-file that is made in the working directory.");
    addRow(form, "D&escription", m_description, "The description of the ts-file, at most 59 bytes.");

    connect(m_step, &QLineEdit::textChanged, this, [this] { follow(*m_step, *m_frequency); });
    connect(m_frequency, &QLineEdit::textChanged, this, [this] { follow(*m_frequency, *m_step); });
    connect(m_skip, qOverload<int>(&QSpinBox::valueChanged), this,
            [this](int lines) { emit x_skip_changed(static_cast<std::uint64_t>(lines)); });
    const auto changed = [this] {
        if (!m_filling)
            emit x_changed();
    };
    connect(m_fill, qOverload<int>(&QComboBox::currentIndexChanged), this, changed);
    for (QLineEdit* const field : {m_start, m_target, m_description})
        connect(field, &QLineEdit::textChanged, this, changed);
}

// Sample time and frequency tell the same.
void SCLFields::follow(const NumberField& edited, NumberField& other)
{
    if (m_filling)
        return;
    if (edited.isValid()) {
        const QScopedValueRollback<bool> filling(m_filling, true);
        other.setText(stepFieldText(1.0 / edited.number()));
    }
    emit x_changed();
}

void SCLFields::showStart(const SCLObject& logs)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_start->setText(wallFieldText(logs.start));
}

void SCLFields::showStep(const SCLObject& logs)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_step->setText(stepFieldText(logs.step));
    m_frequency->setText(stepFieldText(1.0 / logs.step));
}

void SCLFields::showDescription(const SCLObject& logs)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_description->setText(QString::fromStdString(logs.description));
}

void SCLFields::showTarget(const QString& name)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_target->setText(name);
}

void SCLFields::read(SCLObject& logs) const
{
    const auto start = readStamp(m_start->text().trimmed().toStdString());
    const auto wall = start ? localWallClock(*start, DateOrder::DayMonth) : std::nullopt;
    if (wall || m_start->text().trimmed().isEmpty())
        logs.start = wall.value_or(0);
    if (m_frequency->isValid() && m_step->isValid())
        // 360 Hz is exact where 0.00277777778 s is not.
        logs.step = m_frequency->number() >= 1.0 ? 1.0 / m_frequency->number() : m_step->number();
    logs.fill = static_cast<STLFill>(chosenValue(m_fill));
    logs.description = m_description->text().toStdString();
}

QString SCLFields::target() const
{
    return m_target->text().trimmed();
}

bool SCLFields::validate(bool hasFiles)
{
    const QString start = reasonAgainstStart(m_start->text());
    const QString target = hasFiles ? reasonAgainstTarget(m_target->text()) : QString();
    showReason(m_start, m_startReason, start);
    showReason(m_target, m_targetReason, target);
    return start.isEmpty() && target.isEmpty() && m_step->isValid() && m_frequency->isValid();
}

}  // namespace veltrac
