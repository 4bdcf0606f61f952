#include "portal/WriterRegistry.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace veltrac {

namespace {

QString absolutePath(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

// What a path leads to; itself where nothing is there.
QString realPath(const QString& path)
{
    const QString real = QFileInfo(path).canonicalFilePath();
    return real.isEmpty() ? absolutePath(path) : real;
}

}  // namespace

void WriterRegistry::add(const QString& path)
{
    m_entries.push_back({path, absolutePath(path)});
}

void WriterRegistry::remove(const QString& path)
{
    const QString absolute = absolutePath(path);
    auto found = std::find_if(m_entries.begin(), m_entries.end(),
                              [&](const Entry& entry) { return entry.absolute == absolute; });
    if (found == m_entries.end())
        found = std::find_if(m_entries.begin(), m_entries.end(),
                             [&](const Entry& entry) { return entry.given == path; });
    if (found != m_entries.end())
        m_entries.erase(found);
}

bool WriterRegistry::contains(const QString& path) const
{
    const QString real = realPath(path);
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [&](const Entry& entry) { return realPath(entry.absolute) == real; });
}

}  // namespace veltrac
