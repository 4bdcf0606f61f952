#include "filter/MovingAverage.h"

#include <cmath>
#include <limits>

namespace veltrac {

MovingAverage::MovingAverage(std::uint32_t points, std::uint32_t absent)
    : m_block(points), m_place(absent % points)
{
}

float MovingAverage::push(float sample)
{
    return add(std::isnan(sample) ? Sum{} : Sum{sample, 1});
}

float MovingAverage::add(Sum sample)
{
    m_before.sum += sample.sum;
    m_before.count += sample.count;
    m_block[m_place++] = sample;
    Sum all = m_before;
    if (m_place < m_block.size()) {
        all.sum += m_block[m_place].sum;
        all.count += m_block[m_place].count;
    } else {
        finishBlock();
    }
    return all.count == 0 ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(all.sum / all.count);
}

// Each place gets the sum from it to the block's end; the next block overwrites them as they go out of use.
void MovingAverage::finishBlock()
{
    for (std::size_t i = m_block.size() - 1; i-- > 0;) {
        m_block[i].sum += m_block[i + 1].sum;
        m_block[i].count += m_block[i + 1].count;
    }
    m_place = 0;
    m_before = {};
}

}  // namespace veltrac
