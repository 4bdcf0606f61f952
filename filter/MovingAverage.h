// The mean of the samples around each sample.
#pragma once

#include <cstdint>
#include <vector>

namespace veltrac {

// Feeds on samples one by one and gives the means of the last `points` of them. A mean costs the same for
// any number of points and is as good as if it were summed anew: no sum ever has something taken away from
// it again, so nothing drifts. Missing values (NaN) do not count; a mean of none is NaN.
//
// Sums of blocks of `points` samples are kept from their start on and from their end on, after M. van Herk,
// "A fast algorithm for local minimum and maximum filters on rectangular and octagonal kernels", 1992.
class MovingAverage
{
public:
    // `absent` of the points lie before the first sample and do not count.
    MovingAverage(std::uint32_t points, std::uint32_t absent);

    // The mean of the last points, this sample included.
    float push(float sample);
    // The same where the series has ended.
    float pushAbsent() { return add({}); }

private:
    struct Sum
    {
        double sum = 0.0;
        std::uint32_t count = 0;
    };
    float add(Sum sample);
    void finishBlock();

    std::vector<Sum> m_block;  // samples of this block; of the one before, sums from each place to its end
    std::size_t m_place = 0;   // in the block
    Sum m_before;              // of this block up to here
};

}  // namespace veltrac
