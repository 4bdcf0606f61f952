#include "portal/SampleFollower.h"

#include <QFile>
#include <QFileInfo>
#include <QScrollBar>

#include "core/FileIdentity.h"
#include "core/TsExceptions.h"
#include "portal/SampleTable.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

constexpr int kListLookMs = 100;

}  // namespace

SampleFollower::SampleFollower(SampleTable& table, QString path, QObject* parent)
    : QObject(parent), m_table(table), m_path(std::move(path))
{
    m_timer.setInterval(kListLookMs);
    connect(&m_timer, &QTimer::timeout, this, &SampleFollower::look);
}

void SampleFollower::setOn(bool on)
{
    m_timer.stop();
    tellTrouble(QString());
    if (!on)
        return;
    m_timer.start();
    takeNews();
    toNewest();
}

void SampleFollower::look()
{
    if (JobProgress::isRunning())
        return;
    const SampleView& view = m_table.view();
    // A row that the layout has moved a little is still the one at the end.
    const int top = view.sampleBar()->value();
    const bool isInView = m_row >= top && m_row <= top + view.sampleBar()->pageStep();
    if (view.currentRow() != m_row || !isInView) {
        setOn(false);
        emit x_stopped();
        return;
    }
    if (takeNews())
        toNewest();
}

bool SampleFollower::takeNews()
{
    TsTableModel& model = m_table.model();
    const QString name = QFileInfo(m_path).fileName();
    const auto named = identityOf(std::filesystem::path(QFile::encodeName(m_path).toStdString()));
    if (!named) {
        tellTrouble(QStringLiteral("%1 is gone; it is shown as it was.").arg(name));
        return false;
    }
    try {
        if (*named == model.identity() && !model.takeNewRows()) {
            tellTrouble(QString());
            return false;
        }
    } catch (const TS::Failure&) {
        tellTrouble(QStringLiteral("%1 cannot be read at present.").arg(name));
        return false;
    }
    tellTrouble(QString());
    if (*named != model.identity() || !model.isAsTheFile())
        emit x_replaced();
    else
        emit x_rows_came();
    return true;
}

void SampleFollower::toNewest()
{
    SampleView& view = m_table.view();
    if (const std::uint32_t newest = m_table.model().newestRow(); newest > 0)
        view.goToSample(newest, view.currentColumn());
    m_row = view.currentRow();
}

void SampleFollower::tellTrouble(const QString& text)
{
    if (text != m_trouble)
        emit x_trouble(text);
    m_trouble = text;
}

}  // namespace veltrac
