#include "portal/EditHeaderWin.h"

#include <QApplication>
#include <QDir>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStatusBar>
#include <QTableWidget>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ctime>
#include <memory>

#include "core/Rebuild.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "portal/TsApplication.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"
#include "share/NumberField.h"
#include "share/Resources.h"
#include "share/hydaction.h"

namespace {

enum Column { kDate, kTime, kName, kDescription, kColumnCount };

constexpr int kDefaultRowHeight = 20;
constexpr int kLeastRowHeight = 18;
constexpr int kMostRowHeight = 30;
// A header that lies may claim billions of columns; no table shows them.
constexpr unsigned kMostRows = 100000;
// Boxes about empty names before the status bar tells the rest.
constexpr int kMostNameBoxes = 3;
constexpr double kMostCount = 4294967295.0;
constexpr int kYearBase = 1900;

// The shortest text that reads back as the same float.
QString floatText(float v)
{
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, v);
    return QString::fromLatin1(text, static_cast<int>(result.ptr - text));
}

std::unique_ptr<TSFILE> openFile(const QString& name, bool readOnly)
{
    TsApplication* const application = TsApplication::instance();
    return std::unique_ptr<TSFILE>(application == nullptr ? nullptr : application->OpenTs(name, readOnly));
}

void warn(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::NoButton, parent);
    box.addButton(QStringLiteral("Ok"), QMessageBox::AcceptRole);
    box.exec();
}

}  // namespace

EditHeaderWin::EditHeaderWin(const QString& fileName, QWidget* parent)
    : SubWindow(parent),
      m_fileName(QDir().absoluteFilePath(fileName)),
      m_shownName(fileName),
      m_rowHeight(kDefaultRowHeight)
{
    loadResources();
    setWindowTitle(QStringLiteral("Edit or view; %1 header").arg(fileName));
    setWindowIcon(QIcon(QStringLiteral(":img_EditTsHeader")));
    setWhatsThis(whatsThisText(
        QStringLiteral("EditTsHeader"),
        QStringLiteral(
            "Edits the header of a ts-file: its description, time unit, sample time and start, and the "
            "names and descriptions of its columns. A new number of samples or columns rebuilds the "
            "file; every value that fits stays in its place.")));

    auto* const central = new QWidget(this);
    auto* const layout = new QVBoxLayout(central);
    layout->addWidget(createFields());
    createTable();
    layout->addWidget(m_table, 1);
    layout->addWidget(createButtons());
    setCentralWidget(central);
    connect(this, &SubWindow::windowGone, this, &EditHeaderWin::sl_subwindowGone);

    readHeader();
    sl_refresh();
    resize(760, 560);
}

QWidget* EditHeaderWin::createFields()
{
    auto* const fields = new QWidget(this);
    m_descriptionField = new QLineEdit(fields);
    m_timeUnitField = new QLineEdit(fields);
    m_sampleTimeField = new NumberField(QStringLiteral("1"), fields);
    m_startTimeField = new NumberField(QStringLiteral("0"), fields);
    m_samplesField = new NumberField(QStringLiteral("0"), fields);
    m_columnsField = new NumberField(QStringLiteral("0"), fields);
    m_reason = new QLabel(fields);
    m_reason->setWordWrap(true);

    auto* const texts = new QFormLayout;
    texts->addRow(QStringLiteral("File &description:"), m_descriptionField);
    texts->addRow(QStringLiteral("Time &unit:"), m_timeUnitField);
    auto* const times = new QFormLayout;
    times->addRow(QStringLiteral("Sample &time"), m_sampleTimeField);
    times->addRow(QStringLiteral("Sta&rt time:"), m_startTimeField);
    auto* const counts = new QFormLayout;
    counts->addRow(QStringLiteral("No of &samples:"), m_samplesField);
    counts->addRow(QStringLiteral("Colu&mns:"), m_columnsField);
    auto* const numbers = new QHBoxLayout;
    numbers->addLayout(times);
    numbers->addLayout(counts);
    auto* const all = new QVBoxLayout(fields);
    all->setContentsMargins(0, 0, 0, 0);
    all->addLayout(texts);
    all->addLayout(numbers);
    all->addWidget(m_reason);

    m_startTimeField->setCheck([](double seconds) {
        return seconds < 0 ? QStringLiteral("The start time must not be negative.") : QString();
    });
    const auto whole = [](double number) {
        return number >= 0 && number <= kMostCount && number == std::floor(number);
    };
    const QString wholeReason = QStringLiteral("This must be a whole number, 0 or more.");
    m_samplesField->setCheck(
        [=, this](double n) { return whole(n) ? sizeReason(n, m_columns) : wholeReason; });
    m_columnsField->setCheck(
        [=, this](double n) { return whole(n) ? sizeReason(m_samples, n) : wholeReason; });

    connect(m_descriptionField, &QLineEdit::textChanged, this, &EditHeaderWin::sl_fileDescrChanged);
    connect(m_timeUnitField, &QLineEdit::textChanged, this, &EditHeaderWin::sl_timeUnitChanged);
    connect(m_sampleTimeField, &QLineEdit::textChanged, this, &EditHeaderWin::sl_sampleTimeChanged);
    connect(m_startTimeField, &QLineEdit::textChanged, this, &EditHeaderWin::sl_startTimeChanged);
    connect(m_samplesField, &QLineEdit::textChanged, this, &EditHeaderWin::sl_samplesChanged);
    connect(m_columnsField, &QLineEdit::textChanged, this, &EditHeaderWin::sl_columnsChanged);
    connect(m_samplesField, &QLineEdit::editingFinished, this, &EditHeaderWin::applySamples);
    connect(m_columnsField, &QLineEdit::editingFinished, this, &EditHeaderWin::applyColumns);
    return fields;
}

void EditHeaderWin::createTable()
{
    m_table = new QTableWidget(0, kColumnCount, this);
    m_table->setHorizontalHeaderLabels({QStringLiteral("Date"), QStringLiteral("Time"),
                                        QStringLiteral("Column name"), QStringLiteral("Column description")});
    m_table->setAccessibleName(QStringLiteral("Columns of the file"));
    m_table->setShowGrid(false);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setSectionsClickable(true);
    connect(m_table->horizontalHeader(), &QHeaderView::sectionClicked, this, [this] { sl_refresh(); });
    connect(m_table, &QTableWidget::cellChanged, this, &EditHeaderWin::sl_cellChanged);
}

QWidget* EditHeaderWin::createButtons()
{
    auto* const buttons = new QWidget(this);
    auto* const rowHeight = new QSpinBox(buttons);
    rowHeight->setRange(kLeastRowHeight, kMostRowHeight);
    rowHeight->setValue(m_rowHeight);
    auto* const label = new QLabel(QStringLiteral("Row&height:"), buttons);
    label->setBuddy(rowHeight);
    m_ok = new QPushButton(QIcon(QStringLiteral(":img_Ok")), QStringLiteral("&OK"), buttons);
    auto* const cancel =
        new QPushButton(QIcon(QStringLiteral(":img_Cancel")), QStringLiteral("&Cancel"), buttons);
    cancel->setShortcut(Qt::Key_Escape);
    m_ok->setDefault(true);

    auto* const layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(rowHeight);
    layout->addStretch();
    layout->addWidget(m_ok);
    layout->addWidget(cancel);

    connect(rowHeight, qOverload<int>(&QSpinBox::valueChanged), this, &EditHeaderWin::sl_rowHeight);
    connect(m_ok, &QPushButton::clicked, this, &EditHeaderWin::sl_finished);
    connect(cancel, &QPushButton::clicked, this, &QWidget::close);
    return buttons;
}

void EditHeaderWin::readHeader()
{
    const std::unique_ptr<TSFILE> file = openFile(m_fileName, true);
    if (!file) {
        say(QStringLiteral("%1 could not be opened.").arg(m_shownName));
        m_ok->setEnabled(false);
        return;
    }
    try {
        m_samples = m_enteredSamples = file->samples();
        m_columns = m_enteredColumns = file->columns();
        m_isRing = file->ringStart() != 0;
        m_descriptionField->setText(headerText(file->description()));
        m_timeUnitField->setText(headerText(file->timeUnit()));
        m_sampleTimeField->setText(floatText(file->dt()));
        m_startTimeField->setText(floatText(file->startTime()));
        m_samplesField->setText(QString::number(m_samples));
        m_columnsField->setText(QString::number(m_columns));
    } catch (const TS::Failure&) {
        say(QStringLiteral("The header of %1 could not be read.").arg(m_shownName));
    }
    m_descriptionChanged = m_timeUnitChanged = m_sampleTimeChanged = m_startTimeChanged = false;
    updateState();
}

void EditHeaderWin::sl_fileDescrChanged(const QString& /*text*/)
{
    m_descriptionChanged = true;
}

void EditHeaderWin::sl_timeUnitChanged(const QString& /*text*/)
{
    m_timeUnitChanged = true;
}

void EditHeaderWin::sl_sampleTimeChanged(const QString& /*text*/)
{
    m_sampleTimeChanged = true;
    updateState();
}

void EditHeaderWin::sl_startTimeChanged(const QString& /*text*/)
{
    m_startTimeChanged = true;
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

QString EditHeaderWin::sizeReason(double samples, double columns) const
{
    const std::uint64_t bytes =
        tsFileBytes(static_cast<std::uint32_t>(samples), static_cast<std::uint32_t>(columns));
    // The counts that the file has are no mistake of the user's.
    if (bytes < kFileLimit || (samples == m_samples && columns == m_columns))
        return QString();
    return QStringLiteral("The file would need %1; a ts-file holds less than 2 GiB.")
        .arg(QLocale::c().formattedDataSize(static_cast<qint64>(bytes)));
}

// OK stands for all fields, and one line says what is wrong.
void EditHeaderWin::updateState()
{
    QString reason;
    for (const NumberField* const field :
         {m_sampleTimeField, m_startTimeField, m_samplesField, m_columnsField})
        if (reason.isEmpty())
            reason = field->reason();
    const bool valid = reason.isEmpty();
    if (valid) {
        const auto bytes = tsFileBytes(static_cast<std::uint32_t>(m_samplesField->number()),
                                       static_cast<std::uint32_t>(m_columnsField->number()));
        reason = QStringLiteral("The file with these counts has %1.")
                     .arg(QLocale::c().formattedDataSize(static_cast<qint64>(bytes)));
    }
    m_reason->setText(reason);
    m_ok->setEnabled(valid);
}

void EditHeaderWin::sl_rowHeight(int height)
{
    m_rowHeight = height;
    for (int row = 0; row < m_table->rowCount(); ++row)
        m_table->setRowHeight(row, height);
}

void EditHeaderWin::sl_refresh()
{
    const std::unique_ptr<TSFILE> file = openFile(m_fileName, true);
    if (!file)
        return;
    m_emptyNames = 0;
    const QSignalBlocker quiet(m_table);
    try {
        const unsigned shown = std::min(file->columns(), kMostRows);
        m_table->setRowCount(0);
        for (unsigned col = 1; col <= shown; ++col) {
            m_table->setRowCount(static_cast<int>(col));
            fillRow(*file, static_cast<int>(col) - 1);
        }
        if (shown < file->columns())
            say(QStringLiteral("Only the first %1 of %2 columns are shown.").arg(shown).arg(file->columns()));
    } catch (const TS::Failure&) {
        m_table->setRowCount(std::max(0, m_table->rowCount() - 1));
        say(QStringLiteral("%1 ends before its columns do: %2 of %3 could be read.")
                .arg(m_shownName)
                .arg(m_table->rowCount())
                .arg(file->columns()));
    }
    if (m_emptyNames > kMostNameBoxes)
        say(QStringLiteral("%1 columns have no name.").arg(m_emptyNames));
    m_table->resizeColumnsToContents();
    m_table->setShowGrid(false);
}

void EditHeaderWin::fillRow(TSFILE& file, int row)
{
    const auto column = static_cast<unsigned>(row) + 1;
    QString date = QStringLiteral("Not used");
    QString time = date;
    if (const std::time_t stamp = file.columnTime(column); stamp >= 0) {
        const std::tm local = *std::localtime(&stamp);
        const int year = local.tm_year < kYearBase ? local.tm_year + kYearBase : local.tm_year;
        date = QString::asprintf("%04i.%02i.%02i", year, local.tm_mon + 1, local.tm_mday);
        time = QString::asprintf("%02i:%02i:%02i", local.tm_hour, local.tm_min, local.tm_sec);
    }
    for (const auto& [place, text] : {std::pair(kDate, date), std::pair(kTime, time)}) {
        auto* const item = new QTableWidgetItem(text);
        item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        m_table->setItem(row, place, item);
    }
    const QString name = headerText(file.columnName(column));
    m_table->setItem(row, kName, new QTableWidgetItem(name));
    m_table->setItem(row, kDescription, new QTableWidgetItem(headerText(file.columnDescription(column))));
    m_table->setRowHeight(row, m_rowHeight);
    if (name.isEmpty())
        warnOfEmptyName(column);
}

void EditHeaderWin::warnOfEmptyName(unsigned column)
{
    if (++m_emptyNames <= kMostNameBoxes)
        warn(this, QStringLiteral("Ts Column name error"),
             QStringLiteral(
                 "Column %1 name is empty(==0).\n Column name should be unique (max 11 characters).")
                 .arg(column));
}

void EditHeaderWin::sl_cellChanged(int row, int column)
{
    if (column != kName && column != kDescription)
        return;
    if (!mayWrite()) {
        sl_refresh();
        return;
    }
    const auto number = static_cast<unsigned>(row) + 1;
    const QString text = m_table->item(row, column)->text();
    try {
        const std::unique_ptr<TSFILE> file = openFile(m_fileName, false);
        if (!file)
            throw TS::OPEN_ERROR(m_fileName.toLocal8Bit().toStdString());
        const QString stored =
            column == kName
                ? headerText(file->columnName(number, headerBytes(text, kColumnNameBytes).constData()))
                : headerText(file->columnDescription(number,
                                                     headerBytes(text, kColumnDescriptionBytes).constData()));
        const QSignalBlocker quiet(m_table);
        m_table->item(row, column)->setText(stored);
        say(stored == text.trimmed()
                ? QStringLiteral("Column %1 saved").arg(number)
                : QStringLiteral("Column %1 saved, cut to \"%2\"").arg(number).arg(stored));
        emit x_directory_changed();
    } catch (const TS::Failure&) {
        warn(this, QStringLiteral("Veltrac error"),
             QStringLiteral("%1 could not be written. Column %2 stays as it was.")
                 .arg(m_shownName)
                 .arg(number));
        sl_refresh();
    }
}

void EditHeaderWin::applySamples()
{
    if (!m_samplesField->isValid())
        return;
    const auto entered = static_cast<unsigned>(m_samplesField->number());
    if (entered == m_enteredSamples)
        return;
    // Whatever the answer: a refused reduction is not asked again.
    m_enteredSamples = entered;
    if (entered != m_samples && changeCounts(entered, m_columns))
        m_samples = entered;
    updateState();
}

void EditHeaderWin::applyColumns()
{
    if (!m_columnsField->isValid())
        return;
    const auto entered = static_cast<unsigned>(m_columnsField->number());
    if (entered == m_enteredColumns)
        return;
    m_enteredColumns = entered;
    if (entered != m_columns && changeCounts(m_samples, entered))
        m_columns = entered;
    sl_refresh();
    updateState();
}

bool EditHeaderWin::changeCounts(unsigned samples, unsigned columns)
{
    if (m_isRing) {
        warn(this, QStringLiteral("Veltrac"),
             QStringLiteral("%1 is a ring file. Its numbers of samples and columns cannot be changed.")
                 .arg(m_shownName));
        return false;
    }
    if (!mayWrite())
        return false;
    if (samples < m_samples || columns < m_columns) {
        QMessageBox box(QMessageBox::Warning, QStringLiteral("Veltrac"),
                        QStringLiteral("It is most unusual to reduce the size of a ts-file, proceed?"),
                        QMessageBox::NoButton, this);
        QPushButton* const yes = box.addButton(QStringLiteral("&Yes"), QMessageBox::YesRole);
        QPushButton* const no = box.addButton(QStringLiteral("&No"), QMessageBox::NoRole);
        box.setDefaultButton(yes);
        box.setEscapeButton(no);
        box.exec();
        if (box.clickedButton() != yes) {
            say(QStringLiteral("The file keeps its %1 samples and %2 columns.")
                    .arg(m_samples)
                    .arg(m_columns));
            return false;
        }
    }
    return rebuild(samples, columns);
}

bool EditHeaderWin::rebuild(unsigned samples, unsigned columns)
{
    const QString unchanged = QStringLiteral("\nThe old file is still there, unchanged.");
    JobProgress progress(this, QStringLiteral("Rebuilding %1").arg(m_shownName));
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QString failure;
    JobOutcome outcome = JobOutcome::Cancelled;
    try {
        outcome =
            rebuildTsFile(m_fileName.toLocal8Bit().toStdString(), samples, columns, progress.callback());
    } catch (const TS::Failure&) {
        failure = QStringLiteral("Caught a TS::OPEN_ERROR exception on:") + m_shownName + unchanged;
    } catch (const std::exception& e) {
        failure = QStringLiteral("Uspecified problem but something vent wrong in any case.\n") +
                  QString::fromLocal8Bit(e.what()) + unchanged;
    }
    QApplication::restoreOverrideCursor();

    if (outcome == JobOutcome::Done) {
        say(QStringLiteral("%1 has %2 samples and %3 columns now.")
                .arg(m_shownName)
                .arg(samples)
                .arg(columns));
        emit x_directory_changed();
        return true;
    }
    if (!failure.isEmpty())
        warn(this, QStringLiteral("Veltrac error"), failure);
    else
        say(QStringLiteral("Cancelled: the file is unchanged."));
    m_enteredSamples = m_samples;
    m_enteredColumns = m_columns;
    m_samplesField->setText(QString::number(m_samples));
    m_columnsField->setText(QString::number(m_columns));
    return false;
}

bool EditHeaderWin::mayWrite()
{
    const TsApplication* const application = TsApplication::instance();
    if (application == nullptr || !application->isOpenForWriting(m_fileName))
        return true;
    warn(this, QStringLiteral("Veltrac"),
         QStringLiteral("%1 is open for writing in another window.\nClose that window first.")
             .arg(m_shownName));
    return false;
}

void EditHeaderWin::sl_finished()
{
    if (!(m_sampleTimeField->number() > 0)) {
        warn(this, QStringLiteral("Ts sample time error"),
             QStringLiteral("A sample time of 0 is illegal.\n Modify the field and select OK."));
        m_sampleTimeField->setFocus();
        return;
    }
    // Enter presses OK without leaving the field first.
    applySamples();
    applyColumns();
    if (writeFields())
        close();
}

// Writes what the user changed and nothing else, so that texts that could not be decoded keep their bytes.
bool EditHeaderWin::writeFields()
{
    if (!m_descriptionChanged && !m_timeUnitChanged && !m_sampleTimeChanged && !m_startTimeChanged)
        return true;
    if (!mayWrite())
        return false;
    try {
        const std::unique_ptr<TSFILE> file = openFile(m_fileName, false);
        if (!file)
            throw TS::OPEN_ERROR(m_fileName.toLocal8Bit().toStdString());
        if (m_descriptionChanged)
            file->description(headerBytes(m_descriptionField->text(), kFileDescriptionBytes).constData());
        if (m_timeUnitChanged)
            file->timeUnit(headerBytes(m_timeUnitField->text(), kTimeUnitBytes).constData());
        if (m_sampleTimeChanged)
            file->dt(static_cast<float>(m_sampleTimeField->number()));
        if (m_startTimeChanged)
            file->startTime(static_cast<float>(m_startTimeField->number()));
        file->flush(true);
    } catch (const TS::Failure&) {
        warn(this, QStringLiteral("Veltrac error"),
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

void EditHeaderWin::say(const QString& text)
{
    statusBar()->showMessage(text);
}
