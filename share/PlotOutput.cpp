#include "share/PlotOutput.h"

#include <QApplication>
#include <QClipboard>

#include "portal/TsApplication.h"
#include "share/PlotExport.h"
#include "share/PsConfigDialog.h"

namespace veltrac {

PlotOutput::PlotOutput(QWidget* parent) : PlotView(parent)
{
    PsParameters::setText(m_psParameters.fontName, "Times-Roman");
    PsParameters::setText(m_psParameters.creator, "Veltrac");
    if (TsApplication* const application = TsApplication::instance())
        if (const PsParameters* const parameters = application->psParameters())
            m_psParameters = *parameters;
}

void PlotOutput::sl_copyReadout()
{
    QApplication::clipboard()->setText(QString::fromStdString(intervalText(plot())));
    emit x_told(tr("The read-out is in the clipboard."));
}

void PlotOutput::sl_copyPicture()
{
    QApplication::clipboard()->setImage(image());
    emit x_told(tr("The picture is in the clipboard."));
}

void PlotOutput::hardCopyOf(bool withCursors)
{
    const QString file =
        plotHardCopy(window(), m_suggestedName, m_psParameters, plot(), colors(), withCursors);
    if (!file.isEmpty())
        emit x_told(tr("Saved %1").arg(file));
}

void PlotOutput::sl_hardCopy()
{
    hardCopyOf(false);
}

void PlotOutput::sl_hardCopyWithCursors()
{
    hardCopyOf(true);
}

void PlotOutput::sl_psParameters()
{
    if (!m_psDialog)
        m_psDialog = new PsConfigDialog(&m_psParameters, window());
    m_psDialog->show();
    m_psDialog->raise();
    m_psDialog->activateWindow();
}

void PlotOutput::sl_savePicture()
{
    PictureRequest request = m_pictureRequest;
    if (request.widthMm == 0.0) {
        request.widthMm = millimetresOf(contentsRect().width());
        request.heightMm = millimetresOf(contentsRect().height());
    }
    const QString file = savePlotPicture(window(), m_suggestedName, request, *this, m_psParameters);
    if (file.isEmpty())
        return;
    m_pictureRequest = request;
    emit x_told(tr("Saved %1").arg(file));
}

void PlotOutput::sl_print()
{
    if (printPlot(window(), m_suggestedName, plot(), colors()))
        emit x_told(tr("Printed."));
}

}  // namespace veltrac
