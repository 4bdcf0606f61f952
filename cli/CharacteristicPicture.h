// What a filter does, as a picture: the pages of the window of its characteristic.
#pragma once

#include <optional>

#include "cli/FilterOptions.h"
#include "core/Plot2D.h"
#include "share/PsParameters.h"

namespace veltrac {

class Options;
struct VerbJob;

class CharacteristicPicture
{
public:
    void addTo(Options& options);
    // After parsing. Throws UsageError.
    void check(bool hasFiles);
    bool isWanted() const noexcept { return m_page.has_value(); }
    // Whether it is drawn of the options alone.
    bool needsNoFile() const noexcept { return isWanted() && m_rate.has_value(); }
    // At the sampling frequency of the job's source, if there is one. Throws JobError.
    Plot2D plotOf(VerbJob& job, bool logarithmic) const;
    // Once the plot's looks are set: circles become round where it is drawn on that paper.
    void fitTo(Plot2D& plot, const PsParameters& parameters) const;

private:
    FilterOptions m_filter;
    std::optional<int> m_page;
    std::optional<double> m_rate;
    bool m_decibels = false;
};

}  // namespace veltrac
