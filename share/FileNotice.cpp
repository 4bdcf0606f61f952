#include "share/FileNotice.h"

#include <QFileInfo>

#include <utility>

#include "core/PlotFile.h"

namespace veltrac {

FileNotice::FileNotice(Texts texts, QWidget* parent) : NoticeStrip(parent), m_texts(std::move(texts))
{
    connect(&m_watch, &FileWatch::x_changed, this, &FileNotice::tell);
}

FileNotice* FileNotice::ofValues(const PlotSource& source, QWidget* parent)
{
    auto* const notice = new FileNotice({tr("%1 has changed since this was made of it."),
                                         tr("%1 is gone; what was made of it is still shown.")},
                                        parent);
    if (const auto* const file = dynamic_cast<const PlotFile*>(&source))
        notice->watch({QFileInfo(QString::fromLocal8Bit(file->path().c_str())).absoluteFilePath()});
    return notice;
}

void FileNotice::watch(const QStringList& paths)
{
    m_paths = paths;
    m_watch.watchOnly(paths);
    for (const QString& path : paths)
        m_watch.watch(path);
    hide();
}

void FileNotice::tell()
{
    QStringList words;
    for (const QString& path : qAsConst(m_paths)) {
        const FileWatch::State state = m_watch.state(path);
        if (state != FileWatch::State::Same)
            words << (state == FileWatch::State::Gone ? m_texts.gone : m_texts.changed)
                         .arg(QFileInfo(path).fileName());
    }
    if (words.isEmpty())
        hide();
    else
        showNotice(words.join(QLatin1Char(' ')));
    emit x_told();
}

}  // namespace veltrac
