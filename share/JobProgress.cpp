#include "share/JobProgress.h"

#include <QApplication>
#include <QKeyEvent>
#include <QProgressDialog>

namespace veltrac {

namespace {

// A look after that falls within half a second.
constexpr qint64 kShowAfterMs = 300;
// Short enough that a question leaves the screen as soon as it is answered.
constexpr qint64 kFirstLookMs = 30;
constexpr qint64 kLookEveryMs = 50;
constexpr int kSteps = 1000;

// Keeps what the user presses from all windows.
class InputTrap : public QObject
{
public:
    InputTrap() { QCoreApplication::instance()->installEventFilter(this); }

    bool hasEscape = false;

protected:
    bool eventFilter(QObject* /*receiver*/, QEvent* event) override
    {
        switch (event->type()) {
            case QEvent::KeyPress:
            case QEvent::ShortcutOverride:
                hasEscape = hasEscape || static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
                return true;
            case QEvent::KeyRelease:
            case QEvent::Shortcut:
            case QEvent::InputMethod:
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonRelease:
            case QEvent::MouseButtonDblClick:
            case QEvent::Wheel:
            case QEvent::ContextMenu:
                return true;
            default:
                return false;
        }
    }
};

}  // namespace

JobProgress::JobProgress(QWidget* parent, const QString& what)
    : m_parent(parent), m_what(what), m_nextLook(kFirstLookMs)
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
    if (!m_dialog && !m_cancelled && elapsed() >= kShowAfterMs) {
        m_cancelled = takeEarlyInput();
        if (!m_cancelled)
            show();
    }
    if (m_dialog) {
        const double share = total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
        m_dialog->setValue(static_cast<int>(share * kSteps));
    }
    QApplication::processEvents(m_dialog ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    m_nextLook = elapsed() + kLookEveryMs;
    if (m_dialog && m_dialog->wasCanceled())
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

// Whether Escape was pressed before the dialog could hear it.
bool JobProgress::takeEarlyInput() const
{
    const InputTrap trap;
    QApplication::processEvents();
    return trap.hasEscape;
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
