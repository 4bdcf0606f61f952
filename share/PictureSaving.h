// "Save picture…" of all windows that draw: which kind of file, how large, how fine.
#pragma once

#include <QString>

#include "share/PsParameters.h"

class QWidget;

namespace veltrac {

class PlotPicture;

struct PictureRequest
{
    enum class Format { Png, Svg, Pdf };

    Format format = Format::Png;
    double widthMm = 0.0;  // SVG has the sheet's size instead
    double heightMm = 0.0;
    int dotsPerInch = 96;      // of PNG; 96 are those of the screen, whose sizes of texts and lines count
    bool isAsOnScreen = true;  // PNG has the screen's colours, else those of paper
    bool hasCursors = true;
};

// The size that a widget has on a screen of 96 dots per inch, in millimetres.
double millimetresOf(int pixels);
// What a PNG file has.
int pixelsOf(double millimetres, int dotsPerInch);
// Why there can be no such picture; empty where there can.
QString pictureComplaint(const PictureRequest& request);

// Asks for all of it; false after a cancel.
bool askPicture(QWidget* window, PictureRequest& request);

// Writes the plot of a picture as a file, with PostScript settings for the sheet of SVG; an older file is
// replaced only by a whole one, and not where columns of the plot cannot be read. Returns the failure's text,
// empty where the file is whole.
QString writePlotPicture(const QString& fileName, const PictureRequest& request, const PlotPicture& picture,
                         const PsParameters& parameters);
// Asks for everything and for a file name (`name` without an extension first); failures are told in a box.
// Returns the file's name, empty where nothing was written.
QString savePlotPicture(QWidget* window, const QString& name, PictureRequest& request,
                        const PlotPicture& picture, const PsParameters& parameters);

}  // namespace veltrac
