#include "core/HsVariable.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <vector>

#include "core/TsExceptions.h"
#include "core/WorkerPool.h"

using namespace veltrac;

namespace {

constexpr std::size_t kPieceFloats = 1U << 16;
// Rows so wide that a bucket of them holds more are summed up one after the other: pieces of whole buckets
// would take too much memory.
constexpr std::size_t kMostPieceFloats = 1U << 20;
constexpr const char* kNoMemory = "not enough memory";

}  // namespace

// -- Building --

// One source's share of the job.
class HsVariable::Pass
{
public:
    Pass(PlotSource& source, std::vector<HsVariable*> variables)
        : m_source(source),
          m_variables(std::move(variables)),
          m_pyramids(m_variables.size(), Pyramid(source.bucketRows()))
    {
    }

    std::uint64_t values() const { return std::uint64_t{m_source.rows()} * m_source.columns(); }

    JobOutcome run(std::uint64_t before, std::uint64_t total, const Progress& progress)
    {
        WorkerPool& pool = WorkerPool::shared();
        m_pieces.resize(pool.slots());
        m_learning = !m_source.timesAreKnown();
        for (Pyramid& pyramid : m_pyramids)
            pyramid.reserve(m_source.rows() / m_source.bucketRows() + 1);
        const WorkerPool::Stages stages{[this](std::size_t slot) { return take(m_pieces[slot]); },
                                        [this](std::size_t slot) { sumUp(m_pieces[slot]); },
                                        [this](std::size_t slot) { give(m_pieces[slot]); }};
        const JobOutcome outcome = pool.run(
            stages, [&] { return goesOn(progress, before + std::uint64_t{m_given} * width(), total); });
        if (outcome == JobOutcome::Cancelled)
            return outcome;
        m_source.timesAreComplete();
        for (std::size_t v = 0; v < m_variables.size(); ++v)
            hand(v);
        return outcome;
    }

    void fail(const std::string& text)
    {
        for (HsVariable* v : m_variables)
            v->m_failure = text;
    }

private:
    // Rows on their way into the pyramids.
    struct Piece
    {
        std::uint32_t count = 0;
        std::vector<float> rows;
        std::vector<float> positive;
        std::vector<std::vector<Summary>> buckets;  // of each variable
    };

    std::uint32_t width() const { return std::max<std::uint32_t>(1, m_source.columns()); }
    // Whether pieces are made of whole buckets, which can be summed up at the same time.
    bool inBuckets() const { return std::size_t{m_source.bucketRows()} * width() <= kMostPieceFloats; }

    bool take(Piece& piece)
    {
        if (m_taken == m_source.rows())
            return false;
        auto rows = static_cast<std::uint32_t>(std::max<std::size_t>(1, kPieceFloats / width()));
        if (inBuckets())
            rows = std::max(rows - rows % m_source.bucketRows(), m_source.bucketRows());
        piece.count = std::min(rows, m_source.rows() - m_taken);
        piece.rows.resize(std::size_t{piece.count} * width());
        m_source.readRows(m_taken + 1, piece.count, piece.rows.data());
        m_learning = m_learning && m_source.learnTimes(m_taken + 1, piece.count, piece.rows.data());
        m_taken += piece.count;
        return true;
    }

    void sumUp(Piece& piece) const
    {
        piece.buckets.resize(m_variables.size());
        for (std::size_t v = 0; v < m_variables.size() && inBuckets(); ++v) {
            const Values values = valuesOf(v, piece);
            piece.buckets[v].clear();
            summariesOf(values.first, values.stride, piece.count, m_source.bucketRows(), piece.buckets[v]);
        }
    }

    void give(Piece& piece)
    {
        for (std::size_t v = 0; v < m_variables.size(); ++v) {
            if (inBuckets()) {
                m_pyramids[v].add(piece.buckets[v]);
            } else {
                const Values values = valuesOf(v, piece);
                m_pyramids[v].add(values.first, values.stride, piece.count);
            }
        }
        m_given += piece.count;
    }

    // A variable's values among those of a piece.
    struct Values
    {
        const float* first;
        std::size_t stride;
    };
    Values valuesOf(std::size_t v, Piece& piece) const
    {
        const float* const values = piece.rows.data() + m_variables[v]->m_variable.column() - 1;
        if (!m_variables[v]->usesPositive())
            return {values, width()};
        piece.positive.resize(piece.count);
        for (std::size_t i = 0; i < piece.count; ++i) {
            const float raw = values[i * width()];
            piece.positive[i] = m_variables[v]->counts(raw) ? raw : std::numeric_limits<float>::quiet_NaN();
        }
        return {piece.positive.data(), 1};
    }

    void hand(std::size_t v)
    {
        HsVariable& variable = *m_variables[v];
        m_pyramids[v].finish();
        const bool positive = variable.usesPositive();
        (positive ? variable.m_positive : variable.m_all) = std::move(m_pyramids[v]);
        (positive ? variable.m_madePositive : variable.m_madeAll) =
            Made{true, positive, variable.m_variable.gain, variable.m_variable.offset};
        variable.m_failure.clear();
    }

    PlotSource& m_source;
    std::vector<HsVariable*> m_variables;
    std::vector<Pyramid> m_pyramids;
    std::vector<Piece> m_pieces;
    std::uint32_t m_taken = 0;  // rows
    std::uint32_t m_given = 0;
    bool m_learning = false;
};

JobOutcome HsVariable::build(const Progress& progress)
{
    // Shared only for the length of the call.
    const std::shared_ptr<HsVariable> borrowed(this, [](HsVariable*) {});
    return buildAll({&borrowed, 1}, progress);
}

JobOutcome HsVariable::buildAll(std::span<const std::shared_ptr<HsVariable>> variables,
                                const Progress& progress)
{
    // Twice: whether a log axis needs a pyramid of its own is known from the first one.
    for (int round = 0; round < 2; ++round) {
        std::vector<PlotSource*> sources;
        std::vector<std::vector<HsVariable*>> wanting;
        for (const std::shared_ptr<HsVariable>& v : variables) {
            if (v->isBuilt() || (round > 0 && !v->m_failure.empty()))
                continue;
            PlotSource* const source = v->m_variable.source().get();
            const auto known = std::find(sources.begin(), sources.end(), source);
            if (known == sources.end()) {
                sources.push_back(source);
                wanting.push_back({v.get()});
            } else {
                wanting[static_cast<std::size_t>(known - sources.begin())].push_back(v.get());
            }
        }
        std::vector<Pass> passes;
        std::uint64_t total = 0;
        for (std::size_t i = 0; i < sources.size(); ++i)
            total += passes.emplace_back(*sources[i], std::move(wanting[i])).values();
        std::uint64_t before = 0;
        for (Pass& pass : passes) {
            try {
                if (pass.run(before, total, progress) == JobOutcome::Cancelled)
                    return JobOutcome::Cancelled;
            } catch (const TS::IO_ERROR& e) {
                pass.fail("cannot be read at byte " + std::to_string(e.value1));
            } catch (const TS::Failure&) {
                pass.fail("cannot be read");
            } catch (const std::bad_alloc&) {
                pass.fail(kNoMemory);
            }
            before += pass.values();
        }
    }
    return JobOutcome::Done;
}

void HsVariable::extendAll(std::span<const std::shared_ptr<HsVariable>> variables, PlotSource& source,
                           std::uint32_t before)
{
    const std::uint32_t width = std::max<std::uint32_t>(1, source.columns());
    const std::uint32_t bucket = source.bucketRows();
    const std::uint32_t atOnce =
        std::max<std::uint32_t>(1, static_cast<std::uint32_t>(kPieceFloats) / width / bucket) * bucket;
    std::vector<float> rows;
    for (std::uint32_t done = before - before % bucket; done < source.rows();) {
        const std::uint32_t count = std::min(atOnce, source.rows() - done);
        rows.resize(std::size_t{count} * width);
        source.readRows(done + 1, count, rows.data());
        // Of the first piece some rows are known.
        const std::uint32_t known = before > done ? before - done : 0;
        source.learnTimes(done + known + 1, count - known, &rows[std::size_t{known} * width]);
        for (const std::shared_ptr<HsVariable>& v : variables)
            if (v->m_variable.source().get() == &source)
                v->extend(done / bucket, rows.data() + v->m_variable.column() - 1, width, count);
        done += count;
    }
}

void HsVariable::extend(std::uint32_t firstBucket, const float* values, std::size_t stride, std::size_t rows)
{
    const std::uint32_t bucket = m_variable.source()->bucketRows();
    std::vector<Summary> buckets;
    if (m_madeAll.built) {
        summariesOf(values, stride, rows, bucket, buckets);
        m_all.replaceEnd(firstBucket, buckets);
    }
    if (m_madePositive.built) {
        std::vector<float> positive(rows);
        for (std::size_t i = 0; i < rows; ++i)
            positive[i] =
                counts(values[i * stride]) ? values[i * stride] : std::numeric_limits<float>::quiet_NaN();
        buckets.clear();
        summariesOf(positive.data(), 1, rows, bucket, buckets);
        m_positive.replaceEnd(firstBucket, buckets);
    }
}

void HsVariable::forgetBuckets(std::span<const std::shared_ptr<HsVariable>> variables, PlotSource& source,
                               std::uint32_t buckets)
{
    source.forgetBuckets(buckets);
    for (const std::shared_ptr<HsVariable>& v : variables) {
        if (v->m_variable.source().get() != &source)
            continue;
        v->m_all.dropFront(buckets);
        v->m_positive.dropFront(buckets);
    }
}

bool HsVariable::isBuilt() const
{
    if (!m_madeAll.built || !m_variable.source()->timesAreKnown())
        return false;
    return !usesPositive() || (m_madePositive.built && m_madePositive.gain == m_variable.gain &&
                               m_madePositive.offset == m_variable.offset);
}

void HsVariable::forget()
{
    m_madeAll = m_madePositive = {};
    m_all.clear();
    m_positive.clear();
    m_failure.clear();
}

bool HsVariable::needsPositive() const
{
    if (!m_madeAll.built)
        return false;
    Extremes s;
    m_all.collect(0, m_all.buckets(), s);
    return !s.isEmpty() && std::min(m_variable.shown(s.least), m_variable.shown(s.greatest)) <= 0.0;
}

bool HsVariable::counts(float raw) const
{
    return std::isfinite(raw) && m_variable.shown(raw) > 0.0;
}

// -- Answering --

Summary HsVariable::positiveOf(const PlotSource::Run& run, const Piece& piece) const
{
    float kept[Pyramid::kLargestBucket];
    std::size_t n = 0;
    for (std::size_t i = piece.from; i < piece.to; ++i)
        if (const float raw = run.values[i * run.stride]; counts(raw))
            kept[n++] = raw;
    return summaryOf(kept, 1, n);
}

void HsVariable::takeLooseEnd(const Piece& piece, bool positiveOnly, Extremes& into) const
{
    const PlotSource& source = *m_variable.source();
    const std::uint32_t column = m_variable.column();
    if (!positiveOnly)
        source.widen(piece, {&column, 1}, {&into, 1});
    else if (!piece.isEmpty())
        into.widen(positiveOf(source.run(column, piece.bucket), piece));
}

void HsVariable::takeLooseEnd(const Piece& piece, bool positiveOnly, Summary& into) const
{
    if (piece.isEmpty())
        return;
    const PlotSource::Run run = m_variable.source()->run(m_variable.column(), piece.bucket);
    const Summary end =
        positiveOnly ? positiveOf(run, piece)
                     : summaryOf(run.values + piece.from * run.stride, run.stride, piece.to - piece.from);
    into.join(end, end);
}

template <typename Wanted>
Wanted HsVariable::collect(std::uint32_t first, std::uint32_t last) const
{
    const bool positiveOnly = usesPositive();
    return collectFrom<Wanted>(positiveOnly ? m_positive : m_all, positiveOnly, first, last);
}

template <typename Wanted>
Wanted HsVariable::collectFrom(const Pyramid& pyramid, bool positiveOnly, std::uint32_t first,
                               std::uint32_t last) const
{
    Wanted all;
    const PlotSource::Pieces rows = m_variable.source()->pieces(first, last);
    takeLooseEnd(rows.before, positiveOnly, all);
    pyramid.collect(rows.begin, rows.end, all);
    takeLooseEnd(rows.behind, positiveOnly, all);
    return all;
}

HsVariable::Range HsVariable::shown(const Extremes& raw) const
{
    if (raw.isEmpty())
        return {};
    const double a = m_variable.shown(raw.least);
    const double b = m_variable.shown(raw.greatest);
    return {std::min(a, b), std::max(a, b), false};
}

HsVariable::Range HsVariable::range(std::uint32_t first, std::uint32_t last) const
{
    return shown(collect<Extremes>(first, last));
}

HsVariable::Range HsVariable::range(const PlotSource::Pieces& rows, const Extremes& looseEnds) const
{
    Extremes all = looseEnds;
    m_all.collect(rows.begin, rows.end, all);
    return shown(all);
}

HsVariable::Statistics HsVariable::statistics(std::uint32_t first, std::uint32_t last) const
{
    Statistics out;
    const auto s = collect<Summary>(first, last);
    out.count = s.count;
    out.missing = first > last ? 0 : last - first + 1 - s.count;
    if (s.count == 0)
        return out;
    const double a = m_variable.shown(s.least);
    const double b = m_variable.shown(s.greatest);
    out.least = std::min(a, b);
    out.greatest = std::max(a, b);
    out.mean = m_variable.gain * s.mean + m_variable.offset;
    const double squares = m_variable.gain * m_variable.gain * s.squares;
    out.rms = std::sqrt(out.mean * out.mean + squares / s.count);
    out.deviation = s.count > 1 ? std::sqrt(squares / (s.count - 1.0)) : 0.0;
    return out;
}

std::uint32_t HsVariable::notPositive(std::uint32_t first, std::uint32_t last) const
{
    if (!usesPositive())
        return 0;
    const std::uint32_t finite = collectFrom<Summary>(m_all, false, first, last).count;
    const std::uint32_t positive = collectFrom<Summary>(m_positive, true, first, last).count;
    return finite - positive;
}

std::uint32_t HsVariable::rowOfExtreme(std::uint32_t first, std::uint32_t last, bool greatest) const
{
    const bool wantGreatest = greatest == (m_variable.gain >= 0.0);
    const auto all = collect<Extremes>(first, last);
    if (all.isEmpty())
        return 0;
    const float target = wantGreatest ? all.greatest : all.least;
    // Halve the run towards the half that holds it, down to a bucket's length.
    while (last - first >= Pyramid::kLargestBucket) {
        const std::uint32_t middle = first + (last - first) / 2;
        const auto left = collect<Extremes>(first, middle);
        if (!left.isEmpty() && (wantGreatest ? left.greatest : left.least) == target)
            last = middle;
        else
            first = middle + 1;
    }
    for (std::uint32_t row = first; row <= last; ++row)
        if (m_variable.source()->value(m_variable.column(), row) == target)
            return row;
    return 0;
}
