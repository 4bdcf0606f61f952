// The notice of a window that shows what it has read of files: whatever becomes of them is told within two
// seconds, while what was read stays.
#pragma once

#include <QString>
#include <QStringList>

#include "share/FileWatch.h"
#include "share/NoticeStrip.h"

namespace veltrac {

class PlotSource;

class FileNotice : public NoticeStrip
{
    Q_OBJECT

public:
    // What is told of a file, whose name takes the place of %1.
    struct Texts
    {
        QString changed;
        QString gone;
    };

    FileNotice(Texts texts, QWidget* parent);

    // Watches the file, if it is one, whose values a window has taken.
    static FileNotice* ofValues(const PlotSource& source, QWidget* parent);

    // These files and no others, as they are now. Paths are absolute.
    void watch(const QStringList& paths);

signals:
    // Behind the notice of it.
    void x_told();

private:
    void tell();

    Texts m_texts;
    QStringList m_paths;
    FileWatch m_watch;
};

}  // namespace veltrac
