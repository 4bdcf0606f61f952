#include <cmath>

#include "calc/OctaveBands.h"
#include "calc/Spectrum.h"
#include "calc/SpectrumDoubts.h"
#include "calc/SpectrumPeaks.h"
#include "calc/SpectrumPlan.h"
#include "calc/SpectrumTexts.h"
#include "calc/WindowShape.h"
#include "cli/FileWords.h"
#include "cli/Options.h"
#include "cli/ResultTarget.h"
#include "cli/SpectrumAnalyses.h"
#include "cli/Verbs.h"
#include "core/FailureText.h"
#include "core/NumberTexts.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "core/Variable.h"

namespace veltrac {

namespace {

constexpr VerbWords kSpectrumWords = {
    "spectrum", "Compute the spectrum of a column",
    "The spectrum of a column as a ts-file whose columns are frequency, result and phase (or real and "
    "imaginary part); with --segment the average over segments. --peaks tells the highest lines on "
    "standard output.",
    "  veltrac-cli spectrum --column MLII --segment 16384 -o ecg_fft.ts ecg.ts\n"
    "  veltrac-cli spectrum --peaks 3 --column temp_max -o year.ts weather.ts"};

constexpr std::uint32_t kFewestInSegment = 256;
constexpr std::uint32_t kMostInSegment = 1048576;
constexpr int kOverlapChoices[] = {50, 0, 67, 75};

class SpectrumVerb : public Verb
{
public:
    const VerbWords& words() const override { return kSpectrumWords; }
    void addOptions(Options& options) override
    {
        std::vector<std::string> windows;
        windows.reserve(kSpectrumWindows);
        for (int w = 0; w < kSpectrumWindows; ++w)
            windows.emplace_back(spectrumWindowName(static_cast<SpectrumWindow>(w)));
        std::vector<std::string> results;
        results.reserve(kSpectrumResults);
        for (int r = 0; r < kSpectrumResults; ++r)
            results.emplace_back(spectrumResultName(static_cast<SpectrumResult>(r)));
        m_source.addTo(options);
        options.choice("--remove", m_trend, {"mean", "straight-line", "nothing"},
                       "What is taken off the samples before (default: the mean)");
        options.choice("--window", m_window, windows, "Default: Hann");
        options.count("--segment", m_segment, kFewestInSegment, "Averages over segments of so many samples");
        options.choice("--overlap", m_overlap, {"50", "0", "67", "75"},
                       "Of segments, in percent (default: 50)");
        options.flag("--pad", m_request.pad, "Pad with zeros to a fast length, instead of shortening to one");
        options.choice("--result", m_result, results, "Default: Amplitude");
        options.flag("--db", m_request.decibel, "In decibels");
        options.flag("--interpolate", m_interpolate,
                     "Missing values become the line between their neighbours");
        options.flag("--equal-steps", m_equalSteps, "Steps of time that differ are taken as equal");
        options.count("--peaks", m_peaks, 1, "Tells so many of the highest lines, frequency and value");
        m_analyses.addTo(options);
    }
    void check(CommonOptions& common) override
    {
        m_request.trend = static_cast<SpectrumTrend>(m_trend);
        m_request.window = static_cast<SpectrumWindow>(m_window);
        m_request.result = static_cast<SpectrumResult>(m_result);
        m_request.overlapPercent = kOverlapChoices[m_overlap];
        m_request.averaged = m_segment.has_value();
        m_request.segment = m_segment.value_or(m_request.segment);
        m_request.decibel = m_request.decibel && m_request.result != SpectrumResult::RealImaginary;
        if (m_request.segment > kMostInSegment)
            throw UsageError("a segment has 256 to 1 048 576 samples");
        if (m_request.averaged && m_request.result == SpectrumResult::RealImaginary)
            throw UsageError(
                "real and imaginary parts are those of the whole range; segments have none in "
                "common");
        m_analyses.check(m_request);
        if (m_peaks > 0 && (m_analyses.isWanted() || hasBands(m_request.result)))
            throw UsageError("peaks are those of a spectrum");
        if (m_peaks > 0 && common.output == "-")
            throw UsageError("-o - and --peaks both want standard output");
    }
    void perform(VerbJob& job) override
    {
        const auto file = openTsFile(job.source.string(), true);
        requireSampleTime(*file);
        const SampleRange range = m_source.places.rangeIn(*file, job.notes);
        noteFrequencyUnit(*file, job.notes);
        SpectrumRequest request = m_request;
        request.column = m_source.columnIn(*file);
        request.from = range.first;
        request.to = range.last;
        request.dt = static_cast<double>(file->dt());
        if (range.count() < 2)
            throw JobError("the range holds fewer than 2 samples");
        if (m_analyses.isWanted()) {
            m_analyses.perform(job, *file, request,
                               [&](TSFILE& channel, const std::string& name, SpectrumRequest& agreed) {
                                   clearDoubts(job, channel, name, agreed);
                               });
            return;
        }
        if (planSpectrum(request).segments == 0)
            throw JobError("the range is shorter than one segment");
        if (spectrumRows(request) == 0)
            throw JobError("no band has the three bins that it needs; take a longer range or segment");
        clearDoubts(job, *file, job.name, request);

        double mean = 0.0;
        PendingFile pending(job.target, ".veltrac-new", ".ts");
        {
            const auto made =
                createTsFile(pending.path().string(), spectrumRows(request), spectrumColumns(request));
            describeSpectrum(*file, request, *made);
            requireDone(computeSpectrum(*file, request, *made, mean, job.progress));
            describeMean(*file, request, mean, *made);
            made->flush(true);
            tellPeaks(job, *made, request);
        }
        pending.commit();
        job.json["mean"] = mean;
        job.notes.push_back(planText(request) + ", mean " + generalNumber(mean, 6));
    }

private:
    // What the window asks about needs an option here.
    void clearDoubts(const VerbJob& job, TSFILE& file, const std::string& name,
                     SpectrumRequest& request) const
    {
        const struct
        {
            bool agreed;
            const char* option;
        } answers[] = {
            {false, "--segment"}, {m_interpolate, "--interpolate"}, {m_equalSteps, "--equal-steps"}};
        std::size_t i = 0;
        for (const SpectrumCheck& check : spectrumChecks()) {
            const SpectrumDoubt doubt = look(check, file, name, request, job);
            const auto& answer = answers[i++];
            if (doubt.kind == SpectrumDoubt::Kind::Cancelled)
                throw Interrupted{};
            if (doubt.kind == SpectrumDoubt::Kind::Impossible)
                throw JobError(doubt.text);
            if (doubt.kind == SpectrumDoubt::Kind::Question && !answer.agreed)
                throw JobError(doubt.text + " (" + answer.option + " goes on)");
        }
    }

    // A second file that cannot be read is told by its own name.
    static SpectrumDoubt look(const SpectrumCheck& check, TSFILE& file, const std::string& name,
                              SpectrumRequest& request, const VerbJob& job)
    {
        try {
            return check.look(file, name, request, job.progress);
        } catch (const TS::Failure&) {
            if (name == job.name)
                throw;
            throw JobError(name + ": " + reasonOfFailure());
        }
    }

    void tellPeaks(VerbJob& job, TSFILE& spectrum, const SpectrumRequest& request) const
    {
        if (m_peaks == 0)
            return;
        const std::string unit(unitIn(spectrum.columnDescription(2)));
        job.json["peaks"] = Json::array();
        for (const SpectrumPeak& peak : findPeaks(spectrum, request, {m_peaks})) {
            job.json["peaks"].push_back({{"frequency", peak.frequency}, {"value", peak.value}});
            job.text += generalNumber(peak.frequency, 7) + " Hz  " + generalNumber(peak.value, 5) +
                        (unit.empty() ? "" : " " + unit) + '\n';
        }
    }

    SourceOptions m_source;
    SpectrumAnalyses m_analyses;
    SpectrumRequest m_request;
    int m_trend = 0;
    int m_window = 0;
    int m_result = 0;
    int m_overlap = 0;
    std::optional<std::uint32_t> m_segment;
    std::uint32_t m_peaks = 0;
    bool m_interpolate = false;
    bool m_equalSteps = false;
};

}  // namespace

std::unique_ptr<Verb> makeSpectrumVerb()
{
    return std::make_unique<SpectrumVerb>();
}

}  // namespace veltrac
