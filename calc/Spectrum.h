// Spectra of a column of a ts-file: lengths, windows, scaling, averaging, peaks. No window of the program.
//
// The scaling is that of G. Heinzel, A. Ruediger, R. Schilling, "Spectrum and spectral density estimation by
// the Discrete Fourier transform" (2002): with the window w over m samples, S1 its sum, S2 the sum of its
// squares and fs the sampling frequency, the amplitude at bin k is c |Y| / S1 and the power density
// c |Y|^2 / (fs S2), where c is 2, and 1 at half the sampling frequency. Averages are P. D. Welch's, "The use
// of Fast Fourier Transform for the estimation of power spectra", IEEE Trans. AU-15 (1967).
#pragma once

#include "calc/SpectrumPlan.h"
#include "calc/SpectrumRequest.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

// Computes the spectrum and writes it into `target`: plan.bins samples of three columns, "Freq" in Hz, the
// result, and the phase in degrees (or "Re" and "Im"); averages have two columns. Of bands the rows are those
// of calc/OctaveBands.h. Holds plan.bytes
// and little more: the samples and bins of one transform, and of averages the weights and sums of one
// segment. `mean` gets the mean of the samples that took part. Throws the TS exceptions and std::bad_alloc.
JobOutcome computeSpectrum(TSFILE& source, const SpectrumRequest& request, TSFILE& target, double& mean,
                           const Progress& progress);

}  // namespace veltrac
