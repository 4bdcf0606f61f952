#include "portal/BlockOperation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include "portal/CellText.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kRun = 8192;        // samples a step
constexpr std::size_t kMostGaps = 1000000;  // 100 bytes each

float valueAt(const ColumnReader& read, std::uint32_t sample)
{
    float v = 0.0F;
    read(sample, {&v, 1});
    return v;
}

// The line through the neighbours of a run; nothing where it has none.
std::optional<EditStrip> bridge(const SampleRun& run, std::uint32_t samples, const ColumnReader& read)
{
    const bool hasBefore = run.first > 1;
    const bool hasAfter = run.last < samples;
    if (!hasBefore && !hasAfter)
        return std::nullopt;
    const double after = hasAfter ? valueAt(read, run.last + 1) : valueAt(read, run.first - 1);
    const double before = hasBefore ? valueAt(read, run.first - 1) : after;
    return interpolateStrip(run, before, after);
}

// Finds runs of missing values, one sample after the other.
class GapFinder
{
public:
    GapFinder(const SampleRun& run, std::uint32_t samples, const ColumnReader& read,
              std::vector<EditStrip>& strips)
        : m_run(run), m_samples(samples), m_read(read), m_strips(strips)
    {
    }
    void see(std::uint32_t sample, float v)
    {
        if (std::isnan(v)) {
            if (m_first == 0)
                m_first = sample;
        } else {
            close(sample - 1);
        }
    }
    void close(std::uint32_t last)
    {
        if (m_first == 0)
            return;
        if (m_strips.size() >= kMostGaps)
            throw std::length_error("more than a million gaps: select a smaller block");
        if (const auto strip = bridge({m_run.column, m_first, last}, m_samples, m_read))
            m_strips.push_back(*strip);
        m_first = 0;
    }

private:
    const SampleRun& m_run;
    std::uint32_t m_samples;
    const ColumnReader& m_read;
    std::vector<EditStrip>& m_strips;
    std::uint32_t m_first = 0;  // of the gap; 0: in none
};

JobOutcome bridgeGaps(const SampleRun& run, std::uint32_t samples, const ColumnReader& read,
                      const Progress& progress, std::vector<EditStrip>& strips)
{
    GapFinder gaps(run, samples, read, strips);
    std::vector<float> values(kRun);
    for (std::uint64_t done = 0; done < run.count();) {
        const std::size_t count = std::min<std::uint64_t>(kRun, run.count() - done);
        const auto first = static_cast<std::uint32_t>(run.first + done);
        read(first, std::span(values).first(count));
        for (std::size_t i = 0; i < count; ++i)
            gaps.see(first + static_cast<std::uint32_t>(i), values[i]);
        done += count;
        if (!goesOn(progress, done, run.count()))
            return JobOutcome::Cancelled;
    }
    gaps.close(run.last);
    return JobOutcome::Done;
}

EditStrip simpleStrip(BlockOperation operation, const SampleRun& run, std::span<const double> numbers)
{
    switch (operation) {
        case BlockOperation::Set:
            return setStrip(run, numbers[0]);
        case BlockOperation::Ramp:
            return rampStrip(run, numbers[0], numbers[1]);
        case BlockOperation::Add:
            return addStrip(run, numbers[0]);
        case BlockOperation::Multiply:
            return multiplyStrip(run, numbers[0]);
        case BlockOperation::ReplaceOutside:
            return replaceOutsideStrip(run, numbers[0], numbers[1], numbers[2]);
        default:
            return setStrip(run, std::numeric_limits<double>::quiet_NaN());
    }
}

}  // namespace

const std::vector<BlockOperationRow>& blockOperations()
{
    static const std::vector<BlockOperationRow> rows = {
        {BlockOperation::Set,
         "&Set to…",
         "Set to",
         "Ctrl+D",
         "Give all selected cells one value",
         {{"&Value:", true}}},
        {BlockOperation::SetMissing,
         "Make &missing",
         "Make missing",
         "Del",
         "Make the selected values missing",
         {}},
        {BlockOperation::Ramp,
         "&Ramp…",
         "Ramp",
         "",
         "A straight line between two values, from the first selected sample to the last",
         {{"Value at the &first sample:", false}, {"Value at the &last sample:", false}}},
        {BlockOperation::Interpolate,
         "&Interpolate",
         "Interpolate",
         "Ctrl+I",
         "A straight line between the samples before and after the selected ones",
         {}},
        {BlockOperation::InterpolateMissing,
         "Inter&polate missing values",
         "Interpolate missing values",
         "",
         "Straight lines over the missing values among the selected ones",
         {}},
        {BlockOperation::Add,
         "&Add…",
         "Add",
         "",
         "Add a number to the selected values",
         {{"&Number:", false}}},
        {BlockOperation::Multiply,
         "M&ultiply…",
         "Multiply",
         "",
         "Multiply the selected values by a factor",
         {{"&Factor:", false}}},
        {BlockOperation::ReplaceOutside,
         "Replace values &outside…",
         "Replace values outside",
         "",
         "Replace those of the selected values that lie outside of two limits",
         {{"&Lowest good value:", false}, {"&Highest good value:", false}, {"&Replace by:", true}}},
    };
    return rows;
}

const BlockOperationRow& rowOf(BlockOperation operation)
{
    return *std::find_if(blockOperations().begin(), blockOperations().end(),
                         [&](const BlockOperationRow& row) { return row.operation == operation; });
}

JobOutcome makeStrips(BlockOperation operation, const std::vector<SampleRun>& runs,
                      std::span<const double> numbers, std::uint32_t samples, const ReaderOfColumn& readerOf,
                      const Progress& progress, std::vector<EditStrip>& strips)
{
    std::vector<EditStrip> made;
    for (const SampleRun& run : runs) {
        if (operation == BlockOperation::InterpolateMissing) {
            if (bridgeGaps(run, samples, readerOf(run.column), progress, made) == JobOutcome::Cancelled)
                return JobOutcome::Cancelled;
        } else if (operation == BlockOperation::Interpolate) {
            if (const auto strip = bridge(run, samples, readerOf(run.column)))
                made.push_back(*strip);
        } else {
            made.push_back(simpleStrip(operation, run, numbers));
        }
    }
    strips = std::move(made);
    return JobOutcome::Done;
}

std::string whyRefused(BlockOperation operation, std::span<const double> numbers)
{
    if (operation == BlockOperation::ReplaceOutside && numbers[0] > numbers[1])
        return "The lowest good value lies above the highest.";
    for (const double number : numbers)
        if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
            return "A cell holds no number beyond 3.4e38.";
    return {};
}

PastedTable parsePasted(std::string_view text)
{
    PastedTable table;
    bool more = true;
    while (more) {
        const std::size_t end = text.find_first_of("\r\n");
        more = end != std::string_view::npos;
        std::vector<float> row;
        std::string_view line = text.substr(0, end);
        for (bool fields = true; fields;) {
            const std::size_t tab = line.find('\t');
            fields = tab != std::string_view::npos;
            const std::optional<float> number = cellNumber(line.substr(0, tab));
            if (!number)
                return {{}, std::string(line.substr(0, tab))};
            row.push_back(*number);
            line.remove_prefix(fields ? tab + 1 : 0);
        }
        table.rows.push_back(std::move(row));
        if (more)
            text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
        // The last line's own end begins no further one.
        more = more && !text.empty();
    }
    return table;
}

PastedStrips pasteStrips(const std::vector<std::vector<float>>& rows, std::span<const std::uint32_t> samples,
                         std::span<const std::uint32_t> columns)
{
    PastedStrips pasted;
    const std::size_t fitting = std::min(rows.size(), samples.size());
    for (std::size_t r = 0; r < rows.size(); ++r)
        pasted.beyond +=
            r < fitting ? rows[r].size() - std::min(rows[r].size(), columns.size()) : rows[r].size();
    std::vector<EditStrip>& strips = pasted.strips;
    for (std::size_t c = 0; c < columns.size(); ++c)
        for (std::size_t r = 0; r < fitting; ++r) {
            if (c >= rows[r].size())
                continue;
            if (columns[c] == 0) {
                ++pasted.refused;
                continue;
            }
            const bool goesOn = !strips.empty() && strips.back().run.column == columns[c] &&
                                std::uint64_t{strips.back().run.last} + 1 == samples[r];
            if (!goesOn)
                strips.push_back(valuesStrip(columns[c], samples[r], {}));
            strips.back().values.push_back(rows[r][c]);
            strips.back().run.last = samples[r];
        }
    return pasted;
}

}  // namespace veltrac
