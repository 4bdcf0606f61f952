#include "share/QtPlotWin1.h"

#include <QFileInfo>
#include <QIcon>

#include "share/PlotCanvas.h"
#include "share/Resources.h"

using namespace veltrac;

QtPlotWin::QtPlotWin(const QString& file, QWidget* parent) : PlotWindow(parent)
{
    loadResources();
    const QFileInfo info(file);
    setWindowTitle(file.isEmpty() ? tr("Ts-Plot") : tr("Ts-Plot: %1").arg(info.fileName()));
    setWindowIcon(QIcon(QStringLiteral(":/img_PlotTs")));
    canvas()->setSuggestedName(info.completeBaseName());
    if (!file.isEmpty())
        addFile(file);
}
