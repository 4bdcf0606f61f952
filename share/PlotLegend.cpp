#include "share/PlotLegend.h"

#include "core/Plot2D.h"
#include "share/BasicDriver.h"

namespace veltrac {

namespace {

constexpr float kGap = 1.2F;        // behind a name
constexpr float kMoreWidth = 8.0F;  // "+12 more"

std::uint32_t notAboveZero(const HsVariable& v)
{
    const bool readable = v.isBuilt() && v.failure().empty() && v.variable().rows() > 0;
    return readable ? v.notPositive(v.variable().firstRow(), v.variable().rows()) : 0;
}

std::string legendText(const Plot2D& plot, const HsVariable& v)
{
    std::string text = plot.nameOf(v);
    const std::uint32_t low = notAboveZero(v);
    return low == 0 ? text : text.append(" (").append(std::to_string(low)).append(" not above 0)");
}

}  // namespace

bool PlotLegend::isOf(const Group& group)
{
    int shown = 0;
    bool hasNote = false;
    for (const auto& v : group.variables()) {
        shown += v->variable().visible ? 1 : 0;
        hasNote = hasNote || (v->variable().visible && notAboveZero(*v) > 0);
    }
    return shown > 1 || hasNote;
}

PlotLegend::PlotLegend(const Plot2D& plot, const Group& group, BasicDriver& driver, float charWidth)
    : m_charWidth(charWidth)
{
    for (const auto& v : group.variables()) {
        // The second half of a mark has no label.
        if (!v->variable().visible || (v->variable().isMark && v->variable().label.empty()))
            continue;
        Entry& entry = m_entries.emplace_back(Entry{v.get(), legendText(plot, *v), 0.0F});
        driver.TextExtent(entry.text.c_str(), &entry.width, nullptr);
    }
}

LegendFlow PlotLegend::flow(float x1, float x2, std::size_t mostRows) const
{
    LegendFlow all = flow(x1, x2, mostRows, false);
    return all.left == 0 ? all : flow(x1, x2, mostRows, true);
}

// Keeping room for the number of those that find none, behind the last name.
LegendFlow PlotLegend::flow(float x1, float x2, std::size_t mostRows, bool keepsRoom) const
{
    LegendFlow flow;
    flow.leftX = x1;
    std::size_t row = 0;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        const auto fits = [&](float x) {
            const bool reserves = keepsRoom && row + 1 == mostRows && i + 1 < m_entries.size();
            return x + (kLegendStroke + 1.0F) * m_charWidth + entry.width <=
                   x2 - (reserves ? kMoreWidth * m_charWidth : 0.0F);
        };
        if (!fits(flow.leftX) && flow.leftX > x1 && row + 1 < mostRows) {
            ++row;
            flow.leftX = x1;
        }
        if (!fits(flow.leftX)) {
            flow.left = m_entries.size() - i;
            break;
        }
        flow.places.push_back({entry.variable, entry.text, flow.leftX, row});
        flow.leftX += entry.width + (kLegendStroke + kLegendTextGap + kGap) * m_charWidth;
    }
    return flow;
}

}  // namespace veltrac
