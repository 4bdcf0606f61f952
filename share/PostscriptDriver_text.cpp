// PostscriptDriver: fonts and texts.

#include <algorithm>
#include <cmath>
#include <string_view>

#include "share/PostscriptDriver.h"
#include "share/PsFonts.h"
#include "share/PsLines.h"
#include "share/Transliteration.h"

using namespace veltrac;

namespace {

const char* fontNameOf(int family, bool bold)
{
    switch (family) {
        case kFontTimes:
            return bold ? "Times-Bold" : "Times-Roman";
        case kFontCourier:
            return bold ? "Courier-Bold" : "Courier";
        default:
            return bold ? "Helvetica-Bold" : "Helvetica";
    }
}

}  // namespace

void PostscriptDriver::FontControl(float size, int flags)
{
    const PsFont font = psFontOf(m_parameters, size, flags);
    if (m_fontKnown && font.family == m_family && font.bold == m_bold && font.points == m_characterHeight)
        return;
    stroke();
    m_family = font.family;
    m_bold = font.bold;
    m_characterHeight = font.points;
    writeFont();
}

void PostscriptDriver::writeFont()
{
    emitLine(compactedLine(
        formatted("%4.1f /%s _F", static_cast<double>(m_characterHeight), fontNameOf(m_family, m_bold))));
    m_fontKnown = true;
}

void PostscriptDriver::Text(const char* string, int length, float angle, int flags)
{
    const std::string_view text = textToSet(string, length);
    if (text.empty() || !areFinite({m_x, m_y, angle, m_hJustification, m_vJustification}))
        return;
    stroke();
    if ((flags & (kFontFamilyMask | kFontBold)) != 0)
        FontControl(m_characterHeight, (flags & (kFontFamilyMask | kFontBold)) | kFontSizeInPoints);
    else if (m_family == 0)
        FontControl(1.0F, 0);
    else if (!m_fontKnown)
        writeFont();

    const float h = std::clamp(m_hJustification, 0.0F, 1.0F);
    const float shift = kJustificationShift * m_characterHeight * (m_hJustification - h);
    const bool isTurned = std::fmod(angle, 360.0F) != 0.0F;
    auto x = static_cast<double>(m_x - shift);
    auto y = static_cast<double>(m_y);
    if (isTurned) {
        emitLine(compactedLine(formatted("gsave %.1f %.1f translate %.1f rotate", static_cast<double>(m_x),
                                         static_cast<double>(m_y), static_cast<double>(angle))));
        x = static_cast<double>(-shift);
        y = 0.0;
    }
    emitLine(textLine(compactedLine(formatted("%.1f %.1f _m", x, y)), standardText(text),
                      compactedLine(formatted(" %.1f %.1f _js", static_cast<double>(h),
                                              static_cast<double>(m_vJustification)))));
    if (isTurned)
        emitLine("grestore");
    m_movePending = true;
}

void PostscriptDriver::TextExtent(const char* string, float* width, float* height)
{
    const float points =
        m_characterHeight > 0.0F ? m_characterHeight : static_cast<float>(m_parameters.baseFontSize);
    if (width != nullptr)
        *width = psTextWidth(string, points) / (m_deviceXMax - m_deviceXMin);
    if (height != nullptr)
        *height = points * kPsTextWidthFactor / (m_deviceYMax - m_deviceYMin);
}

void PostscriptDriver::DrawStamp(int id, const char* text)
{
    constexpr double kSize = 5.0;
    constexpr double kInset = 4.0;
    stroke();
    const std::string standard = standardText(text);
    double x = static_cast<double>(m_deviceXMin) + kInset;
    double y = static_cast<double>(m_deviceYMin) + kInset;
    if (id == 1) {
        emitLine(formatted("gsave %.1f %.1f translate %1f %1f scale", x, y, 1.0, 1.0));
        const double width = static_cast<double>(standard.size()) * kSize * 0.7 + 2.0 * kInset;
        emitLine(formatted("0.3 setlinewidth [] 0 _P 0 0 .3 setrgbcolor _n 0 0 moveto %.1f 0 lineto", width));
        emitLine(formatted("%.1f 12 lineto 0 12 lineto closepath stroke", width));
        x = kInset;
        y = kInset;
    }
    emitLine(textLine(formatted("gsave %.1f /AvantGarde-DemiOblique _F 0 0 .3 setrgbcolor %.1f %.1f _m 1 1.5"
                                " scale ",
                                kSize, x, y),
                      standard, " show grestore"));
    if (id == 1)
        emitLine("grestore");
    // grestore brings the font back, but not the height that the justification of texts reckons with.
    m_fontKnown = false;
    m_movePending = true;
}
