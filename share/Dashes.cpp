#include "share/Dashes.h"

#include <algorithm>
#include <cmath>

#include "share/BasicDriver.h"
#include "share/DashPatterns.h"

namespace veltrac {

std::vector<float> dashLengths(int style, float pixel, float width)
{
    std::vector<float> lengths;
    const float scale = std::max(pixel, width);
    for (const int length : dashPattern(style)) {
        if (length == 0)
            break;
        const bool isDash = lengths.size() % 2 == 0;
        lengths.push_back(std::max(0.0F, static_cast<float>(length) * scale + (isDash ? -width : width)));
    }
    return lengths;
}

void drawDashes(const std::vector<float>& points, const std::vector<float>& lengths, BasicDriver& driver)
{
    if (points.size() < 4 || lengths.size() < 2)
        return;
    std::size_t part = 0;
    float left = lengths[0];  // of the present part
    driver.DeviceMoveTo(points[0], points[1]);
    for (std::size_t p = 2; p + 1 < points.size(); p += 2) {
        const float x1 = points[p - 2], y1 = points[p - 1];
        const float dx = points[p] - x1, dy = points[p + 1] - y1;
        const float length = std::hypot(dx, dy);
        if (!std::isfinite(length))
            continue;
        const auto go = [&](float at) {
            const float share = length > 0.0F ? at / length : 1.0F;
            const bool isDash = part % 2 == 0;
            if (isDash)
                driver.DeviceLineTo(x1 + share * dx, y1 + share * dy);
            else
                driver.DeviceMoveTo(x1 + share * dx, y1 + share * dy);
        };
        float at = 0.0F;
        while (length - at > left) {
            at += left;
            go(at);
            part = (part + 1) % lengths.size();
            left = lengths[part];
        }
        left -= length - at;
        go(length);
    }
}

}  // namespace veltrac
