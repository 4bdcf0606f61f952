// Which files are open for writing in a window.
#pragma once

#include <QString>

#include <vector>

namespace veltrac {

class WriterRegistry
{
public:
    // Paths are taken as they are meant now: relative ones belong to the present working directory.
    void add(const QString& path);
    // Takes one registration back. A relative path is found even if the directory has changed since.
    void remove(const QString& path);
    // Whether any registered path leads to this file, by whatever links.
    bool contains(const QString& path) const;

private:
    struct Entry
    {
        QString given;
        QString absolute;
    };
    std::vector<Entry> m_entries;
};

}  // namespace veltrac
