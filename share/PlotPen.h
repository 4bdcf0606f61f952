// The pen of a variable: its colour, width and dashes on a driver.
#pragma once

#include <cstddef>

#include "core/Variable.h"
#include "share/PlotLook.h"

class BasicDriver;

namespace veltrac {

class PlotPen
{
public:
    // Borrows both.
    PlotPen(BasicDriver& driver, const PlotLook& look) : m_driver(driver), m_look(look) {}

    void select(const Variable& v);
    // Glyphs are drawn with a thin, solid pen, whatever the line between them.
    void selectForMarkers();
    // A run of points, x and y in turn, in the line style of the variable that is selected.
    void line(const Variable& v, const float* points, std::size_t count);

private:
    int styleOf(const Variable& v) const;
    float widthOf(const Variable& v) const;
    bool cutsDashes(const Variable& v) const;

    BasicDriver& m_driver;
    const PlotLook& m_look;
};

}  // namespace veltrac
