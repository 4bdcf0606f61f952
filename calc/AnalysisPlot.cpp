#include "calc/AnalysisPlot.h"

#include <QVector>

#include <iterator>
#include <vector>

#include "share/PlotCanvas.h"

namespace veltrac {

namespace {

constexpr double kBandWidthMm = 0.1;
constexpr int kBandStyle = 4;
constexpr unsigned kCoherenceOnly = 4;  // columns

// Puts the two groups behind a group into it, thin and in its colour: the ends of its band.
void foldBand(std::vector<Group>& groups, std::size_t group)
{
    Group::Variables& variables = groups[group].variables();
    groups[group].title =
        variables.front()->variable().label +
        (variables.front()->variable().unit.empty() ? "" : " [" + variables.front()->variable().unit + "]");
    for (int end = 0; end < 2; ++end) {
        variables.push_back(groups[group + 1].variables().front());
        Variable& look = variables.back()->variable();
        look.colorIndex = variables.front()->variable().colorIndex;
        look.lineStyle = kBandStyle;
        look.widthMm = kBandWidthMm;
        groups.erase(groups.begin() + static_cast<std::ptrdiff_t>(group) + 1);
    }
}

}  // namespace

bool showTwoChannels(PlotCanvas& canvas, const QString& file, unsigned columns)
{
    QVector<unsigned> shown;
    for (unsigned c = 2; c <= columns; ++c)
        shown << c;
    if (!canvas.showColumns(file, shown, PlotCanvas::Axes::OneEach))
        return false;
    std::vector<Group>& groups = canvas.plot().groups();
    if (groups.size() != static_cast<std::size_t>(shown.size()))
        return true;
    foldBand(groups, 0);
    if (columns > kCoherenceOnly) {
        foldBand(groups, 1);
        groups[0].share = 2.0;
        groups.back().setLimits(0.0, 1.05);
        groups.back().mode = YMode::Fixed;
    }
    canvas.plot().fitAll();
    canvas.replot();
    return true;
}

}  // namespace veltrac
