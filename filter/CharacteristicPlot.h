// A filter's characteristic on a canvas.
#pragma once

#include "filter/FilterCharacteristic.h"
#include "filter/FilterResponse.h"
#include "filter/FilterRoots.h"

class PlotCanvas;

namespace veltrac {

struct CharacteristicLook
{
    bool decibels = false;     // the gain, else as a factor
    bool logarithmic = false;  // the frequency
    bool phase = true;
};

// Gain with its half-power frequencies marked and, beneath it, phase, in place of what the canvas showed.
void showCharacteristic(PlotCanvas& canvas, const FilterCharacteristic& characteristic,
                        const CharacteristicLook& look);

// The other pages, likewise: the delay of each frequency in seconds; the answers to an impulse and a step;
// poles and zeros with the unit circle, whose axes squareRoots() makes equal in the room that the canvas has.
void showDelays(PlotCanvas& canvas, const std::vector<double>& frequencies, const std::vector<float>& delays,
                bool logarithmic);
void showResponses(PlotCanvas& canvas, const FilterResponses& responses);
void showRoots(PlotCanvas& canvas, const FilterRoots& roots);
void squareRoots(PlotCanvas& canvas);

}  // namespace veltrac
