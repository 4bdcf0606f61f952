#include "portal/FileMenus.h"

#include <algorithm>
#include <span>

namespace veltrac {

namespace {

// A menu with more entries than this is cut into sub-menus: "a.ts … f.ts".
constexpr std::size_t kMostEntries = 30;
// A longer name would make a menu wider than the screen.
constexpr int kLongestMenuName = 60;

// Later, because the refresh that empties a menu may have been started by one of its own entries.
void empty(QMenu* menu)
{
    for (QAction* const action : menu->actions()) {
        menu->removeAction(action);
        if (action->menu() != nullptr)
            action->menu()->deleteLater();
        else
            action->deleteLater();
    }
}

void addFile(QMenu* menu, const QString& name)
{
    menu->addAction(menuText(name))->setData(name);
}

// Fills a menu and its sub-menus so that none is longer than a screen.
void addFiles(QMenu* menu, std::span<const QString> names)
{
    if (names.size() <= kMostEntries) {
        for (const QString& name : names)
            addFile(menu, name);
        return;
    }
    std::size_t group = kMostEntries;
    while (group * kMostEntries < names.size())
        group *= kMostEntries;
    for (std::size_t first = 0; first < names.size(); first += group) {
        const auto part = names.subspan(first, std::min(group, names.size() - first));
        addFiles(menu->addMenu(menuText(part.front()) + QStringLiteral(" … ") + menuText(part.back())), part);
    }
}

}  // namespace

FileMenus::FileMenus(QObject* parent) : QObject(parent) {}

void FileMenus::add(QMenu* menu)
{
    m_menus.push_back(menu);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { fill(menu); });
}

void FileMenus::setFiles(std::vector<QString> names)
{
    m_names = std::move(names);
    for (QMenu* const menu : m_menus) {
        empty(menu);
        // Thousands of entries are made when somebody looks at them.
        if (m_names.size() <= kMostEntries)
            fill(menu);
    }
}

QString FileMenus::fileOf(const QAction* action)
{
    return action->data().isValid() ? action->data().toString() : action->text();
}

void FileMenus::fill(QMenu* menu)
{
    if (!menu->isEmpty())
        return;
    addFiles(menu, m_names);
    if (m_names.empty())
        menu->addAction(QStringLiteral("(no ts-file)"))->setEnabled(false);
}

QString menuText(QString name)
{
    // In a menu a tab would begin the column of the shortcuts.
    for (QChar& character : name)
        if (character.category() == QChar::Other_Control)
            character = QLatin1Char(' ');
    if (name.size() > kLongestMenuName)
        name.replace(kLongestMenuName / 2, name.size() - kLongestMenuName + 1, QStringLiteral("…"));
    return name.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace veltrac
