// Octave and third-octave bands of a spectrum.
//
// IEC 61260-1:2014, "Electroacoustics - Octave-band and fractional-octave-band filters", in the system of
// base ten: with the octave ratio G = 10^(3/10) band x of 1/b octave has its middle at 1000 Hz * G^(x/b) and
// its edges at G^(-1/2b) and G^(1/2b) times that.
#pragma once

#include <cstdint>
#include <vector>

#include "calc/SpectrumPlan.h"

class TSFILE;

namespace veltrac {

// Frequencies in Hz.
struct OctaveBand
{
    double middle = 0.0;
    double nominal = 0.0;  // as the band is called: 31.5, 63, 125, …
    double from = 0.0;     // edges
    double to = 0.0;
};

// The bands of 1/b octave, b 1 or 3, in which a spectrum has three bins at least, up to the last one that
// ends below the highest frequency.
std::vector<OctaveBand> octaveBands(int b, double resolution, double highest);
// Those of a request whose result is one of bands; none of another.
std::vector<OctaveBand> octaveBands(const SpectrumRequest& request);
// Rows of a spectrum's target: its bins, or its bands.
std::uint32_t spectrumRows(const SpectrumRequest& request);

// Adds the bins of a power density up into the bands; a bin that lies across an edge counts on both sides by
// its parts.
class OctaveSums
{
public:
    // Of the request's result; `target` has a sample for each band.
    OctaveSums(TSFILE& target, const SpectrumRequest& request);

    // The density of bin 1, 2, …; a phase has no band.
    void add(double density, double phase);
    // Writes a row for each band: "Time", which holds its middle, then the root of its power (in decibels
    // 10 lg of it, NaN where there is none), its edges and its nominal frequency.
    void flush();

private:
    TSFILE& m_target;
    std::vector<OctaveBand> m_bands;
    std::vector<double> m_power;
    double m_resolution;
    bool m_decibel;
    std::uint32_t m_bin = 0;
    std::size_t m_first = 0;  // the bands before it are full
};

}  // namespace veltrac
