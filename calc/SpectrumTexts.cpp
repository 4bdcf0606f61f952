#include "calc/SpectrumTexts.h"

#include <iterator>
#include <utility>
#include <vector>

#include "calc/OctaveBands.h"
#include "calc/SpectrumPlan.h"
#include "calc/WindowShape.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/Utf8.h"
#include "core/Variable.h"

namespace veltrac {

namespace {

struct ResultRow
{
    SpectrumResult result;
    const char* name;    // in the box
    const char* column;  // in the file
    const char* unit;    // behind the column's own
};
constexpr ResultRow kResults[] = {
    {SpectrumResult::Amplitude, "Amplitude", "Amplitude", ""},
    {SpectrumResult::RmsAmplitude, "RMS amplitude", "RMS", ""},
    {SpectrumResult::PowerDensity, "Power density", "PSD", "²/Hz"},
    {SpectrumResult::AmplitudeDensity, "Amplitude density", "ASD", "/√Hz"},
    {SpectrumResult::RealImaginary, "Real and imaginary", "Re", ""},
    {SpectrumResult::OctaveBands, "Octave bands", "RMS", ""},
    {SpectrumResult::ThirdOctaveBands, "Third-octave bands", "RMS", ""},
};
static_assert(std::size(kResults) == kSpectrumResults);

const ResultRow& rowOf(SpectrumResult result)
{
    return kResults[static_cast<std::size_t>(result)];
}

// "m/s" in parentheses, "V" as it is.
std::string inParentheses(const std::string& unit)
{
    const bool isCompound = unit.find_first_of("/*^ ") != std::string::npos ||
                            unit.find("·") != std::string::npos || unit.find("²") != std::string::npos;
    return isCompound ? "(" + unit + ")" : unit;
}

// "V²/Hz", "(m/s)²/Hz", "dB re 1 V".
std::string resultUnit(std::string source, const SpectrumRequest& request)
{
    const ResultRow& row = rowOf(request.result);
    if (source.empty())
        return request.decibel ? "dB" : "";
    if (*row.unit != '\0')
        source = inParentheses(source);
    return (request.decibel ? "dB re 1 " : "") + source + row.unit;
}

}  // namespace

std::string memoryText(std::uint64_t bytes)
{
    static constexpr std::pair<double, const char*> kUnits[] = {{1e9, " GB"}, {1e6, " MB"}, {1e3, " kB"}};
    const auto size = static_cast<double>(bytes);
    for (const auto& [unit, name] : kUnits)
        if (size >= unit)
            return generalNumber(size / unit, 3) + name;
    return std::to_string(bytes) + " bytes";
}

std::string planText(const SpectrumRequest& request)
{
    const SpectrumPlan plan = planSpectrum(request);
    std::string reach = "resolution " + generalNumber(plan.resolution, 4) + " Hz, up to " +
                        generalNumber(plan.highest, 6) + " Hz, " + memoryText(plan.bytes);
    const std::vector<OctaveBand> bands = octaveBands(request);
    if (!bands.empty())
        reach = counted(bands.size(), "band") + " of " + generalNumber(bands.front().nominal, 4) + " to " +
                generalNumber(bands.back().nominal, 6) + " Hz, " + reach;
    if (request.averaged)
        return counted(plan.segments, "segment") + " of " + groupedDigits(plan.used) + " samples, " + reach;
    return groupedDigits(plan.used) + " of " + groupedDigits(request.to - request.from + 1) + " samples, " +
           reach;
}

std::string powerUnit(const std::string& unit)
{
    return unit.empty() ? unit : inParentheses(unit) + "²";
}

const char* spectrumResultName(SpectrumResult result)
{
    return rowOf(result).name;
}

std::string spectrumUnit(TSFILE& source, const SpectrumRequest& request)
{
    return resultUnit(std::string(unitIn(headerUtf8(source.columnDescription(request.column)))), request);
}

namespace {

void describeBands(TSFILE& source, const SpectrumRequest& request, TSFILE& bands)
{
    const std::string text =
        std::string(rowOf(request.result).name) + " of " + headerUtf8(source.columnName(request.column));
    const struct
    {
        const char* name;
        std::string text;
    } columns[] = {{"Time", "Middle of the band [Hz]"},
                   {request.decibel ? "Level" : rowOf(request.result).column,
                    fittingDescription(text, spectrumUnit(source, request))},
                   {"From", "Lower edge [Hz]"},
                   {"To", "Upper edge [Hz]"},
                   {"Nominal", "Name of the band [Hz]"}};
    bands.dt(1.0F);
    bands.timeUnit("Frequency[Hz]");
    bands.makeTimeColumns(1, 0);
    std::uint32_t c = 0;
    for (const auto& column : columns) {
        bands.columnName(++c, column.name);
        bands.columnDescription(c, column.text.c_str());
        bands.stampColumn(c);
    }
}

}  // namespace

void describeSpectrum(TSFILE& source, const SpectrumRequest& request, TSFILE& spectrum)
{
    if (hasBands(request.result)) {
        describeBands(source, request, spectrum);
        return;
    }
    const ResultRow& row = rowOf(request.result);
    const bool parts = request.result == SpectrumResult::RealImaginary;
    const std::string column = " of " + headerUtf8(source.columnName(request.column));
    const std::string unit = spectrumUnit(source, request);
    spectrum.dt(static_cast<float>(planSpectrum(request).resolution));
    spectrum.timeUnit("Frequency[Hz]");
    spectrum.columnName(1, "Freq");
    spectrum.columnDescription(1, "Frequency [Hz]");
    spectrum.columnName(2, row.column);
    spectrum.columnDescription(2,
                               fittingDescription((parts ? "Real part" : row.name) + column, unit).c_str());
    if (spectrum.columns() > 2) {
        spectrum.columnName(3, parts ? "Im" : "Phase");
        spectrum.columnDescription(3, parts ? fittingDescription("Imaginary part" + column, unit).c_str()
                                            : "Phase at the first sample [deg]");
    }
    for (std::uint32_t c = 1; c <= spectrum.columns(); ++c)
        spectrum.stampColumn(c);
}

void describeMean(TSFILE& source, const SpectrumRequest& request, double mean, TSFILE& spectrum)
{
    const std::string text =
        "FFT " + headerUtf8(source.columnName(request.column)) + " " + spectrumWindowName(request.window) +
        " n=" + std::to_string(planSpectrum(request).length) + " mean=" + generalNumber(mean, 4);
    spectrum.description(cutTo(text, kFileDescription.width - 1).c_str());
}

}  // namespace veltrac
