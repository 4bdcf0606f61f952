#include "filter/FilterNumbers.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/NumberTexts.h"

namespace veltrac {

namespace {

constexpr int kFrequencyDigits = 6;
constexpr int kValueDigits = 4;

std::string hertz(double frequency)
{
    return generalNumber(frequency, kFrequencyDigits) + " Hz";
}

}  // namespace

std::vector<std::pair<std::string, std::string>> filterNumbers(const FilterCharacteristic& c,
                                                               const std::vector<float>& delays,
                                                               const FilterResponses& responses)
{
    std::vector<std::pair<std::string, std::string>> rows;
    for (const double frequency : c.halfPower)
        rows.emplace_back("\u22123.01 dB", hertz(frequency));
    const auto top = std::max_element(c.gain.begin(), c.gain.end()) - c.gain.begin();
    const auto at = static_cast<std::size_t>(top);
    std::string decibels = fixedNumber(static_cast<double>(c.gainDb[at]), 2);
    if (decibels == "-0.00")
        decibels.erase(0, 1);
    rows.emplace_back("Greatest gain", decibels + " dB at " + hertz(c.frequencies[at]));

    std::size_t slowest = c.gain.size();
    for (std::size_t i = 0; i < delays.size(); ++i)
        if (static_cast<double>(c.gain[i]) >= std::numbers::sqrt2 / 2 && std::isfinite(delays[i]) &&
            (slowest == c.gain.size() || delays[i] > delays[slowest]))
            slowest = i;
    if (slowest < delays.size())
        rows.emplace_back("Greatest delay where it passes",
                          generalNumber(static_cast<double>(delays[slowest]), kValueDigits) + " s at " +
                              hertz(c.frequencies[slowest]));

    const std::vector<float>& step = responses.step;
    const auto end = static_cast<double>(step.back());
    const auto [least, greatest] = std::minmax_element(step.begin(), step.end());
    const double height =
        std::max(std::fabs(static_cast<double>(*least)), std::fabs(static_cast<double>(*greatest)));
    if (std::fabs(end) > 0.01 * height)
        rows.emplace_back(
            "Overshoot of a step",
            generalNumber(100.0 * std::max(0.0, (end > 0.0 ? static_cast<double>(*greatest) - end
                                                           : end - static_cast<double>(*least)) /
                                                    std::fabs(end)),
                          3) +
                " %");
    std::size_t last = step.size();
    while (last > 0 && std::fabs(static_cast<double>(step[last - 1]) - end) <= 0.01 * height)
        --last;
    if (last < step.size())
        rows.emplace_back("Step at rest within 1 %",
                          generalNumber(responses.seconds[last], kValueDigits) + " s");
    return rows;
}

}  // namespace veltrac
