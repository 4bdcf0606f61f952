#include "portal/StartField.h"

#include <QComboBox>
#include <QDateTime>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QSignalBlocker>

#include <cmath>
#include <cstdint>

#include "core/FileTime.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr double kMsInSecond = 1000.0;
constexpr char kClockHelp[] = "Whether the date is one of this machine's time zone or of UTC.";

// The header's 32-bit count of seconds, in which 0 stands for no date.
bool canBeStored(double seconds)
{
    return seconds >= 1.0 && seconds < static_cast<double>(UINT32_MAX) + 1.0;
}

QString timeText(double seconds, Qt::TimeSpec clock)
{
    const auto time =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(std::llround(seconds * kMsInSecond)), clock);
    return time.toString(time.time().msec() == 0 ? QStringLiteral("yyyy-MM-dd hh:mm:ss")
                                                 : QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
}

}  // namespace

StartField::StartField(QWidget* parent)
    : QWidget(parent), m_text(new QLineEdit(this)), m_clock(new QComboBox(this))
{
    m_text->setAccessibleName(QStringLiteral("Start as date and time"));
    m_text->setPlaceholderText(QStringLiteral("no date"));
    m_text->setToolTip(
        QStringLiteral("When the series starts, as 2016-05-17 13:45:30.250; sets the start time, too."));
    m_text->setWhatsThis(m_text->toolTip());
    m_clock->addItem(QStringLiteral("local time"), Qt::LocalTime);
    m_clock->addItem(QStringLiteral("UTC"), Qt::UTC);
    m_clock->setAccessibleName(QStringLiteral("Clock of the start"));
    m_clock->setToolTip(QString::fromLatin1(kClockHelp));
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_clock);
    setFocusProxy(m_text);
    connect(m_text, &QLineEdit::textChanged, this, &StartField::read);
    connect(m_clock, qOverload<int>(&QComboBox::currentIndexChanged), this, &StartField::show);
}

void StartField::setTime(std::optional<double> seconds)
{
    // What the user is typing stays as he writes it while it means this time.
    const bool isSame = m_time && seconds && std::abs(*m_time - *seconds) < 0.5 / kMsInSecond;
    m_time = seconds;
    if (!isSame)
        show();
}

void StartField::show()
{
    const QSignalBlocker quiet(m_text);
    m_text->setText(m_time ? timeText(*m_time, m_clock->currentData().value<Qt::TimeSpec>()) : QString());
    m_reason.clear();
    markField(*m_text, true);
    emit x_validated();
}

std::optional<double> StartField::meant(const QString& written)
{
    // A day alone begins at midnight.
    const auto isDate = [](const std::optional<SeriesPlace>& place) {
        return place &&
               (place->kind == SeriesPlace::Kind::Calendar || place->kind == SeriesPlace::Kind::Instant);
    };
    auto place = parsePlace(written.toStdString());
    if (!isDate(place))
        place = parsePlace(written.toStdString() + " 00:00");
    if (!isDate(place)) {
        m_reason = QStringLiteral("Write the date as 2016-05-17 13:45:30.");
        return std::nullopt;
    }
    MeantMoment moment{place->number};
    if (m_clock->currentData().value<Qt::TimeSpec>() == Qt::LocalTime)
        moment = momentOf(*place, 0.0, true);
    m_clock->setToolTip(moment.note.empty() ? QString::fromLatin1(kClockHelp)
                                            : QString::fromStdString(moment.note));
    if (!canBeStored(moment.seconds))
        m_reason = QStringLiteral("The header holds dates from 1970 to 2106.");
    return moment.seconds;
}

void StartField::read(const QString& text)
{
    const QString written = text.trimmed();
    m_reason.clear();
    std::optional<double> seconds;
    if (!written.isEmpty())
        seconds = meant(written);
    else if (m_time)
        m_reason = QStringLiteral("A date that was set cannot be taken away.");
    markField(*m_text, m_reason.isEmpty());
    if (seconds && m_reason.isEmpty()) {
        m_time = seconds;
        emit x_edited(*seconds);
    }
    emit x_validated();
}

}  // namespace veltrac
