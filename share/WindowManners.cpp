#include "share/WindowManners.h"

#include <QLabel>
#include <QLayout>
#include <QWidget>

#include <algorithm>
#include <vector>

namespace veltrac {

namespace {

// The widgets of a part in the order of reading: those whose middle lies beside the first of a row belong to
// it.
std::vector<QWidget*> asRead(const QWidget& part)
{
    std::vector<QWidget*> left;
    for (QWidget* const child : part.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (!child->isWindow())
            left.push_back(child);
    std::stable_sort(left.begin(), left.end(),
                     [](const QWidget* a, const QWidget* b) { return a->y() < b->y(); });
    std::vector<QWidget*> order;
    while (!left.empty()) {
        const int bottom = left.front()->geometry().bottom();
        const auto rest = std::stable_partition(left.begin(), left.end(), [bottom](const QWidget* w) {
            return w->geometry().center().y() <= bottom;
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

void tabAsRead(QWidget& window)
{
    if (window.layout() != nullptr)
        window.layout()->activate();
    for (QWidget* const part : window.findChildren<QWidget*>())
        if (part->layout() != nullptr)
            part->layout()->activate();
    std::vector<QWidget*> stops;
    collectStops(window, stops);
    for (std::size_t i = 1; i < stops.size(); ++i)
        QWidget::setTabOrder(stops[i - 1], stops[i]);
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
