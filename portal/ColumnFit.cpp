#include "portal/ColumnFit.h"

#include <QApplication>
#include <QEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableView>
#include <QTimerEvent>

#include <algorithm>

namespace veltrac {

namespace {

constexpr int kWidestColumn = 150;  // pixels; longer names wrap
constexpr int kMostHeaderLines = 4;
constexpr int kColumnsToFit = 1000;
constexpr int kHeaderMargin = 4;

// As the head of a selected row or column is written.
QFontMetrics boldMetrics(const QWidget& header)
{
    QFont bold = header.font();
    bold.setBold(true);
    return QFontMetrics(bold);
}

}  // namespace

ColumnFit::ColumnFit(QTableView* view) : QObject(view), m_view(*view)
{
    view->installEventFilter(this);
    connect(view->horizontalScrollBar(), &QScrollBar::valueChanged, this, &ColumnFit::widenSoon);
    connect(view->horizontalHeader(), &QHeaderView::sectionResized, this, [this](int column) {
        if (QApplication::mouseButtons() != Qt::NoButton)
            m_sizedByHand.insert(column);
    });
}

void ColumnFit::setGreatestNumber(int number)
{
    m_greatestNumber = number;
    fitRowNumbers();
}

void ColumnFit::fitRowNumbers()
{
    QHeaderView& numbers = *m_view.verticalHeader();
    numbers.setFixedWidth(boldMetrics(numbers).horizontalAdvance(QString::number(m_greatestNumber)) +
                          4 * kHeaderMargin);
}

// A hidden table waits until it is shown: the base takes all of its rows for those in view.
void ColumnFit::fit()
{
    m_fitTimer.stop();
    if (m_view.model() == nullptr || !m_view.isVisible())
        return;
    fitRowNumbers();
    QHeaderView& names = *m_view.horizontalHeader();
    const int columns = std::min(names.count(), kColumnsToFit);
    const QFontMetrics metrics = boldMetrics(names);
    int height = 0;
    for (int column = 0; column < columns; ++column) {
        const QString name = m_view.model()->headerData(column, Qt::Horizontal).toString();
        if (!m_sizedByHand.contains(column)) {
            m_view.resizeColumnToContents(column);
            int least = kWidestColumn;
            for (const QString& word : name.split(QLatin1Char(' ')))
                least = std::max(least, metrics.horizontalAdvance(word) + 4 * kHeaderMargin);
            m_view.setColumnWidth(column, std::min(m_view.columnWidth(column), least));
        }
        const QRect box(0, 0, m_view.columnWidth(column) - 2 * kHeaderMargin,
                        kMostHeaderLines * metrics.lineSpacing());
        height = std::max(
            height, metrics.boundingRect(box, static_cast<int>(names.defaultAlignment()), name).height());
    }
    names.setFixedHeight(std::min(height, kMostHeaderLines * metrics.lineSpacing()) + 2 * kHeaderMargin);
    widen();
}

void ColumnFit::widenSoon()
{
    m_widenTimer.start(0, this);
}

// Longer numbers may have come into view; half of a number would be read as another one.
void ColumnFit::widen()
{
    m_widenTimer.stop();
    if (!m_view.isVisible())
        return;
    // The table view hides what its base offers.
    const QAbstractItemView& hints = m_view;
    const int last = m_view.columnAt(m_view.viewport()->width() - 1);
    const int end = last < 0 ? m_view.horizontalHeader()->count() - 1 : last;
    for (int column = m_view.columnAt(0); column >= 0 && column <= end; ++column)
        if (!m_view.isColumnHidden(column) && !m_sizedByHand.contains(column))
            m_view.setColumnWidth(column,
                                  std::max(m_view.columnWidth(column), hints.sizeHintForColumn(column)));
}

// A desktop's font may arrive after the table was filled. The heads have theirs, and the view its size, once
// the event is over.
bool ColumnFit::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FontChange || (event->type() == QEvent::Show && !event->spontaneous()))
        m_fitTimer.start(0, this);
    return QObject::eventFilter(watched, event);
}

void ColumnFit::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_fitTimer.timerId())
        fit();
    else
        widen();
}

}  // namespace veltrac
