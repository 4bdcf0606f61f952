#include "converters/ImportWindow.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

#include "converters/ImportFields.h"
#include "converters/ImportTexts.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"

namespace veltrac {

namespace {

// Files up to this size are read in no noticeable time.
constexpr std::uint64_t kQuickBytes = 4'000'000;

}  // namespace

ImportWindow::ImportWindow(const QString& icon, QWidget* parent) : SubWindow(parent), m_target(new QLineEdit)
{
    loadResources();
    setWindowIcon(QIcon(icon));
}

// -- Building --

QWidget* ImportWindow::buildFindings()
{
    m_finding = new QLabel;
    m_finding->setWordWrap(true);
    m_finding->setTextFormat(Qt::PlainText);
    m_finding->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_warning = warningLabel();
    auto* const box = new QWidget;
    auto* const layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_finding);
    layout->addWidget(m_warning);
    box->setMinimumHeight(2 * m_finding->fontMetrics().lineSpacing());
    return box;
}

QWidget* ImportWindow::buildButtons(const char* helpTip, const char* checkTip, QPushButton* first)
{
    auto* const row = new QWidget;
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    if (first != nullptr)
        layout->addWidget(first);
    QPushButton* const help = importButton("&Help", helpTip);
    connect(new QShortcut(Qt::Key_F1, this), &QShortcut::activated, this, &ImportWindow::sl_help);
    m_check = importButton("&Check only", checkTip);
    m_import = importButton("&Import", "Make the ts-file (Enter).");
    QPushButton* const cancel = importButton("&Cancel", "Close the window and make nothing (Escape).");
    connect(help, &QPushButton::clicked, this, &ImportWindow::sl_help);
    connect(m_check, &QPushButton::clicked, this, &ImportWindow::sl_check);
    connect(m_import, &QPushButton::clicked, this, &ImportWindow::sl_import);
    connect(cancel, &QPushButton::clicked, this, &QWidget::close);
    for (QPushButton* const button : {help, m_check, m_import, cancel})
        layout->addWidget(button);
    return row;
}

void ImportWindow::showEvent(QShowEvent* event)
{
    SubWindow::showEvent(event);
    if (hasFiles() || m_asked)
        return;
    m_asked = true;
    QTimer::singleShot(0, this, [this] { chooseFiles(); });
}

void ImportWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        sl_import();
    else if (event->key() == Qt::Key_Escape)
        close();
    else
        SubWindow::keyPressEvent(event);
}

void ImportWindow::sl_help()
{
    showHelp(this, QStringLiteral("stl"), QStringLiteral("Veltrac, STL format"));
}

// -- Checking --

void ImportWindow::checkQuietly()
{
    if (!m_problem.isEmpty() || (!isRead() && fileBytes() > kQuickBytes))
        return;
    try {
        check({});
        m_checked = true;
    } catch (const std::exception&) {
        m_problem = importFailure();
    }
}

void ImportWindow::checkLater()
{
    QTimer::singleShot(0, this, [this] {
        if (!m_checked && m_problem.isEmpty() && isVisible() && !JobProgress::isRunning())
            runCheck();
    });
}

// False where it failed or was cancelled.
bool ImportWindow::runCheck()
{
    m_problem.clear();
    try {
        JobProgress progress(this, readingText());
        m_checked = check(progress.callback()) == JobOutcome::Done;
    } catch (const std::exception&) {
        m_problem = importFailure();
        m_checked = false;
    }
    showFindings();
    return m_checked;
}

void ImportWindow::sl_check()
{
    if (runCheck())
        showReport(QString(), 0.0);
    else if (!m_problem.isEmpty())
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"), m_problem);
}

// -- Importing --

void ImportWindow::sl_import()
{
    if (!m_import->isEnabled())
        return;
    if (!runCheck()) {
        if (!m_problem.isEmpty())
            showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"), m_problem);
        return;
    }
    const QString question = doubt();
    if (!question.isEmpty() && !askYesNo(QMessageBox::Question, this, QStringLiteral("Veltrac"), question))
        return;
    const QString target = shown(newTsFileName(pathOf(m_target->text().trimmed()).string()));
    if (clearTarget(this, target))
        write(target);
}

void ImportWindow::write(const QString& target)
{
    double seconds = 0.0;
    try {
        JobProgress progress(this, QStringLiteral("Writing %1 …").arg(target));
        if (makeFile(pathOf(target), progress.callback()) == JobOutcome::Cancelled) {
            m_finding->setText(kCancelled);
            return;
        }
        seconds = progress.seconds();
    } catch (...) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac error"),
                QStringLiteral("%1 was not made; nothing was changed.\n%2").arg(target, importFailure()));
        return;
    }
    emit x_file_made(target);
    showReport(target, seconds);
    close();
}

void ImportWindow::showReport(const QString& target, double seconds)
{
    const Report told = report();
    const bool made = !target.isEmpty();
    const QString head =
        made ? QStringLiteral("%1 was made in %2 s.\n").arg(target, QString::number(seconds, 'f', 1))
             : QString();
    ImportReport box(this, made ? QStringLiteral("Import") : QStringLiteral("Check"), head + told.summary,
                     told.troubles, told.troubleCount, made);
    if (box.exec() == QDialog::Accepted && TsApplication::instance() != nullptr)
        TsApplication::instance()->openSubProgram(SubProgram::Plot, target, 0);
}

}  // namespace veltrac
