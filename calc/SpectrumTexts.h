// What Ts-FFT calls things: numbers, choices, and the texts of a spectrum's file.
#pragma once

#include <cstdint>
#include <string>

#include "calc/SpectrumRequest.h"

class TSFILE;

namespace veltrac {

// "16 GB", "4.5 MB", "130 kB".
std::string memoryText(std::uint64_t bytes);
// "1 000 000 of 1 000 003 samples, resolution 0.001 Hz, up to 500 Hz, 32 MB", or the segments.
std::string planText(const SpectrumRequest& request);

// As the box of results names it.
const char* spectrumResultName(SpectrumResult result);
inline constexpr int kSpectrumResults = 7;

// The unit of the result: "V²/Hz", "dB re 1 V"; UTF-8.
std::string spectrumUnit(TSFILE& source, const SpectrumRequest& request);

// Of its power: "V²", "(m/s)²"; empty where the source has none.
std::string powerUnit(const std::string& unit);

// Gives the file of a spectrum the names, units, descriptions and stamps of its columns, its resolution as
// sample time, and "Frequency[Hz]" as time unit. That of
// bands has their middles as "Time".
void describeSpectrum(TSFILE& source, const SpectrumRequest& request, TSFILE& spectrum);
// What the file's description says: "FFT Force Hann n=1000000 mean=0.0123".
void describeMean(TSFILE& source, const SpectrumRequest& request, double mean, TSFILE& spectrum);

}  // namespace veltrac
