#include "share/CursorDock.h"

#include "share/CursorTable.h"

namespace veltrac {

CursorDock::CursorDock(PlotCanvas* canvas, QWidget* parent) : QDockWidget(tr("Cursors"), parent)
{
    setObjectName(QStringLiteral("cursorDock"));
    setWidget(new CursorTable(canvas));
}

}  // namespace veltrac
