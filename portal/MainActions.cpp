#include "portal/MainActions.h"

#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QShortcutEvent>
#include <QSpinBox>
#include <QToolBar>

#include "portal/RowHeight.h"
#include "portal/SubPrograms.h"
#include "share/hydaction.h"

namespace veltrac {

namespace {

constexpr int kFirstRowHeight = 22;

}  // namespace

MainActions::MainActions(QMainWindow* window) : QObject(window), m_window(window)
{
    createActions();
    createMenus();
    createToolBars();
}

void MainActions::createActions()
{
    makeActions(m_window, m_window, fixedActions(), m_actions);
    for (const SubProgramRow& row : subPrograms()) {
        if (row.offered == Offered::Elsewhere)
            continue;
        QAction* const made = makeAction(m_window, m_window, row.action);
        made->setData(static_cast<int>(row.action.id));
        m_subPrograms[row.action.id] = made;
    }
    for (QAction* const made : m_window->actions())
        made->installEventFilter(this);
    auto* const quit =
        new QAction(QIcon(QStringLiteral(":/img_FlushDown")), QStringLiteral("&Quit"), m_window);
    connect(quit, SIGNAL(triggered()), m_window, SLOT(sl_quit()));
    m_actions[ActionId::Quit] = quit;
}

void MainActions::createMenus()
{
    for (const BarRow& row : menuRows()) {
        QMenu* const menu = m_window->menuBar()->addMenu(QString::fromLatin1(row.title));
        for (const BarItem& item : row.items) {
            if (item.gap == Gap::FileMenus)
                createFileMenus(menu);
            else if (item.gap == Gap::WhatsThis)
                addWhatsThis(menu);
            else if (item.gap == Gap::Separator)
                menu->addSeparator();
            else
                addTo(menu, item);
        }
    }
}

void MainActions::createFileMenus(QMenu* menu)
{
    m_fileMenus = new FileMenus(this);
    for (const FileActionRow& row : fileActionRows()) {
        QMenu* const files = menu->addMenu(action(row.action)->icon(), QString::fromLatin1(row.menuText));
        connect(files, SIGNAL(triggered(QAction*)), m_window, row.menuSlot);
        m_fileMenus->add(files);
    }
}

void MainActions::createToolBars()
{
    for (const BarRow& row : toolBarRows()) {
        QToolBar* const bar = m_window->addToolBar(QString::fromLatin1(row.title));
        for (const BarItem& item : row.items) {
            if (item.gap == Gap::RowHeight)
                addRowHeight(bar);
            else
                addTo(bar, item);
        }
        bar->setHidden(row.hidden);
    }
}

void MainActions::addTo(QWidget* bar, const BarItem& item) const
{
    if (item.action)
        bar->addAction(action(*item.action));
    const Offered offered = item.gap == Gap::Importers ? Offered::AsImporter : Offered::AsComputing;
    for (const SubProgramRow& row : subPrograms())
        if (item.gap && row.offered == offered)
            bar->addAction(action(row.action.id));
}

void MainActions::addRowHeight(QToolBar* bar)
{
    auto* const label = new QLabel(QStringLiteral("  Rowheight: "), bar);
    m_rowHeight = new QSpinBox(bar);
    m_rowHeight->setRange(kLeastRowHeight, kGreatestRowHeight);
    m_rowHeight->setValue(kFirstRowHeight);
    m_rowHeight->setAccessibleName(QStringLiteral("Row height"));
    m_rowHeight->setToolTip(QStringLiteral("The height of the table's rows, in pixels."));
    m_rowHeight->setWhatsThis(m_rowHeight->toolTip());
    label->setBuddy(m_rowHeight);
    bar->addWidget(label);
    bar->addWidget(m_rowHeight);
}

void MainActions::addFileActions(QMenu* menu, const QString& file) const
{
    for (const FileActionRow& row : fileActionRows()) {
        menu->addAction(action(row.action)->icon(), QString::fromLatin1(row.contextText).arg(menuText(file)),
                        m_window, row.contextSlot);
    }
}

void MainActions::addDirectoryActions(QWidget* menu) const
{
    for (const BarItem& item : directoryItems())
        addTo(menu, item);
}

bool MainActions::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Shortcut && static_cast<QShortcutEvent*>(event)->isAmbiguous()) {
        const QKeySequence key = static_cast<QShortcutEvent*>(event)->key();
        QStringList names;
        for (const QAction* const action : m_window->actions()) {
            if (action->shortcut() == key)
                names << action->text().remove(QLatin1Char('&'));
        }
        emit x_ambiguous_key(
            QStringLiteral("%1 stands for several actions; choose one in a menu: %2")
                .arg(key.toString(QKeySequence::NativeText), names.join(QStringLiteral(", "))));
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace veltrac
