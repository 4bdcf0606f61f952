#include "formula/EditTsWin1.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QStatusBar>
#include <QTableWidget>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

#include "formula/FormulaFile.h"
#include "formula/FormulaParser.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

constexpr int kNoticeMs = 5000;
constexpr int kTargetWidth = 50;
const char* const kInfoTitle = "Ts-EditWin info";

struct ColumnRow
{
    const char* header;
    const char* tip;
};
constexpr ColumnRow kColumns[] = {
    {"Source file",
     "The target/source file name\nThe target/source file is selected from available ts files at the present "
     "directory."},
    {"Column",
     "The target/source column\nThe target/source column is selected from the selected target/source file."},
    {"Start",
     "The start time of the target/source file\nThe start time is editable and influences the interval "
     "within "
     "which the target is calculated ."},
    {"End",
     "The end time of the target/source file\nThe end time is editable and influences the interval within "
     "which "
     "the target is calculated ."},
    {"Sampletime",
     "The sample time of the target/source file\nThe sample time for a target/source is not editable."},
};

const char* const kFormulaTip =
    "The function consists of:\n"
    "  numbers: 12, 0.5, 1e-3\n"
    "  x1 ... x8: the columns of the source rows, at the time t\n"
    "  t: the time in seconds, 0 at the target's first sample; pi\n"
    "  + - * / ^ and parentheses; a minus stands directly before a number, a variable or a function\n"
    "  functions of one argument: abs(x1), sqrt(x1), sin(2*pi*t), ...\n"
    "  functions of two: max(x1, 0.4), min(x1, x2), pow(x1, 2)";

// Two names of one file, by way of links, are one file.
bool isSameFile(const QString& a, const QString& b)
{
    return a == b || QFileInfo(a) == QFileInfo(b);
}

std::string localName(const QString& name)
{
    return name.toLocal8Bit().toStdString();
}

}  // namespace

struct EditTsWin::ActionRow
{
    const char* image;
    const char* shortcut;
    const char* slot;
    const char* text;
    const char* tip;
};

const std::vector<EditTsWin::ActionRow>& EditTsWin::actionRows()
{
    static const std::vector<ActionRow> rows = {
        {"Open", "Ctrl+O", SLOT(sl_load()), "&Load formula...",
         "Read a formula from a textual (ASCII) file."},
        {"Save", "Ctrl+S", SLOT(sl_saveas()), "&Save formula...",
         "Write the formula to a textual (ASCII) file."},
        {"EditTs", "", SLOT(sl_editFileNum()), "&Edit file...", "Edit colmuns in a ts-file."},
        {"AddLines", "Ctrl++", SLOT(sl_addSource()), "&Add Source...", "Add a ts-file to the source list."},
        {"SubtractLines", "Ctrl+-", SLOT(sl_removeSource()), "&Remove Source...",
         "Remove a ts-file from the source list."},
        {"Animation", "", SLOT(sl_quickPlot()), "&Plot column...",
         "Open a sub-window for plotting the target column."},
        {"", "Ctrl+Return", SLOT(sl_calculate()), "&Calculate...",
         "Execute calculation and store the result on the target column."},
        {"Help", "F1", SLOT(sl_help()), "&Help", "Invoke the help system."},
        {"Math", "", SLOT(sl_stdfunctions()), "&Mathmatical functions...",
         "List available mathematical fuctions."},
    };
    return rows;
}

EditTsWin::EditTsWin(const QString& file, unsigned column, QWidget* parent) : SubWindow(parent)
{
    loadResources();
    setWindowTitle(QStringLiteral("Ts-Edit"));
    setWindowIcon(QIcon(QStringLiteral(":img_EditWin")));
    auto* const centre = new QWidget(this);
    auto* const layout = new QVBoxLayout(centre);
    layout->addWidget(createFormula());
    createTable();
    layout->addWidget(m_table, 1);
    setCentralWidget(centre);
    m_status = new QLabel(this);
    statusBar()->addPermanentWidget(m_status);
    createActions();
    if (tsFileNames().isEmpty())
        say(QStringLiteral("No ts-files found on present directory"));
    else
        addRow(file, column);
    m_formula->setFocus();
    resize(760, 380);
}

EditTsWin::~EditTsWin() = default;

void EditTsWin::createActions()
{
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&File actions"));
    QToolBar* const bar = addToolBar(QStringLiteral("File actions"));
    for (const ActionRow& row : actionRows()) {
        auto* const action =
            new HydAction(QLatin1String(row.image), QKeySequence(QLatin1String(row.shortcut)), this, row.slot,
                          QLatin1String(row.text), QLatin1String(row.tip),
                          whatsThisText(QLatin1String(row.image), QLatin1String(row.tip)));
        menu->addAction(action);
        bar->addAction(action);
    }
    addWhatsThis(menu);
    menu->addSeparator();
    menu->addAction(QStringLiteral("Cl&ose"), this, &QWidget::close, QKeySequence::Close);
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
    m_formula = new QLineEdit(panel);
    m_formula->setToolTip(QLatin1String(kFormulaTip));
    m_formula->setAccessibleName(QStringLiteral("Formula"));
    m_formula->setPlaceholderText(QStringLiteral("sqrt(x1^2+x2^2)"));
    heading->setBuddy(m_formula);
    auto* const line = new QHBoxLayout;
    line->addWidget(m_target);
    line->addWidget(new QLabel(QStringLiteral(" = "), panel));
    line->addWidget(m_formula, 1);
    layout->addWidget(heading);
    layout->addLayout(line);
    connect(m_target, SIGNAL(activated(int)), this, SLOT(sl_cbTargetActivated(int)));
    connect(m_formula, &QLineEdit::textChanged, this, [this] {
        statusBar()->clearMessage();  // it told of the formula before
        checkQuietly();
    });
    connect(m_formula, &QLineEdit::returnPressed, this, &EditTsWin::sl_calculate);
    return panel;
}

void EditTsWin::createTable()
{
    m_table = new QTableWidget(0, static_cast<int>(std::size(kColumns)), this);
    m_table->setAccessibleName(QStringLiteral("Sources"));
    for (int c = 0; c < m_table->columnCount(); ++c) {
        auto* const header = new QTableWidgetItem(QLatin1String(kColumns[c].header));
        header->setToolTip(QLatin1String(kColumns[c].tip));
        m_table->setHorizontalHeaderItem(c, header);
    }
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    // Tab goes from field to field and on; the table itself has nothing to do with keys.
    m_table->setTabKeyNavigation(false);
    m_table->setFocusPolicy(Qt::NoFocus);
}

// -- Sources --

void EditTsWin::sl_addSource()
{
    if (tsFileNames().isEmpty()) {
        statusBar()->showMessage(QStringLiteral("No ts-files found on present directory"), kNoticeMs);
        return;
    }
    if (m_rows.size() >= kMostSources) {
        statusBar()->showMessage(QStringLiteral("There are eight sources already."), kNoticeMs);
        return;
    }
    addRow(QString(), 0);
}

void EditTsWin::addRow(const QString& file, unsigned column)
{
    const int index = static_cast<int>(m_rows.size()) + 1;
    m_table->setRowCount(index);
    m_table->setVerticalHeaderItem(index - 1, new QTableWidgetItem(QStringLiteral("x%1").arg(index)));
    auto* const row = new EditVariable(index, m_table, this);
    connect(row, &EditVariable::x_file_chosen, this, &EditTsWin::openFile);
    connect(row, &EditVariable::x_changed, this, &EditTsWin::checkQuietly);
    m_rows.push_back(row);
    fillTargets();
    row->choose(file, column);
}

void EditTsWin::sl_removeSource()
{
    if (m_rows.empty())
        return;
    delete m_rows.back();
    m_rows.pop_back();
    m_table->setRowCount(static_cast<int>(m_rows.size()));
    fillTargets();
    checkQuietly();
}

void EditTsWin::fillTargets()
{
    const int before = m_target->currentIndex();
    m_target->clear();
    for (const EditVariable* const row : m_rows)
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
    for (EditVariable* const row : m_rows)
        row->refreshFiles();
}

void EditTsWin::sl_cbTargetActivated(int index)
{
    m_target->setCurrentIndex(index);
    checkQuietly();
}

EditVariable* EditTsWin::targetRow() const
{
    const int index = m_target->currentIndex();
    return index < 0 || index >= static_cast<int>(m_rows.size()) ? nullptr
                                                                 : m_rows[static_cast<std::size_t>(index)];
}

// A file that several rows name is open once, so that a target read by its own formula is never stale.
std::shared_ptr<TSFILE> EditTsWin::openShared(const QString& file) const
{
    for (const EditVariable* const row : m_rows)
        if (row->ts() && isSameFile(row->file(), file))
            return row->ts();
    TsApplication* const application = TsApplication::instance();
    if (application == nullptr || file.isEmpty())
        return nullptr;
    std::shared_ptr<TSFILE> ts(application->OpenTs(file, false));
    if (!ts)
        ts.reset(application->OpenTs(file, true));
    return ts;
}

void EditTsWin::openFile(EditVariable* row)
{
    row->setTs(nullptr);
    row->setTs(openShared(row->file()));
    if (!row->ts())
        say(QStringLiteral("%1 could not be opened").arg(row->fileName()));
}

// Another window may have rebuilt a file since it was chosen.
void EditTsWin::reopenFiles()
{
    for (EditVariable* const row : m_rows)
        row->setTs(nullptr);
    for (EditVariable* const row : m_rows)
        row->setTs(openShared(row->file()));
}

// -- The other actions --

void EditTsWin::sl_quickPlot()
{
    const EditVariable* const target = targetRow();
    TsApplication* const application = TsApplication::instance();
    if (target == nullptr || application == nullptr || application->isOpenForWriting(target->file())) {
        showMessage(QStringLiteral("No target selected"));
        return;
    }
    m_plotWindow = application->openSubProgram(SubProgram::PlotColumn, target->file(), target->column());
    if (auto* const window = qobject_cast<SubWindow*>(m_plotWindow))
        connect(window, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    else
        say(QStringLiteral("%1 cannot be plotted").arg(target->fileName()));
}

void EditTsWin::sl_subwindowGone(subWindow window)
{
    if (window == m_plotWindow)
        m_plotWindow = nullptr;
}

void EditTsWin::sl_load()
{
    say(QStringLiteral("Loading..."));
    const QString name = QFileDialog::getOpenFileName(this, QStringLiteral("Open File"), QDir::currentPath(),
                                                      QStringLiteral("Text file (*.txt);;*.*"));
    if (name.isEmpty()) {
        say(QStringLiteral("Loading aborted"));
        return;
    }
    say(QStringLiteral("Nothing was loaded"));
    try {
        const auto formula = readFormulaFile(localName(name));
        if (!formula) {
            showBox(QMessageBox::Warning, this, QStringLiteral("Ts-Edit"),
                    QStringLiteral("Function not found in %1").arg(name));
            return;
        }
        m_formula->setText(QString::fromUtf8(formula->c_str()));
        const bool mayBeCut = formula->size() >= kFormulaBytes;
        say((mayBeCut ? QStringLiteral("Loaded %1, cut after 255 characters") : QStringLiteral("Loaded %1"))
                .arg(QFileInfo(name).fileName()));
    } catch (const std::exception&) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Ts-Edit"),
                QStringLiteral("Unable to open %1").arg(name));
    }
}

void EditTsWin::sl_saveas()
{
    say(QStringLiteral("Saving..."));
    QFileDialog dialog(this, QStringLiteral("Save formula"), QDir::currentPath(),
                       QStringLiteral("Text file (*.txt);;"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // Known to the dialog, so that it asks about the very file that will be written.
    dialog.setDefaultSuffix(QStringLiteral("txt"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        say(QStringLiteral("Saving aborted"));
        return;
    }
    const QString name = dialog.selectedFiles().constFirst();
    try {
        writeFormulaFile(localName(name), m_formula->text().toStdString());
        say(QStringLiteral("Saved %1").arg(QFileInfo(name).fileName()));
    } catch (const std::exception&) {
        say(QStringLiteral("Nothing was saved"));
        // The title is that of the program that this dialog came from, and stays.
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

void EditTsWin::showMessage(const QString& text)
{
    showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"), text);
}

void EditTsWin::say(const QString& text)
{
    statusBar()->showMessage(text);
}
