#include "share/PlotVariables.h"

#include <algorithm>
#include <set>

#include "core/FileTime.h"
#include "core/HeaderTexts.h"
#include "core/PlotValues.h"
#include "core/TimeUnits.h"
#include "share/BasicDriver.h"

namespace veltrac {

namespace {

std::string trimmedText(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    return first == std::string::npos ? std::string()
                                      : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool countsInSeconds(const PlotFile& file)
{
    std::string unit = bareTimeUnit(headerUtf8(file.timeUnit().c_str()));
    std::transform(unit.begin(), unit.end(), unit.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return secondsOfUnit(unit) == 1.0;
}

// "Frequency[Hz]" is a title already, "ms" the unit of time.
std::string titleOf(const PlotFile& file)
{
    const std::string unit = trimmedText(headerUtf8(file.timeUnit().c_str()));
    if (unit.empty())
        return "Time [s]";
    return unit.find('[') != std::string::npos ? unit : "Time [" + unit + "]";
}

}  // namespace

std::shared_ptr<HsVariable> makeVariable(const std::shared_ptr<PlotFile>& file, std::uint32_t column)
{
    Variable v(file, column);
    const std::string name = trimmedText(headerUtf8(file->columnName(column).c_str()));
    v.label = name.empty() ? "Column " + std::to_string(column) : name;
    v.unit = trimmedText(std::string(unitIn(headerUtf8(file->columnDescription(column).c_str()))));
    return std::make_shared<HsVariable>(std::move(v));
}

std::vector<std::uint32_t> plottableColumns(const PlotFile& file)
{
    std::vector<std::uint32_t> columns;
    for (std::uint32_t c = 1; c <= file.describedColumns(); ++c)
        if (file.isPlottable(c))
            columns.push_back(c);
    return columns;
}

int nextColorIndex(const Plot2D& plot)
{
    std::set<int> used;
    for (const auto& v : plot.variables())
        used.insert(v->variable().colorIndex);
    int index = kFirstVariableColor;
    while (used.count(index) != 0)
        ++index;
    return index;
}

void addByUnit(Plot2D& plot, const std::shared_ptr<HsVariable>& variable)
{
    variable->variable().colorIndex = nextColorIndex(plot);
    for (Group& group : plot.groups()) {
        if (!group.variables().empty() &&
            group.variables().front()->variable().unit == variable->variable().unit) {
            variable->setLogarithmic(group.isLogarithmic());
            group.variables().push_back(variable);
            return;
        }
    }
    plot.groups().emplace_back().variables().push_back(variable);
}

void addAlone(Plot2D& plot, const std::shared_ptr<HsVariable>& variable)
{
    variable->variable().colorIndex = nextColorIndex(plot);
    plot.groups().emplace_back().variables().push_back(variable);
}

std::shared_ptr<PlotFile> plotFileOf(const Variable& variable)
{
    return std::dynamic_pointer_cast<PlotFile>(variable.source());
}

Plot2D plotOfValues(const std::vector<double>& x, const char* xTitle,
                    const std::vector<PlottedValues>& columns, bool byUnit)
{
    std::vector<std::vector<float>> values;
    values.reserve(columns.size());
    for (const PlottedValues& column : columns)
        values.push_back(column.y);
    const auto source = std::make_shared<PlotValues>(x, values);
    Plot2D plot;
    for (std::size_t c = 0; c < columns.size(); ++c) {
        Variable v(source, static_cast<std::uint32_t>(c + 1));
        v.label = columns[c].label;
        v.unit = columns[c].unit;
        const auto variable = std::make_shared<HsVariable>(std::move(v));
        byUnit ? addByUnit(plot, variable) : addAlone(plot, variable);
    }
    plot.xTitle = xTitle;
    plot.buildMissing({});
    plot.fitAll();
    return plot;
}

std::shared_ptr<HsVariable> backwardsVariable(const Plot2D& plot)
{
    for (const auto& v : plot.variables())
        if (v->variable().visible && v->variable().source()->timeKind() == PlotSource::TimeKind::RowNumbers)
            return v;
    return nullptr;
}

bool canShowClock(const Plot2D& plot)
{
    for (const auto& v : plot.variables()) {
        const auto file = plotFileOf(v->variable());
        if (!file || !countsInSeconds(*file) || file->timeKind() == PlotSource::TimeKind::RowNumbers)
            return false;
    }
    return true;
}

void chooseXAxis(Plot2D& plot)
{
    plot.findOrigin();
    if (backwardsVariable(plot)) {
        plot.setMode(XMode::Sample);
        return;
    }
    for (const auto& v : plot.variables()) {
        const auto file = plotFileOf(v->variable());
        if (!file)
            continue;
        plot.xTitle = titleOf(*file);
        plot.setTimeUnit(file->unitSeconds());
        plot.setMode(plot.axis().dated && canShowClock(plot) ? XMode::Clock : XMode::Elapsed);
        return;
    }
}

}  // namespace veltrac
