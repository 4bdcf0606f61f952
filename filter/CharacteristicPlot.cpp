#include "filter/CharacteristicPlot.h"

#include <algorithm>

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

}  // namespace veltrac
