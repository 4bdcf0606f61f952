// The passes for processors with AVX-512.
#include "calc/mixfft_pass.h"

namespace {
using Vector = double __attribute__((vector_size(64)));
}

void radixPassAvx512(int span, int radix, int groupCount, double* re, double* im, RadixTables& tables)
{
    passOfVectors<Vector>(span, radix, groupCount, re, im, tables);
}
