#include "cli/ResultTarget.h"

#include <cmath>

#include "cli/Options.h"
#include "core/ColumnCopy.h"
#include "core/FailureText.h"
#include "core/NumberTexts.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "filter/SaveResults.h"

namespace veltrac {

void ResultTarget::addTo(Options& options)
{
    options.flag("--new-column", m_newColumn, "The result becomes a further column of the file itself");
    options.text(
        "--in-place", m_inPlace, "COLUMN",
        "The result replaces a column of the file itself; the old values are kept until all is well");
}

void ResultTarget::check(const CommonOptions& common) const
{
    if (m_newColumn && !m_inPlace.empty())
        throw UsageError("--new-column or --in-place, not both");
    if (common.output.empty() && !isInSource())
        throw UsageError("where does the result go? -o FILE, --new-column or --in-place COLUMN");
}

void throwLostValues(const std::filesystem::path& backup)
{
    throw JobError(reasonOfFailure() + "; the old values could not be put back: they lie in " +
                   backup.string());
}

void ResultTarget::save(VerbJob& job, const SourceColumn& column, std::uint32_t first,
                        const std::function<JobOutcome(TSFILE&, const Progress&)>& fill) const
{
    if (tsFileBytes(column.samples(), 2) >= kFileLimit)
        throw JobError("it is too long: column and result together are more than the 2 GB of a ts-file");
    job.json["samples"] = column.samples();
    if (!isInSource()) {
        PendingFile pending(job.target, ".veltrac-new", ".ts");
        {
            const auto work = createTsFile(pending.path().string(), column.samples(), 2);
            requireDone(fill(*work, job.progress));
            work->flush(true);
        }
        pending.commit();
        return;
    }
    const ScratchFile scratch(scratchDirectory(), "veltrac-work", ".ts");
    const auto work = createTsFile(scratch.path().string(), column.samples(), 2);
    requireDone(fill(*work, partOf(job.progress, 0, 70)));
    work->flush(true);
    saveInSource(job, *work, first);
}

void ResultTarget::saveInSource(VerbJob& job, TSFILE& work, std::uint32_t first) const
{
    const Progress progress = partOf(job.progress, 70, 100);
    std::uint32_t column = 0;
    {
        const auto file = openTsFile(job.source.string(), true);
        if (first > 1)
            throw JobError("the results begin with sample " + groupedDigits(first) +
                           "; a file of their own takes them (-o)");
        if (oldestRow(*file) != 1)
            throw JobError("it is a ring file that does not begin with its oldest sample; the results do");
        if (m_newColumn)
            requireNoRing(*file);
        else
            column = columnMeant(*file, m_inPlace);
    }
    if (m_newColumn) {
        requireDone(saveToAddedColumn(work, job.source, work.samples(), progress));
        return;
    }
    std::filesystem::path backup;
    try {
        requireDone(saveToColumns(work, job.source, {0, column}, work.samples(), progress, backup));
    } catch (const Interrupted&) {
        throw;
    } catch (...) {
        if (!backup.empty())
            throwLostValues(backup);
        throw;
    }
}

void SourceOptions::addTo(Options& options)
{
    options.text("--column", column, "COLUMN", "By name or number (default: the first that is no time)");
    places.addTo(options);
}

std::uint32_t SourceOptions::columnIn(TSFILE& file) const
{
    if (!column.empty())
        return columnMeant(file, column);
    for (std::uint32_t c = 1; c <= file.columns(); ++c)
        if (c != file.timeColumn() && c != file.time32Column())
            return c;
    throw JobError("it has no column of values");
}

void requireNoRing(TSFILE& file)
{
    if (file.ringStart() != 0)
        throw JobError(
            "it is a ring file, which gets no further columns; cut unfolds it into a file of its own");
}

void requireSampleTime(TSFILE& file)
{
    const double dt = file.dt();
    if (!(dt > 0.0) || !std::isfinite(dt))
        throw JobError("its sample time is not above 0; header --sample-time sets one");
}

}  // namespace veltrac
