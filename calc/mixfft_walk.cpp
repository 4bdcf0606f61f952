#include "calc/mixfft_walk.h"

#include <algorithm>
#include <cstddef>

#include "calc/mixfft_kernels.h"
#include "calc/mixfft_plan.h"
#include "calc/mixfft_steps.h"

namespace veltrac {

namespace {

// Rows of lanes of one tile.
struct Planes
{
    alignas(64) double re[kMaxTile];
    // Apart from a multiple of 4096 bytes, so that loads of one do not wait for stores to the other.
    alignas(64) double im[kMaxTile + 64];
};

Planes s_work;
Planes s_copy;
constexpr double kZeros[kMostLanes] = {};

// The rows of y that neighbours in x go to: the digits of a number, the last stage's lowest, in reverse.
class RowCounter
{
public:
    explicit RowCounter(const FftPlan& plan) : m_plan(plan)
    {
        for (int i = 1; i < plan.stageCount(); ++i)
            m_weight[i] = plan.stage(i).span / plan.stage(0).length;
    }

    std::ptrdiff_t row() const { return m_row; }

    void advance()
    {
        for (int i = m_plan.stageCount() - 1; i > 0; --i) {
            const int length = m_plan.stage(i).length;
            m_row += m_weight[i];
            if (++m_digit[i] < length)
                return;
            m_digit[i] = 0;
            m_row -= m_weight[i] * length;
        }
    }

private:
    const FftPlan& m_plan;
    std::ptrdiff_t m_row = 0;
    std::ptrdiff_t m_weight[kMaxStages] = {};
    int m_digit[kMaxStages] = {};
};

class Walker
{
public:
    Walker(FftPlan& plan, double* yRe, double* yIm, FftMeter& meter)
        : m_plan(plan), m_lanes(plan.lanes()), m_kernel(plan.kernel()), m_yRe(yRe), m_yIm(yIm), m_meter(meter)
    {
    }

    // From x, each transform's outcome to a row of its own.
    bool firstStage(const FftInput& x)
    {
        const FftStage& stage = m_plan.stage(0);
        const std::ptrdiff_t count = m_plan.length() / stage.length;
        const bool pairs = x.form == FftInput::Form::Pairs;
        const std::ptrdiff_t unit = pairs ? 2 : 1;
        FftTile tile{};
        tile.lanes = m_lanes;
        tile.work = tile.to = workRows();
        RowCounter counter(m_plan);
        for (std::ptrdiff_t first = 0; first < count; first += m_lanes) {
            const int used = static_cast<int>(std::min<std::ptrdiff_t>(m_lanes, count - first));
            tile.re = x.re + first * unit;
            tile.stepRe = count * unit;
            tile.im = x.form == FftInput::Form::Complex ? x.im + first : kZeros;
            tile.stepIm = x.form == FftInput::Form::Complex ? count : 0;
            if (used < m_lanes)
                copyPairsOrRows(stage, tile, used, pairs);
            if (pairs && used == m_lanes)
                m_kernel.transformPairs(stage, tile);
            else
                m_kernel.transform(stage, tile);
            std::ptrdiff_t place[kMostLanes];
            for (int lane = 0; lane < used; ++lane, counter.advance())
                place[lane] = counter.row() * stage.length;
            scatter(stage.length, used, place);
            if (!m_meter.add(static_cast<std::uint64_t>(used) * static_cast<std::uint64_t>(stage.length)))
                return false;
        }
        return true;
    }

    // In place.
    bool laterStage(int i)
    {
        const FftStage& stage = m_plan.stage(i);
        const std::ptrdiff_t size = stage.span * stage.length;
        for (std::ptrdiff_t first = 0; first < stage.span; first += m_lanes) {
            const int used = static_cast<int>(std::min<std::ptrdiff_t>(m_lanes, stage.span - first));
            const FftPlan::Turns turns = m_plan.turns(i, first);
            for (std::ptrdiff_t group = first; group < m_plan.length(); group += size) {
                transformRows(stage, turns, FftRows{m_yRe + group, m_yIm + group, stage.span}, used);
                if (!m_meter.add(static_cast<std::uint64_t>(used) * static_cast<std::uint64_t>(stage.length)))
                    return false;
            }
        }
        return true;
    }

private:
    FftRows workRows() const { return {s_work.re, s_work.im, m_lanes}; }
    FftRows copyRows() const { return {s_copy.re, s_copy.im, m_lanes}; }

    // Fewer rows than lanes at the end: the missing ones are zero.
    void copyPairsOrRows(const FftStage& stage, FftTile& tile, int used, bool pairs)
    {
        const int unit = pairs ? 2 : 1;
        const double* im = pairs ? tile.re + 1 : tile.im;
        const std::ptrdiff_t stepIm = pairs ? tile.stepRe : tile.stepIm;
        for (int row = 0; row < stage.length; ++row)
            for (int lane = 0; lane < m_lanes; ++lane) {
                const bool there = lane < used;
                s_copy.re[row * m_lanes + lane] = there ? tile.re[row * tile.stepRe + lane * unit] : 0.0;
                s_copy.im[row * m_lanes + lane] = there ? im[row * stepIm + lane * unit] : 0.0;
            }
        tile.re = s_copy.re;
        tile.im = s_copy.im;
        tile.stepRe = tile.stepIm = m_lanes;
    }

    void transformRows(const FftStage& stage, const FftPlan::Turns& turns, const FftRows& rows, int used)
    {
        FftTile tile{rows.re, rows.im, rows.step, rows.step, turns.re, turns.im, m_lanes, workRows(), rows};
        if (used == m_lanes) {
            m_kernel.transform(stage, tile);
            return;
        }
        copyPairsOrRows(stage, tile, used, false);
        tile.to = copyRows();
        m_kernel.transform(stage, tile);
        for (int row = 0; row < stage.length; ++row)
            for (int lane = 0; lane < used; ++lane) {
                rows.re[row * rows.step + lane] = s_copy.re[row * m_lanes + lane];
                rows.im[row * rows.step + lane] = s_copy.im[row * m_lanes + lane];
            }
    }

    void scatter(int length, int used, const std::ptrdiff_t* place)
    {
        if (used == m_lanes) {
            m_kernel.scatter(s_work.re, length, m_lanes, place, m_yRe);
            m_kernel.scatter(s_work.im, length, m_lanes, place, m_yIm);
            return;
        }
        for (int lane = 0; lane < used; ++lane)
            for (int row = 0; row < length; ++row) {
                m_yRe[place[lane] + row] = s_work.re[row * m_lanes + lane];
                m_yIm[place[lane] + row] = s_work.im[row * m_lanes + lane];
            }
    }

    FftPlan& m_plan;
    int m_lanes;
    const FftKernel& m_kernel;
    double* m_yRe;
    double* m_yIm;
    FftMeter& m_meter;
};

// In the single steps.
void transformShort(int n, const FftInput& x, double* yRe, double* yIm)
{
    double re[kShortestStaged];
    double im[kShortestStaged];
    for (int j = 0; j < n; ++j) {
        re[j] = x.form == FftInput::Form::Pairs ? x.re[2 * j] : x.re[j];
        im[j] = x.form == FftInput::Form::Real    ? 0.0
                : x.form == FftInput::Form::Pairs ? x.re[2 * j + 1]
                                                  : x.im[j];
    }
    int passCount = 0;
    int radixOf[kMaxPasses];
    int span[kMaxPasses];
    int groups[kMaxPasses];
    factorLength(n, &passCount, radixOf);
    buildPassTables(span, radixOf, groups, &passCount, &n);
    digitReversal(n, passCount, radixOf, groups, re, im, yRe, yIm);
    for (int i = 1; i <= passCount; ++i)
        radixPass(span[i], radixOf[i], n / (span[i] * radixOf[i]), yRe, yIm);
}

}  // namespace

std::uint64_t fftSteps(int n)
{
    const int stages = n < kShortestStaged ? 1 : FftPlan::of(n).stageCount();
    return static_cast<std::uint64_t>(n) * static_cast<std::uint64_t>(stages);
}

void refuseLongFactors(int n)
{
    int passCount = 0;
    int radixOf[kMaxPasses];
    int span[kMaxPasses];
    int groups[kMaxPasses];
    factorLength(n, &passCount, radixOf);
    buildPassTables(span, radixOf, groups, &passCount, &n);
}

bool transformStaged(int n, const FftInput& x, double* yRe, double* yIm, FftMeter& meter)
{
    if (n < kShortestStaged) {
        transformShort(n, x, yRe, yIm);
        return meter.add(static_cast<std::uint64_t>(n));
    }
    FftPlan& plan = FftPlan::of(n);
    Walker walker(plan, yRe, yIm, meter);
    if (!walker.firstStage(x))
        return false;
    for (int i = 1; i < plan.stageCount(); ++i)
        if (!walker.laterStage(i))
            return false;
    return true;
}

}  // namespace veltrac
