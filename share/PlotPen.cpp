#include "share/PlotPen.h"

#include <algorithm>
#include <vector>

#include "share/BasicDriver.h"
#include "share/Dashes.h"

namespace veltrac {

namespace {

constexpr float kMarkerWidthMm = 0.25F;

}  // namespace

void PlotPen::select(const Variable& v)
{
    m_driver.SelectColor(v.colorIndex);
    m_driver.SetLineStyle(cutsDashes(v) ? 0 : std::max(styleOf(v), 0));
    m_driver.SetLineWidth(static_cast<float>(v.widthMm) * m_look.widthFactor);
}

void PlotPen::selectForMarkers()
{
    m_driver.SetLineStyle(0);
    m_driver.SetLineWidth(kMarkerWidthMm * m_look.widthFactor);
}

void PlotPen::line(const Variable& v, const float* points, std::size_t count)
{
    if (!cutsDashes(v)) {
        m_driver.Polyline(points, static_cast<int>(count), false, false);
        return;
    }
    std::vector<float> device(2 * count);
    for (std::size_t p = 0; p < count; ++p)
        m_driver.WorldToDevice(points[2 * p], points[2 * p + 1], &device[2 * p], &device[2 * p + 1]);
    drawDashes(device, dashLengths(styleOf(v), m_look.screenPixel(), widthOf(v)), m_driver);
    m_driver.Flush();
}

int PlotPen::styleOf(const Variable& v) const
{
    constexpr int kStyles = 10;
    return m_look.dashes && v.lineStyle == 0 ? std::max(v.colorIndex - kFirstVariableColor, 0) % kStyles
                                             : v.lineStyle;
}

float PlotPen::widthOf(const Variable& v) const
{
    return static_cast<float>(v.widthMm) * m_look.widthFactor * m_look.penUnits;
}

// The drivers' patterns have one length for all widths: on a thick line their gaps close.
bool PlotPen::cutsDashes(const Variable& v) const
{
    return styleOf(v) > 0 && widthOf(v) > 1.5F * m_look.screenPixel();
}

}  // namespace veltrac
