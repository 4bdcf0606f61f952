// What Ts-FFT computes of its range.
#pragma once

namespace veltrac {

// In the order of the box "Method".
enum class SpectrumMethod { WholeRange, AveragedSegments, Correlation, Spectrogram };

}  // namespace veltrac
