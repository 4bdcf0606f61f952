#include "formula/Calculation.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "core/FileTime.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "formula/BlockFormula.h"
#include "formula/FormulaEvaluation.h"

namespace veltrac {

namespace {

// How much a bound may miss a sample, in samples. A dt of 0.01 is a little less as a 32-bit float, which adds
// up: the 50th step of it is not quite at the 0.5 that somebody types. The start is such a float too.
double slackOf(double bound, double origin, double dt)
{
    constexpr double kTolerance = 1e-6;
    constexpr double kFloatRounding = 1.0 / (1 << 24);
    constexpr double kMost = 0.5;
    return std::min(kMost, kTolerance + std::max(std::fabs(bound), std::fabs(origin)) / dt * kFloatRounding);
}

// Computes a range and counts what is to be told of it.
class RangeWriter
{
public:
    RangeWriter(FormulaParser& formula, const CalculationTarget& target, CalculationReport& report)
        : m_formula(formula),
          m_target(target),
          m_report(report),
          m_dt(target.file.dt()),
          m_blocks(BlockFormula::of(formula.root(), target.file, target.column)),
          m_values(BlockFormula::kRun)
    {
    }

    // At most kRun samples.
    void write(std::uint32_t first, std::size_t count)
    {
        const std::span<float> values(m_values.data(), count);
        const bool isLoaded = m_blocks != nullptr && load(first, count);
        for (std::size_t done = 0; done < count && m_blocks != nullptr; done += BlockFormula::kBlock) {
            const auto sample = static_cast<std::uint32_t>(first + done);
            const auto block = values.subspan(done, std::min(BlockFormula::kBlock, count - done));
            if (!isLoaded || !m_blocks->values(sample, block))
                for (std::size_t i = 0; i < block.size(); ++i)
                    block[i] = valueOf(sample + static_cast<std::uint32_t>(i));
        }
        if (m_blocks != nullptr) {
            m_target.file.writeColumn(m_target.column, first, values);
        } else {
            // What is written may be read for the next sample.
            for (std::size_t i = 0; i < count; ++i) {
                const auto sample = static_cast<std::uint32_t>(first + i);
                m_target.file.setValue(sample, m_target.column, values[i] = valueOf(sample));
            }
        }
        m_report.missing += static_cast<std::uint64_t>(
            std::count_if(values.begin(), values.end(), [](float value) { return !std::isfinite(value); }));
    }

private:
    // False where a source fails: single samples tell at which one.
    bool load(std::uint32_t first, std::size_t count)
    {
        try {
            m_blocks->load(first, count);
            return true;
        } catch (const TS::Failure&) {
            return false;
        }
    }

    float valueOf(std::uint32_t sample)
    {
        const std::uint64_t before = formulaReports();
        const double value = m_formula.Evaluate(static_cast<std::int32_t>(sample), (sample - 1U) * m_dt);
        m_report.faultySamples += formulaReports() == before ? 0 : 1;
        return static_cast<float>(value);
    }

    FormulaParser& m_formula;
    const CalculationTarget& m_target;
    CalculationReport& m_report;
    double m_dt;
    std::unique_ptr<BlockFormula> m_blocks;
    std::vector<float> m_values;
};

// False where the user has cancelled.
bool writeValues(FormulaParser& formula, const CalculationTarget& target, const Progress& progress,
                 CalculationReport& report)
{
    RangeWriter writer(formula, target, report);
    const std::uint64_t total = target.range.count();
    for (std::uint64_t done = 0; done < total; done += BlockFormula::kRun) {
        writer.write(static_cast<std::uint32_t>(target.range.first + done),
                     static_cast<std::size_t>(std::min<std::uint64_t>(BlockFormula::kRun, total - done)));
        if (!goesOn(progress, done, total))
            return false;
    }
    return true;
}

}  // namespace

std::array<bool, kMostSources> usedRows(std::string_view formula, int rowCount, int targetRow)
{
    std::array<bool, kMostSources> used{};
    for (std::size_t i = 0; i + 1 < formula.size(); ++i) {
        const int k = formula[i + 1] - '0';
        if ((formula[i] == 'x' || formula[i] == 'X') && k >= 1 && k <= std::min(rowCount, kMostSources))
            used[static_cast<std::size_t>(k - 1)] = true;
    }
    if (targetRow >= 1 && targetRow <= kMostSources)
        used[static_cast<std::size_t>(targetRow - 1)] = true;
    return used;
}

TimeBounds timesOf(TSFILE& file)
{
    const FileTime held(file);
    const double start = file.startTime();
    const double dt = file.dt();
    return {start + (held.firstSample() - 1.0) * dt,
            start + (std::max(held.firstSample(), held.lastSample()) - 1.0) * dt};
}

std::string clockDifferences(std::span<const std::pair<int, TSFILE*>> sources, TSFILE& target)
{
    const std::int64_t own = target.startSeconds();
    std::string words;
    for (const auto& [number, source] : sources) {
        const std::int64_t later = source->startSeconds() - own;
        if (later != 0)
            words += (words.empty() ? "" : ", ") + ('x' + std::to_string(number)) + ' ' +
                     groupedDigits(static_cast<std::uint64_t>(std::abs(later))) +
                     (later > 0 ? " s later" : " s earlier");
    }
    return words.empty() ? words : "By the clock " + words + "; start times alone line them up";
}

std::optional<double> timeMeant(std::string_view text, TSFILE& file)
{
    if (const std::optional<double> number = wholeNumber(text))
        return number;
    const std::optional<SeriesPlace> place = parsePlace(text);
    if (!place)
        return std::nullopt;
    const FileTime time(file);
    if (place->kind == SeriesPlace::Kind::Sample)  // digits in groups
        return place->number;
    if (place->kind == SeriesPlace::Kind::Elapsed)
        return place->fileUnit.empty()          ? std::optional(place->number / time.unitSeconds())
               : place->fileUnit == time.unit() ? std::optional(place->number)
                                                : std::nullopt;
    const MeantSample meant = meantSample(text, file);
    if (!meant.sample)
        return std::nullopt;
    return static_cast<double>(file.startTime()) + (*meant.sample - 1.0) * static_cast<double>(file.dt());
}

CalculationRange calculationRange(std::span<const TimeBounds> rows, TSFILE& target)
{
    constexpr CalculationRange kNone{1, 0};
    const FileTime held(target);
    const double dt = target.dt();
    const double origin = target.startTime();
    CalculationRange range{held.firstSample(), held.lastSample()};
    if (!(dt > 0.0))
        return kNone;
    for (const TimeBounds& row : rows) {
        if (std::isnan(row.start) || std::isnan(row.end))
            return kNone;
        const double first = std::ceil((row.start - origin) / dt - slackOf(row.start, origin, dt)) + 1.0;
        const double last = std::floor((row.end - origin) / dt + slackOf(row.end, origin, dt)) + 1.0;
        if (last < range.first || first > range.last)
            return kNone;
        range.first = static_cast<std::uint32_t>(std::max(first, static_cast<double>(range.first)));
        range.last = static_cast<std::uint32_t>(std::min(last, static_cast<double>(range.last)));
    }
    return range;
}

JobOutcome calculate(FormulaParser& formula, const CalculationTarget& target, const Progress& progress,
                     CalculationReport& report)
{
    const ColumnRange range{target.column, target.range.first, target.range.count()};
    const auto write = [&](TSFILE& file, const Progress& writing) {
        if (!writeValues(formula, target, writing, report))
            return JobOutcome::Cancelled;
        file.stampColumn(target.column, target.when);
        return JobOutcome::Done;
    };
    return changeInPlace({target.file, {&range, 1}, write, target.reopen}, progress, report.old);
}

}  // namespace veltrac
