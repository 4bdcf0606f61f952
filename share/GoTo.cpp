#include "share/GoTo.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "core/ColumnCopy.h"
#include "core/TSFILE.h"
#include "core/TimeUnits.h"
#include "core/Variable.h"
#include "share/HeaderText.h"
#include "share/NumberField.h"

namespace veltrac {

namespace {

constexpr double kDay = 86400.0;
constexpr double kSurelyCalendar = 1e8;  // seconds; no series was measured for so long from zero

// 0 where it is no unit of time.
double secondsIn(const QString& unit)
{
    return secondsOfUnit(unit.toLower().toUtf8().constData());
}

std::optional<GoToTarget> parseTimeOfDay(const QString& text)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(\\d{1,2}):([0-5]\\d)(?::([0-5]\\d(?:[.,]\\d*)?))?$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch() || match.captured(1).toInt() > 23)
        return std::nullopt;
    const double seconds = match.captured(3).isEmpty() ? 0.0 : numberOf(match.captured(3)).value_or(0.0);
    return GoToTarget{GoToTarget::Kind::TimeOfDay,
                      match.captured(1).toInt() * 3600.0 + match.captured(2).toInt() * 60.0 + seconds,
                      QString()};
}

std::optional<GoToTarget> parseElapsed(const QString& text)
{
    static const QRegularExpression pattern(
        QStringLiteral("^([+-]?[\\d.,]+(?:[eE][+-]?\\d+)?)\\s*([^\\d\\s.,:+-].*)$"));
    const QRegularExpressionMatch match = pattern.match(text);
    const std::optional<double> number = match.hasMatch() ? numberOf(match.captured(1)) : std::nullopt;
    if (!number)
        return std::nullopt;
    const QString unit = match.captured(2).trimmed();
    const double seconds = secondsIn(unit);
    if (seconds > 0.0)
        return GoToTarget{GoToTarget::Kind::Elapsed, *number * seconds, QString()};
    return GoToTarget{GoToTarget::Kind::Elapsed, *number, unit};
}

std::uint32_t rowOfSample(TSFILE& file, std::uint64_t sample)
{
    const std::uint32_t samples = file.samples();
    return file.ringStart() == 0 ? static_cast<std::uint32_t>(sample)
                                 : static_cast<std::uint32_t>((sample - 1) % samples + 1);
}

struct Span
{
    std::uint64_t first;
    std::uint64_t last;
};

// The samples that the file holds, by their own numbers.
Span samplesHeld(TSFILE& file)
{
    if (file.ringStart() == 0)
        return {1, file.samples()};
    const std::uint64_t first = file.ringStart();
    return {first, std::max<std::uint64_t>(first, file.lastSample())};
}

double elapsedOfSample(TSFILE& file, std::uint64_t sample)
{
    if (file.timeColumn() == 0)
        return static_cast<double>(sample) * static_cast<double>(file.dt());
    const std::uint32_t row = rowOfSample(file, sample);
    double time = file.value(row, file.timeColumn());
    if (file.time32Column() != 0) {
        const float bits = file.value(row, file.time32Column());
        std::uint32_t whole = 0;
        std::memcpy(&whole, &bits, sizeof whole);
        time += whole;
    }
    return time;
}

// The last sample at or before a time; times run forward.
std::uint64_t bisect(TSFILE& file, Span held, double elapsed)
{
    std::uint64_t low = held.first;
    std::uint64_t high = held.last;
    while (low < high) {
        const std::uint64_t middle = low + (high - low + 1) / 2;
        if (elapsedOfSample(file, middle) <= elapsed)
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

std::optional<std::uint32_t> rowAtTime(TSFILE& file, double elapsed, QString& reason)
{
    const Span held = samplesHeld(file);
    const double dt = file.dt();
    if (file.timeColumn() == 0 && !(dt > 0.0)) {
        reason = QStringLiteral("The file has no sample time.");
        return std::nullopt;
    }
    // A first sample at dt makes "0 s" mean that sample.
    const double slack = dt > 0.0 ? dt : 0.0;
    if (!(elapsed >= elapsedOfSample(file, held.first) - slack &&
          elapsed <= elapsedOfSample(file, held.last) + slack)) {
        reason = QStringLiteral("That time lies outside of the file.");
        return std::nullopt;
    }
    if (file.timeColumn() != 0)
        return rowOfSample(file, bisect(file, held, elapsed));
    const double sample =
        std::clamp(std::round(elapsed / dt), static_cast<double>(held.first), static_cast<double>(held.last));
    return rowOfSample(file, static_cast<std::uint64_t>(sample));
}

std::optional<std::uint32_t> rowOfNumber(TSFILE& file, double number, QString& reason)
{
    if (number >= 1.0 && number <= file.samples())
        return static_cast<std::uint32_t>(number);
    reason = QStringLiteral("The samples run from 1 to %1.").arg(file.samples());
    return std::nullopt;
}

std::optional<std::uint32_t> rowAtPercent(TSFILE& file, double percent, QString& reason)
{
    if (!(percent >= 0.0 && percent <= 100.0)) {
        reason = QStringLiteral("A share lies between 0% and 100%.");
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(1 + std::llround((file.samples() - 1.0) * percent / 100.0));
}

}  // namespace

std::optional<GoToTarget> parseGoTo(const QString& typed)
{
    QString text = typed.trimmed();
    if (std::optional<GoToTarget> time = parseTimeOfDay(text))
        return time;
    if (text.endsWith(QLatin1Char('%'))) {
        text.chop(1);
        const std::optional<double> share = numberOf(text);
        return share ? std::optional(GoToTarget{GoToTarget::Kind::Percent, *share, QString()}) : std::nullopt;
    }
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    const QString digits = QString(text).remove(blanks);
    bool isNumber = false;
    const qulonglong sample = digits.toULongLong(&isNumber);
    if (isNumber)
        return GoToTarget{GoToTarget::Kind::Sample, static_cast<double>(sample), QString()};
    return parseElapsed(text);
}

double momentOf(const GoToTarget& timeOfDay, double start)
{
    if (start < kDay)
        return start + timeOfDay.number;
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(std::floor(start * 1000.0)));
    const QTime time = QTime::fromMSecsSinceStartOfDay(static_cast<int>(timeOfDay.number * 1000.0));
    const auto seconds = [&](const QDate& day) {
        return static_cast<double>(QDateTime(day, time).toMSecsSinceEpoch()) / 1000.0;
    };
    const double today = seconds(moment.date());
    return today >= start ? today : seconds(moment.date().addDays(1));
}

QString bareTimeUnit(const QString& unit)
{
    const std::string text = unit.toStdString();
    const std::string_view inner = unitIn(text);
    const QString bare =
        inner.empty() ? unit.trimmed() : QString::fromStdString(std::string(inner)).trimmed();
    return bare.isEmpty() ? QStringLiteral("s") : bare;
}

double secondsInTimeUnit(const QString& unit)
{
    const double seconds = secondsIn(bareTimeUnit(unit));
    return seconds > 0.0 ? seconds : 1.0;
}

double startOf(TSFILE& file)
{
    return static_cast<double>(file.startSeconds()) + static_cast<double>(file.startTime());
}

bool hasCalendar(TSFILE& file)
{
    if (file.startSeconds() != 0)
        return true;
    if (file.timeColumn() == 0 || file.samples() == 0)
        return false;
    const double unit = secondsInTimeUnit(headerText(file.timeUnit()));
    return std::abs(elapsedTime(file, 1)) * unit > kSurelyCalendar ||
           std::abs(elapsedTime(file, file.samples())) * unit > kSurelyCalendar;
}

std::uint32_t sampleInRow(TSFILE& file, std::uint32_t row)
{
    const std::uint32_t oldest = file.ringStart();
    const std::uint32_t samples = file.samples();
    if (oldest == 0 || samples == 0)
        return row;
    const std::uint32_t first = oldestRow(file);
    return row >= first ? oldest + (row - first) : oldest + (samples - first) + row;
}

double elapsedTime(TSFILE& file, std::uint32_t row)
{
    return elapsedOfSample(file, sampleInRow(file, row));
}

std::optional<std::uint32_t> goToRow(const QString& text, TSFILE& file, QString& reason)
{
    reason.clear();
    const std::optional<GoToTarget> target = parseGoTo(text);
    if (file.samples() == 0) {
        reason = QStringLiteral("The file has no samples.");
        return std::nullopt;
    }
    const QString unit = bareTimeUnit(headerText(file.timeUnit()));
    if (!target ||
        (!target->fileUnit.isEmpty() && target->fileUnit.compare(unit, Qt::CaseInsensitive) != 0)) {
        reason = QStringLiteral("Type a sample (250000), a time (12.5 s or 13:45:30) or a share (50%).");
        return std::nullopt;
    }
    const double unitSeconds = target->fileUnit.isEmpty() ? secondsInTimeUnit(unit) : 1.0;
    switch (target->kind) {
        case GoToTarget::Kind::Sample:
            return rowOfNumber(file, target->number, reason);
        case GoToTarget::Kind::Percent:
            return rowAtPercent(file, target->number, reason);
        case GoToTarget::Kind::Elapsed:
            return rowAtTime(file, target->number / unitSeconds, reason);
        case GoToTarget::Kind::TimeOfDay:
            return rowAtTime(file, (momentOf(*target, startOf(file)) - startOf(file)) / unitSeconds, reason);
    }
    return std::nullopt;
}

}  // namespace veltrac
