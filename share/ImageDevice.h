// Pictures of pixels on a drawing device: what drivers can do beside the operations of BasicDriver.
#pragma once

#include <cstdint>
#include <vector>

class BasicDriver;

namespace veltrac {

struct PixelImage
{
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;  // from the upper left corner on, line by line
};

// A second base of the drivers that draw pictures at once. It stands beside BasicDriver, whose table of
// operations other drivers count on.
class ImageDevice
{
public:
    virtual ~ImageDevice() = default;
    // Into a rectangle of the world. Nothing is smoothed.
    virtual void DrawImage(float x1, float y1, float x2, float y2, const PixelImage& image) = 0;
};

// On any driver: one that draws no pictures gets filled boxes.
void drawImage(BasicDriver& driver, float x1, float y1, float x2, float y2, const PixelImage& image);

// The picture as a PNG file (ISO/IEC 15948). Throws std::bad_alloc.
std::vector<std::uint8_t> pngBytes(const PixelImage& image);

}  // namespace veltrac
