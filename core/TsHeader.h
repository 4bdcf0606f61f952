// The bytes of a ts-file's header block and column records, as plain functions.
//
// A ts-file is made of 512-byte blocks: one header block, column blocks of eight 64-byte records each, and
// the data section. docs/ts-file.md tells the whole format.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace veltrac {

inline constexpr std::size_t kBlockBytes = 512;
inline constexpr std::size_t kBlockFloats = kBlockBytes / sizeof(float);
inline constexpr std::uint32_t kColumnsPerBlock = 8;
// File offsets are signed 32-bit: no block lies at or beyond this one.
inline constexpr std::uint64_t kFileLimit = std::uint64_t{1} << 31;

using Block = std::array<unsigned char, kBlockBytes>;

// Decided at the first header read and kept for the life of the file object.
enum class ByteOrder : unsigned char { Unknown = 0, Native = 1, Swapped = 2 };

// The header's numbers, in native byte order.
struct TsHeader
{
    std::uint32_t samples = 0;
    std::uint32_t columns = 0;
    float dt = 0.0F;         // sample time, in seconds unless the time unit says otherwise
    float startTime = 0.0F;  // seconds, added to startSeconds
    std::uint32_t startSeconds = 0;
    std::uint32_t reserved136 = 0;
    std::uint32_t ringStart = 0;
    std::uint32_t lastSample = 0;
    std::uint32_t version = 0;
};

// Where those stand that change while rows come into a ring file; each is one aligned word.
inline constexpr std::size_t kStartTimeAt = 24;
inline constexpr std::size_t kStartSecondsAt = 132;
inline constexpr std::size_t kRingStartAt = 140;
inline constexpr std::size_t kLastSampleAt = 144;

inline constexpr std::uint32_t kWrittenVersion = 3;
inline constexpr std::uint32_t kHighestVersion = 10;

// Text fields: offset in the block or record, and width in bytes.
struct TextField
{
    std::size_t offset;
    std::size_t width;
};
inline constexpr TextField kFileDescription{32, 60};
inline constexpr TextField kTimeUnit{92, 40};
inline constexpr std::size_t kColumnRecordBytes = 64;
inline constexpr std::size_t kStampBytes = 7;
inline constexpr int kStampYear = 1900;
inline constexpr TextField kColumnName{7, 12};
inline constexpr TextField kColumnDescription{19, 45};

inline std::uint32_t swapBytes(std::uint32_t v)
{
    return (v << 24) | ((v & 0xFF00U) << 8) | ((v >> 8) & 0xFF00U) | (v >> 24);
}

inline float swapBytes(float v)
{
    return std::bit_cast<float>(swapBytes(std::bit_cast<std::uint32_t>(v)));
}

// The number without its fraction; 0 for NaN and beyond 64 bits, where there is no integer to take.
inline std::int64_t wholePart(double v)
{
    constexpr double kLimit = 9.2e18;
    return v > -kLimit && v < kLimit ? static_cast<std::int64_t>(v) : 0;
}

// Reads the numbers of a header block. An unknown order is decided by the version word (above 1000 it
// stands the other way round) and stored.
TsHeader decodeHeader(const Block& image, ByteOrder& order);

// Writes the numbers into a header block, with version 3 and the given orientation word; every other byte
// of the image stays as it is.
void encodeHeader(const TsHeader& header, std::uint32_t orientation, ByteOrder order, Block& image);

// Copies at most field.width bytes of a text into a block, padded with NUL. A null text is an empty one.
void storeText(unsigned char* record, TextField field, const char* text);

// Copies a field's bytes and ends them with NUL: `out` holds field.width + 1 bytes.
void loadText(const unsigned char* record, TextField field, char* out);

// A column's record where it stands in its block.
class ColumnRecord
{
public:
    explicit ColumnRecord(unsigned char* bytes) noexcept : m_bytes(bytes) {}

    void clear() { std::memset(m_bytes, 0, kColumnRecordBytes); }
    // As the setters of TSFILE, but for the writing.
    void setName(const char* text) { storeText(m_bytes, kColumnName, text); }
    void setDescription(const char* text) { storeText(m_bytes, kColumnDescription, text); }
    void setStamp(const int in[7])
    {
        for (std::size_t i = 0; i < kStampBytes; ++i)
            m_bytes[i] =
                static_cast<unsigned char>(i == 6 && in[i] >= kStampYear ? in[i] - kStampYear : in[i]);
    }

private:
    unsigned char* m_bytes;
};

// Offset of the data section, in the format's own unsigned 32-bit arithmetic (0 columns give 512).
constexpr std::uint32_t dataOffset(std::uint32_t columns)
{
    return 512U * ((columns - 1U) / kColumnsPerBlock + 2U);
}

// Bytes of the data section: whole blocks. Counts that lie saturate, so that sums of it stay in 64 bits.
constexpr std::uint64_t dataBytes(std::uint32_t samples, std::uint32_t columns)
{
    constexpr std::uint64_t kMostBlocks = std::uint64_t{1} << 40;
    const std::uint64_t values = std::uint64_t{samples} * columns;
    const std::uint64_t blocks = values / kBlockFloats + (values % kBlockFloats != 0 ? 1 : 0);
    return (blocks < kMostBlocks ? blocks : kMostBlocks) * kBlockBytes;
}

// Size of a file with these counts, without the 32-bit wrap of dataOffset(): what it would need on disk.
constexpr std::uint64_t tsFileBytes(std::uint32_t samples, std::uint32_t columns)
{
    const std::uint64_t infoBlocks = columns == 0 ? 0 : (std::uint64_t{columns} - 1) / kColumnsPerBlock + 1;
    return kBlockBytes * (1 + infoBlocks) + dataBytes(samples, columns);
}

}  // namespace veltrac
