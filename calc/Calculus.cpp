#include "calc/Calculus.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "core/HeaderTexts.h"
#include "core/Variable.h"

namespace veltrac {

namespace {

// The steps behind the samples of a run; equal ones are filled in once.
class StepReader
{
public:
    StepReader(const SourceColumn& source, Steps steps)
        : m_source(source), m_own(steps == Steps::Own), m_steps(kRunSamples)
    {
        if (!m_own)
            m_source.readSteps(1, m_steps, false);
    }
    // From sample `first` on.
    std::span<const double> behind(std::uint32_t first, std::size_t count)
    {
        if (m_own)
            m_source.readSteps(first, std::span(m_steps).first(count), true);
        return std::span(m_steps).first(count);
    }

private:
    const SourceColumn& m_source;
    bool m_own;
    std::vector<double> m_steps;
};

}  // namespace

JobOutcome differentiate(const SourceColumn& source, TSFILE& work, Steps steps, const Progress& progress)
{
    const std::uint32_t samples = work.samples();
    StepReader reader(source, steps);
    std::vector<float> ahead(kRunSamples + 1);
    float last = 0.0F;
    return walkRuns(samples, progress, [&](std::uint32_t first, std::span<float> run) {
        // One sample more than the run has, as long as there is one.
        const auto count = std::min<std::size_t>(run.size() + 1, samples - first + 1);
        work.readColumn(1, first, std::span(ahead).first(count));
        const std::span<const double> step = reader.behind(first, run.size());
        for (std::size_t i = 0; i + 1 < count; ++i) {
            const double difference = static_cast<double>(ahead[i + 1]) - ahead[i];
            run[i] = last = step[i] > 0.0 ? static_cast<float>(difference / step[i])
                                          : std::numeric_limits<float>::quiet_NaN();
        }
        if (count == run.size())
            run.back() = last;
        work.writeColumn(2, first, run);
    });
}

JobOutcome integrate(const SourceColumn& source, TSFILE& work, Steps steps, const Progress& progress)
{
    StepReader reader(source, steps);
    double sum = 0.0;
    double lost = 0.0;  // what the sum has rounded away
    float before = 0.0F;
    double step = 0.0;  // from the sample before
    return walkRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        work.readColumn(1, first, run);
        const std::span<const double> behind = reader.behind(first, run.size());
        for (std::size_t i = 0; i < run.size(); ++i) {
            const float x = run[i];
            if (first + i > 1) {
                const double area = (static_cast<double>(before) + x) * 0.5 * step;
                const double next = sum + area;
                // A sum that has left the numbers stays what it is.
                if (std::isfinite(next))
                    lost += std::fabs(sum) >= std::fabs(area) ? (sum - next) + area : (area - next) + sum;
                sum = next;
            }
            before = x;
            step = behind[i];
            run[i] = static_cast<float>(sum + lost);
        }
        work.writeColumn(2, first, run);
    });
}

namespace {

// The first %1 and %2 of a pattern, filled in.
std::string filled(std::string pattern, const std::string& first, const std::string& second = {})
{
    for (const auto& [mark, text] : {std::pair{"%1", &first}, std::pair{"%2", &second}})
        if (const std::size_t at = pattern.find(mark); at != std::string::npos)
            pattern.replace(at, 2, *text);
    return pattern;
}

std::string resultUnitOf(TSFILE& work, const char* pattern)
{
    std::string unit(unitIn(headerUtf8(work.columnDescription(1))));
    if (unit.empty())
        return unit;
    if (unit.find('/') != std::string::npos)
        unit = "(" + unit + ")";
    const std::string time(unitIn(headerUtf8(work.timeUnit())));
    return filled(pattern, unit, time.empty() ? "s" : time);
}

}  // namespace

JobOutcome takeSource(const SourceColumn& source, TSFILE& work, const char* resultName,
                      const char* resultText, const char* resultUnit, const Progress& progress)
{
    source.copyHeaderTo(work);
    const std::string name = source.file().columnName(source.column());
    work.columnName(1, name.c_str());
    work.columnName(2, resultName);
    work.columnDescription(1, std::string(source.file().columnDescription(source.column())).c_str());
    const std::string text = filled(resultText, headerUtf8(name.c_str()));
    work.columnDescription(2, fittingDescription(text, resultUnitOf(work, resultUnit)).c_str());
    return walkRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        source.read(first, run);
        work.writeColumn(1, first, run);
    });
}

CalculusSave saveResult(TSFILE& work, ColumnTarget& target, const Progress& progress,
                        std::filesystem::path& backup)
{
    static constexpr std::uint32_t kColumns[] = {1, 2};
    CalculusSave save;
    save.copied = std::min(work.samples(), target.file->samples());
    save.outcome = overwriteColumns(work, target, kColumns, save.copied, progress, backup,
                                    [&](TSFILE& file) { file.dt(work.dt()); });
    return save;
}

}  // namespace veltrac
