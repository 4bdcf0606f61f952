// Spectra of a column over time: the segments of calc/Spectrum.h one after another instead of their average.
#pragma once

#include <cstdint>
#include <string>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

// The picture's file holds no more cells, and less than the 2 GB of a ts-file.
inline constexpr std::uint64_t kMostCells = 1'000'000'000;

// What an averaged request comes to when its segments stay apart: plan.segments samples of plan.bins columns.
// The reason why that cannot be, and what can: "The spectrogram would … Take an overlap of 50 %."; else
// empty.
std::string spectrogramComplaint(const SpectrumRequest& request);

// Writes bin k of segment s into column k of sample s, k from 1, as the request scales it; segment by
// segment, so memory does not grow with the range. A bin without any power has -380 dB, less than a float
// has, so that every cell has a colour. Throws the TS exceptions and std::bad_alloc.
JobOutcome computeSpectrogram(TSFILE& source, const SpectrumRequest& request, TSFILE& target,
                              const Progress& progress);
// The sample time becomes the hop, the start such that sample 1 lies in the middle of the first segment;
// columns are named after their frequencies.
void describeSpectrogram(TSFILE& source, const SpectrumRequest& request, TSFILE& target);

}  // namespace veltrac
