#include "share/WindowManners.h"

#include <QLabel>
#include <QWidget>

#include <algorithm>
#include <vector>

namespace veltrac {

namespace {

// The visible widgets of a part in the order of reading: those belong to a row whose middle lies beside the
// first of it, or the other way round.
std::vector<QWidget*> asRead(const QWidget& part)
{
    std::vector<QWidget*> left;
    for (QWidget* const child : part.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (!child->isWindow() && child->isVisible())
            left.push_back(child);
    std::stable_sort(left.begin(), left.end(),
                     [](const QWidget* a, const QWidget* b) { return a->y() < b->y(); });
    std::vector<QWidget*> order;
    while (!left.empty()) {
        // What has no height lies above its own middle: it begins its row all the same.
        const QRect first = left.front()->geometry();
        const int bottom = std::max(first.bottom(), first.center().y());
        const auto rest = std::stable_partition(left.begin(), left.end(), [&](const QWidget* w) {
            return w->geometry().center().y() <= bottom || w->y() <= first.center().y();
        });
        std::stable_sort(left.begin(), rest,
                         [](const QWidget* a, const QWidget* b) { return a->x() < b->x(); });
        order.insert(order.end(), left.begin(), rest);
        left.erase(left.begin(), rest);
    }
    return order;
}

void collectStops(const QWidget& part, std::vector<QWidget*>& stops)
{
    for (QWidget* const widget : asRead(part)) {
        if ((widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr)
            stops.push_back(widget);
        collectStops(*widget, stops);
    }
}

}  // namespace

bool ReadingWindow::focusNextPrevChild(bool next)
{
    std::vector<QWidget*> stops;
    collectStops(*this, stops);
    for (std::size_t i = 1; i < stops.size(); ++i)
        QWidget::setTabOrder(stops[i - 1], stops[i]);
    return QMainWindow::focusNextPrevChild(next);
}

void explainByTips(QWidget& window)
{
    for (QWidget* const widget : window.findChildren<QWidget*>())
        if (widget->whatsThis().isEmpty() && !widget->toolTip().isEmpty())
            widget->setWhatsThis(widget->toolTip());
    for (QLabel* const label : window.findChildren<QLabel*>())
        if (label->whatsThis().isEmpty() && label->buddy() != nullptr)
            label->setWhatsThis(label->buddy()->whatsThis());
}

}  // namespace veltrac
