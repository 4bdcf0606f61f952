// A filter's characteristic as plots, for its window and for pictures of it.
#pragma once

#include <vector>

#include "core/Plot2D.h"
#include "filter/FilterCharacteristic.h"
#include "filter/FilterResponse.h"
#include "filter/FilterRoots.h"

namespace veltrac {

struct CharacteristicLook
{
    bool decibels = false;     // the gain, else as a factor
    bool logarithmic = false;  // the frequency
    bool phase = true;
};

// Gain with its half-power frequencies marked and, beneath it, phase.
Plot2D gainPlot(const FilterCharacteristic& characteristic, const CharacteristicLook& look);

// The other pages, likewise: the delay of each frequency in seconds; the answers to an impulse and a step;
// poles and zeros with the unit circle, whose axes squareRoots() makes equal.
Plot2D delayPlot(const std::vector<double>& frequencies, const std::vector<float>& delays, bool logarithmic);
Plot2D responsePlot(const FilterResponses& responses);
Plot2D rootPlot(const FilterRoots& roots);
// In a frame of that width and height, in any unit; a frame without room changes nothing.
void squareRoots(Plot2D& plot, double width, double height);

}  // namespace veltrac
