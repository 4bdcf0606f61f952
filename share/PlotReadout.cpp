#include "share/PlotReadout.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "core/NumberTexts.h"
#include "core/TsExceptions.h"
#include "core/WallClock.h"
#include "share/AxisTicks.h"
#include "share/PlotVariables.h"

namespace veltrac {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr int kFloatDigits = 7;
constexpr int kTimeDigits = 12;
constexpr double kMostClockSeconds = 2e11;  // some 6,000 years

// As many decimals as tell neighbouring samples apart: the 32-bit dt behind them has no more to say. Nothing
// where the step is not known.
std::optional<int> decimalsOf(const Plot2D& plot)
{
    constexpr int kMostDecimals = 12;
    const auto ref = plot.reference();
    double step = 1.0;
    try {
        if (ref)
            step = plot.axis().stepOf(ref->variable());
    } catch (const TS::Failure&) {
        return std::nullopt;
    }
    if (!(step > 0.0))
        return std::nullopt;
    // A step of 0.01 is a little less as a float.
    constexpr double kFloatSlack = 1e-6;
    return std::clamp(2 - static_cast<int>(std::floor(std::log10(step) + kFloatSlack)), 0, kMostDecimals);
}

std::string withoutTrailingZeros(std::string number)
{
    if (number.find('.') != std::string::npos) {
        number.erase(number.find_last_not_of('0') + 1);
        if (number.back() == '.')
            number.pop_back();
    }
    return number;
}

// The place of a number's first digit before the point: 2 of 123, -1 of 0.5.
int decadeOf(double number)
{
    return static_cast<int>(std::floor(std::log10(std::abs(number))));
}

std::string numberText(const Plot2D& plot, double x)
{
    const std::optional<int> decimals = decimalsOf(plot);
    if (!decimals || std::abs(x) >= 1e15)
        return generalNumber(x, kTimeDigits);
    // Behind its seventh digit a multiple of a 32-bit dt is noise: 300 s and not 300.00001 s. Neighbours are
    // told apart all the same.
    const int told = x == 0.0 ? *decimals : kFloatDigits - 1 - decadeOf(x);
    const int used = std::clamp(told, std::max(0, *decimals - 2), *decimals);
    // Nobody counts the zeros of 0.00000144477.
    constexpr double kSmall = 1e-4;
    if (x != 0.0 && std::abs(x) < kSmall)
        return generalNumber(x, std::max(1, used + 1 + decadeOf(x)));
    std::string text = withoutTrailingZeros(fixedNumber(x, used));
    return text == "-0" ? "0" : text;
}

std::string clockText(const Plot2D& plot, double x)
{
    // What a double holds of the seconds of our days.
    constexpr int kMostDecimals = 6;
    const int decimals = std::min(decimalsOf(plot).value_or(kMostDecimals), kMostDecimals);
    const double unit = std::pow(10.0, -decimals);
    const double seconds = std::round((x + plot.axis().origin) / unit) * unit;
    // What a date cannot hold is told as a number.
    if (!(std::abs(seconds) < kMostClockSeconds))
        return generalNumber(seconds, 6);
    const double whole = std::floor(seconds + unit / 2.0);
    const std::string fraction = withoutTrailingZeros(fixedNumber(std::max(0.0, seconds - whole), decimals));
    return wallText(wallAt(static_cast<std::int64_t>(whole))) + fraction.substr(1);
}

// "73 d 06:00:00"
std::string durationText(double seconds)
{
    constexpr long long kMinute = 60, kHour = 3600, kDay = 86400;
    const long long whole = std::llround(seconds);
    std::array<char, 16> time{};
    std::snprintf(time.data(), time.size(), "%02d:%02d:%02d", static_cast<int>(whole % kDay / kHour),
                  static_cast<int>(whole % kHour / kMinute), static_cast<int>(whole % kMinute));
    return (whole < kDay ? std::string() : std::to_string(whole / kDay) + " d ") + time.data();
}

bool isTextOf(const std::string& text, float value)
{
    float read = 0.0F;
    std::from_chars(text.data(), text.data() + text.size(), read);
    return read == value;
}

}  // namespace

std::string valueText(double value)
{
    if (std::isnan(value))
        return "missing";
    // What a 32-bit float holds needs seven digits as a rule and nine at most; sums of them are not told
    // finer.
    const auto single = static_cast<float>(value);
    std::string text = generalNumber(value, kFloatDigits);
    constexpr int kMostFloatDigits = 9;
    if (static_cast<double>(single) == value)
        for (int digits = kFloatDigits + 1; digits <= kMostFloatDigits && !isTextOf(text, single); ++digits)
            text = generalNumber(value, digits);
    return text;
}

std::string valueWithUnit(const HsVariable& variable, double value)
{
    const std::string& unit = variable.variable().unit;
    return std::isnan(value) || unit.empty() ? valueText(value) : valueText(value) + ' ' + unit;
}

std::string xUnit(const Plot2D& plot)
{
    const std::string_view unit = unitIn(plot.xTitle);
    if (!unit.empty())
        return std::string(unit);
    // "Real part" is a number.
    return plot.xTitle.empty() || plot.xTitle.starts_with("Time") ? "s" : "";
}

namespace {

std::string withUnit(const Plot2D& plot, double x)
{
    const std::string unit = xUnit(plot);
    return numberText(plot, x) + (unit.empty() ? "" : ' ' + unit);
}

}  // namespace

std::string xText(const Plot2D& plot, double x)
{
    switch (plot.axis().mode) {
        case XMode::Sample:
            return "sample " + numberText(plot, x);
        case XMode::Clock:
            return clockText(plot, x);
        case XMode::Elapsed:
            break;
    }
    return withUnit(plot, x);
}

std::string distanceText(const Plot2D& plot, double dx)
{
    if (plot.axis().mode == XMode::Sample)
        return numberText(plot, dx) + " samples";
    std::string text = withUnit(plot, dx);
    constexpr double kMinute = 60.0;
    // Between dates nobody counts in seconds alone.
    if (plot.axis().mode == XMode::Clock && std::abs(dx) >= kMinute && std::abs(dx) < kMostClockSeconds)
        text += " (" + durationText(std::abs(dx)) + ')';
    return text;
}

std::string inverseText(const Plot2D& plot, double dx)
{
    if (dx == 0.0 || plot.axis().mode == XMode::Sample)
        return "–";
    const std::string unit = xUnit(plot);
    const std::string number = generalNumber(1.0 / std::abs(dx), kFloatDigits);
    return unit.empty() ? number : number + (unit == "s" ? " Hz" : unit == "Hz" ? " s" : " 1/" + unit);
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

std::string differenceText(double from, double to)
{
    return valueText(asWritten(to) - asWritten(from));
}

std::string plotDescription(const Plot2D& plot)
{
    std::string text;
    for (const Group& group : plot.groups())
        if (group.hasVisible())
            text += (text.empty() ? "" : "; ") + group.axisTitle() + ", " + xText(plot, plot.x1()) + " to " +
                    xText(plot, plot.x2()) + ", " + valueText(group.y1()) + " to " + valueText(group.y2());
    return text;
}

double valueAt(const Plot2D& plot, const HsVariable& variable, double x)
{
    const Variable& v = variable.variable();
    try {
        const std::uint32_t row = plot.axis().rowAt(v, x);
        if (row == 0 || (row == v.rows() && x > plot.axis().xOf(v, row) + plot.axis().stepOf(v)))
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
    if (const auto ref = plot.reference()) {
        const std::uint32_t row = plot.axis().nearestRow(ref->variable(), at);
        rows.push_back({"Sample", std::to_string(ref->variable().source()->sampleOf(row))});
    }
    if (plot.axis().mode != XMode::Sample) {
        // "Frequency [Hz]" without its unit.
        std::string title = plot.xTitle.substr(0, plot.xTitle.find('['));
        title.erase(title.find_last_not_of(' ') + 1);
        rows.push_back({title.empty() || title.starts_with("Time") ? "Time" : title, xText(plot, at)});
    }
    for (const auto& v : plot.variables())
        if (v->variable().visible && !v->variable().isMark)
            rows.push_back({plot.nameOf(*v), valueWithUnit(*v, valueAt(plot, *v, at))});
    return rows;
}

std::vector<IntervalRow> intervalRows(const Plot2D& plot)
{
    std::vector<IntervalRow> rows;
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
        rows.push_back(std::move(row));
    }
    return rows;
}

namespace {

// Levels are logarithms, and the points of a curve in memory (a filter's characteristic) stand at unequal
// distances: a mean over either says nothing.
bool hasMeans(const Variable& variable)
{
    return !variable.unit.starts_with("dB") && variable.source()->isEvenlySpaced();
}

}  // namespace

IntervalFields intervalFields(const Plot2D& plot, const IntervalRow& row)
{
    const auto atCursor = [&](Plot2D::Cursor which, double value) {
        return plot.cursor(which) ? valueText(value) : std::string();
    };
    const HsVariable::Statistics& s = row.statistics;
    const auto ofValues = [&](double value) { return s.count == 0 ? "–" : valueText(value); };
    const auto ofMeans = [&, means = hasMeans(row.variable->variable())](double value) {
        return means ? ofValues(value) : std::string();
    };
    const bool both = plot.cursor(Plot2D::A) && plot.cursor(Plot2D::B);
    return {plot.nameOf(*row.variable),
            row.variable->variable().unit,
            atCursor(Plot2D::A, row.atA),
            atCursor(Plot2D::B, row.atB),
            both ? differenceText(row.atA, row.atB) : std::string(),
            ofValues(s.least),
            ofValues(s.greatest),
            ofMeans(s.mean),
            ofMeans(s.rms),
            ofMeans(s.deviation),
            std::to_string(s.missing)};
}

// Nothing is known any more of what a ring has overwritten.
std::string cursorAt(const Plot2D& plot, double x)
{
    const auto ref = plot.reference();
    std::string text = xText(plot, x);
    if (!ref || ref->variable().firstRow() == 1)
        return text;
    try {
        if (x < plot.axis().xOf(ref->variable(), ref->variable().firstRow()))
            text += " (has left the ring)";
    } catch (const TS::Failure&) {
        // The picture tells it.
    }
    return text;
}

std::string cursorText(const Plot2D& plot)
{
    const auto& a = plot.cursor(Plot2D::A);
    const auto& b = plot.cursor(Plot2D::B);
    constexpr std::string_view kBetween = "     ";
    std::string text;
    if (a)
        text = "A: " + cursorAt(plot, *a);
    if (b)
        text.append(a ? kBetween : "").append("B: " + cursorAt(plot, *b));
    if (a && b)
        text.append(kBetween)
            .append("Δt: " + distanceText(plot, *b - *a))
            .append(kBetween)
            .append("1/Δt: " + inverseText(plot, *b - *a));
    return text;
}

std::string intervalText(const Plot2D& plot)
{
    const auto& a = plot.cursor(Plot2D::A);
    const auto& b = plot.cursor(Plot2D::B);
    std::string text;
    if (a)
        text += "A\t" + xText(plot, *a) + '\n';
    if (b)
        text += "B\t" + xText(plot, *b) + '\n';
    if (a && b)
        text += "Δt\t" + distanceText(plot, *b - *a) + "\n1/Δt\t" + inverseText(plot, *b - *a) + '\n';
    const auto addLine = [&text](const auto& fields) {
        for (std::size_t i = 0; i < fields.size(); ++i)
            text.append(i == 0 ? "" : "\t").append(fields[i]);
        text += '\n';
    };
    addLine(kIntervalHeadings);
    for (const IntervalRow& row : intervalRows(plot))
        addLine(intervalFields(plot, row));
    return text;
}

}  // namespace veltrac
