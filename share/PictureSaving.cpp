#include "share/PictureSaving.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QPageLayout>
#include <QPageSize>
#include <QPushButton>

#include <algorithm>
#include <array>
#include <cmath>

#include "core/FailureText.h"
#include "share/Boxes.h"
#include "share/NumberField.h"
#include "share/PlotExport.h"
#include "share/PlotPicture.h"
#include "share/QtDriver.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

constexpr double kMmOfAnInch = 25.4;
constexpr int kScreenDots = 96;
constexpr int kFewestDots = 50;
constexpr int kMostDots = 1200;
constexpr double kLeastMm = 20.0;
constexpr double kMostMm = 2000.0;
constexpr int kMostPixels = 20000;  // beyond, lines of a picture are cut
constexpr int kDialogWidth = 360;

struct PictureFormat
{
    const char* name;
    const char* suffix;
    const char* filter;
};
// In the order of PictureRequest::Format.
constexpr std::array<PictureFormat, 3> kPictureFormats{
    {{"PNG, pixels", "png", "Pictures (*.png)"},
     {"SVG, lines for web pages and texts", "svg", "SVG pictures (*.svg)"},
     {"PDF, a page of lines", "pdf", "PDF files (*.pdf)"}}};

const PictureFormat& formatOf(const PictureRequest& request)
{
    return kPictureFormats[static_cast<std::size_t>(request.format)];
}

QString notSaved(const QString& reason)
{
    return QObject::tr("No picture was saved: %1").arg(reason);
}

QString writePng(const QString& fileName, const PictureRequest& request, const PlotPicture& picture)
{
    const int width = pixelsOf(request.widthMm, request.dotsPerInch);
    const qreal ratio = static_cast<qreal>(request.dotsPerInch) / kScreenDots;
    QImage image(width, pixelsOf(request.heightMm, request.dotsPerInch), QImage::Format_RGB32);
    if (image.isNull())
        return QObject::tr("There is not enough memory for the picture.");
    image.setDevicePixelRatio(ratio);
    image.fill(request.isAsOnScreen ? picture.palette().color(QPalette::Base) : QColor(Qt::white));
    QtDriver driver(&image);
    driver.BeginPage(0);
    PlotLook look = request.isAsOnScreen ? picture.screenLook() : picture.lightLook();
    look.cursors = request.hasCursors;
    look.markerGap = static_cast<int>(std::lround(look.markerGap * ratio));
    look.penUnits *= static_cast<float>(ratio);
    const PlotLayout layout = drawPlot(picture.plot(), driver, width, look);
    driver.EndPage();
    if (const QString unread = unreadText(layout); !unread.isEmpty())
        return notSaved(unread);
    if (layout.groups.empty())
        return notSaved(QObject::tr("Nothing is shown"));
    constexpr double kMmPerMetre = 1000.0;
    const int dots = static_cast<int>(std::lround(request.dotsPerInch / kMmOfAnInch * kMmPerMetre));
    image.setDotsPerMeterX(dots);
    image.setDotsPerMeterY(dots);
    image.setDevicePixelRatio(1.0);  // the file tells its resolution
    return writePicture(fileName, image);
}

// The dialog's fields.
struct PictureFields
{
    QComboBox* format;
    NumberField* width;
    NumberField* height;
    NumberField* dots;
    QComboBox* ground;
    QCheckBox* cursors;

    explicit PictureFields(const PictureRequest& request)
        : format(new QComboBox),
          width(new NumberField(QString::number(request.widthMm, 'g', 4))),
          height(new NumberField(QString::number(request.heightMm, 'g', 4))),
          dots(new NumberField(QString::number(request.dotsPerInch))),
          ground(new QComboBox),
          cursors(new QCheckBox(QObject::tr("With the c&ursors")))
    {
        for (const PictureFormat& row : kPictureFormats)
            format->addItem(QObject::tr(row.name));
        format->setCurrentIndex(static_cast<int>(request.format));
        ground->addItems({QObject::tr("as on the screen"), QObject::tr("white, as on paper")});
        ground->setCurrentIndex(request.isAsOnScreen ? 0 : 1);
        cursors->setChecked(request.hasCursors);
        dots->setWhole(kFewestDots, kMostDots);
    }
    void addTo(QFormLayout& form) const
    {
        form.addRow(QObject::tr("&Format:"), format);
        form.addRow(QObject::tr("&Width [mm]:"), width);
        form.addRow(QObject::tr("&Height [mm]:"), height);
        form.addRow(QObject::tr("&Resolution [dots per inch]:"), dots);
        form.addRow(QObject::tr("&Colours:"), ground);
        form.addRow(cursors);
    }
    PictureRequest request() const
    {
        return {static_cast<PictureRequest::Format>(format->currentIndex()),
                width->number(),
                height->number(),
                static_cast<int>(dots->number()),
                ground->currentIndex() == 0,
                cursors->isChecked()};
    }
    QString complaint() const
    {
        for (const NumberField* const field : {width, height, dots})
            if (!field->isValid())
                return field->reason();
        return pictureComplaint(request());
    }
    void enable() const
    {
        const auto chosen = request().format;
        width->setEnabled(chosen != PictureRequest::Format::Svg);
        height->setEnabled(chosen != PictureRequest::Format::Svg);
        dots->setEnabled(chosen == PictureRequest::Format::Png);
        ground->setEnabled(chosen == PictureRequest::Format::Png);
    }
    QString summary() const
    {
        const PictureRequest wanted = request();
        if (wanted.format == PictureRequest::Format::Svg)
            return QObject::tr("The sheet of \"Postscript parameters\", as large as it is shown");
        if (wanted.format == PictureRequest::Format::Pdf)
            return QObject::tr("A page of %1 x %2 mm").arg(wanted.widthMm).arg(wanted.heightMm);
        return QObject::tr("%1 x %2 pixels")
            .arg(pixelsOf(wanted.widthMm, wanted.dotsPerInch))
            .arg(pixelsOf(wanted.heightMm, wanted.dotsPerInch));
    }
};

}  // namespace

double millimetresOf(int pixels)
{
    return std::round(pixels * kMmOfAnInch / kScreenDots * 10.0) / 10.0;
}

int pixelsOf(double millimetres, int dotsPerInch)
{
    return static_cast<int>(std::lround(std::clamp(millimetres, 0.0, kMostMm) / kMmOfAnInch * dotsPerInch));
}

QString pictureComplaint(const PictureRequest& request)
{
    if (request.format == PictureRequest::Format::Svg)
        return {};
    for (const double length : {request.widthMm, request.heightMm})
        if (!(length >= kLeastMm && length <= kMostMm))
            return QObject::tr("A picture is 20 to 2000 mm wide and high.");
    if (request.format == PictureRequest::Format::Png &&
        std::max(pixelsOf(request.widthMm, request.dotsPerInch),
                 pixelsOf(request.heightMm, request.dotsPerInch)) > kMostPixels)
        return QObject::tr("A picture has at most 20 000 pixels a side. Take a lower resolution.");
    return {};
}

bool askPicture(QWidget* window, PictureRequest& request)
{
    QDialog dialog(window);
    dialog.setWindowTitle(QObject::tr("Save picture"));
    dialog.setMinimumWidth(kDialogWidth);
    auto* const form = new QFormLayout(&dialog);
    const PictureFields fields(request);
    fields.addTo(*form);
    auto* const summary = new QLabel(&dialog);
    summary->setWordWrap(true);
    form->addRow(summary);
    QPushButton* const save = addFormButtons(dialog, *form, QObject::tr("&Save as…"));
    const auto check = [&] {
        const QString complaint = fields.complaint();
        fields.enable();
        summary->setText(complaint.isEmpty() ? fields.summary() : complaint);
        save->setEnabled(complaint.isEmpty());
    };
    QObject::connect(fields.format, qOverload<int>(&QComboBox::currentIndexChanged), &dialog, check);
    for (const NumberField* const field : {fields.width, fields.height, fields.dots})
        QObject::connect(field, &NumberField::x_validated, &dialog, check);
    check();
    save->setDefault(true);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    request = fields.request();
    return true;
}

QString writePlotPicture(const QString& fileName, const PictureRequest& request, const PlotPicture& picture,
                         const PsParameters& parameters)
try {
    // What shows a text in place of a plot is no picture of it.
    if (!picture.text().isEmpty())
        return notSaved(picture.text());
    switch (request.format) {
        case PictureRequest::Format::Svg:
            return writePlotEps(fileName, parameters, picture.plot(), picture.colors(), request.hasCursors);
        case PictureRequest::Format::Pdf:
            return writePlotPdf(
                fileName,
                QPageLayout(QPageSize(QSizeF(request.widthMm, request.heightMm), QPageSize::Millimeter),
                            QPageLayout::Portrait, {}),
                picture.plot(), picture.colors(), false, request.hasCursors);
        case PictureRequest::Format::Png:
            break;
    }
    return writePng(fileName, request, picture);
} catch (...) {
    return notSaved(QString::fromLocal8Bit(reasonOfFailure().c_str()));
}

QString savePlotPicture(QWidget* window, const QString& name, PictureRequest& request,
                        const PlotPicture& picture, const PsParameters& parameters)
{
    if (!askPicture(window, request))
        return {};
    const QString title = QObject::tr("Save picture");
    const QString suffix = QLatin1String(formatOf(request).suffix);
    QString file = askSaveName(
        window, {title, name + QLatin1Char('.') + suffix, QObject::tr(formatOf(request).filter), suffix});
    if (file.isEmpty())
        return {};
    const QString failure = writePlotPicture(file, request, picture, parameters);
    if (failure.isEmpty())
        return file;
    showBox(QMessageBox::Warning, window, title, failure);
    return {};
}

}  // namespace veltrac
