#include "core/DataBlock.h"

#include "core/TsExceptions.h"

DataBlock::~DataBlock()
{
    try {
        flush();
    } catch (const TS::Failure&) {
        // Jobs that write flush, and catch, before they let go of a file.
    }
}

void DataBlock::flush()
{
    if (!m_dirty)
        return;
    Block bytes;
    std::memcpy(bytes.data(), m_values, sizeof m_values);
    m_file.write(m_offset, bytes);
    m_dirty = false;
}

void DataBlock::drop() noexcept
{
    m_blockNumber = kNone;
    m_dirty = false;
}

void DataBlock::fetch(std::uint64_t blockNumber)
{
    flush();
    // A count that lies can ask for any element: saturate before the product leaves 64 bits.
    const std::uint64_t offset =
        blockNumber >= kFileLimit ? kFileLimit : m_layout.dataOffset + blockNumber * kBlockBytes;
    Block bytes;
    m_file.read(offset, bytes);
    std::memcpy(m_values, bytes.data(), sizeof m_values);
    m_offset = offset;
    m_blockNumber = blockNumber;
}
