#include "cli/FilterOptions.h"

#include <cctype>
#include <cmath>
#include <string>
#include <vector>

#include "cli/Options.h"
#include "cli/Verb.h"

namespace veltrac {

void FilterOptions::addTo(Options& options)
{
    std::vector<std::string> names;
    for (const FilterType& type : filterTypes()) {
        std::string name = type.entry;
        for (char& c : name)
            c = c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        names.push_back(std::move(name));
    }
    options.choice("--type", request.type, names, "The filter (default: butterworth-lp)");
    options.count("--order", m_order, 1, "Of the filter (default: 1)");
    options.number("--freq", request.freq0, "HZ", "The frequency, or the lower one of a band");
    options.number("--freq2", request.freq1, "HZ", "The upper frequency of a band");
    options.number("--ripple", request.rippleDb, "DB", "Of a Chebyshev filter, below 0");
    options.count("--points", m_points, 1, "Of the moving average");
    options.flag("--zero-phase", m_zeroPhase, "Forward and back: no delay, and the gain squared");
    options.flag("--start-settled", m_settled, "Begins in the steady state of the first value");
}

void FilterOptions::check()
{
    if (request.isMovingAverage() && (m_zeroPhase || m_settled))
        throw UsageError("a moving average delays nothing and has no state to settle");
    request.pass = m_zeroPhase ? FilterPass::ZeroPhase
                   : m_settled ? FilterPass::Settled
                               : FilterPass::FromZero;
    request.order = static_cast<int>(request.isMovingAverage() ? m_points : m_order);
    if (const std::string complaint = filterComplaint(request, HUGE_VAL); !complaint.empty())
        throw UsageError(complaint);
}

FidFilterPtr FilterOptions::designed(double samplingHz, const FidReports& reports) const
{
    if (const std::string complaint = filterComplaint(request, samplingHz); !complaint.empty())
        throw JobError(complaint);
    if (request.isMovingAverage())
        return nullptr;
    FidFilterPtr filter = designFilter(request, samplingHz);
    if (!filter)
        throw JobError(reports.text());
    return filter;
}

}  // namespace veltrac
