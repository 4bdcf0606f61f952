// A ts-file as a picture: each sample a column of cells, each cell a value, seen at any number of pixels.
//
// A pixel shows the greatest (or the mean) of the cells under it, so that a short burst never vanishes. One
// pass keeps groups of samples in memory, as few together as kHeldCells allow; a view of fewer cells than
// kReadCells is read from the file itself. So the cost of a frame is bounded, whatever the file's length.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/PlotSource.h"
#include "core/Progress.h"

namespace veltrac {

// In decibels, of a cell without any power: below the level of any float.
inline constexpr float kNoLevel = -380.0F;

class CellImage
{
public:
    static constexpr std::uint64_t kHeldCells = 8'000'000;
    static constexpr std::uint64_t kReadCells = 8'000'000;

    // Column c (from 1) of the source stands at c * step on the other axis.
    CellImage(std::shared_ptr<PlotSource> source, double step, std::string unit)
        : m_source(std::move(source)), m_step(step), m_unit(std::move(unit))
    {
    }

    // The one pass; after a cancel there is nothing to show. Throws the TS exceptions, as all that reads.
    JobOutcome build(const Progress& progress);
    bool isBuilt() const noexcept { return m_together > 0; }

    const PlotSource& source() const noexcept { return *m_source; }
    double step() const noexcept { return m_step; }
    // The axis from the lower edge of the first cell to the upper one of the last.
    double least() const noexcept { return 0.5 * m_step; }
    double greatest() const noexcept { return (m_source->columns() + 0.5) * m_step; }
    const std::string& unit() const noexcept { return m_unit; }

    // The value of the cell at a row (from 1) and a place of the axis; NaN outside.
    double valueAt(std::uint32_t row, double place) const;

    // What the colours stand for: at first from the value that 5 % of the cells that have a level stay below,
    // to the greatest.
    double low = 0.0;
    double high = 1.0;
    bool showsMeans = false;

    // Edges of the pixels: `rows` in samples (1.0 is the beginning of the first, 2.0 that of the second),
    // `places` on the axis, both rising. Fills (rows.size() - 1) * (places.size() - 1) pixels, those of the
    // lowest place first; NaN where no cell is.
    void render(std::span<const double> rows, std::span<const double> places,
                std::vector<float>& pixels) const;

private:
    void findRange();

    std::shared_ptr<PlotSource> m_source;
    double m_step;
    std::string m_unit;
    std::uint32_t m_together = 0;  // samples in a group
    std::vector<float> m_greatest;
    std::vector<float> m_means;
};

}  // namespace veltrac
