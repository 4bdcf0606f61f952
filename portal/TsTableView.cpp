// TsTableView: building the window and what it shows. TsTableView_actions.cpp has its actions and menus,
// TsTableView_list.cpp looks into the file, TsTableView_edit.cpp changes it.

#include "portal/TsTableView.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QScrollBar>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "core/ColumnCopy.h"
#include "core/TsNames.h"
#include "portal/CellDelegate.h"
#include "portal/FindBar.h"
#include "portal/SelectionStatistics.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/GoTo.h"
#include "share/GroupedNumber.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"
#include "share/NoticeStrip.h"

using namespace veltrac;

namespace {

constexpr int kEditMode = 1;
constexpr int kRefusedMs = 8000;
constexpr int kTableWidth = 400;
constexpr int kColumnListWidth = 100;
constexpr int kWatchMs = 2000;
constexpr double kNineDigits = 1e9;
constexpr int kMostDecimals = 12;
constexpr int kMoreDecimals = 2;

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

// The decimals of a number as it is written shortest.
int decimalsOf(float number)
{
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed).ptr;
    const auto point = std::find(text, end, '.');
    return point == end ? 0 : static_cast<int>(end - point) - 1;
}

// With as many decimals as it takes to tell a sample from the next, and some more where they make it exact.
QString elapsedText(double elapsed, TSFILE& file)
{
    const float dt = file.dt();
    if (file.timeColumn() != 0 || !(dt > 0.0F) || !std::isfinite(dt))
        return std::abs(elapsed) < kNineDigits ? QString::number(elapsed, 'g', 9)
                                               : QString::number(elapsed, 'f', 0);
    const int least = std::clamp(static_cast<int>(std::ceil(-std::log10(dt))) + 1, 0, kMostDecimals);
    const int exact = decimalsOf(dt);
    return QString::number(elapsed, 'f', exact <= least + kMoreDecimals ? std::max(least, exact) : least);
}

}  // namespace

TsTableView::TsTableView(const QString& file, QWidget* mainWindow, int mode)
    : m_name(QFileInfo(file).fileName()), m_path(QFileInfo(file).absoluteFilePath())
{
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
    m_note->setTextFormat(Qt::PlainText);
    m_note->setContentsMargins(6, 3, 6, 3);
    m_note->setBackgroundRole(QPalette::ToolTipBase);
    m_note->setForegroundRole(QPalette::ToolTipText);
    m_note->setAutoFillBackground(true);
    m_note->hide();
    noteFileTime();
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
                 .arg(oldestRow(*opened)));
    if (opened->columns() > static_cast<std::uint32_t>(TsTableModel::kMostColumns))
        note(QStringLiteral("Of %1 columns the first %2 are shown.")
                 .arg(groupedNumber(opened->columns()), groupedNumber(TsTableModel::kMostColumns)));
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

void TsTableView::createTable()
{
    auto* const centre = new QWidget;
    auto* const column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_note);
    m_changed = new NoticeStrip;
    column->addWidget(m_changed);
    connect(m_changed, &NoticeStrip::x_pressed, this, &TsTableView::sl_reload);
    setCentralWidget(centre);
    startTimer(kWatchMs);
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
    splitter->setSizes({kColumnListWidth, kTableWidth});
    column->addWidget(splitter, 1);
    column->addWidget(m_findBar);

    fillColumnList();
    setUpView();
    connectView();
}

void TsTableView::setUpView()
{
    auto* const delegate = new CellDelegate(m_view);
    m_view->setItemDelegate(delegate);
    connect(delegate, &CellDelegate::x_refused, this, [this](const QString& text) {
        statusBar()->showMessage(QStringLiteral("\"%1\" is no number; the cell keeps its value.").arg(text),
                                 kRefusedMs);
    });
    // Where nothing is edited, Tab goes on to the other parts of the window.
    m_view->setTabKeyNavigation(isEditing());
    m_view->setEditTriggers(isEditing()
                                ? QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                                      QAbstractItemView::AnyKeyPressed
                                : QAbstractItemView::NoEditTriggers);
    m_view->setRowText([this](int r) { return rowText(r); });
    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    for (const Act act : {kCopy, kPaste, kMax, kMin, kAverage, kPlot, kGoTo})
        m_view->addAction(m_actions[static_cast<std::size_t>(act)]);
    m_view->addActions({m_operations.begin(), m_operations.end()});
}

void TsTableView::connectView()
{
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
    // A new model shows all columns.
    connect(m_view, &SampleView::x_model_set, this, &TsTableView::sl_col_selected);
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
        label->setTextFormat(Qt::PlainText);
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

void TsTableView::showEvent(QShowEvent* event)
{
    SubWindow::showEvent(event);
    if (m_view != nullptr && !m_fitted) {
        m_fitted = true;
        m_view->fitColumns();
    }
}

void TsTableView::tell(QMessageBox::Icon icon, const QString& text)
{
    showBox(icon, this, QStringLiteral("Ts-Edit"), text, QStringLiteral("&Ok"));
}

// -- The file on the disk --

void TsTableView::changeEvent(QEvent* event)
{
    SubWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        checkFile();
}

void TsTableView::timerEvent(QTimerEvent* /*event*/)
{
    checkFile();
}

void TsTableView::noteFileTime()
{
    m_fileTime = m_toldTime = QFileInfo(m_path).lastModified();
    if (m_changed != nullptr)
        m_changed->hide();
}

void TsTableView::checkFile()
{
    if (m_view == nullptr || JobProgress::isRunning())
        return;
    const QDateTime time = QFileInfo(m_path).lastModified();
    if (time == m_toldTime)
        return;
    m_toldTime = time;
    if (time == m_fileTime)
        m_changed->hide();
    else if (!time.isValid())
        m_changed->tell(QStringLiteral("%1 is gone; it is shown as it was.").arg(m_name));
    else
        m_changed->tell(QStringLiteral("%1 has changed.").arg(m_name),
                        isEditing() ? QString() : QStringLiteral("&Reload"));
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
        if (!std::isfinite(elapsed))
            return QStringLiteral("time unknown");
        const QString unit = bareTimeUnit(headerText(file.timeUnit()));
        QString text = elapsedText(elapsed, file) + QLatin1Char(' ') + unit;
        if (hasCalendar(file)) {
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
        held == sample ? groupedNumber(sample)
                       : QStringLiteral("%1 (row %2)").arg(groupedNumber(held), groupedNumber(sample));
    return QStringLiteral("Sample %1 of %2, %3")
        .arg(number, groupedNumber(m_model->rowCount()), timeText(sample));
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
    for (const CellBlock& block : m_view->selectedBlocks()) {
        const std::vector<SampleRun> samples = m_view->samplesOfRows(block.firstRow, block.lastRow);
        for (const int column : visibleColumns(block.firstColumn, block.lastColumn)) {
            // Bits of integers are neither changed nor averaged.
            if (m_model->isIntegerColumn(column))
                continue;
            for (SampleRun run : samples) {
                run.column = static_cast<std::uint32_t>(column) + 1;
                runs.push_back(run);
            }
        }
    }
    return joinedRuns(std::move(runs));
}
