#include "calc/Calculus.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "core/ColumnBackup.h"
#include "core/Rebuild.h"

namespace {

constexpr std::uint32_t kRun = 1U << 15;  // samples a step

// Calls step(first, values) for runs of `values` that cover samples 1 to `samples`.
template <typename Step>
JobOutcome inRuns(std::uint32_t samples, const Progress& progress, Step step)
{
    std::vector<float> values(std::min(kRun, samples));
    for (std::uint32_t done = 0; done < samples;) {
        const std::span<float> run(values.data(), std::min<std::size_t>(values.size(), samples - done));
        step(done + 1, run);
        done += static_cast<std::uint32_t>(run.size());
        if (!goesOn(progress, done, samples))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

// A part of a longer job: `from` to `to` of its progress, in hundredths.
Progress part(const Progress& whole, std::uint64_t from, std::uint64_t to)
{
    return [&whole, from, to](std::uint64_t done, std::uint64_t total) {
        return goesOn(whole, from * total + (to - from) * done, 100 * total);
    };
}

}  // namespace

JobOutcome copyColumn(TSFILE& source, std::uint32_t col, TSFILE& work, const Progress& progress)
{
    return inRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        source.readColumn(col, first, run);
        work.writeColumn(1, first, run);
    });
}

JobOutcome differentiate(TSFILE& work, double dt, const Progress& progress)
{
    const std::uint32_t samples = work.samples();
    std::vector<float> ahead(kRun + 1);
    float last = 0.0F;
    return inRuns(samples, progress, [&](std::uint32_t first, std::span<float> run) {
        // One sample more than the run has, as long as there is one.
        const auto count = std::min<std::size_t>(run.size() + 1, samples - first + 1);
        work.readColumn(1, first, std::span(ahead).first(count));
        for (std::size_t i = 0; i + 1 < count; ++i)
            run[i] = last = static_cast<float>((static_cast<double>(ahead[i + 1]) - ahead[i]) / dt);
        if (count == run.size())
            run.back() = last;
        work.writeColumn(2, first, run);
    });
}

JobOutcome integrate(TSFILE& work, double dt, const Progress& progress)
{
    double sum = 0.0;
    double lost = 0.0;  // what the sum has rounded away
    float before = 0.0F;
    return inRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        work.readColumn(1, first, run);
        for (std::size_t i = 0; i < run.size(); ++i) {
            const float x = run[i];
            if (first + i > 1) {
                const double step = (static_cast<double>(before) + x) * 0.5 * dt;
                const double next = sum + step;
                // A sum that has left the numbers stays what it is.
                if (std::isfinite(next))
                    lost += std::fabs(sum) >= std::fabs(step) ? (sum - next) + step : (step - next) + sum;
                sum = next;
            }
            before = x;
            run[i] = static_cast<float>(sum + lost);
        }
        work.writeColumn(2, first, run);
    });
}

CalculusSave saveResult(TSFILE& work, TSFILE& target, const Progress& progress,
                        std::filesystem::path& backupPath)
{
    CalculusSave save;
    save.copied = std::min(work.samples(), target.samples());
    const float oldDt = target.dt();
    ColumnBackup backup(target);
    for (const std::uint32_t col : {1U, 2U}) {
        backup.saveInfo(col);
        if (backup.save(col, 1, save.copied, part(progress, 25 * (col - 1), 25 * col)) ==
            JobOutcome::Cancelled)
            return {JobOutcome::Cancelled, 0};
    }
    const auto putBack = [&] {
        backupPath = backup.path();
        backup.restore();
        target.dt(oldDt);
        backupPath.clear();
    };
    try {
        target.dt(work.dt());
        for (const std::uint32_t col : {1U, 2U}) {
            copyColumnInfo(work, col, target, col);
            save.outcome = inRuns(save.copied, part(progress, 25 + 25 * col, 50 + 25 * col),
                                  [&](std::uint32_t first, std::span<float> run) {
                                      work.readColumn(col, first, run);
                                      target.writeColumn(col, first, run);
                                  });
            if (save.outcome == JobOutcome::Cancelled) {
                putBack();
                return save;
            }
        }
        target.flush(true);
    } catch (...) {
        putBack();
        throw;
    }
    return save;
}
