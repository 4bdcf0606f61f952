#include "share/CursorTable.h"

#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "share/PlotCanvas.h"

namespace veltrac {

namespace {

constexpr int kDelayMs = 20;
constexpr int kCellMargin = 12;
constexpr int kRowMargin = 6;

}  // namespace

CursorTable::CursorTable(PlotCanvas* canvas, QWidget* parent)
    : QWidget(parent),
      m_canvas(canvas),
      m_times(new QLabel),
      m_table(new QTableWidget(0, static_cast<int>(kIntervalHeadings.size())))
{
    // A long text is shortened rather than that the window grows with it; the tool tip has all of it.
    m_times->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_times->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QStringList headings;
    for (const char* const heading : kIntervalHeadings)
        headings.append(QString::fromUtf8(heading));
    m_table->setHorizontalHeaderLabels(headings);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setTabKeyNavigation(false);  // Tab leaves the table, the arrows walk in it
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + kRowMargin);
    m_table->setMinimumHeight(3 * m_table->verticalHeader()->defaultSectionSize());
    setWhatsThis(
        tr("The values at the cursors A and B, and the statistics between them; without cursors those "
           "of what is in view."));
    m_table->setAccessibleName(tr("Values at the cursors and between them"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(4, 2, 4, 2);
    column->setSpacing(2);
    column->addWidget(m_times);
    column->addWidget(m_table, 1);

    m_later.setSingleShot(true);
    m_later.setInterval(kDelayMs);
    connect(&m_later, &QTimer::timeout, this, &CursorTable::fill);
    const auto later = [this] {
        if (!m_later.isActive())
            m_later.start();
    };
    connect(canvas, &PlotCanvas::x_cursors_changed, this, later);
    connect(canvas, &PlotCanvas::x_view_changed, this, later);
    connect(canvas, &PlotCanvas::x_plot_changed, this, later);
}

QSize CursorTable::sizeHint() const
{
    constexpr int kRows = 3;  // the headings too
    const QSize all = QWidget::sizeHint();
    return {all.width(), all.height() - m_table->sizeHint().height() +
                             m_table->horizontalScrollBar()->sizeHint().height() +
                             kRows * m_table->verticalHeader()->defaultSectionSize()};
}

void CursorTable::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    fill();
}

void CursorTable::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    showTimes();
}

// As much of the text as there is room for.
void CursorTable::showTimes()
{
    m_times->setText(m_times->fontMetrics().elidedText(m_times->toolTip(), Qt::ElideRight, m_times->width()));
}

void CursorTable::fill()
{
    if (!isVisible())
        return;
    const Plot2D& plot = m_canvas->plot();
    const QString times = QString::fromStdString(cursorText(plot));
    const Plot2D::Extent interval = plot.interval();
    const bool isView = !plot.cursor(Plot2D::A) || !plot.cursor(Plot2D::B);
    QString text = times;
    if (isView)
        text += (times.isEmpty() ? QString() : QStringLiteral("     ")) +
                tr("In view: %1 to %2")
                    .arg(QString::fromStdString(xText(plot, interval.x1)),
                         QString::fromStdString(xText(plot, interval.x2)));
    m_times->setToolTip(text);
    showTimes();

    const std::vector<IntervalRow> rows = intervalRows(plot);
    m_table->setRowCount(static_cast<int>(rows.size()));
    int r = 0;
    for (const IntervalRow& row : rows)
        fillRow(r++, intervalFields(plot, row), m_canvas->colorOf(row.variable->variable()));
    fitColumns();
}

void CursorTable::fillRow(int row, const IntervalFields& fields, const QColor& color)
{
    for (int c = 0; c < m_table->columnCount(); ++c) {
        QTableWidgetItem* item = m_table->item(row, c);
        if (item == nullptr) {
            item = new QTableWidgetItem;
            if (c >= 2)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            m_table->setItem(row, c, item);
        }
        item->setText(QString::fromStdString(fields[static_cast<std::size_t>(c)]));
        if (c == 0)
            item->setForeground(color);
    }
}

// Columns grow with their contents and never shrink, so that the table stands still under a drag.
void CursorTable::fitColumns()
{
    const QFontMetrics metrics = m_table->fontMetrics();
    for (int c = 0; c < m_table->columnCount(); ++c) {
        int width = m_sized ? m_table->columnWidth(c)
                            : metrics.horizontalAdvance(m_table->horizontalHeaderItem(c)->text());
        for (int r = 0; r < m_table->rowCount(); ++r)
            width = std::max(width, metrics.horizontalAdvance(m_table->item(r, c)->text()) + kCellMargin);
        m_table->setColumnWidth(c, std::max(width, m_table->horizontalHeader()->sectionSizeHint(c)));
    }
    m_sized = true;
}

}  // namespace veltrac
