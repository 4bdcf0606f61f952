// Notices that files have been changed, replaced or removed by others.
//
// The system tells of most of it at once. What it does not tell (network drives, too many watches, a file
// system that is taken away, a file that is gone and may come back) is seen by a look every second.
#pragma once

#include <QFileSystemWatcher>
#include <QTimer>

#include <map>
#include <optional>

#include "core/FileIdentity.h"

namespace veltrac {

class FileWatch : public QObject
{
    Q_OBJECT

public:
    enum class State { Same, Changed, Gone };

    // How long a change stays unseen at most, and how long it waits for others: a file that is being written
    // changes many times a second.
    static constexpr int kPollMs = 1000;
    static constexpr int kSoonMs = 200;

    explicit FileWatch(QObject* parent = nullptr);

    // Watches the file and takes it as it is now for known: after each time that it was read or written.
    void watch(const QString& path);
    void stop(const QString& path);
    // Watches these files and no others; those that are watched already stay as they were known.
    void watchOnly(const QStringList& paths);
    // Compared with the time when watch() was called; Gone also for a file that is not watched.
    State state(const QString& path) const;
    // Looks at once, as a window does that the user comes back to.
    void look();

signals:
    // The file's state, or its content once more, has changed. Not while a job runs, which may be what
    // changes it.
    void x_changed(const QString& path);

private:
    struct Entry
    {
        std::optional<FileStamp> known;
        std::optional<FileStamp> told;
    };
    void keepWatching();

    QFileSystemWatcher m_watcher;
    QTimer m_soon;
    QTimer m_poll;
    std::map<QString, Entry> m_files;
};

}  // namespace veltrac
