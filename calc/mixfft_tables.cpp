#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "calc/mixfft.h"
#include "calc/mixfft_steps.h"

namespace {

constexpr int kPreferredRadices[] = {10, 8, 5, 4, 3, 2};

class FactorList
{
public:
    explicit FactorList(int* radixOf) : m_radixOf(radixOf) {}

    // Divides n by the factor as often as it divides.
    void takeOut(int& n, int factor)
    {
        while (n % factor == 0) {
            n /= factor;
            add(factor);
        }
    }

    void add(int factor) { m_radixOf[++m_count] = factor; }

    // Two passes of radix 4 cost less than one of 8 and one of 2.
    void evenOutLastTwo()
    {
        if (m_count == 0 || m_radixOf[m_count] != 2)
            return;
        for (int i = m_count - 1; i >= 1; --i) {
            if (m_radixOf[i] == 8) {
                m_radixOf[i] = 4;
                m_radixOf[m_count] = 4;
                return;
            }
        }
    }

    void reverse()
    {
        for (int i = 1, j = m_count; i < j; ++i, --j)
            std::swap(m_radixOf[i], m_radixOf[j]);
    }

    int count() const { return m_count; }

private:
    int* m_radixOf;
    int m_count = 0;
};

[[noreturn]] void refuseFactor(int factor)
{
    std::printf("\nPrime factor of FFT length too large : %6d", factor);
    std::printf("\nPlease modify the value of maxPrimeFactor in mixfft.c");
    std::fflush(stdout);
    std::exit(1);
}

}  // namespace

void factorLength(int n, int* passCount, int* radixOf)
{
    FactorList factors(radixOf);
    if (n == 1)
        factors.add(1);
    if (n > 1) {
        for (const int radix : kPreferredRadices)
            factors.takeOut(n, radix);
        factors.evenOutLastTwo();
        for (int divisor = 2; divisor < 1.0 + std::sqrt(n); ++divisor)
            if (n > 1)
                factors.takeOut(n, divisor);
        if (n > 1)
            factors.add(n);
        factors.reverse();
    }
    *passCount = factors.count();
}

void buildPassTables(int* span, const int* radixOf, int* groups, const int* passCount, const int* n)
{
    // The greatest prime is found last and so stands first.
    if (radixOf[1] > veltrac::kMaxPrimeFactor)
        refuseFactor(radixOf[1]);
    groups[0] = *n;
    span[1] = 1;
    groups[1] = *n / radixOf[1];
    for (int i = 2; i <= *passCount; ++i) {
        span[i] = span[i - 1] * radixOf[i - 1];
        groups[i] = groups[i - 1] / radixOf[i];
    }
}

namespace veltrac {

bool isTransformLength(int n)
{
    if (n < 1)
        return false;
    for (int divisor = 2; divisor <= kMaxPrimeFactor; ++divisor)
        while (n % divisor == 0)
            n /= divisor;
    return n == 1;
}

}  // namespace veltrac
