// The sub-menus of "&File" that list the directory's files, each for one thing to do with a file.
#pragma once

#include <QMenu>
#include <QString>

#include <vector>

namespace veltrac {

class FileMenus : public QObject
{
    Q_OBJECT

public:
    explicit FileMenus(QObject* parent);

    // Adds a sub-menu; its triggered(QAction*) hands over the action of the file, see fileOf().
    void add(QMenu* menu);
    void setFiles(std::vector<QString> names);

    // The file that an action of these menus stands for.
    static QString fileOf(const QAction* action);

private:
    void fill(QMenu* menu);

    std::vector<QMenu*> m_menus;
    std::vector<QString> m_names;
};

// A name as a menu shows it: without '&' as a mark for the key, a very long one without its middle.
QString menuText(QString name);

}  // namespace veltrac
