#include "calc/Calculus.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace veltrac {

JobOutcome differentiate(TSFILE& work, double dt, const Progress& progress)
{
    const std::uint32_t samples = work.samples();
    std::vector<float> ahead(kRunSamples + 1);
    float last = 0.0F;
    return walkRuns(samples, progress, [&](std::uint32_t first, std::span<float> run) {
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
    return walkRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
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

CalculusSave saveResult(TSFILE& work, ColumnTarget& target, const Progress& progress,
                        std::filesystem::path& backup)
{
    static constexpr std::uint32_t kColumns[] = {1, 2};
    CalculusSave save;
    save.copied = std::min(work.samples(), target.file->samples());
    save.outcome = overwriteColumns(work, target, kColumns, save.copied, progress, backup,
                                    [&] { target.file->dt(work.dt()); });
    return save;
}

}  // namespace veltrac
