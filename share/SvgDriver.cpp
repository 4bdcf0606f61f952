#include "share/SvgDriver.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string_view>

#include "core/Utf8.h"
#include "share/DashPatterns.h"
#include "share/MarkerPath.h"
#include "share/PsFonts.h"
#include "share/PsLines.h"
#include "share/Transliteration.h"

namespace veltrac {

namespace {

constexpr int kMostSvgSegments = 1000;
constexpr int kLandscapeSheet = 1;
constexpr double kThinnestLine = 0.05;  // points

// At most two decimals, with a point whatever the locale, none that are zeros. What is no number is 0.
std::string decimal(double number)
{
    const double drawn = std::isnan(number) ? 0.0 : std::clamp(number, -1e6, 1e6);
    const long long hundredths = std::llround(drawn * 100.0);
    const long long magnitude = std::llabs(hundredths);
    std::string text = (hundredths < 0 ? "-" : "") + std::to_string(magnitude / 100);
    if (magnitude % 100 != 0) {
        text += '.';
        text += static_cast<char>('0' + magnitude % 100 / 10);
        if (magnitude % 10 != 0)
            text += static_cast<char>('0' + magnitude % 10);
    }
    return text;
}

std::string decimal(float number)
{
    return decimal(static_cast<double>(number));
}

// Text of an element: control characters, U+FFFE and U+FFFF have no place in XML 1.0.
std::string xmlText(std::string_view utf8)
{
    std::string out;
    for (const char c : utf8) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '\xBE':
            case '\xBF':
                out += out.ends_with("\xEF\xBF") ? '\xBD' : c;
                break;
            default:
                out += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
        }
    }
    return out;
}

const char* svgFamily(int family)
{
    switch (family) {
        case kFontTimes:
            return "Times, 'Times New Roman', 'Nimbus Roman', serif";
        case kFontCourier:
            return "Courier, 'Courier New', 'Nimbus Mono PS', monospace";
        default:
            return "Helvetica, Arial, 'Nimbus Sans', sans-serif";
    }
}

// RFC 4648.
std::string base64(const std::vector<std::uint8_t>& bytes)
{
    static constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto at = [&](std::size_t place) {
            return place < bytes.size() ? std::uint32_t{bytes[place]} : 0U;
        };
        const std::uint32_t three = at(i) << 16 | at(i + 1) << 8 | at(i + 2);
        for (int k = 0; k < 4; ++k)
            text +=
                i + static_cast<std::size_t>(k) > bytes.size() ? '=' : kLetters[three >> (18 - 6 * k) & 63U];
    }
    return text;
}

std::string colorText(float r, float g, float b)
{
    std::string text = "#";
    for (const float component : {r, g, b}) {
        static constexpr char kDigits[] = "0123456789abcdef";
        const auto level = static_cast<unsigned>(
            std::lround((component >= 0.0F ? std::min(component, 1.0F) : 0.0F) * 255.0F));
        text += kDigits[level / 16];
        text += kDigits[level % 16];
    }
    return text;
}

}  // namespace

SvgDriver::SvgDriver(const char* fileName, const PsParameters& parameters) : m_parameters(parameters)
{
    BasicDriver::OpenOutput(fileName);
    const Paper& paper = paperOf(parameters);
    const bool isLandscape = parameters.orientation == kLandscapeSheet;
    m_deviceXMax = static_cast<float>(isLandscape ? paper.height : paper.width);
    m_deviceYMax = static_cast<float>(isLandscape ? paper.width : paper.height);
    m_deviceXMin = m_deviceYMin = 0.0F;
    const std::string width = decimal(m_deviceXMax);
    const std::string height = decimal(m_deviceYMax);
    emitLine("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    emitLine("<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" + width + "pt\" height=\"" +
             height + "pt\" viewBox=\"0 0 " + width + " " + height + "\">");
    emitLine("<desc>" + xmlText(utf8OfBytes(m_parameters.creator)) + "</desc>");
    emitLine("<rect width=\"" + width + "\" height=\"" + height + "\" fill=\"#ffffff\"/>");
    emitLine("<g fill=\"none\" stroke-linecap=\"round\" stroke-linejoin=\"round\">");
}

SvgDriver::~SvgDriver()
{
    finish();
}

bool SvgDriver::finish()
{
    if (!m_finished) {
        m_finished = true;
        stroke();
        if (m_isClipped)
            emitLine("</g>");
        emitLine("</g>");
        emitLine("</svg>");
        m_whole = closeOutput();
    }
    return m_whole;
}

void SvgDriver::BeginPage(int flags)
{
    BasicDriver::BeginPage(flags);
    m_family = 0;
    FontControl(1.0F, 0);
    SetLineStyle(0);
    SetLineWidth(1.0F);
    SetColor(0.0F, 0.0F, 0.0F);
    if (flags != 0)
        ClearViewport();
}

void SvgDriver::EndPage()
{
    SetClip(false);
    BasicDriver::EndPage();
}

// -- Lines --

// y grows downwards in SVG.
std::string SvgDriver::point(float x, float y) const
{
    return decimal(x) + " " + decimal(m_deviceYMax - y);
}

std::string SvgDriver::fillAttribute() const
{
    return " fill=\"" + colorText(m_color.r, m_color.g, m_color.b) + "\"";
}

std::string SvgDriver::strokeAttributes() const
{
    // A width of 0 is the thinnest line on paper, and no line at all here.
    const double width = std::max(
        kThinnestLine, 5.0 * static_cast<double>(m_lineWidth) * m_parameters.lineWidthScale * kPointsPerMm);
    std::string text = " stroke=\"" + colorText(m_color.r, m_color.g, m_color.b) + "\" stroke-width=\"" +
                       decimal(width) + "\"";
    std::string dashes;
    for (const int length : dashPattern(m_lineStyle)) {
        if (length == 0)
            break;
        dashes += (dashes.empty() ? "" : " ") + std::to_string(length);
    }
    return dashes.empty() ? text : text + " stroke-dasharray=\"" + dashes + "\"";
}

void SvgDriver::endPath(const std::string& attributes)
{
    if (!m_path.empty())
        emitLine("<path d=\"" + m_path + "\"" + attributes + "/>");
    m_path.clear();
    m_segments = 0;
    m_movePending = true;
}

void SvgDriver::stroke()
{
    endPath(strokeAttributes());
}

void SvgDriver::DeviceMoveTo(float x, float y)
{
    m_x = x;
    m_y = y;
    m_movePending = true;
}

void SvgDriver::DeviceLineTo(float x, float y)
{
    if (!areFinite({m_x, m_y, x, y})) {
        DeviceMoveTo(x, y);
        return;
    }
    if (m_movePending)
        m_path += (m_path.empty() ? "M" : " M") + point(m_x, m_y);
    m_movePending = false;
    m_path += " L" + point(x, y);
    m_x = x;
    m_y = y;
    // The path goes on where this one ends.
    if (++m_segments > kMostSvgSegments && m_lineStyle == 0) {
        stroke();
        m_movePending = true;
    }
}

void SvgDriver::SetColor(float r, float g, float b)
{
    if (isCurrentColor(r, g, b))
        return;
    stroke();
    BasicDriver::SetColor(r, g, b);
}

void SvgDriver::SetLineStyle(int style)
{
    if (style == m_lineStyle)
        return;
    stroke();
    m_lineStyle = style;
}

void SvgDriver::SetLineWidth(float width)
{
    if (width == m_lineWidth || !std::isfinite(width))
        return;
    stroke();
    m_lineWidth = width;
}

// -- Areas --

std::string SvgDriver::viewportBox() const
{
    const float width = m_deviceXMax - m_deviceXMin;
    const float height = m_deviceYMax - m_deviceYMin;
    const float left = std::min(m_viewX1, m_viewX2) * width;
    const float top = m_deviceYMax - std::max(m_viewY1, m_viewY2) * height;
    return "<rect x=\"" + decimal(left) + "\" y=\"" + decimal(top) + "\" width=\"" +
           decimal(std::fabs(m_viewX2 - m_viewX1) * width) + "\" height=\"" +
           decimal(std::fabs(m_viewY2 - m_viewY1) * height) + "\"";
}

void SvgDriver::SetClip(bool on)
{
    stroke();
    if (m_isClipped)
        emitLine("</g>");
    m_isClipped = on;
    if (!on)
        return;
    const std::string name = "c" + std::to_string(++m_clips);
    emitLine("<clipPath id=\"" + name + "\">" + viewportBox() + "/></clipPath>");
    emitLine("<g clip-path=\"url(#" + name + ")\">");
}

void SvgDriver::ClearViewport()
{
    stroke();
    emitLine(viewportBox() + " fill=\"#ffffff\"/>");
}

void SvgDriver::DrawMarker(float x, float y, int marker, int size)
{
    float centreX = 0.0F, centreY = 0.0F;
    WorldToDevice(x, y, &centreX, &centreY);
    if (!areFinite({centreX, centreY}))
        return;
    const int style = m_lineStyle;
    SetLineStyle(0);
    stroke();
    drawMarkerPath(*this, centreX, centreY, marker, size, [this] {
        m_path += " Z";
        endPath(fillAttribute() + strokeAttributes());
    });
    stroke();
    SetLineStyle(style);
}

void SvgDriver::Dot(float x, float y)
{
    stroke();
    float deviceX = 0.0F, deviceY = 0.0F;
    WorldToDevice(x, y, &deviceX, &deviceY);
    if (!areFinite({deviceX, deviceY}))
        return;
    emitLine("<path d=\"M" + point(deviceX, deviceY) + " l0 0.01\"" + strokeAttributes() + "/>");
}

void SvgDriver::Arc(float x, float y, float radius, float startAngle, float endAngle, bool fill)
{
    stroke();
    float deviceX = 0.0F, deviceY = 0.0F;
    WorldToDevice(x, y, &deviceX, &deviceY);
    const float points = deviceRadius(radius);
    if (!areFinite({deviceX, deviceY, points, startAngle, endAngle}))
        return;
    // Counterclockwise from the start to the end, at most once around; in two halves, because an arc whose
    // ends are one point is none.
    float span = std::fmod(endAngle - startAngle, 360.0F);
    if (span <= 0.0F)
        span += 360.0F;
    const auto at = [&](float degrees) {
        const float angle = degrees * std::numbers::pi_v<float> / 180.0F;
        return point(deviceX + points * std::cos(angle), deviceY + points * std::sin(angle));
    };
    const std::string round = " A" + decimal(points) + " " + decimal(points) + " 0 0 0 ";
    const std::string data =
        "M" + at(startAngle) + round + at(startAngle + span / 2.0F) + round + at(startAngle + span);
    emitLine("<path d=\"" + data + "\"" + (fill ? fillAttribute() : strokeAttributes()) + "/>");
}

void SvgDriver::DrawImage(float x1, float y1, float x2, float y2, const PixelImage& image)
{
    stroke();
    float left = 0.0F, bottom = 0.0F, right = 0.0F, top = 0.0F;
    WorldToDevice(x1, y1, &left, &bottom);
    WorldToDevice(x2, y2, &right, &top);
    if (!areFinite({left, bottom, right, top}))
        return;
    emitLine("<image x=\"" + decimal(left) + "\" y=\"" + decimal(m_deviceYMax - top) + "\" width=\"" +
             decimal(right - left) + "\" height=\"" + decimal(top - bottom) +
             "\" preserveAspectRatio=\"none\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
             "xlink:href=\"data:image/png;base64," +
             base64(pngBytes(image)) + "\"/>");
}

void SvgDriver::Polyline(const float* points, int count, bool closed, bool fill)
{
    if (count < 1)
        return;
    stroke();
    std::string data;
    for (int i = 0; i < count; ++i) {
        float x = 0.0F, y = 0.0F;
        WorldToDevice(points[2 * i], points[2 * i + 1], &x, &y);
        if (areFinite({x, y}))
            data += (data.empty() ? "M" : " L") + point(x, y);
    }
    if (!data.empty())
        emitLine("<path d=\"" + data + (closed || fill ? " Z\"" : "\"") +
                 (fill ? fillAttribute() : strokeAttributes()) + "/>");
    MoveTo(points[2 * (count - 1)], points[2 * (count - 1) + 1]);
}

// -- Texts --

void SvgDriver::FontControl(float size, int flags)
{
    const PsFont font = psFontOf(m_parameters, size, flags);
    m_family = font.family;
    m_bold = font.bold;
    m_characterHeight = font.points;
}

void SvgDriver::Text(const char* string, int length, float angle, int flags)
{
    const std::string_view text = textToSet(string, length);
    if (text.empty() || !areFinite({m_x, m_y, angle, m_hJustification, m_vJustification}))
        return;
    stroke();
    if ((flags & (kFontFamilyMask | kFontBold)) != 0)
        FontControl(m_characterHeight, (flags & (kFontFamilyMask | kFontBold)) | kFontSizeInPoints);
    else if (m_family == 0)
        FontControl(1.0F, 0);

    const float h = std::clamp(m_hJustification, 0.0F, 1.0F);
    const float shift = kJustificationShift * m_characterHeight * (m_hJustification - h);
    const char* const anchor = h < 0.25F ? "start" : h > 0.75F ? "end" : "middle";
    std::string line = "<text x=\"" + decimal(-shift) + "\" y=\"" +
                       decimal(m_vJustification * m_characterHeight) + "\" transform=\"translate(" +
                       point(m_x, m_y) + ")";
    if (std::fmod(angle, 360.0F) != 0.0F)
        line += " rotate(" + decimal(-angle) + ")";
    line += "\" font-family=\"" + std::string(svgFamily(m_family)) + "\" font-size=\"" +
            decimal(m_characterHeight) + "\" text-anchor=\"" + anchor + "\"";
    if (m_bold)
        line += " font-weight=\"bold\"";
    emitLine(line + fillAttribute() + ">" + xmlText(utf8OfBytes(text)) + "</text>");
    m_movePending = true;
}

void SvgDriver::TextExtent(const char* string, float* width, float* height)
{
    const float points =
        m_characterHeight > 0.0F ? m_characterHeight : static_cast<float>(m_parameters.baseFontSize);
    psTextExtent(string, points, m_deviceXMax - m_deviceXMin, m_deviceYMax - m_deviceYMin, width, height);
}

void SvgDriver::DrawStamp(int id, const char* text)
{
    constexpr float kSize = 5.0F;
    constexpr float kInset = 4.0F;
    stroke();
    const std::string utf8 = utf8OfBytes(text);
    float inset = kInset;
    if (id == 1) {
        const float width = static_cast<float>(standardText(utf8).size()) * kSize * 0.7F + 2.0F * kInset;
        emitLine("<rect x=\"4\" y=\"" + decimal(m_deviceYMax - kInset - 12.0F) + "\" width=\"" +
                 decimal(width) + "\" height=\"12\" stroke=\"#00004d\" stroke-width=\"0.3\"/>");
        inset = 2.0F * kInset;
    }
    // Half as high again as wide, as on paper.
    emitLine("<text transform=\"translate(" + point(inset, inset) +
             ") scale(1 1.5)\" font-family=\"'ITC Avant Garde Gothic', 'URW Gothic', sans-serif\" "
             "font-weight=\"600\" font-style=\"oblique\" font-size=\"5\" fill=\"#00004d\">" +
             xmlText(utf8) + "</text>");
    m_movePending = true;
}

void SvgDriver::emitLine(std::string line)
{
    line += '\n';
    WriteBytes(line.data(), static_cast<int>(line.size()));
}

}  // namespace veltrac
