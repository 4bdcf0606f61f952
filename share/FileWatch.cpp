#include "share/FileWatch.h"

#include <QFile>

#include <vector>

#include "share/JobProgress.h"

namespace veltrac {

namespace {

std::optional<FileStamp> stampOf(const QString& path)
{
    return veltrac::stampOf(std::filesystem::path(QFile::encodeName(path).toStdString()));
}

}  // namespace

FileWatch::FileWatch(QObject* parent) : QObject(parent)
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(kSoonMs);
    m_poll.setInterval(kPollMs);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, [this] {
        if (!m_soon.isActive())
            m_soon.start();
    });
    connect(&m_soon, &QTimer::timeout, this, &FileWatch::look);
    connect(&m_poll, &QTimer::timeout, this, &FileWatch::look);
}

void FileWatch::watch(const QString& path)
{
    const std::optional<FileStamp> now = stampOf(path);
    m_files[path] = {now, now};
    keepWatching();
}

void FileWatch::stop(const QString& path)
{
    m_files.erase(path);
    m_watcher.removePath(path);
    keepWatching();
}

void FileWatch::watchOnly(const QStringList& paths)
{
    std::vector<QString> left;
    for (const auto& [path, entry] : m_files)
        if (!paths.contains(path))
            left.push_back(path);
    for (const QString& path : left)
        stop(path);
    for (const QString& path : paths)
        if (m_files.count(path) == 0)
            watch(path);
}

FileWatch::State FileWatch::state(const QString& path) const
{
    const auto entry = m_files.find(path);
    if (entry == m_files.end() || !entry->second.told)
        return State::Gone;
    return entry->second.told == entry->second.known ? State::Same : State::Changed;
}

void FileWatch::look()
{
    if (JobProgress::isRunning()) {
        m_soon.start();
        return;
    }
    QStringList changed;
    for (auto& [path, entry] : m_files) {
        const std::optional<FileStamp> now = stampOf(path);
        if (now == entry.told)
            continue;
        entry.told = now;
        changed << path;
    }
    keepWatching();
    for (const QString& path : qAsConst(changed))
        emit x_changed(path);
}

// A file that another one has replaced is no longer watched by the system.
void FileWatch::keepWatching()
{
    const QStringList watched = m_watcher.files();
    for (const auto& [path, entry] : m_files)
        if (entry.told && !watched.contains(path))
            m_watcher.addPath(path);
    if (m_files.empty())
        m_poll.stop();
    else if (!m_poll.isActive())
        m_poll.start();
}

}  // namespace veltrac
