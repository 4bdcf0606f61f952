#include "share/PlotFollower.h"

#include <QScopedValueRollback>

#include <algorithm>

#include "core/PlotFile.h"
#include "core/TsExceptions.h"
#include "share/JobProgress.h"
#include "share/NoticeStrip.h"
#include "share/PlotCanvas.h"
#include "share/PlotFileNames.h"
#include "share/PlotReadout.h"

namespace veltrac {

namespace {

constexpr int kLookMs = 50;
constexpr int kOverviewMs = 1000;
// A writer is late after three sample times, but not sooner than this.
constexpr double kLateMs = 3000.0;
constexpr double kLateSteps = 3.0;
constexpr double kAtEdge = 1e-3;  // of the view's width

}  // namespace

PlotFollower::PlotFollower(PlotCanvas* canvas, NoticeStrip* notice, QObject* parent)
    : QObject(parent), m_canvas(canvas), m_notice(notice)
{
    m_timer.setInterval(kLookMs);
    connect(&m_timer, &QTimer::timeout, this, &PlotFollower::look);
    connect(m_canvas, &PlotCanvas::x_view_changed, this, &PlotFollower::viewChanged);
    connect(m_notice, &NoticeStrip::x_pressed, this, &PlotFollower::goOn);
}

void PlotFollower::setOn(bool on)
{
    m_paused = false;
    m_watched.clear();
    if (!on) {
        m_timer.stop();
        m_notice->hide();
        return;
    }
    m_sincePicture.start();
    m_timer.start();
    look();
    goOn();
}

void PlotFollower::goOn()
{
    m_paused = false;
    toNewest();
    tell();
}

// -- What comes --

void PlotFollower::look()
{
    // A job reads the files now.
    if (JobProgress::isRunning())
        return;
    const QScopedValueRollback<bool> moving(m_moving, true);
    Came most = Came::Nothing;
    for (std::size_t i = 0; i < m_canvas->files().size(); ++i) {
        const auto file = m_canvas->files().file(i);
        try {
            most = std::max(most, takeNews(*file));
        } catch (const TS::Failure&) {
            most =
                std::max(most, noteTrouble(*file, tr("%1 cannot be read at present; what was read of it is "
                                                     "shown.")
                                                      .arg(fileNameOf(*file))));
        }
    }
    if (most == Came::Other)
        emit x_loaded();
    if (most != Came::Nothing) {
        toNewest();
        emit x_rows_came();
    }
    tell();
}

PlotFollower::Came PlotFollower::takeNews(PlotFile& file)
{
    Watched& watched = m_watched[&file];
    const auto noteNews = [&watched] {
        watched.sinceNews.start();
        watched.lastNews = QTime::currentTime();
    };
    if (!watched.sinceNews.isValid())
        noteNews();
    const std::uint32_t before = file.rows();
    const Group::Variables variables = m_canvas->plot().variables();
    switch (file.follow()) {
        case PlotFile::News::Gone:
            return noteTrouble(file, tr("%1 is gone; what was read of it is shown.").arg(fileNameOf(file)));
        case PlotFile::News::Cut:
            return noteTrouble(file,
                               tr("%1 was cut short; what was read of it is shown.").arg(fileNameOf(file)));
        case PlotFile::News::None:
            // After a failure what is there is read anew.
            if (!watched.trouble.isEmpty()) {
                forget(file);
                break;
            }
            // A header may claim any step.
            watched.isStalled = static_cast<double>(watched.sinceNews.elapsed()) >
                                std::max(kLateMs, kLateSteps * file.step() * file.unitSeconds() * 1000.0);
            return Came::Nothing;
        case PlotFile::News::Rows:
            try {
                HsVariable::extendAll(variables, file, before);
            } catch (const TS::Failure&) {
                forget(file);
                throw;
            }
            if (const std::uint32_t buckets = file.bucketsToForget(); buckets > 0)
                HsVariable::forgetBuckets(variables, file, buckets);
            break;
        case PlotFile::News::Loaded:
            forget(file);
            break;
    }
    noteNews();
    watched.trouble.clear();
    watched.isStalled = false;
    const bool allBuilt = std::all_of(variables.begin(), variables.end(), [&](const auto& v) {
        return v->variable().source().get() != &file || !v->variable().visible || v->isBuilt();
    });
    return allBuilt ? Came::Rows : Came::Other;
}

PlotFollower::Came PlotFollower::noteTrouble(PlotFile& file, const QString& trouble)
{
    m_watched[&file].trouble = trouble;
    return Came::Nothing;
}

// What is to be read anew; columns that the file has no longer go.
void PlotFollower::forget(const PlotFile& file)
{
    for (const auto& v : m_canvas->plot().variables()) {
        if (v->variable().source().get() != &file)
            continue;
        v->forget();
        if (v->variable().column() > file.columns())
            m_canvas->plot().remove(*v);
    }
}

// -- The view --

void PlotFollower::toNewest()
{
    const QScopedValueRollback<bool> moving(m_moving, true);
    const bool withOverview = m_sincePicture.elapsed() >= kOverviewMs;
    m_canvas->showNewRows(!m_paused, withOverview);
    if (withOverview)
        m_sincePicture.start();
}

// Who zooms or pans away from the newest sample wants to look at something; who comes back to it does not.
void PlotFollower::viewChanged()
{
    if (!isOn() || m_moving)
        return;
    const Plot2D& plot = m_canvas->plot();
    try {
        m_paused = plot.x2() < plot.extent().x2 - (plot.x2() - plot.x1()) * kAtEdge;
    } catch (const TS::Failure&) {
        m_paused = true;
    }
    if (m_paused)
        m_pausedAt = QString::fromStdString(xText(plot, plot.x2()));
    tell();
}

void PlotFollower::tell()
{
    if (!isOn())
        return;
    QStringList news;
    if (m_paused)
        news << tr("Paused at %1").arg(m_pausedAt);
    for (std::size_t i = 0; i < m_canvas->files().size(); ++i) {
        const auto file = m_canvas->files().file(i);
        const auto watched = m_watched.find(file.get());
        if (watched == m_watched.end())
            continue;
        if (!watched->second.trouble.isEmpty())
            news << watched->second.trouble;
        else if (watched->second.isStalled)
            news << tr("No new samples of %1 since %2")
                        .arg(fileNameOf(*file),
                             watched->second.lastNews.toString(QStringLiteral("HH:mm:ss")));
    }
    const QString text = news.join(QStringLiteral("   "));
    if (text.isEmpty())
        m_notice->hide();
    else if (text != m_told)
        m_notice->showNotice(text, m_paused ? tr("&Follow") : QString());
    m_told = text;
}

}  // namespace veltrac
