// What a spectrum is asked to be, and what comes of it: lengths, segments, resolution, memory.
#pragma once

#include <cstdint>

#include "calc/WindowFunction.h"

enum class Trend { Mean, Line, Nothing };
enum class SpectrumMethod { WholeRange, Segments };
enum class LengthRule { Shorten, Pad };
enum class SpectrumKind { Amplitude, RmsAmplitude, PowerDensity, AmplitudeDensity, Complex };

struct SpectrumRequest
{
    unsigned column = 1;
    std::uint32_t first = 1;  // samples, both included
    std::uint32_t last = 0;
    Trend remove = Trend::Mean;
    WindowKind window = WindowKind::Hann;
    SpectrumMethod method = SpectrumMethod::WholeRange;
    std::uint32_t segmentLength = 4096;
    int overlap = 50;  // percent: 0, 50, 67 (two thirds) or 75
    LengthRule lengthRule = LengthRule::Shorten;
    SpectrumKind kind = SpectrumKind::Amplitude;  // Complex only of the whole range
    bool decibel = false;                         // not of Complex
};

enum class PlanProblem
{
    None,
    TooFewSamples,    // below 2
    NoSampleTime,     // not above 0, or no number
    SegmentTooLong,   // longer than the range
    TooLong           // more bins than a ts-file holds
};

struct SpectrumPlan
{
    PlanProblem problem = PlanProblem::None;
    double dt = 0.0;              // seconds
    std::uint32_t range = 0;      // samples asked for
    std::uint32_t used = 0;       // samples that go in
    std::uint32_t weighted = 0;   // samples of one transform
    int length = 0;               // values of one transform: more where it is padded with zeros
    std::uint32_t segments = 1;
    std::uint32_t hop = 0;        // samples from one segment to the next

    double resolution() const { return 1.0 / (static_cast<double>(length) * dt); }
    // Bins above the mean's.
    std::uint32_t bins() const { return static_cast<std::uint32_t>(length) / 2; }
    double topFrequency() const { return bins() * resolution(); }
    // Of the four arrays of one transform.
    std::uint64_t bytes() const { return 32ULL * static_cast<std::uint64_t>(length); }
};

SpectrumPlan planSpectrum(const SpectrumRequest& request, double dt);

// The greatest length up to m >= 1 that the transform takes: of 2, 3 and 5 alone if that drops at most a
// thousandth, else of primes up to 37.
int shortenedLength(std::uint32_t m);
// The least length from m on of 2, 3 and 5 alone; 0 where there is none in 31 bits.
int paddedLength(std::uint32_t m);
