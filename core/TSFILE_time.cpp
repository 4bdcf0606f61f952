// TSFILE: the time of samples.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>

#include "core/TSFILE.h"
#include "core/TsExceptions.h"

using namespace veltrac;

namespace {

std::uint32_t lowBits(double v)
{
    return static_cast<std::uint32_t>(wholePart(v));
}

float asCell(std::uint32_t bits)
{
    return std::bit_cast<float>(bits);
}

}  // namespace

void TSFILE::requireTimeColumn()
{
    if (m_timeColumn == 0)
        lookUpTimeColumns();
    if (m_timeColumn == 0)
        throw TS::NO_TIME_COLUMN(m_name);
}

double TSFILE::sampleTime(std::uint32_t sample)
{
    readHeader(0, 0);
    const std::uint32_t s = sample == 0 ? oldestSample() : sample;
    // Added in single precision on purpose: large start times land on the float grid, as all readers of
    // the format have it.
    const double base = static_cast<float>(m_header.startSeconds) + m_header.startTime;
    if (m_timeColumn == 0)
        return base + static_cast<double>(static_cast<float>(s) * m_header.dt);
    double t = base + static_cast<double>(value(s, m_timeColumn));
    if (m_time32Column != 0)
        t += std::bit_cast<std::uint32_t>(value(s, m_time32Column));
    return t;
}

void TSFILE::setSampleTime(std::uint32_t sample, double t)
{
    readHeader(0, 0);
    if (m_timeColumn == 0)
        return;
    const std::uint32_t s = sample == 0 ? oldestSample() : sample;
    double rel = t - m_header.startSeconds - static_cast<double>(m_header.startTime);
    if (m_time32Column != 0) {
        const double whole = std::trunc(rel);
        setValue(s, m_time32Column, asCell(lowBits(whole)));
        rel -= whole;
    }
    setValue(s, m_timeColumn, static_cast<float>(rel));
}

double TSFILE::readRowWithTime(std::uint32_t sample, float* out)
{
    requireTimeColumn();
    const std::uint32_t count = columns();
    for (std::uint32_t col = 1; col <= count; ++col)
        if (col != m_timeColumn && col != m_time32Column)
            *out++ = value(sample, col);
    double relative = value(sample, m_timeColumn);
    if (m_time32Column != 0)
        relative += std::bit_cast<std::uint32_t>(value(sample, m_time32Column));
    return m_header.startSeconds + relative + static_cast<double>(m_header.startTime);
}

void TSFILE::appendRowWithTime(double t, const float* in, bool flushing)
{
    readHeader(0, 0);
    requireTimeColumn();
    // The row's number is taken before its time is judged: a refused row leaves its place free.
    const std::uint32_t sample = ++m_header.lastSample;
    const float start = static_cast<float>(m_header.startSeconds) + m_header.startTime;
    if (t < static_cast<double>(start))
        throw TS::ILL_TIME(lowBits(t), lowBits(static_cast<double>(start)), 1);

    double rel = t - m_header.startSeconds - static_cast<double>(m_header.startTime);
    if (m_time32Column != 0) {
        const double whole = std::floor(rel);
        setValue(sample, m_time32Column, asCell(lowBits(whole)));
        rel -= whole;
    }
    setValue(sample, m_timeColumn, static_cast<float>(rel));
    for (std::uint32_t col = 1; col <= m_header.columns; ++col)
        if (col != m_timeColumn && col != m_time32Column)
            setValue(sample, col, *in++);
    if (m_header.lastSample > m_header.samples)
        m_header.ringStart = m_header.lastSample - m_header.samples + 1;
    if (flushing)
        flush(true);
}

// In (before, high], where dt tells the time and sample `before` lies before t; high where there is none.
std::uint32_t TSFILE::firstAtOrAfter(double t, std::uint32_t before, std::uint32_t high)
{
    if (sampleTime(high) < t)
        return high;
    while (high - before > 1) {
        const std::uint32_t middle = before + (high - before) / 2;
        (sampleTime(middle) < t ? before : high) = middle;
    }
    return high;
}

std::uint32_t TSFILE::findSample(double t)
{
    constexpr double kFarSteps = 1000.0;   // further away than this many sample times …
    constexpr double kJumpDivisor = 20.0;  // … a twentieth of the way is skipped at once
    readHeader(0, 0);
    const std::uint32_t low = oldestSample();
    const std::uint32_t high = m_header.ringStart != 0 ? m_header.lastSample : m_header.samples;
    const double step = m_header.dt;

    // A header may claim thousands of millions of samples. Where times stand in the rows of a ring, a row
    // that is come to again leads round the same way again, as often as there is room (the row that is looked
    // out for is another one at each power of 2: R. P. Brent, 1980).
    const bool comesRound = m_header.ringStart != 0 && m_timeColumn != 0 && m_header.samples != 0;
    std::uint32_t markedAt = low;
    std::uint32_t visits = 0, untilMark = 1;
    std::uint32_t s = low;
    double time = 0.0;
    while (time < t && s < high) {
        if (const std::uint32_t round = s - markedAt;
            comesRound && round > 0 && round % m_header.samples == 0)
            s += (std::max((high - s) / round, 1U) - 1) * round;
        if (++visits == untilMark) {
            untilMark *= 2;
            visits = 0;
            markedAt = s;
        }
        ++s;
        time = sampleTime(s);
        if (step > 0 && t - time > kFarSteps * step) {
            const double jump = std::floor((t - time) / step / kJumpDivisor);
            if (s + jump < high) {
                s += static_cast<std::uint32_t>(jump);
                continue;
            }
        }
        // From here on there are single steps only: where dt tells the time their end is found by bisection.
        if (time < t && m_timeColumn == 0) {
            s = firstAtOrAfter(t, s, high);
            break;
        }
    }
    while (s > low && sampleTime(s) > t)
        --s;
    return s;
}

void TSFILE::adjustTime(bool quiet, float threshold)
{
    constexpr std::uint32_t kReportEvery = 10000;
    if (readOnly())
        throw TS::READONLY_VIOLATION(m_name);
    readHeader(0, 0);
    requireTimeColumn();
    const std::uint32_t first = m_header.ringStart;
    if (first <= 1)
        return;
    // A last sample that lies beyond the ring's rows must not move one of them twice.
    const auto last = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(m_header.lastSample, std::uint64_t{first} + m_header.samples - 1));
    const float moved = value(first, m_timeColumn);
    if (!(moved >= threshold)) {
        if (!quiet)
            std::fputs("no need: Time values are still reasonable\n", stderr);
        return;
    }

    if (!quiet)
        std::printf("Adjusting %.1g seconds\n", static_cast<double>(moved));
    for (std::uint64_t s = first; s <= last; ++s) {
        const auto sample = static_cast<std::uint32_t>(s);
        setValue(sample, m_timeColumn, value(sample, m_timeColumn) - moved);
        if (!quiet && sample % kReportEvery == 0) {
            const std::uint64_t percent = first == last ? 100 : (s - first) * 100 / (last - first);
            std::printf("%3ld%% finished\n", static_cast<long>(percent));
        }
    }
    storeInHeader(&TsHeader::startSeconds, m_header.startSeconds + lowBits(static_cast<double>(moved)));
}
