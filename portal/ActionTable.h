// The main window's actions, menus and tool bars as tables of rows.
#pragma once

#include <QString>

#include <optional>
#include <span>

#include "share/ActionRow.h"

namespace veltrac {

// The actions of the main window itself; those that start a sub-program are rows of its registry.
enum class ActionId {
    Help,
    About,
    Create,
    ReadTsa,
    OtherDirectory,
    Refresh,
    ConfigurePostscript,
    ConfigureFont,
    Sorting,
    TsaHelp,
    StlHelp,
    Examples,
    Plot,
    WriteTsa,
    EditHeader,
    List,
    Edit,
    Delete,
    Quit,
};

// Repeated keys are wanted: Qt then reports an ambiguity and runs none of their actions.
std::span<const ActionRow<ActionId>> fixedActions();

// What acts on one file: a sub-menu of "&File" that lists the files, and an entry of a row's context menu.
struct FileActionRow
{
    ActionId action;
    const char* menuText;
    const char* menuSlot;     // takes the QAction* of the chosen file
    const char* contextText;  // %1 is the file's name
    const char* contextSlot;
};

std::span<const FileActionRow> fileActionRows();

// A place in a menu or tool bar for something else than one of these actions.
enum class Gap { Separator, FileMenus, RowHeight, WhatsThis, Importers, Computing };

struct BarItem
{
    BarItem(ActionId id) : action(id) {}  // NOLINT(google-explicit-constructor): rows read as lists
    BarItem(Gap place) : gap(place) {}    // NOLINT(google-explicit-constructor)

    std::optional<ActionId> action;
    std::optional<Gap> gap;
};

struct BarRow
{
    const char* title;
    std::span<const BarItem> items;
    bool hidden = false;
};

// What can be done in a directory, whatever is in it.
std::span<const BarItem> directoryItems();
std::span<const BarRow> menuRows();
std::span<const BarRow> toolBarRows();

}  // namespace veltrac
