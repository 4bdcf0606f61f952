#include "share/PlotReadout.h"

#include <QDateTime>
#include <QStringList>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

#include "core/TsExceptions.h"
#include "share/AxisTicks.h"
#include "share/PlotVariables.h"

namespace veltrac {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr int kFloatDigits = 7;
constexpr int kTimeDigits = 12;

QString label(const HsVariable& v)
{
    return QString::fromStdString(v.variable().label);
}

// As many decimals as tell neighbouring samples apart: the 32-bit dt behind them has no more to say. Nothing
// where the step is not known.
std::optional<int> decimalsOf(const Plot2D& plot)
{
    constexpr int kMostDecimals = 12;
    const auto ref = plot.reference();
    double step = 1.0;
    try {
        if (ref && plot.axis().mode != XMode::Sample)
            step = ref->variable().source()->step();
    } catch (const TS::Failure&) {
        return std::nullopt;
    }
    if (!(step > 0.0))
        return std::nullopt;
    // A step of 0.01 is a little less as a float.
    constexpr double kFloatSlack = 1e-6;
    return std::clamp(2 - static_cast<int>(std::floor(std::log10(step) + kFloatSlack)), 0, kMostDecimals);
}

QString withoutTrailingZeros(QString number)
{
    if (number.contains(QLatin1Char('.'))) {
        while (number.endsWith(QLatin1Char('0')))
            number.chop(1);
        if (number.endsWith(QLatin1Char('.')))
            number.chop(1);
    }
    return number;
}

QString numberText(const Plot2D& plot, double x)
{
    const std::optional<int> decimals = decimalsOf(plot);
    if (!decimals || std::abs(x) >= 1e15)
        return QString::number(x, 'g', kTimeDigits);
    // Behind its seventh digit a multiple of a 32-bit dt is noise: 300 s and not 300.00001 s. Neighbours are
    // told apart all the same.
    const int told =
        x == 0.0 ? *decimals : kFloatDigits - 1 - static_cast<int>(std::floor(std::log10(std::abs(x))));
    const int used = std::clamp(told, std::max(0, *decimals - 2), *decimals);
    // Nobody counts the zeros of 0.00000144477.
    constexpr double kSmall = 1e-4;
    if (x != 0.0 && std::abs(x) < kSmall)
        return QString::number(x, 'g',
                               std::max(1, used + 1 + static_cast<int>(std::floor(std::log10(std::abs(x))))));
    const QString text = withoutTrailingZeros(QString::number(x, 'f', used));
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QString clockText(const Plot2D& plot, double x)
{
    // What a double holds of the seconds of our days.
    constexpr int kMostDecimals = 6;
    const int decimals = std::min(decimalsOf(plot).value_or(kMostDecimals), kMostDecimals);
    const double unit = std::pow(10.0, -decimals);
    const double seconds = std::round((x + plot.axis().origin) / unit) * unit;
    // What a date cannot hold is told as a number.
    if (!(std::abs(seconds) < 1e14))
        return QString::number(seconds);
    const double whole = std::floor(seconds + unit / 2.0);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(whole));
    const QString fraction =
        withoutTrailingZeros(QString::number(std::max(0.0, seconds - whole), 'f', decimals));
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + fraction.mid(1);
}

// "73 d 06:00:00"
QString durationText(double seconds)
{
    constexpr qint64 kMinute = 60, kHour = 3600, kDay = 86400;
    const auto whole = static_cast<qint64>(std::llround(seconds));
    const QString time = QStringLiteral("%1:%2:%3")
                             .arg(whole % kDay / kHour, 2, 10, QLatin1Char('0'))
                             .arg(whole % kHour / kMinute, 2, 10, QLatin1Char('0'))
                             .arg(whole % kMinute, 2, 10, QLatin1Char('0'));
    return whole < kDay ? time : QStringLiteral("%1 d ").arg(whole / kDay) + time;
}

}  // namespace

QString valueText(double value)
{
    if (std::isnan(value))
        return QStringLiteral("missing");
    // What a 32-bit float holds needs seven digits as a rule and nine at most; sums of them are not told
    // finer.
    const auto single = static_cast<float>(value);
    QString text = QString::number(value, 'g', kFloatDigits);
    constexpr int kMostFloatDigits = 9;
    if (static_cast<double>(single) == value)
        for (int digits = kFloatDigits + 1; digits <= kMostFloatDigits && text.toFloat() != single; ++digits)
            text = QString::number(value, 'g', digits);
    return text;
}

QString valueWithUnit(const HsVariable& variable, double value)
{
    const QString unit = QString::fromStdString(variable.variable().unit);
    return std::isnan(value) || unit.isEmpty() ? valueText(value)
                                               : valueText(value) + QLatin1Char(' ') + unit;
}

QString xUnit(const Plot2D& plot)
{
    const std::string_view unit = unitIn(plot.xTitle);
    if (!unit.empty())
        return QString::fromStdString(std::string(unit));
    // "Real part" is a number.
    return plot.xTitle.empty() || plot.xTitle.starts_with("Time") ? QStringLiteral("s") : QString();
}

QString xText(const Plot2D& plot, double x)
{
    switch (plot.axis().mode) {
        case XMode::Sample:
            return QStringLiteral("sample ") + numberText(plot, x);
        case XMode::Clock:
            return clockText(plot, x);
        case XMode::Elapsed:
            break;
    }
    return (numberText(plot, x) + QLatin1Char(' ') + xUnit(plot)).trimmed();
}

QString distanceText(const Plot2D& plot, double dx)
{
    if (plot.axis().mode == XMode::Sample)
        return numberText(plot, dx) + QStringLiteral(" samples");
    const QString text = (numberText(plot, dx) + QLatin1Char(' ') + xUnit(plot)).trimmed();
    constexpr double kMinute = 60.0;
    // Between dates nobody counts in seconds alone.
    return plot.axis().mode == XMode::Clock && std::abs(dx) >= kMinute && std::abs(dx) < 1e14
               ? text + QStringLiteral(" (%1)").arg(durationText(std::abs(dx)))
               : text;
}

QString inverseText(const Plot2D& plot, double dx)
{
    if (dx == 0.0 || plot.axis().mode == XMode::Sample)
        return QStringLiteral("–");
    const QString unit = xUnit(plot);
    const QString inverse = unit == QLatin1String("s")    ? QStringLiteral("Hz")
                            : unit == QLatin1String("Hz") ? QStringLiteral("s")
                                                          : QStringLiteral("1/") + unit;
    return QStringLiteral("%1 %2").arg(1.0 / std::abs(dx), 0, 'g', kFloatDigits).arg(inverse);
}

namespace {

// What somebody would have written that stands behind a 32-bit value: 1.69, not 1.690000057220459.
double asWritten(double value)
{
    const auto single = static_cast<float>(value);
    if (static_cast<double>(single) != value)
        return value;  // scaled, or no number
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), single);
    double written = value;
    if (error == std::errc())
        std::from_chars(text.data(), end, written);
    return written;
}

}  // namespace

QString differenceText(double from, double to)
{
    return valueText(asWritten(to) - asWritten(from));
}

QString plotDescription(const Plot2D& plot)
{
    QStringList parts;
    for (const Group& group : plot.groups())
        if (group.hasVisible())
            parts.append(QStringLiteral("%1, %2 to %3, %4 to %5")
                             .arg(QString::fromStdString(group.axisTitle()), xText(plot, plot.x1()),
                                  xText(plot, plot.x2()), valueText(group.y1()), valueText(group.y2())));
    return parts.join(QStringLiteral("; "));
}

double valueAt(const Plot2D& plot, const HsVariable& variable, double x)
{
    const Variable& v = variable.variable();
    try {
        const std::uint32_t row = plot.axis().rowAt(v, x);
        if (row == 0 || (row == v.rows() && x > plot.axis().xOf(v, row) + v.source()->step()))
            return kNan;
        return v.value(row);
    } catch (const TS::Failure&) {
        return kNan;
    }
}

Readout readoutAt(const Plot2D& plot, double x)
{
    Readout rows;
    const double at = plot.snapped(x);
    const auto ref = plot.reference();
    if (ref) {
        const std::uint32_t row = plot.axis().nearestRow(ref->variable(), at);
        rows.append({QStringLiteral("Sample"), QString::number(ref->variable().source()->sampleOf(row))});
    }
    if (plot.axis().mode != XMode::Sample) {
        const QString title = QString::fromStdString(plot.xTitle);
        const bool isTime = title.isEmpty() || title.startsWith(QLatin1String("Time"));
        rows.append({isTime ? QStringLiteral("Time") : title.section(QLatin1Char('['), 0, 0).trimmed(),
                     xText(plot, at)});
    }
    for (const auto& v : plot.variables())
        if (v->variable().visible && !v->variable().isMark)
            rows.append({label(*v), valueWithUnit(*v, valueAt(plot, *v, at))});
    return rows;
}

QString readoutTable(const Readout& rows)
{
    QString html = QStringLiteral("<table  BGCOLOR=#ffffe0>");
    for (const auto& row : rows)
        html += QStringLiteral("<tr><td><b>%1</b></td><td>=</td><td>%2</td></tr>\n")
                    .arg(row.first.toHtmlEscaped(), row.second.toHtmlEscaped());
    return html + QStringLiteral("</table>");
}

QVector<IntervalRow> intervalRows(const Plot2D& plot)
{
    QVector<IntervalRow> rows;
    const Plot2D::Extent interval = plot.interval();
    for (const auto& h : plot.variables()) {
        const Variable& v = h->variable();
        if (!v.visible || v.isMark || !h->isBuilt() || !h->failure().empty() || v.rows() == 0)
            continue;
        IntervalRow row;
        row.variable = h;
        const auto& a = plot.cursor(Plot2D::A);
        const auto& b = plot.cursor(Plot2D::B);
        row.atA = a ? valueAt(plot, *h, *a) : kNan;
        row.atB = b ? valueAt(plot, *h, *b) : kNan;
        try {
            const std::uint32_t first = plot.axis().rowFrom(v, interval.x1);
            const std::uint32_t last = plot.axis().rowAt(v, interval.x2);
            row.statistics = h->statistics(first, last);
        } catch (const TS::Failure&) {
            continue;
        }
        rows.append(row);
    }
    return rows;
}

const QStringList& intervalHeadings()
{
    static const QStringList headings = {
        QStringLiteral("Variable"),  QStringLiteral("Unit"),   QStringLiteral("At A"),
        QStringLiteral("At B"),      QStringLiteral("B − A"),  QStringLiteral("Least"),
        QStringLiteral("Greatest"),  QStringLiteral("Mean"),   QStringLiteral("RMS"),
        QStringLiteral("Std. dev."), QStringLiteral("Missing")};
    return headings;
}

namespace {

// Levels are logarithms, and the points of a curve in memory (a filter's characteristic) stand at unequal
// distances: a mean over either says nothing.
bool hasMeans(const Variable& variable)
{
    return !QString::fromStdString(variable.unit).startsWith(QLatin1String("dB")) &&
           variable.source()->isEvenlySpaced();
}

}  // namespace

QStringList intervalFields(const Plot2D& plot, const IntervalRow& row)
{
    const auto atCursor = [&](Plot2D::Cursor which, double value) {
        return plot.cursor(which) ? valueText(value) : QString();
    };
    const HsVariable::Statistics& s = row.statistics;
    const auto ofValues = [&](double value) { return s.count == 0 ? QStringLiteral("–") : valueText(value); };
    const auto ofMeans = [&, means = hasMeans(row.variable->variable())](double value) {
        return means ? ofValues(value) : QString();
    };
    const bool both = plot.cursor(Plot2D::A) && plot.cursor(Plot2D::B);
    return {label(*row.variable),
            QString::fromStdString(row.variable->variable().unit),
            atCursor(Plot2D::A, row.atA),
            atCursor(Plot2D::B, row.atB),
            both ? differenceText(row.atA, row.atB) : QString(),
            ofValues(s.least),
            ofValues(s.greatest),
            ofMeans(s.mean),
            ofMeans(s.rms),
            ofMeans(s.deviation),
            QString::number(s.missing)};
}

QString cursorText(const Plot2D& plot)
{
    const auto& a = plot.cursor(Plot2D::A);
    const auto& b = plot.cursor(Plot2D::B);
    QStringList parts;
    if (a)
        parts.append(QStringLiteral("A: ") + xText(plot, *a));
    if (b)
        parts.append(QStringLiteral("B: ") + xText(plot, *b));
    if (a && b) {
        parts.append(QStringLiteral("Δt: ") + distanceText(plot, *b - *a));
        parts.append(QStringLiteral("1/Δt: ") + inverseText(plot, *b - *a));
    }
    return parts.join(QStringLiteral("     "));
}

QString intervalText(const Plot2D& plot)
{
    QString text;
    for (const Plot2D::Cursor which : {Plot2D::A, Plot2D::B})
        if (plot.cursor(which))
            text += QStringLiteral("%1\t%2\n")
                        .arg(which == Plot2D::A ? QLatin1String("A") : QLatin1String("B"))
                        .arg(xText(plot, *plot.cursor(which)));
    if (plot.cursor(Plot2D::A) && plot.cursor(Plot2D::B)) {
        const double dx = *plot.cursor(Plot2D::B) - *plot.cursor(Plot2D::A);
        text += QStringLiteral("Δt\t%1\n1/Δt\t%2\n").arg(distanceText(plot, dx), inverseText(plot, dx));
    }
    text += intervalHeadings().join(QLatin1Char('\t')) + QLatin1Char('\n');
    for (const IntervalRow& row : intervalRows(plot))
        text += intervalFields(plot, row).join(QLatin1Char('\t')) + QLatin1Char('\n');
    return text;
}

}  // namespace veltrac
