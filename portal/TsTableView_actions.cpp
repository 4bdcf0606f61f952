// TsTableView: its actions, menus and tool bar.

#include <QCheckBox>
#include <QLabel>
#include <QMenuBar>
#include <QSpinBox>
#include <QToolBar>

#include "portal/TsApplication.h"
#include "portal/TsTableView.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

constexpr int kLeastRowHeight = 18;
constexpr int kRowHeight = 20;
constexpr int kGreatestRowHeight = 30;

}  // namespace

struct TsTableView::ActionRow
{
    Act act;
    const char* image;
    const char* shortcut;
    const char* slot;
    const char* text;
    const char* tip;
    const char* whatsThis;
    bool editingOnly = false;
    bool checkable = false;
};

struct TsTableView::MenuRow
{
    const char* title;
    std::vector<int> acts;
    bool editingOnly = false;
};

const std::vector<TsTableView::ActionRow>& TsTableView::actionRows()
{
    static const std::vector<ActionRow> rows = {
        {kSave, "Save", "Ctrl+S", SLOT(sl_save()), "&Save", "Write the edits into the file", "", true},
        {kSaveAs, "SaveTS", "Ctrl+Shift+S", SLOT(sl_saveAs()), "Save as &new file…",
         "Write a copy with the edits; the file itself stays as it is", "", true},
        {kReload, "Refresh", "F5", SLOT(sl_reload()), "&Reload", "Read the file again", ""},
        {kWriteSelected, "WriteASCII", "", SLOT(sl_writeSelected()), "&Write the selected samples as text…",
         "Write the selected samples of all columns to a .tsa file", ""},
        {kQuit, "FlushDown", "", SLOT(sl_finished()), "&Quit", "Exits the Edit window",
         "Closes this window. Edits that are not saved are asked about."},
        {kUndo, "Undo", "Ctrl+Z", SLOT(sl_undo()), "&Undo", "Take the last edit back, saved or not", "",
         true},
        {kRedo, "Redo", "Ctrl+Shift+Z", SLOT(sl_redo()), "&Redo", "Do again what was undone", "", true},
        {kCopy, "Copy", "Ctrl+C", SLOT(sl_copy()), "&Copy", "Copy the selected values, tab separated", ""},
        {kCopyWithNames, "", "Ctrl+Shift+C", SLOT(sl_copyWithNames()), "Copy with column &names",
         "Copy the selected values below the names of their columns", ""},
        {kPaste, "Paste", "Ctrl+V", SLOT(sl_paste()), "&Paste",
         "Paste numbers from the current cell on, with decimal points or commas", "", true},
        {kSelectAll, "", "Ctrl+A", SLOT(sl_selectAll()), "Select a&ll", "Select all samples of all columns",
         ""},
        {kFind, "Find", "Ctrl+F", SLOT(sl_find()), "&Find…", "Find a value in the selected column", ""},
        {kFindNext, "", "F3", SLOT(sl_findNext()), "Find ne&xt", "Find the next value down the column", ""},
        {kFindPrevious, "", "Shift+F3", SLOT(sl_findPrevious()), "Find pre&vious",
         "Find the next value up the column", ""},
        {kGoTo, "GoTo", "Ctrl+G", SLOT(sl_goTo()), "&Go to…", "Go to a sample, a time or a share of the file",
         ""},
        {kPageUp, "Up", "Alt+PgUp", SLOT(sl_pageUp()), "&Up by 1 %", "Go a hundredth of the file up", ""},
        {kPageDown, "Down", "Alt+PgDown", SLOT(sl_pageDown()), "&Down by 1 %",
         "Go a hundredth of the file down", ""},
        {kPlot, "PlotColumn", "", SLOT(sl_plotcol()), "&Plot column", "Plot the selected column.",
         "Opens a window that plots the selected column against time."},
        {kMax, "FindMax", "", SLOT(sl_findmax()), "Find Ma&x",
         "Find the maximum value in the selected column",
         "Looks through the whole selected column for its greatest value and selects the first cell that has "
         "it."},
        {kMin, "FindMin", "", SLOT(sl_findmin()), "Find Mi&n",
         "Find the minimum value in the selected column",
         "Looks through the whole selected column for its least value and selects the first cell that has "
         "it."},
        {kAverage, "FindAverage", "", SLOT(sl_findaverage()), "Find &Average",
         "Find the average value in the selected column",
         "Computes the average of the whole selected column."},
        {kGrid, "Table", "", SLOT(sl_showGrid()), "Show grid", "",
         "Click this button/menu item to toggle the gridlines\n", false, true},
        {kAltColours, "AltColors", "", SLOT(sl_altCol()), "Alt. colors", "", "Shades every other row.", false,
         true},
        {kHelp, "Help", "F1", SLOT(sl_help()), "&Help", "How to use this window", ""},
    };
    return rows;
}

const std::vector<TsTableView::MenuRow>& TsTableView::menuRows()
{
    static const std::vector<MenuRow> rows = {
        {"&File", {kSave, kSaveAs, kReload, kWriteSelected, kSeparator, kQuit}},
        {"&Edit", {kUndo, kRedo, kSeparator, kCopy, kCopyWithNames, kPaste, kSelectAll}},
        {"&Values", {kOperations}, true},
        {"&Go", {kGoTo, kPageUp, kPageDown, kSeparator, kFind, kFindNext, kFindPrevious}},
        {"&Column", {kMax, kMin, kAverage, kSeparator, kPlot}},
        {"V&iew", {kGrid, kAltColours}},
        {"&Help", {kHelp}},
    };
    return rows;
}

void TsTableView::createActions()
{
    for (const ActionRow& row : actionRows()) {
        const QString image = QString::fromLatin1(row.image);
        const QString about = QString::fromUtf8(*row.whatsThis != '\0' ? row.whatsThis : row.tip);
        auto* const action = new HydAction(image, QKeySequence(QString::fromLatin1(row.shortcut)), this,
                                           row.slot, QString::fromUtf8(row.text), QString::fromUtf8(row.tip),
                                           image.isEmpty() ? about : whatsThisText(image, about));
        action->setCheckable(row.checkable);
        const bool wanted = !row.editingOnly || isEditing();
        action->setVisible(wanted);
        action->setEnabled(wanted && (m_model != nullptr || row.act == kQuit || row.act == kHelp));
        addAction(action);
        m_actions[static_cast<std::size_t>(row.act)] = action;
    }
    if (isEditing()) {
        m_actions[kReload]->setVisible(false);
        m_actions[kReload]->setEnabled(false);
    }
    m_actions[kPlot]->setEnabled(m_model != nullptr && TsApplication::instance() != nullptr);
    m_actions[kWriteSelected]->setVisible(TsApplication::instance() != nullptr);
}

void TsTableView::createMenus()
{
    for (const MenuRow& row : menuRows()) {
        if (row.editingOnly && !isEditing())
            continue;
        QMenu* const menu = menuBar()->addMenu(QString::fromLatin1(row.title));
        for (const int act : row.acts) {
            if (act == kSeparator)
                menu->addSeparator();
            else if (act == kOperations)
                addOperations(*menu);
            else
                menu->addAction(m_actions[static_cast<std::size_t>(act)]);
        }
        if (row.acts.back() == kHelp)
            addWhatsThis(menu);
    }
}

void TsTableView::addOperations(QMenu& menu)
{
    for (const BlockOperationRow& row : blockOperations()) {
        QAction* const action = menu.addAction(QString::fromUtf8(row.menuText));
        action->setShortcut(QKeySequence(QString::fromLatin1(row.shortcut)));
        action->setStatusTip(QString::fromUtf8(row.tip));
        action->setWhatsThis(QString::fromUtf8(row.tip));
        connect(action, &QAction::triggered, this, [this, &row] { operate(row); });
        m_operations.push_back(action);
    }
}

void TsTableView::createToolBar()
{
    QToolBar* const bar = addToolBar(QStringLiteral("ToolBar"));
    auto* const label = new QLabel(QStringLiteral("Rowheight:"));
    auto* const height = new QSpinBox;
    height->setRange(kLeastRowHeight, kGreatestRowHeight);
    height->setValue(kRowHeight);
    height->setAccessibleName(QStringLiteral("Row height in pixels"));
    height->setToolTip(QStringLiteral("The height of the table's rows, in pixels."));
    label->setBuddy(height);
    m_sorting = new QCheckBox(QStringLiteral("Enable sorting"));
    m_sorting->setToolTip(
        QStringLiteral("Sort on the values of a column; a click on its name turns the order."));
    bar->addWidget(label);
    bar->addWidget(height);
    bar->addWidget(m_sorting);
    bar->addSeparator();
    for (const Act act : {kPlot, kMax, kMin, kAverage, kGrid, kQuit})
        bar->addAction(m_actions[static_cast<std::size_t>(act)]);
    height->setEnabled(m_model != nullptr);
    m_sorting->setEnabled(m_model != nullptr);
    connect(height, SIGNAL(valueChanged(int)), this, SLOT(sl_rowHeight(int)));
    connect(m_sorting, SIGNAL(stateChanged(int)), this, SLOT(sl_sorting(int)));
}

void TsTableView::updateActions()
{
    if (!isEditing())
        return;
    const EditList& edits = m_model->editedFile()->edits();
    m_actions[kSave]->setEnabled(edits.isChanged());
    m_actions[kUndo]->setEnabled(edits.canUndo());
    m_actions[kRedo]->setEnabled(edits.canRedo());
    m_actions[kUndo]->setText(
        (QStringLiteral("&Undo ") + QString::fromStdString(edits.undoName())).trimmed());
    m_actions[kRedo]->setText(
        (QStringLiteral("&Redo ") + QString::fromStdString(edits.redoName())).trimmed());
    const bool selected = m_view != nullptr && !m_view->selectedBlocks().empty();
    for (QAction* const action : m_operations)
        action->setEnabled(selected);
}
