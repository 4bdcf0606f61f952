#include "share/PlotExport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "core/FailureText.h"
#include "core/SafeChange.h"
#include "share/Boxes.h"
#include "share/HardCopy.h"
#include "share/PlotPainter.h"
#include "share/QtDriver.h"
#include "share/TargetFile.h"

namespace veltrac {

QString unreadText(const PlotLayout& layout)
{
    QStringList columns;
    for (const std::string& column : layout.unread)
        columns.append(QString::fromStdString(column));
    return columns.isEmpty() ? QString()
                             : QObject::tr("%1. Hide what cannot be read, or read it again (F5)")
                                   .arg(columns.join(QStringLiteral("; ")));
}

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

std::vector<QColor> grayOf(std::vector<QColor> colors)
{
    for (QColor& c : colors)
        c.setRgb(qRgb(qGray(c.rgb()), qGray(c.rgb()), qGray(c.rgb())));
    return colors;
}

auto painter(const PsParameters& parameters, const Plot2D& plot, const std::vector<QColor>& colors,
             bool withCursors)
{
    PlotLook look = paperLook(parameters, plot.grid);
    look.colors = plotColors(colors);
    look.cursors = withCursors;
    return [look, &plot, columns = paperColumns(parameters)](BasicDriver& driver) {
        const PlotLayout layout = drawPlot(plot, driver, columns, look);
        if (!layout.unread.empty())
            throw std::runtime_error(unreadText(layout).toStdString());
        if (layout.groups.empty())
            throw std::runtime_error(QObject::tr("Nothing is shown").toStdString());
    };
}

// Replaces the file only by a whole one; returns the failure's text.
QString writeWhole(const QString& fileName, const QByteArray& bytes)
{
    try {
        const std::filesystem::path target(QFile::encodeName(fileName).toStdString());
        PendingFile pending(target, ".veltrac-part", target.extension().string());
        std::ofstream out(pending.path(), std::ios::binary);
        errno = 0;
        out.write(bytes.constData(), bytes.size());
        out.close();
        if (!out || bytes.isEmpty())
            throw std::system_error(errno != 0 ? errno : EIO, std::generic_category());
        pending.commit();
        return {};
    } catch (const std::system_error&) {
        return QObject::tr("%1 cannot be written: %2.")
            .arg(QFileInfo(fileName).fileName(), QString::fromStdString(reasonOfFailure()));
    }
}

constexpr int kDotsPerInch = 300;

// Returns the failure's text, empty where all of the plot was painted.
QString paintPage(QtDriver& driver, const Plot2D& plot, PlotLook look)
{
    driver.BeginPage(0);
    if (!driver.isPainting())
        return QObject::tr("The page cannot be painted.");
    // The driver reckons with the screen's 75 dots per inch.
    look.widthFactor = kDotsPerInch / 75.0F;
    // Glyphs count in pixels of the screen, of which the page has several.
    look.markerGap *= static_cast<int>(driver.characterUnit() / 11 + 1);
    const PlotLayout layout = drawPlot(plot, driver, driver.deviceRectangle().width(), look);
    driver.EndPage();
    return unreadText(layout);
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
    if (!image.save(&buffer, "PNG"))
        return QObject::tr("There is not enough memory for the picture.");
    return writeWhole(fileName, bytes);
}

QString writePlotPdf(const QString& fileName, const QPageLayout& page, const Plot2D& plot,
                     const std::vector<QColor>& colors, bool isGray, bool withCursors)
{
    // In memory first, too: a printer that prints to a file tells of no write that failed.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter pdf(&buffer);
    pdf.setCreator(QStringLiteral("Veltrac"));
    pdf.setTitle(QFileInfo(fileName).completeBaseName());
    pdf.setResolution(kDotsPerInch);
    pdf.setPageLayout(page);
    PlotLook look;
    look.colors = plotColors(isGray ? grayOf(colors) : colors);
    look.dashes = isGray;
    look.cursors = withCursors;
    QtDriver driver(&pdf);
    if (const QString failure = paintPage(driver, plot, look); !failure.isEmpty())
        return QObject::tr("%1 was not written: %2").arg(QFileInfo(fileName).fileName(), failure);
    return writeWhole(fileName, bytes);
}

bool printPlot(QWidget* window, const QString& name, const Plot2D& plot, const std::vector<QColor>& colors)
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setResolution(kDotsPerInch);
    printer.setPageOrientation(QPageLayout::Landscape);
    printer.setDocName(name);  // the dialog suggests it for a file
    QPrintDialog dialog(&printer, window);
    // Where it prints to a file it would propose the home directory.
    if (auto* const file = dialog.findChild<QLineEdit*>(QStringLiteral("filename")))
        file->setText(QDir::current().filePath(name + QStringLiteral(".pdf")));
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const bool isGray = printer.colorMode() == QPrinter::GrayScale;
    QString failure;
    if (!printer.outputFileName().isEmpty() && printer.outputFormat() == QPrinter::PdfFormat) {
        failure = writePlotPdf(printer.outputFileName(), printer.pageLayout(), plot, colors, isGray);
    } else {
        PlotLook look;
        look.colors = plotColors(colors);
        look.dashes = isGray;
        QtDriver driver(&printer);
        failure = paintPage(driver, plot, look);
        if (printer.printerState() == QPrinter::Error)
            failure = QObject::tr("The printer cannot be reached.");
        else if (!failure.isEmpty())
            printer.abort();
    }
    if (!failure.isEmpty())
        showBox(QMessageBox::Warning, window, QObject::tr("Print"), failure);
    return failure.isEmpty();
}

}  // namespace veltrac
