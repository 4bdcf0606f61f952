// A window's actions as a table of rows, and the one loop that makes them.
#pragma once

#include <QString>

#include <map>
#include <span>

class QAction;
class QObject;
class QWidget;

namespace veltrac {

// Texts are UTF-8. `Id` is the window's own enumeration of its actions.
template <typename Id>
struct ActionRow
{
    Id id;
    const char* image;     // ":/img_" + image; empty for none
    const char* shortcut;  // empty for none
    const char* slot;      // of the receiver, as SLOT() writes it
    const char* text;
    const char* tip;
    const char* whatsThis = "";  // empty: the tip
    bool checkable = false;
};

// An action that belongs to the receiver, the window or a part of it; its key works in the whole window,
// whatever menu or bar shows it.
QAction* makeAction(QWidget* window, QObject* receiver, const char* image, const char* shortcut,
                    const char* slot, const char* text, const char* tip, const char* whatsThis,
                    bool checkable);

template <typename Id>
QAction* makeAction(QWidget* window, QObject* receiver, const ActionRow<Id>& row)
{
    return makeAction(window, receiver, row.image, row.shortcut, row.slot, row.text, row.tip, row.whatsThis,
                      row.checkable);
}

// Adds an action for each row to `actions`.
template <typename Id>
void makeActions(QWidget* window, QObject* receiver, std::span<const ActionRow<Id>> rows,
                 std::map<Id, QAction*>& actions)
{
    for (const ActionRow<Id>& row : rows)
        actions[row.id] = makeAction(window, receiver, row);
}

}  // namespace veltrac
