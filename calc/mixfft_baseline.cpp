// The passes for any x86-64, and for any other processor.
#include "calc/mixfft_pass.h"

namespace {
using Vector = double __attribute__((vector_size(16)));
}

void radixPassBaseline(int span, int radix, int groupCount, double* re, double* im, RadixTables& tables)
{
    passOfVectors<Vector>(span, radix, groupCount, re, im, tables);
}
