// Keeps one 512-byte block of a ts-file's data section in memory.
//
// Samples and columns count from 1. The block is written back when it has changed and another one is
// wanted. A read that fails leaves the block as it was. Borrows the BlockFile.
#pragma once

#include <cstdint>
#include <exception>
#include <span>

#include "core/BlockFile.h"
#include "core/TsHeader.h"

namespace veltrac {

class DataBlock
{
public:
    // Where the elements lie; handed over with every header read and write.
    struct Layout
    {
        std::uint32_t dataOffset = 0;
        std::uint32_t samples = 0;
        std::uint32_t columns = 0;
        bool columnMajor = false;  // only while columns are being added
        bool ring = false;
    };

    explicit DataBlock(BlockFile& file) noexcept : m_file(file) {}
    ~DataBlock();
    DataBlock(const DataBlock&) = delete;
    DataBlock& operator=(const DataBlock&) = delete;

    void setLayout(const Layout& layout) noexcept { m_layout = layout; }

    // The number of an element in the data section, counted from 0, in 64 bits. Neither number is
    // checked: a wild one ends in a block that cannot be read. A ring file of no samples has no element.
    std::uint64_t elementIndex(std::uint32_t column, std::uint32_t sample) const noexcept
    {
        if (m_layout.ring && m_layout.samples != 0)
            sample = (sample - 1) % m_layout.samples + 1;
        const std::uint64_t s = sample - 1U;
        const std::uint64_t c = column - 1U;
        return m_layout.columnMajor ? c * m_layout.samples + s : s * m_layout.columns + c;
    }

    // Stands for an element that there is not, because of the exception that is being handled: its slot
    // throws that one.
    std::uint64_t refused() noexcept;

    // The element's slot; valid until the next call. forWriting() marks the block as changed.
    const float& at(std::uint64_t element) { return slot(element); }
    float& forWriting(std::uint64_t element)
    {
        float& value = slot(element);
        m_dirty = true;
        return value;
    }

    // The slots from an element to the end of its block; valid until the next call.
    std::span<float> run(std::uint64_t element, bool writing)
    {
        float& first = writing ? forWriting(element) : slot(element);
        return {&first, kBlockFloats - element % kBlockFloats};
    }

    // The slots of the whole block that begins at an element, for a writer that fills all of them: a block
    // that lies in the file is not read first.
    std::span<float> wholeForWriting(std::uint64_t element);

    // Where a block begins in the file; kFileLimit or more where no block can.
    std::uint64_t offsetOf(std::uint64_t blockNumber) const noexcept;
    bool holds(std::uint64_t blockNumber) const noexcept { return blockNumber == m_blockNumber; }
    // Takes over a block that was moved by other means; changes of the one before were flushed.
    void hold(std::uint64_t blockNumber, const float* values, bool changed) noexcept;

    // Writes the block if it has changed.
    void flush();
    // Forgets the block; a change that was not flushed is lost.
    void drop() noexcept;

private:
    static constexpr std::uint64_t kNone = ~std::uint64_t{0};

    float& slot(std::uint64_t element)
    {
        if (element / kBlockFloats != m_blockNumber) [[unlikely]] {
            if (!tryFetch(element / kBlockFloats))
                throwFailure();
        }
        return m_values[element % kBlockFloats];
    }
    void fetch(std::uint64_t blockNumber);
    // The loops around value() keep their sums in registers only where no call that comes back can throw:
    // what fetch() throws is kept here, and thrown by a call of its own that never returns.
    [[gnu::noinline]] bool tryFetch(std::uint64_t blockNumber) noexcept;
    [[noreturn, gnu::cold, gnu::noinline]] void throwFailure();

    BlockFile& m_file;
    Layout m_layout;
    std::uint64_t m_blockNumber = kNone;
    std::uint64_t m_offset = 0;
    bool m_dirty = false;
    std::exception_ptr m_failure;  // on its way from tryFetch() or refused() to throwFailure()
    float m_values[kBlockFloats] = {};
};

}  // namespace veltrac
