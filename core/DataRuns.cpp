#include "core/DataRuns.h"

#include <algorithm>
#include <mutex>
#include <span>

namespace veltrac {

namespace {

constexpr std::size_t kMostBlocks = DataRuns::kRunFloats / kBlockFloats;
constexpr std::size_t kFewest = 2;
// Values further apart than this are cheaper to fetch block by block than with all that lies between them.
constexpr std::uint64_t kSparse = 4 * kBlockFloats;

// Loops of their own, which the compiler turns into vector instructions.
void swapAll(const float* from, float* to, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        to[i] = swapBytes(from[i]);
}

void gather(const float* from, std::size_t stride, float* to, std::size_t count, bool swapped)
{
    for (std::size_t i = 0; i < count; ++i)
        to[i] = from[i * stride];
    if (swapped)
        swapAll(to, to, count);
}

void scatter(const float* from, float* to, std::size_t stride, std::size_t count, bool swapped)
{
    for (std::size_t i = 0; i < count; ++i)
        to[i * stride] = swapped ? swapBytes(from[i]) : from[i];
}

// Elements that lie in front of a block's first one.
std::size_t countBefore(const Elements& elements, std::uint64_t block)
{
    const std::uint64_t end = block * kBlockFloats;
    if (end <= elements.first)
        return 0;
    const std::uint64_t before = (end - elements.first - 1) / std::max<std::uint64_t>(1, elements.stride) + 1;
    return static_cast<std::size_t>(std::min<std::uint64_t>(before, elements.count));
}

std::uint64_t blockOf(std::uint64_t element)
{
    return element / kBlockFloats;
}

}  // namespace

void DataRuns::read(Elements elements, float* out, bool swapped)
{
    while (elements.count > 0) {
        std::size_t moved = readLong(elements, out, swapped);
        if (moved == 0) {
            const std::span<const float> slots = m_data.run(elements.first, false);
            moved = elements.stride == 0 ? 1 : countBefore(elements, blockOf(elements.first) + 1);
            gather(slots.data(), elements.stride, out, moved, swapped);
        }
        elements.first += moved * elements.stride;
        elements.count -= moved;
        out += moved;
    }
}

void DataRuns::write(Elements elements, const float* in, bool swapped)
{
    while (elements.count > 0) {
        std::size_t moved = writeLong(elements, in, swapped);
        if (moved == 0) {
            const bool whole =
                elements.stride == 1 && elements.first % kBlockFloats == 0 && elements.count >= kBlockFloats;
            const std::span<float> slots =
                whole ? m_data.wholeForWriting(elements.first) : m_data.run(elements.first, true);
            moved = elements.stride == 0 ? 1 : countBefore(elements, blockOf(elements.first) + 1);
            scatter(in, slots.data(), elements.stride, moved, swapped);
        }
        elements.first += moved * elements.stride;
        elements.count -= moved;
        in += moved;
    }
}

std::size_t DataRuns::blocksFor(const Elements& elements, bool writing) const
{
    const std::uint64_t block = blockOf(elements.first);
    const std::uint64_t offset = m_data.offsetOf(block);
    // What the held block has is moved there.
    if (elements.stride == 0 || elements.stride > kSparse || offset >= kFileLimit || m_data.holds(block))
        return 0;
    if (elements.stride == 1 && elements.first % kBlockFloats != 0)
        return 0;
    std::uint64_t end = kFileLimit;
    if (writing)
        end = m_file.readOnly() ? 0 : std::min(end, m_file.size());
    const std::uint64_t there = end > offset ? (end - offset) / kBlockBytes : 0;
    const std::uint64_t wanted =
        elements.stride == 1 ? elements.count / kBlockFloats
                             : blockOf(elements.first + (elements.count - 1) * elements.stride) - block + 1;
    return static_cast<std::size_t>(std::min({wanted, there, std::uint64_t{kMostBlocks}}));
}

float* DataRuns::room(std::size_t floats)
{
    if (m_buffer.size() < floats)
        m_buffer.resize(floats);
    return m_buffer.data();
}

// -- Reading --

std::size_t DataRuns::readLong(const Elements& elements, float* out, bool swapped)
{
    const std::size_t blocks = blocksFor(elements, false);
    if (blocks < kFewest)
        return 0;
    m_data.flush();
    if (elements.stride == 1)
        return readWholeBlocks(elements, blocks, out, swapped);

    const std::uint64_t first = blockOf(elements.first);
    float* const values = room(blocks * kBlockFloats);
    const std::size_t came = m_file.readBlocks(m_data.offsetOf(first), {values, blocks * kBlockFloats});
    const std::size_t moved = countBefore(elements, first + came);
    if (moved == 0)
        return 0;
    gather(values + elements.first % kBlockFloats, elements.stride, out, moved, swapped);
    const std::uint64_t last = blockOf(elements.first + (moved - 1) * elements.stride);
    m_data.hold(last, values + (last - first) * kBlockFloats, false);
    return moved;
}

std::size_t DataRuns::readWholeBlocks(const Elements& elements, std::size_t blocks, float* out, bool swapped)
{
    const std::uint64_t first = blockOf(elements.first);
    const std::size_t came = m_file.readBlocks(m_data.offsetOf(first), {out, blocks * kBlockFloats});
    if (came == 0)
        return 0;
    m_data.hold(first + came - 1, out + (came - 1) * kBlockFloats, false);
    if (swapped)
        swapAll(out, out, came * kBlockFloats);
    return came * kBlockFloats;
}

// -- Writing --

std::size_t DataRuns::writeLong(const Elements& elements, const float* in, bool swapped)
{
    const std::size_t blocks = blocksFor(elements, true);
    if (blocks < kFewest)
        return 0;
    m_data.flush();
    return elements.stride == 1 ? writeWholeBlocks(elements, blocks, in, swapped)
                                : writeAmongOthers(elements, blocks, in, swapped);
}

std::size_t DataRuns::writeWholeBlocks(const Elements& elements, std::size_t blocks, const float* in,
                                       bool swapped)
{
    const std::uint64_t first = blockOf(elements.first);
    const float* values = in;
    if (swapped) {
        float* const turned = room(blocks * kBlockFloats);
        swapAll(in, turned, blocks * kBlockFloats);
        values = turned;
    }
    const bool isLast = elements.count == blocks * kBlockFloats;
    const std::size_t wanted = isLast ? blocks - 1 : blocks;
    std::size_t done = 0;
    {
        const std::lock_guard guard(BlockFile::lock());
        done = m_file.writeBlocks(m_data.offsetOf(first), {values, wanted * kBlockFloats});
    }
    if (done == wanted && isLast)
        ++done;
    if (done > 0)
        m_data.hold(first + done - 1, values + (done - 1) * kBlockFloats, isLast && done == blocks);
    return done * kBlockFloats;
}

// Reads the blocks, changes the elements in them and writes them, in one go: other objects in the process may
// write the columns between.
std::size_t DataRuns::writeAmongOthers(const Elements& elements, std::size_t blocks, const float* in,
                                       bool swapped)
{
    const std::uint64_t first = blockOf(elements.first);
    const std::uint64_t offset = m_data.offsetOf(first);
    float* const values = room(blocks * kBlockFloats);
    const std::unique_lock guard(BlockFile::lock());
    const std::size_t came = m_file.readBlocksLocked(offset, {values, blocks * kBlockFloats});
    const std::size_t moved = countBefore(elements, first + came);
    if (moved == 0)
        return 0;
    scatter(in, values + elements.first % kBlockFloats, elements.stride, moved, swapped);
    const std::uint64_t last = blockOf(elements.first + (moved - 1) * elements.stride);
    const bool isLast = moved == elements.count;
    const auto wanted = static_cast<std::size_t>(last - first + (isLast ? 0 : 1));
    const std::size_t done = m_file.writeBlocks(offset, {values, wanted * kBlockFloats});
    if (done == wanted) {
        m_data.hold(last, values + (last - first) * kBlockFloats, isLast);
        return moved;
    }
    if (done > 0)
        m_data.hold(first + done - 1, values + (done - 1) * kBlockFloats, false);
    return countBefore(elements, first + done);
}

}  // namespace veltrac
