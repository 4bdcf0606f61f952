#include "calc/SpectrumPeaks.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace veltrac {

namespace {

constexpr std::uint32_t kRun = 1U << 15;

// The parabola through the bin and its neighbours; the bin itself at the spectrum's ends.
SpectrumPeak refined(TSFILE& spectrum, std::uint32_t column, std::uint32_t bin, SpectrumWindow window)
{
    const double step = spectrum.dt();
    const double at = spectrum.value(bin, column);
    SpectrumPeak peak{bin * step, at, bin};
    if (bin < 2 || bin >= spectrum.samples())
        return peak;
    const double left = spectrum.value(bin - 1, column);
    const double right = spectrum.value(bin + 1, column);
    const double curvature = left - 2.0 * at + right;
    if (!(curvature < 0.0) || !std::isfinite(curvature))
        return peak;
    const double offset = 0.5 * (left - right) / curvature;
    peak.frequency = (bin + offset) * step;
    if (window != SpectrumWindow::FlatTop)
        peak.value = at - 0.25 * (left - right) * offset;
    return peak;
}

bool isHigher(const SpectrumPeak& a, const SpectrumPeak& b)
{
    return a.value > b.value;
}

}  // namespace

std::vector<SpectrumPeak> findPeaks(TSFILE& spectrum, std::uint32_t column, std::size_t count,
                                    SpectrumWindow window)
{
    // A heap of the highest so far, the lowest of them on top.
    std::vector<SpectrumPeak> peaks;
    const std::uint32_t bins = spectrum.samples();
    std::vector<float> run(kRun);
    float before = -INFINITY;
    float at = -INFINITY;
    bool isFlat = true;
    const auto consider = [&](std::uint32_t bin, float after) {
        if (bin == 0 || !(at >= before && at > after))
            return;
        peaks.push_back({0.0, at, bin});
        std::push_heap(peaks.begin(), peaks.end(), isHigher);
        if (peaks.size() > count) {
            std::pop_heap(peaks.begin(), peaks.end(), isHigher);
            peaks.pop_back();
        }
    };
    for (std::uint32_t done = 0; done < bins;) {
        const std::span<float> part(run.data(), std::min(kRun, bins - done));
        spectrum.readColumn(column, done + 1, part);
        for (const float v : part) {
            // A bin without any power has no level in dB; it is lower than all others.
            const float level = std::isnan(v) ? -INFINITY : v;
            isFlat = isFlat && (done == 0 || level == at);
            consider(done, level);
            before = at;
            at = level;
            ++done;
        }
    }
    if (isFlat)
        return {};
    consider(bins, -INFINITY);
    for (SpectrumPeak& peak : peaks)
        peak = refined(spectrum, column, peak.bin, window);
    std::sort(peaks.begin(), peaks.end(), isHigher);
    return peaks;
}

std::vector<SpectrumPeak> findHarmonics(TSFILE& spectrum, std::uint32_t column, double frequency,
                                        std::size_t count, SpectrumWindow window)
{
    std::vector<SpectrumPeak> harmonics;
    const double base = frequency / spectrum.dt();  // in bins
    for (std::size_t k = 1; k <= count; ++k) {
        const auto bin = std::llround(static_cast<double>(k) * base);
        // The peak's own bin may be off by half a bin, its k-th multiple by k halves; but no bin belongs to
        // two harmonics.
        const auto reach = std::min(static_cast<std::int64_t>(k / 2 + 1),
                                    static_cast<std::int64_t>(std::max(0.0, base / 2.0 - 0.5)));
        const auto first = static_cast<std::uint32_t>(std::max<std::int64_t>(1, bin - reach));
        const auto last = static_cast<std::uint32_t>(std::min<std::int64_t>(spectrum.samples(), bin + reach));
        if (bin < 1 || first > last || bin > spectrum.samples())
            break;
        std::uint32_t best = first;
        for (std::uint32_t b = first + 1; b <= last; ++b)
            if (spectrum.value(b, column) > spectrum.value(best, column))
                best = b;
        harmonics.push_back(refined(spectrum, column, best, window));
    }
    return harmonics;
}

}  // namespace veltrac
