#include "calc/AnalysisPlot.h"

#include <QVector>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "core/NumberTexts.h"
#include "core/PlotValues.h"
#include "core/TsExceptions.h"
#include "share/BasicDriver.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/PlotVariables.h"

namespace veltrac {

namespace {

constexpr double kBandWidthMm = 0.1;
constexpr int kBandStyle = 4;
constexpr int kLineMarker = 3;
constexpr int kBandMarker = 4;
constexpr double kPictureShare = 2.5;   // of the height, beside the course
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

bool showBands(PlotCanvas& canvas, const QString& file)
{
    constexpr unsigned kValue = 2;
    constexpr std::uint32_t kFrom = 3;
    constexpr std::uint32_t kTo = 4;
    if (!canvas.showColumns(file, {kValue}) || canvas.plot().groups().empty())
        return false;
    Group& group = canvas.plot().groups().front();
    Variable& values = group.variables().front()->variable();
    values.lineStyle = -1;
    values.marker = kBandMarker;
    std::vector<double> x;
    std::vector<float> y;
    x.reserve(2 * std::size_t{values.rows()});
    y.reserve(2 * std::size_t{values.rows()});
    for (std::uint32_t band = 1; band <= values.rows(); ++band)
        for (const std::uint32_t edge : {kFrom, kTo}) {
            x.push_back(static_cast<double>(values.source()->value(edge, band)));
            y.push_back(values.source()->value(kValue, band));
        }
    Variable stairs(std::make_shared<PlotValues>(x, std::vector<std::vector<float>>{y}), 1);
    stairs.isMark = true;
    stairs.unit = values.unit;
    stairs.colorIndex = values.colorIndex;
    group.title = group.axisTitle();  // the stairs have no name
    group.variables().push_back(std::make_shared<HsVariable>(std::move(stairs)));
    canvas.plot().setLogarithmicX(true);
    return canvas.refresh(true);
}

std::shared_ptr<HsVariable> markLines(PlotCanvas& canvas, const std::vector<SpectrumPeak>& lines,
                                      const QString& label)
{
    std::vector<double> x;
    std::vector<float> y;
    x.reserve(lines.size());
    y.reserve(lines.size());
    for (const SpectrumPeak& line : lines) {
        x.push_back(line.frequency);
        y.push_back(static_cast<float>(line.value));
    }
    Group& group = canvas.plot().groups().front();
    Variable marks(std::make_shared<PlotValues>(x, std::vector<std::vector<float>>{y}), 1);
    marks.label = label.toStdString();
    marks.unit = group.variables().front()->variable().unit;
    marks.isMark = true;
    marks.lineStyle = -1;
    marks.marker = kLineMarker;
    marks.colorIndex = kTextColor;
    if (group.title.empty())
        group.title = group.axisTitle();  // that of the curves alone
    auto variable = std::make_shared<HsVariable>(std::move(marks));
    variable->setLogarithmic(group.isLogarithmic());
    variable->build({});
    group.variables().push_back(variable);
    canvas.replot();
    return variable;
}

bool showSpectrogram(PlotCanvas& canvas, const QString& file, double step, const std::string& unit)
{
    if (!canvas.showColumns(file, {1}, PlotCanvas::Axes::OneEach) || canvas.plot().groups().empty())
        return false;
    Group& group = canvas.plot().groups().front();
    Variable& mark = group.variables().front()->variable();
    mark.isMark = true;
    mark.label.clear();
    mark.unit.clear();
    group.title = "Frequency [Hz]";
    group.share = kPictureShare;
    const auto image = std::make_shared<CellImage>(mark.source(), step, unit);
    {
        JobProgress progress(&canvas, QStringLiteral("Reading the spectrogram"));
        if (image->build(progress.callback()) == JobOutcome::Cancelled) {
            canvas.showText(QStringLiteral("The spectrogram was not read to its end."));
            return false;
        }
    }
    group.image = image;
    canvas.plot().fitAll();
    canvas.replot();
    return true;
}

std::uint32_t pictureRow(const PlotCanvas& picture, double x)
{
    const std::vector<Group>& groups = picture.plot().groups();
    if (groups.empty() || !groups.front().image || groups.front().variables().empty())
        return 0;
    const Variable& mark = groups.front().variables().front()->variable();
    const XAxis& axis = picture.plot().axis();
    const double first = axis.xOf(mark, 1);
    const double step = mark.rows() > 1 ? (axis.xOf(mark, mark.rows()) - first) / (mark.rows() - 1.0) : 1.0;
    const double row = std::round((x - first) / step) + 1.0;
    return row >= 1.0 && row <= mark.rows() ? static_cast<std::uint32_t>(row) : 0;
}

std::uint32_t courseColumn(const CellImage& image, double frequency)
{
    return static_cast<std::uint32_t>(
        std::clamp(std::round(frequency / image.step()), 1.0, static_cast<double>(image.source().columns())));
}

void showCourse(PlotCanvas& canvas, double frequency)
{
    std::vector<Group>& groups = canvas.plot().groups();
    if (groups.empty() || !groups.front().image)
        return;
    const CellImage& image = *groups.front().image;
    const auto& mark = groups.front().variables().front()->variable();
    const std::uint32_t column = courseColumn(image, frequency);
    if (groups.size() > 1 && groups[1].variables().front()->variable().column() == column)
        return;
    Variable course(mark.source(), column);
    course.label = generalNumber(column * image.step(), 6) + " Hz";
    course.unit = image.unit();
    groups.resize(1);
    groups.emplace_back().variables().push_back(std::make_shared<HsVariable>(std::move(course)));
    canvas.refresh(false);
    canvas.plot().refitY();
    canvas.replot();
}

bool showCut(const PlotCanvas& picture, double x, PlotCanvas& canvas)
{
    const std::uint32_t row = pictureRow(picture, x);
    if (row == 0)
        return false;
    const CellImage& image = *picture.plot().groups().front().image;
    std::vector<float> levels(image.source().columns());
    image.source().readRows(row, 1, levels.data());
    std::vector<double> frequencies;
    frequencies.reserve(levels.size());
    for (std::size_t k = 1; k <= levels.size(); ++k)
        frequencies.push_back(static_cast<double>(k) * image.step());
    canvas.showPlot(plotOfValues(frequencies, "Freq[Hz]", {{"At A", image.unit(), levels}}));
    return true;
}

}  // namespace veltrac
