#include "calc/mixfft_plan.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <span>

#include "calc/mixfft_root.h"
#include "calc/mixfft_steps.h"

namespace veltrac {

namespace {

// Values of a tile that leave room for its turns in a first-level cache.
constexpr int kShortTile = 1024;
// From here on the arrays exceed the caches, and rows of two lines are read faster than of one.
constexpr int kLongLength = 65536;
constexpr int kRadicesOfTheirOwn[] = {2, 3, 4, 5, 8, 9, 10};

bool hasOwnButterfly(int radix)
{
    return std::find(std::begin(kRadicesOfTheirOwn), std::end(kRadicesOfTheirOwn), radix) !=
           std::end(kRadicesOfTheirOwn);
}

// The divisor of n up to kMaxStageLength that is nearest to its count-th root.
int stageDivisor(int n, int count)
{
    const double wanted = std::log(n) / count;
    int best = 1;
    for (int d = 2; d <= std::min(n, kMaxStageLength); ++d)
        if (n % d == 0 && std::fabs(std::log(d) - wanted) < std::fabs(std::log(best) - wanted))
            best = d;
    return best;
}

// Splits n into lengths about equal to each other, as few as there can be; returns how many.
int splitLength(int n, int* lengths)
{
    for (int count = 2; count <= kMaxStages; ++count) {
        int rest = n;
        for (int i = 0; i < count - 1; ++i) {
            lengths[i] = stageDivisor(rest, count - i);
            rest /= lengths[i];
        }
        lengths[count - 1] = rest;
        if (rest <= kMaxStageLength)
            return count;
    }
    std::abort();  // no length with factors up to 37 comes here
}

// The radices of a stage; two of 3 become one of 9.
int stageRadices(int length, int* radices)
{
    int count = 0;
    int radixOf[kMaxPasses];
    factorLength(length, &count, radixOf);
    int used = 0;
    for (int i = 1; i <= count; ++i) {
        if (radixOf[i] == 3 && used > 0 && radices[used - 1] == 3)
            radices[used - 1] = 9;
        else
            radices[used++] = radixOf[i];
    }
    return used;
}

// As many lanes as the caches like.
int lanesFor(int n, int longestStage)
{
    if (n >= kLongLength)
        return 16;
    int lanes = kMostLanes;
    while (lanes > kLeastLanes && lanes * longestStage > kShortTile)
        lanes /= 2;
    return lanes;
}

// The input row that the first value of a butterfly of the first pass comes from: its digits reversed.
int firstRow(int group, std::span<const FftPass> passes, int length)
{
    int stride = length / passes[0].radix;
    int row = 0;
    for (const FftPass& pass : passes.subspan(1)) {
        stride /= pass.radix;
        row += group % pass.radix * stride;
        group /= pass.radix;
    }
    return row;
}

}  // namespace

FftPlan& FftPlan::of(int n)
{
    static FftPlan plan;
    if (plan.m_length != n || plan.m_kernel != &fftKernel())
        plan.make(n);
    return plan;
}

void FftPlan::make(int n)
{
    m_kernel = &fftKernel();
    int lengths[kMaxStages];
    m_stageCount = splitLength(n, lengths);
    m_lanes = lanesFor(n, *std::max_element(lengths, lengths + m_stageCount));
    std::ptrdiff_t span = 1;
    for (int i = 0; i < m_stageCount; ++i) {
        makeStage(i, span, lengths[i]);
        span *= lengths[i];
    }
    m_length = n;
    m_keepsTurns = false;
    if (m_stageCount == 2 && n <= kKeptTurns)
        keepTurns();
}

void FftPlan::makeStage(int i, std::ptrdiff_t span, int length)
{
    FftStage& stage = m_stages[i];
    Tables& tables = m_tables[i];
    stage.length = length;
    stage.span = span;
    int radices[kMaxStagePasses];
    stage.passCount = stageRadices(length, radices);
    int inner = 1;
    double* next = tables.roots;
    for (int p = 0; p < stage.passCount; ++p) {
        FftPass& pass = stage.passes[p];
        const int radix = radices[p];
        pass = {radix, inner, next, nullptr};
        for (int m = 0; inner > 1 && m < inner; ++m)
            for (int k = 1; k < radix; ++k) {
                const FftRoot root(std::int64_t{m} * k, std::int64_t{inner} * radix);
                *next++ = root.re;
                *next++ = root.im;
            }
        if (!hasOwnButterfly(radix)) {
            pass.trig = next;
            for (int k = 0; k < radix; ++k) {
                const FftRoot root(k, radix);
                next[k] = root.re;
                next[radix + k] = root.im;
            }
            next += 2 * std::ptrdiff_t{radix};
        }
        inner *= radix;
    }
    const int groups = length / radices[0];
    for (int group = 0; group < groups; ++group)
        tables.rows[group] =
            firstRow(group, std::span(stage.passes, static_cast<std::size_t>(stage.passCount)), length);
    stage.rows = tables.rows;
    makeLaneFactors(i);
}

void FftPlan::makeLaneFactors(int i)
{
    const FftStage& stage = m_stages[i];
    TurnFactors& factors = m_tables[i].factors;
    const std::int64_t whole = stage.span * stage.length;
    factors.parts = 1;
    while (factors.parts * factors.parts < stage.length)
        factors.parts *= 2;
    factors.coarseParts = (stage.length + factors.parts - 1) / factors.parts;
    const auto fill = [&](int parts, int step, double* re, double* im) {
        for (int k = 0; k < parts; ++k)
            for (int lane = 0; lane < m_lanes; ++lane) {
                const FftRoot root(std::int64_t{lane} * k * step, whole);
                re[k * m_lanes + lane] = root.re;
                im[k * m_lanes + lane] = root.im;
            }
    };
    fill(factors.parts, 1, factors.laneFineRe, factors.laneFineIm);
    fill(factors.coarseParts, factors.parts, factors.laneCoarseRe, factors.laneCoarseIm);
}

void FftPlan::buildTurns(int i, std::ptrdiff_t first, double* re, double* im)
{
    const FftStage& stage = m_stages[i];
    TurnFactors& factors = m_tables[i].factors;
    const std::int64_t whole = stage.span * stage.length;
    for (int k = 0; k < factors.parts; ++k) {
        const FftRoot root(first * k, whole);
        factors.fineRe[k] = root.re;
        factors.fineIm[k] = root.im;
    }
    for (int k = 0; k < factors.coarseParts; ++k) {
        const FftRoot root(first * k * factors.parts, whole);
        factors.coarseRe[k] = root.re;
        factors.coarseIm[k] = root.im;
    }
    m_kernel->buildTurns(factors, stage.length, m_lanes, re, im);
}

void FftPlan::keepTurns()
{
    const FftStage& stage = m_stages[1];
    const std::ptrdiff_t size = std::ptrdiff_t{stage.length} * m_lanes;
    for (std::ptrdiff_t first = 0, place = 0; first < stage.span; first += m_lanes, place += size)
        buildTurns(1, first, m_keptRe + place, m_keptIm + place);
    m_keepsTurns = true;
}

FftPlan::Turns FftPlan::turns(int i, std::ptrdiff_t first)
{
    if (m_keepsTurns) {
        const std::ptrdiff_t place = first * m_stages[i].length;
        return {m_keptRe + place, m_keptIm + place};
    }
    buildTurns(i, first, m_turnRe, m_turnIm);
    return {m_turnRe, m_turnIm};
}

}  // namespace veltrac
