#include "portal/SampleView.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QResizeEvent>
#include <QScrollBar>

#include <algorithm>
#include <map>
#include <utility>

#include "portal/ColumnFit.h"
#include "portal/DragSelection.h"
#include "share/QtCompat.h"

namespace veltrac {

namespace {

constexpr int kRowHeight = 20;

const int kHeaderAlignment = Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextWordWrap;

// Selecting and moving without the view running after its current cell.
class NoAutoScroll
{
public:
    explicit NoAutoScroll(QAbstractItemView& view) : m_view(view), m_before(view.hasAutoScroll())
    {
        m_view.setAutoScroll(false);
    }
    ~NoAutoScroll() { m_view.setAutoScroll(m_before); }
    NoAutoScroll(const NoAutoScroll&) = delete;
    NoAutoScroll& operator=(const NoAutoScroll&) = delete;

private:
    QAbstractItemView& m_view;
    bool m_before;
};

int visibleRows(const QTableView& view)
{
    return std::max(1, view.viewport()->height() / std::max(1, view.verticalHeader()->defaultSectionSize()));
}

// The first or last column that is not hidden.
int edgeColumn(const QTableView& view, bool last)
{
    const int columns = view.model()->columnCount();
    for (int i = 0; i < columns; ++i) {
        const int column = last ? columns - 1 - i : i;
        if (!view.isColumnHidden(column))
            return column;
    }
    return 0;
}

}  // namespace

SampleView::SampleView(TsTableModel* model, QWidget* parent)
    : QTableView(parent),
      m_model(model),
      m_rows(*model),
      m_bar(new QScrollBar(Qt::Vertical)),
      m_fit(new ColumnFit(this)),
      m_drag(new DragSelection(viewport()))
{
    setObjectName(QStringLiteral("samples"));
    setAccessibleName(QStringLiteral("Samples"));
    setWhatsThis(
        QStringLiteral("A row for each sample, a column for each column of the file. Ctrl+G goes to "
                       "a sample, a time or a share of the file, Ctrl+F finds a value."));
    setShowGrid(false);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    setRowHeight(kRowHeight);
    horizontalHeader()->setResizeContentsPrecision(0);
    verticalHeader()->setDefaultAlignment(Qt::AlignRight | Qt::AlignVCenter);
    horizontalHeader()->setDefaultAlignment(Qt::Alignment(kHeaderAlignment));

    m_bar->setAccessibleName(QStringLiteral("Position in the file"));
    connect(m_bar, &QScrollBar::valueChanged, this, &SampleView::scrollToTop);
    connect(m_drag, &DragSelection::x_dragged, this, &SampleView::dragTo);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &SampleView::syncBar);
    showAll();
}

// The models below the view go before its base does: it must not look at them any more.
SampleView::~SampleView()
{
    detach();
}

void SampleView::detach()
{
    replaceModel(nullptr);
    m_rows.drop();
}

void SampleView::showAll()
{
    const std::uint32_t sample = m_current.row < m_rows.total() ? m_rows.sampleOf(m_current.row) : 1;
    detach();
    showModel(m_rows.showAll());
    goToSample(sample, m_current.column);
}

void SampleView::showSorted(std::vector<std::uint32_t> samples)
{
    detach();
    showModel(m_rows.showSorted(std::move(samples)));
    goTo(0, m_current.column);
}

void SampleView::showModel(QAbstractItemModel* model)
{
    m_selection.clear();
    replaceModel(model);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &SampleView::noteSelection);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, &SampleView::noteCurrent);
    m_fit->setGreatestNumber(m_model->rowCount());
    syncBar();
    emit x_model_set();
}

// A view leaves its old selection model to its caller.
void SampleView::replaceModel(QAbstractItemModel* model)
{
    const std::unique_ptr<QItemSelectionModel> old(selectionModel());
    setModel(model);
}

QModelIndex SampleView::indexOfRow(int row, int column) const
{
    return model() == nullptr ? QModelIndex() : model()->index(row - m_rows.offset(), column);
}

// -- The window's place --

void SampleView::moveWindow(int base)
{
    const NoAutoScroll still(*this);
    m_applying = true;
    // An unselected model moves at once; a selected one would first list every single cell.
    selectionModel()->clearSelection();
    m_rows.window()->setBase(base);
    if (m_rows.window()->shows(m_current.row))
        selectionModel()->setCurrentIndex(indexOfRow(m_current.row, m_current.column),
                                          QItemSelectionModel::NoUpdate);
    m_applying = false;
    applySelection();
    syncBar();
}

void SampleView::moveWindowTo(int row)
{
    if (m_rows.window() != nullptr && !m_rows.window()->shows(row))
        moveWindow(row - RowStretch::kRows / 2);
}

// So that the next move by a page stays inside the window.
void SampleView::keepAwayFromEdges()
{
    if (m_rows.window() == nullptr)
        return;
    moveWindowTo(m_current.row);
    const int inWindow = m_current.row - m_rows.offset();
    const int margin = visibleRows(*this) + 1;
    const bool nearTop = inWindow < margin && m_rows.offset() > 0;
    const bool nearEnd =
        inWindow > RowStretch::kRows - margin && m_rows.offset() + RowStretch::kRows < m_model->rowCount();
    if (nearTop || nearEnd)
        moveWindow(m_current.row - RowStretch::kRows / 2);
}

void SampleView::scrollToTop(int row)
{
    if (m_rows.window() != nullptr &&
        (row < m_rows.offset() || row + visibleRows(*this) > m_rows.offset() + RowStretch::kRows))
        moveWindow(row - RowStretch::kRows / 2);
    verticalScrollBar()->setValue(row - m_rows.offset());
}

void SampleView::syncBar()
{
    const QSignalBlocker still(m_bar);
    m_bar->setRange(0, std::max(0, m_rows.total() - visibleRows(*this)));
    m_bar->setPageStep(visibleRows(*this));
    m_bar->setValue(m_rows.offset() + verticalScrollBar()->value());
    m_fit->widenSoon();
}

void SampleView::updateGeometries()
{
    QTableView::updateGeometries();
    if (model() != nullptr)
        syncBar();
}

void SampleView::wheelEvent(QWheelEvent* event)
{
    const bool vertical = event->angleDelta().y() != 0 && event->modifiers() == Qt::NoModifier;
    if (m_rows.window() != nullptr && vertical)
        QApplication::sendEvent(m_bar, event);
    else
        QTableView::wheelEvent(event);
}

// -- The current cell --

void SampleView::goTo(int row, int column)
{
    if (m_rows.total() == 0 || m_model->columnCount() == 0)
        return;
    row = std::clamp(row, 0, m_rows.total() - 1);
    moveWindowTo(row);
    const QModelIndex index = indexOfRow(row, column);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    noteCurrent(index);
    m_anchor = m_current;
    scrollTo(index, QAbstractItemView::EnsureVisible);
}

bool SampleView::goToSample(std::uint32_t sample, int column)
{
    const int row = m_rows.rowOf(sample);
    if (row >= 0)
        goTo(row, column);
    return row >= 0;
}

void SampleView::moveCurrent(const QModelIndex& current)
{
    m_current.row = current.row() + m_rows.offset();
    m_current.column = current.column();
    emit x_current_moved();
}

void SampleView::setRowHeight(int pixels)
{
    verticalHeader()->setDefaultSectionSize(pixels);
    syncBar();
}

void SampleView::fitColumns()
{
    m_fit->fit();
}

// A strip that opens beside the table does not hide the current cell.
void SampleView::resizeEvent(QResizeEvent* event)
{
    const int top = verticalScrollBar()->value() + m_rows.offset();
    const int before = event->oldSize().height() / std::max(1, verticalHeader()->defaultSectionSize());
    const bool shrinks = event->size().height() < event->oldSize().height();
    const bool inView = shrinks && m_current.row >= top && m_current.row < top + before;
    QTableView::resizeEvent(event);
    if (inView && model() != nullptr)
        scrollTo(currentIndex(), QAbstractItemView::EnsureVisible);
}

// A click on the head of a row or column also says where a selection begins.
void SampleView::noteCurrent(const QModelIndex& current)
{
    if (m_applying || !current.isValid())
        return;
    moveCurrent(current);
    if ((QApplication::keyboardModifiers() & Qt::ShiftModifier) == 0)
        m_anchor = m_current;
}

QModelIndex SampleView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    if (m_rows.window() == nullptr)
        return QTableView::moveCursor(action, modifiers);
    const bool ends = (action == MoveHome || action == MoveEnd) && (modifiers & Qt::ControlModifier);
    if (ends) {
        const int row = action == MoveHome ? 0 : m_rows.total() - 1;
        moveWindowTo(row);
        return indexOfRow(row, edgeColumn(*this, action == MoveEnd));
    }
    keepAwayFromEdges();
    return QTableView::moveCursor(action, modifiers);
}

void SampleView::keyPressEvent(QKeyEvent* event)
{
    static const std::map<int, CursorAction> kMoves = {
        {Qt::Key_Up, MoveUp},     {Qt::Key_Down, MoveDown},   {Qt::Key_PageUp, MovePageUp},
        {Qt::Key_Left, MoveLeft}, {Qt::Key_Right, MoveRight}, {Qt::Key_PageDown, MovePageDown},
        {Qt::Key_Home, MoveHome}, {Qt::Key_End, MoveEnd},
    };
    const auto move = kMoves.find(event->key());
    const bool extends = (event->modifiers() & Qt::ShiftModifier) != 0;
    // Qt extends from where it was last pressed or typed, not from where the user has been led since; and the
    // anchor may lie outside of the window.
    if (move != kMoves.end() && extends) {
        const QModelIndex next = moveCursor(move->second, event->modifiers() & ~Qt::ShiftModifier);
        if (next.isValid())
            extendTo(next.row() + m_rows.offset(), next.column());
        return;
    }
    // Qt would leave the selection behind: an edit would then change values that are no longer in view.
    if (move != kMoves.end() && !extends && (event->modifiers() & Qt::ControlModifier) != 0) {
        const QModelIndex next = moveCursor(move->second, event->modifiers());
        m_selection.clear();
        if (next.isValid())
            goTo(next.row() + m_rows.offset(), next.column());
        return;
    }
    // An editor hands its Enter on, too; it moves when it closes.
    const bool enter =
        (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && state() != EditingState;
    QTableView::keyPressEvent(event);
    if (enter && m_model->editedFile() != nullptr && event->modifiers() == Qt::NoModifier) {
        goTo(m_current.row + 1, m_current.column);
        event->accept();
    }
    if (!extends || event->key() == Qt::Key_Backtab)
        m_anchor = m_current;
}

void SampleView::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(mousePlace(*event));
    if (event->button() == Qt::LeftButton && (event->modifiers() & Qt::ShiftModifier) != 0 &&
        index.isValid()) {
        extendTo(index.row() + m_rows.offset(), index.column());
        return;
    }
    QTableView::mousePressEvent(event);
    m_anchor = m_current;
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier && index.isValid())
        m_drag->start();
    else
        m_drag->stop();
}

// Outside of the table the selection runs on, the faster the further away the mouse is.
void SampleView::dragTo(const QPoint& place)
{
    // Else the base class takes the release for a click.
    setState(DragSelectingState);
    const QRect inside = viewport()->rect();
    const QPoint nearest(std::clamp(place.x(), inside.left(), inside.right()),
                         std::clamp(place.y(), inside.top(), inside.bottom()));
    const QModelIndex index = indexAt(nearest);
    if (!index.isValid())
        return;
    const int beyond = place.y() - nearest.y();
    const int step =
        beyond / std::max(1, verticalHeader()->defaultSectionSize()) + (beyond > 0) - (beyond < 0);
    const std::int64_t row =
        std::int64_t{index.row()} + m_rows.offset() + std::int64_t{step} * std::abs(step);
    extendTo(static_cast<int>(std::clamp<std::int64_t>(row, 0, m_rows.total() - 1)), index.column());
}

void SampleView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    m_currentChanges = true;
    QTableView::currentChanged(current, previous);
    m_currentChanges = false;
}

// Enter goes on to the next row. The base class closes with the same hint when another cell becomes the
// current one, which it is to stay.
void SampleView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint)
{
    QTableView::closeEditor(editor, hint);
    if (hint == QAbstractItemDelegate::SubmitModelCache && !m_currentChanges)
        goTo(m_current.row + 1, m_current.column);
}

void SampleView::keyboardSearch(const QString& /*text*/) {}

// -- The selection --

void SampleView::selectBlock(const CellBlock& block)
{
    m_selection = {block};
    applySelection();
    emit x_selected();
}

void SampleView::selectAll()
{
    if (m_rows.total() > 0 && m_model->columnCount() > 0)
        selectBlock({0, m_rows.total() - 1, 0, m_model->columnCount() - 1});
}

void SampleView::extendTo(int row, int column)
{
    moveWindowTo(row);
    m_applying = true;
    const QModelIndex index = indexOfRow(row, column);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    m_applying = false;
    moveCurrent(index);
    scrollTo(index);
    selectBlock({std::min(row, m_anchor.row), std::max(row, m_anchor.row), std::min(column, m_anchor.column),
                 std::max(column, m_anchor.column)});
}

void SampleView::applySelection()
{
    QItemSelection shown;
    const int last = m_rows.offset() + model()->rowCount() - 1;
    for (const CellBlock& block : m_selection) {
        const int from = std::max(block.firstRow, m_rows.offset());
        const int to = std::min(block.lastRow, last);
        if (from <= to)
            shown.select(indexOfRow(from, block.firstColumn), indexOfRow(to, block.lastColumn));
    }
    m_applying = true;
    selectionModel()->select(shown, QItemSelectionModel::ClearAndSelect);
    m_applying = false;
}

void SampleView::noteSelection()
{
    if (m_applying)
        return;
    const int windowEnd = m_rows.offset() + model()->rowCount() - 1;
    std::vector<CellBlock> kept;
    // Ctrl adds to what is selected, also where the window does not show it.
    if (m_rows.window() != nullptr && (QApplication::keyboardModifiers() & Qt::ControlModifier) != 0)
        for (const CellBlock& block : m_selection)
            if (block.lastRow < m_rows.offset() || block.firstRow > windowEnd)
                kept.push_back(block);
    m_selection = std::move(kept);
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        CellBlock block{range.top() + m_rows.offset(), range.bottom() + m_rows.offset(), range.left(),
                        range.right()};
        // A whole column of the window is meant as the whole column.
        if (block.firstRow == m_rows.offset() && block.lastRow == windowEnd) {
            block.firstRow = 0;
            block.lastRow = m_rows.total() - 1;
        }
        m_selection.push_back(block);
    }
    emit x_selected();
}

}  // namespace veltrac
