#include "converters/STLWin.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QPushButton>
#include <QSplitter>
#include <QTabWidget>

#include <system_error>

#include "converters/ImportFields.h"
#include "converters/ImportTexts.h"
#include "converters/LengthTexts.h"
#include "converters/STLColumnTable.h"
#include "converters/STLLines.h"
#include "converters/STLPreview.h"
#include "converters/STLReport.h"
#include "converters/STLResultFields.h"
#include "converters/STLTextFields.h"
#include "converters/STLTimeFields.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "share/JobProgress.h"
#include "share/Resources.h"

using namespace veltrac;

namespace {

const QString kLogFilter = QStringLiteral(
    "Text files (*.stl *.csv *.txt *.dat *.log *.asc *.tsv *.prn *.gz);;STL files (*.stl);;All files (*)");
constexpr QSize kLogWindowSize(1180, 760);

QString qText(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

}  // namespace

// -- Building --

STLWin::STLWin(const QString& file, QWidget* parent)
    : SubWindow(parent),
      m_lines(new STLLines(this)),
      m_preview(new STLPreview(*m_lines)),
      m_columns(new STLColumnTable),
      m_text(new STLTextFields),
      m_time(new STLTimeFields),
      m_result(new STLResultFields)
{
    loadResources();
    setWindowIcon(QIcon(QStringLiteral(":img_ReadASCII_1")));
    setWindowTitle(QStringLiteral("Import of a smart tool log"));
    QPushButton* const other = importButton("&Open...", "Choose another file.");
    connect(other, &QPushButton::clicked, this, &STLWin::sl_open);
    m_panel = new ImportPanel(
        *this, *this, buildFields(),
        {"The format of smart tool logs.", "Read the whole file and tell what is not understood."}, other);
    setCentralWidget(m_panel);
    resize(kLogWindowSize);

    connect(m_text, &STLTextFields::x_reading_changed, this, &STLWin::sl_reading_changed);
    connect(m_text, &STLTextFields::x_other_reading, this, &STLWin::sl_other_reading);
    connect(m_text, &STLTextFields::x_lines_changed, this, &STLWin::sl_lines_changed);
    connect(m_text, &STLTextFields::x_signs_changed, this, &STLWin::sl_changed);
    connect(m_time, &STLTimeFields::x_changed, this, &STLWin::sl_changed);
    connect(m_result, &STLResultFields::x_changed, this, &STLWin::sl_changed);
    connect(m_columns, &STLColumnTable::x_changed, this, &STLWin::sl_changed);
    enableFields();
    m_panel->focusImport();
    if (!file.isEmpty())
        open(file);
}

STLWin::~STLWin() = default;

QWidget* STLWin::buildFields()
{
    auto* const tabs = new QTabWidget;
    tabs->addTab(m_text, QStringLiteral("Te&xt"));
    tabs->addTab(m_time, QStringLiteral("&Time"));
    tabs->addTab(m_result, QStringLiteral("&Result"));
    auto* const right = new QSplitter(Qt::Vertical);
    right->addWidget(m_preview);
    right->addWidget(m_columns);
    right->setStretchFactor(0, 3);
    right->setStretchFactor(1, 2);
    auto* const across = new QSplitter(Qt::Horizontal);
    across->addWidget(tabs);
    across->addWidget(right);
    across->setStretchFactor(1, 1);
    across->setSizes({390, 790});
    return across;
}

// -- Opening --

void STLWin::sl_open()
{
    const QString file = QFileDialog::getOpenFileName(
        this, QStringLiteral("Read a text file of measurements and convert to a ts-file."), QString(),
        kLogFilter);
    if (!file.isEmpty())
        open(file);
    else if (!m_log)
        close();
}

void STLWin::open(const QString& file)
{
    const QFileInfo info(file);
    m_log = std::make_unique<STLObject>(pathOf(file));
    setWindowTitle(QStringLiteral("Import of %1").arg(info.fileName()));
    m_text->showFile(info.fileName() + QStringLiteral(", ") +
                     qText(sizeText(static_cast<std::uint64_t>(info.size()))));
    m_result->showTarget(info.completeBaseName() + QStringLiteral(".ts"));
    m_panel->watch({info.absoluteFilePath()});
    m_panel->attempt([&] {
        JobProgress progress(this, QStringLiteral("Unpacking %1 …").arg(info.fileName()));
        if (m_log->unpack(progress.callback()) == JobOutcome::Cancelled)
            throw STLError("The file was not unpacked.");
        m_lines->load(m_log->text().path());
        m_log->detect();
    });
    showFormat();
    m_panel->focusImport();
}

bool STLWin::hasColumns() const
{
    return m_log && !m_log->format().columns.empty();
}

void STLWin::showFormat()
{
    m_text->show(m_log->format());
    m_time->show(m_log->format());
    m_result->show(m_log->format());
    m_panel->checkQuietly();
    showFindings();
    if (!m_panel->isChecked())
        m_panel->checkLater();
}

// -- Findings --

void STLWin::showFindings()
{
    const STLFormat& format = m_log->format();
    const STLCheck& found = m_log->found();
    const bool checked = m_panel->isChecked();
    const QString order = checked ? qText(orderDoubt(format, found)) : QString();
    m_time->showOrder(format.order, order);
    m_lines->explain(hasColumns() ? &format : nullptr);
    m_preview->widen();
    m_columns->show(*m_log, *m_lines);
    enableFields();
    const bool dated = checked && format.timeSource != STLTimeSource::Typed && found.firstWall != 0;
    m_time->showFinding(
        (checked ? qText(stepText(format, found)) : QString()) +
        (dated ? QStringLiteral("\nFirst row: ") + qText(wallInWords(found.firstWall)) : QString()));
    m_result->showSize(checked ? qText(sizeText(tsFileBytes(found.target.samples, found.target.columns)))
                               : QString());

    QString line;
    if (checked)
        line = foundText();
    else if (m_panel->problem().isEmpty())
        line = fieldsAreGood() ? QStringLiteral(
                                     "Only the beginning of the file has been read. \"Check only\" "
                                     "reads all of it, and so does \"Import\".")
                               : kMarkedField;
    QStringList doubts(order);
    doubts << qText(namesDoubt(format));
    doubts.removeAll(QString());
    m_panel->showFinding(line, doubts.join(QLatin1Char('\n')));
}

void STLWin::enableFields()
{
    m_time->enable(hasColumns());
    m_panel->offerImport(fieldsAreGood(), m_preview);
}

bool STLWin::fieldsAreGood()
{
    // Each says what is wrong with it.
    const bool time = m_time->validate();
    const bool result = m_result->validate();
    return time && result && hasColumns();
}

// -- Changes --

void STLWin::sl_changed()
{
    if (!hasColumns())
        return;
    m_panel->attempt([this] {
        m_text->readSigns(m_log->format());
        m_time->read(m_log->format());
        m_result->read(m_log->format());
        m_columns->read(*m_log);
    });
    if (fieldsAreGood())
        m_panel->checkQuietly();
    showFindings();
}

void STLWin::sl_lines_changed()
{
    if (!hasColumns())
        return;
    m_text->readLines(m_log->format());
    m_panel->attempt([this] { takeNames(m_log->text(), m_log->format()); });
    showFormat();
}

void STLWin::sl_reading_changed(char separator, char decimal)
{
    if (!m_log)
        return;
    const bool found = m_panel->attempt([&] { m_log->detect(separator, decimal); });
    if (!found) {
        m_log->format().columns.clear();
        m_log->format().cells.separator = separator;
        m_log->format().cells.decimal = decimal;
    }
    showFormat();
}

void STLWin::sl_other_reading()
{
    sl_reading_changed(m_log->format().otherSeparator, m_log->format().otherDecimal);
}

void STLWin::sl_import()
{
    m_panel->sl_import();
}

void STLWin::sl_check()
{
    m_panel->sl_check();
}

// -- What the importers differ in --

std::uint64_t STLWin::fileBytes() const
{
    std::error_code unknown;
    const std::uintmax_t bytes = std::filesystem::file_size(m_log->file(), unknown);
    return unknown ? UINT64_MAX : bytes;
}

QString STLWin::readingText() const
{
    return QStringLiteral("Reading %1 …").arg(shown(m_log->file().filename().string()));
}

JobOutcome STLWin::check(const Progress& progress)
{
    return m_log->check(progress);
}

QString STLWin::doubt() const
{
    return qText(importDoubt(m_log->format(), m_log->found()));
}

QString STLWin::targetName() const
{
    return m_result->target();
}

JobOutcome STLWin::makeFile(const std::filesystem::path& target, const Progress& progress)
{
    return importSTL(*m_log, target, progress);
}

Importer::Report STLWin::report() const
{
    const STLCheck& found = m_log->found();
    QVector<ImportTrouble> troubles;
    for (const STLTrouble& trouble : found.troubles)
        troubles.append({QStringLiteral("Line %1").arg(trouble.line),
                         trouble.column < 0 ? QString() : QString::number(trouble.column + 1),
                         qText(problemText(trouble.problem)), qText(trouble.text)});
    QString text = foundText() + QLatin1Char('\n') + qText(evidenceText(m_log->format()));
    for (const std::string& more : {lossText(m_log->format(), found), assumptionText(m_log->format(), found)})
        if (!more.empty())
            text += QLatin1Char('\n') + qText(more);
    return {text, troubles, found.troubleCount};
}

// What stands below the fields.
QString STLWin::foundText() const
{
    const STLCheck& found = m_log->found();
    return qText(summaryText(found) + '\n' + stepText(m_log->format(), found) + ' ' + resultText(found));
}
