// Sections in an order that keeps their signals above the rounding noise.
//
// A sharp section raises what lies at its resonance, and the rounding noise there with it; the flat ones
// before it have by then pressed the signal there down. In a Chebyshev of order 64 that order of the sections
// costs up to 185 bits, more than there are. What counts is how high the gain up to a section peaks, times
// how high the gain behind it does: L. B. Jackson, "Roundoff-noise analysis for fixed-point digital filters
// realized in cascade or parallel form", IEEE Trans. Audio Electroacoustics 1970. The order is found step by
// step, as B. Liu and A. Peled do in "Heuristic optimization of the cascade realization of fixed-point
// digital filters", 1975.
#include "filter/fid_order.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

namespace veltrac {

namespace {

constexpr int kSteps = 32;           // between 0 and half the rate
constexpr double kMostBits = 100.0;  // stands in for the infinite
// Twice as many as any design has; beyond, the search would take longer than it is worth.
constexpr std::size_t kMostSections = 128;

// Base-2 logarithms of a gain at each of the frequencies.
using Levels = std::vector<double>;

// Evenly spaced ones, and where each section has its peak.
std::vector<double> frequenciesOf(const FidCascade& sections)
{
    std::vector<double> frequencies;
    frequencies.reserve(kSteps + 1 + sections.size());
    for (int i = 0; i <= kSteps; ++i)
        frequencies.push_back(0.5 * i / kSteps);
    for (const FidSection& section : sections) {
        const double radius = section.a.size() > 2 ? std::sqrt(section.a[2]) : 0.0;
        if (radius > 0 && std::abs(section.a[1]) < 2 * radius)
            frequencies.push_back(std::acos(-section.a[1] / (2 * radius)) / (2 * std::numbers::pi));
    }
    return frequencies;
}

Levels levelsOf(const FidSection& section, const std::vector<double>& frequencies)
{
    Levels levels;
    for (const double frequency : frequencies) {
        const double bits = std::log2(static_cast<double>(std::abs(sectionResponse(section, frequency))));
        levels.push_back(bits > -kMostBits ? std::min(bits, kMostBits) : -kMostBits);  // also for a NaN
    }
    return levels;
}

// What a signal has gone through and what it has before it.
class Walk
{
public:
    explicit Walk(const std::vector<Levels>& all) : m_behind(all.front().size(), 0.0), m_ahead(m_behind)
    {
        for (const Levels& levels : all)
            std::transform(levels.begin(), levels.end(), m_ahead.begin(), m_ahead.begin(), std::plus<>());
    }

    // Bits that rounding costs behind the next part.
    double lossAfter(const Levels& next) const
    {
        double signal = -std::numeric_limits<double>::infinity();
        double noise = signal;
        for (std::size_t i = 0; i < next.size(); ++i) {
            signal = std::max(signal, m_behind[i] + next[i]);
            noise = std::max(noise, m_ahead[i] - next[i]);
        }
        return signal + noise;
    }

    void pass(const Levels& next)
    {
        for (std::size_t i = 0; i < next.size(); ++i) {
            m_behind[i] += next[i];
            m_ahead[i] -= next[i];
        }
    }

private:
    Levels m_behind;
    Levels m_ahead;
};

double lossOf(const std::vector<Levels>& levels, const std::vector<std::size_t>& order)
{
    Walk walk(levels);
    double worst = 0.0;
    for (const std::size_t i : order) {
        worst = std::max(worst, walk.lossAfter(levels[i]));
        walk.pass(levels[i]);
    }
    return worst;
}

// The best next step, each time, of those left.
std::vector<std::size_t> greedyOrder(const std::vector<Levels>& levels)
{
    Walk walk(levels);
    std::vector<std::size_t> left(levels.size());
    std::iota(left.begin(), left.end(), 0);
    std::vector<std::size_t> order;
    while (!left.empty()) {
        std::vector<double> losses;
        losses.reserve(left.size());
        for (const std::size_t i : left)
            losses.push_back(walk.lossAfter(levels[i]));
        const auto best = std::min_element(losses.begin(), losses.end()) - losses.begin();
        order.push_back(left[static_cast<std::size_t>(best)]);
        walk.pass(levels[order.back()]);
        left.erase(left.begin() + best);
    }
    return order;
}

// The same in steps of two neighbours: the halves of a band filter's section balance each other.
std::vector<std::size_t> greedyOrderOfPairs(const std::vector<Levels>& levels)
{
    std::vector<Levels> pairs;
    for (std::size_t i = 0; i < levels.size(); i += 2) {
        pairs.push_back(levels[i]);
        if (i + 1 < levels.size())
            std::transform(levels[i].begin(), levels[i].end(), levels[i + 1].begin(), pairs.back().begin(),
                           std::plus<>());
    }
    std::vector<std::size_t> order;
    for (const std::size_t pair : greedyOrder(pairs)) {
        order.push_back(2 * pair);
        if (2 * pair + 1 < levels.size())
            order.push_back(2 * pair + 1);
    }
    return order;
}

}  // namespace

std::vector<std::size_t> quietOrder(const FidCascade& sections)
{
    std::vector<std::size_t> best(sections.size());
    std::iota(best.begin(), best.end(), 0);
    if (sections.size() < 2 || sections.size() > kMostSections)
        return best;
    const std::vector<double> frequencies = frequenciesOf(sections);
    std::vector<Levels> levels;
    levels.reserve(sections.size());
    for (const FidSection& section : sections)
        levels.push_back(levelsOf(section, frequencies));
    double least = lossOf(levels, best) - 1.0;
    for (const std::vector<std::size_t>& order : {greedyOrder(levels), greedyOrderOfPairs(levels)}) {
        const double loss = lossOf(levels, order);
        if (loss < least) {
            least = loss;
            best = order;
        }
    }
    return best;
}

}  // namespace veltrac
