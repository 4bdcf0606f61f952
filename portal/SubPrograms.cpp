#include "portal/SubPrograms.h"

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

}  // namespace

SubWindow* makeSubProgram(SubProgram kind, const QString& file, unsigned column)
{
    switch (kind) {
        case SubProgram::Create:
            return new CreateTsWin(mainWindow());
        case SubProgram::StlImport:
            return new STLWin(file);
        case SubProgram::SclImport:
            return new SCLWin(file);
        case SubProgram::Plot:
            return new QtPlotWin(file);
        case SubProgram::PlotColumn:
            return new QtPlotColWin(file, column);
        case SubProgram::List:
            return new TsTableView(file, mainWindow(), 0);
        case SubProgram::Edit:
            return new TsTableView(file, mainWindow(), 1);
        case SubProgram::Header:
            return new EditHeaderWin(file);
        case SubProgram::Formula:
            return new EditTsWin(file, column);
        case SubProgram::Derivative:
            return new DerivativeWin(file, column);
        case SubProgram::Integral:
            return new IntegrateWin(file, column);
        case SubProgram::Spectrum:
            return new DFTWin(file, column);
        case SubProgram::Filter:
            return new FilterWin(file, column);
    }
    return nullptr;
}

}  // namespace veltrac
