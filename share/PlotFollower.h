// Keeps a plot at the newest samples of files that another program writes.
//
// While it is on, the files are looked at twenty times a second at most: new rows are taken in, a file that
// was replaced is read anew, and what keeps a file from being read is told, while what was read of it stays.
// The newest sample stays at the right edge until the user zooms or pans back: then the view stands still,
// the rows go on coming, and the notice offers to follow again.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTime>
#include <QTimer>

#include <map>

class PlotCanvas;

namespace veltrac {

class NoticeStrip;
class PlotFile;

class PlotFollower : public QObject
{
    Q_OBJECT

public:
    // Borrows the canvas and the strip, which live at least as long.
    PlotFollower(PlotCanvas* canvas, NoticeStrip* notice, QObject* parent);

    bool isOn() const { return m_timer.isActive(); }
    bool isPaused() const { return m_paused; }

public slots:
    void setOn(bool on);
    // Goes back to the newest samples.
    void goOn();
    // Looks for news at once.
    void look();

signals:
    // Files were read anew, and perhaps have other columns; their variables are to be read.
    void x_loaded();
    void x_rows_came();

private:
    struct Watched
    {
        QElapsedTimer sinceNews;
        QTime lastNews;
        QString trouble;  // in the user's words; empty where all is well
        bool isStalled = false;
    };
    enum class Came { Nothing, Rows, Other };

    Came takeNews(PlotFile& file);
    Came noteTrouble(PlotFile& file, const QString& trouble);
    void forget(const PlotFile& file);
    void toNewest();
    void viewChanged();
    void tell();

    PlotCanvas* m_canvas;
    NoticeStrip* m_notice;
    QTimer m_timer;
    QElapsedTimer m_sincePicture;  // of the overview
    std::map<const PlotFile*, Watched> m_watched;
    bool m_paused = false;
    bool m_moving = false;  // the view moves by itself
    QString m_pausedAt;
    QString m_told;
};

}  // namespace veltrac
