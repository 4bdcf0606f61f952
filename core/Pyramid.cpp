#include "core/Pyramid.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/Vectors.h"

namespace veltrac {

void Moments::join(const Moments& other)
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

// Of four runs of values side by side; what is no number is neither.
class FourExtremes
{
public:
    void take(FourFloats v)
    {
        m_least = v < m_least ? v : m_least;
        m_greatest = v > m_greatest ? v : m_greatest;
    }
    Extremes lane(std::size_t k) const { return {m_least[k], m_greatest[k]}; }

private:
    FourFloats m_least = FourFloats{} + Extremes().least;
    FourFloats m_greatest = FourFloats{} + Extremes().greatest;
};

// Infinite values are left out: where one has come in, the finite ones are looked for.
Extremes finiteOnes(const Extremes& all, const float* values, std::size_t stride, std::size_t n)
{
    if (all.least != -Extremes().least && all.greatest != -Extremes().greatest)
        return all;
    Extremes finite;
    for (std::size_t i = 0; i < n; ++i)
        if (const float v = values[i * stride]; std::isfinite(v))
            finite.widen({v, v});
    return finite;
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

Extremes extremesOf(const float* values, std::size_t stride, std::size_t n)
{
    FourExtremes all;
    std::size_t i = 0;
    for (; i + kChains <= n; i += kChains) {
        const float* const from = values + i * stride;
        all.take(FourFloats{from[0], from[stride], from[2 * stride], from[3 * stride]});
    }
    Extremes out;
    for (; i < n; ++i)
        if (const float v = values[i * stride]; !std::isnan(v))
            out.widen({v, v});
    for (std::size_t chain = 0; chain < kChains; ++chain)
        out.widen(all.lane(chain));
    return finiteOnes(out, values, stride, n);
}

void extremesOfColumns(const float* rows, std::size_t n, std::span<Extremes> columns)
{
    constexpr std::size_t kTogether = 4 * kChains;
    const std::size_t stride = columns.size();
    std::size_t c = 0;
    for (; c + kTogether <= stride; c += kTogether) {
        FourExtremes all[4];
        for (const float* row = rows + c; row < rows + n * stride; row += stride)
            for (std::size_t k = 0; k < 4; ++k)
                all[k].take(vectorAt<FourFloats>(row + k * kChains));
        for (std::size_t k = 0; k < kTogether; ++k)
            columns[c + k] = finiteOnes(all[k / kChains].lane(k % kChains), rows + c + k, stride, n);
    }
    for (; c < stride; ++c)
        columns[c] = extremesOf(rows + c, stride, n);
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

void Pyramid::Level::append(std::span<const Summary> summaries)
{
    extremes.insert(extremes.end(), summaries.begin(), summaries.end());
    moments.insert(moments.end(), summaries.begin(), summaries.end());
}

Pyramid::Level& Pyramid::base()
{
    if (m_levels.empty())
        m_levels.emplace_back();
    return m_levels.front();
}

void Pyramid::reserve(std::size_t buckets)
{
    base().extremes.reserve(buckets);
    base().moments.reserve(buckets);
}

void Pyramid::add(std::span<const Summary> buckets)
{
    base().append(buckets);
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
    const Summary bucket = summaryOf(values, stride, n);
    base().append({&bucket, 1});
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
        const Level& below = m_levels[level];
        Level& here = m_levels[level + 1];
        from = std::min(from / kJoined, here.size());
        here.resize(from);
        here.resize((below.size() + kJoined - 1) / kJoined);
        for (std::size_t i = from * kJoined; i < below.size(); ++i) {
            here.extremes[i / kJoined].widen(below.extremes[i]);
            here.moments[i / kJoined].join(below.moments[i]);
        }
    }
}

void Pyramid::replaceEnd(std::size_t from, std::span<const Summary> buckets)
{
    from = std::min(from, base().size());
    base().resize(from);
    base().append(buckets);
    joinUp(from);
}

void Pyramid::dropFront(std::size_t buckets)
{
    if (m_levels.empty())
        return;
    const auto gone = static_cast<std::ptrdiff_t>(std::min(buckets, base().size()));
    base().extremes.erase(base().extremes.begin(), base().extremes.begin() + gone);
    base().moments.erase(base().moments.begin(), base().moments.begin() + gone);
    m_levels.resize(1);
    joinUp(0);
}

void Pyramid::clear()
{
    m_levels.clear();
    m_partial.clear();
}

// Calls take(level, from, to) for runs of each level that together make up the buckets.
template <typename Take>
void Pyramid::walk(std::size_t first, std::size_t last, Take take) const
{
    last = std::min(last, buckets());
    for (std::size_t level = 0; first < last; ++level) {
        const bool top = level + 1 == m_levels.size();
        const std::size_t up = (first + kJoined - 1) / kJoined;
        const std::size_t down = last / kJoined;
        if (top || up >= down) {
            take(m_levels[level], first, last);
            return;
        }
        take(m_levels[level], first, up * kJoined);
        take(m_levels[level], down * kJoined, last);
        first = up;
        last = down;
    }
}

void Pyramid::collect(std::size_t first, std::size_t last, Summary& into) const
{
    walk(first, last, [&into](const Level& level, std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i)
            into.join(level.extremes[i], level.moments[i]);
    });
}

void Pyramid::collect(std::size_t first, std::size_t last, Extremes& into) const
{
    walk(first, last, [&into](const Level& level, std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i)
            into.widen(level.extremes[i]);
    });
}

}  // namespace veltrac
