// What stands in the table of a directory without ts-files: that there are none, and what can be done.
#pragma once

class QWidget;

namespace veltrac {

class MainActions;

// Keeps itself in the middle of `area`, whose child it is.
QWidget* makeEmptyHint(const MainActions& actions, QWidget* area);

}  // namespace veltrac
