#include "portal/CreateTsWin_Veltrac.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTableWidget>

#include <memory>
#include <set>

#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/HeaderText.h"
#include "share/NumberField.h"
#include "share/QtMessageWin.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

constexpr double kMostSamples = 4294967295.0;
// So many rows the table of columns still shows at once.
constexpr double kMostNewColumns = 100000.0;

constexpr int kRowMargin = 8;

enum TableColumn { kNameCell, kDescriptionCell };

// The file that a typed name makes, as the directory will show it.
QString madeFile(const QString& name)
{
    return QFile::decodeName(newTsFileName(QFile::encodeName(name).toStdString()).c_str());
}

// CreateTs() tells only that it has failed.
QString whyNotMade(const QString& name)
{
    const QFileInfo file(name);
    if (file.exists())
        return QStringLiteral("%1 was not made: the old file is still there, unchanged.").arg(name);
    if (!QFileInfo(file.absolutePath()).isWritable())
        return QStringLiteral("%1 was not made: its directory takes no new files.").arg(name);
    return QStringLiteral("%1 was not made. Is the disk full?").arg(name);
}

QString sizeReason(double samples, double columns)
{
    const std::uint64_t bytes =
        tsFileBytes(static_cast<std::uint32_t>(samples), static_cast<std::uint32_t>(columns));
    if (bytes < kFileLimit)
        return QString();
    return QStringLiteral("The file would have %1; a ts-file holds less than 2 GiB.")
        .arg(QLocale::c().formattedDataSize(static_cast<qint64>(bytes)));
}

}  // namespace

// -- Basics --

Basic_Tab::Basic_Tab(QWidget* parent)
    : QWidget(parent),
      m_name(new QLineEdit(QStringLiteral("Myfile"), this)),
      m_samples(new NumberField(QStringLiteral("%1").arg(100), this)),
      m_columns(new NumberField(QStringLiteral("%1").arg(2), this)),
      m_description(new QLineEdit(QStringLiteral("File descr"), this)),
      m_timeUnit(new QLineEdit(QStringLiteral("Time[s]"), this)),
      m_sampleTime(new NumberField(QStringLiteral("%1").arg(1.0), this))
{
    struct Row
    {
        const char* label;
        QLineEdit* field;
        const char* help;
    };
    const Row rows[] = {
        {"Filename:  ", m_name, "The new file's name without .ts; digits alone give a numbered file."},
        {"No of samples:  ", m_samples, "The number of lines. All their values are 0 at first."},
        {"No of columns:  ", m_columns, "The number of values in each line."},
        {"File description:  ", m_description, "What the series is about, at most 59 characters."},
        {"Time unit:  ", m_timeUnit, "What the sample time is counted in, at most 39 characters."},
        {"Sample time:  ", m_sampleTime, "The time from one sample to the next, above 0."},
    };
    auto* const form = new QFormLayout(this);
    for (const Row& row : rows) {
        const QString label = QString::fromLatin1(row.label);
        form->addRow(label, row.field);
        row.field->setAccessibleName(label.trimmed());
        row.field->setToolTip(QString::fromLatin1(row.help));
        row.field->setWhatsThis(QString::fromLatin1(row.help));
        connect(row.field, &QLineEdit::textChanged, this, &Basic_Tab::x_changed);
        connect(row.field, &QLineEdit::returnPressed, this, &Basic_Tab::x_entered);
    }
    m_description->setMaxLength(kFileDescriptionBytes);
    m_timeUnit->setMaxLength(kTimeUnitBytes);
    addChecks();
    connect(m_name, &QLineEdit::textChanged, this, [this] { markField(*m_name, nameReason().isEmpty()); });
    connect(m_columns, SIGNAL(textChanged(const QString&)), this, SLOT(sl_columnsChanged(const QString&)));
    m_name->selectAll();
    setFocusProxy(m_name);
}

void Basic_Tab::addChecks()
{
    m_samples->setWhole(0, kMostSamples);
    m_columns->setWhole(1, kMostNewColumns);
    m_sampleTime->setCheck([](double seconds) {
        return isSampleTime(seconds) ? QString() : QStringLiteral("The sample time must be above 0.");
    });
}

QString Basic_Tab::nameReason() const
{
    if (m_name->text().trimmed().isEmpty() || fileName().isEmpty())
        return QStringLiteral("A file name is missing.");
    if (!QFileInfo(madeFile(fileName())).absoluteDir().exists())
        return QStringLiteral("There is no such directory.");
    if (!keepsItsName(literalTsName(QFile::encodeName(madeFile(fileName())).toStdString())))
        return QStringLiteral("This name is too long.");
    return QString();
}

QString Basic_Tab::reason() const
{
    const std::pair<const char*, QString> rows[] = {
        {"Filename", nameReason()},
        {"No of samples", m_samples->reason()},
        {"No of columns", m_columns->reason()},
        {"Sample time", m_sampleTime->reason()},
    };
    for (const auto& [field, text] : rows) {
        if (!text.isEmpty())
            return QString::fromLatin1(field) + QStringLiteral(": ") + text;
    }
    return sizeReason(m_samples->number(), m_columns->number());
}

QString Basic_Tab::outcome() const
{
    const QString file = madeFile(fileName());
    const QString size =
        QLocale::c().formattedDataSize(static_cast<qint64>(tsFileBytes(samples(), columns())));
    return QFileInfo::exists(file) ? QStringLiteral("%1 will have %2. It exists already.").arg(file, size)
                                   : QStringLiteral("%1 will have %2.").arg(file, size);
}

void Basic_Tab::sl_columnsChanged(const QString& /*text*/)
{
    if (m_columns->isValid())
        emit x_columns_changed(static_cast<int>(m_columns->number()));
}

QString Basic_Tab::fileName() const
{
    const QString name = m_name->text();
    return name.endsWith(QLatin1String(".ts")) ? name.chopped(3) : name;
}

std::uint32_t Basic_Tab::samples() const
{
    return static_cast<std::uint32_t>(m_samples->number());
}

std::uint32_t Basic_Tab::columns() const
{
    return static_cast<std::uint32_t>(m_columns->number());
}

float Basic_Tab::sampleTime() const
{
    return static_cast<float>(m_sampleTime->number());
}

QString Basic_Tab::timeUnit() const
{
    return m_timeUnit->text();
}

QString Basic_Tab::description() const
{
    return m_description->text();
}

// -- Columns --

Column_Tab::Column_Tab(int columns, QWidget* parent)
    : QWidget(parent), m_table(new QTableWidget(0, 2, this)), m_doubt(new QLabel(this))
{
    m_table->setHorizontalHeaderLabels({QStringLiteral("Column name"), QStringLiteral("Column description")});
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowMargin);
    m_table->setTabKeyNavigation(false);  // Tab leaves the table; out of an open cell it goes to the next one
    m_table->setAccessibleName(QStringLiteral("Names and descriptions of the columns"));
    m_table->setWhatsThis(QStringLiteral("A name has at most 11 characters, a description 45."));
    m_doubt->setWordWrap(true);
    m_doubt->setTextFormat(Qt::PlainText);
    m_doubt->hide();
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    layout->addWidget(m_doubt);
    connect(m_table, &QTableWidget::cellChanged, this, &Column_Tab::cutToWidth);
    setColumns(columns);
}

void Column_Tab::setColumns(int columns)
{
    const QSignalBlocker quiet(m_table);
    const int old = m_table->rowCount();
    m_table->setRowCount(columns);
    for (int row = old; row < columns; ++row) {
        m_table->setItem(row, kNameCell, new QTableWidgetItem(QStringLiteral("Col-%1").arg(row + 1)));
        m_table->setItem(row, kDescriptionCell,
                         new QTableWidgetItem(QStringLiteral("Col %1 description").arg(row + 1)));
    }
    showDoubtfulNames();
}

QString Column_Tab::name(int column) const
{
    return m_table->item(column - 1, kNameCell)->text();
}

QString Column_Tab::description(int column) const
{
    return m_table->item(column - 1, kDescriptionCell)->text();
}

void Column_Tab::cutToWidth(int row, int column)
{
    QTableWidgetItem* const cell = m_table->item(row, column);
    const int width = column == kNameCell ? kColumnNameBytes : kColumnDescriptionBytes;
    const QString cut = QString::fromUtf8(headerBytes(cell->text(), width));
    if (cut != cell->text()) {
        const QSignalBlocker quiet(m_table);
        cell->setText(cut);
    }
    showDoubtfulNames();
}

void Column_Tab::showDoubtfulNames()
{
    // Columns are looked up by their names: only the first of two is found. That is no reason to refuse.
    std::set<QString> names;
    QString doubt;
    for (int column = 1; column <= m_table->rowCount() && doubt.isEmpty(); ++column) {
        if (name(column).trimmed().isEmpty())
            doubt = QStringLiteral("Column %1 has no name.").arg(column);
        else if (!names.insert(name(column)).second)
            doubt = QStringLiteral("Two columns are named %1.").arg(name(column));
    }
    m_doubt->setText(doubt);
    m_doubt->setVisible(!doubt.isEmpty());
}

// -- The window --

CreateTsWin::CreateTsWin(QWidget* parent) : SubWindow(parent), m_line(new QLabel(this))
{
    setWindowTitle(QStringLiteral("Create a ts-file"));
    setWindowIcon(QIcon(QStringLiteral(":/img_SaveTs")));
    setWhatsThis(whatsThisText(
        QStringLiteral("SaveTs"),
        QStringLiteral("Makes a new ts-file in the working directory. All its values are 0 until a "
                       "sub-program, such as Ts-Edit or the list window, fills them.")));
    auto* const central = new QWidget(this);
    auto* const tabs = new QTabWidget(central);
    m_basics = new Basic_Tab(tabs);
    m_columns = new Column_Tab(static_cast<int>(m_basics->columns()), tabs);
    tabs->setAccessibleName(QStringLiteral("The new file"));
    tabs->addTab(m_basics, QStringLiteral("Basics"));
    tabs->addTab(m_columns, QStringLiteral("Columns"));
    m_line->setWordWrap(true);
    m_line->setTextFormat(Qt::PlainText);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, central);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    m_ok->setIcon(QIcon(QStringLiteral(":/img_Ok")));
    buttons->button(QDialogButtonBox::Cancel)->setIcon(QIcon(QStringLiteral(":/img_Cancel")));
    connect(buttons, SIGNAL(accepted()), this, SLOT(sl_accept()));
    connect(buttons, SIGNAL(rejected()), this, SLOT(sl_reject()));

    auto* const layout = new QVBoxLayout(central);
    layout->addWidget(tabs, 1);
    layout->addWidget(m_line);
    layout->addWidget(buttons);
    setCentralWidget(central);

    connect(m_basics, &Basic_Tab::x_changed, this, &CreateTsWin::updateState);
    connect(m_basics, &Basic_Tab::x_columns_changed, m_columns, &Column_Tab::setColumns);
    connect(m_basics, &Basic_Tab::x_entered, m_ok, &QPushButton::click);
    // Also a dialog that nobody opened through the main window has its file listed.
    if (auto* const portal = dynamic_cast<QMainWindow*>(TsApplication::instance()))
        connect(this, SIGNAL(x_file_made(const QString&)), portal, SLOT(sl_fileMade(const QString&)));
    m_basics->setFocus();
    addHelpKey(this, QStringLiteral("create"), QStringLiteral("Creating a ts-file"));
    updateState();
    resize(fontMetrics().averageCharWidth() * 64, fontMetrics().height() * 24);
}

void CreateTsWin::updateState()
{
    const QString reason = m_basics->reason();
    m_line->setText(reason.isEmpty() ? m_basics->outcome() : reason);
    m_ok->setEnabled(reason.isEmpty());
}

void CreateTsWin::fillIn(TSFILE& file) const
{
    file.dt(m_basics->sampleTime());
    file.description(headerBytes(m_basics->description(), kFileDescriptionBytes).constData());
    file.timeUnit(headerBytes(m_basics->timeUnit(), kTimeUnitBytes).constData());
    for (int column = 1; column <= static_cast<int>(m_basics->columns()); ++column) {
        const auto col = static_cast<std::uint32_t>(column);
        file.columnName(col, headerBytes(m_columns->name(column), kColumnNameBytes).constData());
        file.columnDescription(
            col, headerBytes(m_columns->description(column), kColumnDescriptionBytes).constData());
        file.stampColumn(col);
    }
}

void CreateTsWin::sl_accept()
{
    TsApplication* const application = TsApplication::instance();
    if (application == nullptr || !m_basics->reason().isEmpty())
        return;
    // A key may press OK while a cell is open still.
    if (m_columns->isAncestorOf(QApplication::focusWidget()))
        m_ok->setFocus();
    const std::unique_ptr<TSFILE> file(application->CreateTs(m_basics->fileName(), m_basics->samples(),
                                                             m_basics->columns(),
                                                             [this](TSFILE& made) { fillIn(made); }));
    const QString name = madeFile(m_basics->fileName());
    if (!file) {
        m_line->setText(whyNotMade(name));
        return;
    }
    emit x_file_made(name);
    close();
}

void CreateTsWin::sl_reject()
{
    close();
}

void CreateTsWin::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        sl_reject();
    else
        SubWindow::keyPressEvent(event);
}
