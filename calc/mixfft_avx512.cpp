// The loops of the transform for processors with AVX-512 (F and DQ).
#include "calc/mixfft_stage.h"

namespace {
using Vector = double __attribute__((vector_size(64)));
}

const veltrac::FftKernel veltrac::kFftAvx512 = kernelOf<Vector>("avx512");
