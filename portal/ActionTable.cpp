#include "portal/ActionTable.h"

#include <QObject>

#include <array>

namespace veltrac {

namespace {

using enum ActionId;

const std::array kActions = {
    ActionRow{Help, "Help", "F1", SLOT(sl_help()), "Help", "Open a brief help window", ""},
    ActionRow{About, "Help", "Ctrl+Z", SLOT(sl_about()), "About", "", ""},
    ActionRow{
        Create, "SaveTs", "F2", SLOT(sl_createFile()), "Create a (ts)file...",
        "Create a new ts-file (extension .ts).",
        "<b>Create a ts-file.</b> Give it a name, a number of samples and columns, a sample time, and a "
        "name and a description for each column. All values of the new file are 0 until a sub-program "
        "fills them."},
    ActionRow{
        ReadTsa, "ReadASCII", "F4", SLOT(sl_readASCIIFile()), "Read an existing ASCII file...",
        "Open a textual ASCII (with extension .tsa) file and convert it to a binary ts-file.",
        "<b>Import a tsa text.</b> A tsa text has a header of lines that begin with %, and below it a "
        "row of numbers for each sample. It becomes a ts-file of the same name in the working directory. "
        "<i>Help, ASCII...</i> describes the format."},
    ActionRow{
        ReadStl, "ReadASCII_1", "F4", SLOT(sl_readSTLFile()), "Read an existing .stl (ASCII) file...",
        "Open a textual ASCII (with extension .stl) file and convert it to a binary ts-file.",
        "<b>Import a smart tool log.</b> A table of dates, times and readings as measuring tools and "
        "spreadsheets write it. Separator, decimal sign and time columns are recognised; a preview shows "
        "what will be read. <i>Help, STL...</i> describes the format."},
    // The menu text says .stl: that is how this entry has always been called.
    ActionRow{ReadScl, "ReadASCII_3", "F5", SLOT(sl_readSCLFile()), "Read an existing .stl (ASCII) file...",
              "Open a textual ASCII (with extension .scl) file and convert it to a binary ts-file.",
              "<b>Import single column logs.</b> Each text holds one column, a value a line; several texts "
              "become the columns of one ts-file. The sample time is read from the text or typed in."},
    ActionRow{OtherDirectory, "ChangeDirectory", "F5", SLOT(sl_otherDir()), "New home directory....",
              "Set a new home directory.",
              "<b>Choose another working directory.</b> The table shows the ts-files of this directory, and "
              "new files are made in it. Its sub-directories are not looked into."},
    ActionRow{Refresh, "Refresh", "F6", SLOT(sl_refresh()), "Refresh...", "Update the canvas.", ""},
    ActionRow{
        Formula, "EditWin", "F7", SLOT(sl_editWin()), "Edit window....",
        "Open a sub-window for generating y = f(math. function, ts column...)",
        "<b>Ts-Edit.</b> Computes a column from a formula of up to eight columns x1 to x8, the time t and "
        "mathematical functions, sample by sample, for example <tt>sqrt(x1^2+x2^2)</tt>."},
    ActionRow{
        Derivative, "Derivation", "F8", SLOT(sl_derivative()), "The derivative window....",
        "Open a subwindow for calculating dy/dt on a specific column in the target file.",
        "<b>Ts-Derivative.</b> Computes how fast a column changes: the difference between each sample and "
        "the next, divided by the sample time. The result is plotted beside its source and can be saved."},
    ActionRow{Integral, "Integration", "F9", SLOT(sl_integrate()), "Integrate dy...",
              "Open a subwindow for a integration operation on a spesific column in the target file.",
              "<b>Ts-Integrate.</b> Computes the running integral of a column over time by the trapezoidal "
              "rule, beginning with 0. The result is plotted beside its source and can be saved."},
    ActionRow{
        Spectrum, "Dft", "F10", SLOT(sl_dft()), "Fast Fourier transform...",
        "Open a subwindow for a DFT operation on a spesific column in the target file.",
        "<b>Ts-FFT.</b> Shows which frequencies a column holds: amplitude, power density or the complex "
        "spectrum, with a choice of windows and averaging."},
    ActionRow{Filter, "Filter", "F11", SLOT(sl_filter()), "Filtering...",
              "Open a subwindow for a filter operation on a spesific column in the target file.",
              "<b>Ts-Filt.</b> Runs a column through a moving average or a Bessel, Butterworth, Chebyshev or "
              "window filter. The response of the filter can be plotted before it is used."},
    ActionRow{ConfigurePostscript, "ConfigPostscript", "Ctrl+P", SLOT(sl_config_ps()), "&Postscript...",
              "Configure the Postscript driver",
              "<b>Postscript settings.</b> Font, line widths, margins and paper of the hard copies. Plot "
              "windows opened from now on start with these settings."},
    ActionRow{ConfigureFont, "Font", "Ctrl+F", SLOT(sl_config_font()), "&Font...", "Select the font.",
              "<b>Choose the font</b> of the program's windows and tables. It holds until the program ends."},
    ActionRow{Sorting, "", "Ctrl+Z", SLOT(sl_set_sorting()), "Enable sorting ?", "Select the sorting option.",
              "<b>Sorting.</b> When this is ticked, a click on a column's header sorts the table by that "
              "column; a second click turns the order around. Numbers are sorted as texts.",
              true},
    ActionRow{TsaHelp, "TsaASCII", "Ctrl+A", SLOT(sl_asciihelp()), "&ASCII...", "", ""},
    ActionRow{StlHelp, "StlASCII", "Ctrl+S", SLOT(sl_stlhelp()), "&STL...", "", ""},
    ActionRow{Plot, "PlotTs", "Ctrl+Z", SLOT(sl_plotFile()), "&Plot...", "Invoke the plot window.", ""},
    ActionRow{WriteTsa, "WriteASCII", "Ctrl+W", SLOT(sl_writeASCII()), "&Write to ASCII...",
              "Write a ts-file to a ASCII file.", ""},
    ActionRow{EditHeader, "EditTsHeader", "Ctrl+E", SLOT(sl_editHeader()), "&Edit file header...",
              "Edit the selected file's header.", ""},
    ActionRow{List, "ListTs", "Ctrl+L", SLOT(sl_listFile()), "&List file...", "List the selected file.", ""},
    ActionRow{Edit, "EditTs", "Ctrl+Z", SLOT(sl_editFile()), "&Edit file...", "Edit the selected file.", ""},
    ActionRow{Delete, "DeleteFile", "Ctrl+Z", SLOT(sl_deleteFile()), "Delete file...",
              "Delete the selected file.", ""},
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

const std::array<BarItem, 11> kFileMenu = {
    Create,         ReadTsa, ReadStl,        ReadScl, Gap::Separator, Gap::FileMenus, Gap::Separator,
    OtherDirectory, Refresh, Gap::Separator, Quit};
const std::array<BarItem, 3> kConfigureMenu = {ConfigurePostscript, ConfigureFont, Sorting};
const std::array<BarItem, 5> kCommandMenu = {Formula, Derivative, Integral, Spectrum, Filter};
const std::array<BarItem, 6> kHelpMenu = {Help, TsaHelp, StlHelp, Gap::WhatsThis, Gap::Separator, About};

const std::array kMenus = {
    BarRow{"&File", kFileMenu},
    BarRow{"&Configure", kConfigureMenu},
    BarRow{"&Command", kCommandMenu},
    BarRow{"&Help", kHelpMenu},
};

const std::array<BarItem, 8> kFileBar = {Create,         ReadTsa, ReadStl,        ReadScl,
                                         OtherDirectory, Refresh, Gap::RowHeight, Help};
const std::array<BarItem, 1> kConfigureBar = {ConfigurePostscript};
const std::array<BarItem, 6> kPerFileBar = {EditHeader, Delete, Plot, WriteTsa, List, Edit};

const std::array kToolBars = {
    BarRow{"File", kFileBar},
    BarRow{"Configure", kConfigureBar},
    BarRow{"Toolbox", kCommandMenu},
    BarRow{"", kPerFileBar, true},
};

}  // namespace

std::span<const ActionRow> actionRows()
{
    return kActions;
}

std::span<const FileActionRow> fileActionRows()
{
    return kFileActions;
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
