// Tells when the working directory may show something else: files came, went, were renamed or written to.
//
// The system tells of names that come and go, in bursts once in a while; what is written into a file it tells
// nobody who watches a directory, so that is looked for every two seconds.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

namespace veltrac {

class DirectoryWatch : public QObject
{
    Q_OBJECT

public:
    explicit DirectoryWatch(QObject* parent = nullptr);

    // Watches this directory from now on, and no other.
    void watch(const QString& directory);

signals:
    void x_look();

private:
    QFileSystemWatcher m_watcher;
    QTimer m_soon;
    QTimer m_poll;
};

}  // namespace veltrac
