#include "portal/HeaderFields.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>

#include <cmath>
#include <limits>

#include "core/TsHeader.h"
#include "portal/StartField.h"
#include "share/HeaderText.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr double kMostCount = 4294967295.0;

// The header keeps 32-bit numbers.
QString rangeReason(double number)
{
    return std::abs(number) > static_cast<double>(std::numeric_limits<float>::max())
               ? QStringLiteral("The header holds no number beyond 3.4e38.")
               : QString();
}

QString sizeText(std::uint64_t bytes)
{
    return QLocale::c().formattedDataSize(static_cast<qint64>(bytes));
}

void takeCount(NumberField& field, unsigned& known, unsigned now)
{
    const bool untouched = field.text() == QString::number(known);
    known = now;
    if (untouched)
        field.setText(QString::number(now));
}

}  // namespace

HeaderFields::HeaderFields(QWidget* parent)
    : QWidget(parent),
      m_description(new QLineEdit(this)),
      m_timeUnit(new QLineEdit(this)),
      m_sampleTime(new NumberField(QStringLiteral("1"), this)),
      m_startTime(new NumberField(QStringLiteral("0"), this)),
      m_startDate(new StartField(this)),
      m_samples(new NumberField(QStringLiteral("0"), this)),
      m_columns(new NumberField(QStringLiteral("0"), this)),
      m_line(new QLabel(this))
{
    m_description->setMaxLength(kFileDescriptionBytes);
    m_timeUnit->setMaxLength(kTimeUnitBytes);
    m_line->setWordWrap(true);
    m_line->setTextFormat(Qt::PlainText);
    addChecks();
    layOut();
    connect(m_startTime, &NumberField::x_validated, this, &HeaderFields::showStartDate);
    connect(m_startDate, &StartField::x_edited, this, &HeaderFields::takeStartDate);
}

void HeaderFields::setStartSeconds(std::uint32_t seconds)
{
    m_startSeconds = seconds;
    showStartDate();
}

void HeaderFields::showStartDate()
{
    if (m_startSeconds == 0)
        m_startDate->setTime(std::nullopt);
    else if (m_startTime->isValid())
        m_startDate->setTime(m_startSeconds + m_startTime->number());
}

void HeaderFields::takeStartDate(double seconds)
{
    const double whole = std::floor(seconds);
    m_startSeconds = static_cast<std::uint32_t>(whole);
    m_startTime->setText(QString::number(seconds - whole, 'g', 6));
    emit x_start_date_edited();
}

void HeaderFields::addChecks()
{
    // A sample time of 0 is told on OK, in a box.
    m_sampleTime->setCheck(rangeReason);
    m_startTime->setCheck(rangeReason);
    const auto whole = [](double number) {
        return number >= 0 && number <= kMostCount && number == std::floor(number);
    };
    const QString wholeReason = QStringLiteral("This must be a whole number, 0 or more.");
    m_samples->setCheck(
        [=, this](double n) { return whole(n) ? sizeReason(n, m_fileColumns) : wholeReason; });
    m_columns->setCheck(
        [=, this](double n) { return whole(n) ? sizeReason(m_fileSamples, n) : wholeReason; });
}

void HeaderFields::layOut()
{
    enum Side { kLeft, kRight, kBoth };
    struct Field
    {
        const char* label;
        QWidget* field;
        int row;
        Side place;
        const char* help;
    };
    const Field rows[] = {
        {"File &description:", m_description, 0, kBoth, "What the series is about, at most 59 characters."},
        {"Time &unit:", m_timeUnit, 1, kBoth,
         "What times are counted in, at most 39 characters, for example Time[s] or min."},
        {"Sample &time", m_sampleTime, 2, kLeft, "The time from one sample to the next, above 0."},
        {"Sta&rt time:", m_startTime, 3, kLeft,
         "The time at which the series starts; sample 1 lies one sample time after it."},
        {"Starts o&n:", m_startDate, 4, kBoth, ""},
        {"No of &samples:", m_samples, 2, kRight, "Another number rebuilds the file; new samples are 0."},
        {"Colu&mns:", m_columns, 3, kRight, "Another number rebuilds the file; new columns are 0."},
    };
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    for (const Field& row : rows) {
        auto* const label = new QLabel(QString::fromLatin1(row.label), this);
        label->setBuddy(row.field);
        row.field->setAccessibleName(label->text().remove(QLatin1Char('&')));
        if (*row.help != '\0') {
            row.field->setToolTip(QString::fromLatin1(row.help));
            row.field->setWhatsThis(row.field->toolTip());
        }
        const int column = row.place == kRight ? 2 : 0;
        grid->addWidget(label, row.row, column);
        grid->addWidget(row.field, row.row, column + 1, 1, row.place == kBoth ? 3 : 1);
    }
    grid->addWidget(m_line, 5, 0, 1, 4);
}

QString HeaderFields::sizeReason(double samples, double columns) const
{
    const std::uint64_t bytes =
        tsFileBytes(static_cast<std::uint32_t>(samples), static_cast<std::uint32_t>(columns));
    if (bytes < kFileLimit || (samples == m_fileSamples && columns == m_fileColumns))
        return QString();
    return QStringLiteral("The file would need %1; a ts-file holds less than 2 GiB.").arg(sizeText(bytes));
}

void HeaderFields::setCounts(unsigned samples, unsigned columns)
{
    takeCount(*m_samples, m_fileSamples, samples);
    takeCount(*m_columns, m_fileColumns, columns);
}

void HeaderFields::resetCounts()
{
    m_samples->setText(QString::number(m_fileSamples));
    m_columns->setText(QString::number(m_fileColumns));
}

bool HeaderFields::validate()
{
    for (const NumberField* const field : {m_sampleTime, m_startTime, m_samples, m_columns})
        if (!field->isValid()) {
            m_line->setText(field->accessibleName().remove(QLatin1Char(':')) + QStringLiteral(": ") +
                            field->reason());
            return false;
        }
    if (!m_startDate->reason().isEmpty()) {
        m_line->setText(m_startDate->reason());
        return false;
    }
    const std::uint64_t bytes = tsFileBytes(static_cast<std::uint32_t>(m_samples->number()),
                                            static_cast<std::uint32_t>(m_columns->number()));
    const QString size = QStringLiteral("The file with these counts has %1.").arg(sizeText(bytes));
    m_line->setText(m_kind.isEmpty() ? size : size + QStringLiteral("  A ") + m_kind + QLatin1Char('.'));
    return true;
}

}  // namespace veltrac
