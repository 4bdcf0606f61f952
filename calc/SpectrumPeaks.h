// Peaks and harmonics of a spectrum file.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"

class TSFILE;

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
    // In degrees, that of a cosine at the first sample of the range; NaN of averages, which have none.
    double phase = std::numeric_limits<double>::quiet_NaN();
    double prominence = 0.0;  // calc/PeakSearch.h, in what value counts
};

// Which of the peaks are wanted.
struct PeakChoice
{
    std::size_t count = 10;        // the highest
    double leastProminence = 0.0;  // in what their values count: of levels in dB
    // Hz; of two peaks that are closer the lower one does not count, nor does it keep others away.
    double leastDistance = 0.0;
};

// The peaks of a spectrum that was computed by the request, highest first; none where the user cancels. One
// pass, and another one only where a great distance has taken thousands of peaks away; memory as that of a
// PeakSearch. Throw the TS exceptions.
std::vector<SpectrumPeak> findPeaks(TSFILE& spectrum, const SpectrumRequest& request,
                                    const PeakChoice& choice, const Progress& progress = {});
// The line at a frequency: a peak where one of the three bins around it is one, else the bin as it is.
SpectrumPeak lineAt(TSFILE& spectrum, const SpectrumRequest& request, double frequency);
// The highest bin beside each multiple 1, 2, … of a frequency, up to the end of the spectrum.
std::vector<SpectrumPeak> findHarmonics(TSFILE& spectrum, const SpectrumRequest& request, double frequency,
                                        std::size_t count);

// Total harmonic distortion (IEC 61000-4-7): the root of the sum of the harmonics' powers, the 2nd to the
// 40th, over the amplitude of the first. NaN where there is no second one.
double harmonicDistortion(const std::vector<SpectrumPeak>& harmonics, const SpectrumRequest& request);

}  // namespace veltrac
