// Two variables against each other, from a plot window.
#pragma once

#include <memory>

#include "core/XyPath.h"
#include "share/SubWindow.h"

class HsVariable;
class PlotCanvas;

namespace veltrac {

class XyWin : public SubWindow
{
    Q_OBJECT

public:
    // Rows of two variables of one source, both built; `name` is what pictures are called.
    XyWin(std::shared_ptr<HsVariable> x, std::shared_ptr<HsVariable> y, const SampleRange& rows,
          const QString& name);

    const XyPath& path() const noexcept { return *m_path; }

public slots:
    // Joins the samples anew, as finely as the view wants it.
    void sl_refine();

private:
    void createMenus();
    // Shows the path in a plot of its own.
    void showPath();
    bool join(const XyPath::Rectangle& seen);
    void tell();

    std::shared_ptr<HsVariable> m_x;
    std::shared_ptr<HsVariable> m_y;
    SampleRange m_rows;
    std::shared_ptr<XyPath> m_path;
    PlotCanvas* m_canvas;
};

}  // namespace veltrac
