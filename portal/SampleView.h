// The table of a ts-file of any length.
//
// QTableView keeps state for each row and breaks at some 100 million of them. So above a million samples a
// RowWindow stands before the model, and this view moves it under the user: its own scroll bar counts all
// samples, arrows and pages run on over the window's edges, and the selection is kept here, as blocks of all
// rows, of which the window shows its share.
//
// Rows here count from 0 over all rows of the table: those of the model, or of its sorted rows.
#pragma once

#include <QTableView>

#include <cstdint>
#include <vector>

#include "portal/ShownRows.h"

class QScrollBar;

namespace veltrac {

class ColumnFit;
class DragSelection;

// Both ends included.
struct CellBlock
{
    int firstRow = 0;
    int lastRow = 0;
    int firstColumn = 0;
    int lastColumn = 0;
};

class SampleView : public QTableView
{
    Q_OBJECT

public:
    // The model is borrowed.
    explicit SampleView(TsTableModel* model, QWidget* parent = nullptr);
    ~SampleView() override;

    // Stands beside the view, where the window puts it; the view's own vertical bar is hidden.
    QScrollBar* sampleBar() const { return m_bar; }

    // All samples in their order, the current cell kept. Also after the model's file has changed.
    void showAll();
    // Only these samples, in this order.
    void showSorted(std::vector<std::uint32_t> samples);
    // To be called before the model's file changes.
    void detach();

    const ShownRows& rows() const { return m_rows; }
    int currentRow() const { return m_current.row; }
    int currentColumn() const { return m_current.column; }
    // Makes a cell the current and only selected one, and shows it.
    void goTo(int row, int column);
    // False where the table, sorted, does not show the sample.
    bool goToSample(std::uint32_t sample, int column);

    // What is selected, hidden columns included.
    const std::vector<CellBlock>& selectedBlocks() const { return m_selection; }
    void selectBlock(const CellBlock& block);
    void selectAll() override;

    void setRowHeight(int pixels);
    // Fits the columns to their names and to what is in view.
    void fitColumns();

signals:
    void x_selected();
    // The current cell has moved.
    void x_current_moved();
    // There is a new selection model.
    void x_model_set();

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void updateGeometries() override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    // Typing would search through the whole file for a cell that begins so.
    void keyboardSearch(const QString& text) override;

private:
    struct Cell
    {
        int row = 0;
        int column = 0;
    };

    void showModel(QAbstractItemModel* model);
    void replaceModel(QAbstractItemModel* model);
    QModelIndex indexOfRow(int row, int column) const;
    void moveWindow(int base);
    void moveWindowTo(int row);
    void keepAwayFromEdges();
    void applySelection();
    void extendTo(int row, int column);
    void dragTo(const QPoint& place);
    void syncBar();
    void scrollToTop(int row);
    void noteSelection();
    void moveCurrent(const QModelIndex& current);
    void noteCurrent(const QModelIndex& current);

    TsTableModel* m_model;
    ShownRows m_rows;
    QScrollBar* m_bar;
    ColumnFit* m_fit;
    DragSelection* m_drag;
    std::vector<CellBlock> m_selection;
    bool m_applying = false;        // the selection model is being brought in line with m_selection
    bool m_currentChanges = false;  // an editor that closes now was left for another cell
    Cell m_current;
    Cell m_anchor;  // where a selection by Shift begins
};

}  // namespace veltrac
