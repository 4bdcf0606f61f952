#include "portal/SubPrograms.h"

#include <algorithm>
#include <vector>

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

namespace {

// These windows stand above the main window and close with it.
QWidget* mainWindow()
{
    return dynamic_cast<QWidget*>(TsApplication::instance());
}

struct Row
{
    SubProgram kind;
    SubWindow* (*make)(const QString& file, unsigned column);
};

const std::vector<Row>& rows()
{
    static const std::vector<Row> all = {
        {SubProgram::Plot, [](const QString& file, unsigned) -> SubWindow* { return new QtPlotWin(file); }},
        {SubProgram::PlotColumn,
         [](const QString& file, unsigned column) -> SubWindow* { return new QtPlotColWin(file, column); }},
        {SubProgram::Create,
         [](const QString&, unsigned) -> SubWindow* { return new CreateTsWin(mainWindow()); }},
        {SubProgram::StlImport, [](const QString& file, unsigned) -> SubWindow* { return new STLWin(file); }},
        {SubProgram::SclImport, [](const QString& file, unsigned) -> SubWindow* { return new SCLWin(file); }},
        {SubProgram::List,
         [](const QString& file, unsigned) -> SubWindow* { return new TsTableView(file, mainWindow(), 0); }},
        {SubProgram::Edit,
         [](const QString& file, unsigned) -> SubWindow* { return new TsTableView(file, mainWindow(), 1); }},
        {SubProgram::Derivative,
         [](const QString& file, unsigned column) -> SubWindow* { return new DerivativeWin(file, column); }},
        {SubProgram::Integral,
         [](const QString& file, unsigned column) -> SubWindow* { return new IntegrateWin(file, column); }},
        {SubProgram::Spectrum,
         [](const QString& file, unsigned column) -> SubWindow* { return new DFTWin(file, column); }},
        {SubProgram::Filter,
         [](const QString& file, unsigned column) -> SubWindow* { return new FilterWin(file, column); }},
        {SubProgram::Formula,
         [](const QString& file, unsigned column) -> SubWindow* { return new EditTsWin(file, column); }},
        {SubProgram::Header,
         [](const QString& file, unsigned) -> SubWindow* { return new EditHeaderWin(file); }},
    };
    return all;
}

const Row* rowOf(SubProgram kind)
{
    const auto found =
        std::find_if(rows().begin(), rows().end(), [&](const Row& r) { return r.kind == kind; });
    return found == rows().end() ? nullptr : &*found;
}

}  // namespace

bool subProgramExists(SubProgram kind)
{
    return rowOf(kind) != nullptr;
}

SubWindow* makeSubProgram(SubProgram kind, const QString& file, unsigned column)
{
    const Row* const row = rowOf(kind);
    return row == nullptr ? nullptr : row->make(file, column);
}
