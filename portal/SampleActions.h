// The actions and menus of the list and edit window as tables of rows.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "share/ActionRow.h"

namespace veltrac {

enum class SampleAct {
    Save,
    SaveAs,
    Reload,
    WriteSelected,
    RestoreOldValues,
    Quit,
    Undo,
    Redo,
    Copy,
    CopyWithNames,
    Paste,
    SelectAll,
    Find,
    FindNext,
    FindPrevious,
    GoTo,
    PageUp,
    PageDown,
    Plot,
    Max,
    Min,
    Average,
    Grid,
    AltColours,
    Follow,
    Help,
};

using SampleActionRow = ActionRow<SampleAct>;

// Those of the window, of going and finding, and of changing values, each with the slots of its class.
std::span<const SampleActionRow> windowActions();
std::span<const SampleActionRow> searchActions();
std::span<const SampleActionRow> editorActions();

struct SampleMenuRow
{
    const char* title;
    std::vector<std::optional<SampleAct>> acts;  // nothing for a separator
};

// Actions that a window does not have are left out, and so are menus without any.
const std::vector<SampleMenuRow>& sampleMenus();

}  // namespace veltrac
