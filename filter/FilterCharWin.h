// The frequency characteristic of a filter: gain and phase over frequency.
#pragma once

#include "filter/FilterCharacteristic.h"
#include "share/SubWindow.h"

class PlotCanvas;
class QAction;

namespace veltrac {

class CursorDock;

class FilterCharWin : public SubWindow
{
    Q_OBJECT

public:
    FilterCharWin(const FilterCharacteristic& characteristic, const QString& spec, QWidget* parent = nullptr);

public slots:
    void sl_decibels(bool on);
    void sl_logarithmic(bool on);

private:
    void createActions();
    void plot();

    FilterCharacteristic m_characteristic;
    PlotCanvas* m_canvas;
    CursorDock* m_cursors;
    QAction* m_decibels = nullptr;
    QAction* m_logarithmic = nullptr;
};

}  // namespace veltrac
