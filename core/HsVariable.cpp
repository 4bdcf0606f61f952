#include "core/HsVariable.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <vector>

#include "core/TsExceptions.h"

using namespace veltrac;

namespace {

constexpr std::size_t kChunkFloats = 1U << 15;
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
        const std::uint32_t columns = std::max<std::uint32_t>(1, m_source.columns());
        const auto chunk = static_cast<std::uint32_t>(std::max<std::size_t>(1, kChunkFloats / columns));
        std::vector<float> rows(std::size_t{std::min(chunk, m_source.rows())} * columns);
        bool learning = !m_source.timesAreKnown();
        for (std::uint32_t done = 0; done < m_source.rows();) {
            const std::uint32_t count = std::min(chunk, m_source.rows() - done);
            m_source.readRows(done + 1, count, rows.data());
            learning = learning && m_source.learnTimes(done + 1, count, rows.data());
            for (std::size_t v = 0; v < m_variables.size(); ++v)
                add(v, rows.data(), columns, count);
            done += count;
            if (!goesOn(progress, before + std::uint64_t{done} * columns, total))
                return JobOutcome::Cancelled;
        }
        m_source.timesAreComplete();
        for (std::size_t v = 0; v < m_variables.size(); ++v)
            hand(v);
        return JobOutcome::Done;
    }

    void fail(const std::string& text)
    {
        for (HsVariable* v : m_variables)
            v->m_failure = text;
    }

private:
    void add(std::size_t v, const float* rows, std::uint32_t columns, std::uint32_t count)
    {
        const float* values = rows + m_variables[v]->m_variable.column() - 1;
        if (!m_variables[v]->usesPositive()) {
            m_pyramids[v].add(values, columns, count);
            return;
        }
        m_positive.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            const float raw = values[i * columns];
            m_positive[i] = m_variables[v]->counts(raw) ? raw : std::numeric_limits<float>::quiet_NaN();
        }
        m_pyramids[v].add(m_positive.data(), 1, count);
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
    std::vector<float> m_positive;
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
    Summary s;
    m_all.collect(0, m_all.buckets(), false, s);
    return s.count > 0 && std::min(m_variable.shown(s.least), m_variable.shown(s.greatest)) <= 0.0;
}

bool HsVariable::counts(float raw) const
{
    return std::isfinite(raw) && m_variable.shown(raw) > 0.0;
}

// -- Answering --

Summary HsVariable::looseEnd(bool positiveOnly, std::uint32_t bucket, std::uint32_t from,
                             std::uint32_t to) const
{
    const PlotSource::Run run = m_variable.source()->run(bucket, m_variable.column());
    const float* const values = run.values + from * run.stride;
    if (!positiveOnly)
        return summaryOf(values, run.stride, to - from);
    float kept[Pyramid::kLargestBucket];
    std::size_t n = 0;
    for (std::size_t i = 0; i < to - from; ++i)
        if (const float raw = values[i * run.stride]; counts(raw))
            kept[n++] = raw;
    return summaryOf(kept, 1, n);
}

Summary HsVariable::collect(std::uint32_t first, std::uint32_t last, bool moments) const
{
    const bool positiveOnly = usesPositive();
    return collectFrom(positiveOnly ? m_positive : m_all, positiveOnly, first, last, moments);
}

Summary HsVariable::collectFrom(const Pyramid& pyramid, bool positiveOnly, std::uint32_t first,
                                std::uint32_t last, bool moments) const
{
    Summary all;
    if (first > last)
        return all;
    const auto take = [&](const Summary& s) { moments ? all.join(s) : all.widen(s); };
    const std::uint32_t bucket = m_variable.source()->bucketRows();
    const std::uint32_t begin = first - 1;
    const std::uint32_t end = last;
    const std::uint32_t firstWhole = begin / bucket + (begin % bucket != 0 ? 1 : 0);
    // The last bucket may be a short one: it is whole where the run ends with the rows.
    const std::uint32_t endWhole =
        end == m_variable.rows() ? static_cast<std::uint32_t>(pyramid.buckets()) : end / bucket;
    if (firstWhole > endWhole || (firstWhole == endWhole && begin / bucket == (end - 1) / bucket)) {
        take(looseEnd(positiveOnly, begin / bucket, begin % bucket, (end - 1) % bucket + 1));
        return all;
    }
    if (begin % bucket != 0)
        take(looseEnd(positiveOnly, firstWhole - 1, begin % bucket, bucket));
    pyramid.collect(firstWhole, endWhole, moments, all);
    if (end != m_variable.rows() && end % bucket != 0)
        take(looseEnd(positiveOnly, endWhole, 0, end % bucket));
    return all;
}

HsVariable::Range HsVariable::range(std::uint32_t first, std::uint32_t last) const
{
    const Summary s = collect(first, last, false);
    if (s.count == 0)
        return {};
    const double a = m_variable.shown(s.least);
    const double b = m_variable.shown(s.greatest);
    return {std::min(a, b), std::max(a, b), false};
}

HsVariable::Statistics HsVariable::statistics(std::uint32_t first, std::uint32_t last) const
{
    Statistics out;
    const Summary s = collect(first, last, true);
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
    const std::uint32_t finite = collectFrom(m_all, false, first, last, false).count;
    const std::uint32_t positive = collectFrom(m_positive, true, first, last, false).count;
    return finite - positive;
}

std::uint32_t HsVariable::rowOfExtreme(std::uint32_t first, std::uint32_t last, bool greatest) const
{
    const bool wantGreatest = greatest == (m_variable.gain >= 0.0);
    const Summary all = collect(first, last, false);
    if (all.count == 0)
        return 0;
    const float target = wantGreatest ? all.greatest : all.least;
    // Halve the run towards the half that holds it, down to a bucket's length.
    while (last - first >= Pyramid::kLargestBucket) {
        const std::uint32_t middle = first + (last - first) / 2;
        const Summary left = collect(first, middle, false);
        if (left.count > 0 && (wantGreatest ? left.greatest : left.least) == target)
            last = middle;
        else
            first = middle + 1;
    }
    for (std::uint32_t row = first; row <= last; ++row)
        if (m_variable.source()->value(row, m_variable.column()) == target)
            return row;
    return 0;
}
