// The registry of the sub-programs: a new importer or computing window is one row of it, and one name in
// SubProgram.
#pragma once

#include <QString>

#include <span>

#include "portal/TsApplication.h"
#include "share/ActionRow.h"
#include "share/SubWindow.h"

namespace veltrac {

// Where the main window offers a sub-program: with the importers, with the computing windows, or by an action
// of its own table.
enum class Offered { Elsewhere, AsImporter, AsComputing };

struct SubProgramRow
{
    ActionRow<SubProgram> action;
    // Makes the window, not yet shown, on a file (empty where it takes none) and a column (from 1; 0 for
    // none). It deletes itself when it is closed.
    SubWindow* (*make)(const QString& file, unsigned column);
    Offered offered = Offered::Elsewhere;
};

std::span<const SubProgramRow> subPrograms();

bool isImporter(SubProgram kind);

// Null for a kind without a row.
SubWindow* makeSubProgram(SubProgram kind, const QString& file, unsigned column);

}  // namespace veltrac
