// The floor of every job over a file: its bytes in runs of 256 KiB under a mutex, and nothing else, or the
// bare arithmetic.
#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "core/Vectors.h"

// Moves `bytes` bytes from offset 0 on; false where a transfer came short.
inline bool moveInLongRuns(const std::string& path, std::size_t bytes, bool writing)
{
    static std::mutex mutex;
    constexpr std::size_t kRunBytes = 256 * 1024;
    std::vector<char> run(kRunBytes);
    const int file = ::open(path.c_str(), writing ? O_RDWR | O_CREAT : O_RDONLY, 0666);
    bool complete = true;
    for (std::size_t at = 0; at < bytes; at += kRunBytes) {
        const std::size_t count = std::min(kRunBytes, bytes - at);
        const auto offset = static_cast<off_t>(at);
        const std::lock_guard guard(mutex);
        const ssize_t moved =
            writing ? ::pwrite(file, run.data(), count, offset) : ::pread(file, run.data(), count, offset);
        complete = complete && moved == static_cast<ssize_t>(count);
        benchmark::DoNotOptimize(run.data());
    }
    ::close(file);
    return complete;
}

inline void longRuns(benchmark::State& state, const std::string& path, std::size_t bytes, bool writing)
{
    for (auto _ : state)
        if (!moveInLongRuns(path, bytes, writing))
            state.SkipWithError("short transfer");
}

// Reads them and takes each value, none of them missing, into a least, a greatest, a sum and a sum of
// squares.
inline void summaryFloor(benchmark::State& state, const std::string& path, std::size_t bytes)
{
    using namespace veltrac;
    std::vector<float> run(64 * 1024);
    for (auto _ : state) {
        const int file = ::open(path.c_str(), O_RDONLY);
        FourFloats least{};
        FourFloats greatest{};
        TwoDoubles sums[4] = {};
        for (std::size_t at = 0; at < bytes; at += run.size() * sizeof(float)) {
            if (::pread(file, run.data(), run.size() * sizeof(float), static_cast<off_t>(at)) <= 0)
                state.SkipWithError("short transfer");
            for (std::size_t i = 0; i < run.size(); i += 4) {
                const auto v = vectorAt<FourFloats>(&run[i]);
                const TwoDoubles low = lowDoubles(v);
                const TwoDoubles high = highDoubles(v);
                least = v < least ? v : least;
                greatest = v > greatest ? v : greatest;
                sums[0] += low;
                sums[1] += high;
                sums[2] += low * low;
                sums[3] += high * high;
            }
        }
        ::close(file);
        benchmark::DoNotOptimize(least);
        benchmark::DoNotOptimize(greatest);
        benchmark::DoNotOptimize(sums);
    }
}
