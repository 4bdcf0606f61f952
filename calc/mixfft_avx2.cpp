// The passes for processors with AVX2 and FMA.
#include "calc/mixfft_pass.h"

namespace {
using Vector = double __attribute__((vector_size(32)));
}

void radixPassAvx2(int span, int radix, int groupCount, double* re, double* im, RadixTables& tables)
{
    passOfVectors<Vector>(span, radix, groupCount, re, im, tables);
}
