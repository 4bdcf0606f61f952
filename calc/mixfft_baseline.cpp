// The loops of the transform for every processor.
#include "calc/mixfft_stage.h"

namespace {
using Vector = double __attribute__((vector_size(16)));
}

const veltrac::FftKernel veltrac::kFftBaseline = kernelOf<Vector>("baseline");
