#include "portal/EditHeaderWin.h"

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStatusBar>
#include <QVBoxLayout>

#include <memory>

#include "core/FailureText.h"
#include "core/Rebuild.h"
#include "core/RingFile.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "portal/ColumnTable.h"
#include "portal/HeaderFields.h"
#include "portal/RowHeight.h"
#include "portal/StartField.h"
#include "portal/TsApplication.h"
#include "portal/TsFileTexts.h"
#include "share/Boxes.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"
#include "share/NumberField.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"
#include "share/TargetFile.h"
#include "share/WaitCursor.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

constexpr int kDefaultRowHeight = 20;
// Boxes about empty names before the status bar tells the rest.
constexpr std::size_t kMostNameBoxes = 3;

std::unique_ptr<TSFILE> openFile(const QString& name, bool readOnly)
{
    TsApplication* const application = TsApplication::instance();
    return std::unique_ptr<TSFILE>(application == nullptr ? nullptr : application->OpenTs(name, readOnly));
}

}  // namespace

EditHeaderWin::EditHeaderWin(const QString& fileName, QWidget* parent)
    : SubWindow(parent), m_fileName(QDir().absoluteFilePath(fileName)), m_shownName(fileName)
{
    loadResources();
    setWindowTitle(QStringLiteral("Edit or view; %1 header").arg(fileName));
    setWindowIcon(QIcon(QStringLiteral(":/img_EditTsHeader")));
    setWhatsThis(whatsThisText(
        QStringLiteral("EditTsHeader"),
        QStringLiteral(
            "Edits the header of a ts-file: its description, time unit, sample time and start, and the "
            "names and descriptions of its columns. A new number of samples or columns rebuilds the "
            "file; every value that fits stays in its place.")));

    auto* const central = new QWidget(this);
    auto* const layout = new QVBoxLayout(central);
    layout->addWidget(createFields());
    layout->addWidget(createTable(), 1);
    layout->addWidget(createButtons());
    setCentralWidget(central);
    statusBar();  // from the start, so that its first message does not move the buttons
    connect(this, &SubWindow::windowGone, this, &EditHeaderWin::sl_subwindowGone);
    connect(&m_watch, &FileWatch::x_changed, this, &EditHeaderWin::followFile);
    addHelpKey(this, QStringLiteral("header"), QStringLiteral("The header editor"));

    readHeader();
    sl_refresh();
    resize(fontMetrics().averageCharWidth() * 110, fontMetrics().height() * 40);
}

// A field or cell that has the focus tells that it is left when it goes, after this window has.
EditHeaderWin::~EditHeaderWin()
{
    m_fields->samples().disconnect(this);
    m_fields->columns().disconnect(this);
    m_table->disconnect(this);
}

// -- Building --

QWidget* EditHeaderWin::createFields()
{
    m_fields = new HeaderFields(this);
    connect(&m_fields->description(), &QLineEdit::textChanged, this, &EditHeaderWin::sl_fileDescrChanged);
    connect(&m_fields->timeUnit(), &QLineEdit::textChanged, this, &EditHeaderWin::sl_timeUnitChanged);
    connect(&m_fields->sampleTime(), &QLineEdit::textChanged, this, &EditHeaderWin::sl_sampleTimeChanged);
    connect(&m_fields->startTime(), &QLineEdit::textChanged, this, &EditHeaderWin::sl_startTimeChanged);
    connect(&m_fields->samples(), &QLineEdit::textChanged, this, &EditHeaderWin::sl_samplesChanged);
    connect(&m_fields->columns(), &QLineEdit::textChanged, this, &EditHeaderWin::sl_columnsChanged);
    connect(m_fields, &HeaderFields::x_start_date_edited, this, [this] { m_edits.startDate = true; });
    connect(&m_fields->startDate(), &StartField::x_validated, this, &EditHeaderWin::updateState);
    // A count is applied when its field is left, also by Enter: what that has done is to be seen. Enter in
    // the other fields presses OK.
    connect(&m_fields->samples(), &QLineEdit::editingFinished, this, [this] {
        if (isLeftForGood())
            applySamples();
    });
    connect(&m_fields->columns(), &QLineEdit::editingFinished, this, [this] {
        if (isLeftForGood())
            applyColumns();
    });
    for (const QLineEdit* const field :
         {&m_fields->description(), &m_fields->timeUnit(), static_cast<QLineEdit*>(&m_fields->sampleTime()),
          static_cast<QLineEdit*>(&m_fields->startTime()), &m_fields->startDate().text()})
        connect(field, &QLineEdit::returnPressed, this, [this] { m_ok->click(); });
    return m_fields;
}

QWidget* EditHeaderWin::createTable()
{
    m_table = new ColumnTable(this);
    m_table->setRowHeights(kDefaultRowHeight);
    connect(m_table->horizontalHeader(), &QHeaderView::sectionClicked, this, [this] { sl_refresh(); });
    connect(m_table, &QTableWidget::cellChanged, this, &EditHeaderWin::sl_cellChanged);
    return m_table;
}

QWidget* EditHeaderWin::createButtons()
{
    auto* const buttons = new QWidget(this);
    auto* const rowHeight = new QSpinBox(buttons);
    rowHeight->setRange(kLeastRowHeight, kGreatestRowHeight);
    rowHeight->setValue(kDefaultRowHeight);
    rowHeight->setAccessibleName(QStringLiteral("Row height in pixels"));
    rowHeight->setToolTip(QStringLiteral("The height of the table's rows, in pixels."));
    auto* const label = new QLabel(QStringLiteral("Row&height:"), buttons);
    label->setBuddy(rowHeight);
    m_ok = new QPushButton(QIcon(QStringLiteral(":/img_Ok")), QStringLiteral("&OK"), buttons);
    m_ok->setDefault(true);
    m_ok->setToolTip(QStringLiteral("Write what was changed into the file and close."));
    m_cancel = new QPushButton(QIcon(QStringLiteral(":/img_Cancel")), QStringLiteral("&Cancel"), buttons);
    m_cancel->setToolTip(QStringLiteral("Close (Esc). What the table has saved and a new size stay."));
    // As the button's own shortcut, Escape would take the place of its mnemonic.
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);

    auto* const layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(rowHeight);
    layout->addStretch();
    layout->addWidget(m_ok);
    layout->addWidget(m_cancel);

    connect(rowHeight, qOverload<int>(&QSpinBox::valueChanged), this, &EditHeaderWin::sl_rowHeight);
    connect(m_ok, &QPushButton::clicked, this, &EditHeaderWin::sl_finished);
    connect(m_cancel, &QPushButton::clicked, this, &QWidget::close);
    return buttons;
}

// -- What the file holds --

void EditHeaderWin::readHeader()
{
    m_watch.watch(m_fileName);
    const std::unique_ptr<TSFILE> file = openFile(m_fileName, true);
    if (!file) {
        showInStatusBar(QStringLiteral("%1 could not be opened.").arg(m_shownName));
        m_ok->setEnabled(false);
        return;
    }
    try {
        takeCounts(*file);
        m_fields->description().setText(headerText(file->description()));
        m_fields->timeUnit().setText(headerText(file->timeUnit()));
        m_fields->sampleTime().setText(floatText(file->dt()));
        m_fields->startTime().setText(floatText(file->startTime()));
        m_fields->setStartSeconds(file->startSeconds());
    } catch (const TS::Failure&) {
        showInStatusBar(QStringLiteral("The header of %1 could not be read.").arg(m_shownName));
    }
    m_edits = {};
    updateState();
}

void EditHeaderWin::takeCounts(TSFILE& file)
{
    if (file.samples() != m_samples)
        m_samples = m_enteredSamples = file.samples();
    if (file.columns() != m_columns)
        m_columns = m_enteredColumns = file.columns();
    m_isRing = file.ringStart() != 0;
    m_fields->setKind(QString::fromStdString(ringText(file)));
    m_fields->setCounts(m_samples, m_columns);
}

void EditHeaderWin::changeEvent(QEvent* event)
{
    SubWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_watch.look();
}

// Another window or program may have rebuilt or computed what is shown here. What the user has typed stays.
void EditHeaderWin::followFile()
{
    const bool isThere = m_watch.state(m_fileName) != FileWatch::State::Gone;
    showInStatusBar((isThere ? QStringLiteral("%1 has changed and was read again.")
                             : QStringLiteral("%1 is gone; what was typed is still here."))
                        .arg(m_shownName));
    if (m_edits.any() || !isThere)
        m_watch.watch(m_fileName);
    else
        readHeader();
    sl_refresh();
}

void EditHeaderWin::sl_refresh()
{
    std::unique_ptr<TSFILE> file = openFile(m_fileName, true);
    if (!file)
        return;
    takeCounts(*file);
    const std::vector<unsigned> unnamed = m_table->fill(*file);
    file.reset();
    if (static_cast<unsigned>(m_table->rowCount()) < m_columns)
        showInStatusBar(
            QStringLiteral("Of %1 columns the first %2 are shown.").arg(m_columns).arg(m_table->rowCount()));
    for (std::size_t i = 0; i < unnamed.size() && i < kMostNameBoxes; ++i)
        showWarningBox(
            QStringLiteral("Ts Column name error"),
            QStringLiteral(
                "Column %1 name is empty(==0).\n Column name should be unique (max 11 characters).")
                .arg(unnamed[i]));
    if (unnamed.size() > kMostNameBoxes)
        showInStatusBar(QStringLiteral("%1 columns have no name.").arg(unnamed.size()));
}

// -- Fields --

void EditHeaderWin::sl_fileDescrChanged(const QString& /*text*/)
{
    m_edits.description = true;
}

void EditHeaderWin::sl_timeUnitChanged(const QString& /*text*/)
{
    m_edits.timeUnit = true;
}

void EditHeaderWin::sl_sampleTimeChanged(const QString& /*text*/)
{
    m_edits.sampleTime = true;
    updateState();
}

void EditHeaderWin::sl_startTimeChanged(const QString& /*text*/)
{
    m_edits.startTime = true;
    updateState();
}

void EditHeaderWin::sl_samplesChanged(const QString& /*text*/)
{
    updateState();
}

void EditHeaderWin::sl_columnsChanged(const QString& /*text*/)
{
    updateState();
}

// OK stands for all fields.
void EditHeaderWin::updateState()
{
    m_ok->setEnabled(m_fields->validate());
}

void EditHeaderWin::sl_rowHeight(int height)
{
    m_table->setRowHeights(height);
}

void EditHeaderWin::sl_cellChanged(int row, int column)
{
    if (column != ColumnTable::kName && column != ColumnTable::kDescription)
        return;
    if (!mayWrite(this, QStringLiteral("Veltrac"), m_fileName)) {
        sl_refresh();
        return;
    }
    try {
        writeCell(row, column);
    } catch (const TS::Failure&) {
        showWarningBox(QStringLiteral("Veltrac error"),
                       QStringLiteral("%1 could not be written. Column %2 stays as it was.")
                           .arg(m_shownName, QString::number(row + 1)));
        sl_refresh();
    }
    m_watch.watch(m_fileName);
}

void EditHeaderWin::writeCell(int row, int column)
{
    const auto number = static_cast<unsigned>(row) + 1;
    QTableWidgetItem* const cell = m_table->item(row, column);
    const std::unique_ptr<TSFILE> file = openFile(m_fileName, false);
    if (!file)
        throw TS::OPEN_ERROR(m_fileName.toLocal8Bit().toStdString());
    const char* const written =
        column == ColumnTable::kName
            ? file->columnName(number, headerBytes(cell->text(), kColumnNameBytes).constData())
            : file->columnDescription(number, headerBytes(cell->text(), kColumnDescriptionBytes).constData());
    const QString stored = headerText(written);
    showInStatusBar(
        stored == cell->text().trimmed()
            ? QStringLiteral("Column %1 saved").arg(number)
            : QStringLiteral("Column %1 saved, cut to \"%2\"").arg(QString::number(number), stored));
    const QSignalBlocker quiet(m_table);
    cell->setText(stored);
}

// -- Counts --

bool EditHeaderWin::mayClose()
{
    m_isClosing = true;
    return true;
}

bool EditHeaderWin::isLeftForGood() const
{
    return !m_isClosing && QApplication::focusWidget() != m_cancel;
}

bool EditHeaderWin::applySamples()
{
    if (!m_fields->samples().isValid())
        return false;
    const auto entered = static_cast<unsigned>(m_fields->samples().number());
    if (entered == m_enteredSamples)
        return true;
    // Whatever the answer: a refused reduction is not asked again.
    m_enteredSamples = entered;
    const bool done = changeCounts(entered, std::nullopt);
    updateState();
    return done;
}

bool EditHeaderWin::applyColumns()
{
    if (!m_fields->columns().isValid())
        return false;
    const auto entered = static_cast<unsigned>(m_fields->columns().number());
    if (entered == m_enteredColumns)
        return true;
    m_enteredColumns = entered;
    const bool done = changeCounts(std::nullopt, entered);
    sl_refresh();
    updateState();
    return done;
}

bool EditHeaderWin::changeCounts(std::optional<unsigned> newSamples, std::optional<unsigned> newColumns)
{
    if (const std::unique_ptr<TSFILE> file = openFile(m_fileName, true)) {
        takeCounts(*file);
    } else {
        showWarningBox(QStringLiteral("Veltrac error"),
                       QStringLiteral("%1 cannot be opened any more.").arg(m_shownName));
        return false;
    }
    const unsigned samples = newSamples.value_or(m_samples);
    const unsigned columns = newColumns.value_or(m_columns);
    if (samples == m_samples && columns == m_columns)
        return true;
    if (m_isRing) {
        showWarningBox(
            QStringLiteral("Veltrac"),
            QStringLiteral("%1 is a ring file. Its numbers of samples and columns cannot be changed.")
                .arg(m_shownName));
        return false;
    }
    if (!mayWrite(this, QStringLiteral("Veltrac"), m_fileName))
        return false;
    const bool reduces = samples < m_samples || columns < m_columns;
    if (reduces &&
        !askYesNo(QMessageBox::Warning, this, QStringLiteral("Veltrac"),
                  QStringLiteral("It is most unusual to reduce the size of a ts-file, proceed?"))) {
        showInStatusBar(
            QStringLiteral("The file keeps its %1 samples and %2 columns.").arg(m_samples).arg(m_columns));
        return false;
    }
    return rebuild(samples, columns);
}

bool EditHeaderWin::rebuild(unsigned samples, unsigned columns)
{
    const auto unchanged = [] {
        return QStringLiteral("The old file is still there, unchanged: %1.")
            .arg(QString::fromLocal8Bit(reasonOfFailure().c_str()));
    };
    QString failure;
    JobOutcome outcome = JobOutcome::Cancelled;
    try {
        const WaitCursor waiting;
        JobProgress progress(this, QStringLiteral("Rebuilding %1").arg(m_shownName));
        outcome =
            rebuildTsFile(m_fileName.toLocal8Bit().toStdString(), samples, columns, progress.callback());
    } catch (const TS::Failure&) {
        failure = QStringLiteral("Caught a TS::OPEN_ERROR exception on:") + m_shownName + QLatin1Char('\n') +
                  unchanged();
    } catch (const std::exception&) {
        failure = QStringLiteral("Uspecified problem but something vent wrong in any case.\n") + unchanged();
    }
    m_watch.watch(m_fileName);
    if (outcome == JobOutcome::Done) {
        m_samples = samples;
        m_columns = columns;
        m_fields->setCounts(samples, columns);
        showInStatusBar(QStringLiteral("%1 has %2 samples and %3 columns now.")
                            .arg(m_shownName, QString::number(samples), QString::number(columns)));
        emit x_directory_changed();
        return true;
    }
    if (!failure.isEmpty())
        showWarningBox(QStringLiteral("Veltrac error"), failure);
    else
        showInStatusBar(QStringLiteral("Cancelled: the file is unchanged."));
    m_enteredSamples = m_samples;
    m_enteredColumns = m_columns;
    m_fields->resetCounts();
    return false;
}

// -- The end --

void EditHeaderWin::sl_finished()
{
    // A mnemonic presses OK while a cell is open still.
    if (m_table->isAncestorOf(QApplication::focusWidget()))
        m_ok->setFocus();
    // As the header will hold it: what is too small for 32 bits is 0 there.
    if (!(static_cast<float>(m_fields->sampleTime().number()) > 0.0F)) {
        showWarningBox(QStringLiteral("Ts sample time error"),
                       QStringLiteral("A sample time of 0 is illegal.\n Modify the field and select OK."));
        m_fields->sampleTime().setFocus();
        return;
    }
    // Nor is the field of a count left by it.
    if (applySamples() && applyColumns() && writeFields())
        close();
}

void EditHeaderWin::setFields(TSFILE& file) const
{
    if (m_edits.description)
        file.description(headerBytes(m_fields->description().text(), kFileDescriptionBytes).constData());
    if (m_edits.timeUnit)
        file.timeUnit(headerBytes(m_fields->timeUnit().text(), kTimeUnitBytes).constData());
    if (m_edits.sampleTime)
        file.dt(static_cast<float>(m_fields->sampleTime().number()));
    if (m_edits.startDate)
        file.startSeconds(m_fields->startSeconds());
    if (m_edits.startTime)
        file.setStart(file.startSeconds(), static_cast<float>(m_fields->startTime().number()));
}

// Writes what the user changed and nothing else, so that texts that could not be decoded keep their bytes.
bool EditHeaderWin::writeFields()
{
    if (!m_edits.any())
        return true;
    if (!mayWrite(this, QStringLiteral("Veltrac"), m_fileName))
        return false;
    try {
        changeHeader(m_fileName.toLocal8Bit().toStdString(), [this](TSFILE& file) { setFields(file); });
    } catch (...) {
        showWarningBox(QStringLiteral("Veltrac error"),
                       QStringLiteral("The header of %1 could not be written.").arg(m_shownName));
        return false;
    }
    emit x_directory_changed();
    return true;
}

void EditHeaderWin::sl_subwindowGone(subWindow /*window*/)
{
    m_table->clearContents();
}

void EditHeaderWin::showInStatusBar(const QString& text)
{
    statusBar()->showMessage(text);
}

void EditHeaderWin::showWarningBox(const QString& title, const QString& text)
{
    // A column without a name is told while the window is being built: there the box stands over the other
    // window.
    QWidget* const parent = isVisible() ? this : QApplication::activeWindow();
    showBox(QMessageBox::Warning, parent, title, text);
}
