#include "filter/CharacteristicPlot.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "core/PlotValues.h"
#include "share/BasicDriver.h"
#include "share/PlotCanvas.h"

namespace veltrac {

namespace {

constexpr double kLeastShownDb = -100.0;

QString frequenciesText(const std::vector<double>& frequencies)
{
    QStringList texts;
    for (const double hz : frequencies)
        texts << QString::number(hz, 'g', 5);
    return texts.join(QStringLiteral(", "));
}

// A stop band of -200 dB would press the pass band flat.
void fitDecibels(PlotCanvas& canvas, const std::vector<float>& gainDb)
{
    const auto [least, greatest] = std::minmax_element(gainDb.begin(), gainDb.end());
    const double low = std::max<double>(*least, kLeastShownDb);
    canvas.plot().setY(0, low - 2, static_cast<double>(*greatest) + 5);
}

}  // namespace

void showCharacteristic(PlotCanvas& canvas, const FilterCharacteristic& c, const CharacteristicLook& look)
{
    const QString unit = look.decibels ? QStringLiteral("dB") : QString();
    std::vector<PlotCanvas::Values> columns = {
        {QStringLiteral("Gain"), unit, look.decibels ? c.gainDb : c.gain}};
    if (!c.halfPower.empty())
        columns.push_back({QStringLiteral("-3.01 dB @ %1 Hz").arg(frequenciesText(c.halfPower)), unit,
                           look.decibels ? c.marksDb : c.marks});
    if (look.phase)
        columns.push_back({QStringLiteral("Phase, 0-1 for 0-2pi"), QString(), c.phase});
    canvas.showValues(c.frequencies, QStringLiteral("Freq[Hz]"), columns);

    // The marks belong on the axis of the gain.
    std::vector<Group>& groups = canvas.plot().groups();
    if (!c.halfPower.empty()) {
        groups[0].variables().push_back(groups[1].variables().front());
        groups[0].variables().back()->variable().lineStyle = 1;
        groups[0].variables().back()->variable().isMark = true;
        groups.erase(groups.begin() + 1);
    }
    groups[0].title = look.decibels ? "Gain [dB]" : "Gain";
    canvas.setLogarithmicX(look.logarithmic);
    canvas.plot().fitAll();
    if (look.decibels)
        fitDecibels(canvas, c.gainDb);
    canvas.replot();
}

void showDelays(PlotCanvas& canvas, const std::vector<double>& frequencies, const std::vector<float>& delays,
                bool logarithmic)
{
    canvas.showValues(frequencies, QStringLiteral("Freq[Hz]"),
                      {{QStringLiteral("Group delay"), QStringLiteral("s"), delays}});
    canvas.setLogarithmicX(logarithmic);
    canvas.plot().fitAll();
    canvas.replot();
}

void showResponses(PlotCanvas& canvas, const FilterResponses& responses)
{
    canvas.showValues(responses.seconds, QStringLiteral("Time[s]"),
                      {{QStringLiteral("Impulse response"), QString(), responses.impulse},
                       {QStringLiteral("Step response"), QString(), responses.step}});
}

namespace {

constexpr int kUnitCirclePoints = 361;
constexpr int kCrossMarker = 2;
constexpr int kCircleMarker = 3;

// Points in the order of their real parts.
std::shared_ptr<HsVariable> rootMarks(std::vector<std::complex<double>> points, const char* label, int marker,
                                      int color)
{
    std::sort(points.begin(), points.end(), [](const auto& a, const auto& b) { return a.real() < b.real(); });
    std::vector<double> x;
    std::vector<float> y;
    for (const std::complex<double>& point : points) {
        x.push_back(point.real());
        y.push_back(static_cast<float>(point.imag()));
    }
    Variable v(std::make_shared<PlotValues>(x, std::vector<std::vector<float>>{y}), 1);
    v.label = label + (" (" + std::to_string(points.size()) + ")");
    v.lineStyle = -1;
    v.marker = marker;
    v.colorIndex = color;
    return std::make_shared<HsVariable>(std::move(v));
}

}  // namespace

void showRoots(PlotCanvas& canvas, const FilterRoots& roots)
{
    std::vector<double> x;
    PlotCanvas::Values upper{QStringLiteral("Unit circle"), QString(), {}};
    PlotCanvas::Values lower = upper;
    for (int i = 0; i < kUnitCirclePoints; ++i) {
        const double angle = std::numbers::pi * (1.0 - static_cast<double>(i) / (kUnitCirclePoints - 1));
        x.push_back(std::cos(angle));
        upper.y.push_back(static_cast<float>(std::sin(angle)));
        lower.y.push_back(-upper.y.back());
    }
    // Room beside the circle, for a canvas that is wider than high.
    constexpr double kRoom = 20.0;
    x.insert(x.begin(), -kRoom);
    x.push_back(kRoom);
    for (PlotCanvas::Values* const half : {&upper, &lower}) {
        half->y.insert(half->y.begin(), std::numeric_limits<float>::quiet_NaN());
        half->y.push_back(std::numeric_limits<float>::quiet_NaN());
    }
    lower.label.clear();
    canvas.showValues(x, QStringLiteral("Real part"), {upper, lower}, PlotCanvas::Axes::ByUnit);
    Group& group = canvas.plot().groups().front();
    group.title = "Imaginary part";
    for (const auto& half : group.variables()) {
        half->variable().colorIndex = kTextColor;
        half->variable().widthMm = 0.1;
        half->variable().isMark = true;
    }
    if (!roots.zeros.empty())
        group.variables().push_back(rootMarks(roots.zeros, "Zeros", kCircleMarker, kFirstVariableColor));
    if (!roots.poles.empty())
        group.variables().push_back(rootMarks(roots.poles, "Poles", kCrossMarker, kFirstVariableColor + 2));
    canvas.refresh(true);
    canvas.image();  // lays the axes out
    squareRoots(canvas);
}

void squareRoots(PlotCanvas& canvas)
{
    Plot2D& plot = canvas.plot();
    const QRect area = canvas.plotArea();
    if (plot.groups().empty() || area.height() < 2 || area.width() < 2)
        return;
    constexpr double kMargin = 1.15;
    double high = 1.0;
    double wide = 1.0;
    for (const auto& variable : plot.variables()) {
        const Variable& v = variable->variable();
        const HsVariable::Range range = variable->range(1, v.rows());
        high = std::max({high, std::fabs(range.least), std::fabs(range.greatest)});
        if (!v.isMark)
            wide = std::max({wide, std::fabs(v.timeAt(1)), std::fabs(v.timeAt(v.rows()))});
    }
    const double pixel = kMargin * std::max(2.0 * wide / area.width(), 2.0 * high / area.height());
    plot.setX(-pixel * area.width() / 2.0, pixel * area.width() / 2.0);
    plot.setY(0, -pixel * area.height() / 2.0, pixel * area.height() / 2.0);
    canvas.replot();
}

}  // namespace veltrac
