#include "core/TsHeader.h"

#include <algorithm>

namespace veltrac {

namespace {

constexpr std::uint32_t kHighestNativeVersion = 1000;
constexpr std::size_t kOrientationOffset = 12;

// The header's numbers and where they stand.
struct Word
{
    std::size_t offset;
    std::uint32_t TsHeader::*field;
};
struct Real
{
    std::size_t offset;
    float TsHeader::*field;
};
constexpr Word kWords[] = {
    {0, &TsHeader::samples},
    {4, &TsHeader::columns},
    {kStartSecondsAt, &TsHeader::startSeconds},
    {136, &TsHeader::reserved136},
    {kRingStartAt, &TsHeader::ringStart},
    {kLastSampleAt, &TsHeader::lastSample},
    {508, &TsHeader::version},
};
constexpr Real kReals[] = {{16, &TsHeader::dt}, {kStartTimeAt, &TsHeader::startTime}};

std::uint32_t loadWord(const Block& image, std::size_t offset)
{
    std::uint32_t word = 0;
    std::memcpy(&word, image.data() + offset, sizeof word);
    return word;
}

void storeWord(Block& image, std::size_t offset, std::uint32_t word)
{
    std::memcpy(image.data() + offset, &word, sizeof word);
}

}  // namespace

TsHeader decodeHeader(const Block& image, ByteOrder& order)
{
    if (order == ByteOrder::Unknown)
        order = loadWord(image, 508) > kHighestNativeVersion ? ByteOrder::Swapped : ByteOrder::Native;

    const auto word = [&](std::size_t offset) {
        const std::uint32_t raw = loadWord(image, offset);
        return order == ByteOrder::Swapped ? swapBytes(raw) : raw;
    };
    TsHeader header;
    for (const Word& w : kWords)
        header.*w.field = word(w.offset);
    for (const Real& r : kReals)
        header.*r.field = std::bit_cast<float>(word(r.offset));
    return header;
}

void encodeHeader(const TsHeader& header, std::uint32_t orientation, ByteOrder order, Block& image)
{
    const auto put = [&](std::size_t offset, std::uint32_t word) {
        storeWord(image, offset, order == ByteOrder::Swapped ? swapBytes(word) : word);
    };
    for (const Word& w : kWords)
        put(w.offset, header.*w.field);
    for (const Real& r : kReals)
        put(r.offset, std::bit_cast<std::uint32_t>(header.*r.field));
    put(kOrientationOffset, orientation);
    put(508, kWrittenVersion);
}

void storeText(unsigned char* record, TextField field, const char* text)
{
    const std::size_t length = text == nullptr ? 0 : strnlen(text, field.width);
    std::copy_n(text, length, record + field.offset);
    std::fill_n(record + field.offset + length, field.width - length, static_cast<unsigned char>(0));
}

void loadText(const unsigned char* record, TextField field, char* out)
{
    std::memcpy(out, record + field.offset, field.width);
    out[field.width] = '\0';
}

}  // namespace veltrac
