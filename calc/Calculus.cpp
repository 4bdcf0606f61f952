#include "calc/Calculus.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "core/HeaderTexts.h"
#include "core/TSFILE.h"
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

// Whole rows of the work file: what would be read between the values of one column anyway is written back
// with them.
class WorkRows
{
public:
    explicit WorkRows(TSFILE& work) : m_work(work), m_columns(work.columns()), m_samples(work.samples()) {}

    // Reads `count` rows from sample `first` on, and the one behind them where there is one.
    void read(std::uint32_t first, std::size_t count)
    {
        m_count = static_cast<std::uint32_t>(count);
        const std::uint32_t rows = std::min(m_count + 1, m_samples - first + 1);
        m_hasNext = rows > m_count;
        m_values.resize(std::size_t{rows} * m_columns);
        m_work.readRows(first, rows, m_values.data());
    }
    bool hasNext() const noexcept { return m_hasNext; }
    float source(std::size_t i) const { return m_values[i * m_columns]; }
    float& result(std::size_t i) { return m_values[i * m_columns + 1]; }
    void write(std::uint32_t first) { m_work.writeRows(first, m_count, m_values.data()); }

private:
    TSFILE& m_work;
    std::size_t m_columns;
    std::uint32_t m_samples;
    std::uint32_t m_count = 0;
    bool m_hasNext = false;
    std::vector<float> m_values;
};

}  // namespace

JobOutcome differentiate(const SourceColumn& source, TSFILE& work, Steps steps, const Progress& progress)
{
    StepReader reader(source, steps);
    WorkRows rows(work);
    float last = 0.0F;
    return walkRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        rows.read(first, run.size());
        const std::span<const double> step = reader.behind(first, run.size());
        const std::size_t count = rows.hasNext() ? run.size() : run.size() - 1;
        for (std::size_t i = 0; i < count; ++i) {
            const double difference = static_cast<double>(rows.source(i + 1)) - rows.source(i);
            rows.result(i) = step[i] > 0.0 ? static_cast<float>(difference / step[i])
                                           : std::numeric_limits<float>::quiet_NaN();
        }
        if (count > 0)
            last = rows.result(count - 1);
        if (count < run.size())
            rows.result(count) = last;
        rows.write(first);
    });
}

JobOutcome integrate(const SourceColumn& source, TSFILE& work, Steps steps, const Progress& progress)
{
    StepReader reader(source, steps);
    WorkRows rows(work);
    double sum = 0.0;
    double lost = 0.0;  // what the sum has rounded away
    float before = 0.0F;
    double step = 0.0;  // from the sample before
    return walkRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        rows.read(first, run.size());
        const std::span<const double> behind = reader.behind(first, run.size());
        for (std::size_t i = 0; i < run.size(); ++i) {
            const float x = rows.source(i);
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
            rows.result(i) = static_cast<float>(sum + lost);
        }
        rows.write(first);
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
