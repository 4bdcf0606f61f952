#include "converters/ImportPanel.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

#include "converters/ImportFields.h"
#include "converters/ImportTexts.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/FileNotice.h"
#include "share/JobProgress.h"
#include "share/QtMessageWin.h"
#include "share/SubWindow.h"

namespace veltrac {

namespace {

// Files up to this size are read in no noticeable time.
constexpr std::uint64_t kQuickBytes = 4'000'000;

}  // namespace

ImportPanel::ImportPanel(SubWindow& window, Importer& importer, QWidget* fields, const Tips& tips,
                         QPushButton* first)
    : QWidget(&window),
      m_window(window),
      m_importer(importer),
      m_finding(wrappedLabel()),
      m_warning(warningLabel()),
      m_notice(new FileNotice({QStringLiteral("%1 has changed."), QStringLiteral("%1 is gone.")}, this))
{
    auto* const findings = new QWidget;
    findings->setMinimumHeight(2 * m_finding->fontMetrics().lineSpacing());
    auto* const texts = new QVBoxLayout(findings);
    texts->setContentsMargins(0, 0, 0, 0);
    texts->addWidget(m_finding);
    texts->addWidget(m_warning);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_notice);
    layout->addWidget(fields, 1);
    layout->addWidget(findings);
    layout->addWidget(buildButtons(tips, first));
    connect(new QShortcut(Qt::Key_F1, this), &QShortcut::activated, this, &ImportPanel::sl_help);
    connect(m_notice, &FileNotice::x_told, this, &ImportPanel::readAgain);
    // Keys that no field takes end at the window.
    window.installEventFilter(this);
}

QWidget* ImportPanel::buildButtons(const Tips& tips, QPushButton* first)
{
    auto* const row = new QWidget;
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    if (first != nullptr)
        layout->addWidget(first);
    QPushButton* const help = importButton("&Help", tips.help);
    m_check = importButton("Check onl&y", tips.check);
    m_import = importButton("&Import", "Make the ts-file (Enter).");
    QPushButton* const cancel = importButton("&Cancel", "Close the window and make nothing (Escape).");
    connect(help, &QPushButton::clicked, this, &ImportPanel::sl_help);
    connect(m_check, &QPushButton::clicked, this, &ImportPanel::sl_check);
    connect(m_import, &QPushButton::clicked, this, &ImportPanel::sl_import);
    connect(cancel, &QPushButton::clicked, &m_window, &QWidget::close);
    for (QPushButton* const button : {help, m_check, m_import, cancel})
        layout->addWidget(button);
    return row;
}

bool ImportPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show)
        QTimer::singleShot(0, this, &ImportPanel::askForFiles);
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        sl_import();
    else if (key == Qt::Key_Escape)
        m_window.close();
    else
        return QWidget::eventFilter(watched, event);
    return true;
}

void ImportPanel::askForFiles()
{
    if (m_importer.hasFiles() || m_asked)
        return;
    m_asked = true;
    m_importer.chooseFiles();
}

void ImportPanel::sl_help()
{
    showHelp(&m_window, QStringLiteral("stl"), QStringLiteral("Veltrac, STL format"));
}

void ImportPanel::showFinding(const QString& found, const QString& doubts)
{
    m_finding->setText(found);
    showText(m_warning, m_problem.isEmpty() ? doubts : m_problem);
}

void ImportPanel::offerImport(bool fieldsAreGood, QWidget* instead)
{
    const bool good = fieldsAreGood && m_problem.isEmpty();
    // Else the focus would go on to Cancel, and Enter close the window.
    if (!good && m_import->hasFocus())
        instead->setFocus();
    m_import->setEnabled(good);
    m_check->setEnabled(fieldsAreGood);
}

void ImportPanel::focusImport()
{
    m_import->setFocus();
}

// -- Checking --

bool ImportPanel::attempt(const std::function<void()>& reading)
{
    m_problem.clear();
    m_checked = false;
    try {
        reading();
    } catch (const std::exception&) {
        m_problem = importFailure();
    }
    return m_problem.isEmpty();
}

void ImportPanel::checkQuietly()
{
    if (m_problem.isEmpty() && (m_importer.isRead() || m_importer.fileBytes() <= kQuickBytes))
        m_checked = attempt([this] { m_importer.check({}); });
}

void ImportPanel::checkLater()
{
    QTimer::singleShot(0, this, [this] {
        if (!m_checked && m_problem.isEmpty() && isVisible() && !JobProgress::isRunning())
            runCheck();
    });
}

void ImportPanel::watch(const QStringList& paths)
{
    m_notice->watch(paths);
}

// What the user has set stays.
void ImportPanel::readAgain()
{
    if (!m_check->isEnabled())
        return;
    m_problem.clear();
    m_checked = false;
    checkQuietly();
    m_importer.showFindings();
    if (m_problem.isEmpty() && !m_checked)
        checkLater();
}

// False where it failed or was cancelled.
bool ImportPanel::runCheck()
{
    JobOutcome outcome = JobOutcome::Cancelled;
    attempt([&] {
        JobProgress progress(&m_window, m_importer.readingText());
        outcome = m_importer.check(progress.callback());
    });
    m_checked = outcome == JobOutcome::Done;
    m_importer.showFindings();
    return m_checked;
}

void ImportPanel::sl_check()
{
    if (runCheck())
        showReport(QString(), 0.0);
    else if (!m_problem.isEmpty())
        showBox(QMessageBox::Warning, &m_window, QStringLiteral("Veltrac"), m_problem);
}

// -- Importing --

void ImportPanel::sl_import()
{
    if (!m_import->isEnabled())
        return;
    if (!runCheck()) {
        if (!m_problem.isEmpty())
            showBox(QMessageBox::Warning, &m_window, QStringLiteral("Veltrac"), m_problem);
        return;
    }
    const QString question = m_importer.doubt();
    if (!question.isEmpty() &&
        !askYesNo(QMessageBox::Question, &m_window, QStringLiteral("Veltrac"), question))
        return;
    const QString target = shown(newTsFileName(pathOf(m_importer.targetName()).string()));
    if (clearTarget(&m_window, target))
        write(target);
}

void ImportPanel::write(const QString& target)
{
    double seconds = 0.0;
    try {
        JobProgress progress(&m_window, QStringLiteral("Writing %1 …").arg(target));
        if (m_importer.makeFile(pathOf(target), progress.callback()) == JobOutcome::Cancelled) {
            m_finding->setText(kCancelled);
            return;
        }
        seconds = progress.seconds();
    } catch (...) {
        showBox(QMessageBox::Warning, &m_window, QStringLiteral("Veltrac error"),
                QStringLiteral("%1 was not made; nothing was changed.\n%2").arg(target, importFailure()));
        return;
    }
    emit m_window.x_file_made(target);
    showReport(target, seconds);
    m_window.close();
}

void ImportPanel::showReport(const QString& target, double seconds)
{
    const Importer::Report told = m_importer.report();
    const bool made = !target.isEmpty();
    const QString head =
        made ? QStringLiteral("%1 was made in %2 s.\n").arg(target, QString::number(seconds, 'f', 1))
             : QString();
    ImportReport box(&m_window, made ? QStringLiteral("Import") : QStringLiteral("Check"),
                     head + told.summary, told.troubles, told.troubleCount, made);
    if (box.exec() == QDialog::Accepted && TsApplication::instance() != nullptr)
        TsApplication::instance()->openSubProgram(SubProgram::Plot, target, 0);
}

}  // namespace veltrac
