#include "filter/fid_spec.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

#include "filter/fid_report.h"

namespace veltrac {

namespace {

using enum FidFamily;
using enum FidShape;
using enum FidMapping;

// In the order in which they are tried.
constexpr FidFormat kFormats[] = {
    {"BpRe/#V/#F", "Bandpass resonator, Q=#V (0 means Inf), frequency #F", Resonator, BandPass, Bilinear},
    {"BsRe/#V/#F", "Bandstop resonator, Q=#V (0 means Inf), frequency #F", Resonator, BandStop, Bilinear},
    {"ApRe/#V/#F", "Allpass resonator, Q=#V (0 means Inf), frequency #F", Resonator, AllPass, Bilinear},
    {"Pi/#F", "Proportional-integral filter, frequency #F", ProportionalIntegral, HighPass, Bilinear},
    {"PiZ/#F", "Proportional-integral filter, matched z-transform, frequency #F", ProportionalIntegral,
     HighPass, Matched},
    {"LpBe#O/#F", "Lowpass Bessel filter, order #O, -3.01dB frequency #F", Bessel, LowPass, Bilinear},
    {"HpBe#O/#F", "Highpass Bessel filter, order #O, -3.01dB frequency #F", Bessel, HighPass, Bilinear},
    {"BpBe#O/#R", "Bandpass Bessel filter, order #O, -3.01dB frequencies #R", Bessel, BandPass, Bilinear},
    {"BsBe#O/#R", "Bandstop Bessel filter, order #O, -3.01dB frequencies #R", Bessel, BandStop, Bilinear},
    {"LpBu#O/#F", "Lowpass Butterworth filter, order #O, -3.01dB frequency #F", Butterworth, LowPass,
     Bilinear},
    {"HpBu#O/#F", "Highpass Butterworth filter, order #O, -3.01dB frequency #F", Butterworth, HighPass,
     Bilinear},
    {"BpBu#O/#R", "Bandpass Butterworth filter, order #O, -3.01dB frequencies #R", Butterworth, BandPass,
     Bilinear},
    {"BsBu#O/#R", "Bandstop Butterworth filter, order #O, -3.01dB frequencies #R", Butterworth, BandStop,
     Bilinear},
    {"LpCh#O/#V/#F", "Lowpass Chebyshev filter, order #O, passband ripple #VdB, -3.01dB frequency #F",
     Chebyshev, LowPass, Bilinear},
    {"HpCh#O/#V/#F", "Highpass Chebyshev filter, order #O, passband ripple #VdB, -3.01dB frequency #F",
     Chebyshev, HighPass, Bilinear},
    {"BpCh#O/#V/#R", "Bandpass Chebyshev filter, order #O, passband ripple #VdB, -3.01dB frequencies #R",
     Chebyshev, BandPass, Bilinear},
    {"BsCh#O/#V/#R", "Bandstop Chebyshev filter, order #O, passband ripple #VdB, -3.01dB frequencies #R",
     Chebyshev, BandStop, Bilinear},
    {"LpBeZ#O/#F", "Lowpass Bessel filter, matched z-transform, order #O, -3.01dB frequency #F", Bessel,
     LowPass, Matched},
    {"HpBeZ#O/#F", "Highpass Bessel filter, matched z-transform, order #O, -3.01dB frequency #F", Bessel,
     HighPass, Matched},
    {"BpBeZ#O/#R", "Bandpass Bessel filter, matched z-transform, order #O, -3.01dB frequencies #R", Bessel,
     BandPass, Matched},
    {"BsBeZ#O/#R", "Bandstop Bessel filter, matched z-transform, order #O, -3.01dB frequencies #R", Bessel,
     BandStop, Matched},
    {"LpBuZ#O/#F", "Lowpass Butterworth filter, matched z-transform, order #O, -3.01dB frequency #F",
     Butterworth, LowPass, Matched},
    {"HpBuZ#O/#F", "Highpass Butterworth filter, matched z-transform, order #O, -3.01dB frequency #F",
     Butterworth, HighPass, Matched},
    {"BpBuZ#O/#R", "Bandpass Butterworth filter, matched z-transform, order #O, -3.01dB frequencies #R",
     Butterworth, BandPass, Matched},
    {"BsBuZ#O/#R", "Bandstop Butterworth filter, matched z-transform, order #O, -3.01dB frequencies #R",
     Butterworth, BandStop, Matched},
    {"LpChZ#O/#V/#F",
     "Lowpass Chebyshev filter, matched z-transform, order #O, passband ripple #VdB, -3.01dB frequency #F",
     Chebyshev, LowPass, Matched},
    {"HpChZ#O/#V/#F",
     "Highpass Chebyshev filter, matched z-transform, order #O, passband ripple #VdB, -3.01dB frequency #F",
     Chebyshev, HighPass, Matched},
    {"BpChZ#O/#V/#R",
     "Bandpass Chebyshev filter, matched z-transform, order #O, passband ripple #VdB, -3.01dB frequencies #R",
     Chebyshev, BandPass, Matched},
    {"BsChZ#O/#V/#R",
     "Bandstop Chebyshev filter, matched z-transform, order #O, passband ripple #VdB, -3.01dB frequencies #R",
     Chebyshev, BandStop, Matched},
    {"LpBuBe#O/#V/#F", "Lowpass Butterworth-Bessel #V% cross, order #O, -3.01dB frequency #F",
     ButterworthBessel, LowPass, Bilinear},
    {"LpBq#o/#V/#F", "Lowpass biquad filter, order #O, Q=#V, -3.01dB frequency #F", Biquad, LowPass,
     Bilinear},
    {"HpBq#o/#V/#F", "Highpass biquad filter, order #O, Q=#V, -3.01dB frequency #F", Biquad, HighPass,
     Bilinear},
    {"BpBq#o/#V/#F", "Bandpass biquad filter, order #O, Q=#V, centre frequency #F", Biquad, BandPass,
     Bilinear},
    {"BsBq#o/#V/#F", "Bandstop biquad filter, order #O, Q=#V, centre frequency #F", Biquad, BandStop,
     Bilinear},
    {"ApBq#o/#V/#F", "Allpass biquad filter, order #O, Q=#V, centre frequency #F", Biquad, AllPass, Bilinear},
    {"PkBq#o/#V/#V/#F", "Peaking biquad filter, order #O, Q=#V, dBgain=#V, frequency #F", Biquad, Peaking,
     Bilinear},
    {"LsBq#o/#V/#V/#F", "Lowpass shelving biquad filter, S=#V, dBgain=#V, frequency #F", Biquad, LowShelf,
     Bilinear},
    {"HsBq#o/#V/#V/#F", "Highpass shelving biquad filter, S=#V, dBgain=#V, frequency #F", Biquad, HighShelf,
     Bilinear},
    {"LpBl/#F", "Lowpass Blackman window, -3.01dB frequency #F", Blackman, LowPass, Bilinear},
    {"LpHm/#F", "Lowpass Hamming window, -3.01dB frequency #F", Hamming, LowPass, Bilinear},
    {"LpHn/#F", "Lowpass Hann window, -3.01dB frequency #F", Hann, LowPass, Bilinear},
    {"LpBa/#F", "Lowpass Bartlet (triangular) window, -3.01dB frequency #F", Bartlett, LowPass, Bilinear},
};

// Takes things off the front of a text.
class Reader
{
public:
    explicit Reader(std::string_view text) : m_rest(text) {}

    bool atEnd() const { return m_rest.empty(); }

    bool take(char letter)
    {
        const bool found = m_rest.starts_with(letter);
        if (found)
            m_rest.remove_prefix(1);
        return found;
    }

    // Orders too large for an int become the largest one, which no kind of filter allows.
    bool takeInteger(int& value)
    {
        const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), value);
        if (error == std::errc::invalid_argument)
            return false;
        if (error == std::errc::result_out_of_range)
            value = m_rest.starts_with('-') ? INT_MIN : INT_MAX;
        m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
        return true;
    }

    // Digits with an optional sign, point and exponent; words such as "inf" and "nan" are no numbers here.
    bool takeNumber(double& value, std::string& spelling)
    {
        const std::string_view saved = m_rest;
        if (take('+') && m_rest.starts_with('-'))
            return false;
        const std::size_t sign = m_rest.starts_with('-') ? 1 : 0;
        if (m_rest.size() <= sign || !(m_rest[sign] == '.' || (m_rest[sign] >= '0' && m_rest[sign] <= '9'))) {
            m_rest = saved;
            return false;
        }
        const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), value);
        if (error == std::errc::invalid_argument)
            return false;
        const std::string_view digits(m_rest.data(), static_cast<std::size_t>(end - m_rest.data()));
        if (error == std::errc::result_out_of_range)
            value = outOfRange(digits);
        spelling = digits;
        m_rest.remove_prefix(digits.size());
        return true;
    }

private:
    // from_chars leaves open whether a number was too large or too small.
    static double outOfRange(std::string_view digits)
    {
        const std::size_t exponent = digits.find_first_of("eE");
        const bool tiny = exponent == std::string_view::npos
                              ? digits.find_first_of("123456789") > digits.find('.')
                              : digits.find('-', exponent) != std::string_view::npos;
        const double size = tiny ? 0.0 : std::numeric_limits<double>::infinity();
        return digits.starts_with('-') ? -size : size;
    }

    std::string_view m_rest;
};

struct Match
{
    FidSpec spec;
    bool hasFrequency = false;
};

bool takeMark(char mark, Reader& reader, Match& match, int& valueCount)
{
    FidSpec& spec = match.spec;
    switch (mark) {
        case 'O':
            return reader.takeInteger(spec.order);
        case 'o':
            reader.takeInteger(spec.order);
            return true;
        case 'V':
            ++valueCount;
            return reader.takeNumber(spec.values[valueCount - 1], spec.valueTexts[valueCount - 1]);
        case 'R':
            match.hasFrequency = reader.takeNumber(spec.frequencies[0], spec.frequencyTexts[0]) &&
                                 reader.take('-') &&
                                 reader.takeNumber(spec.frequencies[1], spec.frequencyTexts[1]);
            return match.hasFrequency;
        default:
            match.hasFrequency = reader.takeNumber(spec.frequencies[0], spec.frequencyTexts[0]);
            return match.hasFrequency;
    }
}

std::optional<Match> matchFormat(const FidFormat& format, std::string_view text)
{
    Reader reader(text);
    Match match;
    match.spec.format = &format;
    int valueCount = 0;
    const char* const frequency = format.format + std::strlen(format.format) - 3;
    for (const char* at = format.format; *at; ++at) {
        if (at == frequency && reader.atEnd())
            return match;
        if (*at != '#') {
            if (!reader.take(*at))
                return std::nullopt;
        } else if (!takeMark(*++at, reader, match, valueCount)) {
            return std::nullopt;
        }
    }
    if (!reader.atEnd())
        return std::nullopt;
    return match;
}

std::optional<Match> matchAnyFormat(std::string_view text)
{
    for (const FidFormat& format : kFormats) {
        if (auto match = matchFormat(format, text))
            return match;
    }
    return std::nullopt;
}

// The comparisons are such that a NaN counts as no default.
bool fillDefaults(FidSpec& spec, double f0, double f1)
{
    if (!(f0 > 0.0) || (spec.format->hasRange() && !(f1 > 0.0))) {
        fidReport("Frequency omitted from filter-spec, and no default provided");
        return false;
    }
    spec.frequencies[0] = f0;
    spec.frequencies[1] = f1;
    for (int i = 0; i < 2; ++i)
        spec.frequencyTexts[i] = plainNumber(spec.frequencies[i]);
    return true;
}

bool checkFrequencies(const FidSpec& spec, double rate)
{
    const bool range = spec.format->hasRange();
    for (int i = 0; i < (range ? 2 : 1); ++i) {
        const double frequency = spec.frequencies[i];
        const double part = frequency / rate;
        const bool above = range ? !(part <= 0.5) : !(part < 0.5);
        const bool equalEdges = range && spec.frequencies[0] / rate >= spec.frequencies[1] / rate;
        if (!(rate > 0.0) || !(part > 0.0) || above || equalEdges) {
            fidReport("Frequency of %gHz out of range with sampling rate of %gHz", frequency, rate);
            return false;
        }
    }
    return true;
}

}  // namespace

bool FidFormat::hasRange() const
{
    return format[std::strlen(format) - 1] == 'R';
}

bool FidFormat::promisesHalfPower() const
{
    return std::strstr(description, "-3.01dB") != nullptr;
}

std::optional<FidSpec> readFidSpec(const char* text, double rate, double f0, double f1)
{
    const char* const safeText = text ? text : "";
    const std::optional<Match> match = matchAnyFormat(safeText);
    if (!match) {
        fidReport("Spec-string \"%s\" matches no known format", safeText);
        return std::nullopt;
    }
    FidSpec spec = match->spec;
    if (spec.order < 1) {
        fidReport("Bad order %d in spec-string \"%s\"", spec.order, safeText);
        return std::nullopt;
    }
    if (!match->hasFrequency && !fillDefaults(spec, f0, f1))
        return std::nullopt;
    if (spec.format->hasRange() && spec.frequencies[0] > spec.frequencies[1]) {
        fidReport("Backwards frequency range in spec-string \"%s\"", safeText);
        return std::nullopt;
    }
    if (!checkFrequencies(spec, rate))
        return std::nullopt;
    return spec;
}

std::string plainNumber(double value)
{
    constexpr double kLeast = 1e-7;
    constexpr double kMost = 1e15;
    char text[64];
    const bool isPlain = std::abs(value) >= kLeast && std::abs(value) < kMost;
    const auto [end, error] = isPlain
                                  ? std::to_chars(text, text + sizeof text, value, std::chars_format::fixed)
                                  : std::to_chars(text, text + sizeof text, value);
    return error == std::errc() ? std::string(text, end) : std::string();
}

std::string describeFidSpec(const FidSpec& spec)
{
    std::string words;
    int value = 0;
    for (const char* at = spec.format->description; *at; ++at) {
        if (*at != '#') {
            words += *at;
            continue;
        }
        switch (*++at) {
            case 'O':
                words += std::to_string(spec.order);
                break;
            case 'V':
                words += spec.valueTexts[value++];
                break;
            case 'R':
                words += spec.frequencyTexts[0] + '-' + spec.frequencyTexts[1];
                break;
            default:
                words += spec.frequencyTexts[0];
                break;
        }
    }
    return words;
}

}  // namespace veltrac
