#include "share/FileWatch.h"

#include <QFileInfo>
#include <QStorageInfo>

#include <vector>

#include "share/JobProgress.h"

namespace veltrac {

namespace {

constexpr int kSoonMs = 200;  // a file that is being written changes many times a second
constexpr int kPollMs = 1000;

// Where changes from another machine are not told.
bool isRemote(const QString& path)
{
    const QByteArray type = QStorageInfo(QFileInfo(path).absolutePath()).fileSystemType();
    for (const char* const remote : {"nfs", "cifs", "smb", "fuse", "9p", "afs", "vboxsf"})
        if (type.startsWith(remote))
            return true;
    return false;
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

FileWatch::Stamp FileWatch::stampOf(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() ? Stamp{info.lastModified(), info.size()} : Stamp();
}

void FileWatch::watch(const QString& path)
{
    const Stamp now = stampOf(path);
    m_files[path] = {now, now, isRemote(path)};
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
    if (entry == m_files.end() || entry->second.told.size < 0)
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
        const Stamp now = stampOf(path);
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
    bool poll = false;
    for (const auto& [path, entry] : m_files) {
        const bool told = watched.contains(path) || (QFileInfo::exists(path) && m_watcher.addPath(path));
        poll = poll || !told || entry.remote;
    }
    if (!poll)
        m_poll.stop();
    else if (!m_poll.isActive())
        m_poll.start();
}

}  // namespace veltrac
