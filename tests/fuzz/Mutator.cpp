// Changes what stands behind an input's first line, which names its target.

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned /*seed*/)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t line = input.find('\n');
    const std::size_t head = line == std::string_view::npos ? 0 : line + 1;
    return head + LLVMFuzzerMutate(data + head, size - head, most - head);
}
