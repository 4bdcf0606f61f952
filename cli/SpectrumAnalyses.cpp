#include "cli/SpectrumAnalyses.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "calc/Correlation.h"
#include "calc/Spectrogram.h"
#include "calc/SpectrumPlan.h"
#include "calc/SpectrumTexts.h"
#include "calc/TwoChannels.h"
#include "cli/FileWords.h"
#include "cli/Options.h"
#include "core/NumberTexts.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

// Makes the target of a job: `fill` gets the new file.
void makeTarget(VerbJob& job, std::uint32_t samples, std::uint32_t columns,
                const std::function<JobOutcome(TSFILE& made)>& fill)
{
    PendingFile pending(job.target, ".veltrac-new", ".ts");
    {
        const auto made = createTsFile(pending.path().string(), samples, columns);
        requireDone(fill(*made));
        made->flush(true);
    }
    pending.commit();
}

}  // namespace

// The second channel, lined up with the first; the range is the part that both have.
struct SpectrumAnalyses::Second
{
    Second(const SpectrumAnalyses& asked, VerbJob& job, TSFILE& first, SpectrumRequest& request)
        : name(asked.m_secondFile.empty() ? job.name : asked.m_secondFile)
    {
        file = openTsFile(asked.m_secondFile.empty() ? job.source.string() : asked.m_secondFile, true);
        if (!asked.m_second.empty())
            column = columnMeant(*file, asked.m_second);
        const ChannelMatch match =
            matchChannels(first, request.from, request.to, *file, asked.m_secondFile.empty());
        if (!match.refusal.empty())
            throw JobError(match.refusal);
        if (!match.words.empty())
            job.notes.push_back(match.words);
        request.from = match.from;
        request.to = match.to;
        from = match.secondFrom;
    }

    std::string name;
    std::unique_ptr<TSFILE> file;
    std::uint32_t column = 0;
    std::uint32_t from = 1;
};

void SpectrumAnalyses::addTo(Options& options)
{
    std::vector<std::string> results;
    results.reserve(kTwoChannelResults);
    for (int r = 0; r < kTwoChannelResults; ++r)
        results.emplace_back(twoChannelResultName(static_cast<TwoChannelResult>(r)));
    std::vector<std::string> scales;
    scales.reserve(kCorrelationScales);
    for (int s = 0; s < kCorrelationScales; ++s)
        scales.emplace_back(correlationScaleName(static_cast<CorrelationScale>(s)));
    options.text("--second", m_second, "COLUMN", "Compares the column, the input, with this one, the output");
    options.text("--second-file", m_secondFile, "FILE", "Where that column is (default: the same file)");
    options.choice("--of-both", m_result, results, "Default: Transfer function H1");
    options.flag("--unwrap", m_unwrap, "The phase goes on beyond half a turn");
    options.number("--correlation", m_lag, "SECONDS", "The correlation for lags up to so many seconds");
    options.choice("--scale", m_scale, scales, "Of the correlation (default: Normalised)");
    options.flag("--spectrogram", m_spectrogram, "The spectra of the segments one after another");
}

bool SpectrumAnalyses::isWanted() const
{
    return !m_second.empty() || m_lag.has_value() || m_spectrogram;
}

void SpectrumAnalyses::check(const SpectrumRequest& request) const
{
    if (m_spectrogram && (!m_second.empty() || m_lag))
        throw UsageError("a spectrogram is one of a single column");
    if (m_spectrogram && !request.averaged)
        throw UsageError("--spectrogram needs --segment");
    if (m_lag && !(*m_lag > 0.0))
        throw UsageError("a lag is more than 0 seconds");
    if (!m_secondFile.empty() && m_second.empty())
        throw UsageError("--second-file needs --second");
    if (m_result && (m_second.empty() || m_lag))
        throw UsageError("--of-both needs --second, without --correlation");
}

void SpectrumAnalyses::perform(VerbJob& job, TSFILE& file, SpectrumRequest request,
                               const ClearDoubts& clearDoubts) const
{
    if (m_spectrogram)
        spectrogram(job, file, request, clearDoubts);
    else if (m_lag)
        correlation(job, file, request, clearDoubts);
    else
        twoChannels(job, file, request, clearDoubts);
}

void SpectrumAnalyses::twoChannels(VerbJob& job, TSFILE& file, SpectrumRequest request,
                                   const ClearDoubts& clearDoubts) const
{
    const Second second(*this, job, file, request);
    TwoChannelRequest both;
    both.input = request;
    both.column = second.column;
    both.from = second.from;
    both.result = m_result ? static_cast<TwoChannelResult>(*m_result) : TwoChannelResult::H1;
    both.unwrapped = m_unwrap;
    if (const std::string complaint = twoChannelComplaint(both); !complaint.empty())
        throw JobError(complaint);
    SpectrumRequest output = outputRequest(both);
    clearDoubts(file, job.name, both.input);
    clearDoubts(*second.file, second.name, output);
    both.interpolateOutput = output.interpolate;
    makeTarget(job, planSpectrum(both.input).bins, twoChannelColumns(both.result), [&](TSFILE& made) {
        describeTwoChannels(file, *second.file, both, made);
        return computeTwoChannels(file, *second.file, both, made, job.progress);
    });
    job.json["segments"] = planSpectrum(both.input).segments;
    job.notes.push_back(planText(both.input));
}

void SpectrumAnalyses::correlation(VerbJob& job, TSFILE& file, SpectrumRequest request,
                                   const ClearDoubts& clearDoubts) const
{
    const Second second(*this, job, file, request);
    request.averaged = true;  // its memory goes with the lags
    CorrelationRequest lags;
    lags.first = request;
    lags.secondColumn = second.column;
    lags.secondFrom = second.from;
    lags.scale = static_cast<CorrelationScale>(m_scale);
    const double most = std::min(request.to - request.from, kMostCorrelationLag);
    lags.mostLag = static_cast<std::uint32_t>(std::clamp(std::round(*m_lag / request.dt), 1.0, most));
    SpectrumRequest later = secondRequest(lags);
    clearDoubts(file, job.name, lags.first);
    clearDoubts(*second.file, second.name, later);
    lags.interpolateSecond = later.interpolate;
    CorrelationTop top;
    makeTarget(job, 2 * lags.mostLag + 1, 2, [&](TSFILE& made) {
        describeCorrelation(file, *second.file, lags, made);
        return computeCorrelation(file, *second.file, lags, made, top, job.progress);
    });
    if (!top.isThere)
        return;
    job.json["lag"] = top.lag * lags.first.dt;
    job.json["greatest"] = top.value;
    job.text += generalNumber(top.lag * lags.first.dt, 6) + " s  " + generalNumber(top.value, 4) + '\n';
}

void SpectrumAnalyses::spectrogram(VerbJob& job, TSFILE& file, SpectrumRequest request,
                                   const ClearDoubts& clearDoubts)
{
    if (const std::string complaint = spectrogramComplaint(request); !complaint.empty())
        throw JobError(complaint);
    clearDoubts(file, job.name, request);
    const SpectrumPlan plan = planSpectrum(request);
    makeTarget(job, plan.segments, plan.bins, [&](TSFILE& made) {
        describeSpectrogram(file, request, made);
        return computeSpectrogram(file, request, made, job.progress);
    });
    job.notes.push_back(groupedDigits(plan.segments) + " samples of " + groupedDigits(plan.bins) +
                        " columns");
}

}  // namespace veltrac
