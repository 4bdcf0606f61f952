// Columns of a spectrogram's file: the spectrum of one of its samples, the course of one of its frequencies.
#pragma once

#include <cstdint>
#include <string>

#include "core/Progress.h"

class TSFILE;

namespace veltrac {

// Both fill a target that has as many samples as the picture has frequencies, or samples, and give it names,
// units, sample time and start. Throw the TS exceptions.

// Columns "Freq" and "Level" of a sample of the picture, whose frequencies are multiples of `step` Hz; `when`
// says in the description which.
void writeSpectrumAt(TSFILE& picture, std::uint32_t sample, double step, const std::string& when,
                     TSFILE& target);
// The picture's column as it is, at its times.
JobOutcome writeCourse(TSFILE& picture, std::uint32_t column, TSFILE& target, const Progress& progress);

}  // namespace veltrac
