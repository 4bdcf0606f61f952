#include "calc/SpectrumPeaks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <span>

#include "calc/PeakSearch.h"
#include "calc/SpectrumPlan.h"
#include "calc/WindowShape.h"
#include "core/TSFILE.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kRun = 1U << 15;

// The bins of a spectrum file as amplitudes, whatever the file holds, and a tone's place between them.
class Bins
{
public:
    using Complex = std::complex<double>;

    Bins(TSFILE& spectrum, const SpectrumRequest& request)
        : m_spectrum(spectrum),
          m_request(request),
          m_plan(planSpectrum(request)),
          m_parts(request.result == SpectrumResult::RealImaginary),
          m_spacing(static_cast<double>(m_plan.used) / m_plan.length)
    {
    }

    std::uint32_t count() const { return m_spectrum.samples(); }
    double resolution() const { return m_plan.resolution; }

    // What bins `first`, first + 1, … are ordered by. A bin without any power has no level in dB; it is lower
    // than all others.
    void levels(std::uint32_t first, std::span<float> out)
    {
        m_spectrum.readColumn(2, first, out);
        if (m_parts) {
            m_imaginary.resize(out.size());
            m_spectrum.readColumn(3, first, m_imaginary);
        }
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = m_parts ? std::hypot(out[i], m_imaginary[i]) : std::isnan(out[i]) ? -INFINITY : out[i];
    }
    double amplitude(std::uint32_t bin)
    {
        return m_parts ? std::hypot(m_spectrum.value(bin, 2), m_spectrum.value(bin, 3))
                       : amplitudeOf(m_spectrum.value(bin, 2));
    }
    SpectrumPeak peakAt(std::uint32_t bin);
    // The bin as it stands in the file.
    SpectrumPeak lineOf(std::uint32_t bin)
    {
        return {bin * m_plan.resolution, valueOf(amplitude(bin)), bin, phaseOf(line(bin))};
    }

private:
    double amplitudeOf(double value) const
    {
        if (m_request.decibel)
            return std::isnan(value) ? 0.0 : std::pow(10.0, value / 20.0);  // 10 lg of a power, 20 lg else
        return m_request.result == SpectrumResult::PowerDensity ? std::sqrt(value) : value;
    }
    double valueOf(double amplitude) const
    {
        if (m_request.decibel)
            return 20.0 * std::log10(amplitude);
        return m_request.result == SpectrumResult::PowerDensity ? amplitude * amplitude : amplitude;
    }
    bool hasPhase() const { return !m_request.averaged; }
    double phaseOf(const Complex& tone) const
    {
        return hasPhase() ? std::arg(tone) * 180.0 / std::numbers::pi
                          : std::numeric_limits<double>::quiet_NaN();
    }
    Complex line(std::uint32_t bin)
    {
        if (m_parts)
            return {m_spectrum.value(bin, 2), m_spectrum.value(bin, 3)};
        return hasPhase() ? std::polar(amplitude(bin), m_spectrum.value(bin, 3) * std::numbers::pi / 180.0)
                          : amplitude(bin);
    }
    Complex window(double periods) const { return windowTransform(m_request.window, m_plan.used, periods); }
    double offsetOf(double ratio) const;
    SpectrumPeak vertex(std::uint32_t bin, const std::array<Complex, 3>& lines) const;

    TSFILE& m_spectrum;
    const SpectrumRequest& m_request;
    SpectrumPlan m_plan;
    bool m_parts;
    double m_spacing;  // of bins, in periods of the samples that took part: less than 1 where zeros pad them
    std::vector<float> m_imaginary;
};

// How far from a bin a tone lies that is `ratio` times as high in the next one; in periods.
double Bins::offsetOf(double ratio) const
{
    double low = 0.0;
    double high = m_spacing;
    for (int i = 0; i < 50; ++i) {
        const double middle = (low + high) / 2;
        const bool isBelow = std::abs(window(m_spacing - middle)) < ratio * std::abs(window(middle));
        (isBelow ? low : high) = middle;
    }
    return (low + high) / 2;
}

// The parabola through the amplitudes of a bin and its neighbours.
SpectrumPeak Bins::vertex(std::uint32_t bin, const std::array<Complex, 3>& lines) const
{
    const double left = std::abs(lines[0]);
    const double at = std::abs(lines[1]);
    const double right = std::abs(lines[2]);
    const double curvature = left - 2.0 * at + right;
    const double offset = curvature < 0.0 ? 0.5 * (left - right) / curvature : 0.0;
    return {(bin + offset) * m_plan.resolution, valueOf(at - 0.25 * (left - right) * offset), bin,
            phaseOf(lines[1])};
}

SpectrumPeak Bins::peakAt(std::uint32_t bin)
{
    constexpr int kRounds = 8;
    constexpr double kLikeATone = 0.1;  // of its amplitude
    if (bin < 2 || bin >= count())
        return lineOf(bin);
    const std::array<Complex, 3> lines{line(bin - 1), line(bin), line(bin + 1)};
    std::array<Complex, 3> own = lines;
    double offset = 0.0;
    double side = 1.0;
    Complex tone;
    // A tone reaches its bins from negative frequencies too, which are all that the rectangle leaves between
    // a right and a wrong third digit. Averages have lost the phase, and with it that part.
    for (int round = 0; round < (hasPhase() ? kRounds : 1); ++round) {
        side = std::abs(own[2]) >= std::abs(own[0]) ? 1.0 : -1.0;
        offset = side * offsetOf(std::abs(own[side > 0 ? 2 : 0]) / std::abs(own[1]));
        tone = own[1] / window(-offset);
        const double frequency = bin * m_spacing + offset;
        for (std::size_t i = 0; i < own.size() && hasPhase(); ++i)
            own[i] = lines[i] -
                     std::conj(tone) * window((bin + static_cast<double>(i) - 1.0) * m_spacing + frequency);
    }
    const double amplitude = std::abs(tone);
    const double third = std::abs(own[side > 0 ? 0 : 2]);
    if (!(std::fabs(third - amplitude * std::abs(window(m_spacing + std::fabs(offset)))) <
          kLikeATone * amplitude))
        return vertex(bin, lines);
    return {(bin + offset / m_spacing) * m_plan.resolution, valueOf(amplitude), bin, phaseOf(tone)};
}

bool isHigher(const CurvePeak& a, const CurvePeak& b)
{
    return a.height > b.height;
}

// The highest of the peaks that lie far enough from those that are chosen already.
class Candidates
{
public:
    Candidates(const PeakChoice& choice, double resolution)
        : m_choice(choice), m_reach(choice.leastDistance / resolution - kRounding)
    {
        m_most = std::max(choice.count, kCandidates);
    }

    // Reads the whole curve; false after a cancel.
    bool collect(Bins& bins, const Progress& progress)
    {
        m_peaks.clear();
        m_isFull = false;
        PeakSearch search([this](const CurvePeak& peak) { consider(peak); });
        std::vector<float> run(kRun);
        for (std::uint32_t done = 0; done < bins.count();) {
            const std::span<float> part(run.data(), std::min(kRun, bins.count() - done));
            bins.levels(done + 1, part);
            for (const float level : part)
                search.add(level);
            done += static_cast<std::uint32_t>(part.size());
            if (!goesOn(progress, done, bins.count()))
                return false;
        }
        search.finish();
        std::sort(m_peaks.begin(), m_peaks.end(), isHigher);
        return true;
    }
    // From the highest on, as many as are wanted.
    void choose()
    {
        for (const CurvePeak& peak : m_peaks)
            if (m_chosen.size() < m_choice.count && isFar(peak))
                m_chosen.push_back(peak);
    }
    // Lower ones were left out that may be wanted now.
    bool wantsMore() const { return m_isFull && m_chosen.size() < m_choice.count; }
    const std::vector<CurvePeak>& chosen() const { return m_chosen; }

private:
    static constexpr std::size_t kCandidates = 4096;
    static constexpr double kRounding = 1e-6;  // of a bin

    bool isFar(const CurvePeak& peak) const
    {
        return std::none_of(m_chosen.begin(), m_chosen.end(), [&](const CurvePeak& other) {
            return std::fabs(static_cast<double>(peak.place) - other.place) < m_reach;
        });
    }
    // A heap, the lowest on top.
    void consider(const CurvePeak& peak)
    {
        if (!(static_cast<double>(peak.prominence) >= m_choice.leastProminence) || !isFar(peak))
            return;
        m_peaks.push_back(peak);
        std::push_heap(m_peaks.begin(), m_peaks.end(), isHigher);
        if (m_peaks.size() <= m_most)
            return;
        std::pop_heap(m_peaks.begin(), m_peaks.end(), isHigher);
        m_peaks.pop_back();
        m_isFull = true;
    }

    const PeakChoice& m_choice;
    double m_reach;  // bins
    std::size_t m_most;
    std::vector<CurvePeak> m_peaks;
    bool m_isFull = false;
    std::vector<CurvePeak> m_chosen;
};

}  // namespace

std::vector<SpectrumPeak> findPeaks(TSFILE& spectrum, const SpectrumRequest& request,
                                    const PeakChoice& choice, const Progress& progress)
{
    Bins bins(spectrum, request);
    Candidates candidates(choice, bins.resolution());
    do {
        if (!candidates.collect(bins, progress))
            return {};
        candidates.choose();
    } while (candidates.wantsMore());
    std::vector<SpectrumPeak> peaks;
    peaks.reserve(candidates.chosen().size());
    for (const CurvePeak& found : candidates.chosen()) {
        peaks.push_back(bins.peakAt(found.place));
        peaks.back().prominence = static_cast<double>(found.prominence);
    }
    std::sort(peaks.begin(), peaks.end(),
              [](const SpectrumPeak& a, const SpectrumPeak& b) { return a.value > b.value; });
    return peaks;
}

SpectrumPeak lineAt(TSFILE& spectrum, const SpectrumRequest& request, double frequency)
{
    Bins bins(spectrum, request);
    const auto bin = static_cast<std::uint32_t>(
        std::clamp<double>(std::round(frequency / bins.resolution()), 1.0, bins.count()));
    std::uint32_t best = bin;
    for (const std::uint32_t other : {bin - 1, bin + 1})
        if (other >= 1 && other <= bins.count() && bins.amplitude(other) > bins.amplitude(best))
            best = other;
    const bool isPeak = best > 1 && best < bins.count() && bins.amplitude(best - 1) <= bins.amplitude(best) &&
                        bins.amplitude(best + 1) <= bins.amplitude(best);
    return isPeak ? bins.peakAt(best) : bins.lineOf(bin);
}

std::vector<SpectrumPeak> findHarmonics(TSFILE& spectrum, const SpectrumRequest& request, double frequency,
                                        std::size_t count)
{
    Bins bins(spectrum, request);
    std::vector<SpectrumPeak> harmonics;
    const double base = frequency / bins.resolution();
    for (std::size_t k = 1; k <= count; ++k) {
        const auto bin = std::llround(static_cast<double>(k) * base);
        // The peak's own bin may be off by half a bin, its k-th multiple by k halves; but no bin belongs to
        // two harmonics.
        const auto reach = std::min(static_cast<std::int64_t>(k / 2 + 1),
                                    static_cast<std::int64_t>(std::max(0.0, base / 2.0 - 0.5)));
        const auto first = static_cast<std::uint32_t>(std::max<std::int64_t>(1, bin - reach));
        const auto last = static_cast<std::uint32_t>(std::min<std::int64_t>(bins.count(), bin + reach));
        if (bin < 1 || first > last || bin > bins.count())
            break;
        std::uint32_t best = first;
        for (std::uint32_t b = first + 1; b <= last; ++b)
            if (bins.amplitude(b) > bins.amplitude(best))
                best = b;
        harmonics.push_back(bins.peakAt(best));
    }
    return harmonics;
}

double harmonicDistortion(const std::vector<SpectrumPeak>& harmonics, const SpectrumRequest& request)
{
    constexpr std::size_t kLast = 40;
    if (harmonics.size() < 2)
        return std::numeric_limits<double>::quiet_NaN();
    const bool isPower = request.result == SpectrumResult::PowerDensity && !request.decibel;
    const auto power = [&](const SpectrumPeak& peak) {
        if (request.decibel)
            return std::isnan(peak.value) ? 0.0 : std::pow(10.0, peak.value / 10.0);
        return isPower ? peak.value : peak.value * peak.value;
    };
    double sum = 0.0;
    for (std::size_t k = 1; k < std::min(harmonics.size(), kLast); ++k)
        sum += power(harmonics[k]);
    return std::sqrt(sum / power(harmonics[0]));
}

}  // namespace veltrac
