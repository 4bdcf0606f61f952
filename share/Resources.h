// The program's icons and help texts, which stand in a static library.
#pragma once

#include <QString>

// Makes the resources known to Qt; any number of times.
void loadResources();

// A help text: resources/help/<name>.html.
QString helpText(const QString& name);
