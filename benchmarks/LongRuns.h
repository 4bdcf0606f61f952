// The floor of every job over a file: its bytes in runs of 256 KiB under a mutex, and nothing else.
#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

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
