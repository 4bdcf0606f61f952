#include "portal/TsTableView.h"

#include <QCheckBox>
#include <QEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QSpinBox>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/OldValuesRestore.h"
#include "portal/RowHeight.h"
#include "portal/SampleActions.h"
#include "portal/SampleEditor.h"
#include "portal/SampleFollower.h"
#include "portal/SampleSearch.h"
#include "portal/SampleStatus.h"
#include "portal/SampleTable.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/NoticeStrip.h"
#include "share/QtMessageWin.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

constexpr int kEditMode = 1;
constexpr int kRowHeight = 20;

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

// What a user has to know of a ring file's rows; nothing of another file.
QStringList ringNotes(const FileTime& time, const TsTableModel& model)
{
    QStringList notes;
    if (!time.isRing() || model.rowCount() == 0)
        return notes;
    if (time.rows() > 0)
        notes += QStringLiteral("A ring, oldest sample %1: rows stand as in the file, that one in row %2.")
                     .arg(groupedNumber(time.firstSample()), groupedNumber(time.oldestRow()));
    if (const std::uint32_t empty = model.emptyRows(); empty > 0)
        notes += QStringLiteral("The ring is not full yet: nothing was written into the %1 hatched rows.")
                     .arg(groupedNumber(empty));
    return notes;
}

}  // namespace

TsTableView::TsTableView(const QString& file, QWidget* mainWindow, int mode)
    : m_name(QFileInfo(file).fileName()), m_path(QFileInfo(file).absoluteFilePath()), m_mode(mode)
{
    if (mainWindow != nullptr)
        connect(mainWindow, &QObject::destroyed, this, [this] { delete this; });
    createFrame();
    showFile(openQuietly(file), mode);
    resize(500, 600);
}

TsTableView::~TsTableView()
{
    if (isEditing() && TsApplication::instance() != nullptr)
        TsApplication::instance()->unregisterWriter(m_path);
    // The view looks at the model until its last moment.
    delete takeCentralWidget();
}

// -- Building --

void TsTableView::createFrame()
{
    m_notes = new QLabel;
    m_notes->setWordWrap(true);
    m_notes->setTextFormat(Qt::PlainText);
    m_notes->setContentsMargins(6, 3, 6, 3);
    m_notes->setBackgroundRole(QPalette::ToolTipBase);
    m_notes->setForegroundRole(QPalette::ToolTipText);
    m_notes->setAutoFillBackground(true);
    m_notes->hide();
    m_changed = new NoticeStrip;
    connect(m_changed, &NoticeStrip::x_pressed, this, &TsTableView::answerNotice);
    connect(&m_watch, &FileWatch::x_changed, this, &TsTableView::showFileState);
    auto* const centre = new QWidget;
    auto* const column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->setAlignment(Qt::AlignTop);
    column->addWidget(m_notes);
    column->addWidget(m_changed);
    setCentralWidget(centre);
}

void TsTableView::showFile(TSFILE* file, int mode)
{
    m_notes->clear();
    m_notes->hide();
    if (file == nullptr) {
        addNote(
            QStringLiteral("%1 cannot be opened. It may have vanished, or it is no ts-file.").arg(m_name));
    } else {
        m_model = std::make_unique<TsTableModel>(file);
        const bool editing = mode == kEditMode && mayEdit();
        if (editing)
            m_model->makeEditable(m_path.toLocal8Bit().toStdString());
        m_table = new SampleTable(*m_model, m_name);
        m_search = new SampleSearch(m_table);
        m_editor = editing ? new SampleEditor(m_table, m_path) : nullptr;
        m_status = new SampleStatus(*m_table);
        statusBar()->addWidget(m_status, 1);
        auto* const column = static_cast<QVBoxLayout*>(centralWidget()->layout());
        column->setAlignment(Qt::Alignment());
        column->addWidget(m_table, 1);
        tellShape(*file);
        if (!editing) {
            m_follower = new SampleFollower(*m_table, m_path, this);
            connectFollower();
        }
        m_watch.watch(m_path);
        connectTable();
        connectParts();
    }
    createActions();
    createMenus();
    createToolBar();
    showTitle();
    updateActions();
    if (m_table != nullptr) {
        fillContextMenu();
        m_table->view().setFocus();
    }
}

bool TsTableView::mayEdit()
{
    TsApplication* const application = TsApplication::instance();
    if (!isWritable(m_path)) {
        addNote(QStringLiteral("%1 is read-only, so it is listed.").arg(m_name));
        return false;
    }
    if (application != nullptr && application->isOpenForWriting(m_path)) {
        addNote(QStringLiteral("%1 is being edited in another window, so it is listed here.").arg(m_name));
        return false;
    }
    if (application != nullptr)
        application->registerWriter(m_path);
    return true;
}

void TsTableView::tellShape(TSFILE& file)
{
    for (const QString& note : ringNotes(FileTime(file), *m_model))
        addNote(note);
    if (file.columns() > static_cast<std::uint32_t>(TsTableModel::kMostColumns))
        addNote(QStringLiteral("Of %1 columns the first %2 are shown.")
                    .arg(groupedNumber(file.columns()), groupedNumber(TsTableModel::kMostColumns)));
}

void TsTableView::connectTable()
{
    SampleView& view = m_table->view();
    connect(&view, SIGNAL(activated(QModelIndex)), this, SLOT(sl_currentCell(QModelIndex)));
    const auto followColumn = [this, &view] {
        connect(view.selectionModel(), SIGNAL(currentColumnChanged(QModelIndex, QModelIndex)), this,
                SLOT(sl_currentColumn(QModelIndex, QModelIndex)));
    };
    connect(&view, &SampleView::x_model_set, this, followColumn);
    followColumn();
    connect(&view, &SampleView::x_selected, this, &TsTableView::updateActions);
    connect(m_table, &SampleTable::x_columns_chosen, this, &TsTableView::sl_col_selected);
    connect(m_model.get(), &TsTableModel::x_edited, this, [this] {
        showTitle();
        updateActions();
        m_status->followChanges();
    });
}

void TsTableView::connectParts()
{
    connect(m_table, &SampleTable::x_status, this, &TsTableView::showStatus);
    connect(m_table, &SampleTable::x_failed, this, &TsTableView::showFailure);
    connect(m_search, &SampleSearch::x_status, this, &TsTableView::showStatus);
    connect(m_search, &SampleSearch::x_found, this, &TsTableView::showOutcome);
    connect(m_search, &SampleSearch::x_failed, this, &TsTableView::showFailure);
    if (m_editor == nullptr)
        return;
    connect(m_editor, &SampleEditor::x_status, this, &TsTableView::showStatus);
    connect(m_editor, &SampleEditor::x_failed, this, &TsTableView::showFailure);
    connect(m_editor, &SampleEditor::x_file_made, this, &TsTableView::x_directory_changed);
    connect(m_editor, &SampleEditor::x_written, this, [this] {
        m_watch.watch(m_path);
        m_changed->hide();
    });
}

void TsTableView::connectFollower()
{
    connect(m_follower, &SampleFollower::x_replaced, this, &TsTableView::readAgain);
    connect(m_follower, &SampleFollower::x_rows_came, this, [this] {
        m_notes->clear();
        m_notes->hide();
        tellShape(m_model->file());
        m_status->followChanges();
    });
    connect(m_follower, &SampleFollower::x_trouble, this, [this](const QString& text) {
        if (text.isEmpty())
            m_changed->hide();
        else
            m_changed->showNotice(text);
    });
    connect(m_follower, &SampleFollower::x_stopped, this, [this] {
        m_actions[SampleAct::Follow]->setChecked(false);
        showStatus(QStringLiteral("No longer at the end; L follows it again."));
        m_watch.watch(m_path);
    });
}

void TsTableView::sl_follow()
{
    m_changed->hide();
    m_follower->setOn(m_actions[SampleAct::Follow]->isChecked());
    m_watch.watch(m_path);
    showFileState();
}

void TsTableView::createActions()
{
    for (const auto& [act, action] : m_actions)
        delete action;
    m_actions.clear();
    makeActions(this, this, windowActions(), m_actions);
    if (m_table == nullptr) {
        // Only what works without a file.
        for (const auto& [act, action] : m_actions)
            action->setEnabled(act == SampleAct::Reload || act == SampleAct::Quit || act == SampleAct::Help);
        return;
    }
    makeActions(this, m_search, searchActions(), m_actions);
    if (m_editor != nullptr)
        makeActions(this, m_editor, editorActions(), m_actions);
    // Under edits the file is not taken away.
    for (const SampleAct act : {SampleAct::Reload, SampleAct::RestoreOldValues}) {
        m_actions[act]->setVisible(!isEditing());
        m_actions[act]->setEnabled(!isEditing());
    }
    m_actions[SampleAct::Follow]->setVisible(!isEditing());
    m_actions[SampleAct::Follow]->setEnabled(!isEditing());
    m_actions[SampleAct::Plot]->setEnabled(TsApplication::instance() != nullptr);
    m_actions[SampleAct::WriteSelected]->setVisible(TsApplication::instance() != nullptr);
}

void TsTableView::createMenus()
{
    menuBar()->clear();
    for (const SampleMenuRow& row : sampleMenus()) {
        QMenu* const menu = menuBar()->addMenu(QString::fromLatin1(row.title));
        for (const std::optional<SampleAct>& act : row.acts) {
            if (!act)
                menu->addSeparator();
            else if (const auto action = m_actions.find(*act); action != m_actions.end())
                menu->addAction(action->second);
        }
        if (row.acts.front() == SampleAct::Help)
            addWhatsThis(menu);
        if (row.acts.front() == SampleAct::Undo && m_editor != nullptr)
            m_operations = m_editor->addOperations(*menuBar()->addMenu(QStringLiteral("&Values")));
        if (menu->isEmpty())
            menuBar()->removeAction(menu->menuAction());
    }
}

void TsTableView::createToolBar()
{
    delete findChild<QToolBar*>();
    QToolBar* const bar = addToolBar(QStringLiteral("ToolBar"));
    auto* const label = new QLabel(QStringLiteral("Rowheight:"));
    auto* const height = new QSpinBox;
    height->setRange(kLeastRowHeight, kGreatestRowHeight);
    height->setValue(kRowHeight);
    height->setAccessibleName(QStringLiteral("Row height in pixels"));
    height->setToolTip(QStringLiteral("The height of the table's rows, in pixels."));
    label->setBuddy(height);
    QCheckBox* const sorting =
        m_table != nullptr ? m_table->sortingBox() : new QCheckBox(QStringLiteral("Enable sorting"));
    bar->addWidget(label);
    bar->addWidget(height);
    bar->addWidget(sorting);
    bar->addSeparator();
    for (const SampleAct act : {SampleAct::Plot, SampleAct::Max, SampleAct::Min, SampleAct::Average,
                                SampleAct::Grid, SampleAct::Follow, SampleAct::Quit})
        bar->addAction(m_actions[act]);
    height->setEnabled(m_table != nullptr);
    sorting->setEnabled(m_table != nullptr);
    connect(height, SIGNAL(valueChanged(int)), this, SLOT(sl_rowHeight(int)));
    connect(sorting, SIGNAL(stateChanged(int)), this, SLOT(sl_sorting(int)));
}

void TsTableView::fillContextMenu()
{
    SampleView& view = m_table->view();
    for (const SampleAct act : {SampleAct::Copy, SampleAct::Paste, SampleAct::Max, SampleAct::Min,
                                SampleAct::Average, SampleAct::Plot, SampleAct::GoTo})
        if (const auto action = m_actions.find(act); action != m_actions.end())
            view.addAction(action->second);
    view.addActions({m_operations.begin(), m_operations.end()});
}

void TsTableView::updateActions()
{
    if (!isEditing())
        return;
    const EditList& edits = m_editor->edits();
    m_actions[SampleAct::Save]->setEnabled(edits.isChanged());
    m_actions[SampleAct::Undo]->setEnabled(edits.canUndo());
    m_actions[SampleAct::Redo]->setEnabled(edits.canRedo());
    m_actions[SampleAct::Undo]->setText(
        (QStringLiteral("&Undo ") + QString::fromStdString(edits.undoName())).trimmed());
    m_actions[SampleAct::Redo]->setText(
        (QStringLiteral("&Redo ") + QString::fromStdString(edits.redoName())).trimmed());
    for (QAction* const action : m_operations)
        action->setEnabled(!m_table->view().selectedBlocks().empty());
}

// -- What is told --

void TsTableView::showTitle()
{
    const QString pattern =
        isEditing() ? QStringLiteral("Veltrac, editing %1") : QStringLiteral("Veltrac, listing %1");
    const bool changed = isEditing() && m_editor->isChanged();
    setWindowTitle(pattern.arg(m_name) + (changed ? QStringLiteral("*") : QString()));
    setWindowIcon(QIcon(isEditing() ? QStringLiteral(":/img_EditTs") : QStringLiteral(":/img_ListTs")));
}

void TsTableView::showStatus(const QString& text)
{
    statusBar()->showMessage(text, kMessageMs);
}

void TsTableView::addNote(const QString& text)
{
    m_notes->setText(m_notes->text().isEmpty() ? text : m_notes->text() + QLatin1Char('\n') + text);
    m_notes->show();
}

void TsTableView::showOutcome(const QString& text)
{
    showBox(QMessageBox::Information, this, QStringLiteral("Ts-Edit"), text, QStringLiteral("&Ok"));
}

void TsTableView::showFailure(const QString& text)
{
    showBox(QMessageBox::Warning, this, QStringLiteral("Ts-Edit"), text, QStringLiteral("&Ok"));
}

// -- The file on the disk --

void TsTableView::changeEvent(QEvent* event)
{
    SubWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_watch.look();
}

void TsTableView::showFileState()
{
    // Who follows a file sees what becomes of it.
    if (m_follower != nullptr && m_follower->isOn())
        return;
    switch (m_watch.state(m_path)) {
        case FileWatch::State::Same:
            m_changed->hide();
            break;
        case FileWatch::State::Gone:
            m_changed->showNotice(QStringLiteral("%1 is gone; it is shown as it was.").arg(m_name),
                                  isEditing() ? QStringLiteral("Save as new file…") : QString());
            break;
        case FileWatch::State::Changed:
            m_changed->showNotice(QStringLiteral("%1 has changed.").arg(m_name), QStringLiteral("&Reload"));
            break;
    }
}

void TsTableView::answerNotice()
{
    if (isEditing() && m_watch.state(m_path) == FileWatch::State::Gone)
        m_editor->sl_saveAs();
    else
        sl_reload();
}

void TsTableView::sl_reload()
{
    if (m_editor != nullptr && !m_editor->mayClose())
        return;
    if (m_table == nullptr) {
        if (TSFILE* const file = openQuietly(m_path))
            showFile(file, m_mode);
        return;
    }
    readAgain();
}

void TsTableView::readAgain()
{
    try {
        std::unique_ptr<TSFILE> file = openTsFile(m_path.toLocal8Bit().toStdString(), true);
        m_watch.watch(m_path);
        m_changed->hide();
        m_status->stop();
        m_table->show(std::move(file));
        m_table->view().setFocus();
    } catch (...) {
        showStatus(QStringLiteral("%1 cannot be opened any more.").arg(m_name));
        return;
    }
    m_status->followChanges();
    showStatus(QStringLiteral("Read again."));
}

void TsTableView::sl_restoreOldValues()
{
    if (askAndRestoreOldValues(this, m_path)) {
        readAgain();
        showStatus(QStringLiteral("The old values are back."));
    }
}

// -- What the user asks for --

veltrac::ColumnExtremes TsTableView::lastScan() const
{
    return m_search != nullptr ? m_search->lastScan() : ColumnExtremes();
}

void TsTableView::sl_rowHeight(int pixels)
{
    m_table->view().setRowHeight(pixels);
}

void TsTableView::sl_sorting(int state)
{
    m_table->setSorting(state != Qt::Unchecked);
    updateActions();
}

void TsTableView::sl_col_selected()
{
    m_table->showChosenColumns();
    m_status->followChanges();
}

void TsTableView::sl_currentCell(const QModelIndex& index)
{
    if (index.isValid())
        m_table->setColumn(index.column());
}

void TsTableView::sl_currentColumn(const QModelIndex& current, const QModelIndex& /*previous*/)
{
    sl_currentCell(current);
}

void TsTableView::sl_plotcol()
{
    TsApplication* const application = TsApplication::instance();
    const auto column = static_cast<unsigned>(m_table->column()) + 1;
    if (application == nullptr ||
        application->openSubProgram(SubProgram::PlotColumn, m_path, column) == nullptr)
        showStatus(QStringLiteral("The column cannot be plotted."));
    else if (isEditing() && m_editor->isChanged())
        showStatus(QStringLiteral("The plot shows the file, without the edits that are not saved."));
}

void TsTableView::sl_findmax()
{
    m_search->findMaximum();
}

void TsTableView::sl_findmin()
{
    m_search->findMinimum();
}

void TsTableView::sl_findaverage()
{
    m_search->findAverage();
}

void TsTableView::sl_showGrid()
{
    SampleView& view = m_table->view();
    view.setShowGrid(!view.showGrid());
    m_actions[SampleAct::Grid]->setChecked(view.showGrid());
}

void TsTableView::sl_altCol()
{
    SampleView& view = m_table->view();
    view.setAlternatingRowColors(!view.alternatingRowColors());
    m_actions[SampleAct::AltColours]->setChecked(view.alternatingRowColors());
}

void TsTableView::sl_finished()
{
    close();
}

void TsTableView::sl_copy()
{
    m_table->copy(false);
}

void TsTableView::sl_copyWithNames()
{
    m_table->copy(true);
}

void TsTableView::sl_selectAll()
{
    m_table->view().selectAll();
}

void TsTableView::sl_writeSelected()
{
    const SampleView& view = m_table->view();
    if (view.rows().isSorted() || view.selectedBlocks().size() != 1) {
        showStatus(QStringLiteral("Select one block of samples of the unsorted table first."));
        return;
    }
    if (isEditing() && m_editor->isChanged()) {
        showStatus(QStringLiteral("Save the edits first: the text is written from the file."));
        return;
    }
    const CellBlock& block = view.selectedBlocks().front();
    TsApplication::instance()->exportInterval(m_path, static_cast<std::uint32_t>(block.firstRow) + 1,
                                              static_cast<std::uint32_t>(block.lastRow) + 1);
}

void TsTableView::sl_help()
{
    showHelp(this, QStringLiteral("list"), QStringLiteral("Veltrac, listing and editing"));
}

bool TsTableView::mayClose()
{
    return m_editor == nullptr || m_editor->mayClose();
}
