#include "share/PostscriptDriver.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <string_view>

#include "share/DashPatterns.h"
#include "share/MarkerPath.h"
#include "share/PsFonts.h"
#include "share/PsImage.h"
#include "share/PsLines.h"
#include "share/Transliteration.h"

using namespace veltrac;

namespace {

constexpr int kMostSegments = 100;
constexpr float kForgotten = -999.0F;
constexpr int kLandscape = 1;
constexpr int kNoRotation = 2;  // flag of BeginPage()

constexpr const char* kProcedures[] = {
    "/_n { newpath } bind def",
    "/_m { transform round exch round exch",
    "      itransform moveto } bind def",
    "/_l { transform round exch round exch",
    "      itransform lineto } bind def",
    "/_d { transform round exch round exch",
    "      2 copy 1 add itransform newpath moveto",
    "      itransform lineto stroke } bind def",
    "/_s { stroke } bind def",
    "/_f { closepath fill } bind def",
    "/_w { setlinewidth } bind def",
    "/_P { setdash } bind def",
    "/_F { /cheight 2 index def",
    "      findfont exch scalefont setfont } bind def",
    "/_js { 2 index stringwidth pop",
    "       exch cheight mul 3 1 roll mul neg",
    "       exch neg rmoveto show } bind def",
    "/_ejs { gsave 3 index stringwidth pop div",
    "       currentfont exch scalefont setfont",
    "       moveto show grestore } bind def",
};

double clamped(float coordinate)
{
    constexpr float kLeast = -999.0F;
    constexpr float kMost = 2000.0F;  // unequal bounds on purpose
    if (!(coordinate >= kLeast))
        return kLeast;  // a NaN too: PostScript knows none
    return std::min(coordinate, kMost);
}

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

PostscriptDriver::PostscriptDriver(const char* fileName, const PsParameters* parameters)
{
    if (parameters != nullptr) {
        m_parameters = *parameters;
        // Whoever filled the fields to the brim left no room for the zero.
        m_parameters.fontName[sizeof m_parameters.fontName - 1] = '\0';
        m_parameters.creator[sizeof m_parameters.creator - 1] = '\0';
    } else {
        PsParameters::setText(m_parameters.fontName, "Times-Roman");
        PsParameters::setText(m_parameters.creator, "unknown");
    }
    BasicDriver::OpenOutput(fileName);
    setDeviceArea();
    writeProlog();
}

PostscriptDriver::~PostscriptDriver()
{
    finish();
}

bool PostscriptDriver::finish()
{
    if (!m_finished) {
        m_finished = true;
        emitLine("%%Trailer");
        emitLine(formatted("%%%%Pages: %d", m_page));
        emitLine("saveobj restore");
        m_whole = closeOutput();
    }
    return m_whole;
}

void PostscriptDriver::setDeviceArea()
{
    const Paper& paper = paperOf(m_parameters);
    const bool isLandscape = m_parameters.orientation == kLandscape;
    const int(&margins)[4] = m_parameters.margins;
    const auto points = [this](int mm) {
        return static_cast<float>(m_parameters.eps ? 0.0 : mm * kPointsPerMm);
    };
    if (isLandscape) {
        m_deviceXMax = static_cast<float>(paper.height) - points(margins[2]);
        m_deviceXMin = points(margins[3]);
        m_deviceYMax = static_cast<float>(paper.width) - points(margins[1]);
        m_deviceYMin = points(margins[0]);
    } else {
        m_deviceXMax = static_cast<float>(paper.width) - points(margins[0]);
        m_deviceXMin = points(margins[1]);
        m_deviceYMax = static_cast<float>(paper.height) - points(margins[2]);
        m_deviceYMin = points(margins[3]);
    }
}

void PostscriptDriver::writeProlog()
{
    const Paper& paper = paperOf(m_parameters);
    const bool isTurned = m_parameters.eps && m_parameters.orientation == kLandscape;
    emitLine(m_parameters.eps ? "%!PS-Adobe-2.0 EPSF-1.2" : "%!PS-Adobe-2.0");
    emitLine("%%Title: PostScript File");
    emitLine("%%Creator: " + asciiText(m_parameters.creator));
    const std::string boundingBox =
        formatted("%%%%BoundingBox: 0 0 %d %d", isTurned ? paper.height : paper.width,
                  isTurned ? paper.width : paper.height);
    // Twice on purpose: readers take the first.
    emitLine(boundingBox);
    emitLine(boundingBox);
    emitLine("%%Pages: 1");
    emitLine("%%DocumentFonts: Courier " + asciiText(m_parameters.fontName));
    emitLine("%%EndComments");
    emitLine("/saveobj save def gsave");
    for (const char* const line : kProcedures)
        emitLine(line);
    emitLine("%%EndProlog");
    emitLine("1 setlinecap 1 setlinejoin");
}

void PostscriptDriver::forgetAttributes()
{
    m_color = {kForgotten, kForgotten, kForgotten};
    m_lineStyle = static_cast<int>(kForgotten);
    m_lineWidth = kForgotten;
    m_fontKnown = false;
}

void PostscriptDriver::BeginPage(int flags)
{
    BasicDriver::BeginPage(flags);
    forgetAttributes();
    m_family = 0;
    m_segments = 0;
    m_pathOpen = false;
    m_movePending = false;
    // Decimal points, whatever the user's locale.
    std::setlocale(LC_NUMERIC, "C");
    ++m_page;
    emitLine(formatted("%%%%Page: %d %d", m_page, m_page));
    if (m_parameters.orientation == kLandscape && !m_parameters.eps && (flags & kNoRotation) == 0)
        emitLine(formatted("90 rotate 0 -%d translate", paperOf(m_parameters).width));
    FontControl(1.0F, 0);
    SetLineStyle(0);
    SetLineWidth(1.0F);
    SetColor(0.0F, 0.0F, 0.0F);
    if (flags != 0)
        ClearViewport();
}

void PostscriptDriver::EndPage()
{
    stroke();
    // The next page must not inherit a clip that its caller forgot.
    for (; m_clips > 0; --m_clips)
        emitLine("grestore");
    emitLine("showpage");
    BasicDriver::EndPage();
}

void PostscriptDriver::endPath(const char* operation)
{
    if (!m_pathOpen)
        return;
    emitLine(operation);
    m_segments = 0;
    m_movePending = true;
    m_pathOpen = false;
}

void PostscriptDriver::stroke()
{
    endPath("_s");
}

void PostscriptDriver::outline()
{
    const float beforeX = m_x, beforeY = m_y;
    const float x1 = m_viewX1 * (m_deviceXMax - m_deviceXMin) + m_deviceXMin;
    const float x2 = m_viewX2 * (m_deviceXMax - m_deviceXMin) + m_deviceXMin;
    const float y1 = m_viewY1 * (m_deviceYMax - m_deviceYMin) + m_deviceYMin;
    const float y2 = m_viewY2 * (m_deviceYMax - m_deviceYMin) + m_deviceYMin;
    DeviceMoveTo(x1, y1);
    DeviceLineTo(x2, y1);
    DeviceLineTo(x2, y2);
    DeviceLineTo(x1, y2);
    m_x = beforeX;
    m_y = beforeY;
}

void PostscriptDriver::DrawImage(float x1, float y1, float x2, float y2, const veltrac::PixelImage& image)
{
    stroke();
    float left = 0.0F, bottom = 0.0F, right = 0.0F, top = 0.0F;
    WorldToDevice(x1, y1, &left, &bottom);
    WorldToDevice(x2, y2, &right, &top);
    if (image.rgb.empty() || !areFinite({left, bottom, right, top}))
        return;
    emitLine(formatted("gsave %.2f %.2f translate %.2f %.2f scale", static_cast<double>(left),
                       static_cast<double>(bottom), static_cast<double>(right - left),
                       static_cast<double>(top - bottom)));
    for (const std::string& line : veltrac::psImageLines(image))
        emitLine(line);
    emitLine("grestore");
}

void PostscriptDriver::SetClip(bool on)
{
    stroke();
    if (m_clips > 0) {
        // A second clip replaces the first one; inside of it, it would be the part of both.
        emitLine("grestore");
        --m_clips;
        forgetAttributes();
    }
    if (!on)
        return;
    emitLine("gsave");
    ++m_clips;
    outline();
    endPath("closepath clip");
}

void PostscriptDriver::ClearViewport()
{
    stroke();
    emitLine("gsave 1 setgray");
    outline();
    endPath("fill grestore");
}

void PostscriptDriver::DrawMarker(float x, float y, int marker, int size)
{
    float centreX = 0.0F, centreY = 0.0F;
    WorldToDevice(x, y, &centreX, &centreY);
    if (!areFinite({centreX, centreY}))
        return;
    const int style = m_lineStyle;
    SetLineStyle(0);
    stroke();
    // As wide as the glyphs that are only stroked.
    drawMarkerPath(*this, centreX, centreY, marker, size,
                   [this] { endPath("closepath gsave fill grestore _s"); });
    stroke();
    SetLineStyle(style);
}

void PostscriptDriver::SetColor(float r, float g, float b)
{
    if (isCurrentColor(r, g, b))
        return;
    stroke();
    const auto component = [](float c) { return static_cast<double>(c >= 0.0F ? std::min(c, 1.0F) : 0.0F); };
    emitLine(formatted("%f %f %f setrgbcolor", component(r), component(g), component(b)));
    BasicDriver::SetColor(r, g, b);
}

void PostscriptDriver::SetLineStyle(int style)
{
    if (style == m_lineStyle)
        return;
    stroke();
    std::string line = "[";
    for (const int length : dashPattern(style)) {
        if (length == 0)
            break;
        if (line.size() > 1)
            line += ' ';
        line += std::to_string(length);
    }
    line += "] 0 _P";
    emitLine(line);
    m_lineStyle = style;
}

void PostscriptDriver::SetLineWidth(float width)
{
    if (width == m_lineWidth || !std::isfinite(width))
        return;
    stroke();
    const double scale = m_parameters.lineWidthScale;
    const double mm = static_cast<double>(width);
    emitLine(formatted("%4.2f _w %% %.2f %.2f", 5.0 * mm * scale * kPointsPerMm, mm, scale));
    m_lineWidth = width;
}

void PostscriptDriver::DeviceMoveTo(float x, float y)
{
    m_x = x;
    m_y = y;
    m_movePending = true;
}

void PostscriptDriver::DeviceLineTo(float x, float y)
{
    if (m_segments > kMostSegments && !m_filling)
        stroke();
    ++m_segments;
    std::string line;
    if (!m_pathOpen) {
        line += "_n  ";
        // Without a move the path would begin nowhere.
        m_movePending = true;
    }
    m_pathOpen = true;
    if (m_movePending)
        line += formatted("%.1f %.1f _m  ", clamped(m_x), clamped(m_y));
    m_movePending = false;
    m_x = x;
    m_y = y;
    emitLine(line + formatted("%.1f %.1f _l ", clamped(x), clamped(y)));
}

void PostscriptDriver::Dot(float x, float y)
{
    stroke();
    float deviceX = 0.0F, deviceY = 0.0F;
    WorldToDevice(x, y, &deviceX, &deviceY);
    if (areFinite({deviceX, deviceY}))
        emitLine(compactedLine(
            formatted("%.1f %.1f _d", static_cast<double>(deviceX), static_cast<double>(deviceY))));
}

void PostscriptDriver::Arc(float x, float y, float radius, float startAngle, float endAngle, bool fill)
{
    stroke();
    float deviceX = 0.0F, deviceY = 0.0F;
    WorldToDevice(x, y, &deviceX, &deviceY);
    const float points = deviceRadius(radius);
    if (!areFinite({deviceX, deviceY, points, startAngle, endAngle}))
        return;
    emitLine(formatted("_n %.1f %.1f %.1f %.1f %.1f %s", static_cast<double>(deviceX),
                       static_cast<double>(deviceY), static_cast<double>(points),
                       static_cast<double>(startAngle), static_cast<double>(endAngle),
                       fill ? "arc fill" : "arc stroke"));
}

void PostscriptDriver::Polyline(const float* points, int count, bool closed, bool fill)
{
    if (count < 1)
        return;
    stroke();
    m_filling = fill;
    MoveTo(points[0], points[1]);
    for (int i = 1; i < count; ++i)
        LineTo(points[2 * i], points[2 * i + 1]);
    if (closed || fill)
        LineTo(points[0], points[1]);
    m_filling = false;
    endPath(fill ? "_f" : "_s");
}

void PostscriptDriver::FilledBox(float x1, float y1, float x2, float y2, bool fill)
{
    const float corners[] = {x1, y1, x2, y1, x2, y2, x1, y2};
    Polyline(corners, 4, true, fill);
}

void PostscriptDriver::Symbol(float x, float y, int marker)
{
    constexpr double kPartOfFont = 0.4;
    DrawMarker(x, y, marker, std::max(4, static_cast<int>(kPartOfFont * m_parameters.baseFontSize)));
}

void PostscriptDriver::WriteBytes(const char* buffer, int count)
{
    BasicDriver::WriteBytes(buffer, count);
    if (outputIsWhole())
        m_bytesWritten += static_cast<std::uint64_t>(std::max(count, 0));
}

void PostscriptDriver::emitLine(std::string line)
{
    line += '\n';
    PostscriptDriver::WriteBytes(line.data(), static_cast<int>(line.size()));
}

// -- Fonts and texts --

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
    psTextExtent(string, points, m_deviceXMax - m_deviceXMin, m_deviceYMax - m_deviceYMin, width, height);
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
