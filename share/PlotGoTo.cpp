#include "share/PlotGoTo.h"

#include "core/FileTime.h"
#include "core/PlotFile.h"

namespace veltrac {

namespace {

constexpr const char* kMeansNothing =
    "Type a sample (250000), a time (12.5 s, 13:45:30 or 2016-10-30 02:30) or a share (50%).";

PlaceInPlot atSample(const XAxis& axis, const Variable& v, double sample)
{
    const PlotSource& source = *v.source();
    if (v.rows() > 0 && sample >= source.sampleOf(source.firstRow()) && sample <= source.sampleOf(v.rows()))
        return {axis.xOf(v, static_cast<std::uint32_t>(sample) - source.sampleOf(1) + 1), {}, {}};
    return {{},
            "The samples run from " + std::to_string(source.sampleOf(1)) + " to " +
                std::to_string(source.sampleOf(v.rows())) + ".",
            {}};
}

// The first plot's unit of x, "s" where it has none.
std::string unitOfX(const Plot2D& plot)
{
    const std::string_view unit = unitIn(plot.xTitle);
    return unit.empty() ? "s" : std::string(unit);
}

PlaceInPlot inValues(const Plot2D& plot, const SeriesPlace& place)
{
    const std::string unit = unitOfX(plot);
    const bool isOwnUnit = place.fileUnit.empty() ? unit == "s" : place.fileUnit == unit;
    if (place.kind != SeriesPlace::Kind::Elapsed || !isOwnUnit)
        return {{}, "Type a number with the unit " + unit + ", a sample or a share.", {}};
    return {place.number, {}, {}};
}

PlaceInPlot inFile(const XAxis& axis, const Variable& v, const PlotFile& file, std::string_view text)
{
    if (v.rows() == 0)
        return {{}, "The file has no samples.", {}};
    if (file.timeKind() == PlotSource::TimeKind::RowNumbers)
        return {{}, "The file has no times that rise.", {}};
    const MeantSample meant = meantSample(text, file.file());
    if (!meant.sample)
        return {{}, meant.reason, meant.note};
    PlaceInPlot place = atSample(axis, v, *meant.sample);
    place.note = meant.note;
    return place;
}

}  // namespace

PlaceInPlot placeInPlot(const Plot2D& plot, std::string_view text)
{
    const std::optional<SeriesPlace> place = parsePlace(text);
    const auto reference = plot.reference();
    if (!place || !reference)
        return {{}, kMeansNothing, {}};
    if (place->kind == SeriesPlace::Kind::Sample)
        return atSample(plot.axis(), reference->variable(), place->number);
    const Plot2D::Extent all = plot.extent();
    if (place->kind == SeriesPlace::Kind::Percent) {
        if (!(place->number >= 0.0 && place->number <= 100.0))
            return {{}, "A share lies between 0% and 100%.", {}};
        return {all.x1 + place->number / 100.0 * (all.x2 - all.x1), {}, {}};
    }
    PlaceInPlot first;
    for (const auto& shown : plot.variables()) {
        const Variable& v = shown->variable();
        if (!v.visible || v.isMark)
            continue;
        const auto file = std::dynamic_pointer_cast<PlotFile>(v.source());
        PlaceInPlot found = file ? inFile(plot.axis(), v, *file, text) : inValues(plot, *place);
        if (found.x && *found.x >= all.x1 && *found.x <= all.x2)
            return found;
        if (found.reason.empty())
            found = {{}, "That lies outside of the plot.", {}};
        if (first.reason.empty())
            first = found;
    }
    return first;
}

}  // namespace veltrac
