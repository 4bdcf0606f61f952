#include "filter/fid_filter.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <limits>
#include <new>
#include <numbers>

#include "filter/fid_report.h"

namespace veltrac {

namespace {

// Long blocks are windows, whose sums of positive terms need no more than doubles.
constexpr int kWideCount = 32;

// The block's polynomial in 1/z, by Horner's rule.
template <class Real>
std::complex<long double> evaluate(const FidFilter& block, std::complex<long double> back)
{
    const Real re = static_cast<Real>(back.real());
    const Real im = static_cast<Real>(back.imag());
    Real x = 0;
    Real y = 0;
    for (int k = block.count; k-- > 0;) {
        const Real next = x * re - y * im + static_cast<Real>(block.coefficients()[k]);
        y = x * im + y * re;
        x = next;
    }
    return {x, y};
}

// Long doubles, because near the unit circle a section of a low frequency is a small difference of its
// coefficients, and because 64 numerators in a row leave the range of a double.
std::complex<long double> response(const FidFilter* filter, double frequency, const char* caller)
{
    if (!filter) {
        fidReport("Internal error: %s called without a filter", caller);
        return 0;
    }
    const long double angle = 2 * std::numbers::pi_v<long double> * static_cast<long double>(frequency);
    std::complex<long double> back(std::cos(angle), -std::sin(angle));
    if (frequency == 0.5)
        back = -1.0L;
    std::complex<long double> numerator = 1;
    std::complex<long double> denominator = 1;
    for (const FidFilter* block = filter; block->count > 0; block = block->next()) {
        if (block->type != 'I' && block->type != 'F') {
            fidReport("Unknown filter type %d in %s()", block->type, caller);
            return 0;
        }
        const auto value =
            block->count <= kWideCount ? evaluate<long double>(*block, back) : evaluate<double>(*block, back);
        (block->type == 'F' ? numerator : denominator) *= value;
    }
    return numerator / denominator;
}

std::vector<double> multiplied(const std::vector<double>& x, const FidFilter& y)
{
    std::vector<double> product(x.size() + static_cast<std::size_t>(y.count) - 1, 0.0);
    for (std::size_t i = 0; i < x.size(); ++i) {
        for (std::size_t j = 0; j < static_cast<std::size_t>(y.count); ++j)
            product[i + j] += x[i] * y.coefficients()[j];
    }
    return product;
}

// A whole number of a table, or -1.
int wholeNumber(double value, int highest)
{
    return value >= 0 && value <= highest && value == std::floor(value) ? static_cast<int>(value) : -1;
}

}  // namespace

FidFilter* makeFidFilter(const std::vector<FidBlock>& blocks)
{
    std::size_t bytes = sizeof(FidFilter);
    for (const FidBlock& block : blocks)
        bytes += sizeof(FidFilter) + block.coefficients.size() * sizeof(double);
    auto* const filter = static_cast<FidFilter*>(std::calloc(1, bytes));
    if (!filter) {
        fidReport("Out of memory");
        return nullptr;
    }
    FidFilter* at = filter;
    for (const FidBlock& block : blocks) {
        at->type = static_cast<std::int16_t>(block.type);
        at->count = static_cast<std::int32_t>(block.coefficients.size());
        std::copy(block.coefficients.begin(), block.coefficients.end(), at->coefficients());
        at = at->next();
    }
    return filter;
}

}  // namespace veltrac

using namespace veltrac;

FidFilter* fid_flatten(const FidFilter* filter)
try {
    if (!filter) {
        fidReport("Internal error: fid_flatten called without a filter");
        return nullptr;
    }
    FidBlock feedback{'I', {1.0}};
    FidBlock forward{'F', {1.0}};
    for (const FidFilter* block = filter; block->count > 0; block = block->next()) {
        if (block->type != 'I' && block->type != 'F') {
            fidReport("Internal error: fid_flatten can only handle IIR + FIR types");
            return nullptr;
        }
        std::vector<double>& product = (block->type == 'I' ? feedback : forward).coefficients;
        product = multiplied(product, *block);
    }
    return makeFidFilter({feedback, forward});
} catch (const std::bad_alloc&) {
    fidReport("Out of memory");
    return nullptr;
}

FidFilter* fid_cv_array(const double* table)
try {
    if (!table) {
        fidReport("Internal error: fid_cv_array called without a table");
        return nullptr;
    }
    std::vector<FidBlock> blocks;
    for (const double* at = table; *at != 0.0;) {
        const int type = wholeNumber(at[0], std::numeric_limits<std::int16_t>::max());
        const int count = type > 0 ? wholeNumber(at[1], std::numeric_limits<std::int32_t>::max()) : -1;
        if (count < 1) {
            fidReport("Bad type or length in array passed to fid_cv_array()");
            return nullptr;
        }
        blocks.push_back({type, {at + 2, at + 2 + count}});
        at += 2 + count;
    }
    return makeFidFilter(blocks);
} catch (const std::bad_alloc&) {
    fidReport("Out of memory");
    return nullptr;
}

double fid_response(const FidFilter* filter, double frequency)
{
    return static_cast<double>(std::abs(response(filter, frequency, "fid_response")));
}

double fid_response_pha(const FidFilter* filter, double frequency, double* phase)
{
    const std::complex<long double> value = response(filter, frequency, "fid_response_pha");
    if (phase) {
        const auto turns = static_cast<double>(std::arg(value) / (2 * std::numbers::pi_v<long double>));
        const double positive = turns < 0 ? turns + 1 : turns;
        *phase = positive < 1 ? positive : 0.0;  // a small negative turn rounds to a whole one
    }
    return static_cast<double>(std::abs(value));
}
