#include "converters/STLPreview.h"

#include <QApplication>
#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTimer>

#include <algorithm>

namespace veltrac {

namespace {

constexpr QRgb kTroubleColour = 0xFFF4A09A;
constexpr QRgb kLeftOutColour = 0xFFDCDCDC;

// Paints a line with its marks.
class MarkedLine : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const auto marks = index.data(STLLines::kMarksRole).value<QVector<STLLines::Mark>>();
        QStyledItemDelegate::paint(painter, option, index);
        if (marks.isEmpty())
            return;
        // Over the plain text, the same text with its marks; tabs are as wide as the style has them.
        QStyleOptionViewItem shown = option;
        initStyleOption(&shown, index);
        const QRect area =
            QApplication::style()
                ->subElementRect(QStyle::SE_ItemViewItemText, &shown, shown.widget)
                .adjusted(QApplication::style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1, 0, 0, 0);
        const QFontMetrics metrics(shown.font);
        painter->save();
        painter->setFont(shown.font);
        painter->setClipRect(option.rect);
        for (const STLLines::Mark& mark : marks) {
            const int left = metrics.horizontalAdvance(shown.text.left(mark.from));
            const QString text = shown.text.mid(mark.from, mark.length);
            const QRect box(area.left() + left, area.top(), std::max(metrics.horizontalAdvance(text), 4),
                            area.height());
            painter->fillRect(box, QColor(mark.understood ? kLeftOutColour : kTroubleColour));
            painter->setPen(Qt::black);
            painter->drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
        }
        painter->restore();
    }
};

}  // namespace

STLPreview::STLPreview(STLLines& lines, QWidget* parent) : QTableView(parent)
{
    setModel(&lines);
    setItemDelegate(new MarkedLine(this));
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setAccessibleName(QStringLiteral("The file's first lines"));
    horizontalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
}

void STLPreview::widen()
{
    resizeColumnToContents(0);
    setColumnWidth(0, std::max(columnWidth(0), viewport()->width()));
}

void STLPreview::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    QTimer::singleShot(0, this, &STLPreview::widen);
}

}  // namespace veltrac
