#include "share/BasicDriver.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

using namespace veltrac;

BasicDriver::BasicDriver() = default;

BasicDriver::~BasicDriver()
{
    closeOutput();
    // One by one: a long list that frees itself would recurse as deep as it is long.
    while (m_colors)
        m_colors = std::move(m_colors->next);
}

void BasicDriver::BeginPage(int /*flags*/)
{
    m_color = Color();
    m_colorChanged = false;
    m_lineStyle = -1;
    m_lineWidth = -1.0F;
    m_characterHeight = -1.0F;
}

void BasicDriver::EndPage()
{
    Flush();
}

void BasicDriver::Flush()
{
    if (m_output && std::fflush(m_output) != 0 && m_outputError == 0)
        m_outputError = errno;
}

void BasicDriver::GetMaxViewport(float* x1, float* y1, float* x2, float* y2)
{
    *x1 = 0.0F;
    *y1 = 0.0F;
    *x2 = 1.0F;
    *y2 = 1.0F;
}

void BasicDriver::GetMaxViewport(float* viewport)
{
    GetMaxViewport(viewport, viewport + 1, viewport + 2, viewport + 3);
}

void BasicDriver::SetViewport(float x1, float y1, float x2, float y2)
{
    Flush();
    m_viewX1 = x1;
    m_viewY1 = y1;
    m_viewX2 = x2;
    m_viewY2 = y2;
    UpdateScale();
}

void BasicDriver::SetViewport(const float* viewport)
{
    SetViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
}

void BasicDriver::SetWindow(float x1, float y1, float x2, float y2)
{
    Flush();
    m_windowX1 = x1;
    m_windowY1 = y1;
    m_windowX2 = x2;
    m_windowY2 = y2;
    UpdateScale();
}

void BasicDriver::SetWindow(const float* window)
{
    SetWindow(window[0], window[1], window[2], window[3]);
}

void BasicDriver::SelectColor(int index)
{
    for (const ColorEntry* entry = m_colors.get(); entry != nullptr; entry = entry->next.get()) {
        if (entry->index == index) {
            SetColor(entry->color.r, entry->color.g, entry->color.b);
            return;
        }
    }
}

bool BasicDriver::isCurrentColor(float r, float g, float b) const
{
    constexpr float kSame = 0.01F;
    return std::fabs(r - m_color.r) <= kSame && std::fabs(g - m_color.g) <= kSame &&
           std::fabs(b - m_color.b) <= kSame;
}

void BasicDriver::SetColor(float r, float g, float b)
{
    if (isCurrentColor(r, g, b))
        return;
    m_color = {r, g, b};
    m_colorChanged = true;
}

void BasicDriver::DefineColor(int index, float r, float g, float b)
{
    m_colors = std::make_unique<ColorEntry>(ColorEntry{std::move(m_colors), index, {r, g, b}});
}

int BasicDriver::NextColorIndex()
{
    int next = kFirstVariableColor;
    for (const ColorEntry* entry = m_colors.get(); entry != nullptr; entry = entry->next.get())
        next = std::max(next, entry->index + 1);
    return next;
}

void BasicDriver::ReservedBegin() {}

void BasicDriver::ReservedEnd() {}

void BasicDriver::LineTo(float x, float y)
{
    float deviceX = 0.0F, deviceY = 0.0F;
    WorldToDevice(x, y, &deviceX, &deviceY);
    DeviceLineTo(deviceX, deviceY);
}

void BasicDriver::MoveTo(float x, float y)
{
    float deviceX = 0.0F, deviceY = 0.0F;
    WorldToDevice(x, y, &deviceX, &deviceY);
    DeviceMoveTo(deviceX, deviceY);
}

void BasicDriver::Dot(float x, float y)
{
    MoveTo(x, y);
    LineTo(x, y);
}

void BasicDriver::Rectangle(float x1, float y1, float x2, float y2, int fill)
{
    const float corners[] = {x1, y1, x2, y1, x2, y2, x1, y2};
    Polyline(corners, 4, true, fill != 0);
}

void BasicDriver::Label(const char* string, int length)
{
    Text(string, length, 0.0F, 0);
}

float BasicDriver::deviceRadius(float radius) const
{
    return std::min(radius * ((m_viewX2 - m_viewX1) * (m_deviceXMax - m_deviceXMin)),
                    radius * ((m_viewY2 - m_viewY1) * (m_deviceYMax - m_deviceYMin)));
}

void BasicDriver::Polyline(const float* points, int count, bool closed, bool fill)
{
    if (count < 1)
        return;
    MoveTo(points[0], points[1]);
    for (int i = 1; i < count; ++i)
        LineTo(points[2 * i], points[2 * i + 1]);
    if (closed || fill)
        LineTo(points[0], points[1]);
    Flush();
}

void BasicDriver::FontControl(float /*size*/, int /*flags*/) {}

void BasicDriver::SetTextJustification(float h, float v)
{
    constexpr float kKeep = -900.0F;
    if (h > kKeep)
        m_hJustification = h;
    if (v > kKeep)
        m_vJustification = v;
}

void BasicDriver::DrawStamp(int /*id*/, const char* /*text*/) {}

void BasicDriver::WorldToDevice(float x, float y, float* deviceX, float* deviceY)
{
    *deviceX = (m_deviceXMax - m_deviceXMin) * (m_viewX1 + (x - m_windowX1) * m_scaleX) + m_deviceXMin;
    *deviceY = (m_deviceYMax - m_deviceYMin) * (m_viewY1 + (y - m_windowY1) * m_scaleY) + m_deviceYMin;
}

void BasicDriver::UpdateScale()
{
    if (m_windowX2 != m_windowX1)
        m_scaleX = (m_viewX2 - m_viewX1) / (m_windowX2 - m_windowX1);
    if (m_windowY2 != m_windowY1)
        m_scaleY = (m_viewY2 - m_viewY1) / (m_windowY2 - m_windowY1);
}

void BasicDriver::OpenOutput(const char* name)
{
    closeOutput();
    m_output = std::strcmp(name, "-") == 0 ? stdout : std::fopen(name, "w+");
    m_outputError = m_output ? 0 : errno;
}

void BasicDriver::WriteBytes(const char* buffer, int count)
{
    if (!m_output || count <= 0)
        return;
    const auto size = static_cast<std::size_t>(count);
    if (std::fwrite(buffer, 1, size, m_output) != size && m_outputError == 0)
        m_outputError = errno;
}

void BasicDriver::WriteLine(const char* text)
{
    WriteBytes(text, static_cast<int>(std::strlen(text)));
    WriteBytes("\n", 1);
}

bool BasicDriver::closeOutput()
{
    if (!m_output)
        return false;
    BasicDriver::Flush();
    if (std::ferror(m_output) != 0 && m_outputError == 0)
        m_outputError = EIO;
    if (m_output != stdout && std::fclose(m_output) != 0 && m_outputError == 0)
        m_outputError = errno;
    m_output = nullptr;
    return m_outputError == 0;
}
