// A filter's characteristic on a canvas.
#pragma once

#include "filter/FilterCharacteristic.h"

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

}  // namespace veltrac
