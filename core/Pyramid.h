// Least, greatest, mean and squared deviation of any run of samples, without reading them again.
//
// Samples come in once, in order, and are gathered in buckets; each level above joins eight buckets of the
// one below. Values that are not finite are left out. 100 million samples in buckets of 256 take about 14 MB.
// Means and squared deviations are joined pairwise: Chan, Golub, LeVeque, "Updating Formulae and a Pairwise
// Algorithm for Computing Sample Variances" (1979), eq. 2.1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace veltrac {

// What is kept of a run of samples.
struct Summary
{
    double mean = 0.0;
    double squares = 0.0;  // sum of the squared deviations from the mean
    float least = std::numeric_limits<float>::infinity();
    float greatest = -std::numeric_limits<float>::infinity();
    std::uint32_t count = 0;  // finite values; with 0 of them nothing else means anything

    void join(const Summary& other);
    // Least and greatest alone.
    void widen(const Summary& other);
};

// The summary of n values that stand `stride` apart.
Summary summaryOf(const float* values, std::size_t stride, std::size_t n);

// Count, least and greatest of them alone.
Summary extremesOf(const float* values, std::size_t stride, std::size_t n);

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

    // Joins buckets first to last - 1 into `into`, where moments are not wanted only least and greatest.
    void collect(std::size_t first, std::size_t last, bool moments, Summary& into) const;

    std::size_t buckets() const noexcept { return m_levels.empty() ? 0 : m_levels.front().size(); }

private:
    static constexpr std::size_t kJoined = 8;

    void joinUp(std::size_t from);
    void closeBucket(const float* values, std::size_t stride, std::size_t n);

    std::uint32_t m_bucket;
    std::vector<std::vector<Summary>> m_levels;
    std::vector<float> m_partial;
};

}  // namespace veltrac
