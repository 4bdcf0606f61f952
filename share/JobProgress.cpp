#include "share/JobProgress.h"

#include <QApplication>
#include <QProgressDialog>

namespace veltrac {

namespace {

constexpr qint64 kShowAfterMs = 500;
constexpr qint64 kRepaintEveryMs = 50;
constexpr int kSteps = 1000;

}  // namespace

JobProgress::JobProgress(QWidget* parent, const QString& what)
    : m_parent(parent), m_what(what), m_nextLook(kShowAfterMs)
{
    m_clock.start();
    ++s_running;
    ++s_serial;
}

JobProgress::~JobProgress()
{
    --s_running;
    if (m_dialog)
        QApplication::restoreOverrideCursor();
}

bool JobProgress::operator()(std::uint64_t done, std::uint64_t total)
{
    if (elapsed() < m_nextLook)
        return !m_cancelled;
    if (!m_dialog)
        show();
    m_nextLook = elapsed() + kRepaintEveryMs;

    const double share = total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
    m_dialog->setValue(static_cast<int>(share * kSteps));
    QApplication::processEvents();
    if (m_dialog->wasCanceled())
        m_cancelled = true;
    return !m_cancelled;
}

Progress JobProgress::callback()
{
    return [this](std::uint64_t done, std::uint64_t total) { return (*this)(done, total); };
}

double JobProgress::seconds() const
{
    return static_cast<double>(elapsed()) / 1000.0;
}

void JobProgress::show()
{
    // A job under a wait cursor shows an arrow over its Cancel button.
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    m_dialog = std::make_unique<QProgressDialog>(m_what, QStringLiteral("Cancel"), 0, kSteps, m_parent);
    m_dialog->setWindowTitle(QStringLiteral("Veltrac"));
    m_dialog->setWindowModality(Qt::ApplicationModal);
    m_dialog->setAutoReset(false);
    m_dialog->setAutoClose(false);
    m_dialog->setMinimumDuration(0);
    m_dialog->show();
}

}  // namespace veltrac
