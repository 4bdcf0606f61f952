// A plot on paper and in picture files.
#pragma once

#include <QColor>
#include <QImage>
#include <QPageLayout>
#include <QString>

#include <vector>

#include "core/Plot2D.h"
#include "share/PlotPainter.h"
#include "share/PsParameters.h"

class QWidget;

namespace veltrac {

// A plot with columns that could not be read is refused by all of these: an older picture stays.

// Asks for a file name (`name` + ".eps" first) and writes the plot; failures are told in a box. Returns the
// file's name, empty where nothing was written.
QString plotHardCopy(QWidget* window, const QString& name, const PsParameters& parameters, const Plot2D& plot,
                     const std::vector<QColor>& colors, bool withCursors);
// The picture as SVG, cursors included, else as above.
QString saveSvgPicture(QWidget* window, const QString& name, const PsParameters& parameters,
                       const Plot2D& plot, const std::vector<QColor>& colors);
// The hard copy without a question, as SVG where the name ends so; returns the failure's text, empty when the
// file is whole.
QString writePlotEps(const QString& fileName, const PsParameters& parameters, const Plot2D& plot,
                     const std::vector<QColor>& colors, bool withCursors);

// Writes a PNG file; an older one is replaced only by a whole one. Returns the failure's text, empty where
// the file is whole.
QString writePicture(const QString& fileName, const QImage& image);
// The same after asking for a file name; the image shows a plot that came to lie as `layout` tells. Returns
// the file's name, empty where the user cancelled or it failed.
QString savePicture(QWidget* window, const QString& name, const PlotLayout& layout, const QImage& image);

// Writes a page of PDF; an older file is replaced only by a whole one. Without colours, dash patterns tell the
// lines apart. Returns the failure's text, empty where the file is whole.
QString writePlotPdf(const QString& fileName, const QPageLayout& page, const Plot2D& plot,
                     const std::vector<QColor>& colors, bool isGray = false);

// Asks for a printer to print `name` on; failures are told in a box. False where nothing was printed.
bool printPlot(QWidget* window, const QString& name, const Plot2D& plot, const std::vector<QColor>& colors);

}  // namespace veltrac
