#include "core/Pyramid.h"

#include <algorithm>
#include <cmath>

namespace veltrac {

void Summary::join(const Summary& other)
{
    if (other.count == 0)
        return;
    if (count == 0) {
        *this = other;
        return;
    }
    const double total = static_cast<double>(count) + other.count;
    const double delta = other.mean - mean;
    mean += delta * other.count / total;
    squares += other.squares + delta * delta * (static_cast<double>(count) * other.count / total);
    count += other.count;
    least = std::min(least, other.least);
    greatest = std::max(greatest, other.greatest);
}

void Summary::widen(const Summary& other)
{
    count += other.count;
    least = std::min(least, other.least);
    greatest = std::max(greatest, other.greatest);
}

namespace {

// Four chains each, so that one addition or comparison does not wait for the one before.
constexpr std::size_t kChains = 4;

// All values finite, side by side.
Summary summaryOfFinite(const float* values, std::size_t n, double sum)
{
    Summary s;
    s.count = static_cast<std::uint32_t>(n);
    s.mean = sum / static_cast<double>(n);
    double squares[kChains] = {};
    float least[kChains];
    float greatest[kChains];
    std::fill_n(least, kChains, s.least);
    std::fill_n(greatest, kChains, s.greatest);
    const auto take = [&](std::size_t i, std::size_t chain) {
        const float v = values[i];
        const double d = static_cast<double>(v) - s.mean;
        squares[chain] += d * d;
        least[chain] = v < least[chain] ? v : least[chain];
        greatest[chain] = v > greatest[chain] ? v : greatest[chain];
    };
    std::size_t i = 0;
    for (; i + kChains <= n; i += kChains)
        for (std::size_t chain = 0; chain < kChains; ++chain)
            take(i + chain, chain);
    for (; i < n; ++i)
        take(i, 0);
    for (std::size_t chain = 0; chain < kChains; ++chain) {
        s.squares += squares[chain];
        s.least = std::min(s.least, least[chain]);
        s.greatest = std::max(s.greatest, greatest[chain]);
    }
    return s;
}

double sumOf(const float* values, std::size_t n)
{
    double sums[kChains] = {};
    std::size_t i = 0;
    for (; i + kChains <= n; i += kChains)
        for (std::size_t chain = 0; chain < kChains; ++chain)
            sums[chain] += static_cast<double>(values[i + chain]);
    for (; i < n; ++i)
        sums[0] += static_cast<double>(values[i]);
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

}  // namespace

Summary summaryOf(const float* values, std::size_t stride, std::size_t n)
{
    if (n == 0)
        return {};
    if (stride != 1 && n <= Pyramid::kLargestBucket) {
        // Side by side they are summed in fewer steps, the gathering included.
        float gathered[Pyramid::kLargestBucket];
        for (std::size_t i = 0; i < n; ++i)
            gathered[i] = values[i * stride];
        return summaryOf(gathered, 1, n);
    }
    if (stride == 1) {
        // Floats cannot overflow a sum of doubles: it is finite where all of them are.
        const double sum = sumOf(values, n);
        if (std::isfinite(sum))
            return summaryOfFinite(values, n, sum);
    }
    Summary s;
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const float v = values[i * stride];
        if (!std::isfinite(v))
            continue;
        sum += static_cast<double>(v);
        ++s.count;
        s.least = std::min(s.least, v);
        s.greatest = std::max(s.greatest, v);
    }
    if (s.count == 0)
        return s;
    s.mean = sum / s.count;
    for (std::size_t i = 0; i < n; ++i) {
        const float v = values[i * stride];
        if (std::isfinite(v))
            s.squares += (static_cast<double>(v) - s.mean) * (static_cast<double>(v) - s.mean);
    }
    return s;
}

void Pyramid::add(const float* values, std::size_t stride, std::size_t n)
{
    while (n > 0) {
        if (m_partial.empty() && stride == 1 && n >= m_bucket) {
            closeBucket(values, 1, m_bucket);
            values += m_bucket;
            n -= m_bucket;
            continue;
        }
        const std::size_t taken = std::min<std::size_t>(n, m_bucket - m_partial.size());
        const std::size_t before = m_partial.size();
        m_partial.resize(before + taken);
        for (std::size_t i = 0; i < taken; ++i)
            m_partial[before + i] = values[i * stride];
        values += taken * stride;
        n -= taken;
        if (m_partial.size() == m_bucket) {
            closeBucket(m_partial.data(), 1, m_bucket);
            m_partial.clear();
        }
    }
}

void Pyramid::closeBucket(const float* values, std::size_t stride, std::size_t n)
{
    if (m_levels.empty())
        m_levels.emplace_back();
    m_levels.front().push_back(summaryOf(values, stride, n));
}

void Pyramid::finish()
{
    if (!m_partial.empty())
        closeBucket(m_partial.data(), 1, m_partial.size());
    m_partial = {};
    while (!m_levels.empty() && m_levels.back().size() > kJoined) {
        const std::vector<Summary>& below = m_levels.back();
        std::vector<Summary> level((below.size() + kJoined - 1) / kJoined);
        for (std::size_t i = 0; i < below.size(); ++i)
            level[i / kJoined].join(below[i]);
        m_levels.push_back(std::move(level));
    }
}

void Pyramid::clear()
{
    m_levels.clear();
    m_partial.clear();
}

void Pyramid::collect(std::size_t first, std::size_t last, bool moments, Summary& into) const
{
    const auto take = [&](const Summary& s) { moments ? into.join(s) : into.widen(s); };
    for (std::size_t level = 0; first < last; ++level) {
        const std::vector<Summary>& here = m_levels[level];
        const bool top = level + 1 == m_levels.size();
        while (first < last && (top || first % kJoined != 0))
            take(here[first++]);
        while (first < last && last % kJoined != 0)
            take(here[--last]);
        first /= kJoined;
        last /= kJoined;
    }
}

}  // namespace veltrac
