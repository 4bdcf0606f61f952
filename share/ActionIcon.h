// The icons of actions.
#pragma once

#include <QIcon>

namespace veltrac {

// The icon of the resource ":/img_" + image, on a plate of its own where it is highlighted: its colours are
// made for a window, and a menu's highlight may be any colour. Null where there is no such image.
QIcon actionIcon(const QString& image);

}  // namespace veltrac
