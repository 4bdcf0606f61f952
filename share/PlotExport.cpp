#include "share/PlotExport.h"

#include <QBuffer>
#include <QFileDialog>
#include <QFileInfo>
#include <QPrintDialog>
#include <QPrinter>

#include <cerrno>
#include <fstream>
#include <system_error>

#include "core/ScratchFile.h"
#include "share/Boxes.h"
#include "share/HardCopy.h"
#include "share/PlotPainter.h"
#include "share/QtDriver.h"

namespace {

std::vector<PlotColor> plotColors(const std::vector<QColor>& colors)
{
    std::vector<PlotColor> out;
    out.reserve(colors.size());
    for (const QColor& c : colors)
        out.push_back(
            {static_cast<float>(c.redF()), static_cast<float>(c.greenF()), static_cast<float>(c.blueF())});
    return out;
}

auto painter(const PsParameters& parameters, const Plot2D& plot, const std::vector<QColor>& colors,
             bool withCursors)
{
    PlotLook look = paperLook(parameters, plot.grid);
    look.colors = plotColors(colors);
    look.cursors = withCursors;
    return [look, &plot, columns = paperColumns(parameters)](BasicDriver& driver) {
        drawPlot(plot, driver, columns, look);
    };
}

}  // namespace

QString plotHardCopy(QWidget* window, const QString& name, const PsParameters& parameters, const Plot2D& plot,
                     const std::vector<QColor>& colors, bool withCursors)
{
    return hardCopy(window, name + QStringLiteral(".eps"), parameters,
                    painter(parameters, plot, colors, withCursors));
}

QString writePlotEps(const QString& fileName, const PsParameters& parameters, const Plot2D& plot,
                     const std::vector<QColor>& colors, bool withCursors)
{
    return writeHardCopy(fileName, parameters, painter(parameters, plot, colors, withCursors));
}

QString writePicture(const QString& fileName, const QImage& image)
{
    // Composed in memory first: QImage does not notice a disk that is full.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    try {
        const std::filesystem::path target(fileName.toLocal8Bit().toStdString());
        const std::filesystem::path directory = target.parent_path().empty() ? "." : target.parent_path();
        ScratchFile scratch(directory, "picture", ".png");
        std::ofstream out(scratch.path(), std::ios::binary);
        errno = 0;
        out.write(bytes.constData(), bytes.size());
        out.close();
        if (!out || bytes.isEmpty())
            throw std::system_error(errno != 0 ? errno : EIO, std::generic_category());
        scratch.putInPlace(target);
        return {};
    } catch (const std::system_error& e) {
        return QObject::tr("%1 cannot be written: %2")
            .arg(QFileInfo(fileName).fileName(), QString::fromLocal8Bit(e.code().message().c_str()));
    }
}

QString savePicture(QWidget* window, const QString& name, const QImage& image)
{
    QString file = QFileDialog::getSaveFileName(
        window, QObject::tr("Save picture"), name + QStringLiteral(".png"), QObject::tr("Pictures (*.png)"));
    if (file.isEmpty())
        return {};
    if (QFileInfo(file).suffix().isEmpty())
        file += QStringLiteral(".png");
    const QString failure = writePicture(file, image);
    if (failure.isEmpty())
        return file;
    showBox(QMessageBox::Warning, window, QObject::tr("Save picture"), failure);
    return {};
}

bool printPlot(QWidget* window, const Plot2D& plot, const std::vector<QColor>& colors)
{
    constexpr int kDotsPerInch = 300;
    QPrinter printer(QPrinter::HighResolution);
    printer.setResolution(kDotsPerInch);
    printer.setPageOrientation(QPageLayout::Landscape);
    QPrintDialog dialog(&printer, window);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    PlotLook look;
    look.colors = plotColors(colors);
    QtDriver driver(&printer);
    driver.BeginPage(0);
    if (!driver.isPainting()) {
        const QString file = printer.outputFileName();
        showBox(QMessageBox::Warning, window, QObject::tr("Print"),
                file.isEmpty() ? QObject::tr("The printer cannot be reached.")
                               : QObject::tr("%1 cannot be written.").arg(file));
        return false;
    }
    // The driver reckons with the screen's 75 dots per inch.
    look.widthFactor = kDotsPerInch / 75.0F;
    // Glyphs count in pixels of the screen, of which the page has several.
    look.markerGap *= static_cast<int>(driver.characterUnit() / 11 + 1);
    drawPlot(plot, driver, driver.deviceRectangle().width(), look);
    driver.EndPage();
    return true;
}
