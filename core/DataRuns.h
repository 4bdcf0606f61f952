// Moves long runs of a ts-file's values, many blocks with one transfer.
//
// Bytes on disk, failures and what the DataBlock holds afterwards are those of a walk block by block through
// that: where a long transfer comes short, the block at which it did is moved through the DataBlock, which
// tells why. The last block that a run touches stays there, changed values of it unwritten.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/BlockFile.h"
#include "core/DataBlock.h"

namespace veltrac {

// Values of the data section, by their number there (from 0): `count` of them from `first` on, `stride`
// apart.
struct Elements
{
    std::uint64_t first = 0;
    std::uint64_t stride = 1;
    std::size_t count = 0;
};

class DataRuns
{
public:
    // Borrows both; `data` keeps a block of the same file.
    DataRuns(BlockFile& file, DataBlock& data) noexcept : m_file(file), m_data(data) {}

    // Throw the TS exceptions of single values; those before the failure were moved. `swapped`: the file has
    // the other byte order.
    void read(Elements elements, float* out, bool swapped);
    void write(Elements elements, const float* in, bool swapped);

    // Memory of its own for so many values, until the next call that needs some: reading neighbours does not.
    float* room(std::size_t floats);

    // Values that are moved at once.
    static constexpr std::size_t kRunFloats = std::size_t{1} << 16;

private:
    // Blocks from one on that a long run of the elements may move: fewer than kFewest where none is worth it.
    std::size_t blocksFor(const Elements& elements, bool writing) const;
    // They return how many elements were moved: 0 where the next one is to be moved within its block.
    std::size_t readLong(const Elements& elements, float* out, bool swapped);
    std::size_t readWholeBlocks(const Elements& elements, std::size_t blocks, float* out, bool swapped);
    std::size_t writeLong(const Elements& elements, const float* in, bool swapped);
    std::size_t writeWholeBlocks(const Elements& elements, std::size_t blocks, const float* in, bool swapped);
    std::size_t writeAmongOthers(const Elements& elements, std::size_t blocks, const float* in, bool swapped);

    BlockFile& m_file;
    DataBlock& m_data;
    std::vector<float> m_buffer;
};

}  // namespace veltrac
