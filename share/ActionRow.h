// A window's actions as a table of rows, and the one loop that makes them.
#pragma once

#include <QString>

#include <map>
#include <span>

class QAction;
class QWidget;

namespace veltrac {

// Texts are UTF-8. `Id` is the window's own enumeration of its actions.
template <typename Id>
struct ActionRow
{
    Id id;
    const char* image;     // ":/img_" + image; empty for none
    const char* shortcut;  // empty for none
    const char* slot;      // of the window, as SLOT() writes it
    const char* text;
    const char* tip;
    const char* whatsThis = "";  // empty: the tip
    bool checkable = false;
};

// An action that belongs to the window; its key works whatever menu or bar shows it.
QAction* makeAction(QWidget* window, const char* image, const char* shortcut, const char* slot,
                    const char* text, const char* tip, const char* whatsThis, bool checkable);

template <typename Id>
QAction* makeAction(QWidget* window, const ActionRow<Id>& row)
{
    return makeAction(window, row.image, row.shortcut, row.slot, row.text, row.tip, row.whatsThis,
                      row.checkable);
}

// An action for each row.
template <typename Id>
std::map<Id, QAction*> makeActions(QWidget* window, std::span<const ActionRow<Id>> rows)
{
    std::map<Id, QAction*> actions;
    for (const ActionRow<Id>& row : rows)
        actions[row.id] = makeAction(window, row);
    return actions;
}

}  // namespace veltrac
