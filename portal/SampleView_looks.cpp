// SampleView: how high its rows and how wide its columns are.

#include <QHeaderView>
#include <QScrollBar>

#include <algorithm>

#include "portal/SampleView.h"

namespace veltrac {

namespace {

constexpr int kWidestColumn = 150;  // pixels; longer names wrap
constexpr int kMostHeaderLines = 4;
constexpr int kColumnsToFit = 1000;
constexpr int kHeaderMargin = 4;

}  // namespace

void SampleView::setRowHeight(int pixels)
{
    verticalHeader()->setDefaultSectionSize(pixels);
    syncBar();
}

void SampleView::fitColumns()
{
    const int columns = std::min(m_model->columnCount(), kColumnsToFit);
    QFont bold = horizontalHeader()->font();
    bold.setBold(true);  // as the name of a selected column is
    const QFontMetrics metrics(bold);
    int height = 0;
    for (int column = 0; column < columns; ++column) {
        resizeColumnToContents(column);
        const QString name = model()->headerData(column, Qt::Horizontal).toString();
        int least = std::max(kWidestColumn, sizeHintForColumn(column));
        for (const QString& word : name.split(QLatin1Char(' ')))
            least = std::max(least, metrics.horizontalAdvance(word) + 4 * kHeaderMargin);
        setColumnWidth(column, std::min(columnWidth(column), least));
        const QRect box(0, 0, columnWidth(column) - 2 * kHeaderMargin,
                        kMostHeaderLines * metrics.lineSpacing());
        height = std::max(
            height, metrics.boundingRect(box, static_cast<int>(horizontalHeader()->defaultAlignment()), name)
                        .height());
    }
    horizontalHeader()->setFixedHeight(std::min(height, kMostHeaderLines * metrics.lineSpacing()) +
                                       2 * kHeaderMargin);
}

// Longer numbers may have come into view; half of a number would be read as another one.
void SampleView::widenColumns()
{
    m_widenTimer.stop();
    const int last = columnAt(viewport()->width() - 1);
    for (int column = columnAt(0); column >= 0 && column <= (last < 0 ? m_model->columnCount() - 1 : last);
         ++column)
        if (!isColumnHidden(column) && !m_sizedByHand.contains(column))
            setColumnWidth(column, std::max(columnWidth(column), sizeHintForColumn(column)));
}

}  // namespace veltrac
