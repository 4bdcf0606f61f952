// Digital filters from short texts.
//
// A spec-string such as "LpBe4/10" (a low-pass, Bessel, fourth order, half power at 10 Hz) and a sampling
// rate give a filter: a chain of blocks of coefficients. A run makes the chain into a step function, which
// turns one input sample into one output sample.
//
//     FidFilter* filter = fid_design("LpBu4/40", 1000.0, -1.0, -1.0, 1, nullptr);
//     FidFunc* step = nullptr;
//     void* run = fid_run_new(filter, &step);
//     void* buffer = fid_run_newbuf(run);
//     for (double& sample : signal) sample = step(buffer, sample);
//     fid_run_freebuf(buffer); fid_run_free(run); std::free(filter);
//
// Frequencies and rates are in Hz; where a fraction of the sampling rate is meant, it says so (0 to 0.5).
// Every failure is told by one text through the error handler and on standard error ("fid error: ...");
// the call then returns null (or a gain of 0), never a half-made filter. Everything allocated here comes
// zero-filled from calloc and belongs to the caller. Designing and running keep nothing between calls; only
// the error handler is one for the whole process.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>

// One block of a filter; `count` doubles follow it directly. A block with count 0 ends the filter.
// The whole filter is one piece of memory, released by one std::free of its first block.
struct alignas(double) FidFilter
{
    std::int16_t
        type;  // 'I': feedback a0 ... an of y: a0 y[t] + a1 y[t-1] + ...; 'F': feed-forward b0 ... bn
    std::int16_t channel;  // always 0
    std::int32_t count;    // doubles that follow

    double* coefficients() { return reinterpret_cast<double*>(this + 1); }
    const double* coefficients() const { return reinterpret_cast<const double*>(this + 1); }
    FidFilter* next() { return reinterpret_cast<FidFilter*>(coefficients() + count); }
    const FidFilter* next() const { return reinterpret_cast<const FidFilter*>(coefficients() + count); }
};

// Turns one input sample into one output sample; called once a sample in the order of time.
using FidFunc = double(void* buffer, double sample);

// Receives the text of a report, without a line end; the text lives until the handler returns.
using FidErrorHandler = void (*)(const char* message);

// "0.9.9", the version of this library.
const char* fid_version();

// Installs the receiver of reports; null removes it. Reports go to standard error all the same.
void fid_set_error_handler(FidErrorHandler handler);

// Designs the filter of a spec-string for a sampling rate.
// f0 and f1 stand in for a frequency (or range) that the spec-string leaves out; not above 0 means none.
// With adjust, a form that promises -3.01 dB frequencies has a gain of the square root of 1/2 there within
// 0.0001 dB, or the call fails; without it a Chebyshev's frequencies are the edges of its ripple.
// The highest gain of a pass band is 1: a Chebyshev of even order is down by its ripple at 0 (low-pass,
// band-stop), half the rate (high-pass) or the centre (band-pass). A Pi filter has gain 1 at half the rate.
// description, where not null, gets the filter in words (to be freed by std::free), null on failure.
// The chain is a cascade of sections of second and first order, the sharpest last, or one FIR block.
FidFilter* fid_design(const char* spec, double rate, double f0, double f1, int adjust,
                      char** description = nullptr);
// The same for callers that keep the words as const. A template, so that a bare null means the one above.
template <std::same_as<const char> Char>
FidFilter* fid_design(const char* spec, double rate, double f0, double f1, int adjust, Char** description)
{
    return fid_design(spec, rate, f0, f1, adjust, const_cast<char**>(description));
}

// As fid_design, for filters of a single section. Fills the array with a0 ... an, then b0 ... bm, both
// divided by their first, and returns the gain: H(z) = gain * B(z) / A(z). A section of order 2 has 6
// coefficients, one of order 1 has 4, a window as many as it has points (and no a). Another length fails.
double fid_design_coef(double* coefficients, int count, const char* spec, double rate, double f0, double f1,
                       int adjust);

// A new filter with all IIR blocks multiplied into one and all FIR blocks into one. Mind that a flattened
// filter of high order or low frequency loses accuracy; a run takes the cascade as it stands.
FidFilter* fid_flatten(const FidFilter* filter);

// A filter from a table: for each block its type letter, its count and its coefficients; a 0 ends it.
FidFilter* fid_cv_array(const double* table);

// Gain at a frequency, given as a fraction of the sampling rate.
double fid_response(const FidFilter* filter, double frequency);
// The same, and the phase: 0 ... 1 for 0 ... 2 pi.
double fid_response_pha(const FidFilter* filter, double frequency, double* phase);

// Prepares a filter for running and hands out its step function. The filter may be freed afterwards.
// A cascade is run section by section, in an order in which rounding costs the fewest digits: as they stand
// in a filter of high order, the flat ones first, nothing right would be left of the output.
void* fid_run_new(const FidFilter* filter, FidFunc** step);
// A buffer in its zero state; one for each signal. It borrows the run, which must outlive it.
void* fid_run_newbuf(void* run);
// Bytes of a buffer, for callers that bring their own memory (aligned as a double) to fid_run_initbuf.
std::size_t fid_run_bufsize(void* run);
// Makes memory of fid_run_bufsize bytes a buffer of this run, or puts a buffer back to its zero state.
void fid_run_initbuf(void* buffer, void* run);
// Steps over many samples in place, with the very outputs of the step function and less time: the history of
// a cascade stays in registers. Blocks and single steps of one buffer may take turns.
void fid_run_block(void* run, void* buffer, double* samples, std::size_t count);
// Puts a buffer into the state that a constant input has led to after long enough, so that a run which begins
// with that value begins without ringing. A filter that never comes to rest (a pole at z = 1) stays in its
// zero state.
void fid_run_settle(void* run, void* buffer, double input);
void fid_run_freebuf(void* buffer);
void fid_run_free(void* run);
