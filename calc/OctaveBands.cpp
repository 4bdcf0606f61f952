#include "calc/OctaveBands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "calc/SpectrumScale.h"
#include "core/TSFILE.h"

namespace veltrac {

namespace {

constexpr double kReference = 1000.0;  // Hz
constexpr double kOctave = 0.3;        // lg G
constexpr double kLeastBins = 3.0;
constexpr double kRounding = 1e-9;
// The names of ten steps of a tenth of a decade (Annex E).
constexpr std::array kNominal = {1.0, 1.25, 1.6, 2.0, 2.5, 3.15, 4.0, 5.0, 6.3, 8.0};

double nominalOf(int tenths)
{
    const int decade = static_cast<int>(std::floor(tenths / 10.0));
    return kReference * std::pow(10.0, decade) * kNominal[static_cast<std::size_t>(tenths - 10 * decade)];
}

}  // namespace

std::vector<OctaveBand> octaveBands(int b, double resolution, double highest)
{
    std::vector<OctaveBand> bands;
    if (!(resolution > 0.0) || !(highest > 0.0))
        return bands;
    const double half = std::pow(10.0, kOctave / (2.0 * b));
    const double leastMiddle = kLeastBins * resolution / (half - 1.0 / half) * (1.0 - kRounding);
    const double mostMiddle = highest / half * (1.0 + kRounding);
    const int tenths = 3 / b;  // of a decade from a band to the next
    const auto first = static_cast<int>(std::ceil(std::log10(leastMiddle / kReference) * 10.0 / tenths));
    const auto last = static_cast<int>(std::floor(std::log10(mostMiddle / kReference) * 10.0 / tenths));
    for (int x = first; x <= last; ++x) {
        const double middle = kReference * std::pow(10.0, x * tenths / 10.0);
        bands.push_back({middle, nominalOf(x * tenths), middle / half, middle * half});
    }
    return bands;
}

std::vector<OctaveBand> octaveBands(const SpectrumRequest& request)
{
    const SpectrumPlan plan = planSpectrum(request);
    if (!hasBands(request.result))
        return {};
    return octaveBands(request.result == SpectrumResult::OctaveBands ? 1 : 3, plan.resolution, plan.highest);
}

std::uint32_t spectrumRows(const SpectrumRequest& request)
{
    return hasBands(request.result) ? static_cast<std::uint32_t>(octaveBands(request).size())
                                    : planSpectrum(request).bins;
}

OctaveSums::OctaveSums(TSFILE& target, const SpectrumRequest& request)
    : m_target(target),
      m_bands(octaveBands(request)),
      m_power(m_bands.size(), 0.0),
      m_resolution(planSpectrum(request).resolution),
      m_decibel(request.decibel)
{
}

void OctaveSums::add(double density, double /*phase*/)
{
    ++m_bin;
    const double from = (m_bin - 0.5) * m_resolution;
    const double to = (m_bin + 0.5) * m_resolution;
    while (m_first < m_bands.size() && m_bands[m_first].to <= from)
        ++m_first;
    for (std::size_t i = m_first; i < m_bands.size() && m_bands[i].from < to; ++i)
        m_power[i] += density * (std::min(to, m_bands[i].to) - std::max(from, m_bands[i].from));
}

void OctaveSums::flush()
{
    constexpr std::size_t kColumns = 5;
    std::vector<float> rows;
    rows.reserve(kColumns * m_bands.size());
    for (std::size_t i = 0; i < m_bands.size(); ++i) {
        const double value = m_decibel ? SpectrumScale::level(m_power[i], 10.0) : std::sqrt(m_power[i]);
        for (const double cell :
             {m_bands[i].middle, value, m_bands[i].from, m_bands[i].to, m_bands[i].nominal})
            rows.push_back(static_cast<float>(cell));
    }
    m_target.writeRows(1, static_cast<std::uint32_t>(m_bands.size()), rows.data());
}

}  // namespace veltrac
