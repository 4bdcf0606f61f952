// Least, greatest, mean and squared deviation of any run of samples, without reading them again.
//
// Samples come in once, in order, and are gathered in buckets; each level above joins eight buckets of the
// one below. Values that are not finite are left out. 100 million samples in buckets of 256 take about 14 MB.
// Means and squared deviations are joined pairwise: Chan, Golub, LeVeque, "Updating Formulae and a Pairwise
// Algorithm for Computing Sample Variances" (1979), eq. 2.1.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace veltrac {

// The least and the greatest of a run of samples; of none that is finite the least is above the greatest.
struct Extremes
{
    float least = std::numeric_limits<float>::infinity();
    float greatest = -std::numeric_limits<float>::infinity();

    bool isEmpty() const noexcept { return least > greatest; }
    void widen(const Extremes& other) noexcept
    {
        least = std::min(least, other.least);
        greatest = std::max(greatest, other.greatest);
    }
};

// The others that are kept of it.
struct Moments
{
    double mean = 0.0;
    double squares = 0.0;     // sum of the squared deviations from the mean
    std::uint32_t count = 0;  // finite values; with 0 of them nothing else means anything

    void join(const Moments& other);
};

struct Summary : Extremes, Moments
{
    void join(const Extremes& extremes, const Moments& moments)
    {
        widen(extremes);
        Moments::join(moments);
    }
};

// The summary of n values that stand `stride` apart.
Summary summaryOf(const float* values, std::size_t stride, std::size_t n);
Extremes extremesOf(const float* values, std::size_t stride, std::size_t n);

// The extremes of each column of n rows that stand side by side.
void extremesOfColumns(const float* rows, std::size_t n, std::span<Extremes> columns);

// Appends the summaries of the buckets of n samples, which stand `stride` apart; the last one may be short.
void summariesOf(const float* values, std::size_t stride, std::size_t n, std::size_t bucket,
                 std::vector<Summary>& out);

class Pyramid
{
public:
    static constexpr std::uint32_t kLargestBucket = 256;

    // `bucket`: samples a bucket, 1 to kLargestBucket.
    explicit Pyramid(std::uint32_t bucket = kLargestBucket) : m_bucket(bucket) {}

    // Takes the next n samples, which stand `stride` apart.
    void add(const float* values, std::size_t stride, std::size_t n);
    // Takes whole buckets that were summed up elsewhere; only the last one of all may be short. Either way
    // comes to the same bits, but one pyramid is made in one of them.
    void add(std::span<const Summary> buckets);
    // Makes room for this many buckets in all.
    void reserve(std::size_t buckets);
    // After the last sample.
    void finish();
    // After finish(), for a series that goes on: buckets `from` and the following are these now; and the
    // first ones are no longer wanted.
    void replaceEnd(std::size_t from, std::span<const Summary> buckets);
    void dropFront(std::size_t buckets);
    void clear();

    // Joins buckets first to last - 1 into `into`.
    void collect(std::size_t first, std::size_t last, Summary& into) const;
    void collect(std::size_t first, std::size_t last, Extremes& into) const;

    std::size_t buckets() const noexcept { return m_levels.empty() ? 0 : m_levels.front().size(); }

private:
    static constexpr std::size_t kJoined = 8;

    // Apart: a picture walks over the extremes alone.
    struct Level
    {
        std::vector<Extremes> extremes;
        std::vector<Moments> moments;

        std::size_t size() const noexcept { return extremes.size(); }
        void resize(std::size_t size)
        {
            extremes.resize(size);
            moments.resize(size);
        }
        void append(std::span<const Summary> summaries);
    };

    Level& base();
    void joinUp(std::size_t from);
    void closeBucket(const float* values, std::size_t stride, std::size_t n);
    template <typename Take>
    void walk(std::size_t first, std::size_t last, Take take) const;

    std::uint32_t m_bucket;
    std::vector<Level> m_levels;
    std::vector<float> m_partial;
};

}  // namespace veltrac
