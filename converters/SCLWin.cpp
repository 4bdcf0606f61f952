#include "converters/SCLWin.h"

#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSpinBox>
#include <QTableWidget>

#include <array>

#include "converters/ImportFields.h"
#include "converters/ImportReport.h"
#include "converters/ImportTexts.h"
#include "converters/ValuePlot.h"
#include "core/TsNames.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/HeaderText.h"
#include "share/NumberField.h"

using namespace veltrac;

namespace {

enum Column { kFile, kName, kUnit, kDescription };

const QString kFilter =
    QStringLiteral("Text files (*.scl *.txt *.dat *.csv *.log *.asc);;SCL files (*.scl);;All files (*)");
constexpr std::size_t kShownLines = 200;
constexpr std::size_t kShownBytes = 400;
constexpr std::size_t kPlottedValues = 5000;
constexpr int kStepDigits = 10;

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

}  // namespace

// -- Files --

void SCLWin::sl_add()
{
    const QStringList files = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Read text files of one value a line and convert to a ts-file."), QString(),
        kFilter);
    for (const QString& file : files)
        add(file);
    if (m_logs.sources.empty() && files.isEmpty())
        close();
}

void SCLWin::add(const QString& file)
{
    const bool first = m_logs.sources.empty();
    const double step = m_logs.step;
    const Micros start = m_logs.start;
    try {
        m_logs.add(pathOf(file));
    } catch (const std::exception&) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"),
                QFileInfo(file).fileName() + QStringLiteral(": ") + importFailure());
        return;
    }
    if (first || start != m_logs.start)
        showStart();
    if (first) {
        const QScopedValueRollback<bool> filling(m_filling, true);
        m_target->setText(QFileInfo(file).completeBaseName() + QStringLiteral(".ts"));
        m_description->setText(text(m_logs.description));
    }
    if (first || step != m_logs.step)
        showStep();
    showFiles();
    m_files->selectRow(m_files->rowCount() - 1);
    sl_changed();
    m_import->setFocus();
}

void SCLWin::sl_remove()
{
    const int row = m_files->currentRow();
    if (row < 0)
        return;
    m_logs.remove(static_cast<std::size_t>(row));
    showStart();
    showFiles();
    m_files->selectRow(std::min(row, m_files->rowCount() - 1));
    sl_changed();
}

void SCLWin::sl_up()
{
    move(-1);
}

void SCLWin::sl_down()
{
    move(1);
}

void SCLWin::move(int by)
{
    const int row = m_files->currentRow();
    const int to = row + by;
    if (row < 0 || to < 0 || to >= m_files->rowCount())
        return;
    std::swap(m_logs.sources[static_cast<std::size_t>(row)], m_logs.sources[static_cast<std::size_t>(to)]);
    showFiles();
    m_files->selectRow(to);
    sl_changed();
}

void SCLWin::showFiles()
{
    {
        const QScopedValueRollback<bool> filling(m_filling, true);
        m_files->setRowCount(static_cast<int>(m_logs.sources.size()));
        for (int row = 0; row < m_files->rowCount(); ++row) {
            const SCLSource& source = m_logs.sources[static_cast<std::size_t>(row)];
            const std::array<QString, 4> texts = {shown(source.file.filename().string()), text(source.name),
                                                  text(source.unit), text(source.description)};
            for (int c = 0; c < 4; ++c)
                m_files->setItem(row, c, new QTableWidgetItem(texts[static_cast<std::size_t>(c)]));
            m_files->item(row, kFile)->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
            m_files->item(row, kFile)->setToolTip(shown(source.file.string()));
        }
        // The last one fills the rest.
        for (int column = kFile; column < kDescription; ++column)
            m_files->resizeColumnToContents(column);
    }
    enableButtons();
}

void SCLWin::sl_show_file()
{
    enableButtons();
    const int row = m_files->currentRow();
    QString lines;
    std::vector<float> values;
    if (row >= 0 && row < static_cast<int>(m_logs.sources.size())) {
        const SCLSource& source = m_logs.sources[static_cast<std::size_t>(row)];
        try {
            LineReader reader(source.file, kShownBytes);
            for (std::size_t i = 0; i < kShownLines && reader.next(); ++i)
                lines += headerText(std::string(reader.text()).c_str()) + QLatin1Char('\n');
            SCLReader read(source, m_logs.skipLines);
            while (values.size() < kPlottedValues && read.next())
                values.push_back(read.value());
        } catch (const std::exception&) {
            lines = importFailure();
        }
    }
    m_lines->setPlainText(lines);
    m_plotCaption->setText(values.size() < kPlottedValues
                               ? QString()
                               : QStringLiteral("The first %1 values").arg(groupedNumber(kPlottedValues)));
    m_plot->show(std::move(values));
}

// -- Fields --

void SCLWin::sl_step_changed()
{
    if (m_filling)
        return;
    if (m_step->isValid()) {
        const QScopedValueRollback<bool> filling(m_filling, true);
        m_frequency->setText(QString::number(1.0 / m_step->number(), 'g', kStepDigits));
    }
    sl_changed();
}

void SCLWin::sl_frequency_changed()
{
    if (m_filling)
        return;
    if (m_frequency->isValid()) {
        const QScopedValueRollback<bool> filling(m_filling, true);
        m_step->setText(QString::number(1.0 / m_frequency->number(), 'g', kStepDigits));
    }
    sl_changed();
}

void SCLWin::sl_skip_changed()
{
    if (m_filling)
        return;
    m_logs.skipLines = static_cast<std::uint64_t>(m_skip->value());
    m_problem.clear();
    try {
        m_logs.detectAgain();
    } catch (const std::exception&) {
        m_problem = importFailure();
    }
    showStep();
    sl_show_file();
    if (m_problem.isEmpty())
        sl_changed();
    else
        showFindings();
}

void SCLWin::sl_changed()
{
    if (m_filling)
        return;
    readFields();
    m_checked = false;
    m_problem.clear();
    if (fieldsAreGood())
        checkQuietly();
    showFindings();
    if (!m_checked && m_problem.isEmpty() && hasFiles() && !m_logs.isRead())
        checkLater();
}

bool SCLWin::fieldsAreGood() const
{
    return !m_logs.sources.empty() && reasonAgainstStart(m_start->text()).isEmpty() &&
           reasonAgainstTarget(m_target->text()).isEmpty() && m_step->isValid() && m_frequency->isValid();
}

void SCLWin::showStart()
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    const QString format = m_logs.start % kMicrosPerSecond == 0 ? QStringLiteral("yyyy-MM-dd hh:mm:ss")
                                                                : QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz");
    m_start->setText(m_logs.start == 0
                         ? QString()
                         : QDateTime::fromMSecsSinceEpoch(m_logs.start / 1000, Qt::UTC).toString(format));
}

void SCLWin::showStep()
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    m_step->setText(QString::number(m_logs.step, 'g', kStepDigits));
    m_frequency->setText(QString::number(1.0 / m_logs.step, 'g', kStepDigits));
}

void SCLWin::readFields()
{
    const auto start = readStamp(m_start->text().trimmed().toStdString());
    const auto wall = start ? localWallClock(*start, DateOrder::DayMonth) : std::nullopt;
    if (wall || m_start->text().trimmed().isEmpty())
        m_logs.start = wall.value_or(0);
    if (m_frequency->isValid() && m_step->isValid())
        // 360 Hz is exact where 0.00277777778 s is not.
        m_logs.step = m_frequency->number() >= 1.0 ? 1.0 / m_frequency->number() : m_step->number();
    m_logs.fill = static_cast<STLFill>(m_fill->currentData().toInt());
    m_logs.description = m_description->text().toStdString();
    for (int row = 0; row < m_files->rowCount(); ++row) {
        SCLSource& source = m_logs.sources[static_cast<std::size_t>(row)];
        source.name = m_files->item(row, kName)->text().toStdString();
        source.unit = m_files->item(row, kUnit)->text().toStdString();
        source.description = m_files->item(row, kDescription)->text().toStdString();
    }
}

void SCLWin::enableButtons()
{
    const int row = m_files->currentRow();
    const int rows = m_files->rowCount();
    m_remove->setEnabled(row >= 0);
    m_up->setEnabled(row > 0);
    m_down->setEnabled(row >= 0 && row + 1 < rows);
    showReason(m_start, m_startReason, reasonAgainstStart(m_start->text()));
    showReason(m_target, m_targetReason, rows == 0 ? QString() : reasonAgainstTarget(m_target->text()));
    const bool good = fieldsAreGood() && m_problem.isEmpty();
    // Else the focus would go on to Cancel, and Enter close the window.
    if (!good && m_import->hasFocus())
        m_files->setFocus();
    m_check->setEnabled(fieldsAreGood());
    m_import->setEnabled(good);
}

// -- Check and import --

void SCLWin::showFindings()
{
    enableButtons();
    m_finding->setText(!m_problem.isEmpty()                               ? QString()
                       : m_checked                                        ? summary()
                       : !m_logs.sources.empty() && !m_check->isEnabled() ? kMarkedField
                       : m_logs.sources.empty()
                           ? QStringLiteral("\"Add...\" chooses the files.")
                           : QStringLiteral("Only the beginning of the files has been read. "
                                            "\"Check only\" reads all of it, and so does "
                                            "\"Import\"."));
    showText(m_warning, m_problem);
}

QString SCLWin::summary() const
{
    const STLCheck made = m_logs.result();
    QString line = QStringLiteral("%1, %2.").arg(counted(made.samples, "row", "rows"),
                                                 counted(m_logs.sources.size(), "column", "columns"));
    if (m_logs.found().missing != 0)
        line += QLatin1Char(' ') + counted(m_logs.found().missing, "value", "values") +
                QStringLiteral(" missing.");
    line += QStringLiteral("\nA sample time of %1, %2 in all, %3.")
                .arg(durationText(m_logs.step), durationText(m_logs.step * made.samples),
                     sizeText(tsFileBytes(made.samples, made.columns)));
    for (const std::string& notice : m_logs.notices())
        line += QLatin1Char(' ') + text(notice);
    return line;
}

// -- What the importers differ in --

std::uint64_t SCLWin::fileBytes() const
{
    std::uint64_t bytes = 0;
    for (const SCLSource& source : m_logs.sources) {
        std::error_code unknown;
        const std::uintmax_t size = std::filesystem::file_size(source.file, unknown);
        bytes += unknown ? 0 : size;
    }
    return bytes;
}

QString SCLWin::readingText() const
{
    return QStringLiteral("Reading the files …");
}

JobOutcome SCLWin::check(const Progress& progress)
{
    return m_logs.check(progress);
}

QString SCLWin::doubt() const
{
    const SCLCheck& found = m_logs.found();
    std::uint64_t values = 0;
    for (const std::uint64_t count : found.values)
        values += count;
    if (found.troubleCount * 2 <= values)
        return QString();
    return QStringLiteral("More than half of the values have troubles: %1 of %2.\nImport all the same?")
        .arg(groupedNumber(found.troubleCount), groupedNumber(values));
}

JobOutcome SCLWin::makeFile(const std::filesystem::path& target, const Progress& progress)
{
    return importSCL(m_logs, target, progress);
}

ImportWindow::Report SCLWin::report() const
{
    QVector<ImportTrouble> troubles;
    for (const SCLTrouble& trouble : m_logs.found().troubles)
        troubles.append({QStringLiteral("%1, line %2")
                             .arg(shown(m_logs.sources[trouble.source].file.filename().string()))
                             .arg(trouble.line),
                         QString::number(trouble.source + 1), QStringLiteral("no number: missing"),
                         text(trouble.text)});
    return {summary(), troubles, m_logs.found().troubleCount};
}
