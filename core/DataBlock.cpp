#include "core/DataBlock.h"

#include <utility>

#include "core/TsExceptions.h"

namespace veltrac {

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

std::uint64_t DataBlock::offsetOf(std::uint64_t blockNumber) const noexcept
{
    // A count that lies can ask for any element: saturate before the product leaves 64 bits.
    return blockNumber >= kFileLimit ? kFileLimit : m_layout.dataOffset + blockNumber * kBlockBytes;
}

void DataBlock::fetch(std::uint64_t blockNumber)
{
    flush();
    const std::uint64_t offset = offsetOf(blockNumber);
    Block bytes;
    m_file.read(offset, bytes);
    std::memcpy(m_values, bytes.data(), sizeof m_values);
    m_offset = offset;
    m_blockNumber = blockNumber;
}

bool DataBlock::tryFetch(std::uint64_t blockNumber) noexcept
try {
    if (m_failure)
        return false;
    fetch(blockNumber);
    return true;
} catch (...) {
    m_failure = std::current_exception();
    return false;
}

void DataBlock::throwFailure()
{
    std::rethrow_exception(std::exchange(m_failure, nullptr));
}

std::uint64_t DataBlock::refused() noexcept
{
    m_failure = std::current_exception();
    return kNone;  // lies in no block, the cached one included
}

void DataBlock::hold(std::uint64_t blockNumber, const float* values, bool changed) noexcept
{
    std::memcpy(m_values, values, sizeof m_values);
    m_offset = offsetOf(blockNumber);
    m_blockNumber = blockNumber;
    m_dirty = changed;
}

std::span<float> DataBlock::wholeForWriting(std::uint64_t element)
{
    const std::uint64_t blockNumber = element / kBlockFloats;
    const std::uint64_t offset = offsetOf(blockNumber);
    // A file that is cut short or too long says so by the read, as it does for single values.
    if (blockNumber == m_blockNumber || offset >= kFileLimit || m_file.readOnly() ||
        offset + kBlockBytes > m_file.size())
        return run(element, true);
    flush();
    m_offset = offset;
    m_blockNumber = blockNumber;
    m_dirty = true;
    return m_values;
}

}  // namespace veltrac
