#include "share/PlotMenus.h"

#include <QActionGroup>
#include <QInputDialog>
#include <QMenu>

#include <cmath>

#include "share/PlotCommands.h"
#include "share/PlotVariables.h"

namespace veltrac {

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

void addCommands(PlotOutput& plot, QMenu& menu, Part part)
{
    for (const PlotCommand& command : plotCommands()) {
        if (command.part != part)
            continue;
        QString text = QString::fromUtf8(command.text);
        const QKeySequence keys(command.key);
        const bool isCanvasOwn = isOwnKey(command.key);
        if (command.key != 0 && isCanvasOwn)
            text += QLatin1Char('\t') + keys.toString(QKeySequence::NativeText);
        QAction* const action = menu.addAction(text, &plot, command.run);
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

void addXEntries(PlotOutput& canvas, QMenu& menu)
{
    QMenu* const x = menu.addMenu(QObject::tr("&X axis"));
    static const Choice<XMode> modes[] = {{XMode::Sample, "&Sample numbers"},
                                          {XMode::Elapsed, "&Time since the start"},
                                          {XMode::Clock, "&Date and time of day"}};
    addChoices(*x, modes, canvas.plot().axis().mode, [&canvas](XMode mode) { canvas.setMode(mode); });
    const bool onlyNumbers = backwardsVariable(canvas.plot()) != nullptr;
    x->actions().at(1)->setDisabled(onlyNumbers);
    x->actions().at(2)->setEnabled(canShowClock(canvas.plot()));
    x->addSeparator();
    QAction* const logarithmic = x->addAction(QObject::tr("&Logarithmic"));
    logarithmic->setCheckable(true);
    logarithmic->setChecked(canvas.plot().axis().logarithmic);
    QObject::connect(logarithmic, &QAction::triggered, &canvas, &PlotView::setLogarithmicX);
    x->addAction(QObject::tr("L&imits…"), &canvas, [&canvas] {
        canvas.editLimits({PlotView::Zone::XAxis, -1});
    });
}

void addGroupEntries(PlotOutput& canvas, QMenu& menu, int group)
{
    const auto index = static_cast<std::size_t>(group);
    QMenu* const y = menu.addMenu(
        canvas.pictureLayout().groupOf.size() < 2
            ? QObject::tr("&Y axis")
            : QObject::tr("Y axis &%1  %2").arg(group + 1).arg(axisTitleOf(canvas.plot().groups()[index])));
    static const Choice<YMode> modes[] = {{YMode::Whole, "Fit the &whole series"},
                                          {YMode::View, "Fit what is in &view"},
                                          {YMode::Fixed, "&Fixed"}};
    addChoices(*y, modes, canvas.plot().groups()[index].mode, [&canvas, index](YMode mode) {
        canvas.changeView(0, [&] { canvas.plot().setYMode(index, mode); });
    });
    y->addSeparator();
    QAction* const logarithmic = y->addAction(QObject::tr("&Logarithmic"));
    logarithmic->setCheckable(true);
    logarithmic->setChecked(canvas.plot().groups()[index].isLogarithmic());
    QObject::connect(logarithmic, &QAction::triggered, &canvas,
                     [&canvas, group](bool on) { canvas.setLogarithmicY(group, on); });
    y->addAction(QObject::tr("L&imits…"), &canvas, [&canvas, group] {
        canvas.editLimits({PlotView::Zone::YAxis, group});
    });
    static const Choice<int> shares[] = {
        {1, "Height &1"}, {2, "Height &2"}, {3, "Height &3"}, {4, "Height &4"}};
    y->addSeparator();
    addChoices(*y, shares, static_cast<int>(std::lround(canvas.plot().groups()[index].share)),
               [&canvas, index](int share) {
                   canvas.plot().groups()[index].share = share;
                   canvas.replot();
                   emit canvas.x_plot_changed();  // other labels may make the frames narrower
               });
}

void addLookEntries(PlotOutput& canvas, QMenu& menu)
{
    QMenu* const grid = menu.addMenu(QObject::tr("&Grid"));
    static const Choice<PlotGrid> grids[] = {{PlotGrid::None, "&None"},
                                             {PlotGrid::Gray, "&Gray"},
                                             {PlotGrid::Dotted, "&Dotted"},
                                             {PlotGrid::Black, "&Black"}};
    addChoices(*grid, grids, canvas.plot().grid, [&canvas](PlotGrid chosen) {
        canvas.plot().grid = chosen;
        canvas.replot();
    });
    QAction* const legend = menu.addAction(QObject::tr("&Legend"));
    legend->setCheckable(true);
    legend->setChecked(canvas.plot().legend);
    QObject::connect(legend, &QAction::triggered, &canvas, [&canvas](bool on) {
        canvas.plot().legend = on;
        canvas.replot();
    });
    menu.addAction(QObject::tr("&Title…"), &canvas, [&canvas] {
        bool ok = false;
        const QString title =
            QInputDialog::getText(&canvas, QObject::tr("Title"), QObject::tr("Text above the plot:"),
                                  QLineEdit::Normal, QString::fromStdString(canvas.plot().title), &ok);
        if (!ok)
            return;
        canvas.plot().title = title.toUtf8().toStdString();
        canvas.replot();
    });
}

}  // namespace

void fillViewMenu(PlotOutput& canvas, QMenu& menu)
{
    addCommands(canvas, menu, Part::View);
}

void fillCursorMenu(PlotOutput& canvas, QMenu& menu)
{
    addCommands(canvas, menu, Part::Cursors);
}

void fillOutputMenu(PlotOutput& canvas, QMenu& menu)
{
    addCommands(canvas, menu, Part::Output);
}

void fillAxesMenu(PlotOutput& canvas, QMenu& menu)
{
    addXEntries(canvas, menu);
    // All of them: without a mouse none is the one that is meant.
    for (const std::size_t group : canvas.pictureLayout().groupOf)
        if (group < canvas.plot().groups().size())
            addGroupEntries(canvas, menu, static_cast<int>(group));
    addLookEntries(canvas, menu);
}

void fillPlotMenu(PlotOutput& canvas, QMenu& menu, int group)
{
    addCommands(canvas, *menu.addMenu(QObject::tr("&View")), Part::View);
    addCommands(canvas, *menu.addMenu(QObject::tr("&Cursors")), Part::Cursors);
    menu.addSeparator();
    addXEntries(canvas, menu);
    if (group >= 0 && group < static_cast<int>(canvas.plot().groups().size()))
        addGroupEntries(canvas, menu, group);
    addLookEntries(canvas, menu);
    menu.addSeparator();
    addCommands(canvas, menu, Part::Output);
}

void holdInWindow(QMenu& menu)
{
    for (QAction* const action : menu.actions())
        if (!action->shortcut().isEmpty())
            action->setShortcutContext(Qt::WindowShortcut);
}

}  // namespace veltrac
