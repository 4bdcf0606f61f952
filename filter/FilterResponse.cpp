#include "filter/FilterResponse.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

#include "filter/FidRunner.h"
#include "filter/ZeroPhase.h"

namespace veltrac {

double groupDelay(const FidFilter* filter, double frequency)
{
    const std::complex<double> back = std::polar(1.0, -2.0 * std::numbers::pi * frequency);
    double delay = 0.0;
    for (const FidFilter* block = filter; block->count > 0; block = block->next()) {
        std::complex<double> value;
        std::complex<double> slope;
        double size = 0.0;
        for (int k = block->count - 1; k >= 0; --k) {
            const double c = block->coefficients()[k];
            value = value * back + c;
            slope = slope * back + k * c;
            size += std::fabs(c);
        }
        if (!(std::abs(value) > size * std::numeric_limits<double>::epsilon()))
            return std::numeric_limits<double>::quiet_NaN();
        delay += (block->type == 'I' ? -1.0 : 1.0) * (slope / value).real();
    }
    return delay;
}

std::vector<float> groupDelays(const FidFilter* filter, const std::vector<double>& frequencies,
                               double samplingHz)
{
    std::vector<float> delays;
    delays.reserve(frequencies.size());
    for (const double hz : frequencies)
        delays.push_back(static_cast<float>(groupDelay(filter, hz / samplingHz) / samplingHz));
    return delays;
}

FilterResponses responsesOf(const FidFilter* filter, double samplingHz, FilterPass pass)
{
    const bool both = pass == FilterPass::ZeroPhase;
    const std::uint32_t ringing = std::min(std::max(ringingOf(filter), 2U), kMostShown / 2);
    // A little of what comes before shows that the answer waits for it.
    const std::size_t before = both ? ringing : 1 + ringing / 50;
    std::vector<double> impulse(before + 1 + ringing, 0.0);
    impulse[before] = 1.0;
    FidRunner(filter).run(impulse);
    if (both) {
        std::reverse(impulse.begin(), impulse.end());
        FidRunner(filter).run(impulse);
        std::reverse(impulse.begin(), impulse.end());
    }
    FilterResponses responses;
    double sum = 0.0;
    for (std::size_t i = 0; i < impulse.size(); ++i) {
        sum += impulse[i];
        responses.seconds.push_back((static_cast<double>(i) - static_cast<double>(before)) / samplingHz);
        responses.impulse.push_back(static_cast<float>(impulse[i]));
        responses.step.push_back(static_cast<float>(sum));
    }
    return responses;
}

}  // namespace veltrac
