// The program's icons and help texts, which stand in a static library.
#pragma once

#include <QString>

namespace veltrac {

// Makes the resources known to Qt; any number of times.
void loadResources();

// A help text: resources/help/<name>.html.
QString helpText(const QString& name);

}  // namespace veltrac
