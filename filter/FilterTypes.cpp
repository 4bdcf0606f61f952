#include "filter/FilterTypes.h"

#include <algorithm>

#include "filter/fid_spec.h"

namespace veltrac {

namespace {

using enum FilterField;

constexpr char kBesselText[] = "Maximum Bessel filter order is 10";
constexpr char kOtherText[] = "Maximum Butterworth/Chebychev filter order is 64";

std::string fieldText(const FilterRequest& request, FilterField field)
{
    switch (field) {
        case Order:
            return std::to_string(request.order);
        case Ripple:
            return plainNumber(request.rippleDb);
        case Freq0:
            return plainNumber(request.freq0);
        default:
            return plainNumber(request.freq1);
    }
}

}  // namespace

bool FilterType::uses(FilterField field) const
{
    return std::find(std::begin(fields), std::end(fields), field) != std::end(fields);
}

// Their spellings differ ("Chebyshev" and "Chebychev", "Hanning", "Bartlet"), and the windows' tips speak of
// an f1 that they do not have; both on purpose: the texts are fixed.
const std::vector<FilterType>& filterTypes()
{
    static const std::vector<FilterType> types = {
        {"Moving average", "Moving average filter over N samples", nullptr, {Order}, 0, nullptr},
        {"Bessel Lp", "Bessel Low pass filter, -3.01 dB @f0", "LpBe%1/%2", {Order, Freq0}, 10, kBesselText},
        {"Bessel Hp", "Bessel High pass filter, -3.01 dB @f0", "HpBe%1/%2", {Order, Freq0}, 10, kBesselText},
        {"Bessel Bp",
         "Bessel Band pass filter, -3.01 dB @f0 and f1",
         "BpBe%1/%2-%3",
         {Order, Freq0, Freq1},
         10,
         kBesselText},
        {"Bessel Bs",
         "Bessel Band stop filter, -3.01 dB @f0 and f1",
         "BsBe%1/%2-%3",
         {Order, Freq0, Freq1},
         10,
         kBesselText},
        {"Butterworth Lp",
         "Butterworth Low pass filter, -3.01 dB @f0",
         "LpBu%1/%2",
         {Order, Freq0},
         64,
         kOtherText},
        {"Butterworth Hp",
         "Butterworth High pass filter, -3.01 dB @f0",
         "HpBu%1/%2",
         {Order, Freq0},
         64,
         kOtherText},
        {"Butterworth Bp",
         "Butterworth Band pass filter, -3.01 dB @f0 and f1",
         "BpBu%1/%2-%3",
         {Order, Freq0, Freq1},
         64,
         kOtherText},
        {"Butterworth Bs",
         "Butterworth Band stop filter, -3.01 dB @f0 and f1",
         "BsBu%1/%2-%3",
         {Order, Freq0, Freq1},
         64,
         kOtherText},
        {"Chebyshev Lp",
         "Chebychev Low pass filter, -3.01 dB @f0",
         "LpCh%1/%2/%3",
         {Order, Ripple, Freq0},
         64,
         kOtherText},
        {"Chebyshev Hp",
         "Chebychev High pass filter, -3.01 dB @f0",
         "HpCh%1/%2/%3",
         {Order, Ripple, Freq0},
         64,
         kOtherText},
        {"Chebyshev Bp",
         "Chebychev Band pass filter, -3.01 dB @f0 and f1",
         "BpCh%1/%2/%3-%4",
         {Order, Ripple, Freq0, Freq1},
         64,
         kOtherText},
        {"Chebyshev Bs",
         "Chebychev Band stop filter, -3.01 dB @f0 and f1",
         "BsCh%1/%2/%3-%4",
         {Order, Ripple, Freq0, Freq1},
         64,
         kOtherText},
        {"Blackman Lp", "Blackman Low pass filter, -3.01 dB @f0 and f1", "LpBl/%1", {Freq0}, 0, nullptr},
        {"Hamming Lp", "Hamming Low pass filter, -3.01 dB @f0 and f1", "LpHm/%1", {Freq0}, 0, nullptr},
        {"Hanning Lp", "Hanning Low pass filter, -3.01 dB @f0 and f1", "LpHn/%1", {Freq0}, 0, nullptr},
        {"Bartlet Lp", "Bartlet Low pass filter, -3.01 dB @f0 and f1", "LpBa/%1", {Freq0}, 0, nullptr},
    };
    return types;
}

std::string filterSpec(const FilterRequest& request)
{
    const FilterType& type = filterTypes()[static_cast<std::size_t>(request.type)];
    std::string text;
    for (const char* at = type.spec; *at; ++at) {
        if (*at == '%')
            text += fieldText(request, type.fields[*++at - '1']);
        else
            text += *at;
    }
    return text;
}

std::string filterWords(const FilterRequest& request)
{
    if (request.isMovingAverage())
        return "Moving average over " + std::to_string(request.order);
    const char* const passes[] = {"", ", start settled", ", zero phase"};
    return filterSpec(request) + passes[static_cast<std::size_t>(request.pass)];
}

std::string filterComplaint(const FilterRequest& request, double samplingHz)
{
    const FilterType& type = filterTypes()[static_cast<std::size_t>(request.type)];
    if (request.isMovingAverage())
        return request.order < 1 ? "The number of points must be >=1" : "";
    if (!(request.freq0 > 0))
        return "Freq0 must be >0";
    const bool band = type.uses(Freq1);
    if (band && !(request.freq1 > 0))
        return "Freq1 must be >0";
    if (type.maxOrder > 0 && request.order < 1)
        return "The filter order must be >=1";
    if (type.maxOrder > 0 && request.order > type.maxOrder)
        return type.orderText;
    if (!(samplingHz > 0))
        return "The source has no sample time above 0. Set one in the header editor first.";
    const std::string half =
        " must be below half of the sampling frequency, " + plainNumber(samplingHz / 2) + " Hz";
    if (!(request.freq0 < samplingHz / 2))
        return "Freq0" + half;
    if (band && !(request.freq1 < samplingHz / 2))
        return "Freq1" + half;
    if (band && !(request.freq0 < request.freq1))
        return "Freq1 must be above Freq0";
    if (type.uses(Ripple) && !(request.rippleDb < 0))
        return "The ripple must be <0 dB";
    return "";
}

}  // namespace veltrac
