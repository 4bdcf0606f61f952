#include "share/BasicDriver.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

using namespace veltrac;

namespace {

// In character heights.
constexpr float kMajorTick = 0.5F;
constexpr float kMinorTick = 0.25F;
constexpr float kLabelGap = 0.35F;
constexpr float kTitleLineHeight = 1.25F;
constexpr float kXAxisLines = kMajorTick + kLabelGap + 2.0F * kTitleLineHeight;
// Puts the middle of digits, not that of the whole line, on the tick. One decimal: paper has no more.
constexpr float kMiddle = 0.4F;

// The power of ten stands above the topmost label.
constexpr float kPowerRise = 0.9F;

constexpr int kDottedStyle = 4;

}  // namespace

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

// -- Frame, ticks and labels of the axes, on every device the same --

float BasicDriver::characterHeight() const
{
    constexpr float kUnset = 10.0F;
    return m_characterHeight > 0.0F ? m_characterHeight : kUnset;
}

LabelRoom BasicDriver::xLabelRoom()
{
    const float unit = characterHeight() / (m_deviceXMax - m_deviceXMin);
    const auto extent = [this](const std::string& label) {
        float width = 0.0F;
        TextExtent(label.c_str(), &width, nullptr);
        return static_cast<double>(width);
    };
    return {std::fabs(m_viewX2 - m_viewX1), extent, 1.5F * unit};
}

LabelRoom BasicDriver::yLabelRoom()
{
    const float unit = characterHeight() / (m_deviceYMax - m_deviceYMin);
    const auto extent = [unit](const std::string&) { return static_cast<double>(unit); };
    constexpr double kClosest = 0.25;  // on a low axis
    return {std::fabs(m_viewY2 - m_viewY1), extent, unit, kClosest * static_cast<double>(unit)};
}

float BasicDriver::xAxisHeight() const
{
    return kXAxisLines * characterHeight() / (m_deviceYMax - m_deviceYMin);
}

float BasicDriver::yAxisWidth(const AxisTicks& ticks, const AxisStyle& style)
{
    float heights = kMajorTick;
    float widest = 0.0F;
    const auto widen = [&](const std::string& text) {
        float width = 0.0F;
        TextExtent(text.c_str(), &width, nullptr);
        widest = std::max(widest, width);
    };
    if (style.hasLabels) {
        heights += kLabelGap;
        for (const Tick& tick : ticks.ticks)
            widen(tick.label);
        widen(ticks.powerText);
    }
    if (style.title != nullptr && *style.title != '\0')
        heights += kLabelGap + kTitleLineHeight;
    return widest + heights * characterHeight() / (m_deviceXMax - m_deviceXMin);
}

BasicDriver::Pen BasicDriver::pen() const
{
    return {m_color, m_lineStyle, m_lineWidth};
}

void BasicDriver::restorePen(const Pen& pen)
{
    if (pen.color.r >= 0.0F) {
        SetColor(pen.color.r, pen.color.g, pen.color.b);
    } else {
        // Nothing is known of the colour before: the text colour, or black where there is none.
        SetColor(0.0F, 0.0F, 0.0F);
        SelectColor(kTextColor);
    }
    SetLineStyle(std::max(pen.style, 0));
    if (pen.width >= 0.0F)
        SetLineWidth(pen.width);
}

void BasicDriver::beginGrid(const AxisStyle& style)
{
    SetLineWidth(style.gridWidth);
    SetLineStyle(style.grid == GridStyle::Dotted ? kDottedStyle : 0);
    if (style.grid == GridStyle::Gray) {
        // On a dark ground, where texts are light, the same light gray would outshine the curves.
        const bool isDarkGround = m_color.r + m_color.g + m_color.b > 1.5F;
        const float gray = isDarkGround ? 0.35F : 0.8F;
        SetColor(gray, gray, gray);
    }
}

void BasicDriver::deviceLine(float x1, float y1, float x2, float y2)
{
    DeviceMoveTo(x1, y1);
    DeviceLineTo(x2, y2);
}

void BasicDriver::deviceText(float x, float y, float h, float v, float angle, const char* text)
{
    if (*text == '\0')
        return;
    DeviceMoveTo(x, y);
    SetTextJustification(h, v);
    Text(text, 0, angle, 0);
}

void BasicDriver::DrawFrame(float x1, float y1, float x2, float y2, float lineWidth)
{
    const Pen before = pen();
    SetLineStyle(0);
    SetLineWidth(lineWidth);
    Rectangle(x1, y1, x2, y2, 0);
    restorePen(before);
}

BasicDriver::Box BasicDriver::windowBox()
{
    Box box = {};
    WorldToDevice(m_windowX1, m_windowY1, &box.left, &box.bottom);
    WorldToDevice(m_windowX2, m_windowY2, &box.right, &box.top);
    return box;
}

std::vector<BasicDriver::PlacedTick> BasicDriver::placedTicks(const AxisTicks& ticks, const AxisStyle& style,
                                                              bool alongX)
{
    const Box box = windowBox();
    const auto [least, most] = alongX ? std::minmax(box.left, box.right) : std::minmax(box.bottom, box.top);
    std::vector<PlacedTick> placed;
    for (const Tick& tick : ticks.ticks) {
        const auto world = static_cast<float>((tick.position - style.origin) / style.scale);
        float x = 0.0F, y = 0.0F;
        WorldToDevice(world, world, &x, &y);
        const float at = alongX ? x : y;
        // A tick at the very edge may fall outside by rounding.
        if (at > least - 1.0F && at < most + 1.0F)
            placed.push_back({std::clamp(at, least, most), &tick});
    }
    return placed;
}

float BasicDriver::deviceWidth(const char* text)
{
    float width = 0.0F;
    TextExtent(text, &width, nullptr);
    return width * (m_deviceXMax - m_deviceXMin);
}

// Under an x axis' labels: the date, the title in the middle of what is free, the power of ten.
void BasicDriver::drawSecondLine(const AxisTicks& ticks, const AxisStyle& style, float y)
{
    const Box box = windowBox();
    const float gap = characterHeight();
    auto [left, right] = std::minmax({box.left, box.right});
    if (style.hasLabels) {
        deviceText(left, y, 0.0F, 1.0F, 0.0F, ticks.edgeText.c_str());
        deviceText(right, y, 1.0F, 1.0F, 0.0F, ticks.powerText.c_str());
        if (!ticks.edgeText.empty())
            left += deviceWidth(ticks.edgeText.c_str()) + gap;
        if (!ticks.powerText.empty())
            right -= deviceWidth(ticks.powerText.c_str()) + gap;
    }
    if (style.title == nullptr)
        return;
    const float half = deviceWidth(style.title) / 2.0F;
    const bool hasRoom = right - left >= 2.0F * half || ticks.edgeText.empty();
    if (hasRoom)
        deviceText(
            std::clamp((box.left + box.right) / 2.0F, left + half, std::max(left + half, right - half)), y,
            0.5F, 1.0F, 0.0F, style.title);
}

void BasicDriver::DrawXAxis(const AxisTicks& ticks, const AxisStyle& style)
{
    const float height = characterHeight();
    const Pen before = pen();
    const Box box = windowBox();
    const std::vector<PlacedTick> placed = placedTicks(ticks, style, true);
    if (style.grid != GridStyle::None) {
        beginGrid(style);
        for (const PlacedTick& tick : placed)
            if (tick.tick->isMajor)
                deviceLine(tick.at, box.bottom, tick.at, box.top);
        restorePen(before);
    }
    SetLineStyle(0);
    SetLineWidth(style.lineWidth);
    for (const PlacedTick& tick : placed)
        deviceLine(tick.at, box.bottom, tick.at,
                   box.bottom - (tick.tick->isMajor ? kMajorTick : kMinorTick) * height);
    const float first = box.bottom - (kMajorTick + kLabelGap) * height;
    const float second = first - kTitleLineHeight * height;
    if (style.hasLabels) {
        for (const PlacedTick& tick : placed)
            deviceText(tick.at, first, 0.5F, 1.0F, 0.0F, tick.tick->label.c_str());
    }
    drawSecondLine(ticks, style, second);
    restorePen(before);
}

void BasicDriver::DrawYAxis(const AxisTicks& ticks, const AxisStyle& style)
{
    const float height = characterHeight();
    const Pen before = pen();
    const Box box = windowBox();
    const std::vector<PlacedTick> placed = placedTicks(ticks, style, false);
    if (style.grid != GridStyle::None) {
        beginGrid(style);
        for (const PlacedTick& tick : placed)
            if (tick.tick->isMajor)
                deviceLine(box.left, tick.at, box.right, tick.at);
        restorePen(before);
    }
    SetLineStyle(0);
    SetLineWidth(style.lineWidth);
    for (const PlacedTick& tick : placed)
        deviceLine(box.left, tick.at, box.left - (tick.tick->isMajor ? kMajorTick : kMinorTick) * height,
                   tick.at);
    if (style.hasLabels) {
        const float labels = box.left - (kMajorTick + kLabelGap) * height;
        for (const PlacedTick& tick : placed)
            deviceText(labels, tick.at, 1.0F, kMiddle, 0.0F, tick.tick->label.c_str());
        deviceText(labels, std::max(box.bottom, box.top) + kPowerRise * height, 1.0F, 0.0F, 0.0F,
                   ticks.powerText.c_str());
    }
    if (style.title != nullptr) {
        const float edge = box.left - yAxisWidth(ticks, style) * (m_deviceXMax - m_deviceXMin);
        deviceText(edge, (box.bottom + box.top) / 2.0F, 0.5F, 1.0F, 90.0F, style.title);
    }
    restorePen(before);
}
