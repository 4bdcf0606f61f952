// The language of spec-strings: the table of formats, reading a text by it, telling it in words.
#pragma once

#include <optional>
#include <string>

namespace veltrac {

// What computes a filter kind.
enum class FidFamily {
    Resonator,
    ProportionalIntegral,
    Bessel,
    Butterworth,
    Chebyshev,
    ButterworthBessel,
    Biquad,
    Blackman,
    Hamming,
    Hann,
    Bartlett,
};

enum class FidShape { LowPass, HighPass, BandPass, BandStop, AllPass, Peaking, LowShelf, HighShelf };

// How the analogue plane is brought to the digital one.
enum class FidMapping { Bilinear, Matched };

// One filter kind. Marks: #O order, #o order that may be left out, #V value, #F frequency, #R two
// frequencies. The frequency always ends a format and may be left out together with its slash.
struct FidFormat
{
    const char* format;
    const char* description;
    FidFamily family;
    FidShape shape;
    FidMapping mapping;

    bool hasRange() const;
    // Whether the description promises its frequencies to be at half power.
    bool promisesHalfPower() const;
};

// A spec-string as read, frequencies in Hz with the defaults filled in.
struct FidSpec
{
    const FidFormat* format = nullptr;
    int order = 1;
    double values[2] = {0.0, 0.0};
    double frequencies[2] = {0.0, 0.0};
    // As they are spelled in the spec-string; defaults as plainNumber() has them.
    std::string valueTexts[2];
    std::string frequencyTexts[2];
};

// A number as a person writes it, with all digits that tell it from its neighbours: "0.0001", "100000"; with
// an exponent only where it would be very long.
std::string plainNumber(double value);

// Reads a spec-string by the first format that matches it whole. Reports and returns nothing when there is
// none, or the order, the frequencies or the rate cannot be.
std::optional<FidSpec> readFidSpec(const char* text, double rate, double f0, double f1);

// The format's description with the values in place of the marks.
std::string describeFidSpec(const FidSpec& spec);

}  // namespace veltrac
