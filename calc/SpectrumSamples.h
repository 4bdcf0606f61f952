// The samples of a spectrum: reading, missing values, trend.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

// Reads the samples of a request, segment by segment. With `interpolate` missing ones become the line between
// the nearest values on both sides, also where those lie beyond the segment or the range; the nearest value
// before the first and behind the last of the file, and 0 where there is none at all.
class SampleReader
{
public:
    // Borrows the file.
    SampleReader(TSFILE& file, const SpectrumRequest& request);

    // Samples from `first` on into `out`. Throws the TS exceptions.
    JobOutcome read(std::uint32_t first, std::span<double> out, const Progress& progress);

private:
    struct Known
    {
        std::int64_t sample = 0;
        double value = 0.0;
        bool isThere = false;
    };
    // Samples first to last - 1 are missing; what stands on both sides of them.
    struct Gap
    {
        std::int64_t first = 0;
        std::int64_t last = 0;
        Known before;
        Known after;
    };

    JobOutcome bridgeMissing(std::uint32_t first, std::span<double> out, const Progress& progress);
    const Gap& gapAround(std::int64_t sample);
    Known nearest(std::int64_t sample, bool forward);

    TSFILE& m_file;
    std::uint32_t m_column;
    std::uint32_t m_behind;  // rows before the oldest sample
    bool m_interpolate;
    Gap m_gap;  // the last one that reached beyond a segment
    std::vector<float> m_run;
};

// Subtracts the mean or the straight line of least squares, and tells the mean.
JobOutcome removeTrend(std::span<double> samples, SpectrumTrend trend, double& mean,
                       const Progress& progress);

// How many samples of the range are missing (NaN or infinite).
JobOutcome countMissing(TSFILE& file, const SpectrumRequest& request, std::uint64_t& missing,
                        const Progress& progress);

// The least, greatest and mean step of a file with a "Time" column; all dt without one. Times that round to
// 32-bit floats make equal steps differ by up to `grain`.
struct StepRange
{
    double least = 0.0;
    double greatest = 0.0;
    double mean = 0.0;
    double grain = 0.0;
};
JobOutcome readSteps(TSFILE& file, std::uint32_t from, std::uint32_t to, StepRange& steps,
                     const Progress& progress);

}  // namespace veltrac
