#include "share/CursorDock.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "share/PlotCanvas.h"

namespace {

constexpr int kDelayMs = 20;
constexpr int kCellMargin = 12;

}  // namespace

CursorDock::CursorDock(PlotCanvas* canvas, QWidget* parent)
    : QDockWidget(tr("Cursors"), parent),
      m_canvas(canvas),
      m_times(new QLabel),
      m_table(new QTableWidget(0, intervalHeadings().size()))
{
    setObjectName(QStringLiteral("cursorDock"));
    // A long text is cut off rather than that the window grows with it; the tool tip has all of it.
    m_times->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_times->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_table->setHorizontalHeaderLabels(intervalHeadings());
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
    m_table->setMinimumHeight(3 * m_table->verticalHeader()->defaultSectionSize());
    m_table->setAccessibleName(tr("Values at the cursors and between them"));
    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(4, 2, 4, 2);
    column->setSpacing(2);
    column->addWidget(m_times);
    column->addWidget(m_table, 1);
    setWidget(content);

    m_later.setSingleShot(true);
    m_later.setInterval(kDelayMs);
    connect(&m_later, &QTimer::timeout, this, &CursorDock::fill);
    const auto later = [this] {
        if (!m_later.isActive())
            m_later.start();
    };
    connect(canvas, &PlotCanvas::x_cursors_changed, this, later);
    connect(canvas, &PlotCanvas::x_view_changed, this, later);
    connect(canvas, &PlotCanvas::x_plot_changed, this, later);
}

void CursorDock::showEvent(QShowEvent* event)
{
    QDockWidget::showEvent(event);
    fill();
}

void CursorDock::fill()
{
    if (!isVisible())
        return;
    const Plot2D& plot = m_canvas->plot();
    const QString times = cursorText(plot);
    const Plot2D::Extent interval = plot.interval();
    const bool isView = !plot.cursor(Plot2D::A) || !plot.cursor(Plot2D::B);
    QString text = times;
    if (isView)
        text += (times.isEmpty() ? QString() : QStringLiteral("     ")) +
                tr("In view: %1 to %2").arg(xText(plot, interval.x1), xText(plot, interval.x2));
    m_times->setText(text);
    m_times->setToolTip(text);

    const QVector<IntervalRow> rows = intervalRows(plot);
    m_table->setRowCount(rows.size());
    for (int r = 0; r < rows.size(); ++r) {
        const QStringList fields = intervalFields(plot, rows[r]);
        for (int c = 0; c < fields.size(); ++c) {
            QTableWidgetItem* item = m_table->item(r, c);
            if (item == nullptr) {
                item = new QTableWidgetItem;
                if (c >= 2)
                    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                m_table->setItem(r, c, item);
            }
            item->setText(fields[c]);
            if (c == 0)
                item->setForeground(m_canvas->colorOf(rows[r].variable->variable()));
        }
    }
    // Columns grow with their contents and never shrink, so that the table stands still under a drag.
    for (int c = 0; c < m_table->columnCount(); ++c) {
        const QFontMetrics metrics = m_table->fontMetrics();
        int width = m_table->columnWidth(c);
        if (!m_sized)
            width = metrics.horizontalAdvance(intervalHeadings()[c]);
        for (int r = 0; r < rows.size(); ++r)
            width = std::max(width, metrics.horizontalAdvance(m_table->item(r, c)->text()) + kCellMargin);
        m_table->setColumnWidth(c, std::max(width, m_table->horizontalHeader()->sectionSizeHint(c)));
    }
    m_sized = true;
}
