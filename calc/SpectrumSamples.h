// The samples of a spectrum: reading, missing values, trend.
#pragma once

#include <span>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"
#include "core/TSFILE.h"

// From the first sample of a segment of `used` samples to the next one's.
std::uint32_t segmentHop(std::uint32_t used, int overlapPercent);

// Reads samples from `first` on into `out`. Missing ones become the line between their neighbours, and the
// nearest value at the ends; 0 where there is none at all.
JobOutcome loadSamples(TSFILE& file, const SpectrumRequest& request, std::uint32_t first,
                       std::span<double> out, const Progress& progress);

// Subtracts the mean or the straight line of least squares; returns the mean.
double removeTrend(std::span<double> samples, SpectrumTrend trend);

// How many samples of the range are missing (NaN or infinite).
JobOutcome countMissing(TSFILE& file, const SpectrumRequest& request, std::uint64_t& missing,
                        const Progress& progress);

// The least, greatest and mean step of a file with a "Time" column; all dt without one.
struct StepRange
{
    double least = 0.0;
    double greatest = 0.0;
    double mean = 0.0;
};
JobOutcome readSteps(TSFILE& file, std::uint32_t from, std::uint32_t to, StepRange& steps,
                     const Progress& progress);
