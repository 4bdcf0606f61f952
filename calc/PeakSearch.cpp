#include "calc/PeakSearch.h"

#include <algorithm>

namespace veltrac {

void PeakSearch::pushSummit()
{
    while (m_summits.back().height < m_height)
        popSummit();
    Summit& before = m_summits.back();
    before.right = m_lowest;
    // Ground of the same height is no end: the side goes on behind it.
    const float left = before.height == m_height ? std::min(m_lowest, before.left) : m_lowest;
    m_summits.push_back({m_place, m_height, left});
    m_lowest = kNone;
}

// The last one has met higher ground or the end.
void PeakSearch::popSummit()
{
    const Summit summit = m_summits.back();
    m_summits.pop_back();
    const bool hasLeft = summit.left < summit.height;
    const bool hasRight = m_lowest < summit.height;
    if (hasLeft || hasRight) {
        const float base = !hasLeft ? m_lowest : !hasRight ? summit.left : std::max(summit.left, m_lowest);
        m_found({summit.place, summit.height, summit.height - base});
    }
    // What lies behind the one before it reaches over it now.
    m_lowest = std::min(m_lowest, m_summits.back().right);
}

void PeakSearch::finish()
{
    if (m_rises)
        pushSummit();
    while (m_summits.size() > 1)
        popSummit();
}

}  // namespace veltrac
