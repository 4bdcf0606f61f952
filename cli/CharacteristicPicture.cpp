#include "cli/CharacteristicPicture.h"

#include <algorithm>
#include <cmath>

#include "cli/Options.h"
#include "cli/Verb.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "filter/CharacteristicPlot.h"
#include "share/PlotPainter.h"
#include "share/PostscriptDriver.h"

namespace veltrac {

namespace {

enum Page { GainAndPhase, GroupDelay, Responses, PolesAndZeros };

}  // namespace

void CharacteristicPicture::addTo(Options& options)
{
    options.choice("--characteristic", m_page,
                   {"gain-and-phase", "group-delay", "impulse-and-step", "poles-and-zeros"},
                   "Draws what a filter does instead of columns, at the sampling frequency of each file");
    options.number("--rate", m_rate, "HZ", "The sampling frequency of a characteristic without a file");
    options.flag("--db", m_decibels, "The gain of a characteristic in decibels");
    m_filter.addTo(options);
}

void CharacteristicPicture::check(bool hasFiles)
{
    if (!isWanted()) {
        if (m_rate || m_decibels || m_filter.request.freq0 != 0.0)
            throw UsageError("--rate, --db and --freq belong to a --characteristic");
        return;
    }
    m_filter.check();
    if (m_filter.request.isMovingAverage())
        throw UsageError("the characteristic of the moving average is not available");
    if (m_rate && hasFiles)
        throw UsageError("--rate or files, not both: a file tells its own sampling frequency");
    if (m_rate && !(*m_rate > 0.0 && std::isfinite(*m_rate)))
        throw UsageError("--rate is a frequency above 0");
}

Plot2D CharacteristicPicture::plotOf(VerbJob& job, bool logarithmic) const
{
    const double rate = m_rate ? *m_rate : samplingFrequency(openTsFile(job.source.string(), true)->dt());
    const FidReports reports;
    const FidFilterPtr filter = m_filter.designed(rate, reports);
    const FilterRequest& request = m_filter.request;
    const bool isZeroPhase = request.pass == FilterPass::ZeroPhase;
    job.json["filter"] = filterWords(request);
    job.json["samplingFrequency"] = rate;
    if (const std::string text = reports.text(); !text.empty())
        job.notes.push_back(text);
    if (*m_page == Responses)
        return responsePlot(responsesOf(filter.get(), rate, request.pass));
    if (*m_page == PolesAndZeros) {
        const FilterRoots roots = rootsOf(filter.get());
        if (!roots.isComplete)
            job.notes.push_back("windows of more than " + std::to_string(kMostRoots) +
                                " points have too many zeros to be found");
        return rootPlot(roots);
    }
    const FilterCharacteristic characteristic = characteristicOf(filter.get(), rate, isZeroPhase);
    if (*m_page == GainAndPhase)
        return gainPlot(characteristic, {m_decibels, logarithmic, !isZeroPhase});
    std::vector<float> delays = groupDelays(filter.get(), characteristic.frequencies, rate);
    if (isZeroPhase)
        std::fill(delays.begin(), delays.end(), 0.0F);
    return delayPlot(characteristic.frequencies, delays, logarithmic);
}

void CharacteristicPicture::fitTo(Plot2D& plot, const PsParameters& parameters) const
{
    if (!m_page || *m_page != PolesAndZeros)
        return;
    // A picture that nobody keeps tells where the frame comes to lie.
    PostscriptDriver driver("/dev/null", &parameters);
    driver.BeginPage(0);
    const PlotLayout layout =
        drawPlot(plot, driver, paperColumns(parameters), paperLook(parameters, plot.grid));
    driver.EndPage();
    if (layout.groups.empty())
        return;
    const PlotLayout::Frame& frame = layout.groups.front();
    const Paper& paper = paperOf(parameters);
    const bool isWide = parameters.orientation == 1;
    squareRoots(plot, static_cast<double>(frame.x2 - frame.x1) * (isWide ? paper.height : paper.width),
                static_cast<double>(frame.y2 - frame.y1) * (isWide ? paper.width : paper.height));
}

}  // namespace veltrac
