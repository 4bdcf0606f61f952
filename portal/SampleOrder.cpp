#include "portal/SampleOrder.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace veltrac {

namespace {

constexpr std::uint64_t kOrderRun = 8192;  // samples a step

struct Keyed
{
    float value;
    std::uint32_t sample;
};

}  // namespace

JobOutcome sortSamples(const ColumnReader& read, std::uint32_t first, std::uint32_t last, SortOrder order,
                       const Progress& progress, std::vector<std::uint32_t>& samples)
{
    const std::uint64_t total = std::uint64_t{last} - first + 1;
    std::vector<Keyed> keyed;
    keyed.reserve(total);
    std::vector<float> values(std::min(kOrderRun, total));
    for (std::uint64_t done = 0; done < total;) {
        const std::size_t count = std::min<std::uint64_t>(values.size(), total - done);
        read(static_cast<std::uint32_t>(first + done), std::span(values).first(count));
        for (std::size_t i = 0; i < count; ++i)
            keyed.push_back({values[i], static_cast<std::uint32_t>(first + done + i)});
        done += count;
        if (!goesOn(progress, done, total))
            return JobOutcome::Cancelled;
    }
    const auto present = std::stable_partition(keyed.begin(), keyed.end(),
                                               [](const Keyed& k) { return !std::isnan(k.value); });
    if (order == SortOrder::Ascending)
        std::stable_sort(keyed.begin(), present,
                         [](const Keyed& a, const Keyed& b) { return a.value < b.value; });
    else
        std::stable_sort(keyed.begin(), present,
                         [](const Keyed& a, const Keyed& b) { return a.value > b.value; });
    samples.clear();
    samples.reserve(keyed.size());
    for (const Keyed& k : keyed)
        samples.push_back(k.sample);
    return JobOutcome::Done;
}

SampleOrder::SampleOrder(std::vector<std::uint32_t> samples) : m_samples(std::move(samples))
{
    if (m_samples.empty())
        return;
    const auto [least, most] = std::minmax_element(m_samples.begin(), m_samples.end());
    m_least = *least;
    m_rows.assign(std::size_t{*most - *least} + 1, -1);
    for (std::size_t row = 0; row < m_samples.size(); ++row)
        m_rows[m_samples[row] - m_least] = static_cast<int>(row);
}

std::optional<int> SampleOrder::row(std::uint32_t sample) const
{
    const std::uint64_t i = std::uint64_t{sample} - m_least;
    return sample < m_least || i >= m_rows.size() || m_rows[i] < 0 ? std::nullopt : std::optional(m_rows[i]);
}

int RowStretch::clamped(int base) const noexcept
{
    return std::clamp(base, 0, std::max(0, m_total - kRows));
}

}  // namespace veltrac
