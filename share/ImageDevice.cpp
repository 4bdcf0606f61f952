#include "share/ImageDevice.h"

#include <zlib.h>

#include <iterator>
#include <new>
#include <string_view>

#include "share/BasicDriver.h"

namespace veltrac {

namespace {

void append32(std::vector<std::uint8_t>& bytes, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

void appendChunk(std::vector<std::uint8_t>& png, std::string_view type, const std::vector<std::uint8_t>& data)
{
    append32(png, static_cast<std::uint32_t>(data.size()));
    const std::size_t begin = png.size();
    png.insert(png.end(), type.begin(), type.end());
    png.insert(png.end(), data.begin(), data.end());
    append32(png, static_cast<std::uint32_t>(::crc32(0, &png[begin], static_cast<uInt>(png.size() - begin))));
}

std::vector<std::uint8_t> compressed(const std::vector<std::uint8_t>& raw)
{
    uLongf length = ::compressBound(static_cast<uLong>(raw.size()));
    std::vector<std::uint8_t> stream(length);
    if (::compress(stream.data(), &length, raw.data(), static_cast<uLong>(raw.size())) != Z_OK)
        throw std::bad_alloc();  // it fails of nothing else
    stream.resize(length);
    return stream;
}

}  // namespace

void drawImage(BasicDriver& driver, float x1, float y1, float x2, float y2, const PixelImage& image)
{
    if (image.width < 1 || image.height < 1)
        return;
    if (auto* const device = dynamic_cast<ImageDevice*>(&driver)) {
        device->DrawImage(x1, y1, x2, y2, image);
        return;
    }
    const float dx = (x2 - x1) / static_cast<float>(image.width);
    const float dy = (y2 - y1) / static_cast<float>(image.height);
    const std::uint8_t* pixel = image.rgb.data();
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x, pixel += 3) {
            const float left = x1 + dx * static_cast<float>(x);
            const float top = y2 - dy * static_cast<float>(y);
            driver.SetColor(static_cast<float>(pixel[0]) / 255.0F, static_cast<float>(pixel[1]) / 255.0F,
                            static_cast<float>(pixel[2]) / 255.0F);
            driver.Rectangle(left, top - dy, left + dx, top, 1);
        }
}

std::vector<std::uint8_t> pngBytes(const PixelImage& image)
{
    std::vector<std::uint8_t> png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> head;
    append32(head, static_cast<std::uint32_t>(image.width));
    append32(head, static_cast<std::uint32_t>(image.height));
    static constexpr std::uint8_t kKind[] = {8, 2, 0, 0, 0};  // eight bits, colours, no interlace
    head.insert(head.end(), std::begin(kKind), std::end(kKind));
    appendChunk(png, "IHDR", head);
    std::vector<std::uint8_t> raw;
    const std::size_t line = 3 * static_cast<std::size_t>(image.width);
    raw.reserve((line + 1) * static_cast<std::size_t>(image.height));
    for (std::size_t y = 0; y < static_cast<std::size_t>(image.height); ++y) {
        raw.push_back(0);  // no filter
        const auto begin = image.rgb.begin() + static_cast<std::ptrdiff_t>(y * line);
        raw.insert(raw.end(), begin, begin + static_cast<std::ptrdiff_t>(line));
    }
    appendChunk(png, "IDAT", compressed(raw));
    appendChunk(png, "IEND", {});
    return png;
}

}  // namespace veltrac
