// Two columns of one source against each other: the samples of both joined in their order, thinned to what
// can be seen, in one pass over any number of them.
//
// Up to kAllSamples are kept as they are. Of more, those are left out that lie in the same cell of a fine
// grid over the shown rectangle as the one before them, so that nothing moves by more than a cell and no
// extreme is lost; the grid becomes coarser where its turns are still too many. What fills the picture all
// over even then is no line any more: it is kept as the cells of a grid that a sample lies in.
#pragma once

#include <cstdint>
#include <vector>

#include "core/Progress.h"
#include "core/SampleRange.h"
#include "core/Variable.h"

namespace veltrac {

class XyPath
{
public:
    static constexpr std::size_t kAllSamples = 200'000;
    static constexpr std::uint32_t kCloudCells = 2048;  // a side

    struct Rectangle
    {
        double x1 = 0.0, y1 = 0.0, x2 = 1.0, y2 = 1.0;  // x1 < x2, y1 < y2
    };

    // Both of one source; the rows are those of the source.
    XyPath(Variable x, Variable y, const SampleRange& rows);

    // The pass; the grid lies over the rectangle, in shown values. After a cancel all is as it was. Throws
    // the TS exceptions.
    JobOutcome build(const Rectangle& seen, const Progress& progress);

    // Points x, y of each gap-free run, and the points (not numbers) before the end of each. None of a cloud.
    const std::vector<double>& points() const noexcept { return m_points; }
    const std::vector<std::size_t>& runEnds() const noexcept { return m_runEnds; }
    bool isCloud() const noexcept { return !m_cloud.empty(); }
    // Whether samples were left out, so that a closer look needs another pass.
    bool isThinned() const noexcept { return m_isThinned; }
    const Rectangle& seen() const noexcept { return m_seen; }
    // Samples with both values.
    std::uint64_t pairs() const noexcept { return m_pairs; }

    // Of a cloud: rows of cells from below, in each the first and the last of neighbouring cells.
    struct CloudRun
    {
        std::uint32_t row, first, last;
    };
    std::vector<CloudRun> cloudRuns() const;

private:
    class Pass;

    Variable m_x;
    Variable m_y;
    SampleRange m_rows;
    Rectangle m_seen;
    std::vector<double> m_points;
    std::vector<std::size_t> m_runEnds;
    std::vector<bool> m_cloud;
    bool m_isThinned = false;
    std::uint64_t m_pairs = 0;
};

}  // namespace veltrac
