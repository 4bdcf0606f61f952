// Peaks and harmonics of a spectrum file.
#pragma once

#include <cstdint>
#include <vector>

#include "calc/SpectrumRequest.h"
#include "core/TSFILE.h"

namespace veltrac {

// A local maximum of a spectrum, refined by the parabola through its three bins. The flat top window needs
// that for the frequency alone: its highest bin is the amplitude already.
struct SpectrumPeak
{
    double frequency = 0.0;  // Hz
    double value = 0.0;
    std::uint32_t bin = 0;
};
// The `count` highest, highest first, of a column (from 1) of a spectrum file.
std::vector<SpectrumPeak> findPeaks(TSFILE& spectrum, std::uint32_t column, std::size_t count,
                                    SpectrumWindow window);
// The highest bin beside each multiple 1, 2, … of a frequency, up to the end of the spectrum.
std::vector<SpectrumPeak> findHarmonics(TSFILE& spectrum, std::uint32_t column, double frequency,
                                        std::size_t count, SpectrumWindow window);

}  // namespace veltrac
