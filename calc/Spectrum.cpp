#include "calc/Spectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>

#include "calc/OctaveBands.h"
#include "calc/RealTransform.h"
#include "calc/SegmentTransform.h"
#include "calc/SpectrumSamples.h"
#include "calc/SpectrumScale.h"
#include "calc/WindowShape.h"
#include "core/ColumnCopy.h"
#include "core/TSFILE.h"

namespace veltrac {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kDegrees = 180.0 / kPi;

// Rows for the target, handed over in runs.
class RowWriter
{
public:
    RowWriter(TSFILE& target, double step) : m_target(target), m_columns(target.columns()), m_step(step) {}

    void add(double second, double third)
    {
        const std::size_t bin = m_written + m_rows.size() / m_columns + 1;
        m_rows.push_back(static_cast<float>(static_cast<double>(bin) * m_step));
        m_rows.push_back(static_cast<float>(second));
        if (m_columns > 2)
            m_rows.push_back(static_cast<float>(third));
        if (m_rows.size() >= std::size_t{kRunSamples} * m_columns)
            flush();
    }
    void flush()
    {
        const auto count = static_cast<std::uint32_t>(m_rows.size() / m_columns);
        m_target.writeRows(m_written + 1, count, m_rows.data());
        m_written += count;
        m_rows.clear();
    }

private:
    TSFILE& m_target;
    std::uint32_t m_columns;
    double m_step;
    std::uint32_t m_written = 0;
    std::vector<float> m_rows;
};

// Samples of one transform and its outcome: 16 bytes a sample, 24 where their number is odd.
struct Transform
{
    // Nothing is written yet: the system takes a second to hand out the memory of a long range, which must
    // not come at once.
    explicit Transform(std::uint32_t samples)
        : length(samples),
          x(std::make_unique_for_overwrite<double[]>(samples)),
          re(std::make_unique_for_overwrite<double[]>(realFftRoom(static_cast<int>(samples)))),
          im(std::make_unique_for_overwrite<double[]>(realFftRoom(static_cast<int>(samples))))
    {
    }
    std::uint32_t length;
    std::unique_ptr<double[]> x, re, im;

    // The first `used` samples, for which all others are 0.
    std::span<double> samples(std::uint32_t used)
    {
        std::fill(x.get() + used, x.get() + length, 0.0);
        return {x.get(), used};
    }
    bool run(const Progress& progress)
    {
        return realFft(static_cast<int>(length), x.get(), re.get(), im.get(), progress);
    }
    double power(std::size_t bin) const { return re[bin] * re[bin] + im[bin] * im[bin]; }
};

// The samples of the range in its transform, without trend and weighed.
JobOutcome loadRange(TSFILE& source, const SpectrumRequest& request, std::span<double> samples,
                     WindowShape& window, double& mean, const Progress& progress)
{
    if (SampleReader(source, request).read(request.from, samples, partOf(progress, 0, 60)) ==
            JobOutcome::Cancelled ||
        removeTrend(samples, request.trend, mean, partOf(progress, 60, 80)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    std::vector<double> weights(std::min<std::size_t>(kRunSamples, samples.size()));
    for (std::size_t done = 0; done < samples.size();) {
        const std::size_t count = std::min(weights.size(), samples.size() - done);
        window.fill(static_cast<std::uint32_t>(done), std::span(weights).first(count));
        for (std::size_t i = 0; i < count; ++i)
            samples[done + i] *= weights[i];
        done += count;
        if (!goesOn(partOf(progress, 80, 100), done, samples.size()))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

// Both of these hand the bins to `rows` in turn.
template <typename Rows>
JobOutcome wholeRange(TSFILE& source, const SpectrumRequest& request, const SpectrumPlan& plan, Rows& rows,
                      double& mean, const Progress& progress)
{
    Transform transform(plan.length);
    WindowShape window(request.window, plan.used);
    if (loadRange(source, request, transform.samples(plan.used), window, mean, partOf(progress, 0, 35)) ==
            JobOutcome::Cancelled ||
        !transform.run(partOf(progress, 35, 70)))
        return JobOutcome::Cancelled;
    // Giving so much memory back takes its time, too: not all at once.
    transform.x.reset();

    const SpectrumScale scale(request, window.sum(), window.squares());
    for (std::uint32_t k = 1; k <= plan.bins; ++k) {
        const bool atNyquist = 2 * std::uint64_t{k} == plan.length;
        const double re = transform.re[k];
        const double im = transform.im[k];
        if (request.result == SpectrumResult::RealImaginary) {
            const double c = (atNyquist ? 1.0 : 2.0) * scale.amplitude();
            rows.add(c * re, c * im);
        } else {
            rows.add(scale(transform.power(k), atNyquist), std::atan2(im, re) * kDegrees);
        }
        if (k % kRunSamples == 0 && !goesOn(partOf(progress, 70, 100), k, plan.bins))
            return JobOutcome::Cancelled;
    }
    rows.flush();
    return JobOutcome::Done;
}

template <typename Rows>
JobOutcome segments(TSFILE& source, const SpectrumRequest& request, const SpectrumPlan& plan, Rows& rows,
                    double& mean, const Progress& progress)
{
    SegmentTransform transform(source, request);
    std::vector<double> power(plan.bins + 1, 0.0);
    double sum = 0.0;
    for (std::uint32_t s = 0; s < plan.segments; ++s) {
        sum += transform.load(s);
        if (!goesOn(progress, s + 1, plan.segments))
            return JobOutcome::Cancelled;
        const std::span<const double> re = transform.re();
        const std::span<const double> im = transform.im();
        for (std::uint32_t k = 1; k <= plan.bins; ++k)
            power[k] += re[k] * re[k] + im[k] * im[k];
    }
    mean = sum / plan.segments;

    const SpectrumScale scale(request, transform.weightSum(), transform.weightSquares());
    for (std::uint32_t k = 1; k <= plan.bins; ++k)
        rows.add(scale(power[k] / plan.segments, 2 * std::uint64_t{k} == plan.length), 0.0);
    rows.flush();
    return JobOutcome::Done;
}

template <typename Rows>
JobOutcome transformInto(Rows& rows, TSFILE& source, const SpectrumRequest& request, double& mean,
                         const Progress& progress)
{
    const SpectrumPlan plan = planSpectrum(request);
    return request.averaged ? segments(source, request, plan, rows, mean, progress)
                            : wholeRange(source, request, plan, rows, mean, progress);
}

}  // namespace

JobOutcome computeSpectrum(TSFILE& source, const SpectrumRequest& request, TSFILE& target, double& mean,
                           const Progress& progress)
{
    if (!hasBands(request.result)) {
        RowWriter rows(target, planSpectrum(request).resolution);
        return transformInto(rows, source, request, mean, progress);
    }
    OctaveSums bands(target, request);
    SpectrumRequest density = request;
    density.result = SpectrumResult::PowerDensity;
    density.decibel = false;
    return transformInto(bands, source, density, mean, progress);
}

}  // namespace veltrac
