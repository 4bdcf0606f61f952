// The settings of PostScript output. The main window holds one record; every plot window copies it and keeps
// its own, which its hard copies use and PsConfigDialog edits.
#pragma once

#include <array>

namespace veltrac {

inline constexpr double kPointsPerMm = 72.0 / 25.4;

}  // namespace veltrac

// How a plot's grid lines are drawn.
enum class GridStyle { None, Gray, Dotted, Black };

struct PsParameters
{
    // UTF-8, zero-terminated. The first letter of the font name picks the family of texts that name none:
    // 'T' Times, 'H' Helvetica, 'C' Courier, anything else Helvetica.
    char fontName[128] = "Helvetica";
    char creator[128] = "Kestrane PostScript plotting facility";
    double baseFontSize = 14.0;   // points; relative text sizes are multiplied by it
    double lineWidthScale = 0.8;  // multiplies every line width
    // Thickness of grid lines, relative to the plot's own lines.
    double grayGridThickness = 1.0;
    double dottedGridThickness = 2.0;
    double blackGridThickness = 0.2;
    bool eps = true;                    // Encapsulated PostScript: no margins, never rotated
    int margins[4] = {20, 20, 20, 20};  // millimetres: right, left, top, bottom
    int paper = 0;                      // row of kPapers
    int orientation = 1;                // 1 landscape, anything else portrait

    // The thickness that belongs to a grid style; 0 for no grid.
    double gridThickness(GridStyle style) const;
    // Copies a text into one of the fields above, cut at a whole character.
    static void setText(char (&field)[128], const char* text);
};

struct Paper
{
    const char* name;
    int width;   // points
    int height;  // points
};

namespace veltrac {

inline constexpr std::array<Paper, 4> kPapers{
    {{"A4", 595, 842}, {"A3", 842, 1190}, {"A5", 420, 595}, {"Letter", 612, 792}}};

// The sheet of a record; a paper index outside the table means the first row.
const Paper& paperOf(const PsParameters& parameters);

}  // namespace veltrac
