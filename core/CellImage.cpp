#include "core/CellImage.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrac {

namespace {

constexpr float kNoCell = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t kPassFloats = 1U << 18;

// Cells of one axis that a pixel covers: at least the one that it lies in.
struct Cover
{
    std::int64_t first = 0;
    std::int64_t last = -1;
};

std::vector<Cover> covers(std::span<const double> edges, std::int64_t count)
{
    std::vector<Cover> all;
    all.reserve(edges.size());
    for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
        const double from = std::clamp(edges[i], -1.0, static_cast<double>(count) + 1.0);
        const double to = std::clamp(edges[i + 1], -1.0, static_cast<double>(count) + 1.0);
        Cover cover{static_cast<std::int64_t>(std::floor(from)),
                    static_cast<std::int64_t>(std::ceil(to)) - 1};
        cover.last = std::max(cover.last, cover.first);
        const bool isOutside = cover.last < 0 || cover.first >= count;
        cover.first = std::max<std::int64_t>(cover.first, 0);
        cover.last = isOutside ? -1 : std::min(cover.last, count - 1);
        all.push_back(isOutside ? Cover{} : cover);
    }
    return all;
}

}  // namespace

JobOutcome CellImage::build(const Progress& progress)
{
    const std::uint64_t columns = m_source->columns();
    const std::uint64_t cells = columns * m_source->rows();
    const auto together =
        static_cast<std::uint32_t>(std::max<std::uint64_t>(1, (cells + kHeldCells - 1) / kHeldCells));
    const std::uint64_t groups = (std::uint64_t{m_source->rows()} + together - 1) / together;
    m_together = 0;
    m_greatest.assign(groups * columns, -std::numeric_limits<float>::infinity());
    m_means.assign(groups * columns, 0.0F);
    const auto atOnce = static_cast<std::uint32_t>(
        std::max<std::uint64_t>(1, kPassFloats / std::max<std::uint64_t>(columns, 1)));
    std::vector<float> run(std::size_t{atOnce} * columns);
    for (std::uint32_t done = 0; done < m_source->rows();) {
        const std::uint32_t count = std::min(atOnce, m_source->rows() - done);
        m_source->readRows(done + 1, count, run.data());
        for (std::uint32_t r = 0; r < count; ++r) {
            const std::uint64_t group = (done + r) / together;
            const auto size =
                static_cast<float>(std::min<std::uint64_t>(together, m_source->rows() - group * together));
            float* const greatest = &m_greatest[group * columns];
            float* const mean = &m_means[group * columns];
            const float* const row = &run[std::size_t{r} * columns];
            for (std::size_t c = 0; c < columns; ++c) {
                greatest[c] = std::max(greatest[c], row[c]);
                mean[c] += row[c] / size;
            }
        }
        done += count;
        if (!goesOn(progress, done, m_source->rows()))
            return JobOutcome::Cancelled;
    }
    m_together = together;
    findRange();
    return JobOutcome::Done;
}

// Silence, as between recordings, would take all colours for itself.
//
// From a sample of the groups' greatest: where they hold several samples the quantile is a little high.
void CellImage::findRange()
{
    constexpr std::size_t kLooked = 200'000;
    std::vector<float> looked;
    looked.reserve(kLooked + 1);
    float top = -std::numeric_limits<float>::infinity();
    const std::size_t stride = m_means.size() / kLooked + 1;
    for (std::size_t i = 0; i < m_greatest.size(); ++i) {
        if (std::isfinite(m_greatest[i]))
            top = std::max(top, m_greatest[i]);
        if (i % stride == 0 && std::isfinite(m_means[i]) && m_means[i] > kNoLevel)
            looked.push_back(m_means[i]);
    }
    if (looked.empty() || !std::isfinite(top))
        return;
    const auto fifth = looked.begin() + static_cast<std::ptrdiff_t>(looked.size() / 20);
    std::nth_element(looked.begin(), fifth, looked.end());
    low = static_cast<double>(*fifth);
    high = std::max(static_cast<double>(top), std::nextafter(low, HUGE_VAL));
}

double CellImage::valueAt(std::uint32_t row, double place) const
{
    const double column = std::round(place / m_step);
    if (row < 1 || row > m_source->rows() || !(column >= 1.0 && column <= m_source->columns()))
        return kNoCell;
    return m_source->value(static_cast<std::uint32_t>(column), row);
}

void CellImage::render(std::span<const double> rows, std::span<const double> places,
                       std::vector<float>& pixels) const
{
    const std::size_t width = rows.size() - 1;
    const std::size_t height = places.size() - 1;
    const std::size_t columns = m_source->columns();
    pixels.assign(width * height, kNoCell);
    if (!isBuilt())
        return;
    const double shown = std::min(rows.back(), m_source->rows() + 1.0) - std::max(rows.front(), 1.0);
    const bool isDirect = m_together == 1 || shown * static_cast<double>(columns) <= kReadCells;
    const double together = isDirect ? 1.0 : m_together;
    std::vector<double> edges(rows.size());
    std::transform(rows.begin(), rows.end(), edges.begin(), [&](double r) { return (r - 1.0) / together; });
    const std::vector<Cover> across =
        covers(edges, static_cast<std::int64_t>((m_source->rows() + together - 1) / together));
    edges.resize(places.size());
    std::transform(places.begin(), places.end(), edges.begin(), [&](double y) { return y / m_step - 0.5; });
    const std::vector<Cover> up = covers(edges, static_cast<std::int64_t>(columns));

    std::vector<float> run;
    std::vector<float> joined(columns);
    for (std::size_t x = 0; x < width; ++x) {
        if (across[x].last < 0)
            continue;
        const auto first = static_cast<std::size_t>(across[x].first);
        const std::size_t count = static_cast<std::size_t>(across[x].last) - first + 1;
        const float* cells = (showsMeans ? m_means : m_greatest).data() + first * columns;
        if (isDirect && m_together > 1) {
            run.resize(count * columns);
            m_source->readRows(static_cast<std::uint32_t>(first + 1), static_cast<std::uint32_t>(count),
                               run.data());
            cells = run.data();
        }
        std::copy_n(cells, columns, joined.begin());
        for (std::size_t r = 1; r < count; ++r)
            for (std::size_t c = 0; c < columns; ++c)
                joined[c] = showsMeans ? joined[c] + cells[r * columns + c]
                                       : std::max(joined[c], cells[r * columns + c]);
        for (std::size_t y = 0; y < height; ++y) {
            if (up[y].last < 0)
                continue;
            float value = joined[static_cast<std::size_t>(up[y].first)];
            for (std::int64_t c = up[y].first + 1; c <= up[y].last; ++c)
                value = showsMeans ? value + joined[static_cast<std::size_t>(c)]
                                   : std::max(value, joined[static_cast<std::size_t>(c)]);
            const auto under =
                static_cast<float>(count * static_cast<std::size_t>(up[y].last - up[y].first + 1));
            pixels[y * width + x] = showsMeans ? value / under : value;
        }
    }
}

}  // namespace veltrac
