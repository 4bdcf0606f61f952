// TsTableView: building the window and what it shows. TsTableViewList.cpp looks into the file,
// TsTableViewEdit.cpp changes it.

#include "portal/TsTableView.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QMenuBar>
#include <QScrollBar>
#include <QSpinBox>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

#include "core/TsNames.h"
#include "portal/CellDelegate.h"
#include "portal/FindBar.h"
#include "portal/SelectionStatistics.h"
#include "portal/TsApplication.h"
#include "share/GoTo.h"
#include "share/HeaderText.h"
#include "share/hydaction.h"

namespace {

constexpr int kEditMode = 1;
constexpr int kLeastRowHeight = 18;
constexpr int kRowHeight = 20;
constexpr int kGreatestRowHeight = 30;
constexpr int kColumnListWidth = 100;

// Null where it cannot be opened.
TSFILE* openQuietly(const QString& file)
{
    if (TsApplication* const application = TsApplication::instance())
        return application->OpenTs(file, true);
    try {
        return openTsFile(file.toLocal8Bit().toStdString(), true).release();
    } catch (...) {
        return nullptr;
    }
}

// Whether a file takes new values. Rights that no user has count as a wish, even where they do not bind.
bool isWritable(const QString& path)
{
    const QFileInfo info(path);
    const QFile::Permissions some = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    return info.isWritable() && (info.permissions() & some) != 0;
}

QString grouped(qulonglong number)
{
    return QLocale(QLocale::English).toString(number).replace(QLatin1Char(','), QLatin1Char(' '));
}

// With as many decimals as it takes to tell a sample from the next.
QString elapsedText(double elapsed, TSFILE& file)
{
    const double dt = file.dt();
    if (file.timeColumn() != 0 || !(dt > 0.0) || !std::isfinite(dt))
        return QString::number(elapsed, 'g', 9);
    const int decimals = std::clamp(static_cast<int>(std::ceil(-std::log10(dt))) + 1, 0, 12);
    return QString::number(elapsed, 'f', decimals);
}

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
        {kPageUp, "Up", "Alt+PgUp", SLOT(sl_pageUp()), "Up by 1 &%", "Go a hundredth of the file up", ""},
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

TsTableView::TsTableView(const QString& file, QWidget* mainWindow, int mode)
    : m_name(QFileInfo(file).fileName()), m_path(QFileInfo(file).absoluteFilePath())
{
    setAttribute(Qt::WA_DeleteOnClose);
    if (mainWindow != nullptr)
        connect(mainWindow, &QObject::destroyed, this, [this] { delete this; });
    openFile(file, mode);
    createActions();
    createMenus();
    createToolBar();
    createTable();
    createStatusBar();
    showTitle();
    updateActions();
    resize(500, 600);
    if (m_view != nullptr) {
        showPosition();
        m_view->setFocus();
    }
}

TsTableView::~TsTableView()
{
    if (m_registered && TsApplication::instance() != nullptr)
        TsApplication::instance()->unregisterWriter(m_path);
    // The view looks at the model until its last moment.
    delete takeCentralWidget();
}

// -- Building --

void TsTableView::openFile(const QString& file, int mode)
{
    m_note = new QLabel;
    m_note->setWordWrap(true);
    m_note->setContentsMargins(6, 3, 6, 3);
    m_note->hide();
    TSFILE* const opened = openQuietly(file);
    if (opened == nullptr) {
        note(QStringLiteral("%1 cannot be opened. It may have vanished, or it is no ts-file.").arg(m_name));
        return;
    }
    m_model = std::make_unique<TsTableModel>(opened);
    connect(m_model.get(), &TsTableModel::x_edited, this, [this] {
        showTitle();
        updateActions();
        restartStatistics();
    });
    if (mode == kEditMode)
        startEditing();
    if (opened->ringStart() != 0 && opened->samples() != 0)
        note(QStringLiteral("A ring file: rows stand as in the file; the oldest sample, %1, is in row %2.")
                 .arg(opened->ringStart())
                 .arg((opened->ringStart() - 1) % opened->samples() + 1));
    if (opened->columns() > static_cast<std::uint32_t>(TsTableModel::kMostColumns))
        note(QStringLiteral("Of %1 columns the first %2 are shown.")
                 .arg(grouped(opened->columns()), grouped(TsTableModel::kMostColumns)));
}

void TsTableView::startEditing()
{
    TsApplication* const application = TsApplication::instance();
    if (!isWritable(m_path)) {
        note(QStringLiteral("%1 is read-only, so it is listed.").arg(m_name));
        return;
    }
    if (application != nullptr && application->isOpenForWriting(m_path)) {
        note(QStringLiteral("%1 is being edited in another window, so it is listed here.").arg(m_name));
        return;
    }
    m_model->makeEditable(m_path.toLocal8Bit().toStdString());
    if (application != nullptr) {
        application->registerWriter(m_path);
        m_registered = true;
    }
}

// Several notes stand one below the other.
void TsTableView::note(const QString& text)
{
    m_note->setText(m_note->text().isEmpty() ? text : m_note->text() + QLatin1Char('\n') + text);
    m_note->show();
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
        action->setVisible(!row.editingOnly || isEditing());
        action->setEnabled(m_model != nullptr || row.act == kQuit || row.act == kHelp);
        addAction(action);
        m_actions[static_cast<std::size_t>(row.act)] = action;
    }
    m_actions[kReload]->setVisible(!isEditing());
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

void TsTableView::createTable()
{
    auto* const centre = new QWidget;
    auto* const column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_note);
    setCentralWidget(centre);
    if (m_model == nullptr) {
        column->addStretch();
        return;
    }

    m_columns = new QListWidget;
    m_view = new SampleView(m_model.get());
    m_findBar = new FindBar;
    auto* const table = new QWidget;
    auto* const row = new QHBoxLayout(table);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(m_view, 1);
    row->addWidget(m_view->sampleBar());
    auto* const splitter = new QSplitter;
    splitter->addWidget(m_columns);
    splitter->addWidget(table);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({kColumnListWidth, 500 - kColumnListWidth});
    column->addWidget(splitter, 1);
    column->addWidget(m_findBar);

    fillColumnList();
    auto* const delegate = new CellDelegate(m_view);
    m_view->setItemDelegate(delegate);
    m_view->setEditTriggers(isEditing()
                                ? QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                                      QAbstractItemView::AnyKeyPressed
                                : QAbstractItemView::NoEditTriggers);
    m_view->setRowText([this](int r) { return rowText(r); });
    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    for (const Act act : {kCopy, kPaste, kMax, kMin, kAverage, kPlot, kGoTo})
        m_view->addAction(m_actions[static_cast<std::size_t>(act)]);
    m_view->addActions({m_operations.begin(), m_operations.end()});

    connect(delegate, &CellDelegate::x_refused, this, [this](const QString& text) {
        statusBar()->showMessage(QStringLiteral("\"%1\" is no number; the cell keeps its value.").arg(text),
                                 8000);
    });
    connect(m_view, SIGNAL(activated(QModelIndex)), this, SLOT(sl_currentCell(QModelIndex)));
    connect(m_view, &SampleView::x_current_moved, this, [this] {
        m_column = m_view->currentColumn();
        showPosition();
    });
    connect(m_view, &SampleView::x_selected, this, [this] {
        restartStatistics();
        updateActions();
    });
    const auto watchColumn = [this] {
        connect(m_view->selectionModel(), SIGNAL(currentColumnChanged(QModelIndex, QModelIndex)), this,
                SLOT(sl_currentColumn(QModelIndex, QModelIndex)));
    };
    connect(m_view, &SampleView::x_model_set, this, watchColumn);
    watchColumn();
    connect(m_view->horizontalHeader(), &QHeaderView::sectionClicked, this, [this](int section) {
        if (!m_sorting->isChecked())
            return;
        const QHeaderView& header = *m_view->horizontalHeader();
        const bool turn = header.sortIndicatorSection() == section &&
                          header.sortIndicatorOrder() == Qt::AscendingOrder && m_view->isSorted();
        sortBy(section, turn ? Qt::DescendingOrder : Qt::AscendingOrder);
    });
    connect(m_findBar, &FindBar::x_find, this, &TsTableView::find);
    connect(m_findBar, &FindBar::x_closed, this, [this] { m_view->setFocus(); });
}

void TsTableView::fillColumnList()
{
    m_columns->setToolTip(QStringLiteral("Select which columns to show."));
    m_columns->setAccessibleName(QStringLiteral("Columns"));
    m_columns->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_columns->setUniformItemSizes(true);
    for (int column = 0; column < m_model->columnCount(); ++column)
        m_columns->addItem(columnTitle(column));
    m_columns->selectAll();
    connect(m_columns, SIGNAL(itemSelectionChanged()), this, SLOT(sl_col_selected()));
}

// Two lines: where the user is, and what is selected.
void TsTableView::createStatusBar()
{
    auto* const lines = new QWidget;
    auto* const layout = new QVBoxLayout(lines);
    layout->setContentsMargins(2, 0, 2, 0);
    layout->setSpacing(0);
    m_position = new QLabel;
    m_selected = new QLabel;
    for (QLabel* const label : {m_position, m_selected}) {
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(label);
    }
    m_position->setAccessibleName(QStringLiteral("Current sample"));
    m_selected->setAccessibleName(QStringLiteral("Selected values"));
    statusBar()->addWidget(lines, 1);
    m_statistics = new SelectionStatistics(this);
    connect(m_statistics, &SelectionStatistics::x_text, this, [this](const QString& text) {
        m_selected->setText(text);
        m_selected->setToolTip(text);
    });
}

void TsTableView::updateActions()
{
    if (!isEditing())
        return;
    const EditList& edits = m_model->editedFile()->edits();
    m_actions[kSave]->setEnabled(edits.isChanged());
    m_actions[kUndo]->setEnabled(edits.canUndo());
    m_actions[kRedo]->setEnabled(edits.canRedo());
    m_actions[kUndo]->setText((QStringLiteral("&Undo ") + edits.undoName()).trimmed());
    m_actions[kRedo]->setText((QStringLiteral("&Redo ") + edits.redoName()).trimmed());
    const bool selected = m_view != nullptr && !m_view->selectedBlocks().empty();
    for (QAction* const action : m_operations)
        action->setEnabled(selected);
}

void TsTableView::showEvent(QShowEvent* event)
{
    SubWindow::showEvent(event);
    if (m_view != nullptr && !m_fitted) {
        m_fitted = true;
        m_view->fitColumns();
    }
}

// -- What is shown --

void TsTableView::showTitle()
{
    const bool changed = isEditing() && m_model->editedFile()->edits().isChanged();
    const QString pattern =
        isEditing() ? QStringLiteral("Veltrac, editing %1") : QStringLiteral("Veltrac, listing %1");
    setWindowTitle(pattern.arg(m_name) + (changed ? QStringLiteral("*") : QString()));
    setWindowIcon(QIcon(isEditing() ? QStringLiteral(":/img_EditTs") : QStringLiteral(":/img_ListTs")));
}

QString TsTableView::columnTitle(int column) const
{
    const QString name = m_model->columnName(column);
    return name.isEmpty() ? QStringLiteral("Column %1").arg(column + 1) : name;
}

QString TsTableView::timeText(std::uint32_t sample) const
{
    try {
        TSFILE& file = m_model->file();
        const double elapsed = elapsedTime(file, sample);
        const QString unit = headerText(file.timeUnit()).trimmed();
        QString text =
            elapsedText(elapsed, file) + QLatin1Char(' ') + (unit.isEmpty() ? QStringLiteral("s") : unit);
        if (file.startSeconds() != 0) {
            const double moment = startOf(file) + elapsed * secondsInTimeUnit(unit);
            text += QStringLiteral(", ") + QDateTime::fromMSecsSinceEpoch(qRound64(moment * 1000.0))
                                               .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
        }
        return text;
    } catch (...) {
        return QStringLiteral("time unreadable");
    }
}

QString TsTableView::rowText(int row) const
{
    const std::uint32_t sample = m_view->sampleOfRow(row);
    const std::uint32_t held = sampleInRow(m_model->file(), sample);
    const QString number =
        held == sample ? grouped(sample) : QStringLiteral("%1 (row %2)").arg(grouped(held), grouped(sample));
    return QStringLiteral("Sample %1 of %2, %3")
        .arg(number, grouped(m_model->file().samples()), timeText(sample));
}

void TsTableView::showPosition()
{
    const QString text =
        m_model->rowCount() == 0 ? QStringLiteral("The file has no samples.") : rowText(m_view->currentRow());
    m_position->setText(text);
    m_position->setToolTip(text);
}

void TsTableView::restartStatistics()
{
    if (m_view != nullptr)
        m_statistics->start(selectedRuns(), readerOfColumn());
}

ReaderOfColumn TsTableView::readerOfColumn() const
{
    return [this](std::uint32_t column) { return m_model->columnReader(static_cast<int>(column) - 1); };
}

std::vector<int> TsTableView::visibleColumns(int from, int to) const
{
    std::vector<int> columns;
    for (int column = from; column <= to; ++column)
        if (!m_view->isColumnHidden(column))
            columns.push_back(column);
    return columns;
}

std::vector<SampleRun> TsTableView::selectedRuns() const
{
    std::vector<SampleRun> runs;
    for (const CellBlock& block : m_view->selectedBlocks())
        for (const int column : visibleColumns(block.firstColumn, block.lastColumn)) {
            const auto number = static_cast<std::uint32_t>(column) + 1;
            // Bits of integers are neither changed nor averaged.
            if (m_model->isIntegerColumn(column))
                continue;
            if (!m_view->isSorted()) {
                runs.push_back({number, static_cast<std::uint32_t>(block.firstRow) + 1,
                                static_cast<std::uint32_t>(block.lastRow) + 1});
                continue;
            }
            for (int row = block.firstRow; row <= block.lastRow; ++row)
                runs.push_back({number, m_view->sampleOfRow(row), m_view->sampleOfRow(row)});
        }
    return joinedRuns(std::move(runs));
}
