#include "core/ColumnCopy.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/FileTime.h"
#include "core/Rebuild.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"

namespace veltrac {

std::uint32_t oldestRow(TSFILE& file)
{
    const std::uint32_t oldest = file.ringStart();
    return oldest == 0 || file.samples() == 0 ? 1 : (oldest - 1) % file.samples() + 1;
}

void copyStartAt(TSFILE& from, double elapsed, TSFILE& to)
{
    const FileTime time(from);
    const bool isDated = time.hasCalendar();
    double start = static_cast<double>(from.startTime()) + elapsed * (isDated ? time.unitSeconds() : 1.0);
    double seconds = from.startSeconds();
    const double whole = isDated ? std::floor(start) : 0.0;
    seconds += whole;
    start -= whole;
    // Times that lie, or are none, may lead anywhere.
    const auto clock = std::clamp<std::int64_t>(wholePart(seconds), 0, UINT32_MAX);
    to.setStart(static_cast<std::uint32_t>(clock), static_cast<float>(start));
}

void copyStartBehind(TSFILE& from, double steps, TSFILE& to)
{
    if (from.timeColumn() == 0)
        copyStartAt(from, steps * static_cast<double>(from.dt()), to);
    else
        to.setStart(from.startSeconds(), from.startTime());
}

void copyHeaderFromOldest(TSFILE& from, TSFILE& to)
{
    to.copyHeader(from);
    if (from.ringStart() > 1)
        copyStartBehind(from, from.ringStart() - 1.0, to);
}

JobOutcome walkRuns(std::uint32_t samples, const Progress& progress, const RunStep& step)
{
    std::vector<float> values(std::min(kRunSamples, samples));
    for (std::uint32_t done = 0; done < samples;) {
        const std::span<float> run(values.data(), std::min<std::size_t>(values.size(), samples - done));
        step(done + 1, run);
        done += static_cast<std::uint32_t>(run.size());
        if (!goesOn(progress, done, samples))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

Progress partOf(const Progress& whole, std::uint64_t from, std::uint64_t to)
{
    return [whole, from, to](std::uint64_t done, std::uint64_t total) {
        return goesOn(whole, from * total + (to - from) * done, 100 * total);
    };
}

JobOutcome copyColumnValues(TSFILE& from, std::uint32_t fromCol, TSFILE& to, std::uint32_t toCol,
                            std::uint32_t count, const Progress& progress)
{
    return walkRuns(count, progress, [&](std::uint32_t first, std::span<float> run) {
        from.readColumn(fromCol, first, run);
        to.writeColumn(toCol, first, run);
    });
}

JobOutcome overwriteColumns(TSFILE& from, ColumnTarget& target, std::span<const std::uint32_t> to,
                            std::uint32_t count, const Progress& progress, std::filesystem::path& lost,
                            const std::function<void(TSFILE& target)>& finish)
{
    std::vector<ColumnRange> ranges;
    for (const std::uint32_t column : to)
        if (column != 0)
            ranges.push_back({column, 1, count});
    const auto write = [&](TSFILE& file, const Progress& writing) {
        for (std::size_t i = 0; i < to.size(); ++i) {
            if (to[i] == 0)
                continue;
            const auto source = static_cast<std::uint32_t>(i + 1);
            copyColumnInfo(from, source, file, to[i]);
            if (copyColumnValues(from, source, file, to[i], count,
                                 partOf(writing, 100 * i / to.size(), 100 * (i + 1) / to.size())) ==
                JobOutcome::Cancelled)
                return JobOutcome::Cancelled;
        }
        if (finish)
            finish(file);
        return JobOutcome::Done;
    };
    const auto reopen = [&]() -> TSFILE& {
        target.file.reset();
        target.file = openTsFile(target.name, false);
        return *target.file;
    };
    OldValues old;
    try {
        return changeInPlace({*target.file, ranges, write, reopen}, progress, old);
    } catch (...) {
        target.file.reset();
        lost = old.lost;
        throw;
    }
}

}  // namespace veltrac
