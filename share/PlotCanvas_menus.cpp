// PlotCanvas: its menus.

#include <QActionGroup>
#include <QContextMenuEvent>
#include <QInputDialog>
#include <QMenu>

#include <cmath>

#include "core/TsExceptions.h"
#include "share/PlotCanvas.h"
#include "share/PlotCommands.h"
#include "share/PlotVariables.h"

using namespace veltrac;

namespace {

using Part = PlotCommand::Part;

// The canvas itself answers these while it has the focus, and menus only show them: as shortcuts of actions
// they would take letters and arrows away from an open menu.
bool isOwnKey(int key)
{
    constexpr int kModifiers = static_cast<int>(Qt::KeyboardModifierMask);
    const int plain = key & ~kModifiers;
    return (key & static_cast<int>(Qt::ControlModifier)) == 0 || plain == Qt::Key_Left ||
           plain == Qt::Key_Right;
}

// An ampersand of the user's is no mnemonic.
QString axisTitleOf(const Group& group)
{
    return QString::fromStdString(group.axisTitle()).replace(QLatin1Char('&'), QLatin1String("&&"));
}

void addCommands(PlotCanvas* canvas, QMenu& menu, Part part)
{
    for (const PlotCommand& command : plotCommands()) {
        if (command.part != part)
            continue;
        QString text = QString::fromUtf8(command.text);
        const QKeySequence keys(command.key);
        const bool isCanvasOwn = isOwnKey(command.key);
        if (command.key != 0 && isCanvasOwn)
            text += QLatin1Char('\t') + keys.toString(QKeySequence::NativeText);
        QAction* const action = menu.addAction(text, canvas, command.run);
        if (command.key != 0 && !isCanvasOwn) {
            action->setShortcut(keys);
            action->setShortcutContext(Qt::WidgetShortcut);
        }
        if (command.separatorAfter)
            menu.addSeparator();
    }
}

template <typename Enum>
struct Choice
{
    Enum value;
    const char* text;
};

// A group of entries of which one is checked.
template <typename Enum, std::size_t n, typename Chosen>
void addChoices(QMenu& menu, const Choice<Enum> (&choices)[n], Enum present, Chosen chosen)
{
    auto* const group = new QActionGroup(&menu);
    for (const Choice<Enum>& choice : choices) {
        QAction* const action = menu.addAction(QString::fromUtf8(choice.text));
        action->setCheckable(true);
        action->setChecked(choice.value == present);
        group->addAction(action);
        const Enum value = choice.value;
        QObject::connect(action, &QAction::triggered, &menu, [=] { chosen(value); });
    }
}

}  // namespace

void PlotCanvas::fillViewMenu(QMenu& menu)
{
    addCommands(this, menu, Part::View);
}

void PlotCanvas::fillCursorMenu(QMenu& menu)
{
    addCommands(this, menu, Part::Cursors);
}

void PlotCanvas::fillAxesMenu(QMenu& menu)
{
    addXEntries(menu);
    // All of them: without a mouse none is the one that is meant.
    for (const std::size_t group : m_layout.groupOf)
        if (group < m_plot.groups().size())
            addGroupEntries(menu, static_cast<int>(group));
    addLookEntries(menu);
}

void PlotCanvas::fillOutputMenu(QMenu& menu)
{
    addCommands(this, menu, Part::Output);
}

void PlotCanvas::holdInWindow(QMenu& menu)
{
    for (QAction* const action : menu.actions())
        if (!action->shortcut().isEmpty())
            action->setShortcutContext(Qt::WindowShortcut);
}

void PlotCanvas::fillMenu(QMenu& menu, int group)
{
    addCommands(this, *menu.addMenu(tr("&View")), Part::View);
    addCommands(this, *menu.addMenu(tr("&Cursors")), Part::Cursors);
    menu.addSeparator();
    addXEntries(menu);
    if (group >= 0 && group < static_cast<int>(m_plot.groups().size()))
        addGroupEntries(menu, group);
    addLookEntries(menu);
    menu.addSeparator();
    addCommands(this, menu, Part::Output);
}

void PlotCanvas::addXEntries(QMenu& menu)
{
    QMenu* const x = menu.addMenu(tr("&X axis"));
    static const Choice<XMode> modes[] = {{XMode::Sample, "&Sample numbers"},
                                          {XMode::Elapsed, "&Time since the start"},
                                          {XMode::Clock, "&Date and time of day"}};
    addChoices(*x, modes, m_plot.axis().mode, [this](XMode mode) { setMode(mode); });
    const bool onlyNumbers = backwardsVariable(m_plot) != nullptr;
    x->actions().at(1)->setDisabled(onlyNumbers);
    x->actions().at(2)->setEnabled(canShowClock(m_plot));
    x->addSeparator();
    QAction* const logarithmic = x->addAction(tr("&Logarithmic"));
    logarithmic->setCheckable(true);
    logarithmic->setChecked(m_plot.axis().logarithmic);
    connect(logarithmic, &QAction::triggered, this, &PlotCanvas::setLogarithmicX);
    x->addAction(tr("L&imits…"), this, [this] { editLimits({Zone::XAxis, -1}); });
}

void PlotCanvas::addGroupEntries(QMenu& menu, int group)
{
    const auto index = static_cast<std::size_t>(group);
    QMenu* const y =
        menu.addMenu(m_layout.groupOf.size() < 2
                         ? tr("&Y axis")
                         : tr("Y axis &%1  %2").arg(group + 1).arg(axisTitleOf(m_plot.groups()[index])));
    static const Choice<YMode> modes[] = {{YMode::Whole, "Fit the &whole series"},
                                          {YMode::View, "Fit what is in &view"},
                                          {YMode::Fixed, "&Fixed"}};
    addChoices(*y, modes, m_plot.groups()[index].mode, [this, index](YMode mode) {
        changeView(0, [&] {
            Group& g = m_plot.groups()[index];
            g.mode = mode;
            if (mode == YMode::Whole)
                g.fitY();
            else if (mode == YMode::View)
                g.fitY(m_plot.axis(), m_plot.x1(), m_plot.x2());
        });
    });
    y->addSeparator();
    QAction* const logarithmic = y->addAction(tr("&Logarithmic"));
    logarithmic->setCheckable(true);
    logarithmic->setChecked(m_plot.groups()[index].isLogarithmic());
    connect(logarithmic, &QAction::triggered, this, [this, group](bool on) { setLogarithmicY(group, on); });
    y->addAction(tr("L&imits…"), this, [this, group] { editLimits({Zone::YAxis, group}); });
    static const Choice<int> shares[] = {
        {1, "Height &1"}, {2, "Height &2"}, {3, "Height &3"}, {4, "Height &4"}};
    y->addSeparator();
    addChoices(*y, shares, static_cast<int>(std::lround(m_plot.groups()[index].share)),
               [this, index](int share) {
                   m_plot.groups()[index].share = share;
                   replot();
               });
}

void PlotCanvas::addLookEntries(QMenu& menu)
{
    QMenu* const grid = menu.addMenu(tr("&Grid"));
    static const Choice<PlotGrid> grids[] = {{PlotGrid::None, "&None"},
                                             {PlotGrid::Gray, "&Gray"},
                                             {PlotGrid::Dotted, "&Dotted"},
                                             {PlotGrid::Black, "&Black"}};
    addChoices(*grid, grids, m_plot.grid, [this](PlotGrid chosen) {
        m_plot.grid = chosen;
        replot();
    });
    QAction* const legend = menu.addAction(tr("&Legend"));
    legend->setCheckable(true);
    legend->setChecked(m_plot.legend);
    connect(legend, &QAction::triggered, this, [this](bool on) {
        m_plot.legend = on;
        replot();
    });
    menu.addAction(tr("&Title…"), this, [this] {
        bool ok = false;
        const QString title =
            QInputDialog::getText(this, tr("Title"), tr("Text above the plot:"), QLineEdit::Normal,
                                  QString::fromStdString(m_plot.title), &ok);
        if (!ok)
            return;
        m_plot.title = title.toUtf8().toStdString();
        replot();
    });
}

void PlotCanvas::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    fillMenu(menu, groupAt(event->pos()));
    menu.exec(event->globalPos());
}

void PlotCanvas::setMode(XMode mode)
{
    try {
        m_plot.setMode(mode);
    } catch (const TS::Failure&) {
        // The next picture tells which file it is.
    }
    viewChanged();
    emit x_cursors_changed();
    emit x_plot_changed();
}
