#include "formula/Calculation.h"

#include <algorithm>
#include <cmath>

#include "core/ColumnBackup.h"
#include "formula/FormulaEvaluation.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kLookEvery = 4096;
// Keeping the old values is the smaller part of the work, in hundredths.
constexpr std::uint64_t kBackupShare = 20;

// How much a time may miss a sample, both in samples. A dt of 0.01 is a little less as a 32-bit float, which
// adds up: the 50th step of it is not quite at the 0.5 that somebody types.
double slackOf(double time)
{
    constexpr double kTolerance = 1e-6;
    constexpr double kFloatRounding = 1.0 / (1 << 24);
    constexpr double kMost = 0.5;
    return std::min(kMost, kTolerance + std::fabs(time) * kFloatRounding);
}

// False where the user has cancelled.
bool writeValues(FormulaParser& formula, const CalculationTarget& target, const Progress& progress,
                 CalculationReport& report)
{
    const double dt = target.file.dt();
    const std::uint64_t total = target.range.count();
    std::uint64_t reports = formulaReports();
    for (std::uint64_t done = 0; done < total; ++done) {
        const auto sample = static_cast<std::uint32_t>(target.range.first + done);
        const auto value =
            static_cast<float>(formula.Evaluate(static_cast<std::int32_t>(sample), (sample - 1U) * dt));
        target.file.setValue(sample, target.column, value);
        report.missing += std::isfinite(value) ? 0 : 1;
        if (reports != formulaReports()) [[unlikely]] {
            ++report.faultySamples;
            reports = formulaReports();
        }
        if (done % kLookEvery == 0 &&
            !goesOn(progress, total * kBackupShare + done * (100 - kBackupShare), total * 100))
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

CalculationRange calculationRange(std::span<const TimeBounds> rows, double dt, std::uint32_t samples)
{
    CalculationRange range{1, samples};
    if (!(dt > 0.0))
        return {1, 0};
    for (const TimeBounds& row : rows) {
        if (std::isnan(row.start) || std::isnan(row.end))
            return {1, 0};
        const double start = row.start / dt;
        const double end = row.end / dt;
        const double first = std::ceil(start - slackOf(start)) + 1.0;
        const double last = std::floor(end + slackOf(end)) + 1.0;
        if (last < 1.0 || first > samples)
            return {1, 0};
        if (first > range.first)
            range.first = static_cast<std::uint32_t>(first);
        if (last < range.last)
            range.last = static_cast<std::uint32_t>(last);
    }
    return range;
}

JobOutcome calculate(FormulaParser& formula, const CalculationTarget& target, const Progress& progress,
                     CalculationReport& report)
{
    ColumnBackup backup(target.file);
    backup.saveInfo(target.column);
    const Progress keeping = [&](std::uint64_t done, std::uint64_t total) {
        return goesOn(progress, done * kBackupShare, total * 100);
    };
    if (backup.save(target.column, target.range.first, target.range.count(), keeping) ==
        JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    try {
        if (writeValues(formula, target, progress, report)) {
            target.file.stampColumn(target.column, target.when);
            target.file.flush(true);
            return JobOutcome::Done;
        }
        backup.restore();
        return JobOutcome::Cancelled;
    } catch (...) {
        report.oldValues = backup.path();
        backup.restore(target.reopen());
        report.oldValues.clear();
        throw;
    }
}

}  // namespace veltrac
