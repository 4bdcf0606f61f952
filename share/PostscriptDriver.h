// Writes a PostScript level 1 file, as a rule an Encapsulated one. Device units are points.
//
// The driver stays silent: ask finish() whether the file is whole. Everything written is ASCII; characters
// that the fonts' standard encoding lacks are written in other words (share/Transliteration.h). The
// process's numeric locale is set to "C" at each page.
#pragma once

#include <cstdint>
#include <string>

#include "share/BasicDriver.h"
#include "share/ImageDevice.h"
#include "share/PsParameters.h"

class PostscriptDriver : public BasicDriver, public veltrac::ImageDevice
{
public:
    // Opens the file ("-": standard output) and writes the prolog. Without parameters the font is Times-Roman
    // and the creator "unknown", which differs from the record's own defaults on purpose.
    explicit PostscriptDriver(const char* fileName, const PsParameters* parameters = nullptr);
    // finish().
    ~PostscriptDriver() override;

    void BeginPage(int flags) override;
    void EndPage() override;
    void SetClip(bool on) override;
    void ClearViewport() override;
    void DrawMarker(float x, float y, int marker, int size) override;
    void SetColor(float r, float g, float b) override;
    void SetLineStyle(int style) override;
    // 5 × width × line width scale millimetres, wider than the screen's by design.
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
    void WriteBytes(const char* buffer, int count) override;
    // In colour, by operators of level 2, which every interpreter of today has.
    void DrawImage(float x1, float y1, float x2, float y2, const veltrac::PixelImage& image) override;

    // Slots 45 and 46: a box of the world; a marker at the size that suits the base font.
    virtual void FilledBox(float x1, float y1, float x2, float y2, bool fill);
    virtual void Symbol(float x, float y, int marker);

    // Writes the trailer and closes the file, once. True where all of it was written; nothing can be drawn
    // any more.
    bool finish();

    const PsParameters& parameters() const noexcept { return m_parameters; }
    std::uint64_t bytesWritten() const noexcept { return m_bytesWritten; }

private:
    void setDeviceArea();
    void writeProlog();
    void stroke();
    void endPath(const char* operation);
    void outline();
    void forgetAttributes();
    void writeFont();
    void emitLine(std::string line);

    PsParameters m_parameters;
    int m_segments = 0;
    bool m_pathOpen = false;
    bool m_movePending = false;
    bool m_filling = false;  // the path under construction is going to be filled
    int m_clips = 0;
    int m_page = 0;
    int m_family = 0;  // 0: none written yet
    bool m_bold = false;
    bool m_fontKnown = false;  // the file's current font is the one above
    bool m_finished = false;
    bool m_whole = false;
    std::uint64_t m_bytesWritten = 0;
};
