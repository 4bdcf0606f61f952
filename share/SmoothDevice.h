// What a device can do that draws lines between places finer than its pixels.
#pragma once

#include "share/BasicDriver.h"

namespace veltrac {

class SmoothDevice
{
public:
    virtual ~SmoothDevice() = default;
    // Lines from here on are antialiased, or lie on whole pixels again.
    virtual void setSmooth(bool on) = 0;
};

// Of a driver that is such a device; of others nothing happens, whose lines are as fine as they can be.
inline void setSmooth(BasicDriver& driver, bool on)
{
    if (auto* const device = dynamic_cast<SmoothDevice*>(&driver))
        device->setSmooth(on);
}

}  // namespace veltrac
