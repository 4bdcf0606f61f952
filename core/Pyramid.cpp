#include "core/Pyramid.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/Vectors.h"

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

// Four sums and extremes each; what does not fill them goes to the first one.
constexpr std::size_t kChains = 4;

// The summaries of `Buckets` runs of n values (at most a bucket's), one behind the other, if all values are
// finite: floats cannot overflow a sum of doubles, so that tells. The runs are summed up side by side, or the
// processor would wait for each addition.
template <std::size_t Buckets>
class FiniteRuns
{
public:
    FiniteRuns(const float* values, std::size_t n) : m_values(values), m_count(n) {}

    bool sumUp(Summary* out)
    {
        const std::array<Sums, Buckets> sums = summed([](auto v, std::size_t) { return v; });
        for (std::size_t b = 0; b < Buckets; ++b) {
            const double sum = (sums[b][0][0] + sums[b][0][1]) + (sums[b][1][0] + sums[b][1][1]);
            if (!std::isfinite(sum))
                return false;
            out[b] = {};
            out[b].count = static_cast<std::uint32_t>(m_count);
            out[b].mean = sum / static_cast<double>(m_count);
        }
        double mean[Buckets];
        for (std::size_t b = 0; b < Buckets; ++b)
            mean[b] = out[b].mean;
        const std::array<Sums, Buckets> squares = summed([&mean](auto v, std::size_t b) {
            const auto d = v - mean[b];
            return d * d;
        });
        for (std::size_t b = 0; b < Buckets; ++b)
            out[b].squares = squares[b][0][0] + squares[b][0][1] + squares[b][1][0] + squares[b][1][1];
        takeExtremes(out);
        return true;
    }

private:
    using Sums = std::array<TwoDoubles, 2>;

    // The four sums of step(v) for all values of each run.
    template <typename Step>
    std::array<Sums, Buckets> summed(Step step) const
    {
        std::array<Sums, Buckets> sums{};
        std::size_t i = 0;
        for (; i + kChains <= m_count; i += kChains)
            for (std::size_t b = 0; b < Buckets; ++b) {
                const auto v = vectorAt<FourFloats>(m_values + b * m_count + i);
                sums[b][0] += step(lowDoubles(v), b);
                sums[b][1] += step(highDoubles(v), b);
            }
        for (; i < m_count; ++i)
            for (std::size_t b = 0; b < Buckets; ++b)
                sums[b][0][0] += step(static_cast<double>(m_values[b * m_count + i]), b);
        return sums;
    }

    void takeExtremes(Summary* out) const
    {
        std::array<FourFloats, Buckets> least{};
        std::array<FourFloats, Buckets> greatest{};
        least.fill(FourFloats{} + Summary().least);
        greatest.fill(FourFloats{} + Summary().greatest);
        std::size_t i = 0;
        for (; i + kChains <= m_count; i += kChains)
            for (std::size_t b = 0; b < Buckets; ++b) {
                const auto v = vectorAt<FourFloats>(m_values + b * m_count + i);
                least[b] = v < least[b] ? v : least[b];
                greatest[b] = v > greatest[b] ? v : greatest[b];
            }
        for (std::size_t b = 0; b < Buckets; ++b) {
            for (std::size_t rest = i; rest < m_count; ++rest) {
                least[b][0] = std::min(least[b][0], m_values[b * m_count + rest]);
                greatest[b][0] = std::max(greatest[b][0], m_values[b * m_count + rest]);
            }
            for (std::size_t chain = 0; chain < kChains; ++chain) {
                out[b].least = std::min(out[b].least, least[b][chain]);
                out[b].greatest = std::max(out[b].greatest, greatest[b][chain]);
            }
        }
    }

    const float* m_values;
    std::size_t m_count;
};

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
    if (Summary finite;
        stride == 1 && n <= Pyramid::kLargestBucket && FiniteRuns<1>(values, n).sumUp(&finite))
        return finite;
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

Summary extremesOf(const float* values, std::size_t stride, std::size_t n)
{
    Summary s;
    FourFloats least = FourFloats{} + s.least;
    FourFloats greatest = FourFloats{} + s.greatest;
    FourWords count{};
    std::size_t i = 0;
    for (; i + kChains <= n; i += kChains) {
        const float* const from = values + i * stride;
        const FourFloats v{from[0], from[stride], from[2 * stride], from[3 * stride]};
        const auto isFinite = v - v == FourFloats{};
        const FourFloats low = isFinite ? v : least;
        const FourFloats high = isFinite ? v : greatest;
        least = low < least ? low : least;
        greatest = high > greatest ? high : greatest;
        count += isFinite ? FourWords{} + 1U : FourWords{};
    }
    for (; i < n; ++i)
        if (const float v = values[i * stride]; std::isfinite(v)) {
            s.least = std::min(s.least, v);
            s.greatest = std::max(s.greatest, v);
            ++s.count;
        }
    for (std::size_t chain = 0; chain < kChains; ++chain) {
        s.least = std::min(s.least, least[chain]);
        s.greatest = std::max(s.greatest, greatest[chain]);
        s.count += count[chain];
    }
    return s;
}

void summariesOf(const float* values, std::size_t stride, std::size_t n, std::size_t bucket,
                 std::vector<Summary>& out)
{
    constexpr std::size_t kAtOnce = 4;
    std::size_t i = 0;
    float gathered[kAtOnce * Pyramid::kLargestBucket] = {};
    for (; i + kAtOnce * bucket <= n; i += kAtOnce * bucket) {
        const float* run = values + i * stride;
        if (stride != 1) {
            for (std::size_t k = 0; k < kAtOnce * bucket; ++k)
                gathered[k] = run[k * stride];
            run = gathered;
        }
        Summary finite[kAtOnce];
        if (!FiniteRuns<kAtOnce>(run, bucket).sumUp(finite))
            for (std::size_t b = 0; b < kAtOnce; ++b)
                finite[b] = summaryOf(run + b * bucket, 1, bucket);
        out.insert(out.end(), finite, finite + kAtOnce);
    }
    for (; i < n; i += bucket)
        out.push_back(summaryOf(values + i * stride, stride, std::min(bucket, n - i)));
}

void Pyramid::reserve(std::size_t buckets)
{
    if (m_levels.empty())
        m_levels.emplace_back();
    m_levels.front().reserve(buckets);
}

void Pyramid::add(std::span<const Summary> buckets)
{
    if (m_levels.empty())
        m_levels.emplace_back();
    m_levels.front().insert(m_levels.front().end(), buckets.begin(), buckets.end());
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
    if (!m_levels.empty())
        joinUp(0);
}

// Makes the levels above the buckets anew, from those of bucket `from` on.
void Pyramid::joinUp(std::size_t from)
{
    for (std::size_t level = 0; m_levels[level].size() > kJoined; ++level) {
        if (level + 1 == m_levels.size())
            m_levels.emplace_back();
        const std::vector<Summary>& below = m_levels[level];
        std::vector<Summary>& here = m_levels[level + 1];
        from = std::min(from / kJoined, here.size());
        here.resize(from);
        here.resize((below.size() + kJoined - 1) / kJoined);
        for (std::size_t i = from * kJoined; i < below.size(); ++i)
            here[i / kJoined].join(below[i]);
    }
}

void Pyramid::replaceEnd(std::size_t from, std::span<const Summary> buckets)
{
    if (m_levels.empty())
        m_levels.emplace_back();
    std::vector<Summary>& base = m_levels.front();
    base.resize(std::min(from, base.size()));
    from = base.size();
    base.insert(base.end(), buckets.begin(), buckets.end());
    joinUp(from);
}

void Pyramid::dropFront(std::size_t buckets)
{
    if (m_levels.empty())
        return;
    std::vector<Summary>& base = m_levels.front();
    base.erase(base.begin(), base.begin() + static_cast<std::ptrdiff_t>(std::min(buckets, base.size())));
    m_levels.resize(1);
    joinUp(0);
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
