#include "formula/EditTsWin1.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <span>

#include "core/TsExceptions.h"
#include "formula/FormulaFile.h"
#include "formula/FormulaParser.h"
#include "formula/SourceTable.h"
#include "portal/TsApplication.h"
#include "share/ActionRow.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/NoticeStrip.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

constexpr int kNoticeMs = 5000;
constexpr int kTargetWidth = 50;
const char* const kInfoTitle = "Ts-EditWin info";

const char* const kFormulaTip =
    "The function consists of:\n"
    "  numbers: 12, 0.5, 1e-3\n"
    "  x1 ... x8: the columns of the source rows, at the time t\n"
    "  t: the time in seconds, 0 at the target's first sample; pi\n"
    "  + - * / ^ and parentheses; a minus stands directly before a number, a variable or a function\n"
    "  functions of one argument: abs(x1), sqrt(x1), sin(2*pi*t), ...\n"
    "  functions of two: max(x1, 0.4), min(x1, x2), pow(x1, 2)";

enum class Action { Load, Save, EditFile, AddSource, RemoveSource, Plot, Calculate, Help, Functions };

std::string localName(const QString& name)
{
    return name.toLocal8Bit().toStdString();
}

}  // namespace

EditTsWin::EditTsWin(const QString& file, unsigned column, QWidget* parent)
    : SubWindow(parent), m_sources(new SourceTable), m_calculation(*m_sources, this)
{
    loadResources();
    setWindowTitle(QStringLiteral("Ts-Edit"));
    setWindowIcon(QIcon(QStringLiteral(":img_EditWin")));
    auto* const centre = new QWidget(this);
    auto* const layout = new QVBoxLayout(centre);
    m_notice = new NoticeStrip(centre);
    m_changed = new NoticeStrip(centre);
    layout->addWidget(createFormula());
    layout->addWidget(m_notice);
    layout->addWidget(m_changed);
    layout->addWidget(m_sources, 1);
    setCentralWidget(centre);
    m_status = new QLabel(this);
    m_status->setTextFormat(Qt::PlainText);
    statusBar()->addPermanentWidget(m_status);
    createActions();
    connect(m_notice, &NoticeStrip::x_pressed, this, &EditTsWin::sl_undo);
    connect(m_sources, &SourceTable::x_changed, this, [this] {
        fillTargets();
        watchFiles(false);
        checkQuietly();
    });
    connect(&m_watch, &FileWatch::x_changed, this, &EditTsWin::followFiles);
    connect(m_sources, &SourceTable::x_not_opened, this,
            [this](const QString& name) { showStatus(QStringLiteral("%1 could not be opened").arg(name)); });
    if (tsFileNames().isEmpty())
        showStatus(QStringLiteral("No ts-files found on present directory"));
    else
        m_sources->addSource(file, column);
    m_formula->setFocus();
    resize(760, 380);
}

EditTsWin::~EditTsWin() = default;

void EditTsWin::createActions()
{
    static const ActionRow<Action> rows[] = {
        {Action::Load, "Open", "Ctrl+O", SLOT(sl_load()), "&Load formula...",
         "Read a formula from a textual (ASCII) file."},
        {Action::Save, "Save", "Ctrl+S", SLOT(sl_saveas()), "&Save formula...",
         "Write the formula to a textual (ASCII) file."},
        {Action::EditFile, "EditTs", "", SLOT(sl_editFileNum()), "&Edit file...",
         "Edit colmuns in a ts-file."},
        {Action::AddSource, "AddLines", "Ctrl++", SLOT(sl_addSource()), "&Add Source...",
         "Add a ts-file to the source list."},
        {Action::RemoveSource, "SubtractLines", "Ctrl+-", SLOT(sl_removeSource()), "&Remove Source...",
         "Remove a ts-file from the source list."},
        {Action::Plot, "Animation", "", SLOT(sl_quickPlot()), "&Plot column...",
         "Open a sub-window for plotting the target column."},
        {Action::Calculate, "", "Ctrl+Return", SLOT(sl_calculate()), "&Calculate...",
         "Execute calculation and store the result on the target column."},
        {Action::Help, "Help", "F1", SLOT(sl_help()), "&Help", "Invoke the help system."},
        {Action::Functions, "Math", "", SLOT(sl_stdfunctions()), "&Mathmatical functions...",
         "List available mathematical fuctions."},
    };
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&File actions"));
    QToolBar* const bar = addToolBar(QStringLiteral("File actions"));
    for (const ActionRow<Action>& row : rows) {
        QAction* const action = makeAction(this, this, row);
        menu->addAction(action);
        bar->addAction(action);
    }
    menu->addSeparator();
    m_undo = menu->addAction(QStringLiteral("&Undo calculation"), this, &EditTsWin::sl_undo);
    m_undo->setStatusTip(QStringLiteral("Put the values from before the last calculation back."));
    m_undo->setEnabled(false);
    addWhatsThis(menu);
    menu->addSeparator();
    menu->addAction(QStringLiteral("Cl&ose"), this, &QWidget::close)->setShortcut(QKeySequence::Close);
}

QWidget* EditTsWin::createFormula()
{
    auto* const panel = new QWidget(this);
    auto* const layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const heading = new QLabel(
        QStringLiteral("Target       =  f( double, x1, .., x8, t, pi, math function() etc.))"), panel);
    m_target = new QComboBox(panel);
    m_target->setFixedWidth(kTargetWidth);
    m_target->setAccessibleName(QStringLiteral("Target row"));
    m_target->setWhatsThis(QStringLiteral("The row below whose column takes the results."));
    m_formula = new QLineEdit(panel);
    m_formula->setToolTip(QLatin1String(kFormulaTip));
    m_formula->setAccessibleName(QStringLiteral("Formula"));
    m_formula->setPlaceholderText(QStringLiteral("sqrt(x1^2+x2^2)"));
    heading->setBuddy(m_formula);
    auto* const line = new QHBoxLayout;
    line->addWidget(m_target);
    line->addWidget(new QLabel(QStringLiteral(" = "), panel));
    line->addWidget(m_formula, 1);
    m_reading = new QLabel(panel);
    m_reading->setTextFormat(Qt::PlainText);
    m_reading->setWordWrap(true);
    m_reading->setIndent(kTargetWidth);
    layout->addWidget(heading);
    layout->addLayout(line);
    layout->addWidget(m_reading);
    connect(m_target, SIGNAL(activated(int)), this, SLOT(sl_cbTargetActivated(int)));
    connect(m_formula, &QLineEdit::textChanged, this, [this] {
        statusBar()->clearMessage();  // it told of the formula before
        checkQuietly();
    });
    connect(m_formula, &QLineEdit::returnPressed, this, &EditTsWin::sl_calculate);
    return panel;
}

// -- Sources --

void EditTsWin::offerRange(const SampleRange& range)
{
    if (EditVariable* const row = m_sources->source(0))
        row->chooseRange(range);
}

void EditTsWin::sl_addSource()
{
    if (tsFileNames().isEmpty()) {
        statusBar()->showMessage(QStringLiteral("No ts-files found on present directory"), kNoticeMs);
        return;
    }
    if (m_sources->sources().size() >= kMostSources) {
        statusBar()->showMessage(QStringLiteral("There are eight sources already."), kNoticeMs);
        return;
    }
    m_sources->addSource(QString(), 0);
}

void EditTsWin::sl_removeSource()
{
    m_sources->removeSource();
}

void EditTsWin::fillTargets()
{
    const int before = m_target->currentIndex();
    m_target->clear();
    for (const EditVariable* const row : m_sources->sources())
        m_target->addItem(QStringLiteral("x%1").arg(row->index()));
    if (before >= 0)
        m_target->setCurrentIndex(std::min(before, m_target->count() - 1));
}

// Files come and go while another window is in front.
void EditTsWin::changeEvent(QEvent* event)
{
    SubWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || JobProgress::isRunning() ||
        QApplication::activePopupWidget() != nullptr)
        return;
    m_sources->refreshFiles();
}

// `asTheyAre`: as this window has left or read them, with nothing more to tell.
void EditTsWin::watchFiles(bool asTheyAre)
{
    QStringList paths;
    for (const EditVariable* const row : m_sources->sources())
        if (!row->file().isEmpty())
            paths << row->file();
    m_watch.watchOnly(paths);
    if (!asTheyAre)
        return;
    for (const QString& path : qAsConst(paths))
        m_watch.watch(path);
    m_changed->hide();
}

// Another program has changed files of the rows: columns and times follow, what the user has typed stays.
void EditTsWin::followFiles()
{
    QStringList gone;
    QStringList changed;
    for (const EditVariable* const row : m_sources->sources()) {
        const FileWatch::State state = m_watch.state(row->file());
        if (state == FileWatch::State::Gone && !row->file().isEmpty())
            gone << row->fileName();
        else if (state == FileWatch::State::Changed)
            changed << row->fileName();
    }
    QStringList words;
    gone.removeDuplicates();
    changed.removeDuplicates();
    for (const QString& name : qAsConst(changed))
        words << QStringLiteral("%1 has changed and was read again.").arg(name);
    for (const QString& name : qAsConst(gone))
        words << QStringLiteral("%1 is gone.").arg(name);
    if (words.isEmpty())
        m_changed->hide();
    else
        m_changed->showNotice(words.join(QLatin1Char(' ')));
    m_sources->followFiles(QApplication::activePopupWidget() == nullptr);
    checkQuietly();
}

void EditTsWin::sl_cbTargetActivated(int index)
{
    m_target->setCurrentIndex(index);
    checkQuietly();
}

EditVariable* EditTsWin::targetRow() const
{
    return m_sources->source(m_target->currentIndex());
}

// -- Calculating --

QByteArray EditTsWin::formulaBytes() const
{
    return m_formula->text().toUtf8().left(static_cast<int>(kFormulaBytes));
}

// While the user types: beside the field stands what is wrong, nothing pops up.
void EditTsWin::checkQuietly()
{
    const EditVariable* const target = targetRow();
    const QByteArray formula = formulaBytes();
    QStringList words;
    try {
        FormulaParser parser(formula.constData());
        m_sources->bindTo(parser, target);
        if (parser.Compile() != 0)
            words.clear();  // nothing was typed yet
        else if (parser.ErrorCode() == 0)
            words = readingsOf(parser);
        else
            words << QString::fromLatin1(errorText(parser.ErrorCode(), parser.errorPosition()));
        m_status->setText(target == nullptr ? QString()
                                            : clockDifferences(m_sources->usedBy(formula, *target), *target));
    } catch (const TS::Failure&) {
        words << QStringLiteral("A source file cannot be read");
    }
    if (m_formula->text().toUtf8().size() > static_cast<int>(kFormulaBytes))
        words.prepend(QStringLiteral("The formula is longer than 255 characters and will be cut"));
    m_reading->setText(words.join(QStringLiteral("; ")));
}

void EditTsWin::sl_calculate()
{
    statusBar()->clearMessage();  // it told of the calculation before
    EditVariable* const target = targetRow();
    if (target == nullptr)
        showWarningBox(QStringLiteral("No target selected"));
    else
        showAnswer(m_calculation.calculate(*target, formulaBytes()));
}

void EditTsWin::sl_undo()
{
    showAnswer(m_calculation.undo());
}

void EditTsWin::showAnswer(const ColumnCalculation::Answer& answer)
{
    if (answer.hasChanged) {
        // What was gone while a box stood open may be back, and nothing more will tell of it.
        m_sources->refreshFiles();
        watchFiles(true);
    }
    m_undo->setEnabled(m_calculation.canUndo());
    if (!answer.status.isEmpty())
        showStatus(answer.status);
    if (!answer.notice.isEmpty())
        m_notice->showNotice(answer.notice, QStringLiteral("Undo calculation"));
    else if (!m_calculation.canUndo())
        m_notice->hide();
    if (!answer.box.isEmpty())
        showWarningBox(answer.box);
    if (answer.hasChanged)
        emit x_directory_changed();
}

// -- The other actions --

void EditTsWin::sl_quickPlot()
{
    const EditVariable* const target = targetRow();
    TsApplication* const application = TsApplication::instance();
    if (target == nullptr || application == nullptr || application->isOpenForWriting(target->file())) {
        showWarningBox(QStringLiteral("No target selected"));
        return;
    }
    m_plotWindow = application->openSubProgram(SubProgram::PlotColumn, target->file(), target->column());
    if (auto* const window = qobject_cast<SubWindow*>(m_plotWindow))
        connect(window, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    else
        showStatus(QStringLiteral("%1 cannot be plotted").arg(target->fileName()));
}

void EditTsWin::sl_subwindowGone(subWindow window)
{
    if (window == m_plotWindow)
        m_plotWindow = nullptr;
}

void EditTsWin::sl_load()
{
    showStatus(QStringLiteral("Loading..."));
    const QString name = QFileDialog::getOpenFileName(this, QStringLiteral("Open File"), QDir::currentPath(),
                                                      QStringLiteral("Text file (*.txt);;*.*"));
    if (name.isEmpty()) {
        showStatus(QStringLiteral("Loading aborted"));
        return;
    }
    showStatus(QStringLiteral("Nothing was loaded"));
    try {
        const auto formula = readFormulaFile(localName(name));
        if (!formula) {
            showBox(QMessageBox::Warning, this, QStringLiteral("Ts-Edit"),
                    QStringLiteral("Function not found in %1").arg(name));
            return;
        }
        m_formula->setText(QString::fromUtf8(formula->c_str()));
        const bool mayBeCut = formula->size() >= kFormulaBytes;
        showStatus(
            (mayBeCut ? QStringLiteral("Loaded %1, cut after 255 characters") : QStringLiteral("Loaded %1"))
                .arg(QFileInfo(name).fileName()));
    } catch (const std::exception&) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Ts-Edit"),
                QStringLiteral("Unable to open %1").arg(name));
    }
}

void EditTsWin::sl_saveas()
{
    showStatus(QStringLiteral("Saving..."));
    QFileDialog dialog(this, QStringLiteral("Save formula"), QDir::currentPath(),
                       QStringLiteral("Text file (*.txt);;"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // Known to the dialog, so that it asks about the very file that will be written.
    dialog.setDefaultSuffix(QStringLiteral("txt"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        showStatus(QStringLiteral("Saving aborted"));
        return;
    }
    const QString name = dialog.selectedFiles().constFirst();
    try {
        writeFormulaFile(localName(name), m_formula->text().toStdString());
        showStatus(QStringLiteral("Saved %1").arg(QFileInfo(name).fileName()));
    } catch (const std::exception&) {
        showStatus(QStringLiteral("Nothing was saved"));
        // This title, alone among the boxes of the window, is wanted.
        showBox(QMessageBox::Warning, this, QStringLiteral("Ts-Curvefit"),
                QStringLiteral("%1 %2").arg(QStringLiteral("Unable to open"), name));
    }
}

void EditTsWin::sl_editFileNum()
{
    auto* const window =
        new MessageWin(nullptr, QStringLiteral("messageWin"),
                       QStringLiteral("Sorry, numerically editing is not implemented in this version"),
                       QLatin1String(kInfoTitle), 500, 150, QStringLiteral("Times"), 11);
    window->show();
}

void EditTsWin::sl_help()
{
    showHelp(nullptr, QStringLiteral("formula"), QLatin1String(kInfoTitle))->show();
}

void EditTsWin::sl_stdfunctions()
{
    showHelp(nullptr, QStringLiteral("functions"), QLatin1String(kInfoTitle))->show();
}

void EditTsWin::showWarningBox(const QString& text)
{
    showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"), text);
}

void EditTsWin::showStatus(const QString& text)
{
    statusBar()->showMessage(text);
}
