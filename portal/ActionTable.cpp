#include "portal/ActionTable.h"

#include <QObject>

#include <array>

namespace veltrac {

namespace {

using enum ActionId;

using Row = ActionRow<ActionId>;

const std::array kActions = {
    Row{Help, "Help", "F1", SLOT(sl_help()), "Help", "Open a brief help window", ""},
    Row{About, "Help", "Ctrl+Z", SLOT(sl_about()), "About", "", ""},
    Row{Create, "SaveTs", "F2", SLOT(sl_createFile()), "Create a (ts)file...",
        "Create a new ts-file (extension .ts).",
        "<b>Create a ts-file.</b> Give it a name, a number of samples and columns, a sample time, and a "
        "name and a description for each column. All values of the new file are 0 until a sub-program "
        "fills them."},
    Row{ReadTsa, "ReadASCII", "F4", SLOT(sl_readASCIIFile()), "Read an existing ASCII file...",
        "Open a textual ASCII (with extension .tsa) file and convert it to a binary ts-file.",
        "<b>Import a tsa text.</b> A tsa text has a header of lines that begin with %, and below it a "
        "row of numbers for each sample. It becomes a ts-file of the same name in the working directory. "
        "<i>Help, ASCII...</i> describes the format."},
    Row{OtherDirectory, "ChangeDirectory", "F5", SLOT(sl_otherDir()), "New home directory....",
        "Set a new home directory.",
        "<b>Choose another working directory.</b> The table shows the ts-files of this directory, and "
        "new files are made in it. Its sub-directories are not looked into."},
    Row{Refresh, "Refresh", "F6", SLOT(sl_refresh()), "Refresh...", "Update the canvas.", ""},
    Row{ConfigurePostscript, "ConfigPostscript", "Ctrl+P", SLOT(sl_config_ps()), "&Postscript...",
        "Configure the Postscript driver",
        "<b>Postscript settings.</b> Font, line widths, margins and paper of the hard copies. Plot "
        "windows opened from now on start with these settings."},
    Row{ConfigureFont, "Font", "Ctrl+F", SLOT(sl_config_font()), "&Font...", "Select the font.",
        "<b>Choose the font</b> of the program's windows and tables. It holds until the program ends."},
    Row{Sorting, "", "Ctrl+Z", SLOT(sl_set_sorting()), "Enable sorting ?", "Select the sorting option.",
        "<b>Sorting.</b> When this is ticked, a click on a column's header sorts the table by that "
        "column; a second click turns the order around. Numbers are sorted as texts.",
        true},
    Row{TsaHelp, "TsaASCII", "Ctrl+A", SLOT(sl_asciihelp()), "&ASCII...", "", ""},
    Row{StlHelp, "StlASCII", "Ctrl+S", SLOT(sl_stlhelp()), "&STL...", "", ""},
    Row{Examples, "Open", "", SLOT(sl_examples()), "&Examples…", "Copy the example series and go there.",
        "<b>Examples.</b> Copies the series that help and guide work on into a folder of yours and makes it "
        "the working directory. What is there already stays as it is."},
    Row{Plot, "PlotTs", "Ctrl+Z", SLOT(sl_plotFile()), "&Plot...", "Invoke the plot window.", ""},
    Row{WriteTsa, "WriteASCII", "Ctrl+W", SLOT(sl_writeASCII()), "&Write to ASCII...",
        "Write a ts-file to a ASCII file.", ""},
    Row{EditHeader, "EditTsHeader", "Ctrl+E", SLOT(sl_editHeader()), "&Edit file header...",
        "Edit the selected file's header.", ""},
    Row{List, "ListTs", "Ctrl+L", SLOT(sl_listFile()), "&List file...", "List the selected file.", ""},
    Row{Edit, "EditTs", "Ctrl+Z", SLOT(sl_editFile()), "&Edit file...", "Edit the selected file.", ""},
    Row{Delete, "DeleteFile", "Ctrl+Z", SLOT(sl_deleteFile()), "Delete file...", "Delete the selected file.",
        ""},
};

const std::array kFileActions = {
    FileActionRow{EditHeader, "&Edit a ts-file's header", SLOT(sl_editHeader(QAction*)), "Edit %1 &header",
                  SLOT(sl_editHeader())},
    FileActionRow{Delete, "&Delete a ts-file", SLOT(sl_deleteFile(QAction*)), "&Delete %1",
                  SLOT(sl_deleteFile())},
    FileActionRow{WriteTsa, "&Write a ts-file to a ASCII file", SLOT(sl_writeASCII(QAction*)),
                  "&Write %1 to a ASCII file", SLOT(sl_writeASCII())},
    FileActionRow{Plot, "&Plot", SLOT(sl_plotFile(QAction*)), "&Plot %1", SLOT(sl_plotFile())},
    FileActionRow{List, "&List", SLOT(sl_listFile(QAction*)), "&List %1", SLOT(sl_listFile())},
    FileActionRow{Edit, "&Edit (numerically)", SLOT(sl_editFile(QAction*)), "&Edit %1", SLOT(sl_editFile())},
};

const std::array<BarItem, 10> kFileMenu = {
    Create,         ReadTsa,        Gap::Importers, Gap::Separator, Gap::FileMenus,
    Gap::Separator, OtherDirectory, Refresh,        Gap::Separator, Quit};
const std::array<BarItem, 6> kDirectoryItems = {Create,         ReadTsa, Gap::Importers,
                                                OtherDirectory, Refresh, Examples};
const std::array<BarItem, 3> kConfigureMenu = {ConfigurePostscript, ConfigureFont, Sorting};
const std::array<BarItem, 1> kCommandMenu = {Gap::Computing};
const std::array<BarItem, 8> kHelpMenu = {Help,           TsaHelp, StlHelp,        Gap::WhatsThis,
                                          Gap::Separator, About,   Gap::Separator, Examples};

const std::array kMenus = {
    BarRow{"&File", kFileMenu},
    BarRow{"&Configure", kConfigureMenu},
    BarRow{"&Command", kCommandMenu},
    BarRow{"&Help", kHelpMenu},
};

const std::array<BarItem, 7> kFileBar = {Create,         ReadTsa, Gap::Importers, OtherDirectory, Refresh,
                                         Gap::RowHeight, Help};
const std::array<BarItem, 1> kConfigureBar = {ConfigurePostscript};
const std::array<BarItem, 6> kPerFileBar = {EditHeader, Delete, Plot, WriteTsa, List, Edit};

const std::array kToolBars = {
    BarRow{"File", kFileBar},
    BarRow{"Configure", kConfigureBar},
    BarRow{"Toolbox", kCommandMenu},
    BarRow{"", kPerFileBar, true},
};

}  // namespace

std::span<const ActionRow<ActionId>> fixedActions()
{
    return kActions;
}

std::span<const FileActionRow> fileActionRows()
{
    return kFileActions;
}

std::span<const BarItem> directoryItems()
{
    return kDirectoryItems;
}

std::span<const BarRow> menuRows()
{
    return kMenus;
}

std::span<const BarRow> toolBarRows()
{
    return kToolBars;
}

}  // namespace veltrac
