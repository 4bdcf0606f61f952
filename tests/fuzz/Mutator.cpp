// Changes what stands behind an input's first line, which names its target, and lets no input make files of a
// size that it merely claims: what these cost is seen where the corpus is replayed.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed);

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* one, std::size_t sizeOfOne,
                                                 const std::uint8_t* other, std::size_t sizeOfOther,
                                                 std::uint8_t* out, std::size_t most, unsigned seed);
extern "C" int LLVMFuzzerInitialize(int* count, char*** words);
extern "C" const char* __asan_default_options();

namespace {

std::vector<std::string_view> linesOf(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::string_view> lines;
    for (std::string_view text(reinterpret_cast<const char*>(data), size); !text.empty();) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

}  // namespace

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

// Some lines of one input in place of none or some of another's: options of a command, rows of a log.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* one, std::size_t sizeOfOne,
                                                 const std::uint8_t* other, std::size_t sizeOfOther,
                                                 std::uint8_t* out, std::size_t most, unsigned seed)
{
    std::minstd_rand random(seed);
    const auto below = [&random](std::size_t end) { return static_cast<std::size_t>(random()) % end; };
    const std::vector<std::string_view> lines = linesOf(one, sizeOfOne);
    const std::vector<std::string_view> others = linesOf(other, sizeOfOther);
    if (lines.empty() || others.size() < 2)
        return 0;
    const std::size_t at = 1 + below(lines.size());
    const std::size_t rest = std::min(lines.size(), at + below(3));
    const std::size_t from = 1 + below(others.size() - 1);
    const std::size_t to = std::min(others.size(), from + 1 + below(4));
    std::string made;
    const auto add = [&made](const std::vector<std::string_view>& of, std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            if (!made.empty() && made.back() != '\n')
                made += '\n';
            made += of[i];
        }
    };
    add(lines, 0, at);
    add(others, from, to);
    add(lines, rest, lines.size());
    made.resize(std::min(made.size(), most));
    std::copy(made.begin(), made.end(), out);
    return made.size();
}

// A worker's faults, and the ways that it takes, would go unseen: veltrac-cli does all in this process then.
extern "C" pid_t fork()
{
    errno = EAGAIN;
    return -1;
}
