#include "core/Interval.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "core/ColumnCopy.h"
#include "core/Rebuild.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

constexpr std::size_t kChunkFloats = 1U << 16;

void copyHeader(const PlotFile& from, std::uint32_t first, TSFILE& to)
{
    TSFILE& source = from.file();
    to.description(std::string(source.description()).c_str());
    to.timeUnit(std::string(source.timeUnit()).c_str());
    for (std::uint32_t c = 1; c <= from.columns(); ++c)
        copyColumnInfo(source, c, to, c);
    to.dt(source.dt());
    copyStartBehind(source, from.sampleOf(first) - 1.0, to);
}

JobOutcome copyRows(const PlotFile& from, std::uint32_t first, std::uint32_t last, TSFILE& to,
                    const Progress& progress)
{
    const std::uint32_t columns = std::max<std::uint32_t>(1, from.columns());
    const std::uint32_t count = last - first + 1;
    const auto most = static_cast<std::uint32_t>(std::max<std::size_t>(1, kChunkFloats / columns));
    const std::uint32_t chunk = std::min(most, count);
    std::vector<float> rows(std::size_t{chunk} * columns);
    for (std::uint32_t done = 0; done < count;) {
        const std::uint32_t n = std::min(chunk, count - done);
        from.readRows(first + done, n, rows.data());
        to.writeRows(done + 1, n, rows.data());
        done += n;
        if (!goesOn(progress, done, count))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

}  // namespace

JobOutcome saveInterval(const PlotFile& from, std::uint32_t first, std::uint32_t last,
                        const std::filesystem::path& target, const Progress& progress)
{
    PendingFile pending(target, ".veltrac-new", ".ts");
    {
        TSFILE to(literalTsName(pending.path().string()).c_str(), last - first + 1, from.columns(), 0);
        copyHeader(from, first, to);
        if (copyRows(from, first, last, to, progress) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        to.flush(true);
    }
    return pending.commit(progress);
}

}  // namespace veltrac
