#include "calc/BandPower.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "calc/SpectrumPlan.h"
#include "core/ColumnCopy.h"
#include "core/TSFILE.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kBinsOfARun = 4096;
constexpr std::uint32_t kDensityColumn = 2;
constexpr double kOnABin = 1e-6;  // of the distance of bins

}  // namespace

bool BandPower::isDensity(const SpectrumRequest& request)
{
    return request.result == SpectrumResult::PowerDensity ||
           request.result == SpectrumResult::AmplitudeDensity;
}

// A bin without any power has no level.
double BandPower::powerOf(float value) const
{
    if (m_request.decibel)
        return std::isnan(value) ? 0.0 : std::pow(10.0, static_cast<double>(value) / 10.0);
    const auto density = static_cast<double>(value);
    return m_request.result == SpectrumResult::PowerDensity ? density : density * density;
}

double BandPower::sumOf(TSFILE& spectrum, std::uint32_t first, std::uint32_t last) const
{
    double sum = 0.0;
    std::vector<float> values(last - first + 1);
    spectrum.readColumn(kDensityColumn, first, values);
    for (const float value : values)
        sum += powerOf(value);
    return sum;
}

JobOutcome BandPower::build(TSFILE& spectrum, const SpectrumRequest& request, const Progress& progress)
{
    m_request = request;
    m_resolution = planSpectrum(request).resolution;
    m_runs.clear();
    std::vector<double> runs;
    for (std::uint32_t first = 1; first <= spectrum.samples(); first += kBinsOfARun) {
        runs.push_back(sumOf(spectrum, first, std::min(spectrum.samples(), first + kBinsOfARun - 1)));
        if (!goesOn(progress, first, spectrum.samples()))
            return JobOutcome::Cancelled;
    }
    m_runs = std::move(runs);
    return JobOutcome::Done;
}

BandPower::Sum BandPower::between(TSFILE& spectrum, double from, double to) const
{
    const double low = std::max(1.0, std::ceil(std::min(from, to) / m_resolution - kOnABin));
    const double high =
        std::min<double>(spectrum.samples(), std::floor(std::max(from, to) / m_resolution + kOnABin));
    if (!isBuilt() || !(low <= high))
        return {};
    const auto first = static_cast<std::uint32_t>(low);
    const auto last = static_cast<std::uint32_t>(high);
    double sum = 0.0;
    for (std::uint32_t bin = first; bin <= last;) {
        const std::uint32_t run = (bin - 1) / kBinsOfARun;
        const std::uint32_t end = std::min(last, (run + 1) * kBinsOfARun);
        const bool isWhole = bin == run * kBinsOfARun + 1 && end == (run + 1) * kBinsOfARun;
        sum += isWhole ? m_runs[run] : sumOf(spectrum, bin, end);
        bin = end + 1;
    }
    return {last - first + 1, first * m_resolution, last * m_resolution, sum * m_resolution};
}

}  // namespace veltrac
