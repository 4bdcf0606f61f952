// A marker's glyph as paths, for the drivers that write them.
#pragma once

#include "share/BasicDriver.h"

namespace veltrac {

// Moves and draws on the device from stroke to stroke; `close` closes and fills what was drawn since the last
// move. `size` in device units.
template <typename Close>
void drawMarkerPath(BasicDriver& driver, float centreX, float centreY, int marker, int size, Close close)
{
    const float unit = static_cast<float>(size) / 4.0F;
    for (const MarkerStroke* s = driver.MarkerStrokes(marker); s->code != MarkerStroke::End; ++s) {
        const float x = centreX + s->x * unit;
        const float y = centreY + s->y * unit;
        if (s->code == MarkerStroke::Move)
            driver.DeviceMoveTo(x, y);
        else if (s->code == MarkerStroke::Draw)
            driver.DeviceLineTo(x, y);
        else
            close();
    }
}

}  // namespace veltrac
