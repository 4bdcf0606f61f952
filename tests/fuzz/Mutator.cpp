// Changes what stands behind an input's first line, which names its target, and lets no input make files of a
// size that it merely claims: what these cost is seen where the corpus is replayed.

#include <sys/resource.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed);

extern "C" int LLVMFuzzerInitialize(int* count, char*** words);
extern "C" const char* __asan_default_options();

// What is asked for and given back a million times a second is not remembered for long.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=8:malloc_context_size=8";
}

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*words*/)
{
    constexpr rlim_t kMostBytes = 1 << 20;
    // A zone with changes, told so that it is not looked up again for each date; and no threads to wait for.
    ::setenv("TZ", "Europe/Berlin", 1);
    ::setenv("VELTRAC_THREADS", "1", 1);
    const rlimit limit{kMostBytes, kMostBytes};
    std::signal(SIGXFSZ, SIG_IGN);
    return setrlimit(RLIMIT_FSIZE, &limit);
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned /*seed*/)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t line = input.find('\n');
    const std::size_t head = line == std::string_view::npos ? 0 : line + 1;
    return head + LLVMFuzzerMutate(data + head, size - head, most - head);
}
