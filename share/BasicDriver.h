// The device that all plots are drawn on, in the manner of a small graphics kernel: set a world window (data
// units) and a viewport (fractions of the drawing area), then move, draw and write in world units. QtDriver
// paints on a widget, a picture or a printer, PostscriptDriver writes a file; a plot that is drawn through
// this class looks the same on all of them.
//
// World to device: device x = (xmax − xmin) · (viewport x1 + (x − window x1) · scale x) + xmin, likewise for
// y. Device units are pixels or points, y grows upwards. All coordinates are 32-bit floats: a caller with
// long time axes subtracts the axis' start in double first. Texts are UTF-8.
//
// The operations keep their places in the table below, which drivers built elsewhere count on: new ones go
// behind the last.
#pragma once

#include <cstdio>
#include <memory>
#include <vector>

#include "share/AxisTicks.h"
#include "share/PsParameters.h"

namespace veltrac {

// Colour indexes: 1 is the text colour (black on paper), variables have 7 and up.
inline constexpr int kTextColor = 1;
inline constexpr int kFirstVariableColor = 7;

// Flags of FontControl().
inline constexpr int kFontTimes = 1;
inline constexpr int kFontHelvetica = 2;
inline constexpr int kFontCourier = 3;
inline constexpr int kFontFamilyMask = 0xFF;
inline constexpr int kFontBold = 0x100;
inline constexpr int kFontSizeInMetres = 0x200;  // only on paper
inline constexpr int kFontSizeInPoints = 0x400;  // only on paper

// Markers 1 to kMarkerCount are told apart at a size of 4.
inline constexpr int kMarkerCount = 14;

}  // namespace veltrac

// One pen movement of a marker glyph; x and y lie within -2 to 2, where 4 is the whole glyph's size.
struct MarkerStroke
{
    enum Code { Move = 0, Draw = 1, Fill = 2, End = 3 };
    int code;  // Fill closes and fills what was drawn since the last Move; End ends the glyph
    float x, y;
};

// How an axis is drawn; line widths are what SetLineWidth() takes.
struct AxisStyle
{
    double origin = 0.0;  // the tick position at which the world coordinate is 0
    double scale = 1.0;   // ticks' units in a unit of the world; for spans that a float cannot hold
    float lineWidth = 0.1F;
    GridStyle grid = GridStyle::None;
    float gridWidth = 0.1F;
    bool hasLabels = true;
    const char* title = nullptr;  // null or empty for none
};

class BasicDriver
{
public:
    BasicDriver();
    BasicDriver(const BasicDriver&) = delete;
    BasicDriver& operator=(const BasicDriver&) = delete;

    // Slots 0 and 1.
    virtual ~BasicDriver();
    // 2, 3: a page. Every BeginPage() forgets colour, style, width and size, so that the first requests are
    // carried out; a non-zero flag clears the viewport.
    virtual void BeginPage(int flags);
    virtual void EndPage();
    // 4: hands pending output on.
    virtual void Flush();
    // 5, 6: always 0, 0, 1, 1.
    virtual void GetMaxViewport(float* x1, float* y1, float* x2, float* y2);
    virtual void GetMaxViewport(float* viewport);
    // 7 to 10: a window of no width (height) keeps the previous scale.
    virtual void SetViewport(float x1, float y1, float x2, float y2);
    virtual void SetViewport(const float* viewport);
    virtual void SetWindow(float x1, float y1, float x2, float y2);
    virtual void SetWindow(const float* window);
    // 11: to the viewport, or to the whole area. Set colour, style, width and font again behind
    // SetClip(false).
    virtual void SetClip(bool on) = 0;
    // 12
    virtual void ClearViewport() = 0;
    // 13: numbers above kMarkerCount begin again, below 1 nothing is drawn; the size is in pixels or points.
    virtual void DrawMarker(float x, float y, int marker, int size) = 0;
    // 14 to 17: colours, components 0 to 1. An unknown index changes nothing; a colour within 0.01 of the
    // current one is ignored. The newest definition of an index counts.
    virtual void SelectColor(int index);
    virtual void SetColor(float r, float g, float b);
    virtual void DefineColor(int index, float r, float g, float b);
    virtual int NextColorIndex();
    // 18, 19: do nothing; they keep the places of the operations behind them.
    virtual void ReservedBegin();
    virtual void ReservedEnd();
    // 20: 0 solid, 1 to 9 dashes; 21: millimetres.
    virtual void SetLineStyle(int style) = 0;
    virtual void SetLineWidth(float width) = 0;
    // 22, 23: world; 24, 25: device.
    virtual void LineTo(float x, float y);
    virtual void MoveTo(float x, float y);
    virtual void DeviceLineTo(float x, float y) = 0;
    virtual void DeviceMoveTo(float x, float y) = 0;
    // 26
    virtual void Dot(float x, float y);
    // 27
    virtual void Rectangle(float x1, float y1, float x2, float y2, int fill);
    // 28: a level text at the current point in the current font; length as in Text().
    virtual void Label(const char* string, int length);
    // 29: angles in degrees, counterclockwise. The radius is in parts of the viewport, the smaller of
    // radius × width and radius × height, whatever the window.
    virtual void Arc(float x, float y, float radius, float startAngle, float endAngle, bool fill) = 0;
    // 30: x, y pairs.
    virtual void Polyline(const float* points, int count, bool closed, bool fill);
    // 31: the size is relative to the device's base size (1 is normal).
    virtual void FontControl(float size, int flags);
    // 32: at the current point; length 0 means up to the terminating zero, the angle is in degrees. Flags:
    // family and weight as of FontControl(), 0 for the current font.
    virtual void Text(const char* string, int length, float angle, int flags) = 0;
    // 33: 0 left, bottom; 1 right, top; -900 and less leaves that one as it is.
    virtual void SetTextJustification(float h, float v);
    // 34: in fractions of the drawing area; either pointer may be null.
    virtual void TextExtent(const char* string, float* width, float* height) = 0;
    // 35 to 37: the axes of the current viewport and window. DrawFrame() outlines a rectangle of the world,
    // as a rule the window; DrawXAxis() and DrawYAxis() draw grid, ticks outside of the window's lower and
    // left side, and labels there. Colour, style and width are as before afterwards, texts are in the
    // current font; the justification is not kept. An x axis takes xAxisHeight() below the viewport,
    // a y axis yAxisWidth() beside it; its power of ten stands above it, two character heights high.
    virtual void DrawFrame(float x1, float y1, float x2, float y2, float lineWidth);
    virtual void DrawXAxis(const veltrac::AxisTicks& ticks, const AxisStyle& style);
    virtual void DrawYAxis(const veltrac::AxisTicks& ticks, const AxisStyle& style);
    // 38: the creator's small text in the lower left corner; id 1 puts a frame around it.
    virtual void DrawStamp(int id, const char* text);
    // 39
    virtual void WorldToDevice(float x, float y, float* deviceX, float* deviceY);
    // 40 to 42: "-" is standard output. A file that cannot be opened leaves the stream empty: writes do
    // nothing then, and outputIsWhole() tells.
    virtual void OpenOutput(const char* name);
    virtual void WriteBytes(const char* buffer, int count);
    virtual void WriteLine(const char* text);
    // 43
    virtual void UpdateScale();
    // 44: the glyph up to and with its End; the table lives as long as the program.
    virtual const MarkerStroke* MarkerStrokes(int marker);

    // Flushes and closes the output. True where it could be opened and every byte was written; a driver
    // without output has nothing whole.
    bool closeOutput();
    // So far.
    bool outputIsWhole() const noexcept { return m_output && m_outputError == 0; }
    // The errno of the first write that failed, or of the opening; 0 for none.
    int outputError() const noexcept { return m_outputError; }

    // What is in force now, for callers that put it back.
    float lineWidth() const noexcept { return m_lineWidth; }
    int lineStyle() const noexcept { return m_lineStyle; }

    // For the ticks of the axes under and beside the current viewport, in the current font.
    veltrac::LabelRoom xLabelRoom();
    veltrac::LabelRoom yLabelRoom();
    // Fractions of the drawing area: what an x axis takes below the viewport, and a y axis beside it.
    float xAxisHeight() const;
    float yAxisWidth(const veltrac::AxisTicks& ticks, const AxisStyle& style);

protected:
    struct Color
    {
        float r = -1.0F, g = -1.0F, b = -1.0F;
    };

    // By so many character heights a text is moved for each whole by which its horizontal justification
    // leaves 0 to 1.
    static constexpr float kJustificationShift = 0.6F;

    // True where SetColor() would ignore the colour.
    bool isCurrentColor(float r, float g, float b) const;
    // Device units of the current viewport's sides that a radius of 1 has.
    float deviceRadius(float radius) const;

    float m_windowX1 = 0.0F, m_windowY1 = 0.0F, m_windowX2 = 1.0F, m_windowY2 = 1.0F;
    float m_viewX1 = 0.0F, m_viewY1 = 0.0F, m_viewX2 = 1.0F, m_viewY2 = 1.0F;
    float m_scaleX = 1.0F, m_scaleY = 1.0F;
    float m_x = 0.0F, m_y = 0.0F;  // the current point, device
    float m_hJustification = 0.0F, m_vJustification = 0.0F;
    float m_deviceXMax = 1.0F, m_deviceYMax = 1.0F, m_deviceXMin = 0.0F, m_deviceYMin = 0.0F;
    Color m_color;
    bool m_colorChanged = false;
    int m_lineStyle = -1;
    float m_lineWidth = -1.0F;
    float m_characterHeight = -1.0F;  // device units

private:
    struct ColorEntry
    {
        std::unique_ptr<ColorEntry> next;
        int index;
        Color color;
    };

    struct Pen
    {
        Color color;
        int style;
        float width;
    };

    struct Box
    {
        float left, bottom, right, top;
    };

    struct PlacedTick
    {
        float at;  // device
        const veltrac::Tick* tick;
    };

    float characterHeight() const;
    float deviceWidth(const char* text);
    void drawSecondLine(const veltrac::AxisTicks& ticks, const AxisStyle& style, float y);
    Box windowBox();
    // Those within the window.
    std::vector<PlacedTick> placedTicks(const veltrac::AxisTicks& ticks, const AxisStyle& style, bool alongX);
    Pen pen() const;
    void restorePen(const Pen& pen);
    void beginGrid(const AxisStyle& style);
    void deviceLine(float x1, float y1, float x2, float y2);
    void deviceText(float x, float y, float h, float v, float angle, const char* text);

    std::unique_ptr<ColorEntry> m_colors;  // newest first
    std::FILE* m_output = nullptr;
    int m_outputError = 0;
};
