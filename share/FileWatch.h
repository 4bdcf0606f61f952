// Notices that files have been changed, replaced or removed by others.
//
// The system tells of it; where it cannot (network drives, too many watches, a file that is gone and may come
// back), the files are looked at every second.
#pragma once

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QTimer>

#include <map>

namespace veltrac {

class FileWatch : public QObject
{
    Q_OBJECT

public:
    enum class State { Same, Changed, Gone };

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
    struct Stamp
    {
        QDateTime time;
        qint64 size = -1;
        bool operator==(const Stamp& other) const { return time == other.time && size == other.size; }
    };
    struct Entry
    {
        Stamp known;
        Stamp told;
        bool remote;
    };
    static Stamp stampOf(const QString& path);
    void keepWatching();

    QFileSystemWatcher m_watcher;
    QTimer m_soon;
    QTimer m_poll;
    std::map<QString, Entry> m_files;
};

}  // namespace veltrac
