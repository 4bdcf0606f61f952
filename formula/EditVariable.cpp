#include "formula/EditVariable.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QTableWidget>

#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "share/NumberField.h"
#include "share/SourceChooser.h"

using namespace veltrac;

namespace {

enum Field { kFile, kColumn, kStart, kEnd, kSampleTime };

QString timeText(double seconds)
{
    return QString::asprintf("%g", seconds);
}

}  // namespace

EditVariable::EditVariable(int index, QTableWidget* table, QObject* parent)
    : QObject(parent),
      m_index(index),
      m_files(new FileCombo),
      m_columns(new ColumnCombo),
      m_start(new QLineEdit(QStringLiteral("0"))),
      m_end(new QLineEdit(QStringLiteral("0"))),
      m_sampleTime(new QLineEdit)
{
    const int row = index - 1;
    table->setCellWidget(row, kFile, m_files);
    table->setCellWidget(row, kColumn, m_columns);
    table->setCellWidget(row, kStart, m_start);
    table->setCellWidget(row, kEnd, m_end);
    table->setCellWidget(row, kSampleTime, m_sampleTime);
    m_sampleTime->setReadOnly(true);
    for (QLineEdit* const field : {m_start, m_end})
        field->setPlaceholderText(QStringLiteral("0.5, 2 min, 13:45:30"));
    const std::pair<QWidget*, const char*> names[] = {{m_files, "file"},
                                                      {m_columns, "column"},
                                                      {m_start, "start time"},
                                                      {m_end, "end time"},
                                                      {m_sampleTime, "sample time"}};
    for (const auto& [widget, name] : names)
        widget->setAccessibleName(QStringLiteral("x%1 %2").arg(index).arg(QLatin1String(name)));
    connect(m_files, SIGNAL(activated(int)), this, SLOT(sl_fileComboActivated(int)));
    connect(m_columns, SIGNAL(activated(int)), this, SLOT(sl_colComboActivated(int)));
    connect(m_start, SIGNAL(textChanged(QString)), this, SLOT(sl_StartTimeChanged(QString)));
    connect(m_end, SIGNAL(textChanged(QString)), this, SLOT(sl_EndTimeChanged(QString)));
}

QString EditVariable::fileName() const
{
    return QFileInfo(m_path).fileName();
}

unsigned EditVariable::column() const
{
    return m_columns->column();
}

void EditVariable::choose(const QString& file, unsigned column)
{
    refreshFiles();
    if (!file.isEmpty())
        m_files->setFile(file);
    takeFile();
    if (column != 0)
        m_columns->setColumn(column);
}

void EditVariable::refreshFiles()
{
    m_files->refresh();
    m_directory = QDir::currentPath();
    // A file that is gone is shown as none, not as another one of the directory.
    if (!m_path.isEmpty() && !m_files->setFile(m_path))
        m_files->setCurrentIndex(-1);
    m_columns->showFile(m_path, true);
}

void EditVariable::setTs(std::shared_ptr<TSFILE> ts)
{
    m_ts = std::move(ts);
    if (!m_ts)
        return;
    const TimeBounds own = timesOf(*m_ts);
    m_showsOwn = true;
    if (!m_startEdited)
        m_start->setText(timeText(own.start));
    if (!m_endEdited)
        m_end->setText(timeText(own.end));
    m_showsOwn = false;
    m_sampleTime->setText(timeText(m_ts->dt()));
}

// What the user has not edited is the file's own, to the last digit.
TimeBounds EditVariable::bounds() const
{
    const TimeBounds own = m_ts ? timesOf(*m_ts) : TimeBounds();
    return {m_startEdited ? timeIn(*m_start).value_or(own.start) : own.start,
            m_endEdited ? timeIn(*m_end).value_or(own.end) : own.end};
}

bool EditVariable::hasBounds() const
{
    return (!m_startEdited || timeIn(*m_start)) && (!m_endEdited || timeIn(*m_end));
}

// Throws the TS exceptions.
std::optional<double> EditVariable::timeIn(const QLineEdit& field) const
{
    return m_ts ? timeMeant(field.text().toStdString(), *m_ts) : numberOf(field.text());
}

void EditVariable::takeFile()
{
    m_startEdited = m_endEdited = false;
    m_path = m_files->file().isEmpty() ? QString() : QDir(m_directory).absoluteFilePath(m_files->file());
    m_columns->showFile(m_path, true);
    emit x_file_chosen(this);
    emit x_changed();
}

void EditVariable::sl_fileComboActivated(int index)
{
    m_files->setCurrentIndex(index);
    takeFile();
}

void EditVariable::sl_colComboActivated(int index)
{
    m_columns->setCurrentIndex(index);
    emit x_changed();
}

void EditVariable::sl_StartTimeChanged(const QString& text)
{
    takeTime(m_start, text, m_startEdited);
}

void EditVariable::sl_EndTimeChanged(const QString& text)
{
    takeTime(m_end, text, m_endEdited);
}

void EditVariable::takeTime(QLineEdit* field, const QString& text, bool& isEdited)
try {
    if (m_showsOwn) {
        markField(*field, true);
        return;
    }
    isEdited = true;
    field->setText(text);
    markField(*field, timeIn(*field).has_value());
    emit x_changed();
} catch (const TS::Failure&) {
    markField(*field, false);
}
