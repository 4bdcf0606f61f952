// STLWin: its fields from the format that was found, and back.

#include <QComboBox>
#include <QDateTime>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSpinBox>
#include <QTableWidget>

#include <algorithm>
#include <array>

#include "converters/STLLines.h"
#include "converters/STLWin.h"
#include "share/NumberField.h"

using namespace veltrac;

namespace {

enum Column { kTake, kName, kDescription, kUnit, kValues };

constexpr int kFirstValues = 4;
constexpr int kStepDigits = 12;

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

void select(QComboBox* box, int value)
{
    box->setCurrentIndex(std::max(0, box->findData(value)));
}

QString joined(const std::vector<std::string>& words)
{
    QStringList list;
    for (const std::string& word : words)
        list << text(word);
    return list.join(QLatin1Char(' '));
}

std::vector<std::string> words(const QString& text)
{
    std::vector<std::string> list;
    for (const QString& word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        list.push_back(word.toStdString());
    return list;
}

QString wallText(Micros wall)
{
    return QDateTime::fromMSecsSinceEpoch(wall / 1000, Qt::UTC)
        .toString(wall % kMicrosPerSecond == 0 ? QStringLiteral("yyyy-MM-dd hh:mm:ss")
                                               : QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
}

}  // namespace

void STLWin::showFormat()
{
    const STLFormat& format = m_log->format();
    {
        const QScopedValueRollback<bool> filling(m_filling, true);
        select(m_encoding, static_cast<int>(format.encoding));
        select(m_separator, format.cells.separator);
        select(m_decimal, format.cells.decimal);
        select(m_grouping, format.cells.grouping);
        m_firstData->setValue(static_cast<int>(format.firstDataLine));
        m_namesLine->setValue(static_cast<int>(format.namesLine));
        m_unitsLine->setValue(static_cast<int>(format.unitsLine));
        m_remarks->setText(joined(format.remarks));
        m_missing->setText(joined(format.cells.missing));
        m_other->setVisible(format.otherDecimal != 0);
        m_other->setText(format.otherDecimal == ',' && format.otherSeparator != ' '
                             ? QStringLiteral("Or one column with decimal comma?")
                             : QStringLiteral("Or another separator?"));
        for (QComboBox* const box : {m_dateColumn, m_timeColumn}) {
            box->clear();
            for (std::size_t c = 0; c < format.columns.size(); ++c)
                box->addItem(format.columns[c].name.empty() ? QStringLiteral("Column %1").arg(c + 1)
                                                            : text(format.columns[c].name),
                             static_cast<int>(c));
        }
        select(m_source, static_cast<int>(format.timeSource));
        select(m_dateColumn, format.dateColumn);
        select(m_timeColumn, format.timeColumn);
        select(m_order, static_cast<int>(format.order));
        select(m_zone, format.greenwich ? 1 : 0);
        m_start->setText(format.typedStart == 0 ? QString() : wallText(format.typedStart));
        m_step->setText(QString::number(format.typedStep, 'g', kStepDigits));
        select(m_becomes, format.timeResult ? static_cast<int>(*format.timeResult) : -1);
        m_description->setText(text(format.description));
        QStringList head;
        for (const auto& [key, value] : format.head)
            head << text(key) + QStringLiteral(": ") + text(value);
        m_head->setText(head.isEmpty() ? QString()
                                       : QStringLiteral("The file's head says:\n") +
                                             head.mid(0, 12).join(QLatin1Char('\n')));
    }
    m_checked = false;
    checkQuietly();
    showFindings();
    if (!m_checked)
        checkLater();
}

void STLWin::showColumns()
{
    const QScopedValueRollback<bool> filling(m_filling, true);
    const STLFormat& format = m_log->format();
    const std::vector<std::string> names = m_log->columnNames();
    std::size_t taken = 0;
    m_columns->setRowCount(static_cast<int>(format.columns.size()));
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const STLColumn& column = format.columns[c];
        const int row = static_cast<int>(c);
        const bool isTime = format.timeSource != STLTimeSource::Typed &&
                            (row == format.timeColumn || row == format.dateColumn);
        auto* const take =
            new QTableWidgetItem(isTime                         ? QStringLiteral("time")
                                 : column.kind == STLKind::Text ? QStringLiteral("Number the texts")
                                                                : QString());
        take->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable |
                       (isTime ? Qt::NoItemFlags : Qt::ItemIsUserCheckable));
        if (!isTime)
            take->setCheckState(column.take ? Qt::Checked : Qt::Unchecked);
        if (column.kind == STLKind::Text)
            take->setToolTip(
                QStringLiteral("Texts: when they are taken they are numbered, 1, 2, …, in the "
                               "order in which they come."));
        m_columns->setItem(row, kTake, take);
        const QString name = column.take ? text(names[taken++]) : text(column.name);
        const std::array<QString, 3> texts = {name, text(m_log->columnDescription(c)), text(column.unit)};
        for (int i = 0; i < 3; ++i)
            m_columns->setItem(row, kName + i, new QTableWidgetItem(texts[static_cast<std::size_t>(i)]));
        auto* const values = new QTableWidgetItem(m_lines->firstValues(c, kFirstValues));
        values->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        m_columns->setItem(row, kValues, values);
    }
    // The last one fills the rest.
    for (int column = kTake; column < kValues; ++column)
        m_columns->resizeColumnToContents(column);
}

void STLWin::readFields()
{
    STLFormat& format = m_log->format();
    format.remarks = words(m_remarks->text());
    format.cells.missing = words(m_missing->text());
    format.timeSource = static_cast<STLTimeSource>(m_source->currentData().toInt());
    const bool typed = format.timeSource == STLTimeSource::Typed;
    format.timeColumn = typed ? -1 : m_timeColumn->currentData().toInt();
    format.dateColumn =
        format.timeSource == STLTimeSource::DateAndTime ? m_dateColumn->currentData().toInt() : -1;
    const auto order = static_cast<DateOrder>(m_order->currentData().toInt());
    if (order != format.order)
        format.orderInDoubt = false;
    format.order = order;
    format.greenwich = m_zone->currentData().toInt() == 1;
    const auto start = readStamp(m_start->text().trimmed().toStdString());
    const auto wall = !start             ? std::nullopt
                      : format.greenwich ? wallClock(*start, format.order)
                                         : localWallClock(*start, format.order);
    if (wall || m_start->text().trimmed().isEmpty())
        format.typedStart = wall.value_or(0);
    if (m_step->isValid() && m_step->number() > 0)
        format.typedStep = m_step->number();
    const int becomes = m_becomes->currentData().toInt();
    format.timeResult.reset();
    if (becomes >= 0)
        format.timeResult = static_cast<STLTimeResult>(becomes);
    format.resampleStep = numberOf(m_resampleStep->text()).value_or(0.0);
    format.description = m_description->text().toStdString();
    format.fromRow = static_cast<std::uint64_t>(m_fromRow->number());
    format.toRow = static_cast<std::uint64_t>(m_toRow->number());
    format.everyNth = static_cast<std::uint32_t>(m_everyNth->number());
    format.fill = static_cast<STLFill>(m_fill->currentData().toInt());
    readColumns();
}

void STLWin::readColumns()
{
    STLFormat& format = m_log->format();
    const std::vector<std::string> names = m_log->columnNames();
    std::size_t taken = 0;
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        STLColumn& column = format.columns[c];
        const int row = static_cast<int>(c);
        if (m_columns->item(row, kTake) == nullptr)
            return;
        const std::string name = m_columns->item(row, kName)->text().toStdString();
        if (name != (column.take ? names[taken] : column.name))
            column.label = name;
        taken += column.take ? 1 : 0;
        const std::string described = m_columns->item(row, kDescription)->text().toStdString();
        if (described != m_log->columnDescription(c))
            column.description = described;
        column.unit = m_columns->item(row, kUnit)->text().toStdString();
        const bool isTime = row == format.timeColumn || row == format.dateColumn;
        column.take = !isTime && m_columns->item(row, kTake)->checkState() == Qt::Checked;
        column.numberTexts = column.take && column.kind == STLKind::Text;
    }
}
