// Writes a picture as SVG 1.1: the same as the hard copy of PostscriptDriver, with texts as texts.
//
// Device units are points. Lines are as wide, and texts reckoned as long, as on PostScript, so that a plot
// comes to lie alike on both. Texts keep all their letters.
#pragma once

#include <string>

#include "share/BasicDriver.h"
#include "share/ImageDevice.h"
#include "share/PsParameters.h"

namespace veltrac {

class SvgDriver : public BasicDriver, public ImageDevice
{
public:
    // Opens the file ("-": standard output) and writes the head.
    SvgDriver(const char* fileName, const PsParameters& parameters);
    // finish().
    ~SvgDriver() override;

    void BeginPage(int flags) override;
    void EndPage() override;
    void SetClip(bool on) override;
    void ClearViewport() override;
    void DrawMarker(float x, float y, int marker, int size) override;
    void SetColor(float r, float g, float b) override;
    void SetLineStyle(int style) override;
    // 5 × width × line width scale millimetres, as on PostScript.
    void SetLineWidth(float width) override;
    void DeviceLineTo(float x, float y) override;
    void DeviceMoveTo(float x, float y) override;
    void Dot(float x, float y) override;
    void Arc(float x, float y, float radius, float startAngle, float endAngle, bool fill) override;
    void Polyline(const float* points, int count, bool closed, bool fill) override;
    void FontControl(float size, int flags) override;
    void Text(const char* string, int length, float angle, int flags) override;
    void TextExtent(const char* string, float* width, float* height) override;
    void DrawStamp(int id, const char* text) override;
    // As an embedded PNG.
    void DrawImage(float x1, float y1, float x2, float y2, const PixelImage& image) override;

    // Writes the end and closes the file, once. True where all of it was written; nothing can be drawn any
    // more.
    bool finish();

private:
    std::string point(float x, float y) const;
    std::string viewportBox() const;
    std::string fillAttribute() const;
    std::string strokeAttributes() const;
    void stroke();
    // Writes the path that was begun, with these attributes.
    void endPath(const std::string& attributes);
    void emitLine(std::string line);

    PsParameters m_parameters;
    std::string m_path;  // data of the path under construction
    int m_segments = 0;
    bool m_movePending = true;
    int m_clips = 0;  // made so far
    bool m_isClipped = false;
    int m_family = 0;
    bool m_bold = false;
    bool m_finished = false;
    bool m_whole = false;
};

}  // namespace veltrac
