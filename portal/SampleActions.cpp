#include "portal/SampleActions.h"

#include <QObject>

#include <array>

namespace veltrac {

namespace {

using enum SampleAct;

const std::array kWindow = {
    SampleActionRow{Reload, "Refresh", "F5", SLOT(sl_reload()), "&Reload", "Read the file again"},
    SampleActionRow{WriteSelected, "WriteASCII", "", SLOT(sl_writeSelected()),
                    "&Write the selected samples as text…",
                    "Write the selected samples of all columns to a .tsa file"},
    SampleActionRow{
        RestoreOldValues, "Undo", "", SLOT(sl_restoreOldValues()), "Restore &old values…",
        "Put back the old values that a failed save or calculation has left",
        "When a save or a calculation fails and its old values cannot be put back either, they stay "
        "in a file of their own, which the message names. This puts them back into their places."},
    SampleActionRow{Quit, "FlushDown", "", SLOT(sl_finished()), "&Quit", "Exits the Edit window",
                    "Closes this window. Edits that are not saved are asked about."},
    SampleActionRow{Copy, "Copy", "Ctrl+C", SLOT(sl_copy()), "&Copy",
                    "Copy the selected values, tab separated"},
    SampleActionRow{CopyWithNames, "", "Ctrl+Shift+C", SLOT(sl_copyWithNames()), "Copy with column &names",
                    "Copy the selected values below the names of their columns"},
    SampleActionRow{SelectAll, "", "Ctrl+A", SLOT(sl_selectAll()), "Select a&ll",
                    "Select all samples of all columns"},
    SampleActionRow{Plot, "PlotColumn", "", SLOT(sl_plotcol()), "&Plot column", "Plot the selected column.",
                    "Opens a window that plots the selected column against time."},
    SampleActionRow{Max, "FindMax", "", SLOT(sl_findmax()), "Find Ma&x",
                    "Find the maximum value in the selected column",
                    "Looks through the whole selected column for its greatest value and selects the first "
                    "cell that has it."},
    SampleActionRow{Min, "FindMin", "", SLOT(sl_findmin()), "Find Mi&n",
                    "Find the minimum value in the selected column",
                    "Looks through the whole selected column for its least value and selects the first cell "
                    "that has it."},
    SampleActionRow{Average, "FindAverage", "", SLOT(sl_findaverage()), "Find &Average",
                    "Find the average value in the selected column",
                    "Computes the average of the whole selected column."},
    SampleActionRow{Grid, "Table", "", SLOT(sl_showGrid()), "Show grid", "",
                    "Click this button/menu item to toggle the gridlines\n", true},
    SampleActionRow{AltColours, "AltColors", "", SLOT(sl_altCol()), "Alt. colors", "",
                    "Shades every other row.", true},
    SampleActionRow{
        Follow, "Follow", "L", SLOT(sl_follow()), "&Follow the end",
        "Keep the newest sample in view while it is measured",
        "Shows the samples that another program writes as they come. Going elsewhere in the table "
        "stops it.",
        true},
    SampleActionRow{Help, "Help", "F1", SLOT(sl_help()), "&Help", "How to use this window"},
};

const std::array kSearch = {
    SampleActionRow{Find, "Find", "Ctrl+F", SLOT(sl_find()), "&Find…", "Find a value in the selected column"},
    SampleActionRow{FindNext, "", "F3", SLOT(sl_findNext()), "Find ne&xt",
                    "Find the next value down the column"},
    SampleActionRow{FindPrevious, "", "Shift+F3", SLOT(sl_findPrevious()), "Find pre&vious",
                    "Find the next value up the column"},
    SampleActionRow{GoTo, "GoTo", "Ctrl+G", SLOT(sl_goTo()), "&Go to…",
                    "Go to a sample, a time or a share of the file"},
    SampleActionRow{PageUp, "Up", "Alt+PgUp", SLOT(sl_pageUp()), "&Up by 1 %",
                    "Go a hundredth of the file up"},
    SampleActionRow{PageDown, "Down", "Alt+PgDown", SLOT(sl_pageDown()), "&Down by 1 %",
                    "Go a hundredth of the file down"},
};

const std::array kEditor = {
    SampleActionRow{Save, "Save", "Ctrl+S", SLOT(sl_save()), "&Save", "Write the edits into the file"},
    SampleActionRow{SaveAs, "SaveTS", "Ctrl+Shift+S", SLOT(sl_saveAs()), "Save as &new file…",
                    "Write a copy with the edits; the file itself stays as it is"},
    SampleActionRow{Undo, "Undo", "Ctrl+Z", SLOT(sl_undo()), "&Undo",
                    "Take the last edit back, saved or not"},
    SampleActionRow{Redo, "Redo", "Ctrl+Shift+Z", SLOT(sl_redo()), "&Redo", "Do again what was undone"},
    SampleActionRow{Paste, "Paste", "Ctrl+V", SLOT(sl_paste()), "&Paste",
                    "Paste numbers from the current cell on, with decimal points or commas"},
};

}  // namespace

std::span<const SampleActionRow> windowActions()
{
    return kWindow;
}

std::span<const SampleActionRow> searchActions()
{
    return kSearch;
}

std::span<const SampleActionRow> editorActions()
{
    return kEditor;
}

const std::vector<SampleMenuRow>& sampleMenus()
{
    static const std::vector<SampleMenuRow> rows = {
        {"&File", {Save, SaveAs, Reload, WriteSelected, RestoreOldValues, {}, Quit}},
        {"&Edit", {Undo, Redo, {}, Copy, CopyWithNames, Paste, SelectAll}},
        {"&Go", {GoTo, PageUp, PageDown, {}, Find, FindNext, FindPrevious}},
        {"&Column", {Max, Min, Average, {}, Plot}},
        {"V&iew", {Follow, {}, Grid, AltColours}},
        {"&Help", {Help}},
    };
    return rows;
}

}  // namespace veltrac
