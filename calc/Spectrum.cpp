#include "calc/Spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

#include "calc/mixfft.h"
#include "core/TSFILE.h"

namespace {

constexpr std::uint32_t kRun = 1U << 15;  // samples a step
constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

// Calls see(index, value) for samples first to last, the index from 0.
template <typename See>
JobOutcome readRange(const ColumnReader& read, std::uint32_t first, std::uint32_t count,
                     const Progress& progress, See see)
{
    std::vector<float> run(std::min(kRun, count));
    for (std::uint32_t done = 0; done < count;) {
        const std::span<float> part(run.data(), std::min<std::size_t>(run.size(), count - done));
        read(first + done, part);
        for (std::size_t i = 0; i < part.size(); ++i)
            see(done + i, part[i]);
        done += static_cast<std::uint32_t>(part.size());
        if (!goesOn(progress, done, count))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

// The part from `from` to `to` hundredths of a longer job.
Progress part(const Progress& whole, std::uint64_t from, std::uint64_t to)
{
    return [&whole, from, to](std::uint64_t done, std::uint64_t total) {
        return goesOn(whole, from * total + (to - from) * done, 100 * total);
    };
}

// Replaces what is missing in a stretch of a longer range, and looks beyond its ends for neighbours.
class GapFiller
{
public:
    GapFiller(const ColumnReader& read, std::uint32_t rangeFirst, std::uint32_t rangeLast)
        : m_read(read), m_first(rangeFirst), m_last(rangeLast)
    {
    }

    // values[i] is sample `from` + i.
    void fill(std::span<double> values, std::uint32_t from) const
    {
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (std::isfinite(values[i]))
                continue;
            std::size_t end = i;
            while (end < values.size() && !std::isfinite(values[end]))
                ++end;
            const auto before = i > 0 ? Known{1.0, values[i - 1]} : search(from, -1);
            const auto after =
                end < values.size() ? Known{1.0, values[end]} : search(from + values.size() - 1, 1);
            join(values.subspan(i, end - i), before, after);
            i = end;
        }
    }

private:
    struct Known
    {
        double distance;  // samples from the gap's nearest end
        std::optional<double> value;
    };

    Known search(std::uint64_t from, int step) const
    {
        auto sample = static_cast<std::int64_t>(from);
        for (double distance = 1.0;; ++distance) {
            sample += step;
            if (sample < m_first || sample > m_last)
                return {distance, {}};
            float v = 0.0F;
            m_read(static_cast<std::uint32_t>(sample), std::span(&v, 1));
            if (std::isfinite(v))
                return {distance, v};
        }
    }

    static void join(std::span<double> gap, const Known& before, const Known& after)
    {
        const double left = before.value.value_or(after.value.value_or(0.0));
        const double right = after.value.value_or(left);
        const double width = before.distance + after.distance + static_cast<double>(gap.size()) - 1.0;
        for (std::size_t i = 0; i < gap.size(); ++i)
            gap[i] = left + (right - left) * (before.distance + static_cast<double>(i)) / width;
    }

    const ColumnReader& m_read;
    std::uint32_t m_first;
    std::uint32_t m_last;
};

}  // namespace

JobOutcome scanRange(const ColumnReader& read, std::uint32_t first, std::uint32_t last,
                     const Progress& progress, RangeContents& out)
{
    RangeContents found;
    long double sum = 0.0L;
    const std::uint32_t count = last - first + 1;
    const JobOutcome outcome = readRange(read, first, count, progress, [&](std::size_t, float v) {
        if (std::isfinite(v))
            sum += v;
        else
            ++found.missing;
    });
    const std::uint32_t present = count - found.missing;
    found.mean = present == 0 ? kMissing : static_cast<double>(sum / present);
    if (outcome == JobOutcome::Done)
        out = found;
    return outcome;
}

void removeTrend(Trend trend, std::span<double> values)
{
    if (trend == Trend::Nothing || values.empty())
        return;
    // About the middle index, where mean and slope do not disturb each other.
    const long double count = static_cast<long double>(values.size());
    const long double middle = (count - 1.0L) / 2.0L;
    long double sum = 0.0L;
    long double moment = 0.0L;
    for (std::size_t i = 0; i < values.size(); ++i) {
        sum += values[i];
        moment += (static_cast<long double>(i) - middle) * values[i];
    }
    const long double mean = sum / count;
    const bool line = trend == Trend::Line && values.size() > 1;
    const long double slope = line ? moment * 12.0L / (count * (count * count - 1.0L)) : 0.0L;
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<double>(values[i] - mean - slope * (static_cast<long double>(i) - middle));
}

JobOutcome Spectrum::compute(const ColumnReader& read, const SpectrumRequest& request,
                             const SpectrumPlan& plan, const Progress& progress)
{
    *this = Spectrum();
    m_request = request;
    m_plan = plan;
    return request.method == SpectrumMethod::WholeRange ? transformWhole(read, progress)
                                                        : averageSegments(read, progress);
}

JobOutcome Spectrum::transformWhole(const ColumnReader& read, const Progress& progress)
{
    const auto n = static_cast<std::size_t>(m_plan.length);
    std::vector<double> x(n);
    const std::vector<double> zeros(n);
    m_re.resize(n);
    m_im.resize(n);
    const auto readDone =
        readRange(read, m_request.first, m_plan.weighted, part(progress, 0, 30),
                  [&](std::size_t i, float v) { x[i] = static_cast<double>(v); });
    if (readDone == JobOutcome::Cancelled)
        return readDone;
    const std::span<double> samples(x.data(), m_plan.weighted);
    GapFiller(read, m_request.first, m_request.last).fill(samples, m_request.first);
    removeTrend(m_request.remove, samples);
    m_sums = applyWindow(m_request.window, samples);
    const bool whole = mixedRadixFft(m_plan.length, x.data(), zeros.data(), m_re.data(), m_im.data(),
                                     part(progress, 30, 100));
    return whole ? JobOutcome::Done : JobOutcome::Cancelled;
}

JobOutcome Spectrum::averageSegments(const ColumnReader& read, const Progress& progress)
{
    const auto n = static_cast<std::size_t>(m_plan.length);
    const std::vector<double> zeros(n);
    std::vector<double> x(n);
    std::vector<double> re(n);
    std::vector<double> im(n);
    m_mean.assign(n / 2 + 1, 0.0);
    const GapFiller gaps(read, m_request.first, m_request.last);
    std::vector<float> run(m_plan.weighted);
    for (std::uint32_t segment = 0; segment < m_plan.segments; ++segment) {
        const std::uint32_t first = m_request.first + segment * m_plan.hop;
        const std::span<double> samples(x.data(), m_plan.weighted);
        read(first, run);
        std::copy(run.begin(), run.end(), samples.begin());
        gaps.fill(samples, first);
        removeTrend(m_request.remove, samples);
        m_sums = applyWindow(m_request.window, samples);
        mixedRadixFft(m_plan.length, x.data(), zeros.data(), re.data(), im.data());
        for (std::size_t k = 0; k < m_mean.size(); ++k)
            m_mean[k] += (re[k] * re[k] + im[k] * im[k]) / m_plan.segments;
        if (!goesOn(progress, segment + 1, m_plan.segments))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

bool Spectrum::isMirrorless(std::uint32_t bin) const
{
    return 2 * static_cast<std::uint64_t>(bin) == static_cast<std::uint64_t>(m_plan.length);
}

double Spectrum::scale(std::uint32_t bin) const
{
    return (isMirrorless(bin) ? 1.0 : 2.0) / m_sums.first;
}

double Spectrum::squared(std::uint32_t bin) const
{
    return hasPhase() ? m_re[bin] * m_re[bin] + m_im[bin] * m_im[bin] : m_mean[bin];
}

double Spectrum::value(std::uint32_t bin) const
{
    const double density = (isMirrorless(bin) ? 1.0 : 2.0) * squared(bin) * m_plan.dt / m_sums.second;
    const double amplitude = scale(bin) * std::sqrt(squared(bin));
    double v = amplitude;
    switch (m_request.kind) {
        case SpectrumKind::Amplitude:
        case SpectrumKind::Complex:
            break;
        case SpectrumKind::RmsAmplitude:
            v = isMirrorless(bin) ? amplitude : amplitude * (std::numbers::sqrt2 / 2.0);
            break;
        case SpectrumKind::PowerDensity:
            v = density;
            break;
        case SpectrumKind::AmplitudeDensity:
            v = std::sqrt(density);
            break;
    }
    if (!m_request.decibel || m_request.kind == SpectrumKind::Complex)
        return v;
    const double factor = m_request.kind == SpectrumKind::PowerDensity ? 10.0 : 20.0;
    return v > 0.0 ? factor * std::log10(v) : kMissing;
}

double Spectrum::phase(std::uint32_t bin) const
{
    return std::atan2(m_im[bin], m_re[bin]) * 180.0 / std::numbers::pi;
}

double Spectrum::real(std::uint32_t bin) const
{
    return scale(bin) * m_re[bin];
}

double Spectrum::imaginary(std::uint32_t bin) const
{
    return scale(bin) * m_im[bin];
}

std::uint32_t columnsOf(const Spectrum& spectrum)
{
    return spectrum.hasPhase() ? 3 : 2;
}

JobOutcome writeSpectrum(const Spectrum& spectrum, TSFILE& file, const Progress& progress)
{
    constexpr std::uint32_t kRows = 4096;
    const bool complex = spectrum.request().kind == SpectrumKind::Complex;
    const std::uint32_t columns = columnsOf(spectrum);
    std::vector<float> rows;
    rows.reserve(std::size_t{kRows} * columns);
    for (std::uint32_t k = 1; k <= spectrum.bins(); ++k) {
        rows.push_back(static_cast<float>(spectrum.frequency(k)));
        rows.push_back(static_cast<float>(complex ? spectrum.real(k) : spectrum.value(k)));
        if (columns == 3)
            rows.push_back(static_cast<float>(complex ? spectrum.imaginary(k) : spectrum.phase(k)));
        const auto held = static_cast<std::uint32_t>(rows.size() / columns);
        if (held < kRows && k < spectrum.bins())
            continue;
        file.writeRows(k - held + 1, held, rows.data());
        rows.clear();
        if (!goesOn(progress, k, spectrum.bins()))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

namespace {

// The top of the parabola through a bin and its neighbours. In decibels, as the main lobes of the windows are
// nearly parabolas there.
SpectrumPeak refined(const Spectrum& spectrum, std::uint32_t bin)
{
    const bool isDecibel = spectrum.request().decibel && spectrum.request().kind != SpectrumKind::Complex;
    std::array<double, 3> v = {spectrum.value(bin - 1), spectrum.value(bin), spectrum.value(bin + 1)};
    const SpectrumPeak plain = {spectrum.frequency(bin), v[1]};
    if (!isDecibel)
        for (double& value : v)
            value = std::log(value);
    const double bend = v[0] - 2.0 * v[1] + v[2];
    if (!std::isfinite(bend) || !(bend < 0.0))
        return plain;
    const double shift = 0.5 * (v[0] - v[2]) / bend;
    const double top = v[1] - 0.25 * (v[0] - v[2]) * shift;
    return {spectrum.frequency(bin + shift), isDecibel ? top : std::exp(top)};
}

}  // namespace

std::vector<SpectrumPeak> highestPeaks(const Spectrum& spectrum, std::size_t count)
{
    // The lowest of the kept ones first, so that most bins are turned away by one comparison.
    std::vector<std::pair<double, std::uint32_t>> kept;
    const auto lower = [](const auto& a, const auto& b) { return a.first > b.first; };
    for (std::uint32_t k = 2; k + 1 <= spectrum.bins(); ++k) {
        const double v = spectrum.value(k);
        if (kept.size() == count && !(v > kept.front().first))
            continue;
        if (!(v > spectrum.value(k - 1)) || v < spectrum.value(k + 1))
            continue;
        if (kept.size() == count) {
            std::pop_heap(kept.begin(), kept.end(), lower);
            kept.pop_back();
        }
        kept.emplace_back(v, k);
        std::push_heap(kept.begin(), kept.end(), lower);
    }
    std::sort_heap(kept.begin(), kept.end(), lower);
    std::vector<SpectrumPeak> peaks;
    for (const auto& [value, bin] : kept)
        peaks.push_back(refined(spectrum, bin));
    return peaks;
}
