// The fonts of paper: what a request for one comes to under the settings.
#pragma once

#include <cmath>
#include <cstring>
#include <string_view>

#include "share/BasicDriver.h"
#include "share/PsParameters.h"
#include "share/Transliteration.h"

namespace veltrac {

// Courier's width, in parts of its height; digits of the other families are narrower.
inline constexpr float kPsTextWidthFactor = 0.6F;

struct PsFont
{
    int family = kFontHelvetica;
    bool bold = false;
    float points = 0.0F;
};

// The family that texts have which name none, by the first letter of the settings' font name.
inline int psFamilyOf(const char* fontName)
{
    switch (*fontName) {
        case 'T':
            return kFontTimes;
        case 'C':
            return kFontCourier;
        default:
            return kFontHelvetica;
    }
}

// Size and flags as of BasicDriver::FontControl().
inline PsFont psFontOf(const PsParameters& parameters, float size, int flags)
{
    PsFont font{flags & kFontFamilyMask, (flags & kFontBold) != 0};
    if (font.family == 0) {
        font.family = psFamilyOf(parameters.fontName);
        font.bold = false;
    }
    constexpr int kSizeUnit = kFontSizeInMetres | kFontSizeInPoints;
    double points = static_cast<double>(size) * parameters.baseFontSize;
    if ((flags & kSizeUnit) == kFontSizeInPoints)
        points = static_cast<double>(size);
    else if ((flags & kSizeUnit) == kFontSizeInMetres)
        points = 1000.0 * static_cast<double>(size) * kPointsPerMm;
    if (points == 0.0 || !std::isfinite(points))
        points = parameters.baseFontSize;
    font.points = static_cast<float>(points);
    return font;
}

// What is set of a text of BasicDriver::Text(): as far as its length or its end, without blanks there.
inline std::string_view textToSet(const char* string, int length)
{
    std::string_view text(
        string, length > 0 ? strnlen(string, static_cast<std::size_t>(length)) : std::strlen(string));
    while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ')
        text.remove_suffix(1);
    return text;
}

// What BasicDriver::TextExtent() answers for a text of a height in points, on a drawing area of so many
// points: all letters are reckoned as wide as Courier's.
inline void psTextExtent(const char* string, float points, float areaWidth, float areaHeight, float* width,
                         float* height)
{
    if (width != nullptr)
        *width = static_cast<float>(standardText(string).size()) * points * kPsTextWidthFactor / areaWidth;
    if (height != nullptr)
        *height = points * kPsTextWidthFactor / areaHeight;
}

}  // namespace veltrac
