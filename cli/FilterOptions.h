// A filter as the options of a verb describe it.
#pragma once

#include <cstdint>

#include "filter/FilterRun.h"
#include "filter/FilterTypes.h"

namespace veltrac {

class Options;

struct FilterOptions
{
    FilterRequest request{kButterworthLowPass};

    void addTo(Options& options);
    // After parsing. Throws UsageError for what no sampling frequency can heal.
    void check();
    // Null for the moving average, which is no filter of the library. Throws JobError; what the library says
    // of a filter that it has designed stands in `reports`.
    FidFilterPtr designed(double samplingHz, const FidReports& reports) const;

private:
    static constexpr int kButterworthLowPass = 5;

    std::uint32_t m_order = 1;
    std::uint32_t m_points = 1;
    bool m_zeroPhase = false;
    bool m_settled = false;
};

}  // namespace veltrac
