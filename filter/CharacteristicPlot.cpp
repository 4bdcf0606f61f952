#include "filter/CharacteristicPlot.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <string>

#include "core/NumberTexts.h"
#include "core/PlotValues.h"
#include "share/BasicDriver.h"
#include "share/PlotVariables.h"

namespace veltrac {

namespace {

constexpr double kLeastShownDb = -100.0;

std::string frequenciesText(const std::vector<double>& frequencies)
{
    std::string texts;
    for (const double hz : frequencies)
        texts += (texts.empty() ? "" : ", ") + generalNumber(hz, 5);
    return texts;
}

// A stop band of -200 dB would press the pass band flat.
void fitDecibels(Plot2D& plot, const std::vector<float>& gainDb)
{
    const auto [least, greatest] = std::minmax_element(gainDb.begin(), gainDb.end());
    const double low = std::max<double>(*least, kLeastShownDb);
    plot.setY(0, low - 2, static_cast<double>(*greatest) + 5);
}

}  // namespace

Plot2D gainPlot(const FilterCharacteristic& c, const CharacteristicLook& look)
{
    const std::string unit = look.decibels ? "dB" : "";
    std::vector<PlottedValues> columns = {{"Gain", unit, look.decibels ? c.gainDb : c.gain}};
    if (!c.halfPower.empty())
        columns.push_back({"-3.01 dB @ " + frequenciesText(c.halfPower) + " Hz", unit,
                           look.decibels ? c.marksDb : c.marks});
    if (look.phase)
        columns.push_back({"Phase, 0-1 for 0-2pi", "", c.phase});
    Plot2D plot = plotOfValues(c.frequencies, "Freq[Hz]", columns);

    // The marks belong on the axis of the gain.
    std::vector<Group>& groups = plot.groups();
    if (!c.halfPower.empty()) {
        groups[0].variables().push_back(groups[1].variables().front());
        groups[0].variables().back()->variable().lineStyle = 1;
        groups[0].variables().back()->variable().isMark = true;
        groups.erase(groups.begin() + 1);
    }
    groups[0].title = look.decibels ? "Gain [dB]" : "Gain";
    plot.setLogarithmicX(look.logarithmic);
    plot.fitAll();
    if (look.decibels)
        fitDecibels(plot, c.gainDb);
    return plot;
}

Plot2D delayPlot(const std::vector<double>& frequencies, const std::vector<float>& delays, bool logarithmic)
{
    Plot2D plot = plotOfValues(frequencies, "Freq[Hz]", {{"Group delay", "s", delays}});
    plot.setLogarithmicX(logarithmic);
    plot.fitAll();
    return plot;
}

Plot2D responsePlot(const FilterResponses& responses)
{
    return plotOfValues(responses.seconds, "Time[s]",
                        {{"Impulse response", "", responses.impulse}, {"Step response", "", responses.step}});
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

Plot2D rootPlot(const FilterRoots& roots)
{
    std::vector<double> x;
    PlottedValues upper{"Unit circle", "", {}};
    PlottedValues lower = upper;
    for (int i = 0; i < kUnitCirclePoints; ++i) {
        const double angle = std::numbers::pi * (1.0 - static_cast<double>(i) / (kUnitCirclePoints - 1));
        x.push_back(std::cos(angle));
        upper.y.push_back(static_cast<float>(std::sin(angle)));
        lower.y.push_back(-upper.y.back());
    }
    // Room beside the circle, for a frame that is wider than high.
    constexpr double kRoom = 20.0;
    x.insert(x.begin(), -kRoom);
    x.push_back(kRoom);
    for (PlottedValues* const half : {&upper, &lower}) {
        half->y.insert(half->y.begin(), std::numeric_limits<float>::quiet_NaN());
        half->y.push_back(std::numeric_limits<float>::quiet_NaN());
    }
    lower.label.clear();
    Plot2D plot = plotOfValues(x, "Real part", {upper, lower}, true);
    Group& group = plot.groups().front();
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
    plot.buildMissing({});
    plot.fitAll();
    return plot;
}

void squareRoots(Plot2D& plot, double width, double height)
{
    if (plot.groups().empty() || width < 2.0 || height < 2.0)
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
    const double unit = kMargin * std::max(2.0 * wide / width, 2.0 * high / height);
    plot.setX(-unit * width / 2.0, unit * width / 2.0);
    plot.setY(0, -unit * height / 2.0, unit * height / 2.0);
}

}  // namespace veltrac
