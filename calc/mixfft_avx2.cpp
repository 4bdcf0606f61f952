// The loops of the transform for processors with AVX2 and FMA.
#include "calc/mixfft_stage.h"

namespace {
using Vector = double __attribute__((vector_size(32)));
}

const veltrac::FftKernel veltrac::kFftAvx2 = kernelOf<Vector>("avx2");
