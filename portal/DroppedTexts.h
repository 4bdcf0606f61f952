// Texts that were dropped on the main window: what they are, and by which importer they shall be read.
#pragma once

#include <QStringList>

#include <optional>

#include "converters/ImportKind.h"

class QWidget;

namespace veltrac {

// Asks how the texts are to be read, what they look like being the suggestion. Nothing where the user cancels
// or they cannot be read, which a box says.
std::optional<ImportKind> askImportKind(QWidget* window, const QStringList& texts);

// A file as the table shows it where it is in the working directory; else its whole path.
QString shownName(const QString& path);

}  // namespace veltrac
