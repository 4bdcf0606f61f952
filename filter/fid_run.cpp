// Running a filter: one call a sample, or one for many.
//
// A run holds the coefficients and one of four step functions, chosen when it is prepared:
// - a cascade of sections up to the second order, with its count known at compile time up to eight, in the
//   order that loses the fewest digits;
// - the same for any count;
// - one FIR block, such as a window;
// - whatever else blocks can make (a flattened filter), stage by stage.
// Buffers hold the signal's history and borrow the coefficients.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "filter/fid.h"
#include "filter/fid_order.h"
#include "filter/fid_report.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kMagic = 0x64966325;

// How a kind of filter is run: a sample at a time, or (null: by the same step) many in place; and how its
// history becomes that of a constant input.
struct Way
{
    FidFunc* step = nullptr;
    void (*block)(void* buffer, double* samples, std::size_t count) = nullptr;
    void (*settle)(const double* coefficients, double* history, double input) = nullptr;
};

struct Run
{
    std::uint32_t magic;
    Way way;
    std::size_t historyCount;  // doubles, at least 1
    double coefficients[1];    // as many as the step function needs
};

struct Buffer
{
    const double* coefficients;
    FidFunc* step;
    std::size_t historyBytes;  // of all but one double of the history: the first belongs to this record
    double history[1];
};
static_assert(sizeof(Buffer) == 4 * sizeof(double));

// A feedback polynomial and a feed-forward one, of any order, that are run together.
struct Stage
{
    FidSection section{{1.0}, {1.0}};
    bool hasFeedback = false;
    bool hasForward = false;
};

// Below this a dying response is as good as 0, and numbers soon to be denormal would cost a hundred times
// as much to calculate with.
constexpr double kTiny = 1e-280;

void forgetTiny(double* history, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (std::abs(history[i]) < kTiny)
            history[i] = 0.0;
    }
}

// Transposed direct form II (A. V. Oppenheim, R. W. Schafer, "Discrete-Time Signal Processing", section
// 6.3.4), two doubles of history a section. Five coefficients a section: b0 b1 b2 a1 a2. What does not wait
// for y comes first into the sums, so that one product and two sums lie between two samples.
inline double runSection(const double* c, double x, double* past)
{
    const double y = c[0] * x + past[0];
    past[0] = (c[1] * x + past[1]) - c[3] * y;
    past[1] = c[2] * x - c[4] * y;
    return y;
}

template <std::size_t Count>
inline double runCascade(const double* c, double* past, double x)
{
    for (std::size_t i = 0; i < Count; ++i)
        x = runSection(c + 5 * i, x, past + 2 * i);
    return x;
}

template <std::size_t Count>
double stepCascade(void* buffer, double x)
{
    auto* const state = static_cast<Buffer*>(buffer);
    const double y = runCascade<Count>(state->coefficients, state->history, x);
    if (std::abs(y) < kTiny)
        forgetTiny(state->history, 2 * Count);
    return y;
}

// The same arithmetic with the history in registers.
template <std::size_t Count>
void blockCascade(void* buffer, double* samples, std::size_t count)
{
    auto* const state = static_cast<Buffer*>(buffer);
    std::array<double, 5 * Count> c;
    std::array<double, 2 * Count> past;
    std::copy_n(state->coefficients, c.size(), c.begin());
    std::copy_n(static_cast<const double*>(state->history), past.size(), past.begin());
    for (std::size_t t = 0; t < count; ++t) {
        const double y = runCascade<Count>(c.data(), past.data(), samples[t]);
        if (std::abs(y) < kTiny)
            forgetTiny(past.data(), past.size());
        samples[t] = y;
    }
    std::copy(past.begin(), past.end(), static_cast<double*>(state->history));
}

double stepLongCascade(void* buffer, double x)
{
    auto* const state = static_cast<Buffer*>(buffer);
    const auto count = static_cast<std::size_t>(state->coefficients[0]);
    const double* const c = state->coefficients + 1;
    double* const past = state->history;
    for (std::size_t i = 0; i < count; ++i)
        x = runSection(c + 5 * i, x, past + 2 * i);
    if (std::abs(x) < kTiny)
        forgetTiny(state->history, 2 * count);
    return x;
}

// The sum in eight parts, which the compiler keeps in vector registers.
double dotProduct(const double* x, const double* y, std::size_t count)
{
    std::array<double, 8> part{};
    std::size_t k = 0;
    for (; k + part.size() <= count; k += part.size()) {
        for (std::size_t i = 0; i < part.size(); ++i)
            part[i] += x[k + i] * y[k + i];
    }
    double sum = ((part[0] + part[1]) + (part[2] + part[3])) + ((part[4] + part[5]) + (part[6] + part[7]));
    for (; k < count; ++k)
        sum += x[k] * y[k];
    return sum;
}

// History: the place of the newest sample (an integer's bits), then a ring kept twice, one copy after the
// other, so that the last samples always lie in one piece, newest first.
double stepWindow(void* buffer, double x)
{
    auto* const state = static_cast<Buffer*>(buffer);
    const auto count = static_cast<std::size_t>(state->coefficients[0]);
    auto place = std::bit_cast<std::uint64_t>(state->history[0]);
    place = place == 0 ? count - 1 : place - 1;
    state->history[0] = std::bit_cast<double>(place);
    double* const ring = state->history + 1;
    ring[place] = x;
    ring[place + count] = x;
    // the newest sample is multiplied by itself: read back at once as part of a vector it would stall
    return state->coefficients[1] * x + dotProduct(state->coefficients + 2, ring + place + 1, count - 1);
}

// Transposed direct form II of any order. Coefficients: count of stages, then for each its order, b and -a.
double stepStages(void* buffer, double x)
{
    auto* const state = static_cast<Buffer*>(buffer);
    const double* c = state->coefficients;
    double* past = state->history;
    const auto stages = static_cast<std::size_t>(*c++);
    for (std::size_t s = 0; s < stages; ++s) {
        const auto order = static_cast<std::size_t>(*c++);
        const double* const b = c;
        const double* const a = b + order + 1;
        const double y = b[0] * x + (order > 0 ? past[0] : 0.0);
        for (std::size_t k = 0; k + 1 < order; ++k)
            past[k] = past[k + 1] + b[k + 1] * x + a[k] * y;
        if (order > 0)
            past[order - 1] = b[order] * x + a[order - 1] * y;
        c = a + order;
        past += order;
        x = y;
    }
    if (std::abs(x) < kTiny)
        forgetTiny(state->history, static_cast<std::size_t>(past - state->history));
    return x;
}

// -- Histories of a constant input --

// y of a constant x, where a section comes to rest.
double restOf(double x, double forward, double feedback)
{
    return feedback == 0.0 ? 0.0 : x * forward / feedback;
}

double settleSections(const double* c, double* past, std::size_t count, double x)
{
    for (std::size_t i = 0; i < count; ++i, c += 5, past += 2) {
        const double y = restOf(x, c[0] + c[1] + c[2], 1.0 + c[3] + c[4]);
        past[0] = y - c[0] * x;
        past[1] = c[2] * x - c[4] * y;
        x = y;
    }
    return x;
}

template <std::size_t Count>
void settleCascade(const double* c, double* history, double x)
{
    settleSections(c, history, Count, x);
}

void settleLongCascade(const double* c, double* history, double x)
{
    settleSections(c + 1, history, static_cast<std::size_t>(c[0]), x);
}

void settleWindow(const double* c, double* history, double x)
{
    std::fill_n(history + 1, 2 * static_cast<std::size_t>(c[0]), x);
}

void settleStages(const double* c, double* past, double x)
{
    const auto stages = static_cast<std::size_t>(*c++);
    for (std::size_t s = 0; s < stages; ++s) {
        const auto order = static_cast<std::size_t>(*c++);
        const double* const b = c;
        const double* const a = b + order + 1;  // negative
        double forward = b[0];
        double feedback = 1.0;
        for (std::size_t k = 0; k < order; ++k) {
            forward += b[k + 1];
            feedback -= a[k];
        }
        const double y = restOf(x, forward, feedback);
        for (std::size_t k = order; k-- > 0;)
            past[k] = b[k + 1] * x + a[k] * y + (k + 1 < order ? past[k + 1] : 0.0);
        c = a + order;
        past += order;
        x = y;
    }
}

template <std::size_t... Index>
constexpr std::array<Way, sizeof...(Index)> cascadeWays(std::index_sequence<Index...>)
{
    return {Way{&stepCascade<Index + 1>, &blockCascade<Index + 1>, &settleCascade<Index + 1>}...};
}
constexpr auto kCascadeWays = cascadeWays(std::make_index_sequence<8>());

// Adjacent blocks of the two types make one stage. Empty, and reported, for other blocks.
FidCascade gatherStages(const FidFilter* filter)
{
    std::vector<Stage> stages;
    for (const FidFilter* block = filter; block->count > 0; block = block->next()) {
        if (block->type != 'I' && block->type != 'F') {
            fidReport("Internal error: fid_run_new can only handle IIR + FIR types");
            return {};
        }
        const bool feedback = block->type == 'I';
        if (stages.empty() || (feedback ? stages.back().hasFeedback : stages.back().hasForward))
            stages.emplace_back();
        Stage& stage = stages.back();
        (feedback ? stage.hasFeedback : stage.hasForward) = true;
        (feedback ? stage.section.a : stage.section.b)
            .assign(block->coefficients(), block->coefficients() + block->count);
    }
    if (stages.empty())
        stages.emplace_back();
    FidCascade cascade;
    for (Stage& stage : stages) {
        FidSection& section = cascade.emplace_back(std::move(stage.section));
        const double first = section.a[0];
        if (first == 0.0 || std::isnan(first)) {
            fidReport("Internal error: fid_run_new met an IIR block that begins with %g", first);
            return {};
        }
        for (double& b : section.b)
            b /= first;
        for (double& a : section.a)
            a /= first;
    }
    return cascade;
}

// What a run is made of before it has its memory.
struct Plan
{
    Way way;
    std::size_t historyCount = 1;
    std::vector<double> coefficients;
};

Plan planCascade(const FidCascade& stages)
{
    Plan plan;
    plan.historyCount = 2 * stages.size();
    if (stages.size() <= kCascadeWays.size()) {
        plan.way = kCascadeWays[stages.size() - 1];
    } else {
        plan.way = {stepLongCascade, nullptr, settleLongCascade};
        plan.coefficients.push_back(static_cast<double>(stages.size()));
    }
    const auto at = [](const std::vector<double>& c, std::size_t i) { return i < c.size() ? c[i] : 0.0; };
    for (const std::size_t place : quietOrder(stages)) {
        const FidSection& stage = stages[place];
        for (std::size_t i = 0; i < 3; ++i)
            plan.coefficients.push_back(at(stage.b, i));
        plan.coefficients.push_back(at(stage.a, 1));
        plan.coefficients.push_back(at(stage.a, 2));
    }
    return plan;
}

Plan planWindow(const FidSection& stage)
{
    Plan plan{
        {stepWindow, nullptr, settleWindow}, 2 * stage.b.size() + 1, {static_cast<double>(stage.b.size())}};
    plan.coefficients.insert(plan.coefficients.end(), stage.b.begin(), stage.b.end());
    return plan;
}

Plan planStages(const FidCascade& stages)
{
    Plan plan{{stepStages, nullptr, settleStages}, 0, {static_cast<double>(stages.size())}};
    for (const FidSection& stage : stages) {
        const std::size_t order = std::max(stage.a.size(), stage.b.size()) - 1;
        plan.historyCount += order;
        plan.coefficients.push_back(static_cast<double>(order));
        for (std::size_t i = 0; i <= order; ++i)
            plan.coefficients.push_back(i < stage.b.size() ? stage.b[i] : 0.0);
        for (std::size_t i = 1; i <= order; ++i)
            plan.coefficients.push_back(i < stage.a.size() ? -stage.a[i] : 0.0);
    }
    plan.historyCount = std::max<std::size_t>(plan.historyCount, 1);
    return plan;
}

Plan makePlan(const FidCascade& stages)
{
    const bool small = std::all_of(stages.begin(), stages.end(),
                                   [](const FidSection& s) { return s.a.size() <= 3 && s.b.size() <= 3; });
    if (small)
        return planCascade(stages);
    return stages.size() == 1 && stages[0].a.size() == 1 ? planWindow(stages[0]) : planStages(stages);
}

// The run behind a handle, or null with a report that names the caller.
const Run* checkedRun(const void* handle, const char* caller)
{
    const auto* const run = static_cast<const Run*>(handle);
    if (run && run->magic == kMagic)
        return run;
    fidReport("Bad handle passed to %s()", caller);
    return nullptr;
}

std::size_t bufferBytes(const Run& run)
{
    return (run.historyCount + 3) * sizeof(double);
}

void initialise(Buffer* buffer, const Run& run)
{
    buffer->coefficients = run.coefficients;
    buffer->step = run.way.step;
    buffer->historyBytes = (run.historyCount - 1) * sizeof(double);
    std::memset(buffer->history, 0, run.historyCount * sizeof(double));
}

}  // namespace

void* fid_run_new(const FidFilter* filter, FidFunc** step)
try {
    if (step)
        *step = nullptr;
    if (!filter) {
        fidReport("Internal error: fid_run_new called without a filter");
        return nullptr;
    }
    const FidCascade stages = gatherStages(filter);
    if (stages.empty())
        return nullptr;
    const Plan plan = makePlan(stages);
    auto* const run =
        static_cast<Run*>(std::calloc(1, sizeof(Run) + plan.coefficients.size() * sizeof(double)));
    if (!run)
        throw std::bad_alloc();
    run->magic = kMagic;
    run->way = plan.way;
    run->historyCount = plan.historyCount;
    std::copy(plan.coefficients.begin(), plan.coefficients.end(), static_cast<double*>(run->coefficients));
    if (step)
        *step = plan.way.step;
    return run;
} catch (const std::bad_alloc&) {
    fidReport("Out of memory");
    return nullptr;
}

void* fid_run_newbuf(void* run)
{
    const Run* const checked = checkedRun(run, "fid_run_newbuf");
    if (!checked)
        return nullptr;
    auto* const buffer = static_cast<Buffer*>(std::calloc(1, bufferBytes(*checked)));
    if (!buffer) {
        fidReport("Out of memory");
        return nullptr;
    }
    initialise(buffer, *checked);
    return buffer;
}

std::size_t fid_run_bufsize(void* run)
{
    const Run* const checked = checkedRun(run, "fid_run_bufsize");
    return checked ? bufferBytes(*checked) : 0;
}

void fid_run_initbuf(void* buffer, void* run)
{
    if (const Run* const checked = checkedRun(run, "fid_run_initbuf"))
        initialise(static_cast<Buffer*>(buffer), *checked);
}

void fid_run_block(void* run, void* buffer, double* samples, std::size_t count)
{
    const Run* const checked = checkedRun(run, "fid_run_block");
    if (!checked)
        return;
    if (checked->way.block) {
        checked->way.block(buffer, samples, count);
        return;
    }
    for (std::size_t t = 0; t < count; ++t)
        samples[t] = checked->way.step(buffer, samples[t]);
}

void fid_run_settle(void* run, void* buffer, double input)
{
    if (const Run* const checked = checkedRun(run, "fid_run_settle"))
        checked->way.settle(checked->coefficients, static_cast<Buffer*>(buffer)->history, input);
}

void fid_run_freebuf(void* buffer)
{
    std::free(buffer);
}

void fid_run_free(void* run)
{
    if (checkedRun(run, "fid_run_free"))
        std::free(run);
}
