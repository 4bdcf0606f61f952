// The peaks of a curve and how far each stands out of it, in one pass.
//
// A peak is where the curve has risen, or begun, and then falls or ends; of a flat top its last place. Its
// prominence is its height above the higher of the two lowest places that lie between it and higher ground on
// either side (A. Kirmse, J. de Ferranti, "Calculating the prominence and isolation of every mountain in the
// world", Progress in Physical Geography 41 (2017)). Where there is no higher ground a side reaches to the
// end of the curve; a side that has no lower place at all, as of a peak at an end, does not count.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace veltrac {

struct CurvePeak
{
    std::uint32_t place = 0;  // from 1
    float height = 0.0F;
    float prominence = 0.0F;
};

// Takes the heights from place 1 on, which are no NaN. Memory: 16 bytes for each peak that no later one has
// surpassed yet; of noise a few dozen, of a curve that falls in ripples all of them.
class PeakSearch
{
public:
    // Is called with each peak as soon as its prominence is known, not in their order.
    using Found = std::function<void(const CurvePeak&)>;
    explicit PeakSearch(Found found) : m_found(std::move(found)) { m_summits.push_back({0, kNone, kNone}); }

    void add(float height)
    {
        if (height < m_height && m_rises)
            pushSummit();
        if (height != m_height)
            m_rises = height > m_height;
        if (height < m_lowest)
            m_lowest = height;
        m_height = height;
        ++m_place;
    }
    // After the last height.
    void finish();

private:
    static constexpr float kNone = std::numeric_limits<float>::infinity();

    // What may still be on the way to higher ground; each is at least as high as those behind it.
    struct Summit
    {
        std::uint32_t place;
        float height;
        float left;           // the lowest place on its left side
        float right = kNone;  // from it to the next one; of the last one m_lowest counts
    };
    void pushSummit();
    void popSummit();

    Found m_found;
    std::vector<Summit> m_summits;  // the first is none, higher than all
    float m_lowest = kNone;         // since the last of them
    float m_height = -std::numeric_limits<float>::infinity();
    bool m_rises = false;
    std::uint32_t m_place = 0;
};

}  // namespace veltrac
