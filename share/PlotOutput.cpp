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
    const QImage picture = image();
    PlotLayout layout = pictureLayout();
    // What shows a text in place of a plot is no picture of it.
    if (layout.groups.empty()) {
        QString reason = text();
        if (reason.isEmpty())
            reason = plot().reference() ? tr("The plot cannot be drawn") : tr("Nothing is shown");
        if (reason.endsWith(QLatin1Char('.')))
            reason.chop(1);
        layout.unread.push_back(reason.toUtf8().toStdString());
    }
    const QString file = savePicture(window(), m_suggestedName, layout, picture);
    if (!file.isEmpty())
        emit x_told(tr("Saved %1").arg(file));
}

void PlotOutput::sl_saveSvg()
{
    const QString file = saveSvgPicture(window(), m_suggestedName, m_psParameters, plot(), colors());
    if (!file.isEmpty())
        emit x_told(tr("Saved %1").arg(file));
}

void PlotOutput::sl_print()
{
    if (printPlot(window(), m_suggestedName, plot(), colors()))
        emit x_told(tr("Printed."));
}

}  // namespace veltrac
