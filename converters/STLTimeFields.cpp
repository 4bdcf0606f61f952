#include "converters/STLTimeFields.h"

#include <QComboBox>
#include <QDateTime>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>

#include "converters/ImportTexts.h"
#include "core/FileTime.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr int kTypedStepDigits = 12;

}  // namespace

STLTimeFields::STLTimeFields(QWidget* parent)
    : ScrolledForm(parent),
      m_source(choiceBox({{"Start and step below", static_cast<int>(STLTimeSource::Typed)},
                          {"A column of dates or stamps", static_cast<int>(STLTimeSource::Stamp)},
                          {"A date and a time column", static_cast<int>(STLTimeSource::DateAndTime)},
                          {"Columns of year, month, day, …", static_cast<int>(STLTimeSource::DateParts)},
                          {"A column of decimal years", static_cast<int>(STLTimeSource::DecimalYears)},
                          {"A column of spreadsheet days", static_cast<int>(STLTimeSource::SerialDays)},
                          {"Elapsed hours:minutes:seconds", static_cast<int>(STLTimeSource::ElapsedTime)},
                          {"Elapsed seconds", static_cast<int>(STLTimeSource::ElapsedSeconds)},
                          {"Unix seconds", static_cast<int>(STLTimeSource::UnixSeconds)},
                          {"Unix milliseconds", static_cast<int>(STLTimeSource::UnixMilliseconds)},
                          {"Unix microseconds", static_cast<int>(STLTimeSource::UnixMicroseconds)},
                          {"Unix nanoseconds", static_cast<int>(STLTimeSource::UnixNanoseconds)}})),
      m_dateColumn(choiceBox({})),
      m_timeColumn(choiceBox({})),
      m_order(choiceBox({{"day before month", static_cast<int>(DateOrder::DayMonth)},
                         {"month before day", static_cast<int>(DateOrder::MonthDay)}})),
      m_zone(choiceBox({{"local time", 0}, {"UTC", 1}})),
      m_start(new QLineEdit),
      m_step(new NumberField),
      m_becomes(
          choiceBox({{"what the steps say", -1},
                     {"a constant sample time", static_cast<int>(STLTimeResult::Constant)},
                     {"a column \"Time\"", static_cast<int>(STLTimeResult::TimeColumn)},
                     {"\"Time\" with \"Time32\"", static_cast<int>(STLTimeResult::TimeTwoColumns)},
                     {"equal steps, values interpolated", static_cast<int>(STLTimeResult::Resampled)}})),
      m_resampleStep(new QLineEdit),
      m_finding(wrappedLabel())
{
    m_start->setPlaceholderText(QStringLiteral("yyyy-mm-dd hh:mm:ss"));
    m_resampleStep->setPlaceholderText(QStringLiteral("the typical step"));
    m_step->setCheck([](double number) {
        return isSampleTime(number) ? QString() : QStringLiteral("This must be above 0.");
    });
    setForm(buildForm());

    const auto changed = [this] {
        if (!m_filling)
            emit x_changed();
    };
    for (QComboBox* const box : {m_source, m_dateColumn, m_timeColumn, m_order, m_zone, m_becomes})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, changed);
    for (QLineEdit* const field : {m_start, static_cast<QLineEdit*>(m_step), m_resampleStep})
        connect(field, &QLineEdit::textChanged, this, changed);
}

QLayout* STLTimeFields::buildForm()
{
    auto* const form = new QFormLayout;
    addRow(form, "&From", m_source, "Where the time of a row comes from.");
    addRow(form, "&Date column", m_dateColumn, "The column of dates.");
    addRow(form, "Time colu&mn", m_timeColumn, "The column of stamps, times or seconds.");
    m_orderReason = warningLabel();
    addRow(form, "Ord&er", m_order, "How 3/4/2016 is meant.", m_orderReason);
    addRow(form, "&Zone", m_zone, "The zone of stamps that name none.");
    m_startReason = addCheckedRow(form, "&Start", m_start,
                                  "When the series begins; the first sample lies one step later.");
    addCheckedRow(form, "Ste&p [s]", m_step, "Seconds from row to row.");
    addRow(form, "&Becomes", m_becomes,
           "How the ts-file tells the time. \"Time32\" keeps the whole seconds apart, for long series with "
           "short steps. Equal steps: values are interpolated, gaps are missing.");
    m_resampleReason =
        addCheckedRow(form, "E&qual step [s]", m_resampleStep, "The step of the interpolated series.");
    form->addRow(m_finding);
    return form;
}

void STLTimeFields::show(const STLFormat& format)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    for (QComboBox* const box : {m_dateColumn, m_timeColumn}) {
        box->clear();
        for (std::size_t c = 0; c < format.columns.size(); ++c)
            box->addItem(format.columns[c].name.empty() ? QStringLiteral("Column %1").arg(c + 1)
                                                        : QString::fromStdString(format.columns[c].name),
                         static_cast<int>(c));
    }
    chooseValue(m_source, static_cast<int>(format.timeSource));
    chooseValue(m_dateColumn, format.dateColumn);
    chooseValue(m_timeColumn, format.timeColumn);
    chooseValue(m_order, static_cast<int>(format.order));
    chooseValue(m_zone, format.greenwich ? 1 : 0);
    m_start->setText(wallFieldText(format.typedStart));
    m_step->setText(QString::number(format.typedStep, 'g', kTypedStepDigits));
    chooseValue(m_becomes, format.timeResult ? static_cast<int>(*format.timeResult) : -1);
}

void STLTimeFields::showOrder(DateOrder order, const QString& doubt)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_order->setCurrentIndex(m_order->findData(static_cast<int>(order)));
    showText(m_orderReason, doubt);
}

void STLTimeFields::showFinding(const QString& text)
{
    m_finding->setText(text);
}

// A box that is not used names no column.
void STLTimeFields::enableColumn(QComboBox* box, bool used)
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    box->setEnabled(used);
    if (used == (box->currentIndex() < 0))
        box->setCurrentIndex(used ? 0 : -1);
}

void STLTimeFields::enable(bool open)
{
    const auto source = static_cast<STLTimeSource>(chosenValue(m_source));
    const bool typed = source == STLTimeSource::Typed;
    enableColumn(m_dateColumn, open && source == STLTimeSource::DateAndTime);
    enableColumn(m_timeColumn, open && !typed);
    m_order->setEnabled(open && (source == STLTimeSource::Stamp || source == STLTimeSource::DateAndTime));
    m_zone->setEnabled(open && !timesAreUnix(source));
    m_start->setEnabled(open && (typed || timesAreElapsed(source)));
    m_step->setEnabled(open && typed);
    m_resampleStep->setEnabled(open && chosenValue(m_becomes) == static_cast<int>(STLTimeResult::Resampled));
}

void STLTimeFields::read(STLFormat& format) const
{
    format.timeSource = static_cast<STLTimeSource>(chosenValue(m_source));
    format.timeColumn = format.timeSource == STLTimeSource::Typed ? -1 : chosenValue(m_timeColumn);
    format.dateColumn = format.timeSource == STLTimeSource::DateAndTime ? chosenValue(m_dateColumn) : -1;
    const auto order = static_cast<DateOrder>(chosenValue(m_order));
    if (order != format.order)
        format.orderInDoubt = false;
    format.order = order;
    format.greenwich = chosenValue(m_zone) == 1;
    readStart(format);
    if (m_step->isValid() && m_step->number() > 0)
        format.typedStep = m_step->number();
    const int becomes = chosenValue(m_becomes);
    format.timeResult.reset();
    if (becomes >= 0)
        format.timeResult = static_cast<STLTimeResult>(becomes);
    format.resampleStep = numberOf(m_resampleStep->text()).value_or(0.0);
}

void STLTimeFields::readStart(STLFormat& format) const
{
    const auto start = readStamp(m_start->text().trimmed().toStdString());
    const auto wall = !start             ? std::nullopt
                      : format.greenwich ? wallClock(*start, format.order)
                                         : localWallClock(*start, format.order);
    if (wall || m_start->text().trimmed().isEmpty())
        format.typedStart = wall.value_or(0);
}

bool STLTimeFields::validate()
{
    const QString start = reasonAgainstStart(m_start->text());
    const QString equal =
        m_resampleStep->text().trimmed().isEmpty() || numberOf(m_resampleStep->text()).value_or(0.0) > 0
            ? QString()
            : QStringLiteral("\"%1\" is no number above 0.").arg(m_resampleStep->text());
    showReason(m_start, m_startReason, start);
    showReason(m_resampleStep, m_resampleReason, equal);
    return start.isEmpty() && (equal.isEmpty() || !m_resampleStep->isEnabled()) &&
           (m_step->isValid() || !m_step->isEnabled());
}

}  // namespace veltrac
