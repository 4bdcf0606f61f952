#include "portal/DirectoryWatch.h"

namespace veltrac {

namespace {

constexpr int kSoonMs = 400;  // joins what comes in a burst
constexpr int kPollMs = 1500;

}  // namespace

DirectoryWatch::DirectoryWatch(QObject* parent) : QObject(parent)
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(kSoonMs);
    m_poll.start(kPollMs);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        if (!m_soon.isActive())
            m_soon.start();
    });
    connect(&m_soon, &QTimer::timeout, this, &DirectoryWatch::x_look);
    connect(&m_poll, &QTimer::timeout, this, &DirectoryWatch::x_look);
}

void DirectoryWatch::watch(const QString& directory)
{
    if (const QStringList before = m_watcher.directories(); !before.isEmpty())
        m_watcher.removePaths(before);
    m_watcher.addPath(directory);
}

}  // namespace veltrac
