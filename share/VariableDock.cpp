#include "share/VariableDock.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPixmap>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include <algorithm>

#include "core/TsExceptions.h"
#include "share/HeaderText.h"
#include "share/PlotCanvas.h"
#include "share/PlotVariables.h"
#include "share/QtCompat.h"

namespace veltrac {

namespace {

enum TreeColumn { kTreeName, kUnit, kAxis, kTreeColumns };
constexpr int kFileRole = Qt::UserRole;
constexpr int kColumnRole = Qt::UserRole + 1;    // 0 for a file
constexpr int kVariableRole = Qt::UserRole + 2;  // number in the plot's variables, -1 for none
constexpr int kSwatch = 12;
constexpr int kWidth = 250;
constexpr int kIndentation = 12;

class VariableTree : public QTreeWidget
{
public:
    using QTreeWidget::QTreeWidget;

    QSize sizeHint() const override { return {kWidth, 300}; }

protected:
    QStringList mimeTypes() const override { return {QLatin1String(PlotCanvas::variableMimeType())}; }
    QMimeData* mimeData(DraggedItems items) const override
    {
        const int variable = items.isEmpty() ? -1 : items.first()->data(0, kVariableRole).toInt();
        if (variable < 0)
            return nullptr;
        auto* const mime = new QMimeData;
        mime->setData(mimeTypes().first(), QByteArray::number(variable));
        return mime;
    }
};

// The file that an item stands for or belongs to.
QString pathOf(const QTreeWidgetItem* item)
{
    return (item->parent() == nullptr ? item : item->parent())->toolTip(kTreeName);
}

QIcon swatch(const QColor& color)
{
    QPixmap pixmap(kSwatch, kSwatch);
    pixmap.fill(color);
    return pixmap;
}

}  // namespace

VariableDock::VariableDock(PlotCanvas* canvas, QWidget* parent)
    : QDockWidget(tr("Variables"), parent),
      m_canvas(canvas),
      m_filter(new QLineEdit),
      m_tree(new VariableTree),
      m_align(new QPushButton(tr("A&lign start")))
{
    setObjectName(QStringLiteral("variableDock"));
    m_filter->setPlaceholderText(tr("Filter"));
    m_filter->setClearButtonEnabled(true);
    m_filter->setAccessibleName(tr("Filter of the columns"));
    setWhatsThis(tr(
        "The files of this plot and their columns. A check mark shows a column; the right button changes its "
        "looks, its axis and its scale, or opens it in another window."));
    m_tree->setColumnCount(kTreeColumns);
    m_tree->setHeaderLabels({tr("Column"), tr("Unit"), tr("Axis")});
    m_tree->header()->setSectionResizeMode(kTreeName, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(kUnit, QHeaderView::ResizeToContents);
    m_tree->header()->setSectionResizeMode(kAxis, QHeaderView::ResizeToContents);
    m_tree->header()->setStretchLastSection(false);
    // Room for a name of the usual length, whatever the letters are.
    constexpr int kLetters = 34;
    m_tree->setMinimumWidth(kLetters * m_tree->fontMetrics().averageCharWidth());
    m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
    m_tree->setIndentation(kIndentation);
    m_tree->header()->setMinimumSectionSize(20);
    m_tree->setDragEnabled(true);
    m_tree->setAccessibleName(tr("Files and columns"));
    m_tree->setToolTip(
        tr("Drag a shown column to another axis of the plot, or below the last for a new one."));
    auto* const add = new QPushButton(tr("A&dd file…"));
    m_align->setCheckable(true);
    m_align->setToolTip(tr("Shifts the files in time so that all start together."));

    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(m_align);
    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(4, 2, 4, 4);
    column->addWidget(m_filter);
    column->addWidget(m_tree);
    column->addLayout(buttons);
    setWidget(content);

    connect(m_filter, &QLineEdit::textChanged, this, &VariableDock::applyFilter);
    connect(m_tree, &QTreeWidget::itemChanged, this, &VariableDock::itemChanged);
    connect(m_tree, &QTreeWidget::customContextMenuRequested, this, &VariableDock::contextMenu);
    connect(add, &QPushButton::clicked, this, &VariableDock::x_add_file);
    connect(m_align, &QPushButton::toggled, this, &VariableDock::x_align_start);
}

int VariableDock::groupNumberOf(const HsVariable& variable) const
{
    const auto& groups = m_canvas->plot().groups();
    for (std::size_t g = 0; g < groups.size(); ++g)
        for (const auto& v : groups[g].variables())
            if (v.get() == &variable)
                return static_cast<int>(g) + 1;
    return 0;
}

std::shared_ptr<HsVariable> VariableDock::setShown(const std::shared_ptr<PlotFile>& file,
                                                   std::uint32_t column, bool shown)
{
    std::shared_ptr<HsVariable> v = m_canvas->plot().find(*file, column);
    if (!v && shown) {
        v = makeVariable(file, column);
        addByUnit(m_canvas->plot(), v);
    }
    if (v)
        m_canvas->plot().setVisible(*v, shown);
    return v;
}

// -- Filling --

// The user's place in the list stays: what is current, scrolled to and folded.
void VariableDock::rebuild()
{
    m_filling = true;
    const QTreeWidgetItem* const before = m_tree->currentItem();
    const QString path = before == nullptr ? QString() : pathOf(before);
    const unsigned column = before == nullptr ? 0 : before->data(0, kColumnRole).toUInt();
    const int scrolled = m_tree->verticalScrollBar()->value();
    QStringList folded;
    for (int f = 0; f < m_tree->topLevelItemCount(); ++f)
        if (!m_tree->topLevelItem(f)->isExpanded())
            folded.append(pathOf(m_tree->topLevelItem(f)));

    m_tree->clear();
    for (std::size_t i = 0; i < m_canvas->files().size(); ++i)
        addFileItem(static_cast<int>(i));
    for (QTreeWidgetItemIterator item(m_tree); *item != nullptr; ++item) {
        if ((*item)->parent() == nullptr)
            (*item)->setExpanded(!folded.contains(pathOf(*item)));
        if (!path.isEmpty() && pathOf(*item) == path && (*item)->data(0, kColumnRole).toUInt() == column)
            m_tree->setCurrentItem(*item);
    }
    m_align->setEnabled(m_canvas->files().size() > 1);
    m_filling = false;
    applyFilter();
    m_tree->verticalScrollBar()->setValue(scrolled);
}

void VariableDock::addFileItem(int file)
{
    const auto source = m_canvas->files().file(static_cast<std::size_t>(file));
    auto* const top = new QTreeWidgetItem(m_tree);
    top->setText(kTreeName, QString::fromLocal8Bit(source->name().c_str()));
    top->setToolTip(kTreeName, QString::fromLocal8Bit(source->path().c_str()));
    top->setData(0, kFileRole, file);
    top->setData(0, kColumnRole, 0U);
    top->setData(0, kVariableRole, -1);
    top->setFirstColumnSpanned(true);
    try {
        for (const std::uint32_t column : plottableColumns(*source)) {
            auto* const item = new QTreeWidgetItem(top);
            item->setData(0, kFileRole, file);
            item->setData(0, kColumnRole, column);
            const std::shared_ptr<HsVariable> known = m_canvas->plot().find(*source, column);
            const std::shared_ptr<HsVariable> v = known ? known : makeVariable(source, column);
            item->setText(kTreeName, QString::fromStdString(v->variable().label));
            item->setText(kUnit, QString::fromStdString(v->variable().unit));
            item->setToolTip(kTreeName, headerText(source->columnDescription(column).c_str()));
            dress(item, known.get());
        }
    } catch (const TS::Failure&) {
        new QTreeWidgetItem(top, {tr("The columns cannot be read.")});
    }
}

void VariableDock::dress(QTreeWidgetItem* item, const HsVariable* variable)
{
    const bool shown = variable != nullptr && variable->variable().visible;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable;
    if (shown)
        flags |= Qt::ItemIsDragEnabled;
    item->setFlags(flags);
    item->setCheckState(kTreeName, shown ? Qt::Checked : Qt::Unchecked);
    item->setIcon(kTreeName, swatch(shown ? m_canvas->colorOf(variable->variable()) : Qt::transparent));
    item->setText(kAxis, shown ? QString::number(groupNumberOf(*variable)) : QString());
    int number = -1;
    if (shown) {
        const Group::Variables all = m_canvas->plot().variables();
        number = static_cast<int>(
            std::find_if(all.begin(), all.end(), [&](const auto& v) { return v.get() == variable; }) -
            all.begin());
    }
    item->setData(0, kVariableRole, number);
}

void VariableDock::applyFilter()
{
    const QString wanted = m_filter->text().trimmed();
    for (int f = 0; f < m_tree->topLevelItemCount(); ++f) {
        QTreeWidgetItem* const file = m_tree->topLevelItem(f);
        for (int c = 0; c < file->childCount(); ++c) {
            QTreeWidgetItem* const item = file->child(c);
            item->setHidden(!wanted.isEmpty() &&
                            !item->text(kTreeName).contains(wanted, Qt::CaseInsensitive) &&
                            !item->toolTip(kTreeName).contains(wanted, Qt::CaseInsensitive));
        }
    }
}

// -- What the user does --

void VariableDock::itemChanged(QTreeWidgetItem* item)
{
    const unsigned column = item->data(0, kColumnRole).toUInt();
    const int file = item->data(0, kFileRole).toInt();
    if (m_filling || column == 0 || file >= static_cast<int>(m_canvas->files().size()))
        return;
    try {
        setShown(m_canvas->files().file(static_cast<std::size_t>(file)), column,
                 item->checkState(kTreeName) == Qt::Checked);
    } catch (const TS::Failure&) {
        return;
    }
    emit x_shown_changed();
}

void VariableDock::contextMenu(const QPoint& position)
{
    QTreeWidgetItem* const item = m_tree->itemAt(position);
    if (item == nullptr)
        return;
    const QPoint place = m_tree->viewport()->mapToGlobal(position);
    const int file = item->data(0, kFileRole).toInt();
    const unsigned column = item->data(0, kColumnRole).toUInt();
    if (column != 0 && item->checkState(kTreeName) == Qt::Checked) {
        emit x_menu(file, column, place);
        return;
    }
    QMenu menu(this);
    if (column != 0) {
        const QAction* const show = menu.addAction(tr("&Show"));
        if (menu.exec(place) == show)
            item->setCheckState(kTreeName, Qt::Checked);
        return;
    }
    if (item->parent() != nullptr)
        return;
    QAction* const showAll = menu.addAction(tr("&Show all columns"));
    QAction* const hideAll = menu.addAction(tr("&Hide all columns"));
    menu.addSeparator();
    QAction* const remove = menu.addAction(tr("&Remove file"));
    const QAction* const chosen = menu.exec(place);
    if (chosen == remove) {
        emit x_remove_file(file);
    } else if (chosen == showAll || chosen == hideAll) {
        const auto source = m_canvas->files().file(static_cast<std::size_t>(file));
        try {
            for (const std::uint32_t c : plottableColumns(*source))
                setShown(source, c, chosen == showAll);
        } catch (const TS::Failure&) {
            // What could be read is shown.
        }
        emit x_shown_changed();
    }
}

}  // namespace veltrac
