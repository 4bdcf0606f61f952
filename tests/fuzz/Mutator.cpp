// Changes what stands behind an input's first line, which names its target, and lets no input make files of a
// size that it merely claims: what these cost is seen where the corpus is replayed.

#include <sys/resource.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed);

extern "C" int LLVMFuzzerInitialize(int* count, char*** words);

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*words*/)
{
    constexpr rlim_t kMostBytes = 16 << 20;
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
