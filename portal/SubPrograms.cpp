#include "portal/SubPrograms.h"

#include <QObject>

#include <algorithm>
#include <array>

#include "calc/DFTWin.h"
#include "calc/DerivativeWin.h"
#include "calc/IntegrateWin.h"
#include "converters/SCLWin.h"
#include "converters/STLWin.h"
#include "filter/FilterWin.h"
#include "formula/EditTsWin1.h"
#include "portal/CreateTsWin_Veltrac.h"
#include "portal/EditHeaderWin.h"
#include "portal/TsTableView.h"
#include "share/QtPlotColWin.h"
#include "share/QtPlotWin1.h"

namespace veltrac {

namespace {

// These windows stand above the main window and close with it.
QWidget* mainWindow()
{
    return dynamic_cast<QWidget*>(TsApplication::instance());
}

template <typename Window>
SubWindow* onFile(const QString& file, unsigned /*column*/)
{
    return new Window(file);
}

template <typename Window>
SubWindow* onColumn(const QString& file, unsigned column)
{
    return new Window(file, column);
}

template <int mode>
SubWindow* tableView(const QString& file, unsigned /*column*/)
{
    return new TsTableView(file, mainWindow(), mode);
}

SubWindow* createWindow(const QString& /*file*/, unsigned /*column*/)
{
    return new CreateTsWin(mainWindow());
}

constexpr ActionRow<SubProgram> withoutAction(SubProgram kind)
{
    return {kind, "", "", "", "", "", "", false};
}

// A row without a slot of the main window's for its action takes SLOT(sl_openSubProgram()). Both importers
// stand under one text on purpose; their tool tips tell them apart.
const std::array kRows = {
    SubProgramRow{withoutAction(SubProgram::Create), createWindow},
    SubProgramRow{
        {SubProgram::StlImport, "ReadASCII_1", "F4", SLOT(sl_readSTLFile()),
         "Read an existing .stl (ASCII) file...",
         "Open a textual ASCII (with extension .stl) file and convert it to a binary ts-file.",
         "<b>Import a smart tool log.</b> A table of dates, times and readings as measuring tools and "
         "spreadsheets write it. Separator, decimal sign and time columns are recognised; a preview shows "
         "what will be read. <i>Help, STL...</i> describes the format."},
        onFile<STLWin>,
        Offered::AsImporter},
    SubProgramRow{
        {SubProgram::SclImport, "ReadASCII_3", "F5", SLOT(sl_readSCLFile()),
         "Read an existing .stl (ASCII) file...",
         "Open a textual ASCII (with extension .scl) file and convert it to a binary ts-file.",
         "<b>Import single column logs.</b> Each text holds one column, a value a line; several texts "
         "become the columns of one ts-file. The sample time is read from the text or typed in."},
        onFile<SCLWin>,
        Offered::AsImporter},
    SubProgramRow{withoutAction(SubProgram::Plot), onFile<QtPlotWin>},
    SubProgramRow{withoutAction(SubProgram::PlotColumn), onColumn<QtPlotColWin>},
    SubProgramRow{withoutAction(SubProgram::List), tableView<0>},
    SubProgramRow{withoutAction(SubProgram::Edit), tableView<1>},
    SubProgramRow{withoutAction(SubProgram::Header), onFile<EditHeaderWin>},
    SubProgramRow{
        {SubProgram::Formula, "EditWin", "F7", SLOT(sl_editWin()), "Edit window....",
         "Open a sub-window for generating y = f(math. function, ts column...)",
         "<b>Ts-Edit.</b> Computes a column from a formula of up to eight columns x1 to x8, the time t and "
         "mathematical functions, sample by sample, for example <tt>sqrt(x1^2+x2^2)</tt>."},
        onColumn<EditTsWin>,
        Offered::AsComputing},
    SubProgramRow{
        {SubProgram::Derivative, "Derivation", "F8", SLOT(sl_derivative()), "The derivative window....",
         "Open a subwindow for calculating dy/dt on a specific column in the target file.",
         "<b>Ts-Derivative.</b> Computes how fast a column changes: the difference between each sample and "
         "the next, divided by the sample time. The result is plotted beside its source and can be saved."},
        onColumn<DerivativeWin>,
        Offered::AsComputing},
    SubProgramRow{
        {SubProgram::Integral, "Integration", "F9", SLOT(sl_integrate()), "Integrate dy...",
         "Open a subwindow for a integration operation on a spesific column in the target file.",
         "<b>Ts-Integrate.</b> Computes the running integral of a column over time by the trapezoidal "
         "rule, beginning with 0. The result is plotted beside its source and can be saved."},
        onColumn<IntegrateWin>,
        Offered::AsComputing},
    SubProgramRow{
        {SubProgram::Spectrum, "Dft", "F10", SLOT(sl_dft()), "Fast Fourier transform...",
         "Open a subwindow for a DFT operation on a spesific column in the target file.",
         "<b>Ts-FFT.</b> Shows which frequencies a column holds: amplitude, power density or the complex "
         "spectrum, with a choice of windows and averaging."},
        onColumn<DFTWin>,
        Offered::AsComputing},
    SubProgramRow{
        {SubProgram::Filter, "Filter", "F11", SLOT(sl_filter()), "Filtering...",
         "Open a subwindow for a filter operation on a spesific column in the target file.",
         "<b>Ts-Filt.</b> Runs a column through a moving average or a Bessel, Butterworth, Chebyshev or "
         "window filter. The response of the filter can be plotted before it is used."},
        onColumn<FilterWin>,
        Offered::AsComputing},
};

const SubProgramRow* rowOf(SubProgram kind)
{
    const auto row = std::find_if(kRows.begin(), kRows.end(),
                                  [kind](const SubProgramRow& each) { return each.action.id == kind; });
    return row == kRows.end() ? nullptr : &*row;
}

}  // namespace

std::span<const SubProgramRow> subPrograms()
{
    return kRows;
}

bool isImporter(SubProgram kind)
{
    const SubProgramRow* const row = rowOf(kind);
    return row != nullptr && row->offered == Offered::AsImporter;
}

SubWindow* makeSubProgram(SubProgram kind, const QString& file, unsigned column)
{
    const SubProgramRow* const row = rowOf(kind);
    return row == nullptr ? nullptr : row->make(file, column);
}

}  // namespace veltrac
