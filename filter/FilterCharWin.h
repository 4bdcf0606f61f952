// What a filter does, a page each: gain and phase over frequency, group delay, answers to an impulse and a
// step, poles and zeros; and its numbers beneath.
#pragma once

#include "filter/FilterCharacteristic.h"
#include "filter/FilterResponse.h"
#include "filter/FilterRoots.h"
#include "share/SubWindow.h"

class PlotCanvas;
class QAction;
class QDockWidget;
class QTabBar;

namespace veltrac {

class CursorDock;

class FilterCharWin : public SubWindow
{
    Q_OBJECT

public:
    // Of a filter that the window does not keep, run in that way at a sampling frequency.
    FilterCharWin(const FidFilter* filter, double samplingHz, FilterPass pass, const QString& spec,
                  QWidget* parent = nullptr);

public slots:
    void sl_decibels(bool on);
    void sl_logarithmic(bool on);

private:
    enum Page { GainAndPhase, GroupDelay, Responses, PolesAndZeros };

    void createActions();
    QDockWidget* createNumbers();
    void plot();
    void fitRoots();

    FilterCharacteristic m_characteristic;
    std::vector<float> m_delays;
    FilterResponses m_responses;
    FilterRoots m_roots;
    bool m_hasPhase;
    QTabBar* m_pages;
    PlotCanvas* m_canvas;
    CursorDock* m_cursors;
    QDockWidget* m_numbers;
    QAction* m_decibels = nullptr;
    QAction* m_logarithmic = nullptr;
};

}  // namespace veltrac
