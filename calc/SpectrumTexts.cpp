#include "calc/SpectrumTexts.h"

#include <iterator>
#include <utility>

#include "calc/SpectrumPlan.h"
#include "calc/WindowShape.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
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
};
static_assert(std::size(kResults) == kSpectrumResults);

const ResultRow& rowOf(SpectrumResult result)
{
    return kResults[static_cast<std::size_t>(result)];
}

// "V²/Hz", "(m/s)²/Hz", "dB re 1 V".
std::string resultUnit(std::string source, const SpectrumRequest& request)
{
    const ResultRow& row = rowOf(request.result);
    const bool isCompound = source.find_first_of("/*^ ") != std::string::npos ||
                            source.find("·") != std::string::npos || source.find("²") != std::string::npos;
    if (source.empty())
        return request.decibel ? "dB" : "";
    if (*row.unit != '\0' && isCompound)
        source = "(" + source + ")";
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
    const std::string reach = "resolution " + generalNumber(plan.resolution, 4) + " Hz, up to " +
                              generalNumber(plan.highest, 6) + " Hz, " + memoryText(plan.bytes);
    if (request.averaged)
        return counted(plan.segments, "segment") + " of " + groupedDigits(plan.used) + " samples, " + reach;
    return groupedDigits(plan.used) + " of " + groupedDigits(request.to - request.from + 1) + " samples, " +
           reach;
}

const char* spectrumResultName(SpectrumResult result)
{
    return rowOf(result).name;
}

std::string spectrumUnit(TSFILE& source, const SpectrumRequest& request)
{
    return resultUnit(std::string(unitIn(headerUtf8(source.columnDescription(request.column)))), request);
}

void describeSpectrum(TSFILE& source, const SpectrumRequest& request, TSFILE& spectrum)
{
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
