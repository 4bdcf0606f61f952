#include "calc/SegmentTransform.h"

#include "calc/RealTransform.h"
#include "calc/SpectrumPlan.h"
#include "calc/WindowShape.h"

namespace veltrac {

SegmentTransform::SegmentTransform(TSFILE& file, const SpectrumRequest& request)
    : m_reader(file, request), m_from(request.from), m_trend(request.trend)
{
    const SpectrumPlan plan = planSpectrum(request);
    m_hop = segmentHop(plan.used, request.overlapPercent);
    m_bins = plan.bins;
    m_weights.resize(plan.used);
    WindowShape window(request.window, plan.used);
    window.fill(0, m_weights);
    m_sum = window.sum();
    m_squares = window.squares();
    m_samples.resize(plan.length);
    m_re.resize(realFftRoom(static_cast<int>(plan.length)));
    m_im.resize(m_re.size());
}

double SegmentTransform::load(std::uint32_t s)
{
    const std::span<double> samples = std::span(m_samples).first(m_weights.size());
    m_reader.read(static_cast<std::uint32_t>(m_from + std::uint64_t{s} * m_hop), samples, {});
    double mean = 0.0;
    removeTrend(samples, m_trend, mean, {});
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] *= m_weights[i];
    realFft(static_cast<int>(m_samples.size()), m_samples.data(), m_re.data(), m_im.data(), {});
    return mean;
}

double SegmentTransform::independent(std::uint32_t count) const
{
    const auto n = static_cast<double>(count);
    double shared = 1.0;
    for (std::uint64_t shift = 1; shift < count && shift * m_hop < m_weights.size(); ++shift) {
        double sum = 0.0;
        for (std::size_t i = shift * m_hop; i < m_weights.size(); ++i)
            sum += m_weights[i] * m_weights[i - shift * m_hop];
        const double part = sum / m_squares;
        shared += 2.0 * (n - static_cast<double>(shift)) / n * part * part;
    }
    return n / shared;
}

}  // namespace veltrac
