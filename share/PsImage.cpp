#include "share/PsImage.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace veltrac {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kMostColors = 256;
constexpr std::size_t kBytesALine = 32;

// Colours, three bytes each, and the place among them that each pixel has.
struct IndexedPixels
{
    Bytes colors;
    Bytes indices;
};

std::optional<IndexedPixels> indexed(const PixelImage& image)
{
    std::vector<std::uint32_t> colors;
    const auto colorAt = [&image](std::size_t i) {
        return std::uint32_t{image.rgb[i]} << 16 | std::uint32_t{image.rgb[i + 1]} << 8 | image.rgb[i + 2];
    };
    std::uint32_t last = 0;
    for (std::size_t i = 0; i + 2 < image.rgb.size(); i += 3) {
        const std::uint32_t color = colorAt(i);
        if (i > 0 && color == last)
            continue;
        last = color;
        const auto place = std::lower_bound(colors.begin(), colors.end(), color);
        if (place != colors.end() && *place == color)
            continue;
        if (colors.size() == kMostColors)
            return std::nullopt;
        colors.insert(place, color);
    }
    IndexedPixels pixels;
    pixels.colors.reserve(3 * colors.size());
    for (const std::uint32_t color : colors)
        for (const unsigned shift : {16U, 8U, 0U})
            pixels.colors.push_back(static_cast<std::uint8_t>(color >> shift));
    pixels.indices.reserve(image.rgb.size() / 3);
    for (std::size_t i = 0; i + 2 < image.rgb.size(); i += 3)
        pixels.indices.push_back(static_cast<std::uint8_t>(
            std::lower_bound(colors.begin(), colors.end(), colorAt(i)) - colors.begin()));
    return pixels;
}

// For RunLengthDecode: 0 to 127 stands before one more bytes than it says, 257 - n before the byte that comes
// n times, 128 is the end.
Bytes runLengths(std::span<const std::uint8_t> bytes)
{
    constexpr std::size_t kMost = 128;
    constexpr std::size_t kShortestRun = 3;
    constexpr std::uint8_t kEnd = 128;
    const auto runAt = [bytes](std::size_t i) {
        std::size_t n = 1;
        while (n < kMost && i + n < bytes.size() && bytes[i + n] == bytes[i])
            ++n;
        return n;
    };
    Bytes out;
    out.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i < bytes.size();) {
        if (const std::size_t run = runAt(i); run >= kShortestRun) {
            out.push_back(static_cast<std::uint8_t>(257 - run));
            out.push_back(bytes[i]);
            i += run;
            continue;
        }
        std::size_t n = 1;
        while (n < kMost && i + n < bytes.size() && runAt(i + n) < kShortestRun)
            ++n;
        out.push_back(static_cast<std::uint8_t>(n - 1));
        for (const std::uint8_t byte : bytes.subspan(i, n))
            out.push_back(byte);
        i += n;
    }
    out.push_back(kEnd);
    return out;
}

void appendDigits(std::vector<std::string>& lines, std::span<const std::uint8_t> bytes)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string line;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        line += kDigits[bytes[i] >> 4];
        line += kDigits[bytes[i] & 15U];
        if ((i + 1) % kBytesALine == 0 || i + 1 == bytes.size()) {
            lines.push_back(line);
            line.clear();
        }
    }
}

}  // namespace

std::vector<std::string> psImageLines(const PixelImage& image)
{
    const std::optional<IndexedPixels> few = indexed(image);
    std::vector<std::string> lines;
    if (few) {
        lines.push_back("[/Indexed /DeviceRGB " + std::to_string(few->colors.size() / 3 - 1) + " <");
        appendDigits(lines, few->colors);
        lines.emplace_back(">] setcolorspace");
    } else {
        lines.emplace_back("/DeviceRGB setcolorspace");
    }
    const std::string width = std::to_string(image.width);
    const std::string height = std::to_string(image.height);
    // The digits behind the picture's last one are read away before the program goes on.
    lines.emplace_back("{ /_i currentfile /ASCIIHexDecode filter def");
    lines.push_back("<< /ImageType 1 /Width " + width + " /Height " + height + " /BitsPerComponent 8");
    lines.push_back("/ImageMatrix [" + width + " 0 0 -" + height + " 0 " + height + "] /Decode " +
                    (few ? "[0 255]" : "[0 1 0 1 0 1]"));
    lines.emplace_back("/DataSource _i /RunLengthDecode filter >> image _i flushfile } exec");
    appendDigits(lines, runLengths(few ? few->indices : image.rgb));
    lines.emplace_back(">");
    return lines;
}

}  // namespace veltrac
