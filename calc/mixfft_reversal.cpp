#include <cstddef>

#include "calc/mixfft.h"
#include "calc/mixfft_steps.h"

namespace {

// The permutation moves tiles of kLowRun values that are neighbours in y by kHighRun that are neighbours in x
// through a buffer in the first-level cache: both sides then move whole cache lines, and of power-of-two
// lengths, whose rows all fall into the same sets of the cache, no line is needed twice.
constexpr int kLowRun = 32;
constexpr int kHighRun = 64;
// The least products of radices that such runs are made of, and the most that they can come to.
constexpr int kLeastLow = 16;
constexpr int kLeastHigh = 32;
constexpr int kMostLow = kLeastLow * kMaxPrimeFactor;
constexpr int kMostHigh = kLeastHigh * kMaxPrimeFactor;
// Short transforms stay in the cache whichever way they are walked.
constexpr int kLongLength = 4096;

// The counter of a mixed-radix number whose digits are passes first .. last: counts index upwards in the
// order of y and keeps the offset of the same digits in x.
class DigitCounter
{
public:
    DigitCounter(int first, int last, const int* radixOf, const int* groups)
        : m_first(first), m_last(last), m_radixOf(radixOf), m_groups(groups)
    {
    }

    std::ptrdiff_t offset() const { return m_offset; }

    void advance()
    {
        int digit = m_first;
        if (digit > m_last)
            return;
        m_offset += m_groups[digit];
        ++m_count[digit];
        while (m_count[digit] >= m_radixOf[digit]) {
            m_count[digit] = 0;
            m_offset -= m_groups[digit - 1];
            if (++digit > m_last)
                return;
            m_offset += m_groups[digit];
            ++m_count[digit];
        }
    }

private:
    int m_first;
    int m_last;
    const int* m_radixOf;
    const int* m_groups;
    std::ptrdiff_t m_offset = 0;
    int m_count[kMaxPasses] = {};
};

// The index split in three: `low` digits that are neighbours in y, `high` ones that are neighbours in x.
struct DigitSplit
{
    int lastLow = 0;
    int firstHigh = 0;
    int lowCount = 1;
    int highCount = 1;
};

DigitSplit splitDigits(int passCount, const int* radixOf)
{
    DigitSplit split;
    while (split.lastLow < passCount && split.lowCount < kLeastLow)
        split.lowCount *= radixOf[++split.lastLow];
    split.firstHigh = passCount + 1;
    while (split.firstHigh > split.lastLow + 1 && split.highCount < kLeastHigh)
        split.highCount *= radixOf[--split.firstHigh];
    return split;
}

// Rows of y that belong to neighbours in x, and offsets in x of neighbours in y.
struct RunTables
{
    std::ptrdiff_t lowOffset[kMostLow];
    std::ptrdiff_t highRow[kMostHigh];
};

void fillRunTables(RunTables& tables, const DigitSplit& split, int n, int passCount, const int* radixOf,
                   const int* groups)
{
    DigitCounter low(1, split.lastLow, radixOf, groups);
    for (int i = 0; i < split.lowCount; ++i, low.advance())
        tables.lowOffset[i] = low.offset();
    DigitCounter high(split.firstHigh, passCount, radixOf, groups);
    for (int i = 0; i < split.highCount; ++i, high.advance())
        tables.highRow[high.offset()] = static_cast<std::ptrdiff_t>(i) * (n / split.highCount);
}

int shorter(int a, int b)
{
    return a < b ? a : b;
}

// One tile: rows of `highLength` neighbours in x become rows of `lowLength` neighbours in y.
void copyTile(const std::ptrdiff_t* lowOffset, int lowLength, const std::ptrdiff_t* highRow, int highLength,
              const double* x, double* y)
{
    // Rows a little apart from a power of two, which would all meet in a few sets of the cache.
    static double buffer[kLowRun][kHighRun + kLowRun / 4];
    for (int l = 0; l < lowLength; ++l)
        for (int h = 0; h < highLength; ++h)
            buffer[l][h] = x[lowOffset[l] + h];
    for (int h = 0; h < highLength; ++h) {
        double* row = y + highRow[h];
        for (int l = 0; l < lowLength; ++l)
            row[l] = buffer[l][h];
    }
}

// All low and high digits for one value of the digits between.
void copyTiles(const DigitSplit& split, const RunTables& tables, const double* x, double* y)
{
    for (int high = 0; high < split.highCount; high += kHighRun)
        for (int low = 0; low < split.lowCount; low += kLowRun)
            copyTile(tables.lowOffset + low, shorter(kLowRun, split.lowCount - low), tables.highRow + high,
                     shorter(kHighRun, split.highCount - high), x + high, y + low);
}

void reverseInTurn(int n, int passCount, const int* radixOf, const int* groups, const double* x, double* y)
{
    DigitCounter counter(1, passCount, radixOf, groups);
    for (int k = 0; k < n; ++k, counter.advance())
        y[k] = x[counter.offset()];
}

}  // namespace

void digitReversal(int n, int passCount, const int* radixOf, const int* groups, const double* xRe,
                   const double* xIm, double* yRe, double* yIm)
{
    const DigitSplit split = splitDigits(passCount, radixOf);
    if (n < kLongLength || split.highCount < kLeastHigh) {
        reverseInTurn(n, passCount, radixOf, groups, xRe, yRe);
        reverseInTurn(n, passCount, radixOf, groups, xIm, yIm);
        return;
    }
    static RunTables tables;
    fillRunTables(tables, split, n, passCount, radixOf, groups);
    DigitCounter middle(split.lastLow + 1, split.firstHigh - 1, radixOf, groups);
    const int middleCount = n / split.lowCount / split.highCount;
    for (int m = 0; m < middleCount; ++m, middle.advance()) {
        const std::ptrdiff_t to = static_cast<std::ptrdiff_t>(m) * split.lowCount;
        copyTiles(split, tables, xRe + middle.offset(), yRe + to);
        copyTiles(split, tables, xIm + middle.offset(), yIm + to);
    }
}
