// Peaks and harmonics of a spectrum file.
#pragma once

#include <cstdint>
#include <vector>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"
#include "core/TSFILE.h"

namespace veltrac {

// A local maximum of a spectrum. Where its three bins are those of a tone, frequency and value are the
// tone's, found with the transform of the window in use wherever in the bin it lies: with every window, in dB
// or not, within a thousandth. Where they are not (a broad resonance, noise), they are those of the parabola
// through the three.
struct SpectrumPeak
{
    double frequency = 0.0;  // Hz
    double value = 0.0;      // as column 2 has it; of real and imaginary parts the magnitude
    std::uint32_t bin = 0;
};

// The `count` highest, highest first, of a spectrum that was computed by the request; none where the user
// cancels. Throw the TS exceptions.
std::vector<SpectrumPeak> findPeaks(TSFILE& spectrum, const SpectrumRequest& request, std::size_t count,
                                    const Progress& progress = {});
// The highest bin beside each multiple 1, 2, … of a frequency, up to the end of the spectrum.
std::vector<SpectrumPeak> findHarmonics(TSFILE& spectrum, const SpectrumRequest& request, double frequency,
                                        std::size_t count);

// Total harmonic distortion (IEC 61000-4-7): the root of the sum of the harmonics' powers, the 2nd to the
// 40th, over the amplitude of the first. NaN where there is no second one.
double harmonicDistortion(const std::vector<SpectrumPeak>& harmonics, const SpectrumRequest& request);

}  // namespace veltrac
