#include "calc/KeptSpectra.h"

#include <algorithm>
#include <utility>

#include "share/BasicDriver.h"
#include "share/PlotVariables.h"

namespace veltrac {

bool KeptSpectra::has(const std::shared_ptr<HsVariable>& spectrum) const
{
    return std::find(m_kept.begin(), m_kept.end(), spectrum) != m_kept.end();
}

void KeptSpectra::keep(std::shared_ptr<HsVariable> spectrum, const std::string& name)
{
    int color = kFirstVariableColor;
    for (const auto& kept : m_kept)
        color = std::max(color, kept->variable().colorIndex);
    Variable& variable = spectrum->variable();
    variable.label = name;
    variable.colorIndex = color + 1;
    variable.lineStyle = std::max(0, variable.lineStyle);  // bands are marks between stairs
    m_kept.push_back(std::move(spectrum));
}

void KeptSpectra::addTo(Plot2D& plot) const
{
    for (const auto& kept : m_kept) {
        const int color = kept->variable().colorIndex;
        addByUnit(plot, kept);
        kept->variable().colorIndex = color;
    }
}

void KeptSpectra::drop(Plot2D& plot, const std::shared_ptr<HsVariable>& present)
{
    for (const auto& kept : m_kept)
        if (kept != present)
            plot.remove(*kept);
    m_kept.clear();
}

}  // namespace veltrac
