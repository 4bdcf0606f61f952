#include "calc/SpectrumTexts.h"

#include <iterator>

#include "calc/Spectrum.h"
#include "calc/WindowShape.h"
#include "share/GroupedNumber.h"
#include "share/HeaderText.h"

namespace veltrac {

namespace {

struct ResultRow
{
    SpectrumResult result;
    const char* name;    // in the box
    const char* column;  // in the file
    const char* unit;    // of a column in [%1]
};
constexpr ResultRow kResults[] = {
    {SpectrumResult::Amplitude, "Amplitude", "Amplitude", "%1"},
    {SpectrumResult::RmsAmplitude, "RMS amplitude", "RMS", "%1"},
    {SpectrumResult::PowerDensity, "Power density", "PSD", "(%1)^2/Hz"},
    {SpectrumResult::AmplitudeDensity, "Amplitude density", "ASD", "%1/sqrt(Hz)"},
    {SpectrumResult::RealImaginary, "Real and imaginary", "Re", "%1"},
};
static_assert(std::size(kResults) == kSpectrumResults);

const ResultRow& rowOf(SpectrumResult result)
{
    return kResults[static_cast<std::size_t>(result)];
}

// The text in the last [ ] of a description.
QString unitOf(const QString& description)
{
    const int open = description.lastIndexOf(QLatin1Char('['));
    const int close = description.indexOf(QLatin1Char(']'), open);
    return open < 0 || close < 0 ? QString() : description.mid(open + 1, close - open - 1);
}

// "Amplitude of Force [N]"
QByteArray columnText(const QString& what, const QString& column, const QString& unit)
{
    return descriptionBytes(QStringLiteral("%1 of %2").arg(what, column), unit);
}

}  // namespace

QString memoryText(std::uint64_t bytes)
{
    static constexpr struct
    {
        double size;
        const char* name;
    } kUnits[] = {{1e9, "GB"}, {1e6, "MB"}, {1e3, "kB"}};
    const auto size = static_cast<double>(bytes);
    for (const auto& unit : kUnits)
        if (size >= unit.size)
            return QStringLiteral("%1 %2").arg(size / unit.size, 0, 'g', 3).arg(QLatin1String(unit.name));
    return QStringLiteral("%1 bytes").arg(bytes);
}

QString planText(const SpectrumRequest& request)
{
    const SpectrumPlan plan = planSpectrum(request);
    const QString reach = QStringLiteral("resolution %1 Hz, up to %2 Hz, %3")
                              .arg(plan.resolution, 0, 'g', 4)
                              .arg(plan.highest, 0, 'g', 6)
                              .arg(memoryText(plan.bytes));
    if (request.averaged)
        return QStringLiteral("%1 %2 of %3 samples, %4")
            .arg(groupedNumber(plan.segments),
                 plan.segments == 1 ? QStringLiteral("segment") : QStringLiteral("segments"),
                 groupedNumber(plan.used), reach);
    return QStringLiteral("%1 of %2 samples, %3")
        .arg(groupedNumber(plan.used), groupedNumber(request.to - request.from + 1), reach);
}

const char* spectrumResultName(SpectrumResult result)
{
    return rowOf(result).name;
}

void describeSpectrum(TSFILE& source, const SpectrumRequest& request, TSFILE& spectrum)
{
    const ResultRow& row = rowOf(request.result);
    const bool parts = request.result == SpectrumResult::RealImaginary;
    const QString column = headerText(source.columnName(request.column));
    QString unit = unitOf(headerText(source.columnDescription(request.column)));
    if (request.decibel)
        unit = QStringLiteral("dB");
    else if (!unit.isEmpty())
        unit = QString::fromLatin1(row.unit).arg(unit);
    const QString real = parts ? QStringLiteral("Real part") : QLatin1String(row.name);
    spectrum.dt(static_cast<float>(planSpectrum(request).resolution));
    spectrum.timeUnit("Frequency[Hz]");
    spectrum.columnName(1, "Freq");
    spectrum.columnDescription(1, "Frequency [Hz]");
    spectrum.columnName(2, row.column);
    spectrum.columnDescription(2, columnText(real, column, unit).constData());
    if (spectrum.columns() > 2) {
        spectrum.columnName(3, parts ? "Im" : "Phase");
        spectrum.columnDescription(
            3, parts ? columnText(QStringLiteral("Imaginary part"), column, unit).constData()
                     : "Phase at the first sample [deg]");
    }
    for (std::uint32_t c = 1; c <= spectrum.columns(); ++c)
        spectrum.stampColumn(c);
}

void describeMean(TSFILE& source, const SpectrumRequest& request, double mean, TSFILE& spectrum)
{
    const QString text = QStringLiteral("FFT %1 %2 n=%3 mean=%4")
                             .arg(headerText(source.columnName(request.column)),
                                  QLatin1String(spectrumWindowName(request.window)))
                             .arg(planSpectrum(request).length)
                             .arg(mean, 0, 'g', 4);
    spectrum.description(headerBytes(text, kFileDescriptionBytes).constData());
}

}  // namespace veltrac
