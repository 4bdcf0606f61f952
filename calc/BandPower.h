// The power of a density between two frequencies, as quickly as cursors move.
#pragma once

#include <cstdint>
#include <vector>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

class BandPower
{
public:
    struct Sum
    {
        std::uint32_t bins = 0;
        double from = 0.0;  // Hz, the first and the last bin
        double to = 0.0;
        double power = 0.0;  // the densities of the bins times their distance
    };

    // Whether it is a density that the request asks for.
    static bool isDensity(const SpectrumRequest& request);

    // Adds up the spectrum of such a request, once. After a cancel there are no sums. Throws the TS
    // exceptions, as between() does.
    JobOutcome build(TSFILE& spectrum, const SpectrumRequest& request, const Progress& progress);
    bool isBuilt() const { return !m_runs.empty(); }
    void clear() { m_runs.clear(); }

    // The bins from one frequency to the other, both included, in either order; none where none lies there.
    Sum between(TSFILE& spectrum, double from, double to) const;

private:
    double powerOf(float value) const;
    double sumOf(TSFILE& spectrum, std::uint32_t first, std::uint32_t last) const;

    SpectrumRequest m_request;
    double m_resolution = 1.0;
    std::vector<double> m_runs;  // densities of whole runs of bins
};

}  // namespace veltrac
