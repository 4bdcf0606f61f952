#include "share/PlotVariables.h"

#include <algorithm>
#include <set>

#include "core/FileTime.h"
#include "core/TimeUnits.h"
#include "share/BasicDriver.h"
#include "share/HeaderText.h"

namespace veltrac {

namespace {

std::string utf8(const QString& text)
{
    return text.toUtf8().toStdString();
}

bool countsInSeconds(const PlotFile& file)
{
    const QString unit = QString::fromStdString(bareTimeUnit(utf8(headerText(file.timeUnit().c_str()))));
    return secondsOfUnit(utf8(unit.toLower())) == 1.0;
}

// "Frequency[Hz]" is a title already, "ms" the unit of time.
std::string titleOf(const PlotFile& file)
{
    const QString unit = headerText(file.timeUnit().c_str()).trimmed();
    if (unit.isEmpty())
        return "Time [s]";
    return utf8(unit.contains(QLatin1Char('[')) ? unit : QStringLiteral("Time [%1]").arg(unit));
}

}  // namespace

std::shared_ptr<HsVariable> makeVariable(const std::shared_ptr<PlotFile>& file, std::uint32_t column)
{
    Variable v(file, column);
    const QString name = headerText(file->columnName(column).c_str()).trimmed();
    v.label = utf8(name.isEmpty() ? QStringLiteral("Column %1").arg(column) : name);
    const std::string description = utf8(headerText(file->columnDescription(column).c_str()));
    v.unit = utf8(QString::fromStdString(std::string(unitIn(description))).trimmed());
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

QString fileNameOf(const Variable& variable)
{
    const auto file = plotFileOf(variable);
    return file ? fileNameOf(*file) : QString();
}

QString fileNameOf(const PlotFile& file)
{
    return QString::fromLocal8Bit(file.name().c_str());
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
        plot.setMode(plot.axis().dated && canShowClock(plot) ? XMode::Clock : XMode::Elapsed);
        return;
    }
}

}  // namespace veltrac
