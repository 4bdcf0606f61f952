// The first lines of a smart tool log on the screen, each coloured across the whole view.
#pragma once

#include <QTableView>

#include "converters/STLLines.h"

namespace veltrac {

class STLPreview : public QTableView
{
    Q_OBJECT

public:
    // Borrows the lines.
    explicit STLPreview(STLLines& lines, QWidget* parent = nullptr);

    // Makes the lines as wide as the view, where they are narrower.
    void widen();

protected:
    void resizeEvent(QResizeEvent* event) override;
};

}  // namespace veltrac
