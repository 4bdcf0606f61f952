// BasicDriver: frame, ticks and labels of the axes, on every device the same.

#include <algorithm>
#include <cmath>

#include "share/BasicDriver.h"

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
